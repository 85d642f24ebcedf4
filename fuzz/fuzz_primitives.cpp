// Regions in exactly the memory that they promise, and sizes, steps, constants and masks of any kind: every
// primitive that is more than a copy, no fault.

#include <limits>

#include "fuzz/input.h"
#include "image/primitives/arithmetic.h"
#include "image/primitives/colour.h"
#include "image/primitives/composite.h"
#include "image/primitives/cpu_variant.h"
#include "image/primitives/median.h"
#include "image/primitives/neighbourhood.h"
#include "image/primitives/pad.h"
#include "image/primitives/resize.h"
#include "image/primitives/set.h"
#include "image/primitives/warp.h"
#include "image/primitives/ycbcr.h"

namespace kelmora::fuzz {
namespace {

using Byte = std::uint8_t;

/// A size, and what is wrong with the call if anything is.
struct Call {
    explicit Call(Input& from)
        : input(from), width(1 + from.Below(70)), height(1 + from.Below(20)), fault(from.Below(32))
    {
    }

    /// The width and the height as they are told.
    int W() const { return fault == 1 ? 0 : fault == 2 ? -width : width; }
    int H() const { return fault == 3 ? 0 : fault == 4 ? -height : height; }

    template <class T>
    T* First(const Region<T>& region, int nullFault) const
    {
        return fault == nullFault ? nullptr : region.First();
    }
    /// The step, or one too short for a row.
    template <class T>
    int Step(const Region<T>& region, int values, int badFault) const
    {
        const int needed = width * values * static_cast<int>(sizeof(T));
        if (fault == badFault)
            return needed - 1;
        return fault == badFault + 1 ? 0 : fault == badFault + 2 ? -region.Step() : region.Step();
    }

