#include "image/primitives/neighbourhood.h"

#include <algorithm>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {
namespace {

using namespace px;
using u8 = std::uint8_t;

/// dst = ((sum of the mask + bias) * factor) >> shift. The sums of the columns come first, a stretch at a time.
template <int reach, int bias, int factor, int shift>
void BoxAverage(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    constexpr int kStretch = 512;
    std::uint16_t columns[kStretch + 2 * reach];
    for (int y = 0; y < height; ++y)
        for (int first = 0; first < width; first += kStretch) {
            const int count = std::min(kStretch, width - first);
            std::fill_n(columns, count + 2 * reach, std::uint16_t{0});
            for (int r = -reach; r <= reach; ++r) {
                const u8* row = Row(src, srcStep, y + r) + first - reach;
                for (int i = 0; i < count + 2 * reach; ++i)
                    columns[i] = static_cast<std::uint16_t>(columns[i] + row[i]);
            }
            u8* to = Row(dst, dstStep, y) + first;
            for (int i = 0; i < count; ++i) {
                int sum = bias;
                for (int c = 0; c <= 2 * reach; ++c)
                    sum += columns[i + c];
                to[i] = static_cast<u8>((sum * factor) >> shift);
            }
        }
}

} // namespace

PxStatus pxSharpen3x3_8u_A3(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height)
{
    if (const PxStatus status = CheckRegions<A3, A3>(src, srcStep, dst, dstStep, width, height))
        return status;
    const auto sharpen = RowKernelsFor(CurrentVariant()).sharpenBytes;
    for (int y = 0; y < height; ++y)
        sharpen({Row(src, srcStep, y - 1), Row(src, srcStep, y), Row(src, srcStep, y + 1),
                 Row(dst, dstStep, y), width});
    return pxOk;
}

PxStatus pxBoxAverage_8u_C1(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height, int mask)
{
    if (const PxStatus status = CheckRegions<C1, C1>(src, srcStep, dst, dstStep, width, height))
        return status;
    switch (mask) {
    case pxBox3x3:
        BoxAverage<1, 5, 455, 12>(src, srcStep, dst, dstStep, width, height);
        return pxOk;
    case pxBox5x5:
        BoxAverage<2, 13, 10485, 18>(src, srcStep, dst, dstStep, width, height);
        return pxOk;
    default:
        return pxBadMask;
    }
}

} // namespace kelmora
