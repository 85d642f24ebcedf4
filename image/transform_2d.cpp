#include "image/transform_2d.h"

#include "image/exact_math.h"

namespace kelmora {

void Transform2D::Multiply(const Transform2D& t)
{
    const Transform2D left = *this;
    const Transform2D right = t; // may be this one
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            double sum = 0;
            for (int k = 0; k < 3; ++k)
                sum +=
                    static_cast<double>(left.m_elements[i][k]) * static_cast<double>(right.m_elements[k][j]);
            m_elements[i][j] = static_cast<float>(sum);
        }
}

Transform2D::Coefficients Transform2D::ToCoefficients() const
{
    Coefficients c;
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j)
            c.rows[i][j] = static_cast<double>(m_elements[j][i]);
    return c;
}

void Transform2D::Scale(float x, float y)
{
    Transform2D scale;
    scale.m_elements[0][0] = x;
    scale.m_elements[1][1] = y;
    Multiply(scale);
}

void Transform2D::Translate(float x, float y)
{
    Transform2D move;
    move.m_elements[2][0] = x;
    move.m_elements[2][1] = y;
    Multiply(move);
}

void Transform2D::Rotate(float radians)
{
    const SineCosine turn = ExactTurn(static_cast<double>(radians));
    Transform2D rotation;
    rotation.m_elements[0][0] = rotation.m_elements[1][1] = static_cast<float>(turn.cosine);
    rotation.m_elements[0][1] = static_cast<float>(turn.sine);
    rotation.m_elements[1][0] = static_cast<float>(-turn.sine);
    Multiply(rotation);
}

} // namespace kelmora
