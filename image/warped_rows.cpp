#include "image/warped_rows.h"

#include <cstddef>
#include <cstring>

#include "image/pixel_format.h"

namespace kelmora {
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

} // namespace kelmora
