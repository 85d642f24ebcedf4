// The loops over faces' pixels, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/painterly/edge_lift_pixels.h"
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

void LightBytes(void* row, int pixels, float light, uint32_t alphaMask)
{
    auto* to = static_cast<uint8_t*>(row);
    const F32 factor = F32{} + light;
    int x = 0;
    for (; x + kPixels <= pixels; x += kPixels, to += kVectorBytes)
        Store(to, LightPixels(Load<U32>(to), factor, alphaMask));
    if (const int rest = (pixels - x) * 4; rest > 0)
        StorePart(to, LightPixels(LoadPart<U32>(to, rest), factor, alphaMask), rest);
}

void LightFloats(void* row, int pixels, const float (&factors)[4])
{
    typedef float Pixel __attribute__((vector_size(16), may_alias));
    const Pixel factor = Load<Pixel>(factors);
    auto* to = static_cast<uint8_t*>(row);
    for (int x = 0; x < pixels; ++x, to += 16)
        Store(to, Load<Pixel>(to) * factor);
}

template <class P>
uint32_t SumLuma(const void* row, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(row);
    U32 sums = {};
    int x = 0;
    for (; x + kPixels <= pixels; x += kPixels, from += kVectorBytes)
        sums += (U32)LiftLuma<P>(Load<U32>(from));
    if (x < pixels)
        sums += (U32)LiftLuma<P>(LoadPart<U32>(from, (pixels - x) * 4));
    uint32_t sum = 0;
    for (int i = 0; i < kPixels; ++i)
        sum += sums[i];
    return sum;
}

} // namespace

extern const FaceKernels kFaceKernels;
const FaceKernels kFaceKernels = {LightBytes, LightFloats, SumLuma<LiftBgra>, SumLuma<LiftArgb>};

} // namespace kelmora::KELMORA_VARIANT
