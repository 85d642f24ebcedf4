#include "image/primitives/colour.h"

#include <bit>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/map.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

template <class T>
PxStatus Twist(const T* src, int srcStep, T* dst, int dstStep, int width, int height, const float twist[3][4],
               void (*kernel)(const TwistRow&))
{
    if (!twist)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<A3, A3>(src, srcStep, dst, dstStep, width, height))
        return status;
    for (int y = 0; y < height; ++y)
        kernel({Row(src, srcStep, y), Row(dst, dstStep, y), width, twist});
    return pxOk;
}

template <class Op>
PxStatus MapColours(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height, Op op)
{
    if (const PxStatus status = CheckRegions<A3, A3>(src, srcStep, dst, dstStep, width, height))
        return status;
    for (int y = 0; y < height; ++y)
        MapColourRow(Row(src, srcStep, y), Row(dst, dstStep, y), width, op);
    return pxOk;
}

// --- hue, saturation, value -----------------------------------------------------------------------------
//
// No branches, so that rows become vectors. Quotients of whole numbers below 2 to the power of 24 are rounded
// correctly in single precision, and too finely to turn what is no tie into one.

constexpr int Larger(int a, int b)
{
    return a > b ? a : b;
}

constexpr int Smaller(int a, int b)
{
    return a < b ? a : b;
}

/// numerator / denominator to nearest, ties to even; for quotients from 0 to 255.
inline Word Quotient(int numerator, int denominator)
{
    // Where one is the last bit, an addition rounds; the low bits are the number.
    constexpr float unit = 12582912.0f;
    return std::bit_cast<Word>(static_cast<float>(numerator) / static_cast<float>(denominator) + unit) & 0xFF;
}

/// Hue is 85 / 2 * n / d, with d the difference of the extremes and n from 0 to 6 * d.
inline Word ToHsv(Word pixel)
{
    const int b = static_cast<int>(pixel & 0xFF);
    const int g = static_cast<int>((pixel >> 8) & 0xFF);
    const int r = static_cast<int>((pixel >> 16) & 0xFF);
    const int value = Larger(Larger(b, g), r);
    const int d = value - Smaller(Smaller(b, g), r);
    int n = value == b ? g - r : value == g ? r - b + 2 * d : b - g + 4 * d;
    n += n < 0 ? 6 * d : 0;
    // Greys: d and n are 0, and 0 / 1 is what is wanted.
    return Quotient(85 * n, Larger(2 * d, 1)) | Quotient(255 * d, Larger(value, 1)) << 8
        | static_cast<Word>(value) << 16;
}

/// Hue in units of which 85 make a sixth of a turn. The turn has three parts, around blue, green and red at 0,
/// 170 and 340; there that colour is `value`, one of the other two is `low`, and the third lies between.
inline Word ToRgb(Word pixel)
{
    const int hue = static_cast<int>(pixel & 0xFF) * 2;
    const int saturation = static_cast<int>((pixel >> 8) & 0xFF);
    const int value = static_cast<int>((pixel >> 16) & 0xFF);
    const int turned = hue >= 425 ? hue - 510 : hue;
    const int away = turned < 85 ? turned : turned < 255 ? turned - 170 : turned - 340;
    const int distance = away < 0 ? -away : away;

    const Word top = static_cast<Word>(value);
    const Word low = Quotient(value * (255 - saturation), 255);
    const Word middle = Quotient(value * 85 * (255 - saturation) + distance * saturation * value, 255 * 85);
    const Word before = away < 0 ? middle : low; // the colour that the part before this one has at the top
    const Word behind = away < 0 ? low : middle;
    const Word blueTop = top | behind << 8 | before << 16;
    const Word greenTop = before | top << 8 | behind << 16;
    const Word redTop = behind | before << 8 | top << 16;
    return turned < 85 ? blueTop : turned < 255 ? greenTop : redTop;
}

} // namespace

PxStatus pxColorTwist_32f_A3(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                             const float twist[3][4])
{
    return Twist(src, srcStep, dst, dstStep, width, height, twist,
                 RowKernelsFor(CurrentVariant()).twistFloats);
}

PxStatus pxColorTwist_32f_A3_I(float* pixels, int step, int width, int height, const float twist[3][4])
{
    return pxColorTwist_32f_A3(pixels, step, pixels, step, width, height, twist);
}

PxStatus pxColorTwist_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height,
                            const float twist[3][4])
{
    return Twist(src, srcStep, dst, dstStep, width, height, twist,
                 RowKernelsFor(CurrentVariant()).twistBytes);
}

PxStatus pxRGBToHSV_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    return MapColours(src, srcStep, dst, dstStep, width, height, ToHsv);
}

PxStatus pxHSVToRGB_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    return MapColours(src, srcStep, dst, dstStep, width, height, ToRgb);
}

} // namespace kelmora
