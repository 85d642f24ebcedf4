// The rows of Crop Borders in floats, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/fixing/crop_borders_kernels.h"
#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

constexpr int kWholePixels = kVectorBytes / 16; ///< in a vector of floats

/// One float per pixel, in all of its channels.
KELMORA_INLINE F32 SpreadToChannels(const float* values)
{
#if defined(__AVX512BW__)
    const __m512i places = _mm512_set_epi32(3, 3, 3, 3, 2, 2, 2, 2, 1, 1, 1, 1, 0, 0, 0, 0);
    return (F32)_mm512_permutexvar_ps(places, _mm512_castps128_ps512(_mm_loadu_ps(values)));
#elif defined(__AVX2__)
    return (F32)_mm256_set_m128(_mm_broadcast_ss(values + 1), _mm_broadcast_ss(values));
#else
    return F32{} + *values;
#endif
}

KELMORA_INLINE F32 RepeatPixel(const float* pixel)
{
#if defined(__AVX512BW__)
    return (F32)_mm512_broadcast_f32x4(_mm_loadu_ps(pixel));
#elif defined(__AVX2__)
    return (F32)_mm256_broadcast_ps(reinterpret_cast<const __m128*>(pixel));
#else
    return Load<F32>(pixel);
#endif
}

KELMORA_INLINE U32 MaskOfAlpha(int alphaIndex)
{
    U32 mask = {};
    for (int i = alphaIndex; i < kPixels; i += 4)
        mask[i] = ~0u;
    return mask;
}

KELMORA_INLINE F32 Choose(U32 mask, F32 yes, F32 no)
{
    return (F32)(((U32)yes & mask) | ((U32)no & ~mask));
}

struct OverlayStep {
    KELMORA_METHOD static F32 Do(F32 kept, F32 own, F32 mask, F32 ground, U32 alpha)
    {
        const WideFloats over = Widen(kept), weight = Widen(mask), under = Widen(ground);
        const F32 mixed = Narrow({over.low * weight.low + (1.0 - weight.low) * under.low,
                                  over.high * weight.high + (1.0 - weight.high) * under.high});
        return Choose(alpha, own, mixed);
    }
};

struct FadeStep {
    KELMORA_METHOD static F32 Do(F32 kept, F32 own, F32 mask, F32, U32 alpha)
    {
        const WideFloats one = Widen(own), other = Widen(mask);
        const F32 product = Narrow({one.low * other.low + 0.0, one.high * other.high + 0.0});
        return Choose(alpha, product, kept);
    }
};

template <class Step, bool repeats>
KELMORA_INLINE void MaskPixels(const CropMaskRow& given)
{
    const CropMaskRow row = given; // stores could change it for all that the compiler knows
    const U32 alpha = MaskOfAlpha(row.alphaIndex);
    const F32 repeated = RepeatPixel(row.kept);
    ptrdiff_t x = 0;
    for (; x + kWholePixels <= row.pixels; x += kWholePixels)
        Store(row.result + x * 4,
              Step::Do(repeats ? repeated : Load<F32>(row.kept + x * 4), Load<F32>(row.own + x * 4),
                       SpreadToChannels(row.mask + x), Load<F32>(row.result + x * 4), alpha));
    if (const int rest = static_cast<int>(row.pixels - x); rest > 0) {
        float mask[kWholePixels] = {};
        __builtin_memcpy(mask, row.mask + x, static_cast<size_t>(rest) * sizeof(float));
        const F32 last = Step::Do(repeats ? repeated : LoadPart<F32>(row.kept + x * 4, rest * 16),
                                  LoadPart<F32>(row.own + x * 4, rest * 16), SpreadToChannels(mask),
                                  LoadPart<F32>(row.result + x * 4, rest * 16), alpha);
        StorePart(row.result + x * 4, last, rest * 16);
    }
}

template <class Step>
void MaskRow(const CropMaskRow& row)
{
    if (row.pixels > 0)
        row.repeats ? MaskPixels<Step, true>(row) : MaskPixels<Step, false>(row);
}

void CopyRow(const CropFullRow& given)
{
    const CropFullRow row = given; // likewise
    const U32 alpha = MaskOfAlpha(row.alphaIndex);
    const U32 added = row.addsToColours ? ~alpha : alpha;
    const auto* from = reinterpret_cast<const uint8_t*>(row.own);
    auto* to = reinterpret_cast<uint8_t*>(row.result);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.pixels) * 16;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
        const F32 own = Load<F32>(from + at);
        Store(to + at, Choose(added, own + 0.0f, own));
    }
    if (const int rest = static_cast<int>(bytes - at); rest > 0) {
        const F32 own = LoadPart<F32>(from + at, rest);
        StorePart(to + at, Choose(added, own + 0.0f, own), rest);
    }
}

} // namespace

extern const CropBordersKernels kCropBordersKernels;
const CropBordersKernels kCropBordersKernels = {MaskRow<OverlayStep>, MaskRow<FadeStep>, CopyRow};

} // namespace kelmora::KELMORA_VARIANT
