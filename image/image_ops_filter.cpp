#include "image/image_ops.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/convolve.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/replicate.h"
#include "image/primitives/filter.h"
#include "image/primitives/filter_kernels.h"
#include "image/primitives/pad.h"
#include "image/scratch.h"
#include "image/tent_filter.h"
#include "image/tent_kernel.h"

namespace kelmora {
namespace {

using px::Loose;

// --- row and column filter ---------------------------------------------------------------------------

/// Where a filter reads and writes, worked out from the two pictures.
struct FilterRegion {
    bool valid = false;
    int width = 0, height = 0;
    int srcX = 0, srcY = 0;
    int dstX = 0, dstY = 0;
};

/// One axis of it, along the kernel. The last tap of the first pixel and the first tap of the last one must
/// lie in the picture; with anchor = kernelSize / 2 they always do.
bool PlaceAlong(std::int64_t length, std::int64_t srcLength, std::int64_t dstLength, std::int64_t kernelSize,
                std::int64_t anchor, int& count, int& src, int& dst)
{
    if (length < 1 || kernelSize < 1 || anchor < 0 || anchor >= kernelSize)
        return false;
    if (2 * anchor - kernelSize + 1 < 0 || 2 * anchor + length - 1 >= srcLength)
        return false;
    const std::int64_t spare = dstLength - length;
    count = static_cast<int>(length);
    src = static_cast<int>(anchor);
    return dst >= 0 && spare >= 0;
}

/// The other axis: a margin on both sides of the source.
bool PlaceAcross(std::int64_t srcLength, std::int64_t dstLength, std::int64_t margin, int& count, int& src,
                 int& dst)
{
    const std::int64_t length = std::min(srcLength - 2 * margin, dstLength);
    if (margin < 0 || length < 1)
        return false;
    count = static_cast<int>(length);
    src = static_cast<int>(margin);
    dst = 2 * margin <= dstLength - length ? static_cast<int>(margin) : 0;
    return true;
}

/// Where the result goes along the kernel when it does not fill the destination.
int StartInSpare(std::int64_t spare, std::int64_t kernelSize, std::int64_t anchor)
{
    return kernelSize <= spare ? static_cast<int>((spare - kernelSize) / 2 + anchor) : 0;
}

FilterRegion RowRegion(const FrameBuffer& src, const FrameBuffer& dst, int kernelSize, int anchor,
                       int topMargin)
{
    const std::int64_t srcWidth = src.GetWidth(), dstWidth = dst.GetWidth(), taps = kernelSize;
    const std::int64_t width = std::min(srcWidth - (taps - taps % 2), dstWidth);
    FilterRegion region;
    region.dstX = StartInSpare(dstWidth - width, taps, anchor);
    region.valid = PlaceAlong(width, srcWidth, dstWidth, taps, anchor, region.width, region.srcX, region.dstX)
        && PlaceAcross(src.GetHeight(), dst.GetHeight(), topMargin, region.height, region.srcY, region.dstY);
    return region;
}

FilterRegion ColumnRegion(const FrameBuffer& src, const FrameBuffer& dst, int kernelSize, int anchor,
                          int leftMargin)
{
    const std::int64_t srcHeight = src.GetHeight(), dstHeight = dst.GetHeight();
    // Kept: one row less than the row filter takes columns when the size is odd. Blurs rely on ExtendBorder to
    // cover it.
    const std::int64_t height = std::min(srcHeight - kernelSize, dstHeight);
    FilterRegion region;
    region.dstY = StartInSpare(dstHeight - height, kernelSize, anchor);
    region.valid =
        PlaceAlong(height, srcHeight, dstHeight, kernelSize, anchor, region.height, region.srcY, region.dstY)
        && PlaceAcross(src.GetWidth(), dst.GetWidth(), leftMargin, region.width, region.srcX, region.dstX);
    return region;
}

enum class Along { Row, Column };

/// Both pictures' first pixels and steps, as the primitives take them.
struct Pointers {
    const std::uint8_t* src;
    std::uint8_t* dst;
    int srcStep, dstStep;

