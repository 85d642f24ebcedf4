#include "effects/scene3d/quad_face.h"

#include "effects/common/precision.h"

namespace kelmora {
namespace {

/// The pixel that a texture coordinate points at, of `size` pixels.
int PixelAt(double coordinate, int size)
{
    return Truncate((size - 1) * coordinate + 0.5);
}

/// Pixels from the first to the last, both included.
int Span(int first, int last)
{
    return Truncate(static_cast<double>(last) - first + 1.0);
}

} // namespace

QuadFace::QuadFace(const Vector3& c0, const Vector3& c1, const Vector3& c2, const Vector3& c3,
                   const FrameBuffer* front, const FrameBuffer* back, std::int32_t orientation,
                   const TextureRect& frontPart, const TextureRect& backPart)
    : frontRect(frontPart), backRect(backPart), frontTexture(front), backTexture(back),
      backOrientation(orientation)
{
    SetCorners(c0, c1, c2, c3);
}

void QuadFace::SetCorners(const Vector3& c0, const Vector3& c1, const Vector3& c2, const Vector3& c3)
{
    corners.resize(4);
    std::size_t i = 0;
    for (const Vector3& corner : {c0, c1, c2, c3})
        corners[i++] = corner;
}

void QuadFace::FlipBackRect(bool horizontal)
{
    const TextureRect r = backRect;
    if (horizontal)
        backRect = {1.0 - r.u1, r.v0, 1.0 - r.u0, r.v1};
    else
        backRect = {r.u0, 1.0 - r.v1, r.u1, 1.0 - r.v0};
}

SourceRect QuadFace::GetSourceRect(bool isBack) const
{
    if (!IsValid())
        return {};
    // Kept: the front texture's size, also for the back one. Pictures of one size show no difference.
    const int width = frontTexture->GetWidth(), height = frontTexture->GetHeight();
    if (width <= 0 || height <= 0)
        return {};
    const TextureRect& part = isBack && backTexture ? backRect : frontRect;
    const int x0 = PixelAt(part.u0, width), x1 = PixelAt(part.u1, width);
    const int y0 = PixelAt(part.v0, height), y1 = PixelAt(part.v1, height);
    return {x0, y0, Span(x0, x1), Span(y0, y1)};
}

std::array<std::size_t, 4> QuadFace::GetCornerOrder(bool isBack) const
{
    if (isBack && backOrientation == kTurnsSideways)
        return {1, 0, 3, 2};
    if (isBack && backOrientation == kTurnsOver)
        return {3, 2, 1, 0};
    return {0, 1, 2, 3};
}

std::array<Vector3, 4> QuadFace::TransformedCorners(const Matrix4& move) const
{
    std::array<Vector3, 4> moved = {};
    if (corners.size() == moved.size())
        for (std::size_t i = 0; i < moved.size(); ++i)
            moved[i] = move.Transform(corners[i]);
    return moved;
}

void QuadFace::TransformInPlace(const Matrix4& move)
{
    if (corners.size() != 4)
        return;
    for (Vector3& corner : corners)
        corner = move.Transform(corner);
}

Vector3 QuadFace::GetCenter() const
{
    Vector3 center;
    for (const Vector3& corner : corners)
        center.AddInPlace(corner);
    center.DivideInPlace(static_cast<double>(corners.size()));
    return center;
}

} // namespace kelmora
