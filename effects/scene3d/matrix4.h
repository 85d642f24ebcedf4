#pragma once

#include "effects/scene3d/vector3.h"

namespace kelmora {

/// A move in space for column vectors: m[row][column], a point is moved to M * p. All zeros unless built.
struct Matrix4 {
    double m[4][4] = {};

    bool operator==(const Matrix4&) const = default;

    static Matrix4 Identity();
    static Matrix4 Translation(double x, double y, double z);
    static Matrix4 Translation(const Vector3& by) { return Translation(by.x, by.y, by.z); }
    static Matrix4 Scaling(double x, double y, double z);

    // Radians; each turns by minus the angle in the usual right-handed sense.
    static Matrix4 RotationX(double angle);
    static Matrix4 RotationY(double angle);
    static Matrix4 RotationZ(double angle);

    /// The view from `distance` in front of the plane z = 0, in which nothing changes its size. The identity
    /// where the distance is next to none.
    static Matrix4 Perspective(double distance);

    /// First this move, then `next`: next * this.
    Matrix4 Then(const Matrix4& next) const;

    /// Divided by w, unless w is 1 or next to 0. There is no clipping: a point behind the viewer gets the
    /// mirrored place that the division gives.
    Vector3 Transform(const Vector3& p) const;
};

} // namespace kelmora