    const float* SrcFloats() const { return reinterpret_cast<const float*>(src); }
    float* DstFloats() const { return Floats(dst); }
};

template <class T>
void CopyAlpha(const T* src, int srcStep, T* dst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        const T* from = px::Row(src, srcStep, y);
        T* to = px::Row(dst, dstStep, y);
        for (int x = 0; x < width; ++x)
            to[4 * x] = from[4 * x];
    }
}

// Kept: in the alpha-first loops the taps run forward, so a lopsided kernel comes out as the mirror image of
// what the primitives give, and bytes are divided toward zero, so a blur is up to one level darker.

/// From the first tap's pixel to the region's.
std::ptrdiff_t ForwardOffset(std::ptrdiff_t tapStep, int kernelSize, int anchor)
{
    return tapStep * (anchor + 1 - kernelSize);
}

void FilterArgbBytes(const Pointers& p, const FilterRegion& r, std::ptrdiff_t tapStep, const int* kernel,
                     int kernelSize, int anchor, int divisor, bool withAlpha)
{
    px::ConvolveBytes<px::C4>(p.src + ForwardOffset(tapStep, kernelSize, anchor), p.srcStep, p.dst, p.dstStep,
                              r.width, r.height, kernel, kernelSize, tapStep, px::TruncateSum{divisor});
    if (!withAlpha)
        CopyAlpha(p.src, p.srcStep, p.dst, p.dstStep, r.width, r.height);
}

void FilterArgbFloats(const Pointers& p, const FilterRegion& r, std::ptrdiff_t tapStep, const float* kernel,
                      int kernelSize, int anchor, bool withAlpha)
{
    FloatFilter filter = {};
    filter.src = p.src + ForwardOffset(tapStep, kernelSize, anchor);
    filter.srcStep = p.srcStep;
    filter.tapStep = tapStep;
    filter.weights = kernel;
    filter.taps = kernelSize;
    filter.dst = p.dst;
    filter.dstStep = p.dstStep;
    filter.count = 4 * static_cast<std::ptrdiff_t>(r.width);
    filter.rows = r.height;
    FilterKernelsFor(CurrentVariant()).floats(filter);
    if (!withAlpha)
        CopyAlpha(Loose(p.SrcFloats()), p.srcStep, Loose(p.DstFloats()), p.dstStep, r.width, r.height);
}

/// What the filters of one direction are called.
struct Members {
    decltype(&pxRowFilter_8u_C1) bytesC1, bytesA3, bytesC4;
    decltype(&pxRowFilter_32f_C1) floatsC1, floatsA3, floatsC4;
};

constexpr Members kRowMembers = {pxRowFilter_8u_C1,  pxRowFilter_8u_A3,  pxRowFilter_8u_C4,
                                 pxRowFilter_32f_C1, pxRowFilter_32f_A3, pxRowFilter_32f_C4};
constexpr Members kColumnMembers = {pxColumnFilter_8u_C1,  pxColumnFilter_8u_A3,  pxColumnFilter_8u_C4,
                                    pxColumnFilter_32f_C1, pxColumnFilter_32f_A3, pxColumnFilter_32f_C4};

bool Filter(Along along, const FrameBuffer& src, FrameBuffer& dst, const FilterRegion& r, const int* kernel,
            int kernelSize, int anchor, int divisor, bool withAlpha)
{
    const Members& members = along == Along::Row ? kRowMembers : kColumnMembers;
    const Pointers p = {src.PixelAddress(r.srcX, r.srcY, 0), dst.PixelAddress(r.dstX, r.dstY, 0),
                        src.GetStride(), dst.GetStride()};
    const std::uint32_t format = src.GetFormat();
    const int bytes = src.GetPixelBytes();
    if (format == PF_ARGB8 && bytes == 4) {
        FilterArgbBytes(p, r, along == Along::Row ? 4 : p.srcStep, kernel, kernelSize, anchor, divisor,
                        withAlpha);
        return true;
    }
    if (format == PF_BGRA8 && bytes == 4)
        return (withAlpha ? members.bytesC4 : members.bytesA3)(p.src, p.srcStep, p.dst, p.dstStep, r.width,
                                                               r.height, kernel, kernelSize, anchor, divisor)
            == pxOk;
    if (bytes == 1)
        return members.bytesC1(p.src, p.srcStep, p.dst, p.dstStep, r.width, r.height, kernel, kernelSize,
                               anchor, divisor)
            == pxOk;
    return false;
}

bool Filter(Along along, const FrameBuffer& src, FrameBuffer& dst, const FilterRegion& r, const float* kernel,
            int kernelSize, int anchor, int, bool withAlpha)
{
    const Members& members = along == Along::Row ? kRowMembers : kColumnMembers;
    const Pointers p = {src.PixelAddress(r.srcX, r.srcY, 0), dst.PixelAddress(r.dstX, r.dstY, 0),
                        src.GetStride(), dst.GetStride()};
    const std::uint32_t format = src.GetFormat();
    const int bytes = src.GetPixelBytes();
    if (format == PF_ARGB32F && bytes == 16) {
        FilterArgbFloats(p, r, along == Along::Row ? 16 : p.srcStep, kernel, kernelSize, anchor, withAlpha);
        return true;
    }
    if (format == PF_BGRA32F && bytes == 16)
        return (withAlpha ? members.floatsC4 : members.floatsA3)(p.SrcFloats(), p.srcStep, p.DstFloats(),
                                                                 p.dstStep, r.width, r.height, kernel,
                                                                 kernelSize, anchor)
            == pxOk;
    if (format == PF_Mask32F && bytes == 4)
        return members.floatsC1(p.SrcFloats(), p.srcStep, p.DstFloats(), p.dstStep, r.width, r.height, kernel,
                                kernelSize, anchor)
            == pxOk;
    return false;
}

template <class Tap>
bool CheckedFilter(Along along, const FrameBuffer& src, FrameBuffer& dst, const FilterRegion& region,
                   const Tap* kernel, int kernelSize, int anchor, int divisor, bool withAlpha)
{
    const int bytes = src.GetPixelBytes();
    if (!kernel || !region.valid || bytes < 1 || !Holds(src, src.GetWidth(), bytes)
        || !Holds(dst, dst.GetWidth(), bytes) || dst.GetPixelBytes() != bytes)
        return false;
    return Filter(along, src, dst, region, kernel, kernelSize, anchor, divisor, withAlpha);
}

} // namespace

