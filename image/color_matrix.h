#pragma once

namespace kelmora {

/// A linear change of colour: m[row][column], applied to the row vector (R, G, B, A, 1) as
/// out[i] = m[4][i] + sum over k below 4 of v[k] * m[k][i]. New: the identity.
struct ColorMatrix {
    float m[5][5] = {
        {1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1},
    };
};

} // namespace kelmora