    Input& input;
    int width, height, fault;
};

constexpr int kNullSrc = 5, kNullDst = 6, kBadSrc = 7, kBadDst = 10; // faults 7 to 9 and 10 to 12

template <class T, class Function, class... More>
void FromTo(Call& call, int channels, int missing, Function function, More... more)
{
    const Region<T> src(call.input, call.width, call.height, channels, missing);
    const Region<T> dst(call.input, call.width, call.height, channels, missing);
    const bool inPlace = call.input.Below(4) == 0;
    const Region<T>& to = inPlace ? src : dst;
    function(call.First(src, kNullSrc), call.Step(src, channels, kBadSrc), call.First(to, kNullDst),
             call.Step(to, channels, kBadDst), call.W(), call.H(), more...);
}

template <class T>
void Constants(Input& input, T* values, int count)
{
    for (int i = 0; i < count; ++i) {
        if constexpr (sizeof(T) == 1)
            values[i] = input.Take<T>();
        else
            values[i] = input.Below(4) == 0 ? input.Take<T>() : static_cast<T>(input.Below(255)) / T{64};
    }
}

void Set(Call& call)
{
    const Region<Byte> plane(call.input, call.width, call.height, 1);
    const Region<Byte> bytes(call.input, call.width, call.height, 4);
    const Region<Byte> lastless(call.input, call.width, call.height, 4, 3);
    const Region<float> floatPlane(call.input, call.width, call.height, 1);
    const Region<float> floats(call.input, call.width, call.height, 4);
    const Region<float> floatsLastless(call.input, call.width, call.height, 4, 3);
    Byte byteValues[4];
    float floatValues[4];
    Constants(call.input, byteValues, 4);
    Constants(call.input, floatValues, 4);
    const auto at = [&](const auto& region) { return call.First(region, kNullDst); };
    pxSet_8u_C1(byteValues[0], at(plane), call.Step(plane, 1, kBadDst), call.W(), call.H());
    pxSet_8u_C4(byteValues, at(bytes), call.Step(bytes, 4, kBadDst), call.W(), call.H());
    pxSet_32f_C1(floatValues[0], at(floatPlane), call.Step(floatPlane, 1, kBadDst), call.W(), call.H());
    pxSet_32f_C4(floatValues, at(floats), call.Step(floats, 4, kBadDst), call.W(), call.H());
    pxSetChannel_8u_C4(byteValues[1], at(lastless), call.Step(lastless, 4, kBadDst), call.W(), call.H());
    pxSetChannel_32f_C4(floatValues[1], at(floatsLastless), call.Step(floatsLastless, 4, kBadDst), call.W(),
                        call.H());
}

void FloatArithmetic(Call& call)
{
    float consts[4];
    Constants(call.input, consts, 4);
    const Region<float> src(call.input, call.width, call.height, 4, 1);
    const Region<float> dst(call.input, call.width, call.height, 4, 1);
    const Region<float> all(call.input, call.width, call.height, 4);
    const Region<float> more(call.input, call.width, call.height, 4);
    const int srcStep = call.Step(src, 4, kBadSrc), dstStep = call.Step(dst, 4, kBadDst);
    float* const from = call.First(src, kNullSrc);
    float* const to = call.First(dst, kNullDst);
    pxAddConst_32f_A3(from, srcStep, consts, to, dstStep, call.W(), call.H());
    pxMulConst_32f_A3(from, srcStep, consts, to, dstStep, call.W(), call.H());
    pxAddConst_32f_A3_I(consts, to, dstStep, call.W(), call.H());
    pxMulConst_32f_A3_I(consts, to, dstStep, call.W(), call.H());
    pxMulConst_32f_C4_I(consts, call.First(all, kNullDst), call.Step(all, 4, kBadDst), call.W(), call.H());
    pxAdd_32f_C4_I(call.First(more, kNullSrc), call.Step(more, 4, kBadSrc), call.First(all, kNullDst),
                   call.Step(all, 4, kBadDst), call.W(), call.H());
}

void ByteArithmetic(Call& call)
{
    Byte consts[4];
    Constants(call.input, consts, 4);
    const int scale = call.input.Below(8) == 0 ? call.input.Take<int>() : call.input.Below(16) - 4;
    const Region<Byte> plane(call.input, call.width, call.height, 1);
    const Region<Byte> pixels(call.input, call.width, call.height, 4);
    pxMulConstScaled_8u_C1_I(consts[0], call.First(plane, kNullDst), call.Step(plane, 1, kBadDst), call.W(),
                             call.H());
    pxMulConstScaled_8u_C4_I(consts, call.First(pixels, kNullDst), call.Step(pixels, 4, kBadDst), call.W(),
                             call.H());
    FromTo<Byte>(call, 1, 0, pxAddScaled_8u_C1_I, scale);
    FromTo<Byte>(call, 4, 0, pxAddScaled_8u_C4_I, scale);
}

void Colours(Call& call)
{
    float twist[3][4];
    Constants(call.input, twist[0], 12);
    FromTo<float>(call, 4, 1, pxColorTwist_32f_A3, twist);
    FromTo<Byte>(call, 4, 1, pxColorTwist_8u_A3, twist);
    const Region<float> pixels(call.input, call.width, call.height, 4, 1);
    pxColorTwist_32f_A3_I(call.First(pixels, kNullDst), call.Step(pixels, 4, kBadDst), call.W(), call.H(),
                          twist);
    FromTo<Byte>(call, 4, 1, pxRGBToHSV_8u_A3);
    FromTo<Byte>(call, 4, 1, pxHSVToRGB_8u_A3);
}

void Composite(Call& call)
{
    const Region<Byte> first(call.input, call.width, call.height, 4);
    const Region<Byte> second(call.input, call.width, call.height, 4);
    const Region<Byte> third(call.input, call.width, call.height, 4);
    const int place = call.input.Below(3);
    const Region<Byte>& out = place == 0 ? first : place == 1 ? second : third;
    const int op = call.input.Below(8);
    pxAlphaComposite_8u_C4(call.First(first, kNullSrc), call.Step(first, 4, kBadSrc), second.First(),
                           second.Step(), call.First(out, kNullDst), call.Step(out, 4, kBadDst), call.W(),
                           call.H(), op);
    FromTo<Byte>(call, 4, 0, pxPremultiply_8u_A3);
}

void YCbCr(Call& call)
{
    const Region<Byte> packed(call.input, call.width, call.height, 2);
    const Region<Byte> rgb(call.input, call.width, call.height, 3);
    const int packedStep = call.Step(packed, 2, kBadSrc), rgbStep = call.Step(rgb, 3, kBadDst);
    pxYCbCr422ToRGB(call.First(packed, kNullSrc), packedStep, call.First(rgb, kNullDst), rgbStep, call.W(),
                    call.H());
    pxRGBToYCbCr422(call.First(rgb, kNullDst), rgbStep, call.First(packed, kNullSrc), packedStep, call.W(),
                    call.H());
}

/// The last of the four values may lie behind the last pixel's own, so the margin's last pixel is short.
void Neighbours(Call& call)
{
    const Region<Byte> src(call.input, call.width, call.height, 4, 1, 1);
    const Region<Byte> dst(call.input, call.width, call.height, 4, 1);
    pxSharpen3x3_8u_A3(call.First(src, kNullSrc), call.Step(src, 4, kBadSrc), call.First(dst, kNullDst),
                       call.Step(dst, 4, kBadDst), call.W(), call.H());
    const int mask = call.input.Below(8) == 0 ? call.input.Take<int>()
        : call.input.Below(2) != 0            ? pxBox3x3
                                              : pxBox5x5;
    const Region<Byte> plane(call.input, call.width, call.height, 1, 0, mask == pxBox5x5 ? 2 : 1);
    const Region<Byte> means(call.input, call.width, call.height, 1);
    pxBoxAverage_8u_C1(call.First(plane, kNullSrc), call.Step(plane, 1, kBadSrc), call.First(means, kNullDst),
                       call.Step(means, 1, kBadDst), call.W(), call.H(), mask);
}

void Medians(Call& call)
{
    const auto side = [&] {
        const int usual = 2 * call.input.Below(16) + 1;
        return call.input.Below(16) == 0 ? 2 * call.input.Below(80) + 1 : usual; // beyond 127 too
    };
    const int maskWidth = side(), maskHeight = side();
    const int anchorX = call.input.Below(maskWidth), anchorY = call.input.Below(maskHeight);
    const int margin = std::max(maskWidth, maskHeight); // wide enough for every anchor
    const int badWidth = call.fault == 13 ? 0 : call.fault == 14 ? maskWidth + 1 : maskWidth;
    const int badAnchor = call.fault == 15 ? -1 : call.fault == 16 ? maskHeight : anchorY;
    const bool colours = call.input.Below(2) != 0;
    const Region<Byte> src(call.input, call.width, call.height, 4, colours ? 1 : 0, margin);
    const Region<Byte> dst(call.input, call.width, call.height, 4, colours ? 1 : 0);
    const auto median = colours ? pxMedian_8u_A3 : pxMedian_8u_C4;
    median(call.First(src, kNullSrc), call.Step(src, 4, kBadSrc), call.First(dst, kNullDst),
           call.Step(dst, 4, kBadDst), call.W(), call.H(), badWidth, maskHeight, anchorX, badAnchor);
}

void Pad(Call& call)
{
    const int top = call.input.Below(12), left = call.input.Below(12);
    const int dstWidth = call.width + left + call.input.Below(12);
    const int dstHeight = call.height + top + call.input.Below(12);
    const int topTold = call.fault == 13 ? dstHeight : call.fault == 14 ? -1 : top;
    for (const int channels : {1, 4}) {
        const Region<Byte> src(call.input, call.width, call.height, channels);
        const Region<Byte> dst(call.input, dstWidth, dstHeight, channels);
        const auto pad = channels == 1 ? pxPadReplicate_8u_C1 : pxPadReplicate_8u_C4;
        pad(call.First(src, kNullSrc), call.Step(src, channels, kBadSrc), call.W(), call.H(),
            call.First(dst, kNullDst), dst.Step(), dstWidth, dstHeight, topTold, left);
    }
}

/// Of a map or a corner: -64 to 64 mostly, and what arithmetic breaks on.
double Coefficient(Input& input)
{
    constexpr double wild[] = {0.0,  1.0,   1e9,    -1e9,   2147483648.0,
                               1e99, 1e300, -1e300, 1e-300, std::numeric_limits<double>::infinity()};
    switch (input.Below(16)) {
    case 0:
        return wild[input.Below(static_cast<int>(std::size(wild)))];
    case 1:
        return input.Take<double>(); // not-a-number among them
    default:
        return input.Take<std::int16_t>() / 512.0;
    }
}

/// A part of a picture to take: any, for what lies outside is cut or refused.
PxRect PartToTake(Call& call)
{
    Input& input = call.input;
    if (input.Below(4) != 0)
        return {0, 0, call.width, call.height};
    if (input.Below(8) == 0)
        return {input.Take<int>(), input.Take<int>(), input.Take<int>(), input.Take<int>()};
    const int x = input.Below(call.width), y = input.Below(call.height);
    return {x, y, 1 + input.Below(80), 1 + input.Below(30)};
}

/// A picture to write to, of a size of its own, and the part of it to write.
struct Target {
    explicit Target(Call& call)
        : width(1 + call.input.Below(90)), height(1 + call.input.Below(40)), part{0, 0, width, height}
    {
        if (call.input.Below(4) != 0)
            return;
        part.x = call.input.Below(width);
        part.y = call.input.Below(height);
        part.width = 1 + call.input.Below(width - part.x);
        part.height = 1 + call.input.Below(height - part.y);
        if (call.input.Below(8) == 0) // refused whatever the rest
            (call.input.Below(2) != 0 ? part.x : part.width) = -part.width;
    }

