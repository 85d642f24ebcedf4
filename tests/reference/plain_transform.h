#pragma once

namespace kelmora::reference {

/// A 3 by 3 matrix of single precision for row vectors; products are summed in double and rounded once.
struct PlainTransform {
    float m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

    /// What `t` does comes after.
    void Multiply(const float (&t)[3][3]);

    void Scale(float x, float y);
    void Translate(float x, float y);
    void Rotate(float radians);
};

} // namespace kelmora::reference
