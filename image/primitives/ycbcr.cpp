#include "image/primitives/ycbcr.h"

#include <algorithm>

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

using YCbCr = Layout<2, 2>;
using Rgb = Layout<3, 3>;

// The weights are in 65536ths.

u8 Clamp(int v)
{
    return static_cast<u8>(std::clamp(v, 0, 255));
}

void ToRgb(int y, int cb, int cr, u8* rgb)
{
    const int light = 76284 * y;
    rgb[0] = Clamp((light + 104595 * cr - 14608761) >> 16);
    rgb[1] = Clamp((light - 25690 * cb - 53281 * cr + 8887730) >> 16);
    rgb[2] = Clamp((light + 132186 * cb - 18140365) >> 16);
}

constexpr int kEvenBias = 0x108000; // 16 and a half
constexpr int kOddBias = 0x100000;  // 16

u8 Luma(const u8* rgb, int bias)
{
    return static_cast<u8>((16843 * rgb[0] + 33030 * rgb[1] + 6423 * rgb[2] + bias) >> 16);
}

int BlueDifference(int r, int g, int b)
{
    return -9699 * r - 19071 * g + 28770 * b;
}

int RedDifference(int r, int g, int b)
{
    return 28770 * r - 24117 * g - 4653 * b;
}

} // namespace

PxStatus pxYCbCr422ToRGB(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<YCbCr, Rgb>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto blocks = ByteKernelsFor(CurrentVariant()).yCbCr422ToRgb;
    for (int y = 0; y < height; ++y) {
        int x = blocks(Row(src, srcStep, y), Row(dst, dstStep, y), width);
        const u8* from = Row(src, srcStep, y) + std::ptrdiff_t{x} * 2;
        u8* to = Row(dst, dstStep, y) + std::ptrdiff_t{x} * 3;
        int cr = x > 0 ? from[-1] : 128; // neutral, for a row of one pixel
        for (; x + 1 < width; x += 2, from += 4, to += 6) {
            cr = from[3];
            ToRgb(from[0], from[1], cr, to);
            ToRgb(from[2], from[1], cr, to + 3);
        }
        if (x < width)
            ToRgb(from[0], from[1], cr, to);
    }
    return pxOk;
}

PxStatus pxRGBToYCbCr422(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<Rgb, YCbCr>(src, srcStep, dst, dstStep, width, height))
        return status;
    for (int y = 0; y < height; ++y) {
        const u8* from = Row(src, srcStep, y);
        u8* to = Row(dst, dstStep, y);
        int x = 0;
        for (; x + 1 < width; x += 2, from += 6, to += 4) {
            const int r = from[0] + from[3], g = from[1] + from[4], b = from[2] + from[5];
            to[0] = Luma(from, kEvenBias);
            to[1] = static_cast<u8>((BlueDifference(r, g, b) + 0x1010000) >> 17);
            to[2] = Luma(from + 3, kOddBias);
            to[3] = static_cast<u8>((RedDifference(r, g, b) + 0x1010000) >> 17);
        }
        if (x < width) {
            to[0] = Luma(from, kEvenBias);
            to[1] = static_cast<u8>((BlueDifference(from[0], from[1], from[2]) + 0x808000) >> 16);
        }
    }
    return pxOk;
}

} // namespace kelmora
