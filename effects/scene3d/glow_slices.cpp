#include "effects/scene3d/glow_slices.h"

#include <algorithm>

#include "image/image_ops.h"
#include "image/picture_check.h"

namespace kelmora {
namespace {

/// How much of the part there is in the picture: it may stick out by the grid's rounding.
Size SizeInside(const FrameBuffer& picture, const SourceRect& part)
{
    if (part.x < 0 || part.y < 0)
        return {};
    return {std::min(part.width, picture.GetWidth() - part.x),
            std::min(part.height, picture.GetHeight() - part.y)};
}

} // namespace

void GlowSlices::Drawn(std::size_t i)
{
    for (Slice& slice : m_slices)
        if (slice.lastFace == i)
            slice.pixels.Release();
}

/// False without memory for the lists. The slices stay where they are from here on: faces point at them.
bool GlowSlices::Find(const Scene3D& scene, const QuadMesh& faces, const FaceOrder& order)
{
    if (!m_slices.reserve(order.size()) || !m_shown.reserve(order.size()))
        return false;
    for (const std::size_t i : order) {
        const QuadFace& face = faces.GetFace(i);
        const SourceRect part = face.GetSourceRect(false);
        if (!scene.Shows(face) || IsEmpty(SizeInside(*face.frontTexture, part)))
            continue;
        Slice* const slice = std::find_if(m_slices.begin(), m_slices.end(), [&](const Slice& known) {
            return known.picture == face.frontTexture && known.part == part;
        });
        const auto number = static_cast<std::size_t>(slice - m_slices.begin());
        if (number == m_slices.size())
            static_cast<void>(m_slices.push_back({face.frontTexture, part, {}, i}));
        m_slices[number].lastFace = i;
        static_cast<void>(m_shown.push_back({i, number}));
    }
    return true;
}

/// All parts or none.
bool GlowSlices::Allocate()
{
    for (Slice& slice : m_slices) {
        if (slice.pixels.Allocate(slice.part.width, slice.part.height, slice.picture->GetPixelBytes(),
                                  &m_allocator, slice.picture->GetFormat(), false))
            continue;
        for (Slice& taken : m_slices)
            taken.pixels.Release();
        return false;
    }
    return true;
}

void GlowSlices::Fill(Slice& slice, const PRDreamGlowEffect& glow)
{
    const Size size = SizeInside(*slice.picture, slice.part);
    FrameBuffer inside;
    inside.Attach(slice.pixels.GetPixels(), size.width, size.height, slice.pixels.GetStride(),
                  slice.pixels.GetPixelBytes(), slice.pixels.GetFormat(), false);
    ImageOps ops;
    if (size != Size{slice.part.width, slice.part.height})
        ops.Fill(slice.pixels, 0);
    if (!glow.ApplyInto(*slice.picture, slice.part.x, slice.part.y, inside))
        ops.Fill(slice.pixels, 0); // of no picture format, or in rows too short for them
}

void GlowSlices::Show(QuadMesh& faces) const
{
    for (const Shown& shown : m_shown) {
        QuadFace& face = faces.GetFace(shown.face);
        face.SetFrontTexture(&m_slices[shown.slice].pixels);
        face.SetFrontRect(0.0, 0.0, 1.0, 1.0);
    }
}

} // namespace kelmora
