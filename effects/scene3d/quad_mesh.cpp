#include "effects/scene3d/quad_mesh.h"

#include "effects/common/precision.h"

namespace kelmora {
namespace {

bool IsWithin(int pieces)
{
    return pieces >= 1 && pieces <= QuadGrid::kMostAcross;
}

int Nearest(double v)
{
    return Truncate(v + 0.5);
}

/// One edge of a piece to the other, as shares of the whole.
struct Range {
    double from, to;
};

/// What piece `k` of `count` takes of `size` pixels. The last one ends at the last pixel.
// Kept: pieces of half a pixel or less may end one pixel outside, and the last one run backward.
Range RangeOf(int k, int count, int size)
{
    const double step = static_cast<double>(size) / count;
    const int first = Nearest(k * step);
    const int last = k == count - 1 ? size - 1 : Nearest(k * step + step);
    return {static_cast<double>(first) / (size - 1), static_cast<double>(last) / (size - 1)};
}

/// The part that the back must show so that a face turned by its orientation reads the same way round.
TextureRect BackRectFor(const TextureRect& front, std::int32_t orientation)
{
    if (orientation == kTurnsSideways)
        return {1.0 - front.u1, front.v0, 1.0 - front.u0, front.v1};
    if (orientation == kTurnsOver)
        return {front.u0, 1.0 - front.v1, front.u1, 1.0 - front.v0};
    return front;
}

QuadFace PieceOf(const QuadGrid& grid, const TextureRect& part)
{
    const Vector3 across = Subtract(grid.area[1], grid.area[0]), down = Subtract(grid.area[3], grid.area[0]);
    const auto at = [&](double u, double v) {
        return Add(Add(grid.area[0], Scale(across, u)), Scale(down, v));
    };
    return {at(part.u0, part.v0),
            at(part.u1, part.v0),
            at(part.u1, part.v1),
            at(part.u0, part.v1),
            grid.frontTexture,
            grid.backTexture,
            grid.orientation,
            part,
            BackRectFor(part, grid.orientation)};
}

/// How far a box reaches back from its front.
// Kept: the mean of the top edge and the diagonal, not of the two sides. A wide thin slice becomes about as deep
// as it is wide.
double DepthOf(const QuadFace::Corners& corners)
{
    return (Subtract(corners[1], corners[0]).Length() + Subtract(corners[2], corners[0]).Length()) * 0.5;
}

/// Without memory it is empty.
QuadMesh BoxBehind(const QuadFace& face)
{
    const Vector3 away = {0.0, 0.0, DepthOf(face.corners)};
    const Vector3 &a = face.corners[0], &b = face.corners[1], &c = face.corners[2], &d = face.corners[3];
    const Vector3 a2 = Subtract(a, away), b2 = Subtract(b, away);
    const Vector3 c2 = Subtract(c, away), d2 = Subtract(d, away);
    const Vector3 sides[6][4] = {
        {a, b, c, d},     // front
        {b, b2, c2, c},   // right
        {b2, a2, d2, c2}, // back
        {a2, a, d, d2},   // left
        {a2, b2, b, a},   // top
        {d, c, c2, d2},   // bottom
    };
    QuadMesh box;
    if (!box.Reserve(std::size(sides)))
        return box;
    for (const auto& side : sides) {
        QuadFace copy = face;
        copy.SetCorners(side[0], side[1], side[2], side[3]);
        box.AddFace(copy);
    }
    return box;
}

} // namespace

void QuadMesh::FlipBackRects(bool horizontal)
{
    for (QuadFace& face : m_faces)
        face.FlipBackRect(horizontal);
}

Vector3 QuadMesh::GetCenter() const
{
    Vector3 center;
    for (const QuadFace& face : m_faces)
        center.AddInPlace(face.GetCenter());
    center.DivideInPlace(static_cast<double>(m_faces.size()));
    return center;
}

void QuadMesh::TransformInPlace(const Matrix4& move)
{
    for (QuadFace& face : m_faces)
        face.TransformInPlace(move);
}

QuadMesh QuadMeshCreator::CreateGrid(const QuadGrid& grid) const
{
    QuadMesh mesh;
    if (!IsWithin(grid.columns) || !IsWithin(grid.rows) || grid.width < 2 || grid.height < 2
        || !mesh.Reserve(static_cast<std::size_t>(grid.columns) * static_cast<std::size_t>(grid.rows)))
        return mesh;
    for (int row = 0; row < grid.rows; ++row) {
        const Range v = RangeOf(row, grid.rows, grid.height);
        for (int column = 0; column < grid.columns; ++column) {
            const bool backward = grid.serpentine && row % 2 == 1;
            const Range u = RangeOf(backward ? grid.columns - column - 1 : column, grid.columns, grid.width);
            mesh.AddFace(PieceOf(grid, {u.from, v.from, u.to, v.to}));
        }
    }
    return mesh;
}

GrowingList<QuadMesh> QuadMeshCreator::CreateBoxes(const QuadMesh& mesh) const
{
    GrowingList<QuadMesh> boxes;
    for (std::size_t i = 0; i < mesh.GetFaceCount(); ++i) {
        if (mesh.GetFace(i).corners.size() != 4)
            continue;
        QuadMesh box = BoxBehind(mesh.GetFace(i));
        if (box.GetFaceCount() == 0 || !boxes.push_back(std::move(box)))
            return {};
    }
    return boxes;
}

} // namespace kelmora