    int width, height;
    PxRect part;
};

std::uint32_t Interpolation(Input& input, std::uint32_t flag)
{
    constexpr std::uint32_t usual[] = {pxNearest, pxLinear, pxLinear,  pxLinear,
                                       pxCubic,   pxCubic,  pxAverage, pxLanczos};
    if (input.Below(16) == 0)
        return input.Take<std::uint32_t>();
    return usual[input.Below(8)] | (input.Below(2) != 0 ? flag : 0);
}

template <class T>
void ResizeAs(Call& call, int channels)
{
    const auto factor = [&] {
        const int usual = 1 + call.input.Below(200);
        return call.input.Below(8) == 0 ? Coefficient(call.input) : usual / 32.0;
    };
    const Target target(call);
    const double xFactor = factor(), yFactor = factor();
    const PxRect part = PartToTake(call);
    const auto interpolation = static_cast<int>(Interpolation(call.input, 0));
    const Region<T> src(call.input, call.width, call.height, channels);
    const Region<T> dst(call.input, target.width, target.height, channels);
    const auto run = [&](auto resize) {
        resize(call.First(src, kNullSrc), call.W(), call.H(), call.Step(src, channels, kBadSrc), part,
               call.First(dst, kNullDst), dst.Step(), target.width, target.height, xFactor, yFactor,
               interpolation);
    };
    if constexpr (sizeof(T) == 1)
        run(channels == 1 ? pxResize_8u_C1 : pxResize_8u_C4);
    else
        run(channels == 1 ? pxResize_32f_C1 : pxResize_32f_C4);
}

void Resize(Call& call)
{
    const int channels = call.input.Below(2) != 0 ? 4 : 1;
    call.input.Below(2) != 0 ? ResizeAs<Byte>(call, channels) : ResizeAs<float>(call, channels);
}

/// Lays a part of a source over a part of a destination with one of the members.
template <class T, class Member, class Map, class Code>
void Warp(Call& call, int channels, Member member, const Map& map, Code interpolation)
{
    const Target target(call);
    const PxRect part = PartToTake(call);
    const Region<T> src(call.input, call.width, call.height, channels);
    const Region<T> dst(call.input, target.width, target.height, channels);
    member(call.First(src, kNullSrc), call.W(), call.H(), call.Step(src, channels, kBadSrc), part,
           call.First(dst, kNullDst), dst.Step(), target.part, map, interpolation);
}

void WarpAffine(Call& call)
{
    double map[2][3];
    for (auto& row : map)
        for (double& value : row)
            value = Coefficient(call.input);
    if (call.input.Below(4) == 0) { // a shift, or next to one
        const bool exact = call.input.Below(2) != 0;
        for (int i = 0; i < 4; ++i)
            map[i / 2][i % 2] = (i == 0 || i == 3 ? 1.0 : 0.0) + (exact ? 0.0 : 1e-8 * map[i / 2][i % 2]);
    }
    const auto interpolation = static_cast<int>(Interpolation(call.input, 0));
    switch (call.input.Below(3)) {
    case 0:
        return Warp<Byte>(call, 1, pxWarpAffine_8u_C1, map, interpolation);
    case 1:
        return Warp<Byte>(call, 4, pxWarpAffine_8u_C4, map, interpolation);
    default:
        return Warp<float>(call, 4, pxWarpAffine_32f_C4, map, interpolation);
    }
}

/// Quadrangles of any kind, or maps that no quadrangle gave.
void WarpQuad(Call& call)
{
    double map[3][3], quad[4][2];
    for (auto& row : map)
        for (double& value : row)
            value = Coefficient(call.input);
    for (auto& corner : quad)
        for (double& value : corner)
            value = Coefficient(call.input);
    if (call.input.Below(4) != 0) // corners in order, so that most are convex
        for (int i = 0; i < 4; ++i) {
            quad[i][0] = (i == 1 || i == 2 ? 50.0 : 10.0) + quad[i][0] / 4;
            quad[i][1] = (i > 1 ? 30.0 : 5.0) + quad[i][1] / 4;
        }
    if (call.input.Below(8) != 0) {
        PxRect rect = {0, 0, call.width, call.height};
        if (call.input.Below(8) == 0)
            rect = {call.input.Take<int>(), call.input.Take<int>(), call.input.Take<int>(),
                    call.input.Take<int>()};
        if (pxQuadTransform(rect, quad, map) != pxOk)
            return;
    }
    const std::uint32_t interpolation = Interpolation(call.input, pxSmoothEdges);
    if (call.input.Below(2) != 0)
        Warp<Byte>(call, 4, pxWarpQuad_8u_C4, map, interpolation);
    else
        Warp<float>(call, 4, pxWarpQuad_32f_C4, map, interpolation);
}

constexpr void (*kFamilies[])(Call&) = {
    Set, FloatArithmetic, ByteArithmetic, Colours,  Composite, YCbCr, Neighbours, Medians,
    Pad, Resize,          WarpAffine,     WarpQuad,
};

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    fuzz::Input input(data, size);
    UseVariant(static_cast<CpuVariant>(input.Below(3)));
    const auto family = fuzz::kFamilies[input.Below(static_cast<int>(std::size(fuzz::kFamilies)))];
    fuzz::Call call(input);
    family(call);
    return 0;
}
