#pragma once

#include <string>
#include <vector>

#include "host/effect_face.h"

namespace kelmora::host {

/// The number of the form of all JSON texts; it goes up when a field changes its meaning or goes away.
inline constexpr int kJsonSchema = 1;

/// The effects with the numbers of their knobs and presets.
std::string ListJson(const std::string& libraryName, const std::vector<EffectFace>& effects);

/// One effect with its knobs and presets. Floats are written as short as they read back the same; choices by
/// name; colours as "#rrggbb".
std::string DescribeJson(const EffectFace& effect);

} // namespace kelmora::host
