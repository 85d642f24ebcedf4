// The edge step's rows, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/painterly/edge_lift_kernels.h"
#include "effects/painterly/edge_lift_pixels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

template <class P, LiftedAlpha alpha>
void LiftBytes(const void* picture, const void* blurred, void* result, int width, float share)
{
    const I16 shares = PairWeights(static_cast<int>(share), 0);
    const auto* p = static_cast<const uint8_t*>(picture);
    const auto* q = static_cast<const uint8_t*>(blurred);
    auto* out = static_cast<uint8_t*>(result);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(out + at, LiftPixels<P, alpha>(Load<U32>(p + at), Load<U32>(q + at), shares));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(out + at,
                  LiftPixels<P, alpha>(LoadPart<U32>(p + at, rest), LoadPart<U32>(q + at, rest), shares),
                  rest);
}

/// kPixels pixels: four vectors of interleaved channels.
template <class P, LiftedAlpha alpha>
KELMORA_INLINE void LiftInterleaved(F32 (&picture)[4], F32 (&blurred)[4], F32 share)
{
    SplitChannels(picture);
    SplitChannels(blurred);
    LiftPlanes<P, alpha>(picture, blurred, share);
    SplitChannels(blurred); // the transposition undoes itself
}

template <class P, LiftedAlpha alpha>
void LiftFloats(const void* picture, const void* blurred, void* result, int width, float share)
{
    const F32 shares = F32{} + share;
    const auto* p = static_cast<const uint8_t*>(picture);
    const auto* q = static_cast<const uint8_t*>(blurred);
    auto* out = static_cast<uint8_t*>(result);
    constexpr int strip = 4 * kVectorBytes;
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 16;
    const bool streams = CanStream(out, bytes);
    ptrdiff_t at = 0;
    for (; at + strip <= bytes; at += strip) {
        F32 a[4], b[4];
        for (int i = 0; i < 4; ++i) {
            a[i] = Load<F32>(p + at + i * kVectorBytes);
            b[i] = Load<F32>(q + at + i * kVectorBytes);
        }
        LiftInterleaved<P, alpha>(a, b, shares);
        for (int i = 0; i < 4; ++i)
            streams ? Stream(out + at + i * kVectorBytes, b[i]) : Store(out + at + i * kVectorBytes, b[i]);
    }
    if (streams)
        EndStream();
    if (at < bytes) {
        // A copy of its own: vectors whose address is taken would live in memory in the loop above as well.
        const auto rest = static_cast<size_t>(bytes - at);
        F32 a[4] = {}, b[4] = {};
        __builtin_memcpy(a, p + at, rest);
        __builtin_memcpy(b, q + at, rest);
        LiftInterleaved<P, alpha>(a, b, shares);
        __builtin_memcpy(out + at, b, rest);
    }
}

template <LiftedAlpha alpha>
constexpr EdgeLiftKernels::Rows kRows = {LiftBytes<LiftBgra, alpha>, LiftBytes<LiftArgb, alpha>,
                                         LiftFloats<BgraPlanes, alpha>, LiftFloats<ArgbPlanes, alpha>};

} // namespace

extern const EdgeLiftKernels kEdgeLiftKernels;
const EdgeLiftKernels kEdgeLiftKernels = {kRows<LiftedAlpha::Kept>, kRows<LiftedAlpha::Lifted>};

} // namespace kelmora::KELMORA_VARIANT