bool ImageOps::RowFilter(const FrameBuffer& src, FrameBuffer& dst, const int* kernel, int kernelSize,
                         int anchor, int topMargin, int divisor, bool withAlpha)
{
    return CheckedFilter(Along::Row, src, dst, RowRegion(src, dst, kernelSize, anchor, topMargin), kernel,
                         kernelSize, anchor, divisor, withAlpha);
}

bool ImageOps::RowFilter(const FrameBuffer& src, FrameBuffer& dst, const float* kernel, int kernelSize,
                         int anchor, int topMargin, int divisor, bool withAlpha)
{
    return CheckedFilter(Along::Row, src, dst, RowRegion(src, dst, kernelSize, anchor, topMargin), kernel,
                         kernelSize, anchor, divisor, withAlpha);
}

bool ImageOps::ColumnFilter(const FrameBuffer& src, FrameBuffer& dst, const int* kernel, int kernelSize,
                            int leftMargin, int anchor, int divisor, bool withAlpha)
{
    return CheckedFilter(Along::Column, src, dst, ColumnRegion(src, dst, kernelSize, anchor, leftMargin),
                         kernel, kernelSize, anchor, divisor, withAlpha);
}

bool ImageOps::ColumnFilter(const FrameBuffer& src, FrameBuffer& dst, const float* kernel, int kernelSize,
                            int leftMargin, int anchor, int divisor, bool withAlpha)
{
    return CheckedFilter(Along::Column, src, dst, ColumnRegion(src, dst, kernelSize, anchor, leftMargin),
                         kernel, kernelSize, anchor, divisor, withAlpha);
}

float ImageOps::MakeTentKernelF(float* kernel, int taps)
{
    return kelmora::MakeTentKernelF(kernel, taps);
}

