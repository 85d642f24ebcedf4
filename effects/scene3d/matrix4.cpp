#include "effects/scene3d/matrix4.h"

#include <cmath>

#include "image/exact_math.h"

namespace kelmora {

Matrix4 Matrix4::Identity()
{
    return Scaling(1.0, 1.0, 1.0);
}

Matrix4 Matrix4::Translation(double x, double y, double z)
{
    Matrix4 move = Identity();
    move.m[0][3] = x;
    move.m[1][3] = y;
    move.m[2][3] = z;
    return move;
}

Matrix4 Matrix4::Scaling(double x, double y, double z)
{
    Matrix4 move;
    move.m[0][0] = x;
    move.m[1][1] = y;
    move.m[2][2] = z;
    move.m[3][3] = 1.0;
    return move;
}

// Kept: all three turn the other way round than is usual. The effects' own signs are tuned to that.
Matrix4 Matrix4::RotationX(double angle)
{
    const SineCosine turn = ExactTurn(angle);
    Matrix4 move = Identity();
    move.m[1][1] = turn.cosine;
    move.m[1][2] = turn.sine;
    move.m[2][1] = -turn.sine;
    move.m[2][2] = turn.cosine;
    return move;
}

Matrix4 Matrix4::RotationY(double angle)
{
    const SineCosine turn = ExactTurn(angle);
    Matrix4 move = Identity();
    move.m[0][0] = turn.cosine;
    move.m[0][2] = -turn.sine;
    move.m[2][0] = turn.sine;
    move.m[2][2] = turn.cosine;
    return move;
}

Matrix4 Matrix4::RotationZ(double angle)
{
    const SineCosine turn = ExactTurn(angle);
    Matrix4 move = Identity();
    move.m[0][0] = turn.cosine;
    move.m[0][1] = turn.sine;
    move.m[1][0] = -turn.sine;
    move.m[1][1] = turn.cosine;
    return move;
}

Matrix4 Matrix4::Perspective(double distance)
{
    Matrix4 view = Identity();
    if (std::fabs(distance) >= kNoLength)
        view.m[3][2] = -1.0 / distance;
    return view;
}

Matrix4 Matrix4::Then(const Matrix4& next) const
{
    Matrix4 both;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            for (int k = 0; k < 4; ++k)
                both.m[row][column] += next.m[row][k] * m[k][column];
    return both;
}

Vector3 Matrix4::Transform(const Vector3& p) const
{
    const auto line = [&](int row) {
        return m[row][0] * p.x + m[row][1] * p.y + m[row][2] * p.z + m[row][3];
    };
    const Vector3 moved = {line(0), line(1), line(2)};
    const double w = line(3);
    if (w != 1.0 && std::fabs(w) > 1e-6)
        return {moved.x / w, moved.y / w, moved.z / w};
    return moved;
}

} // namespace kelmora
