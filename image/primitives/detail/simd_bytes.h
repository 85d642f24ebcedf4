// Products of bytes over 255, and rows of bytes as vectors. Beside detail/simd.h, whose rules hold here too.

#pragma once

#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {

/// Calls whole(at) for every whole vector of `bytes`, and rest(at, count) for what is left of them.
template <class Whole, class Rest>
KELMORA_INLINE void ForVectors(ptrdiff_t bytes, Whole whole, Rest rest)
{
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        whole(at);
    if (at < bytes)
        rest(at, static_cast<int>(bytes - at));
}

// Pixels as the words of their even bytes and those of their odd ones.

struct ByteHalves {
    U16 even, odd;
};

KELMORA_INLINE ByteHalves Halves(U32 pixels)
{
    return {(U16)(pixels & 0x00FF00FFu), (U16)((pixels >> 8) & 0x00FF00FFu)};
}

KELMORA_INLINE U32 Whole(ByteHalves halves)
{
    return (U32)halves.even | (U32)halves.odd << 8;
}

/// The four bytes of each pixel from last to first.
KELMORA_INLINE U32 Reversed(U32 pixels)
{
    const U16 words = (U16)pixels;
    const U32 swapped = (U32)(U16)(words << 8 | words >> 8);
    return swapped << 16 | swapped >> 16;
}

/// p / 255 toward zero, see detail/byte_product.h.
KELMORA_INLINE U16 By255(U16 p)
{
    return (p + (p >> 8) + 1) >> 8;
}

/// The low byte of each element as two words.
KELMORA_INLINE U16 InBothWords(U32 level)
{
    return (U16)(level | level << 16);
}

KELMORA_INLINE ByteHalves Scaled(ByteHalves v, U16 even, U16 odd)
{
    return {By255(v.even * even), By255(v.odd * odd)};
}

} // namespace kelmora::KELMORA_VARIANT
