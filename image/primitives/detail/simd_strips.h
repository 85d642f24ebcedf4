// Rows of four-channel pixels of floats, four vectors at a time. Beside detail/simd.h, whose rules hold here too.

#pragma once

#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {

/// Calls change(v) with the four vectors of every strip, kPixels pixels, and stores what it leaves in them. Behind the
/// last pixel there are zeros. Long rows into other memory go past the caches.
template <class Change>
KELMORA_INLINE void ChangeStrips(const void* src, void* dst, int pixels, Change change)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    constexpr int strip = 4 * kVectorBytes;
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(pixels) * 16;
    const bool streams = from != to && CanStream(to, bytes);
    ptrdiff_t at = 0;
    for (; at + strip <= bytes; at += strip) {
        F32 v[4];
        for (int i = 0; i < 4; ++i)
            v[i] = Load<F32>(from + at + i * kVectorBytes);
        change(v);
        for (int i = 0; i < 4; ++i)
            streams ? Stream(to + at + i * kVectorBytes, v[i]) : Store(to + at + i * kVectorBytes, v[i]);
    }
    if (streams)
        EndStream();
    if (at < bytes) {
        const auto rest = static_cast<size_t>(bytes - at);
        F32 v[4] = {};
        __builtin_memcpy(v, from + at, rest);
        change(v);
        __builtin_memcpy(to + at, v, rest);
    }
}

} // namespace kelmora::KELMORA_VARIANT
