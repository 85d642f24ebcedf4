#pragma once

#include <cstdint>
#include <cstring>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"

namespace kelmora::px {

/// The work behind pxPadReplicate, for any element type.
template <class L, class T>
PxStatus PadReplicate(const T* src, int srcStep, int srcWidth, int srcHeight, T* dst, int dstStep,
                      int dstWidth, int dstHeight, int top, int left)
{
    if (!src || !dst)
        return pxNullPointer;
    if (CheckSize(srcWidth, srcHeight) || CheckSize(dstWidth, dstHeight))
        return pxBadSize;
    if (CheckStep(srcStep, srcWidth, L::channels * sizeof(T))
        || CheckStep(dstStep, dstWidth, L::channels * sizeof(T)))
        return pxBadStep;
    if (top < 0 || left < 0 || srcWidth > dstWidth - left || srcHeight > dstHeight - top)
        return pxBadSize;

    constexpr std::ptrdiff_t n = L::channels;
    const auto fill = [](T* to, const T* pixel, int count) {
        for (int x = 0; x < count; ++x)
            for (int c = 0; c < n; ++c)
                to[x * n + c] = pixel[c];
    };
    const std::size_t rowBytes = static_cast<std::size_t>(srcWidth) * n * sizeof(T);
    for (int y = 0; y < srcHeight; ++y) {
        const T* from = Row(src, srcStep, y);
        T* row = Row(dst, dstStep, top + y);
        T* middle = row + left * n;
        if (middle != from)
            std::memmove(middle, from, rowBytes);
        fill(row, middle, left);
        fill(middle + srcWidth * n, middle + (srcWidth - 1) * n, dstWidth - left - srcWidth);
    }
    const std::size_t wholeBytes = static_cast<std::size_t>(dstWidth) * n * sizeof(T);
    const T* firstRow = Row(dst, dstStep, top);
    for (int y = 0; y < top; ++y)
        std::memcpy(Row(dst, dstStep, y), firstRow, wholeBytes);
    const T* lastRow = Row(dst, dstStep, top + srcHeight - 1);
    for (int y = top + srcHeight; y < dstHeight; ++y)
        std::memcpy(Row(dst, dstStep, y), lastRow, wholeBytes);
    return pxOk;
}

} // namespace kelmora::px
