#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "image/primitives/status.h"

namespace kelmora::px {

/// First value of row `y` of a region whose rows are `step` bytes apart.
template <class T>
T* Row(T* first, int step, int y)
{
    using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(first) + static_cast<std::ptrdiff_t>(step) * y);
}

constexpr PxStatus CheckSize(int width, int height)
{
    return width < 1 || height < 1 ? pxBadSize : pxOk;
}

/// A step must cover a row of `width` pixels of `pixelBytes` bytes.
constexpr PxStatus CheckStep(int step, int width, std::size_t pixelBytes)
{
    return step < static_cast<std::int64_t>(width) * static_cast<std::int64_t>(pixelBytes) ? pxBadStep : pxOk;
}

/// The checks that all primitives with one source and one destination share, in their order: pointers,
/// size, steps.
template <class SourceLayout, class DestinationLayout, class T>
PxStatus CheckRegions(const T* src, int srcStep, const T* dst, int dstStep, int width, int height)
{
    if (!src || !dst)
        return pxNullPointer;
    if (const PxStatus status = CheckSize(width, height))
        return status;
    if (const PxStatus status = CheckStep(srcStep, width, SourceLayout::channels * sizeof(T)))
        return status;
    return CheckStep(dstStep, width, DestinationLayout::channels * sizeof(T));
}

} // namespace kelmora::px
