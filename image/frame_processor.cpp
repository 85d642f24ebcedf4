#include "image/frame_processor.h"

#include <algorithm>
#include <cstring>

#include "image/float_environment.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/resize.h"

namespace kelmora {
namespace {

/// Runs an operation in the arithmetic of the library. What it may throw is a failure, for the host's stack
/// must not be unwound.
template <class Operation>
bool Shielded(Operation operation) noexcept
{
    try {
        return WithFloatEnvironment(operation);
    } catch (...) {
        return false;
    }
}

/// operation(picture) on a view of the record.
template <class Operation>
bool OnFrame(const VideoFrame* frame, Operation operation) noexcept
{
    return Shielded([&] {
        FrameBuffer picture;
        return picture.AttachFrame(frame) && operation(picture);
    });
}

/// operation(source, destination) on views of the records.
template <class Operation>
bool OnPair(const VideoFrame* src, const VideoFrame* dst, Operation operation) noexcept
{
    return Shielded([&] {
        FrameBuffer from, to;
        return from.AttachFrame(src) && to.AttachFrame(dst) && operation(from, to);
    });
}

/// The same pixels, taken for four bytes each.
void AttachAs4Bytes(FrameBuffer& view, const FrameBuffer& picture)
{
    view.Attach(picture.GetPixels(), picture.GetWidth(), picture.GetHeight(), picture.GetStride(), 4,
                PF_BGRA8, false);
}

// --- rows -----------------------------------------------------------------------------------------------

/// The bytes of a row that the record promises.
std::int64_t RowBytes(const FrameBuffer& picture)
{
    if (picture.GetWidth() < 1 || picture.GetPixelBytes() < 1)
        return 0;
    return static_cast<std::int64_t>(picture.GetWidth()) * picture.GetPixelBytes();
}

/// Exchanges the first `bytes` bytes of the first `height` rows, top and bottom.
void ExchangeRows(FrameBuffer& picture, int height, std::int64_t bytes)
{
    for (int y = 0; y < height / 2; ++y) {
        std::uint8_t* upper = picture.PixelAddress(0, y, 0);
        std::swap_ranges(upper, upper + bytes, picture.PixelAddress(0, height - 1 - y, 0));
    }
}

void FlipRows(const FrameBuffer& src, FrameBuffer& dst, int height, std::int64_t bytes)
{
    for (int y = 0; y < height; ++y)
        std::memmove(dst.PixelAddress(0, height - 1 - y, 0), src.PixelAddress(0, y, 0),
                     static_cast<std::size_t>(bytes));
}

// --- resizing -------------------------------------------------------------------------------------------

PxInterpolation InterpolationOf(std::int32_t quality)
{
    switch (quality) {
    case 0:
        return pxNearest;
    case 2:
        return pxCubic;
    default:
        return pxLinear;
    }
}

/// Resizes all of `from` to the size of `to`; PF_BGRA32F are floats, all else bytes. No shared memory.
bool ResizeApart(const FrameBuffer& from, FrameBuffer& to, std::int32_t quality)
{
    const Size src = SizeOf(from), dst = SizeOf(to);
    const PxRect whole = {0, 0, src.width, src.height};
    const double xFactor = static_cast<double>(dst.width) / src.width;
    const double yFactor = static_cast<double>(dst.height) / src.height;
    const PxInterpolation code = InterpolationOf(quality);
    if (from.GetFormat() == PF_BGRA32F)
        return pxResize_32f_C4(Floats(from.GetPixels()), src.width, src.height, from.GetStride(), whole,
                               Floats(to.GetPixels()), to.GetStride(), dst.width, dst.height, xFactor,
                               yFactor, code)
            == pxOk;
    return pxResize_8u_C4(from.GetPixels(), src.width, src.height, from.GetStride(), whole, to.GetPixels(),
                          to.GetStride(), dst.width, dst.height, xFactor, yFactor, code)
        == pxOk;
}

/// As ResizeApart, with a copy of a source that would be overwritten while it is read.
bool ResizeInto(const FrameBuffer& from, FrameBuffer& to, std::int32_t quality)
{
    if (!Holds(from, from.GetWidth(), from.GetPixelBytes())
        || !Holds(to, to.GetWidth(), from.GetPixelBytes()))
        return false;
    if (!Overlap(from, to))
        return ResizeApart(from, to, quality);
    FrameBuffer copy;
    return copy.Allocate(from.GetWidth(), from.GetHeight(), from.GetPixelBytes(), nullptr, from.GetFormat(),
                         false)
        && ImageOps().Copy(from, copy) && ResizeApart(copy, to, quality);
}

/// Where a region lies in a picture's memory.
struct RegionPlace {
    std::int64_t column; ///< bytes from the start of its first row to the region, may be more than a row
    std::int64_t row;    ///< from the lowest in memory
    std::int64_t bytes;  ///< of each row
    std::int64_t rows;
};

/// Whether all bytes of the region are bytes that the picture's rows promise. Where rows follow each other
/// without a gap it may go on in the next one.
bool IsWithin(const RegionPlace& place, const FrameBuffer& picture)
{
    const std::int64_t stride = picture.GetStride(), rowBytes = RowBytes(picture);
    if (place.column < 0 || place.row < 0 || place.row + place.rows > picture.GetHeight())
        return false;
    const std::int64_t lastRow = stride * (place.row + place.rows - 1);
    const std::int64_t end = stride * (picture.GetHeight() - 1) + rowBytes;
    if (place.column > end - lastRow - place.bytes)
        return false;
    return stride <= rowBytes || place.column % stride + place.bytes <= rowBytes;
}

/// Makes `part` a view on the region, cut to `most` pixels. False when it is not the picture's. The rows of the
/// region count from the record's first one, which is the picture's last where that is bottom-up.
bool AttachRegion(FrameBuffer& part, const FrameBuffer& picture, const FrameRect& region, Size most)
{
    const bool floats = IsFloatColour(picture.GetFormat());
    const int pixelBytes = floats ? 16 : 4;
    const std::int64_t width =
        std::min<std::int64_t>(std::int64_t{region.right} - region.left + 1, most.width);
    const std::int64_t height =
        std::min<std::int64_t>(std::int64_t{region.bottom} - region.top + 1, most.height);
    if (width < 1 || height < 1 || !Holds(picture, static_cast<int>(width), pixelBytes))
        return false;

    RegionPlace place = {};
    place.bytes = width * pixelBytes;
    place.rows = height;
    place.row = picture.IsBottomUp() ? std::int64_t{picture.GetHeight()} - region.top - height : region.top;
    // Cut so that the product fits: a step of 2 GiB leaves any picture that there can be.
    const std::int64_t step = std::int64_t{picture.GetPixelBytes()} * (floats ? 4 : 1);
    place.column = std::min<std::int64_t>(step, std::int64_t{1} << 31) * region.left;
    if (!IsWithin(place, picture))
        return false;
    part.Attach(picture.GetPixels()
                    + static_cast<std::ptrdiff_t>(picture.GetStride() * place.row + place.column),
                static_cast<int>(width), static_cast<int>(height), picture.GetStride(), pixelBytes,
                floats ? PF_BGRA32F : PF_BGRA8, false);
    return true;
}

} // namespace

// --- identity and lifetime ------------------------------------------------------------------------------

std::int32_t FrameProcessor::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (!out)
        return E_FAIL;
    *out = nullptr;
    if (!interfaceId)
        return E_FAIL;
    if (!IsSameId(interfaceId, IUnknown::id) && !IsSameId(interfaceId, IFrameProcessor::id))
        return E_NOINTERFACE;
    *out = static_cast<IFrameProcessor*>(this);
    AddRef();
    return S_OK;
}

