#include "tests/reference/water_color.h"

#include <algorithm>

#include "tests/reference/air_brush.h"
#include "tests/reference/blends.h"
#include "tests/reference/colour.h"
#include "tests/reference/copies.h"
#include "tests/reference/median.h"
#include "tests/reference/neighbourhood.h"

namespace kelmora::reference {
namespace {

// No memory would hold the picture that a wider median needs.
constexpr int kMostRadius = 32767;

Picture Corner(const Picture& picture, int width, int height)
{
    Picture corner(width, height, picture.format);
    CopyRect(picture, 0, 0, width, height, corner, 0, 0);
    return corner;
}

/// All painting is done on alpha-last bytes.
Picture AsBytes(const Picture& picture)
{
    if (picture.format == PF_BGRA8)
        return picture;
    Picture bytes(picture.width, picture.height, PF_BGRA8);
    Convert(picture, bytes);
    return bytes;
}

void PaintMedian(Picture& frame, int rx, int ry)
{
    const Picture extended = Padded(frame, frame.width + 2 * rx, frame.height + 2 * ry, ry, rx);
    Median(extended, rx, ry, frame, CentredMask(2 * rx + 1, 2 * ry + 1), 3);
}

void PaintSharpen(Picture& frame)
{
    const Picture extended = Padded(frame, frame.width + 2, frame.height + 2, 1, 1);
    Sharpen(extended, 1, 1, frame);
}

/// The colours of the knobs, in bytes.
Picture Coloured(const Picture& picture, const WaterColorKnobs& knobs)
{
    const double shift = (static_cast<double>(knobs.colorShift) - 0.5) * static_cast<double>(0.3f) + 0.5;
    Picture painted(picture.width, picture.height, PF_BGRA8);
    AdjustColor(AsBytes(picture), painted, knobs.contrast, knobs.brightness, knobs.color,
                static_cast<float>(shift));
    return painted;
}

/// Half-height frames have half the radius downward, at least 1.
void PaintBrush(Picture& painted, int radius, bool halfHeight)
{
    PaintMedian(painted, radius, std::max(halfHeight ? radius >> 1 : radius, 1));
}

} // namespace

int WaterColorRadius(float brushWidth, int height, bool halfHeight)
{
    const double brush = static_cast<double>(brushWidth) * 5 + 1;
    const float scale = static_cast<float>(height / 240.0 * (halfHeight ? 2 : 1));
    return TowardZero(brush * static_cast<double>(scale));
}

int WaterColorPasses(int height, bool halfHeight)
{
    return height * (halfHeight ? 2 : 1) > 500 ? 2 : 1;
}

bool WaterColor(const VideoFrame& firstPicture, const VideoFrame& output, const WaterColorKnobs& knobs,
                bool halfHeight)
{
    const Rows in(firstPicture);
    Rows out(output);
    out.format = in.format;
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const Picture picture = Corner(ReadRows(in), width, height);
    // Alpha-last bytes are painted from the picture itself, all others from a copy of the working size.
    const int paintedHeight = in.format == PF_BGRA8 ? in.height : height;
    const int r = WaterColorRadius(knobs.brushWidth, paintedHeight, halfHeight);

    Picture painted = Coloured(picture, knobs);
    if (r > kMostRadius) {
        if (in.format == PF_BGRA8)
            WriteRows(painted, out);
        return false;
    }
    if (r > 0)
        for (int pass = 0; pass < WaterColorPasses(paintedHeight, halfHeight); ++pass)
            PaintBrush(painted, r, halfHeight);
    PaintSharpen(painted);

    Picture home = painted;
    if (in.format != PF_BGRA8) {
        home = Picture(width, height, in.format);
        Convert(painted, home);
    }
    if (static_cast<double>(knobs.blend) < 1.0)
        AddWeighted(picture, home, home, static_cast<float>(1.0 - static_cast<double>(knobs.blend)),
                    knobs.blend);
    CopyChannel(picture, home, PlaceOfColour(in.format, 3), PlaceOfColour(in.format, 3));
    WriteRows(home, out);
    return true;
}

void WaterColorUpTo(const VideoFrame& firstPicture, const VideoFrame& output, const WaterColorKnobs& knobs,
                    bool halfHeight, int medians)
{
    const Rows in(firstPicture), out(output);
    Picture painted =
        Coloured(Corner(ReadRows(in), std::min(in.width, out.width), std::min(in.height, out.height)), knobs);
    for (int pass = 0; pass < medians; ++pass)
        PaintBrush(painted, WaterColorRadius(knobs.brushWidth, in.height, halfHeight), halfHeight);
    WriteRows(painted, out);
}

} // namespace kelmora::reference
