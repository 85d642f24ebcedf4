#include "effects/fixing/crop_borders_float_rows.h"

#include <algorithm>
#include <numeric>

#include "effects/common/frame.h"
#include "effects/fixing/crop_borders_kernels.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/variant_table.h"
#include "image/tent_filter.h"
#include "image/tent_kernel.h"

KELMORA_VARIANT_TABLE(CropBordersKernels, kCropBordersKernels, CropBordersKernelsFor)

namespace kelmora::crop_borders {
namespace {

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
    int upTo[ImageOps::kMostBlurTaps + 1] = {}; // of all the taps before each
    const int all = MakeTentKernelI(weights, taps);
    std::partial_sum(weights, weights + taps, upTo + 1);
    const int lost = m_blurs ? TentJob::kFirstKept : 0;
    for (int i = 0; i < side.size; ++i) {
        // Tap k lies on pixel `last` - k, or on the nearest one that the blur has not lost.
        const int last = std::clamp(i, side.nearest, side.size - 1 - side.nearest) + taps / 2;
        const auto before = [&](int pixel) {
            if (pixel <= lost)
                return 0;
            return pixel < side.size - lost ? all - upTo[std::clamp(last + 1 - pixel, 0, taps)] : all;
        };
        profile.counts[i] = before(side.kept.end) - before(side.kept.first);
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
    const CropBordersKernels& kernels = CropBordersKernelsFor(CurrentVariant());
    const auto compose = overlays ? kernels.overlay : kernels.fade;
    const Span &columns = m_columns.full, &rows = m_rows.full;
    for (int y = 0; y < m_height; ++y) {
        MakeMaskRow(y);
        if (y < rows.first || y >= rows.end || columns.first >= columns.end) {
            MaskSpan(compose, y, {0, m_width});
            continue;
        }
        MaskSpan(compose, y, {0, columns.first});
        kernels.copy({FloatsOf(m_src, columns.first, y), FloatsOf(m_dst, columns.first, y),
                      columns.end - columns.first, m_alpha, overlays});
        MaskSpan(compose, y, {columns.end, m_width});
    }
}

/// Beside the kept columns the kept part goes on as its edge pixels.
void FloatCropRows::MaskSpan(void (*compose)(const CropMaskRow&), int y, Span span)
{
    const int left = m_crop.kept.left, right = m_width - left;
    const int keptRow = std::clamp(y, m_crop.kept.top, m_height - m_crop.kept.top - 1);
    const auto part = [&](int first, int end, int column, bool repeats) {
        if (first < end)
            compose({FloatsOf(m_src, column, keptRow), repeats, FloatsOf(m_src, first, y), m_mask + first,
                     FloatsOf(m_dst, first, y), end - first, m_alpha});
    };
    part(span.first, std::min(span.end, left), left, true);
    const int first = std::max(span.first, left);
    part(first, std::min(span.end, right), first, false);
    part(std::max(span.first, right), span.end, right - 1, true);
}

} // namespace kelmora::crop_borders
