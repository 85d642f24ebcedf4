#pragma once

#include <cmath>

#include "effects/common/precision.h"

namespace kelmora {

/// Lengths, divisors and distances below this count as none.
inline constexpr double kNoLength = Single(1e-6);

/// A point or a direction of the scene: x to the right, y up, z toward the viewer. The frame reaches from -1 to 1
/// in x and y and lies in the plane z = 0.
struct Vector3 {
    double x = 0, y = 0, z = 0;

    constexpr bool operator==(const Vector3&) const = default;

    constexpr void AddInPlace(const Vector3& v)
    {
        x += v.x;
        y += v.y;
        z += v.z;
    }

    /// Division by next to nothing, or by what is no number, gives the zero vector.
    void DivideInPlace(double s)
    {
        if (!(std::fabs(s) >= kNoLength))
            *this = {};
        else
            *this = {x / s, y / s, z / s};
    }

    double Length() const { return std::sqrt(x * x + y * y + z * z); }

    /// To length 1; a vector of next to no length becomes the zero vector.
    void Normalize() { DivideInPlace(Length()); }
};

constexpr Vector3 Add(const Vector3& a, const Vector3& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

/// a - b.
constexpr Vector3 Subtract(const Vector3& a, const Vector3& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

constexpr Vector3 Scale(const Vector3& v, double s)
{
    return {v.x * s, v.y * s, v.z * s};
}

constexpr double Dot(const Vector3& a, const Vector3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

constexpr Vector3 Cross(const Vector3& a, const Vector3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// `v` with length 1, or the zero vector.
inline Vector3 Normalized(Vector3 v)
{
    v.Normalize();
    return v;
}

/// Of length 1, at right angles to the plane through the points, toward whoever sees a, b, c run anticlockwise. The
/// zero vector for points on one line.
inline Vector3 FaceNormal(const Vector3& a, const Vector3& b, const Vector3& c)
{
    return Normalized(Cross(Subtract(b, a), Subtract(c, a)));
}

} // namespace kelmora
