#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/warp.h"
#include "tests/image/variants.h"
#include "tests/reference/picture.h"
#include "tests/reference/warp.h"

namespace kelmora {

// What the tests of affine and of perspective warps share.

inline constexpr int kCodes[] = {pxNearest, pxLinear, pxCubic};
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kPi = 3.14159265358979323846;

/// 0 to 1, without 1.
inline double Unit(std::mt19937& random)
{
    return static_cast<double>(random()) / 4294967296.0;
}

inline PxRect WholeOf(const GuardedPicture& picture)
{
    return {0, 0, picture.Width(), picture.Height()};
}

inline reference::ResizeRegion Plain(const PxRect& rect)
{
    return {rect.x, rect.y, rect.width, rect.height};
}

/// The arguments of one call, of the member for `format`. `map` has two or three rows.
struct WarpCall {
    std::uint32_t format;
    const void* src;
    int srcWidth, srcHeight, srcStep;
    PxRect srcRegion;
    void* dst;
    int dstStep;
    PxRect dstRegion;
    const double (*map)[3];
    std::uint32_t code;

    template <class T, class Member, class Code>
    PxStatus RunMember(Member member, Code with) const
    {
        return member(static_cast<const T*>(src), srcWidth, srcHeight, srcStep, srcRegion,
                      static_cast<T*>(dst), dstStep, dstRegion, map, with);
    }

    PxStatus RunAffine() const
    {
        const auto with = static_cast<int>(code);
        switch (format) {
        case PF_Mask8:
            return RunMember<std::uint8_t>(pxWarpAffine_8u_C1, with);
        case PF_BGRA8:
            return RunMember<std::uint8_t>(pxWarpAffine_8u_C4, with);
        default:
            return RunMember<float>(pxWarpAffine_32f_C4, with);
        }
    }

    PxStatus RunQuad() const
    {
        return format == PF_BGRA8 ? RunMember<std::uint8_t>(pxWarpQuad_8u_C4, code)
                                  : RunMember<float>(pxWarpQuad_32f_C4, code);
    }
};

template <class Map>
WarpCall CallOn(const GuardedPicture& src, const PxRect& srcRegion, const GuardedPicture& dst,
                const PxRect& dstRegion, const Map& map, std::uint32_t code)
{
    static_assert(sizeof(map[0]) == sizeof(double[3]));
    return {src.Format(), src.Row(0),
            src.Width(),  src.Height(),
            src.Stride(), srcRegion,
            dst.Row(0),   dst.Stride(),
            dstRegion,    reinterpret_cast<const double(*)[3]>(map[0].data()),
            code};
}

/// How far a result may lie from the plain one; sources hold bytes, or floats from 0 to 1. Nearest and linear
/// are fixed to the last bit; cubic bytes round to nearest, cubic floats lose their last bits, and so do floats
/// that are mixed at smoothed edges.
inline double ToleranceOf(std::uint32_t format, std::uint32_t code)
{
    const bool cubic = (code & ~pxSmoothEdges) == pxCubic, smooth = (code & pxSmoothEdges) != 0;
    if (!IsFloatFormat(format))
        return cubic ? (smooth ? 1.001 : 0.5 + 1e-9) : 0.0;
    return cubic || smooth ? 1e-6 : 0.0;
}

/// Calls `run` with every variant on a fresh copy of `dst` and compares all of it with `expected`, and the
/// variants bit for bit with each other.
template <class Run>
inline void CheckVariants(const GuardedPicture& src, const GuardedPicture& dst,
                          const reference::Picture& expected, double tolerance, Run&& run)
{
    std::vector<GuardedPicture> results;
    ForEachVariant([&] {
        GuardedPicture& result = results.emplace_back(dst);
        ASSERT_EQ(run(result), pxOk);
        ASSERT_TRUE(reference::Matches(result, expected, 0.0, tolerance))
            << "variant " << static_cast<int>(CurrentVariant());
        ASSERT_TRUE(Equal(result, results.front())) << "variant " << static_cast<int>(CurrentVariant());
        result.Check();
    });
    src.Check();
}

template <class Map>
std::string Words(const Map& map, const GuardedPicture& src, const PxRect& from, const PxRect& to,
                  std::uint32_t code)
{
    std::string text = "format " + std::to_string(src.Format()) + ", " + std::to_string(src.Width()) + " x "
        + std::to_string(src.Height()) + ", code " + std::to_string(code & 0xff);
    for (const PxRect& rect : {from, to})
        text += ", " + std::to_string(rect.width) + " x " + std::to_string(rect.height) + " at "
            + std::to_string(rect.x) + ", " + std::to_string(rect.y);
    for (const auto& row : map)
        for (const double value : row)
            text += "  " + testing::PrintToString(value);
    return text;
}

inline constexpr int kUntouched = 77; // what destinations hold before

/// Calls check(call, status) for each way to spoil a good call by one argument, with the status it must give.
template <class Check>
void ForEachBadCall(const WarpCall& good, int srcRow, int dstRow, Check&& check)
{
    const auto expect = [&](WarpCall call, PxStatus status, auto change) {
        change(call);
        check(call, status);
    };
    expect(good, pxNullPointer, [](WarpCall& call) { call.src = nullptr; });
    expect(good, pxNullPointer, [](WarpCall& call) { call.dst = nullptr; });
    expect(good, pxNullPointer, [](WarpCall& call) { call.map = nullptr; });
    for (const int bad : {0, -1, INT_MIN}) {
        expect(good, pxBadSize, [bad](WarpCall& call) { call.srcWidth = bad; });
        expect(good, pxBadSize, [bad](WarpCall& call) { call.srcHeight = bad; });
        expect(good, pxBadSize, [bad](WarpCall& call) { call.srcRegion.width = bad; });
        expect(good, pxBadSize, [bad](WarpCall& call) { call.srcRegion.height = bad; });
        expect(good, pxBadSize, [bad](WarpCall& call) { call.dstRegion.width = bad; });
        expect(good, pxBadSize, [bad](WarpCall& call) { call.dstRegion.height = bad; });
    }
    for (const int bad : {srcRow - 1, 0, -srcRow, INT_MIN})
        expect(good, pxBadStep, [bad](WarpCall& call) { call.srcStep = bad; });
    for (const int bad : {dstRow - 1, 0, -dstRow, INT_MIN})
        expect(good, pxBadStep, [bad](WarpCall& call) { call.dstStep = bad; });
    expect(good, pxBadStep, [](WarpCall& call) { call.dstRegion.x = 1; });
    expect(good, pxBadStep, [](WarpCall& call) { call.dstRegion = {INT_MAX - 1, 0, 1, 1}; });
    for (const PxRect& region : {PxRect{9, 0, 1, 1},
                                 {0, 8, 1, 1},
                                 {-1, 0, 4, 4},
                                 {0, -1, 4, 4},
                                 {INT_MIN, 0, INT_MAX, 4},
                                 {INT_MAX, INT_MAX, INT_MAX, INT_MAX}})
        expect(good, pxRegionOutsideSource, [&](WarpCall& call) { call.srcRegion = region; });
    for (const PxRect& region : {PxRect{-1, 0, 4, 4}, {0, -1, 4, 4}, {INT_MIN, INT_MIN, 4, 4}})
        expect(good, pxRegionOutsideSource, [&](WarpCall& call) { call.dstRegion = region; });
}

} // namespace kelmora
