#include "tests/reference/plain_transform.h"

#include <algorithm>
#include <cmath>

namespace kelmora::reference {

void PlainTransform::Multiply(const float (&t)[3][3])
{
    float product[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            double sum = 0;
            for (int k = 0; k < 3; ++k)
                sum += static_cast<double>(m[i][k]) * static_cast<double>(t[k][j]);
            product[i][j] = static_cast<float>(sum);
        }
    std::copy(&product[0][0], &product[0][0] + 9, &m[0][0]);
}

void PlainTransform::Scale(float x, float y)
{
    Multiply({{x, 0, 0}, {0, y, 0}, {0, 0, 1}});
}

void PlainTransform::Translate(float x, float y)
{
    Multiply({{1, 0, 0}, {0, 1, 0}, {x, y, 1}});
}

void PlainTransform::Rotate(float radians)
{
    const auto cosine = static_cast<float>(std::cos(static_cast<double>(radians)));
    const auto sine = static_cast<float>(std::sin(static_cast<double>(radians)));
    Multiply({{cosine, sine, 0}, {-sine, cosine, 0}, {0, 0, 1}});
}

} // namespace kelmora::reference
