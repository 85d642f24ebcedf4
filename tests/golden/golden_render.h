#pragma once

#include <string_view>

#include "tests/golden/golden_cases.h"

namespace kelmora {

/// The library's picture of a case of the effect with this key.
GuardedPicture RenderCase(std::string_view effect, const GoldenCase& one);

} // namespace kelmora
