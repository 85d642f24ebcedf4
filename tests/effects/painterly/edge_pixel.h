#pragma once

#include "tests/reference/air_brush.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/pictures.h"

namespace kelmora {

/// A pixel of any picture format as the plain edge steps take it.
inline reference::EdgePixel EdgePixelAt(const GuardedPicture& picture, int x, int y)
{
    const std::uint32_t format = picture.Format();
    const auto value = [&](int colour) {
        const auto place = PlaceOfColour(format, colour);
        return IsFloatFormat(format) ? static_cast<double>(picture.Float(x, y, place))
                                     : picture.Byte(x, y, place);
    };
    return {value(0), value(1), value(2), value(3)};
}

} // namespace kelmora
