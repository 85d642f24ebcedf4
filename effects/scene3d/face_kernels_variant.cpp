// The loops over faces' pixels, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/common/luma_pixels.h"
#include "effects/scene3d/face_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

KELMORA_INLINE I32 LightQuarter(I32 values, F32 light)
{
    return Truncate(ToFloat(values) * light + 0.5f);
}

KELMORA_INLINE U8 Light(U8 v, F32 light)
{
    const I16 low = WidenLow(v), high = WidenHigh(v);
    return Pack(Pack(LightQuarter(WidenLow(low), light), LightQuarter(WidenHigh(low), light)),
                Pack(LightQuarter(WidenLow(high), light), LightQuarter(WidenHigh(high), light)));
}

KELMORA_INLINE U32 LightPixels(U32 pixels, F32 light, uint32_t alphaMask)
{
    return ((U32)Light((U8)pixels, light) & ~alphaMask) | (pixels & alphaMask);
}

void LightBytes(const void* row, void* result, int pixels, float light, uint32_t alphaMask)
{
    const auto* from = static_cast<const uint8_t*>(row);
    auto* to = static_cast<uint8_t*>(result);
    const F32 factor = F32{} + light;
    int x = 0;
    for (; x + kPixels <= pixels; x += kPixels, from += kVectorBytes, to += kVectorBytes)
        Store(to, LightPixels(Load<U32>(from), factor, alphaMask));
    if (const int rest = (pixels - x) * 4; rest > 0)
        StorePart(to, LightPixels(LoadPart<U32>(from, rest), factor, alphaMask), rest);
}

void LightFloats(const void* row, void* result, int pixels, const float (&factors)[4])
{
    typedef float Pixel __attribute__((vector_size(16), may_alias));
    const Pixel factor = Load<Pixel>(factors);
    const auto* from = static_cast<const uint8_t*>(row);
    auto* to = static_cast<uint8_t*>(result);
    for (int x = 0; x < pixels; ++x, from += 16, to += 16)
        Store(to, Load<Pixel>(from) * factor);
}

template <class P>
uint32_t SumLuma(const void* row, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(row);
    U32 sums = {};
    int x = 0;
    for (; x + kPixels <= pixels; x += kPixels, from += kVectorBytes)
        sums += (U32)Luma<P>(Load<U32>(from));
    if (x < pixels)
        sums += (U32)Luma<P>(LoadPart<U32>(from, (pixels - x) * 4));
    uint32_t sum = 0;
    for (int i = 0; i < kPixels; ++i)
        sum += sums[i];
    return sum;
}

/// In single precision, as the sum that it goes into; pixels that stand alone have Luma.
KELMORA_INLINE F32 FloatLuma(F32 red, F32 green, F32 blue)
{
    return red * 0.298f + green * 0.586f + blue * 0.113f;
}

template <class P>
void SumFloats(const void* const (&rows)[FaceKernels::kSums], int pixels, float (&sums)[FaceKernels::kSums])
{
    constexpr int kSums = FaceKernels::kSums, kLanes = kPixels / 4;
    float sum[kSums];
    for (int i = 0; i < kSums; ++i)
        sum[i] = sums[i];
    for (int x = 0; x < pixels; x += kPixels) {
        // Through memory, where each sum finds its values one by one.
        alignas(64) float luma[kSums][kPixels];
        const int left = pixels - x;
        for (int i = 0; i < kSums; ++i) {
            const auto* from = static_cast<const uint8_t*>(rows[i]) + static_cast<ptrdiff_t>(x) * 16;
            F32 v[4] = {};
            if (left >= kPixels)
                for (int j = 0; j < 4; ++j)
                    v[j] = Load<F32>(from + j * kVectorBytes);
            else
                __builtin_memcpy(v, from, static_cast<size_t>(left) * 16);
            SplitChannels(v);
            Store(luma[i], FloatLuma(v[P::r], v[P::g], v[P::b]));
        }
        for (int k = 0; k < (left < kPixels ? left : kPixels); ++k)
            for (int i = 0; i < kSums; ++i)
                sum[i] += luma[i][k % kLanes * 4 + k / kLanes]; // as the channels were split
    }
    for (int i = 0; i < kSums; ++i)
        sums[i] = sum[i];
}

} // namespace

extern const FaceKernels kFaceKernels;
const FaceKernels kFaceKernels = {LightBytes,         LightFloats,           SumLuma<BgraWords>,
                                  SumLuma<ArgbWords>, SumFloats<BgraPlanes>, SumFloats<ArgbPlanes>};

} // namespace kelmora::KELMORA_VARIANT