std::uint32_t FrameProcessor::AddRef()
{
    return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint32_t FrameProcessor::Release()
{
    const std::uint32_t left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        Destroy(KELMORA_DESTROY_FREE);
    return left;
}

void* FrameProcessor::Destroy(std::uint32_t flags)
{
    if (flags & KELMORA_DESTROY_FREE) {
        delete this;
        return nullptr;
    }
    this->~FrameProcessor();
    return this;
}

// --- copies ---------------------------------------------------------------------------------------------

bool FrameProcessor::Copy(const VideoFrame* src, VideoFrame* dst)
{
    return OnPair(src, dst, [](const FrameBuffer& from, const FrameBuffer& to) {
        const int width = CommonSize(from, to).width;
        if (!Holds(from, width, 4) || !Holds(to, width, 4))
            return false;
        FrameBuffer source, destination;
        AttachAs4Bytes(source, from);
        AttachAs4Bytes(destination, to);
        return ImageOps().Copy(source, destination);
    });
}

bool FrameProcessor::FlipVertical(VideoFrame* frame)
{
    return OnFrame(frame, [](FrameBuffer& picture) {
        if (picture.GetPixels())
            ExchangeRows(picture, picture.GetHeight(),
                         std::min<std::int64_t>(picture.GetStride() / 4 * 4, RowBytes(picture)));
        return true;
    });
}

bool FrameProcessor::FlipVerticalTo(const VideoFrame* src, VideoFrame* dst)
{
    return OnPair(src, dst, [](const FrameBuffer& from, FrameBuffer& to) {
        if (!from.GetPixels() || !to.GetPixels())
            return true;
        const int height = CommonSize(from, to).height;
        const std::int64_t bytes = std::min(
            {std::int64_t{from.GetStride()}, std::int64_t{to.GetStride()}, RowBytes(from), RowBytes(to)});
        if (from.GetPixels() == to.GetPixels() && from.GetStride() == to.GetStride())
            ExchangeRows(to, height, bytes);
        else
            FlipRows(from, to, height, bytes);
        return true;
    });
}

// --- resizes --------------------------------------------------------------------------------------------

bool FrameProcessor::Resize(const VideoFrame* src, VideoFrame* dst, std::int32_t quality)
{
    return OnPair(src, dst, [=](const FrameBuffer& from, FrameBuffer& to) {
        if (!Holds(from, from.GetWidth(), 4))
            return false;
        FrameBuffer source;
        AttachAs4Bytes(source, from);
        return ResizeInto(source, to, quality);
    });
}

bool FrameProcessor::ResizeRegion(const VideoFrame* src, const FrameRect* region, VideoFrame* dst,
                                  std::int32_t quality)
{
    return Shielded([=] {
        FrameBuffer from, to, part;
        if (!src || !region || !to.AttachFrame(dst))
            return false;
        // As not bottom-up whatever the record says, so that the view tells which way the rows run.
        from.Attach(src->data, src->width, src->height, src->stride, src->pixelBytes, src->format, false);
        return IsPicture(from.GetFormat()) && AttachRegion(part, from, *region, SizeOf(to))
            && ResizeInto(part, to, quality);
    });
}

// --- packed YCbCr ---------------------------------------------------------------------------------------

bool FrameProcessor::AttachConversion(Size needed, Size used, FrameBuffer& view)
{
    if (IsEmpty(needed) || IsEmpty(used))
        return false;
    // After a failure the size is that of the request, hence the look at the pixels.
    if (!m_conversion.GetPixels() || m_conversion.GetWidth() < needed.width
        || m_conversion.GetHeight() < needed.height) {
        if (!m_conversion.Allocate(needed.width, needed.height, 3, nullptr, PF_BGRA8, false))
            return false;
        // A conversion writes all that it reads; but what the heap held never gets near a host's picture.
        std::memset(m_conversion.GetPixels(), 0,
                    static_cast<std::size_t>(m_conversion.GetStride())
                        * static_cast<std::size_t>(m_conversion.GetHeight()));
    }
    // What lies beyond is left over from larger pictures.
    return view.Attach(m_conversion.GetPixels(), used.width, used.height, m_conversion.GetStride(), 3,
                       PF_BGRA8, false);
}

bool FrameProcessor::YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, std::int32_t alpha, std::int32_t)
{
    return OnPair(src, dst, [=, this](const FrameBuffer& from, FrameBuffer& to) {
        const Size size = SizeOf(from);
        FrameBuffer rgb;
        return Holds(from, size.width, 2) && AttachConversion(size, size, rgb)
            && ImageOps().YCbCr422ToRGB24(from, rgb) && ImageOps().RGB24ToBGRA(rgb, to, alpha);
    });
}

