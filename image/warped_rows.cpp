#include "image/warped_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "image/pixel_format.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {
namespace {

/// Half of a row of values, that is its mean with zeros.
void Halve(const void* row, void* dst, std::size_t pixels, bool floats)
{
    if (pixels == 0)
        return;
    const RowKernels& kernels = RowKernelsFor(CurrentVariant());
    (floats ? kernels.halveFloats : kernels.halveBytes)(row, dst, static_cast<int>(pixels) * 4);
}

} // namespace

WarpedRows::WarpedRows(const FrameBuffer& picture, Size size, const Transform2D& move)
    : m_size(size), m_floats(IsFloat(picture.GetFormat()))
{
    const int bytes = PixelBytesOf(picture.GetFormat());
    if (!IsPicture(picture.GetFormat()) || IsEmpty(size) || size.height > picture.GetHeight()
        || !Holds(picture, size.width, bytes) || InvertAffine(move.ToCoefficients().rows, m_map) != pxOk)
        return;
    m_image = {picture.GetPixels(), picture.GetStride(), {0, 0, size.width - 1, size.height - 1}};
    m_served = SeparableWarp::Serves(m_map, m_image);
}

bool WarpedRows::StayInTheirRows() const
{
    return m_served && m_map.isShift
        && (m_floats ? m_map.y0 == 0.0 : std::fabs(m_map.y0) < std::min(kWarpSlack, 1.0 / 512));
}

void WarpedRows::Begin(void* work)
{
    m_warp.emplace(m_image, m_map, WarpSpan{0, m_size.width}, m_floats, work);
}

void WarpedRows::Row(int y, void* dst)
{
    const std::size_t bytes = m_floats ? 16 : 4;
    const WarpSpan covered = m_warp->Covered(y);
    auto* const row = static_cast<std::uint8_t*>(dst);
    if (covered.IsEmpty()) {
        std::memset(row, 0, static_cast<std::size_t>(m_size.width) * bytes);
        return;
    }
    std::memset(row, 0, static_cast<std::size_t>(covered.begin) * bytes);
    m_warp->Row(y, row + static_cast<std::size_t>(covered.begin) * bytes);
    std::memset(row + static_cast<std::size_t>(covered.end) * bytes, 0,
                static_cast<std::size_t>(m_size.width - covered.end) * bytes);
}

void WarpedRows::MeanRow(int y, const void* with, void* dst)
{
    const std::size_t bytes = m_floats ? 16 : 4;
    WarpSpan covered = m_warp->Covered(y);
    if (covered.IsEmpty())
        covered = {0, 0};
    const auto* const other = static_cast<const std::uint8_t*>(with);
    auto* const row = static_cast<std::uint8_t*>(dst);
    const std::size_t begin = static_cast<std::size_t>(covered.begin),
                      end = static_cast<std::size_t>(covered.end);
    Halve(other, row, begin, m_floats);
    if (begin < end)
        m_warp->Row(y, row + begin * bytes, other + begin * bytes);
    Halve(other + end * bytes, row + end * bytes, static_cast<std::size_t>(m_size.width) - end, m_floats);
}

} // namespace kelmora
