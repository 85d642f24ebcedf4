#include "effects/scene3d/scene3d.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "effects/common/precision.h"
#include "effects/scene3d/face_light.h"
#include "image/image_ops.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/warp.h"

namespace kelmora {
namespace {

/// Whether the rectangle ends in the picture. By the grid's rounding, or because a back is smaller, it may not.
bool EndsIn(const FrameBuffer& picture, const SourceRect& rect)
{
    return std::int64_t{rect.x} + rect.width <= picture.GetWidth()
        && std::int64_t{rect.y} + rect.height <= picture.GetHeight();
}

/// A view of pixels that all lie in a picture of one of the four picture formats; false for any others.
bool AttachPart(FrameBuffer& view, const FrameBuffer& picture, const SourceRect& rect)
{
    const int bytes = picture.GetPixelBytes();
    if (rect.x < 0 || rect.y < 0 || rect.width < 1 || rect.height < 1 || !IsPicture(picture.GetFormat())
        || bytes != PixelBytesOf(picture.GetFormat()) || !Holds(picture, picture.GetWidth(), bytes))
        return false;
    return view.Attach(picture.PixelAddress(rect.x, rect.y, 0), rect.width, rect.height, picture.GetStride(),
                       bytes, picture.GetFormat(), false);
}

} // namespace

std::uint32_t MakeInterpolationCode(int mode, int smoothEdges)
{
    const std::uint32_t code = mode == 0 ? pxNearest : mode == 1 ? pxLinear : mode == 2 ? pxCubic : 0;
    return smoothEdges > 0 ? code | pxSmoothEdges : code;
}

double SnapToPixel(double v)
{
    constexpr double dust = Single(1e-5);
    if (v > 0.0) {
        const double whole = std::trunc(v);
        if (std::trunc(v + dust) > whole)
            return std::trunc(v + dust);
        if (std::trunc(v - dust) < whole)
            return whole;
        return v - dust <= 0.0 ? 0.0 : v;
    }
    if (v < 0.0)
        return v + dust >= 0.0 ? 0.0 : v;
    return v == 0.0 ? 0.0 : v;
}

void Scene3D::SetCanvas(const VideoFrame* frame)
{
    if (!m_canvas)
        m_canvas.emplace();
    m_canvas->Attach(frame);
}

const SceneCanvas* Scene3D::GetCanvas() const
{
    return m_canvas ? &*m_canvas : nullptr;
}

void Scene3D::SetAllocator(MemoryAllocator* allocator)
{
    m_space.Release();
    m_allocator = allocator;
}

void Scene3D::SetModelMatrix(const Matrix4& model)
{
    m_modelMatrix = model;
    m_combinedMatrix = m_modelMatrix.Then(m_viewMatrix);
}

void Scene3D::SetViewMatrix(const Matrix4& view)
{
    m_viewMatrix = view;
    m_combinedMatrix = m_modelMatrix.Then(m_viewMatrix);
}

void Scene3D::AddLight(const Light3D* light)
{
    if (light && std::find(m_lights.begin(), m_lights.end(), light) == m_lights.end())
        m_lights.push_back(light);
}

void Scene3D::EndFrame()
{
    ClearLights();
    ClearFilters();
    SetAllocator(nullptr);
    if (m_canvas)
        m_canvas->Detach();
}

void Scene3D::SetBackground(const FrameBuffer& picture, std::uint32_t padColour)
{
    if (m_canvas)
        m_canvas->CopyFrom(picture, padColour);
}

void Scene3D::SetBackground(const VideoFrame* picture, std::uint32_t padColour)
{
    FrameBuffer view;
    view.AttachFrame(picture);
    SetBackground(view, padColour);
}

void Scene3D::FillBackground(std::uint32_t colour, bool clearAlpha)
{
    if (m_canvas)
        m_canvas->Fill(colour, clearAlpha);
}

Vector3 Scene3D::FrameCorner(double x, double y) const
{
    if (!m_canvas || !m_canvas->IsValid())
        return {};
    return {x * m_canvas->aspect, y, 0.0};
}

double Scene3D::LightLevel(const Vector3& normal, const Vector3& position, bool twoSided) const
{
    if (m_lights.empty())
        return 1.0;
    double sum = 0.0;
    for (const Light3D* light : m_lights)
        sum += light->Intensity(normal, position, twoSided);
    return sum / static_cast<double>(m_lights.size());
}

ScreenPoint Scene3D::ToScreen(double x, double y) const
{
    if (!m_canvas)
        return {};
    const double halfWidth = (m_canvas->canvasWidth - 1) * 0.5;
    const double halfHeight = (m_canvas->canvasHeight - 1) * 0.5;
    return {halfWidth * x / m_canvas->aspect + halfWidth, halfHeight - halfHeight * y};
}

bool Scene3D::Look(const QuadFace& face, bool backOnly, FaceView& view) const
{
    const bool twoSided = HasFlag(kTwoSided);
    if ((!twoSided && backOnly) || !face.IsValid() || !m_canvas)
        return false;

    // The normal and the light are those of the projected face, too.
    const std::array<Vector3, 4> corners = face.TransformedCorners(m_combinedMatrix);
    const Vector3 normal = FaceNormal(corners[0], corners[3], corners[1]);
    const bool facing = normal.z >= 0.0;
    if ((!twoSided && !facing) || (backOnly && facing))
        return false;
    const Vector3 sum = Add(Add(Add(corners[0], corners[1]), corners[2]), corners[3]);
    view.light = LightLevel(normal, Scale(sum, 0.25), twoSided);

    view.isBack = !facing;
    const std::array<std::size_t, 4> order = face.GetCornerOrder(view.isBack);
    int besideX = 0, besideY = 0;
    for (std::size_t k = 0; k < 4; ++k) {
        const ScreenPoint at = ToScreen(corners[order[k]].x, corners[order[k]].y);
        const double x = SnapToPixel(at.x), y = SnapToPixel(at.y);
        view.quad[k][0] = x;
        view.quad[k][1] = y;
        besideX += x < 0.0 ? -1 : x > m_canvas->canvasWidth ? 1 : 0;
        besideY += y < 0.0 ? -1 : y > m_canvas->canvasHeight ? 1 : 0;
    }
    view.isBeside = std::abs(besideX) == 4 || std::abs(besideY) == 4;
    return true;
}

bool Scene3D::Shows(const QuadFace& face) const
{
    FaceView view;
    return Look(face, false, view) && !view.isBeside;
}

bool Scene3D::DrawFace(const QuadFace& face, std::uint32_t interpolation, bool backOnly)
{
    FaceView view;
    if (!Look(face, backOnly, view))
        return false;
    const FrameBuffer* const texture = face.GetTexture(view.isBack);
    if (view.isBeside || !texture)
        return true;
    // A face that needs no copy asks for its space as well: without memory no face is drawn, whatever its light.
    const SourceRect rect = face.GetSourceRect(view.isBack);
    FrameBuffer shown, part;
    if (!TakeSpace(*texture, rect, part))
        return true;
    if (view.light < 1.0 && ShowsAsItIs(*texture, rect, shown)
        && m_canvas->WarpLit(view.quad, shown, view.light, interpolation))
        return true;
    if (MakePart(*texture, rect, view.light, part))
        m_canvas->Warp(view.quad, &part, interpolation);
    return true;
}

/// A picture of the rectangle's size for the warp, not cleared.
bool Scene3D::TakeSpace(const FrameBuffer& texture, const SourceRect& rect, FrameBuffer& part)
{
    if (rect.width < 1 || rect.height < 1)
        return false;
    const Size held =
        m_space.GetPixels() && m_space.GetPixelBytes() == texture.GetPixelBytes() ? SizeOf(m_space) : Size();
    if ((rect.width > held.width || rect.height > held.height)
        && !m_space.Allocate(std::max(rect.width, held.width), std::max(rect.height, held.height),
                             texture.GetPixelBytes(), m_allocator, texture.GetFormat(), false))
        return false;
    return part.Attach(m_space.GetPixels(), rect.width, rect.height, m_space.GetStride(),
                       texture.GetPixelBytes(), texture.GetFormat(), false);
}

/// Whether the face shows nothing but pixels of the texture, light aside: `shown`.
bool Scene3D::ShowsAsItIs(const FrameBuffer& texture, const SourceRect& rect, FrameBuffer& shown) const
{
    return EndsIn(texture, rect) && m_filters.empty() && AttachPart(shown, texture, rect);
}

/// What the face shows, as bright as it is: in the space for it, or of the texture itself where that is all. False
/// where it is left out.
bool Scene3D::MakePart(const FrameBuffer& texture, const SourceRect& rect, double light, FrameBuffer& part)
{
    FrameBuffer shown;
    if (ShowsAsItIs(texture, rect, shown)) {
        if (!(light < 1.0))
            return part.AttachBuffer(shown);
        CopyLit(shown, part, light);
        return true;
    }
    ImageOps ops;
    if (!EndsIn(texture, rect))
        ops.Fill(part, 0);
    if (!ops.CopyRect(texture, rect.x, rect.y, rect.width, rect.height, part, 0, 0))
        return false;
    for (const std::unique_ptr<PREffect>& filter : m_filters)
        filter->Apply(&part);
    if (light < 1.0)
        ApplyLight(part, light);
    return true;
}

} // namespace kelmora