int ImageOps::MakeTentKernelI(int* kernel, int taps)
{
    return kelmora::MakeTentKernelI(kernel, taps);
}

// --- borders -----------------------------------------------------------------------------------------

bool ImageOps::ExtendBorder(const FrameBuffer& src, FrameBuffer& dst, int marginX, int marginY)
{
    const std::uint32_t format = src.GetFormat();
    const bool floats = IsFloat(format);
    const int bytes = floats || IsByteColour(format) ? PixelBytesOf(format)
        : src.GetPixelBytes() == 1                   ? 1
                                                     : 0;
    if (bytes == 0 || marginX < 0 || marginY < 0 || !Holds(src, src.GetWidth(), bytes)
        || !Holds(dst, dst.GetWidth(), bytes) || src.GetPixelBytes() != dst.GetPixelBytes())
        return false;

    int x = 0, y = 0;
    std::int64_t width = src.GetWidth(), height = src.GetHeight();
    if (src.GetPixels() == dst.GetPixels() || SizeOf(src) == SizeOf(dst)) {
        x = marginX;
        y = marginY;
        width -= 2 * std::int64_t{marginX};
        height -= 2 * std::int64_t{marginY};
    }
    if (width < 1 || height < 1)
        return false;

    const auto pad = [&]<class L, class T>(L, const T* from, T* to) {
        return px::PadReplicate<L>(from, src.GetStride(), static_cast<int>(width), static_cast<int>(height),
                                   to, dst.GetStride(), dst.GetWidth(), dst.GetHeight(), marginY, marginX);
    };
    const std::uint8_t* from = src.PixelAddress(x, y, 0);
    std::uint8_t* to = dst.GetPixels();
    const auto* fromFloats = reinterpret_cast<const px::LooseFloat*>(from);
    auto* toFloats = reinterpret_cast<px::LooseFloat*>(to);
    switch (bytes) {
    case 16:
        return pad(px::C4{}, fromFloats, toFloats) == pxOk;
    case 4:
        return (floats ? pad(px::C1{}, fromFloats, toFloats) : pad(px::C4{}, from, to)) == pxOk;
    default:
        return pad(px::C1{}, from, to) == pxOk;
    }
}

// --- blur --------------------------------------------------------------------------------------------

namespace {

/// Not-a-number and what lies below 1 give 0.
int BlurTaps(float size)
{
    return size >= 1 ? static_cast<int>(std::min(size, static_cast<float>(ImageOps::kMostBlurTaps))) : 0;
}

/// The formats whose kernels there are.
bool IsBlurred(const FrameBuffer& picture)
{
    return IsPicture(picture.GetFormat()) || picture.GetFormat() == PF_Mask32F
        || picture.GetPixelBytes() == 1;
}

/// Writes filtered rows as the row filter would: into the destination's own order, alpha as its family does.
class BlurRowWriter {
public:
    BlurRowWriter(const FrameBuffer& src, FrameBuffer& dst, const TentJob& job, const FilterRegion& place,
                  bool withAlpha)
        : m_src(src), m_dst(dst), m_job(job), m_place(place), m_withAlpha(withAlpha),
          m_reverse(IsAlphaFirst(src.GetFormat()) && !IsAlphaFirst(dst.GetFormat()))
    {
    }

    void operator()(int y, const std::uint8_t* row)
    {
        if (y >= m_place.height)
            return;
        std::uint8_t* to = m_dst.PixelAddress(m_place.dstX, m_place.dstY + y, 0);
        if (IsFloat(m_dst.GetFormat()))
            Write(y, reinterpret_cast<const px::LooseFloat*>(row), reinterpret_cast<px::LooseFloat*>(to));
        else
            Write(y, row, to);
    }

private:
    template <class T>
    void Write(int y, const T* row, T* to)
    {
        if (m_withAlpha && !m_reverse) {
            std::memcpy(to, row, static_cast<std::size_t>(m_place.width) * 4 * sizeof(T));
            return;
        }
        const bool alphaFirst = IsAlphaFirst(m_dst.GetFormat());
        for (int x = 0; x < m_place.width; ++x)
            for (int c = 0; c < 4; ++c)
                if (m_withAlpha || c != (alphaFirst ? 0 : 3))
                    to[4 * x + c] = row[4 * x + (m_reverse ? 3 - c : c)];
        if (!m_withAlpha && alphaFirst)
            KeepFirstChannel(y, to);
    }

