#pragma once

#include <algorithm>

#include "effects/scene3d/vector3.h"

namespace kelmora {

/// How bright a face is. This one lights everything in full.
class Light3D {
public:
    /// 0 to 1, for a face of this normal at this position. With `twoSided` a face that is turned away is as
    /// bright as one that is turned as far toward the light.
    virtual double Intensity(const Vector3& normal, const Vector3& position, bool twoSided) const;

    virtual ~Light3D() = default;
};

inline double Light3D::Intensity(const Vector3&, const Vector3&, bool) const
{
    return 1.0;
}

/// Light that comes from one direction everywhere, as the sun's.
class LinearLight : public Light3D {
public:
    /// How bright a face is that the light misses: 0 to 1, anything else changes nothing. 0 at first.
    void SetAmbient(double ambient)
    {
        if (ambient >= 0.0 && ambient <= 1.0)
            m_ambient = ambient;
    }

    double GetAmbient() const { return m_ambient; }

    double Intensity(const Vector3& normal, const Vector3& position, bool twoSided) const override;

private:
    Vector3 m_direction = {0.0, 0.0, -1.0}; // where it shines to
    double m_ambient = 0.0;
};

inline double LinearLight::Intensity(const Vector3& normal, const Vector3&, bool twoSided) const
{
    const double toward = -Dot(m_direction, normal);
    const double lit = twoSided && toward < 0.0 ? -toward : toward;
    const double share = lit > 0.0 ? std::min(lit, 1.0) : 0.0; // what is no number is dark
    return (1.0 - m_ambient) * share + m_ambient;
}

} // namespace kelmora
