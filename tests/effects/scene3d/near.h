#pragma once

#include <gtest/gtest.h>

#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/vector3.h"

namespace kelmora {

/// What a few roundings of coordinates about 1 may add up to.
inline constexpr double kRounding = 1e-14;

inline void ExpectNear(const Vector3& actual, const Vector3& expected)
{
    EXPECT_NEAR(actual.x, expected.x, kRounding);
    EXPECT_NEAR(actual.y, expected.y, kRounding);
    EXPECT_NEAR(actual.z, expected.z, kRounding);
}

inline void ExpectNear(const Matrix4& actual, const Matrix4& expected)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(actual.m[row][column], expected.m[row][column], kRounding) << row << ", " << column;
}

} // namespace kelmora
