#pragma once

#include <ostream>

#include "host/arguments.h"

namespace kelmora::host {

/// Renders every effect of the library with every preset and writes one HTML page with all of it; says on `out`
/// how much that was. Throws Failure.
void RunGallery(const GalleryArguments& arguments, std::ostream& out);

} // namespace kelmora::host
