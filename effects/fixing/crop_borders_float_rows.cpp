#include "effects/fixing/crop_borders_float_rows.h"

#include <algorithm>
#include <cstring>

#include "effects/common/frame.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/tent_filter.h"
#include "image/tent_kernel.h"

namespace kelmora::crop_borders {
namespace {

typedef float Pixel __attribute__((vector_size(16)));
typedef std::int32_t PixelBits __attribute__((vector_size(16)));

Pixel LoadPixel(const std::uint8_t* row, int x)
{
    Pixel pixel;
    std::memcpy(&pixel, row + std::ptrdiff_t{x} * 16, sizeof pixel);
    return pixel;
}

void StorePixel(std::uint8_t* row, int x, Pixel pixel)
{
    std::memcpy(row + std::ptrdiff_t{x} * 16, &pixel, sizeof pixel);
}

/// `other` with the channel `alpha` of `one`, bit for bit.
Pixel WithAlphaOf(Pixel one, Pixel other, int alpha)
{
    PixelBits mask = {};
    mask[alpha] = -1;
    return (Pixel)(((PixelBits)one & mask) | ((PixelBits)other & ~mask));
}

float* FloatsOf(const FrameBuffer& picture, int x, int y)
{
    return reinterpret_cast<float*>(picture.PixelAddress(x, y, 0));
}

} // namespace

bool ZoomFloats(const FrameBuffer& src, FrameBuffer& dst, const Rect& kept, const PxRect& hole)
{
    if (!LiesInside(kept, src.GetWidth(), src.GetHeight()))
        return false;
    const PxRect region = {0, 0, kept.right - kept.left, kept.bottom - kept.top};
    return pxResizeLevelsAround_32f_C4(FloatsOf(src, kept.left, kept.top), region.width, region.height,
                                       src.GetStride(), region, FloatsOf(dst, 0, 0), dst.GetStride(),
                                       dst.GetWidth(), dst.GetHeight(),
                                       static_cast<double>(dst.GetWidth()) / region.width,
                                       static_cast<double>(dst.GetHeight()) / region.height, pxCubic, hole)
        == pxOk;
}

FloatCropRows::FloatCropRows(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop)
    : m_src(src), m_dst(dst), m_crop(crop), m_width(src.GetWidth()), m_height(src.GetHeight()),
      m_alpha(AlphaIndex(src.GetFormat())), m_blurs(crop.featherX >= 1.0f && crop.featherY >= 1.0f)
{
}

bool FloatCropRows::AreServed() const
{
    const Rect& kept = m_crop.kept;
    return IsFloatColour(m_src.GetFormat()) && HasWholePixelRows(m_src) && HasWholePixelRows(m_dst)
        && m_width >= kLeastSide && m_height >= kLeastSide && LiesInside(kept, m_width, m_height)
        && 2 * kept.left < m_width && 2 * kept.top < m_height;
}

bool FloatCropRows::Begin(MemoryAllocator& allocator)
{
    if (!m_scratch.Allocate(allocator,
                            (std::int64_t{m_width} + m_height) * std::int64_t{sizeof(double)}
                                + m_width * std::int64_t{sizeof(float)}))
        return false;
    m_columns.counts = reinterpret_cast<double*>(m_scratch.Bytes());
    m_rows.counts = m_columns.counts + m_width;
    m_mask = reinterpret_cast<float*>(m_rows.counts + m_height);
    const Rect& kept = m_crop.kept;
    // The outermost columns are copies since the frame's own edge is not feathered; the rows since a blur loses them.
    Measure(m_columns, {m_width, {kept.left, kept.right}, m_crop.featherX, 1});
    Measure(m_rows, {m_height, {kept.top, kept.bottom}, m_crop.featherY, m_blurs ? TentJob::kFirstKept : 1});
    return true;
}

void FloatCropRows::Measure(Profile& profile, const Side& side) const
{
    const int taps =
        m_blurs ? static_cast<int>(std::min(side.feather, static_cast<float>(ImageOps::kMostBlurTaps))) : 1;
    int weights[ImageOps::kMostBlurTaps];
    const int all = MakeTentKernelI(weights, taps);
    const int lost = m_blurs ? TentJob::kFirstKept : 0;
    for (int i = 0; i < side.size; ++i) {
        const int centre = std::clamp(i, side.nearest, side.size - 1 - side.nearest);
        int count = 0;
        for (int tap = 0; tap < taps; ++tap) {
            const int at = std::clamp(centre + taps / 2 - tap, lost, side.size - 1 - lost);
            count += at >= side.kept.first && at < side.kept.end ? weights[tap] : 0;
        }
        profile.counts[i] = count;
    }
    profile.factor = 1.0 / all;
    // A blurred rectangle rises once and falls once.
    Span& full = profile.full;
    full = {side.kept.first, side.size - side.kept.first};
    while (full.first < full.end && profile.counts[full.first] != all)
        ++full.first;
    while (full.first < full.end && profile.counts[full.end - 1] != all)
        --full.end;
}

/// Rows of one level have one mask.
void FloatCropRows::MakeMaskRow(int y)
{
    const float level = static_cast<float>(m_rows.counts[y] * m_rows.factor);
    if (level == m_maskLevel)
        return;
    m_maskLevel = level;
    for (int x = 0; x < m_width; ++x)
        m_mask[x] = static_cast<float>(m_columns.counts[x] * static_cast<double>(level) * m_columns.factor);
}

bool FloatCropRows::ZoomGround()
{
    const Span &columns = m_columns.full, &rows = m_rows.full;
    return ZoomFloats(m_src, m_dst, m_crop.kept,
                      {columns.first, rows.first, columns.end - columns.first, rows.end - rows.first});
}

void FloatCropRows::Overlay()
{
    Compose(true);
}

void FloatCropRows::Transparent()
{
    Compose(false);
}

/// Copies what the mask leaves as it is, and makes the rest of every row.
void FloatCropRows::Compose(bool overlays)
{
    const auto compose = overlays ? &FloatCropRows::OverlaySpan : &FloatCropRows::TransparentSpan;
    const Span &columns = m_columns.full, &rows = m_rows.full;
    for (int y = 0; y < m_height; ++y) {
        MakeMaskRow(y);
        if (y < rows.first || y >= rows.end || columns.first >= columns.end) {
            (this->*compose)(y, {0, m_width});
            continue;
        }
        (this->*compose)(y, {0, columns.first});
        CopyFull(y, overlays);
        (this->*compose)(y, {columns.end, m_width});
    }
}

/// Composites add a zero to what they show, of which a negative zero comes out positive.
void FloatCropRows::CopyFull(int y, bool overlays)
{
    const std::uint8_t* const from = RowOf(m_src, y);
    std::uint8_t* const to = RowOf(m_dst, y);
    for (int x = m_columns.full.first; x < m_columns.full.end; ++x) {
        const Pixel own = LoadPixel(from, x);
        const Pixel sum = own + 0.0f;
        StorePixel(to, x, overlays ? WithAlphaOf(own, sum, m_alpha) : WithAlphaOf(sum, own, m_alpha));
    }
}

/// The row whose pixels stand in row `y` of the kept part, extended.
const std::uint8_t* FloatCropRows::ExtendedRow(int y) const
{
    return RowOf(m_src, std::clamp(y, m_crop.kept.top, m_height - m_crop.kept.top - 1));
}

int FloatCropRows::ExtendedColumn(int x) const
{
    return std::clamp(x, m_crop.kept.left, m_width - m_crop.kept.left - 1);
}

/// The kept part, extended, weighs as much as the mask says; the ground, which is opaque, the rest.
void FloatCropRows::OverlaySpan(int y, Span span)
{
    const std::uint8_t* const kept = ExtendedRow(y);
    const std::uint8_t* const own = RowOf(m_src, y);
    std::uint8_t* const to = RowOf(m_dst, y);
    for (int x = span.first; x < span.end; ++x) {
        const Pixel over = LoadPixel(kept, ExtendedColumn(x));
        const Pixel ground = LoadPixel(to, x);
        const double alpha = static_cast<double>(m_mask[x]);
        Pixel mixed;
        for (int c = 0; c < 4; ++c)
            mixed[c] = static_cast<float>(static_cast<double>(over[c]) * alpha
                                          + (1.0 - alpha) * static_cast<double>(ground[c]));
        StorePixel(to, x, WithAlphaOf(LoadPixel(own, x), mixed, m_alpha));
    }
}

void FloatCropRows::TransparentSpan(int y, Span span)
{
    const std::uint8_t* const kept = ExtendedRow(y);
    const std::uint8_t* const own = RowOf(m_src, y);
    std::uint8_t* const to = RowOf(m_dst, y);
    for (int x = span.first; x < span.end; ++x) {
        const double product =
            static_cast<double>(LoadPixel(own, x)[m_alpha]) * static_cast<double>(m_mask[x]);
        const Pixel alphas = Pixel{} + static_cast<float>(product + 0.0);
        StorePixel(to, x, WithAlphaOf(alphas, LoadPixel(kept, ExtendedColumn(x)), m_alpha));
    }
}

} // namespace kelmora::crop_borders
