#include "image/primitives/channels.h"

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/float_kernels.h"

namespace kelmora {
namespace {

using namespace px;

template <int srcChannels, int dstChannels, class T>
void MoveRow(const T* src, T* dst, int width)
{
    for (int x = 0; x < width; ++x)
        dst[x * dstChannels] = src[x * srcChannels];
}

/// The loop for one row.
template <class S, class D, class T>
auto RowMover()
{
    constexpr bool bytes = sizeof(T) == 1, toColour = D::channels == 4;
    if constexpr (S::channels == 1 || (!bytes && toColour))
        return MoveRow<S::channels, D::channels, T>; // waits for memory as any other would
    else if constexpr (bytes && toColour)
        return ByteKernelsFor(CurrentVariant()).copyChannel;
    else if constexpr (bytes)
        return ByteKernelsFor(CurrentVariant()).extractChannel;
    else
        return FloatKernelsFor(CurrentVariant()).extractChannel;
}

/// One value per pixel from a region of layout S into a region of layout D.
template <class S, class D, class T>
PxStatus Move(const T* src, int srcStep, T* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<S, D>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto move = RowMover<S, D, T>();
    for (int y = 0; y < height; ++y)
        move(Row(src, srcStep, y), Row(dst, dstStep, y), width);
    return pxOk;
}

} // namespace

using u8 = std::uint8_t;

// clang-format off
PxStatus pxCopyChannel_8u_C4      (const u8* s, int ss, u8* d, int ds, int w, int h)       { return Move<C4, C4>(s, ss, d, ds, w, h); }
PxStatus pxCopyChannel_32f_C4     (const float* s, int ss, float* d, int ds, int w, int h) { return Move<C4, C4>(Loose(s), ss, Loose(d), ds, w, h); }
PxStatus pxExtractChannel_8u_C4C1 (const u8* s, int ss, u8* d, int ds, int w, int h)       { return Move<C4, C1>(s, ss, d, ds, w, h); }
PxStatus pxExtractChannel_32f_C4C1(const float* s, int ss, float* d, int ds, int w, int h) { return Move<C4, C1>(Loose(s), ss, Loose(d), ds, w, h); }
PxStatus pxInsertChannel_8u_C1C4  (const u8* s, int ss, u8* d, int ds, int w, int h)       { return Move<C1, C4>(s, ss, d, ds, w, h); }
PxStatus pxInsertChannel_32f_C1C4 (const float* s, int ss, float* d, int ds, int w, int h) { return Move<C1, C4>(Loose(s), ss, Loose(d), ds, w, h); }
// clang-format on

PxStatus pxSwapChannels_8u_C4_I(u8* pixels, int step, int width, int height, const int order[4])
{
    if (!pixels || !order)
        return pxNullPointer;
    if (const PxStatus status = CheckSize(width, height))
        return status;
    if (const PxStatus status = CheckStep(step, width, 4))
        return status;
    for (int i = 0; i < 4; ++i)
        if (order[i] < 0 || order[i] > 3)
            return pxBadChannelOrder;

    for (int y = 0; y < height; ++y) {
        u8* p = Row(pixels, step, y);
        for (int x = 0; x < width; ++x, p += 4) {
            const u8 old[4] = {p[0], p[1], p[2], p[3]};
            for (int i = 0; i < 4; ++i)
                p[i] = old[order[i]];
        }
    }
    return pxOk;
}

} // namespace kelmora
