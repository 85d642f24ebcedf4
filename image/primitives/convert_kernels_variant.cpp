// Bytes as floats and back, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/convert_kernels.h"
#include "image/primitives/detail/byte_levels.h"
#include "image/primitives/detail/simd_bytes.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

/// kPixels pixels of bytes become four vectors of floats.
constexpr int kStrip = 4 * kVectorBytes;

template <bool reverses>
KELMORA_INLINE void ToLevels(U32 pixels, F32 (&levels)[4])
{
    const U8 bytes = (U8)ToLaneOrder(reverses ? Reversed(pixels) : pixels);
    const I16 low = WidenLow(bytes), high = WidenHigh(bytes);
    levels[0] = LevelOf(WidenLow(low));
    levels[1] = LevelOf(WidenHigh(low));
    levels[2] = LevelOf(WidenLow(high));
    levels[3] = LevelOf(WidenHigh(high));
}

template <bool reverses>
KELMORA_INLINE U32 FromLevels(const F32 (&levels)[4])
{
    const I16 low = Pack(NearestByte(levels[0]), NearestByte(levels[1]));
    const I16 high = Pack(NearestByte(levels[2]), NearestByte(levels[3]));
    const U32 pixels = FromLaneOrder((U32)Pack(low, high));
    return reverses ? Reversed(pixels) : pixels;
}

template <bool reverses>
void ToFloats(const void* src, void* dst, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(pixels) * 16;
    const bool streams = CanStream(to, bytes);
    ptrdiff_t at = 0;
    for (; at + kStrip <= bytes; at += kStrip) {
        F32 levels[4];
        ToLevels<reverses>(Load<U32>(from + at / 4), levels);
        for (int i = 0; i < 4; ++i)
            streams ? Stream(to + at + i * kVectorBytes, levels[i])
                    : Store(to + at + i * kVectorBytes, levels[i]);
    }
    if (streams)
        EndStream();
    if (at < bytes) {
        const int rest = static_cast<int>(bytes - at);
        F32 levels[4];
        ToLevels<reverses>(LoadPart<U32>(from + at / 4, rest / 4), levels);
        __builtin_memcpy(to + at, levels, static_cast<size_t>(rest));
    }
}

template <bool reverses>
void ToBytes(const void* src, void* dst, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(pixels) * 16;
    ptrdiff_t at = 0;
    for (; at + kStrip <= bytes; at += kStrip) {
        F32 levels[4];
        for (int i = 0; i < 4; ++i)
            levels[i] = Load<F32>(from + at + i * kVectorBytes);
        Store(to + at / 4, FromLevels<reverses>(levels));
    }
    if (at < bytes) {
        const int rest = static_cast<int>(bytes - at);
        F32 levels[4] = {};
        __builtin_memcpy(levels, from + at, static_cast<size_t>(rest));
        StorePart(to + at / 4, FromLevels<reverses>(levels), rest / 4);
    }
}

} // namespace

extern const ConvertKernels kConvertKernels;
const ConvertKernels kConvertKernels = {ToFloats<false>, ToFloats<true>, ToBytes<false>, ToBytes<true>};

} // namespace kelmora::KELMORA_VARIANT
