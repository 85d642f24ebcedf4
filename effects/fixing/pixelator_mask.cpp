#include "effects/fixing/pixelator_mask.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "image/picture_check.h"
#include "image/primitives/flood_fill.h"
#include "image/scratch.h"

namespace kelmora::pixelator {
namespace {

bool IsBytePlane(const FrameBuffer& mask)
{
    return mask.GetFormat() == PF_Mask8 && mask.GetPixelBytes() == 1 && Holds(mask, mask.GetWidth(), 1);
}

bool IsFloatPlane(const FrameBuffer& mask)
{
    return mask.GetFormat() == PF_Mask32F && mask.GetPixelBytes() == 4 && Holds(mask, mask.GetWidth(), 4);
}

/// Draws into a plane of T, in every quarter of the ellipse alike.
template <class T>
class Pen {
public:
    Pen(FrameBuffer& mask, const Ellipse& ellipse, T full)
        : m_pixels(mask.GetPixels()), m_step(mask.GetStride()), m_width(mask.GetWidth()),
          m_height(mask.GetHeight()), m_centreX(ellipse.centreX), m_centreY(ellipse.centreY), m_full(full)
    {
    }

    /// The points `x` to the right and to the left, `y` above and below the centre.
    void Plot(std::int64_t x, std::int64_t y)
    {
        Dot(m_centreX + x, m_centreY + y);
        Dot(m_centreX - x, m_centreY + y);
        Dot(m_centreX + x, m_centreY - y);
        Dot(m_centreX - x, m_centreY - y);
    }

private:
    void Dot(std::int64_t x, std::int64_t y)
    {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height)
            return;
        const std::int64_t at = m_step * y + static_cast<std::int64_t>(sizeof(T)) * x;
        std::memcpy(m_pixels + static_cast<std::ptrdiff_t>(at), &m_full, sizeof m_full);
    }

    std::uint8_t* const m_pixels;
    const std::int64_t m_step;
    const int m_width, m_height;
    const std::int64_t m_centreX, m_centreY;
    const T m_full;
};

/// By midpoints: `d` tells on which side of the outline the middle between the two next pixels lies, dx and dy are
/// its slopes. In 64 bits: from about a thousand pixels on the products of two squares exceed 32.
// Kept: with a radius of 0 what comes out is a thin cross through the centre, which leaves no inside to fill.
template <class Pen>
void TraceEllipse(Pen pen, std::int64_t a, std::int64_t b)
{
    const std::int64_t a2 = a * a, b2 = b * b, twoA2 = 2 * a2, twoB2 = 2 * b2;
    std::int64_t x = 0, y = b, dx = 0, dy = twoA2 * b;
    std::int64_t d = (b - a2) * b + a2 / 4;
    pen.Plot(0, b);
    pen.Plot(a, 0);
    while (dx < dy) {
        if (d > 0) {
            dy -= twoA2;
            --y;
            d -= dy;
        }
        ++x;
        dx += twoB2;
        d += b2 + dx;
        pen.Plot(x, y);
    }
    d += (((a2 - b2) * 3) / 2 - (dx + dy)) / 2;
    while (y > 0) {
        if (d < 0) {
            ++x;
            dx += twoB2;
            d += b2 + dx;
        }
        --y;
        dy -= twoA2;
        d += a2 - dy;
        pen.Plot(x, y);
    }
}

} // namespace

void DrawEllipse(FrameBuffer& mask, const Ellipse& ellipse)
{
    if (IsBytePlane(mask))
        TraceEllipse(Pen<std::uint8_t>(mask, ellipse, 255), ellipse.radiusX, ellipse.radiusY);
    else if (IsFloatPlane(mask))
        TraceEllipse(Pen<float>(mask, ellipse, 1.0f), ellipse.radiusX, ellipse.radiusY);
}

// Kept: an outline that lies wholly outside of the plane leaves nothing in the fill's way: all of the plane is
// filled.
void FloodMask(FrameBuffer& mask, int seedX, int seedY, int value, MemoryAllocator& allocator)
{
    const int width = mask.GetWidth(), height = mask.GetHeight(), step = mask.GetStride();
    int bytes = 0;
    Scratch work;
    if (!(IsBytePlane(mask) || IsFloatPlane(mask)) || pxFloodFillSize(width, height, &bytes) != pxOk
        || !work.Allocate(allocator, bytes))
        return;
    if (IsBytePlane(mask))
        pxFloodFill_8u_C1(mask.GetPixels(), step, width, height, seedX, seedY,
                          static_cast<std::uint8_t>(value), nullptr, work.Bytes());
    else
        pxFloodFill_32f_C1(Floats(mask.GetPixels()), step, width, height, seedX, seedY,
                           static_cast<float>(value / 255.0), nullptr, work.Bytes());
}

} // namespace kelmora::pixelator