bool FrameProcessor::BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst, std::int32_t)
{
    return OnPair(src, dst, [this](const FrameBuffer& from, FrameBuffer& to) {
        const Size size = SizeOf(to);
        FrameBuffer rgb;
        return Holds(to, size.width, 2) && AttachConversion(size, CommonSize(from, to), rgb)
            && ImageOps().BGRAToRGB24(from, rgb) && ImageOps().RGB24ToYCbCr422(rgb, to);
    });
}

// --- what ImageOps does ---------------------------------------------------------------------------------

bool FrameProcessor::ReverseChannels(const VideoFrame* src, VideoFrame* dst)
{
    return OnPair(src, dst, [](const FrameBuffer& from, FrameBuffer& to) {
        return ImageOps().ReverseChannels(from, to);
    });
}

bool FrameProcessor::SetChannel(VideoFrame* frame, std::int32_t channel, std::int32_t value)
{
    return OnFrame(frame,
                   [=](FrameBuffer& picture) { return ImageOps().SetChannel(picture, channel, value); });
}

bool FrameProcessor::AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b, bool premultiplied)
{
    return OnPair(a, b, [=](const FrameBuffer& upper, const FrameBuffer& lower) {
        FrameBuffer result;
        return result.AttachFrame(out) && ImageOps().AlphaOver(upper, lower, result, premultiplied);
    });
}

bool FrameProcessor::PermuteChannels(VideoFrame* frame, const std::int32_t* order)
{
    return OnFrame(frame, [=](FrameBuffer& picture) { return ImageOps().PermuteChannels(picture, order); });
}

bool FrameProcessor::Premultiply(VideoFrame* frame)
{
    return OnFrame(frame, [](FrameBuffer& picture) { return ImageOps().Premultiply(picture, picture); });
}

bool FrameProcessor::YCbCrToARGB(const VideoFrame* src, VideoFrame* dst)
{
    return OnPair(src, dst, [](const FrameBuffer& from, FrameBuffer& to) {
        return ImageOps().YCbCrToARGB32F(from, to);
    });
}

bool FrameProcessor::ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst)
{
    return OnPair(src, dst, [](const FrameBuffer& from, FrameBuffer& to) {
        return ImageOps().ARGBToYCbCr32F(from, to);
    });
}

} // namespace kelmora
