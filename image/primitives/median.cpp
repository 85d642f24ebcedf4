#include "image/primitives/median.h"

#include <algorithm>

#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/region.h"
#include "image/primitives/median_band_kernels.h"
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

/// Some columns and rows of a strip.
MedianStrip Part(const MedianStrip& strip, int x, int y, int width, int height)
{
    MedianStrip part = strip;
    part.src += static_cast<std::ptrdiff_t>(strip.srcStep) * y + std::ptrdiff_t{4} * x;
    part.dst += static_cast<std::ptrdiff_t>(strip.dstStep) * y + std::ptrdiff_t{4} * x;
    part.width = width;
    part.height = height;
    return part;
}

/// A strip of masks that bytes can count. Its columns are taken in tiles whose medians lie close together, as is
/// seen in the row above, and what is in no such tile by the loops for any values. Parts go from left to right and
/// downward: the result may stand in the source's memory.
class TiledStrip {
public:
    TiledStrip(const MedianStrip& strip, CpuVariant variant)
        : m_strip(strip), m_kernels(MedianKernelsFor(variant)), m_band(MedianBandKernelsFor(variant))
    {
    }

    void Filter() const
    {
        const int most = MedianBandKernels::kMostMask;
        if (!m_band.narrow || m_strip.height < kFewestRows || m_strip.maskWidth > most
            || m_strip.maskHeight > most)
            return m_kernels.bytes(m_strip);
        m_kernels.bytes(Part(m_strip, 0, 0, m_strip.width, 1));
        for (int y = 1; y < m_strip.height; y += kBlockRows)
            FilterBlock(y, std::min(m_strip.height - y, kBlockRows));
    }

private:
    using Loops = int (*)(const MedianBand& band);

    static constexpr int kFewestRows = 32;   ///< fewer do not repay what it takes to begin
    static constexpr int kMaskColumns = 256; ///< counts of so many, and the steps, fit a first cache
    static constexpr int kBlockRows = 384;   ///< after so many, tiles are chosen anew

    // Fewer columns do not repay the rest of their windows.
    static constexpr int kFewestColumns = 48, kFewestWideColumns = 64;

    // A quarter of a band is room to move in.
    static constexpr int kMostSpan = MedianBandKernels::kNarrow * 3 / 4 - 1;
    static constexpr int kMostWideSpan = MedianBandKernels::kWide * 3 / 4 - 1;

    /// Columns from `first` to before `end`, and what their medians in the row above span.
    struct Tile {
        int first, end;
        int least, most;
    };

    /// As many columns from `first` on as differ by no more than `mostSpan` above row y.
    Tile TileFrom(int first, int end, int y, int mostSpan) const
    {
        const std::uint8_t* above = Part(m_strip, 0, y - 1, 0, 0).dst;
        Tile tile = {first, first, 255, 0};
        for (; tile.end < end; ++tile.end) {
            const int value = above[4 * std::ptrdiff_t{tile.end}];
            const int least = std::min(tile.least, value), most = std::max(tile.most, value);
            if (most - least > mostSpan)
                break;
            tile.least = least;
            tile.most = most;
        }
        return tile;
    }

    void FilterBlock(int y, int rows) const
    {
        const int widest = std::max(kMaskColumns - m_strip.maskWidth, kFewestWideColumns);
        int done = 0; // columns
        for (int x = 0; x < m_strip.width;) {
            const int left = m_strip.width - x;
            const int end = x + (left <= widest ? left : left < 2 * widest ? left / 2 : widest);
            Loops find = m_band.narrow;
            Tile tile = TileFrom(x, end, y, kMostSpan);
            int fewest = kFewestColumns;
            if (tile.end - x < fewest) {
                find = m_band.wide;
                tile = TileFrom(x, end, y, kMostWideSpan);
                fewest = kFewestWideColumns;
            }
            x = tile.end;
            if (tile.end - tile.first < fewest)
                continue;
            FilterAny(done, tile.first, y, rows);
            FilterTile(tile, find, y, rows);
            done = tile.end;
        }
        FilterAny(done, m_strip.width, y, rows);
    }

    void FilterAny(int first, int end, int y, int rows) const
    {
        if (first < end)
            m_kernels.bytes(Part(m_strip, first, y, end - first, rows));
    }

    /// Where the medians of its columns come to lie too far apart, those of either half may not, or a wider band
    /// holds them.
    void FilterTile(const Tile& tile, Loops find, int y, int rows) const
    {
        const int width = tile.end - tile.first;
        const int done = find({Part(m_strip, tile.first, y, width, rows), tile.least, tile.most});
        if (done == rows)
            return;
        y += done;
        rows -= done;
        if (find == m_band.narrow) {
            const int middle = tile.first + width / 2;
            const Tile left = TileFrom(tile.first, middle, y, kMostSpan);
            const Tile right = TileFrom(middle, tile.end, y, kMostSpan);
            if (done >= kFewestRows && width >= 2 * kFewestColumns && left.end == middle
                && right.end == tile.end) {
                FilterTile(left, find, y, rows);
                FilterTile(right, find, y, rows);
                return;
            }
            const Tile whole = TileFrom(tile.first, tile.end, y, kMostWideSpan);
            if (whole.end == tile.end)
                return FilterTile(whole, m_band.wide, y, rows);
        }
        FilterAny(tile.first, tile.end, y, rows);
    }

    const MedianStrip& m_strip;
    const MedianKernels& m_kernels;
    const MedianBandKernels& m_band;
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

    const CpuVariant variant = CurrentVariant();
    const std::uint8_t* corner = Row(src, srcStep, -anchorY) - std::ptrdiff_t{anchorX} * L::channels;
    for (int x = 0; x < width; x += stripWidth) {
        for (int c = 0; c < L::touched; ++c) {
            const std::ptrdiff_t first = std::ptrdiff_t{x} * L::channels + c;
            const MedianStrip strip = {
                corner + first, srcStep,   dst + first, dstStep,     std::min(stripWidth, width - x),
                height,         maskWidth, maskHeight,  work.Start()};
            if (bytes)
                TiledStrip(strip, variant).Filter();
            else
                MedianKernelsFor(variant).wide(strip);
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
