#include "image/primitives/arithmetic.h"

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/map.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/float_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

struct Plus {
    float operator()(float v, float constant) const { return v + constant; }
};

struct Times {
    float operator()(float v, float constant) const { return v * constant; }
};

/// dst = op(src, the channel's constant).
template <class L, class T, class Constant, class Op>
PxStatus WithConstants(const T* src, int srcStep, const Constant* consts, T* dst, int dstStep, int width,
                       int height, Op op)
{
    if (!consts)
        return pxNullPointer;
    Constant own[L::touched]; // so that no store can change them
    for (int c = 0; c < L::touched; ++c)
        own[c] = consts[c];
    return Map<L>(src, srcStep, dst, dstStep, width, height,
                  [&](Constant v, int c) { return op(v, own[c]); });
}

template <class L, class T, class Constant, class Op>
PxStatus WithConstants(const Constant* consts, T* pixels, int step, int width, int height, Op op)
{
    return WithConstants<L>(static_cast<const T*>(pixels), step, consts, pixels, step, width, height, op);
}

template <class L>
PxStatus Add(const float* src, int srcStep, float* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto add = FloatKernelsFor(CurrentVariant()).add;
    for (int y = 0; y < height; ++y)
        add(Row(src, srcStep, y), Row(dst, dstStep, y), width * L::channels);
    return pxOk;
}

template <class L>
PxStatus MulScaled(const u8* consts, u8* pixels, int step, int width, int height)
{
    if (!consts)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<L, L>(pixels, step, pixels, step, width, height))
        return status;
    ScaleRow row = {};
    row.count = width * L::channels;
    for (int i = 0; i < 4; ++i)
        row.constants[i] = consts[i % L::channels];
    const auto scale = ByteKernelsFor(CurrentVariant()).scale;
    for (int y = 0; y < height; ++y) {
        row.values = Row(pixels, step, y);
        scale(row);
    }
    return pxOk;
}

template <class L>
PxStatus Average(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto average = ByteKernelsFor(CurrentVariant()).average;
    for (int y = 0; y < height; ++y)
        average(Row(src, srcStep, y), Row(dst, dstStep, y), width * L::channels);
    return pxOk;
}

template <class L>
PxStatus AddScaled(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height, int scale)
{
    const auto saturated = [](int v) { return static_cast<u8>(v < 255 ? v : 255); };
    if (scale > 9) // the largest sum is below half of the smallest unit
        return Accumulate<L>(src, srcStep, dst, dstStep, width, height, [](u8, u8) { return u8{0}; });
    if (scale == 1)
        return Average<L>(src, srcStep, dst, dstStep, width, height);
    if (scale > 0) {
        const int half = (1 << (scale - 1)) - 1;
        return Accumulate<L>(src, srcStep, dst, dstStep, width, height, [=](u8 a, u8 b) {
            const int sum = a + b;
            return static_cast<u8>((sum + half + ((sum >> scale) & 1)) >> scale);
        });
    }
    const int left = scale < -8 ? 8 : -scale; // eight places saturate all but 0
    return Accumulate<L>(src, srcStep, dst, dstStep, width, height,
                         [=](u8 a, u8 b) { return saturated((a + b) << left); });
}

} // namespace

// clang-format off
PxStatus pxAddConst_32f_A3  (const float* s, int ss, const float k[3], float* d, int ds, int w, int h) { return WithConstants<A3>(Loose(s), ss, k, Loose(d), ds, w, h, Plus{}); }
PxStatus pxAddConst_32f_A3_I(const float k[3], float* p, int step, int w, int h)                       { return WithConstants<A3>(k, Loose(p), step, w, h, Plus{}); }
PxStatus pxMulConst_32f_A3  (const float* s, int ss, const float k[3], float* d, int ds, int w, int h) { return WithConstants<A3>(Loose(s), ss, k, Loose(d), ds, w, h, Times{}); }
PxStatus pxMulConst_32f_A3_I(const float k[3], float* p, int step, int w, int h)                       { return WithConstants<A3>(k, Loose(p), step, w, h, Times{}); }
PxStatus pxMulConst_32f_C4_I(const float k[4], float* p, int step, int w, int h)                       { return WithConstants<C4>(k, Loose(p), step, w, h, Times{}); }

PxStatus pxAdd_32f_C4_I(const float* s, int ss, float* d, int ds, int w, int h) { return Add<C4>(s, ss, d, ds, w, h); }

PxStatus pxMulConstScaled_8u_C1_I(u8 k, u8* p, int step, int w, int h)          { return MulScaled<C1>(&k, p, step, w, h); }
PxStatus pxMulConstScaled_8u_C4_I(const u8 k[4], u8* p, int step, int w, int h) { return MulScaled<C4>(k, p, step, w, h); }

PxStatus pxAddScaled_8u_C1_I(const u8* s, int ss, u8* d, int ds, int w, int h, int scale) { return AddScaled<C1>(s, ss, d, ds, w, h, scale); }
PxStatus pxAddScaled_8u_C4_I(const u8* s, int ss, u8* d, int ds, int w, int h, int scale) { return AddScaled<C4>(s, ss, d, ds, w, h, scale); }
// clang-format on

} // namespace kelmora
