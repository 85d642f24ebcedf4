#include "effects/scene3d/scene3d.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "effects/common/precision.h"
#include "effects/scene3d/face_light.h"
#include "image/image_ops.h"
#include "image/primitives/warp.h"

namespace kelmora {

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
        m_canvas = std::make_unique<SceneCanvas>();
    m_canvas->Attach(frame);
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
    m_allocator = nullptr;
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

bool Scene3D::DrawFace(const QuadFace& face, std::uint32_t interpolation, bool backOnly)
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
    const double light = LightLevel(normal, Scale(sum, 0.25), twoSided);

    const bool isBack = !facing;
    const std::array<std::size_t, 4> order = face.GetCornerOrder(isBack);
    double quad[4][2];
    int besideX = 0, besideY = 0;
    for (std::size_t k = 0; k < 4; ++k) {
        const ScreenPoint at = ToScreen(corners[order[k]].x, corners[order[k]].y);
        const double x = SnapToPixel(at.x), y = SnapToPixel(at.y);
        quad[k][0] = x;
        quad[k][1] = y;
        besideX += x < 0.0 ? -1 : x > m_canvas->canvasWidth ? 1 : 0;
        besideY += y < 0.0 ? -1 : y > m_canvas->canvasHeight ? 1 : 0;
    }
    if (std::abs(besideX) != 4 && std::abs(besideY) != 4)
        DrawPixels(face, isBack, light, quad, interpolation);
    return true;
}

void Scene3D::DrawPixels(const QuadFace& face, bool isBack, double light, const double quad[4][2],
                         std::uint32_t interpolation)
{
    const SourceRect rect = face.GetSourceRect(isBack);
    const FrameBuffer* const texture = face.GetTexture(isBack);
    FrameBuffer part;
    if (!texture
        || !part.Allocate(rect.width, rect.height, texture->GetPixelBytes(), m_allocator,
                          texture->GetFormat(), false))
        return;
    ImageOps ops;
    // The rectangle may stick out of the texture, by the grid's rounding or because the back is smaller.
    const bool isWhole = std::int64_t{rect.x} + rect.width <= texture->GetWidth()
        && std::int64_t{rect.y} + rect.height <= texture->GetHeight();
    if (!isWhole)
        ops.Fill(part, 0);
    if (!ops.CopyRect(*texture, rect.x, rect.y, rect.width, rect.height, part, 0, 0))
        return;
    for (const std::unique_ptr<PREffect>& filter : m_filters)
        filter->Apply(&part);
    if (light < 1.0)
        ApplyLight(part, light);
    m_canvas->Warp(quad, &part, interpolation);
}

} // namespace kelmora
