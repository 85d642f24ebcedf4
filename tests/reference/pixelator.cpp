#include "tests/reference/pixelator.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "tests/reference/air_brush.h"
#include "tests/reference/blends.h"
#include "tests/reference/copies.h"
#include "tests/reference/rounding.h"
#include "tests/reference/tent.h"

namespace kelmora::reference {
namespace {

float InsideShare(float knob)
{
    const float clamped = knob > 0.0f ? std::min(knob, 1.0f) : 0.0f;
    return static_cast<float>(static_cast<double>(clamped) * static_cast<double>(0.98f)
                              + static_cast<double>(0.01f));
}

int RadiusOf(float knob, int side)
{
    const float size = knob * 1.3f;
    return std::clamp(TowardZero(side * static_cast<double>(size) / 2), 0, 2 * side);
}

bool FitsInt32(std::int64_t value)
{
    return value >= std::numeric_limits<std::int32_t>::min()
        && value <= std::numeric_limits<std::int32_t>::max();
}

void Plot(Picture& mask, std::int64_t x, std::int64_t y)
{
    if (x >= 0 && y >= 0 && x < mask.width && y < mask.height)
        mask.At(static_cast<int>(x), static_cast<int>(y), 0) = mask.floats ? 1.0 : 255.0;
}

int CountOf(int side, int block)
{
    return side / block + (side / block * block < side ? 1 : 0);
}

/// The average colour of the block whose first pixel is (left, top).
void AverageBlock(const Picture& src, int left, int top, int blockW, int blockH, double (&average)[4])
{
    float floatSums[4] = {};
    std::int64_t sums[4] = {}, count = 0;
    for (int y = top; y < top + blockH; ++y)
        for (int x = left; x < left + blockW && x < src.width; ++x) {
            for (int c = 0; c < 4; ++c) {
                const double value = src.At(x, std::min(y, src.height - 1), c);
                floatSums[c] += src.floats ? static_cast<float>(value) : 0.0f;
                sums[c] += src.floats ? 0 : static_cast<std::int64_t>(value);
            }
            ++count;
        }
    for (int c = 0; c < 4; ++c) {
        const double mean = src.floats
            ? RoundedToFloat(static_cast<double>(floatSums[c]) / static_cast<double>(count))
            : static_cast<double>(sums[c] / count);
        const double most = src.floats ? 1.0 : 255.0;
        average[c] = mean > most ? most : mean;
    }
}

Picture ReadPart(const Rows& rows, int width, int height)
{
    Picture picture(width, height, rows.format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c)
                picture.At(x, y, c) = ValueAt(rows.At(x, y), c, rows.Floats());
    return picture;
}

/// `blocks` over the output. In BGRA8 the rows are a whole number of pixels apart, and in memory the pixels of one
/// row may lie in another.
void LayOver(const Rows& out, const Picture& blocks)
{
    const bool whole = out.format == PF_BGRA8;
    for (int y = 0; y < blocks.height; ++y)
        for (int x = 0; x < blocks.width; ++x) {
            Picture over(1, 1, out.format), under = over;
            for (int c = 0; c < 4; ++c) {
                over.At(0, 0, c) = blocks.At(x, y, c);
                under.At(0, 0, c) = ValueAt(whole ? out.AtWhole(x, y) : out.At(x, y), c, out.Floats());
            }
            AlphaOver(over, under, under, false);
            for (int c = 0; c < 4; ++c)
                PutValue(whole ? out.AtWhole(x, y) : out.At(x, y), c, out.Floats(), under.At(0, 0, c));
        }
}

Picture MaskOf(const Picture& src, const PixelatorNumbers& n, const PixelatorMemory& memory)
{
    Picture mask(src.width, src.height, src.floats ? PF_Mask32F : PF_Mask8);
    DrawEllipse(mask, n.centreX, n.centreY, n.radiusX, n.radiusY);
    if (memory.fill)
        FloodFill(mask, n.centreX, n.centreY, src.floats ? 1.0 : 255.0);
    if (n.soft == 0 || !memory.softEdge)
        return mask;
    const auto soft = static_cast<float>(n.soft);
    if (!src.floats) {
        const Picture sharp = mask;
        PlainBlurOperation(sharp, mask, soft, soft, false, true);
        return mask;
    }
    Picture sharp(src.width, src.height, PF_BGRA32F);
    CopyChannel(mask, sharp, 0, 0);
    Picture blurred = sharp;
    PlainBlurOperation(sharp, blurred, soft, soft, false, true);
    CopyChannel(blurred, mask, 0, 0);
    return mask;
}

} // namespace

PixelatorNumbers PixelatorNumbersOf(const PixelatorKnobs& knobs, int width, int height, bool bottomUp)
{
    const float cx = InsideShare(knobs.centerX);
    const float cy = InsideShare(bottomUp ? knobs.centerY : 1 - knobs.centerY);
    return {TowardZero(width * static_cast<double>(cx)),
            TowardZero(height * static_cast<double>(cy)),
            RadiusOf(knobs.width, width),
            RadiusOf(knobs.height, height),
            TowardZero(height * 1.0 * 0.14),
            knobs.blockSize * 0.5f};
}

bool DrawEllipse(Picture& mask, int cx, int cy, int a, int b)
{
    bool fits = true;
    const auto noted = [&](std::int64_t value) {
        fits = fits && FitsInt32(value);
        return value;
    };
    const auto plotFour = [&](std::int64_t x, std::int64_t y) {
        Plot(mask, cx + x, cy + y);
        Plot(mask, cx - x, cy + y);
        Plot(mask, cx + x, cy - y);
        Plot(mask, cx - x, cy - y);
    };
    const std::int64_t wa = a, wb = b;
    const std::int64_t a2 = noted(wa * wa), b2 = noted(wb * wb), twoA2 = noted(2 * a2), twoB2 = noted(2 * b2);
    std::int64_t y = b, x = 0, dx = 0, dy = noted(twoA2 * wb);
    std::int64_t d = noted(noted((wb - a2) * wb) + a2 / 4);
    Plot(mask, cx, cy - wb);
    Plot(mask, cx, cy + wb);
    Plot(mask, cx - wa, cy);
    Plot(mask, cx + wa, cy);
    while (dx < dy) {
        if (d > 0) {
            dy = noted(dy - twoA2);
            y = y - 1;
            d = noted(d - dy);
        }
        x = x + 1;
        dx = noted(dx + twoB2);
        d = noted(noted(d + b2) + dx);
        plotFour(x, y);
    }
    d = noted(d + (noted((a2 - b2) * 3) / 2 - noted(dx + dy)) / 2);
    while (y > 0) {
        if (d < 0) {
            x = x + 1;
            dx = noted(dx + twoB2);
            d = noted(noted(d + b2) + dx);
        }
        y = y - 1;
        dy = noted(dy - twoA2);
        d = noted(noted(d + a2) - dy);
        plotFour(x, y);
    }
    return fits;
}

void FloodFill(Picture& plane, int seedX, int seedY, double value)
{
    const double old = plane.At(seedX, seedY, 0);
    std::vector<std::pair<int, int>> waiting = {{seedX, seedY}};
    while (old != value && !waiting.empty()) {
        const auto [x, y] = waiting.back();
        waiting.pop_back();
        if (x < 0 || y < 0 || x >= plane.width || y >= plane.height || !(plane.At(x, y, 0) == old))
            continue;
        plane.At(x, y, 0) = value;
        waiting.insert(waiting.end(), {{x - 1, y}, {x + 1, y}, {x, y - 1}, {x, y + 1}});
    }
}

void Pixelate(const Picture& src, Picture& dst, float amount, bool halfHeight, int cx, int cy, int rx, int ry)
{
    const int w = src.width, h = src.height;
    const double size = h * (halfHeight ? 2 : 1) * static_cast<double>(0.3f) * static_cast<double>(amount);
    const int blockW = std::clamp(TowardZero(size), 2, std::max({w, h, 2}));
    const int blockH = halfHeight ? blockW / 2 : blockW;
    const int cols = CountOf(w, blockW), rows = CountOf(h, blockH);
    const int firstCol = std::max(cx - rx, 0) / blockW, firstRow = std::max(cy - ry, 0) / blockH;
    const int lastCol = std::min((cx - rx < w ? cx + rx : w) / blockW + 1, cols);
    const int lastRow = std::min((cy - ry < h ? cy + ry : h) / blockH + 1, rows);
    for (int col = firstCol; col < lastCol; ++col)
        for (int row = firstRow; row < lastRow; ++row) {
            const int left = col * blockW, top = row * blockH;
            double average[4];
            AverageBlock(src, left, top, blockW, blockH, average);
            for (int y = top; y < std::min(top + blockH, h); ++y)
                for (int x = left; x < std::min(left + blockW, w); ++x)
                    for (int c = 0; c < 4; ++c)
                        if (c != src.AlphaPlace())
                            dst.At(x, y, c) = average[c];
        }
}

void Pixelator(const VideoFrame& picture, const VideoFrame& output, const PixelatorKnobs& knobs,
               bool halfHeight, const PixelatorMemory& memory)
{
    const Rows in(picture), out(output);
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const Picture src = ReadPart(in, width, height);
    const int alpha = src.AlphaPlace();
    const bool bottomUp = (picture.bottomUp != 0) != (picture.stride < 0);
    const PixelatorNumbers n = PixelatorNumbersOf(knobs, width, height, bottomUp);

    const Picture mask = MaskOf(src, n, memory);
    Picture blocks(width, height, src.format);
    Pixelate(src, blocks, n.amount, halfHeight, n.centreX, n.centreY, n.radiusX + n.soft, n.radiusY + n.soft);
    CopyChannel(mask, blocks, 0, alpha);

    Picture opaque = src;
    SetChannel(opaque, alpha, 255);
    WriteRows(opaque, out);
    LayOver(out, blocks);
    Picture now = ReadPart(out, width, height);
    CopyChannel(src, now, alpha, alpha);
    WriteRows(now, out);
}

} // namespace kelmora::reference
