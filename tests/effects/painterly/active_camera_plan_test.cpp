#include "effects/painterly/active_camera_plan.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace kelmora::active_camera {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

void ExpectMatrix(const Transform2D& transform, const double (&expected)[3][3], double tolerance)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(static_cast<double>(transform.Get(row, column)), expected[row][column], tolerance)
                << row << ", " << column;
}

TEST(ActiveCameraPlan, TimingSeed_SynchronizedAxes_ShareTheFirst)
{
    for (std::size_t axis = 0; axis < kAxes; ++axis) {
        EXPECT_EQ(TimingSeed(axis, false), 444 + 111 * axis);
        EXPECT_EQ(TimingSeed(axis, true), 444u);
        EXPECT_EQ(kValueSeeds[axis], 111 * (axis + 1));
    }
}

TEST(ActiveCameraPlan, AmountsOf_AreHorizontalVerticalRotation)
{
    const Knobs knobs = {.horizontal = 0.1f, .vertical = 0.2f, .rotation = 0.3f, .crop = 0.4f};
    EXPECT_EQ(AmountsOf(knobs), (Axes{0.1f, 0.2f, 0.3f}));
}

TEST(ActiveCameraPlan, EarlierTime_ReachesAQuarterBack)
{
    EXPECT_EQ(EarlierTime(10.0, 1.0f), 9.75);
    EXPECT_EQ(EarlierTime(10.0, 0.5f), 9.875);
    EXPECT_EQ(EarlierTime(0.0, 1.0f), -0.25);
}

TEST(ActiveCameraPlan, EarlierWeight_IsCutTowardZero)
{
    EXPECT_EQ(EarlierWeight(1.0f), 128);
    EXPECT_EQ(EarlierWeight(0.5f), 64);
    EXPECT_EQ(EarlierWeight(0.4f), 51); // 51.2
    EXPECT_EQ(EarlierWeight(0.007f), 0);
    EXPECT_EQ(EarlierWeight(0.008f), 1); // 1.024
    EXPECT_EQ(EarlierWeight(kInfinity), std::numeric_limits<int>::max());
}

TEST(ActiveCameraPlan, CameraTransform_AllAtZero_IsTheIdentity)
{
    const Transform2D transform = CameraTransform({}, {321, 243}, 1.0, {});
    ExpectMatrix(transform, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0.0);
}

TEST(ActiveCameraPlan, CameraTransform_CropAlone_ZoomsAboutTheMiddle)
{
    // 1.67 at full crop; the middle of 5 by 3 pixels is at 2.5 and 1.5, and 2.5 * (1 - 1.67) = -1.675.
    ExpectMatrix(CameraTransform({.crop = 1.0f}, {5, 3}, 1.0, {}),
                 {{1.67, 0, 0}, {0, 1.67, 0}, {-1.675, -1.005, 1}}, 1e-6);
    // 1.201 at 0.3; 320 * -0.201 and 180 * -0.201.
    ExpectMatrix(CameraTransform({.crop = 0.3f}, {640, 360}, 1.0, {}),
                 {{1.201, 0, 0}, {0, 1.201, 0}, {-64.32, -36.18, 1}}, 1e-4);
}

TEST(ActiveCameraPlan, CameraTransform_Curves_ShiftByAQuarterOfTheSize)
{
    const Knobs knobs = {.horizontal = 0.5f, .vertical = 1.0f};
    ExpectMatrix(CameraTransform(knobs, {100, 40}, 1.0, {1.0f, -1.0f, 0.0f}),
                 {{1, 0, 0}, {0, 1, 0}, {12.5, -10, 1}}, 0.0);
    // The shift comes after the zoom: it is not enlarged. 50 * -0.67 + 12.5 and 20 * -0.67 - 5.
    ExpectMatrix(CameraTransform({.horizontal = 0.5f, .vertical = 1.0f, .crop = 1.0f}, {100, 40}, 1.0,
                                 {1.0f, -0.5f, 0.0f}),
                 {{1.67, 0, 0}, {0, 1.67, 0}, {-21, -18.4, 1}}, 1e-5);
}

TEST(ActiveCameraPlan, CameraTransform_Rotation_TurnsByAQuarterRadianAboutTheMiddle)
{
    const double c = std::cos(0.25), s = std::sin(0.25);
    ExpectMatrix(CameraTransform({.rotation = 1.0f}, {2, 2}, 1.0, {0.0f, 0.0f, 1.0f}),
                 {{c, s, 0}, {-s, c, 0}, {1 - c + s, 1 - s - c, 1}}, 1e-6);
    ExpectMatrix(CameraTransform({.rotation = 0.5f}, {2, 2}, 1.0, {0.0f, 0.0f, -2.0f}),
                 {{c, -s, 0}, {s, c, 0}, {1 - c - s, 1 + s - c, 1}}, 1e-6);
}

TEST(ActiveCameraPlan, CameraTransform_Rotation_TakesPlaceOnTheScreen)
{
    // Of a field's rows, each counted twice: stretched by 2, turned, and back.
    const double c = std::cos(0.25), s = std::sin(0.25);
    ExpectMatrix(CameraTransform({.rotation = 1.0f}, {2, 2}, 2.0, {0.0f, 0.0f, 1.0f}),
                 {{c, s / 2, 0}, {-2 * s, c, 0}, {1 - c + 2 * s, 1 - s / 2 - c, 1}}, 1e-6);
}

TEST(ActiveCameraPlan, CameraTransform_AxesAtZero_IgnoreTheirCurves)
{
    ExpectMatrix(CameraTransform({}, {100, 40}, 2.0, {1.0f, 1.0f, 1.0f}), {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                 0.0);
}

TEST(ActiveCameraPlan, CameraTransform_WildKnobs_GiveSomeMatrix)
{
    for (const float wild : {kInfinity, -kInfinity, kNaN, 1e38f}) {
        const Knobs knobs = {.horizontal = wild, .vertical = wild, .rotation = wild, .crop = wild};
        const Transform2D transform = CameraTransform(knobs, {100, 40}, 1e-300, {wild, wild, wild});
        EXPECT_FALSE(std::isfinite(transform.Get(2, 0))) << wild;
    }
}

} // namespace
} // namespace kelmora::active_camera
