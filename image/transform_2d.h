#pragma once

namespace kelmora {

/// A move in the plane as a 3 by 3 matrix of single precision, for row vectors: a point (x, y, 1) times the
/// matrix. Products are summed in double and rounded once.
class Transform2D {
public:
    /// The identity.
    Transform2D() = default;

    /// x' = rows[0][0] x + rows[0][1] y + rows[0][2], and y' likewise: the same move for column vectors.
    struct Coefficients {
        double rows[2][3];
    };
    Coefficients ToCoefficients() const;

    /// 0 to 2 each.
    float Get(int row, int column) const { return m_elements[row][column]; }

    /// this = this * t: what `t` does comes after.
    void Multiply(const Transform2D& t);

    void Scale(float factor) { Scale(factor, factor); }
    void Scale(float x, float y);

    /// In pixels.
    void Translate(float x, float y);

    /// From the first axis toward the second one.
    void Rotate(float radians);

private:
    float m_elements[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

} // namespace kelmora
