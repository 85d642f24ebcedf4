#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"

namespace kelmora::px {

/// dst value = op(src value, channel), over the values that layout `L` touches. The regions may be the same.
template <class L, class T, class Op>
PxStatus Map(const T* src, int srcStep, T* dst, int dstStep, int width, int height, Op op)
{
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    for (int y = 0; y < height; ++y) {
        const T* s = Row(src, srcStep, y);
        T* d = Row(dst, dstStep, y);
        for (int x = 0; x < width; ++x, s += L::channels, d += L::channels)
            for (int c = 0; c < L::touched; ++c)
                d[c] = op(s[c], c);
    }
    return pxOk;
}

/// dst value = op(src value, dst value), over whole pixels.
template <class L, class T, class Op>
PxStatus Accumulate(const T* src, int srcStep, T* dst, int dstStep, int width, int height, Op op)
{
    static_assert(L::whole);
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    const std::int64_t values = static_cast<std::int64_t>(width) * L::channels;
    for (int y = 0; y < height; ++y) {
        const T* s = Row(src, srcStep, y);
        T* d = Row(dst, dstStep, y);
        for (std::int64_t i = 0; i < values; ++i)
            d[i] = op(s[i], d[i]);
    }
    return pxOk;
}

// --- four bytes as one word ---------------------------------------------------------------------------------
//
// Rows go through blocks of words that overlap nothing, so the compiler vectorises the arithmetic even where
// source and destination are the same.

/// A four-byte pixel; its first byte is the lowest.
using Word = std::uint32_t;

inline constexpr int kBlockPixels = 256;

/// dst = op(src1, src2), over whole pixels.
template <class Op>
void ZipPixelRow(const std::uint8_t* src1, const std::uint8_t* src2, std::uint8_t* dst, int width, Op op)
{
    Word in1[kBlockPixels], in2[kBlockPixels];
    for (int first = 0; first < width; first += kBlockPixels) {
        const int count = std::min(kBlockPixels, width - first);
        const std::size_t bytes = static_cast<std::size_t>(count) * 4;
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(first) * 4;
        std::memcpy(in1, src1 + at, bytes);
        std::memcpy(in2, src2 + at, bytes);
        for (int i = 0; i < count; ++i)
            in1[i] = op(in1[i], in2[i]);
        std::memcpy(dst + at, in1, bytes);
    }
}

} // namespace kelmora::px