    /// The alpha-first loops copy their first channel from the padded source.
    template <class T>
    void KeepFirstChannel(int y, T* to)
    {
        const int first = TentJob::kFirstKept;
        const auto* from =
            reinterpret_cast<const T*>(m_src.PixelAddress(0, std::clamp(y, first, m_job.LastRow()), 0));
        for (int x = 0; x < m_place.width; ++x)
            to[4 * x] = from[4 * std::clamp(x, first, m_job.LastColumn())];
    }

    const FrameBuffer& m_src;
    FrameBuffer& m_dst;
    const TentJob& m_job;
    const FilterRegion m_place;
    const bool m_withAlpha, m_reverse;
};

/// The part of a padded scratch picture that the row filter would read.
FilterRegion PlaceOfBlur(const TentJob& job, const FrameBuffer& dst)
{
    FrameBuffer padded;
    padded.Attach(nullptr, job.size.width + job.padWidth, job.size.height + job.padHeight, 0, 0, 0, false);
    return RowRegion(padded, dst, job.rowTaps, job.rowTaps / 2, job.columnTaps / 2);
}

/// Running sums where they serve, else step by step.
bool BlurPixels(const FrameBuffer& src, FrameBuffer& dst, const TentJob& job, MemoryAllocator& allocator,
                bool withAlpha)
{
    const bool sameElements =
        IsPicture(dst.GetFormat()) && IsFloat(src.GetFormat()) == IsFloat(dst.GetFormat());
    const FilterRegion place = PlaceOfBlur(job, dst);
    if (sameElements && place.valid && Holds(dst, dst.GetWidth(), dst.GetPixelBytes())) {
        FrameBuffer copy; // the sums look back at rows that an output in the same memory would have replaced
        if (Overlap(src, dst)) {
            ImageOps ops;
            if (!copy.Allocate(job.size.width, job.size.height, src.GetPixelBytes(), &allocator,
                               src.GetFormat(), false)
                || !ops.Copy(src, copy))
                return false;
        }
        const FrameBuffer& from = copy.GetPixels() ? copy : src;
        const TentResult result =
            FilterTentRows(from, job, allocator, BlurRowWriter(from, dst, job, place, withAlpha));
        if (result != TentResult::NotServed)
            return result == TentResult::Done;
    }
    return FilterTentStepwise(src, dst, job, dst.GetFormat(), allocator, withAlpha);
}

} // namespace

bool ImageOps::Blur(const FrameBuffer& src, FrameBuffer& dst, float xSize, float ySize,
                    MemoryAllocator* allocator, bool withAlpha)
{
    TentJob job = TentJob::Blur(CommonSize(src, dst), BlurTaps(xSize), BlurTaps(ySize));
    if (job.rowTaps < 1 || job.columnTaps < 1) {
        Copy(src, dst);
        return true;
    }
    if (src.GetPixelBytes() != dst.GetPixelBytes() || IsEmpty(job.size) || !src.GetPixels()
        || !dst.GetPixels() || !IsBlurred(dst))
        return false;
    job.truncate = dst.GetFormat() == PF_ARGB8;
    if (std::max(job.size.width, job.size.height) > TentJob::kLongestSide)
        return false;

    MemoryAllocator ownMemory;
    if (!BlurPixels(src, dst, job, allocator ? *allocator : ownMemory, withAlpha))
        return false;
    if (!withAlpha) {
        // Kept: the channel goes by the source's format alone. From alpha-first to alpha-last it is no alpha in
        // the destination.
        const std::uint32_t format = src.GetFormat();
        const int alpha = format == PF_BGRA8 || format == PF_BGRA32F ? 3 : 0;
        CopyChannel(src, dst, alpha, alpha);
    }
    return true;
}

} // namespace kelmora
