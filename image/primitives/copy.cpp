#include "image/primitives/copy.h"

#include <cstring>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"

namespace kelmora {
namespace {

using namespace px;

template <class L, class T>
PxStatus Copy(const T* src, int srcStep, T* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    const std::size_t rowBytes = static_cast<std::size_t>(width) * L::channels * sizeof(T);
    // Overlapping rows come out right when they are taken in the direction of the shift.
    const bool upward = dst > src;
    for (int i = 0; i < height; ++i) {
        const int y = upward ? height - 1 - i : i;
        std::memmove(Row(dst, dstStep, y), Row(src, srcStep, y), rowBytes);
    }
    return pxOk;
}

} // namespace

using u8 = std::uint8_t;

// clang-format off
PxStatus pxCopy_8u_C1 (const u8* s, int ss, u8* d, int ds, int w, int h)       { return Copy<C1>(s, ss, d, ds, w, h); }
PxStatus pxCopy_8u_C4 (const u8* s, int ss, u8* d, int ds, int w, int h)       { return Copy<C4>(s, ss, d, ds, w, h); }
PxStatus pxCopy_32f_C1(const float* s, int ss, float* d, int ds, int w, int h) { return Copy<C1>(s, ss, d, ds, w, h); }
PxStatus pxCopy_32f_C4(const float* s, int ss, float* d, int ds, int w, int h) { return Copy<C4>(s, ss, d, ds, w, h); }
// clang-format on

} // namespace kelmora
