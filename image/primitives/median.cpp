#include "image/primitives/median.h"

#include <algorithm>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/median_kernels.h"
#include "image/primitives/memory.h"

namespace kelmora {
namespace {

using namespace px;

/// Histograms of so many columns stay in a second cache of 1 MB.
constexpr int kStripColumns = 2048;

/// A block of pxMalloc.
class Block {
public:
    explicit Block(std::int64_t bytes) : m_memory(pxMalloc(bytes + kAlignment)) {}
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { pxFree(m_memory); }

    /// Aligned to a cache line; null when there is no memory.
    void* Start() const
    {
        const auto address = reinterpret_cast<std::uintptr_t>(m_memory);
        return m_memory ? static_cast<unsigned char*>(m_memory) + (kAlignment - address % kAlignment)
                        : nullptr;
    }

private:
    static constexpr int kAlignment = 64;

    void* m_memory;
};

template <class L>
PxStatus Median(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width, int height,
                int maskWidth, int maskHeight, int anchorX, int anchorY)
{
    if (const PxStatus status = CheckRegions<L, L>(src, srcStep, dst, dstStep, width, height))
        return status;
    if (maskWidth < 1 || maskHeight < 1)
        return pxBadSize;
    const std::int64_t area = std::int64_t{maskWidth} * maskHeight;
    if (maskWidth % 2 == 0 || maskHeight % 2 == 0 || area > 0x7FFFFFFF)
        return pxBadMask;
    if (anchorX < 0 || anchorX >= maskWidth || anchorY < 0 || anchorY >= maskHeight)
        return pxBadAnchor;

    const bool bytes = maskHeight <= MedianKernels::kMostByteRows && area <= MedianKernels::kMostByteArea;
    const int histogram = bytes ? MedianKernels::kByteHistogram : MedianKernels::kWideHistogram;
    // Every strip begins with the columns to the left of its pixels again: strips must be wide beside a mask.
    const std::int64_t most = std::max<std::int64_t>(kStripColumns, std::int64_t{4} * maskWidth) - maskWidth;
    const int strips = static_cast<int>((width + most - 1) / most);
    const int stripWidth = (width + strips - 1) / strips;
    const Block work(MedianKernels::kState + (std::int64_t{stripWidth} + maskWidth) * histogram);
    if (!work.Start())
        return pxNoMemory;

    const MedianKernels& kernels = MedianKernelsFor(CurrentVariant());
    const std::uint8_t* corner = Row(src, srcStep, -anchorY) - std::ptrdiff_t{anchorX} * L::channels;
    for (int x = 0; x < width; x += stripWidth) {
        for (int c = 0; c < L::touched; ++c) {
            const std::ptrdiff_t first = std::ptrdiff_t{x} * L::channels + c;
            const MedianStrip strip = {
                corner + first, srcStep,   dst + first, dstStep,     std::min(stripWidth, width - x),
                height,         maskWidth, maskHeight,  work.Start()};
            (bytes ? kernels.bytes : kernels.wide)(strip);
        }
    }
    return pxOk;
}

} // namespace

PxStatus pxMedian_8u_A3(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                        int height, int maskWidth, int maskHeight, int anchorX, int anchorY)
{
    return Median<A3>(src, srcStep, dst, dstStep, width, height, maskWidth, maskHeight, anchorX, anchorY);
}

PxStatus pxMedian_8u_C4(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                        int height, int maskWidth, int maskHeight, int anchorX, int anchorY)
{
    return Median<C4>(src, srcStep, dst, dstStep, width, height, maskWidth, maskHeight, anchorX, anchorY);
}

} // namespace kelmora
