#include "image/color_matrix.h"

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(ColorMatrix, New_IsTheIdentity)
{
    const ColorMatrix matrix;
    for (int row = 0; row < 5; ++row)
        for (int column = 0; column < 5; ++column)
            EXPECT_EQ(matrix.m[row][column], row == column ? 1.0f : 0.0f) << row << ", " << column;
    EXPECT_EQ(sizeof matrix, 25u * 4);
}

} // namespace
} // namespace kelmora
