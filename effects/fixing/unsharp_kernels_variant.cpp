// The unsharp combination's rows, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/fixing/unsharp_kernels.h"
#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

KELMORA_INLINE U8 CombinePixels(U8 picture, U8 blurred, U8 alpha, U32 alphaMask, const ByteGain& gain)
{
    const U16 factor = U16{} + gain.factor;
    const auto scaled = [&](U16 raised) {
        return (I16)((MulHigh(raised, factor) + gain.offset) >> gain.shift);
    };
    // The picture, boosted, less the blur: -510 to 765.
    const I16 low = WidenLow(picture) + scaled(RaiseLow(picture)) - scaled(RaiseLow(blurred));
    const I16 high = WidenHigh(picture) + scaled(RaiseHigh(picture)) - scaled(RaiseHigh(blurred));
    return (U8)(((U32)Pack(low, high) & ~alphaMask) | ((U32)alpha & alphaMask));
}

void CombineBytes(const UnsharpRow<ByteGain>& row)
{
    const ByteGain gain = row.gain;
    const U32 alphaMask = U32{} + (0xFFu << (8 * row.alphaIndex));
    const auto* picture = static_cast<const uint8_t*>(row.picture);
    const auto* blurred = static_cast<const uint8_t*>(row.blurred);
    const auto* alpha = static_cast<const uint8_t*>(row.alpha);
    auto* result = static_cast<uint8_t*>(row.result);
    const int bytes = row.width * 4;
    int at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(result + at,
              CombinePixels(Load<U8>(picture + at), Load<U8>(blurred + at), Load<U8>(alpha + at), alphaMask,
                            gain));
    if (const int rest = bytes - at; rest > 0)
        StorePart(result + at,
                  CombinePixels(LoadPart<U8>(picture + at, rest), LoadPart<U8>(blurred + at, rest),
                                LoadPart<U8>(alpha + at, rest), alphaMask, gain),
                  rest);
}

/// Not-a-number gives 0.
KELMORA_INLINE F32 Clamp01(F32 v)
{
    v = v > 0.0f ? v : F32{};
    return v < 1.0f ? v : F32{} + 1.0f;
}

KELMORA_INLINE F32 CombineValues(F32 picture, F32 blurred, F32 alpha, U32 alphaMask, float boost,
                                 float amount)
{
    const F32 sharp = Clamp01(picture * boost - blurred * amount);
    return (F32)(((U32)sharp & ~alphaMask) | ((U32)alpha & alphaMask));
}

void CombineFloats(const UnsharpRow<float>& row)
{
    const float amount = row.gain;
    const float boost = static_cast<float>(static_cast<double>(amount) + 1.0);
    U32 alphaMask = {};
    for (int i = 0; i < kPixels; ++i)
        alphaMask[i] = i % 4 == row.alphaIndex ? 0xFFFFFFFFu : 0;
    const auto* picture = static_cast<const uint8_t*>(row.picture);
    const auto* blurred = static_cast<const uint8_t*>(row.blurred);
    const auto* alpha = static_cast<const uint8_t*>(row.alpha);
    auto* result = static_cast<uint8_t*>(row.result);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.width) * 16;
    const bool streams = CanStream(result, bytes);
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
        const F32 sharp = CombineValues(Load<F32>(picture + at), Load<F32>(blurred + at),
                                        Load<F32>(alpha + at), alphaMask, boost, amount);
        streams ? Stream(result + at, sharp) : Store(result + at, sharp);
    }
    if (streams)
        EndStream();
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(result + at,
                  CombineValues(LoadPart<F32>(picture + at, rest), LoadPart<F32>(blurred + at, rest),
                                LoadPart<F32>(alpha + at, rest), alphaMask, boost, amount),
                  rest);
}

} // namespace

extern const UnsharpKernels kUnsharpKernels;
const UnsharpKernels kUnsharpKernels = {CombineBytes, CombineFloats};

} // namespace kelmora::KELMORA_VARIANT
