#include "effects/scene3d/light.h"

#include <limits>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Vector3 kAnywhere = {7.0, 8.0, 9.0};
constexpr Vector3 kToViewer = {0.0, 0.0, 1.0};
constexpr Vector3 kAway = {0.0, 0.0, -1.0};
constexpr Vector3 kSlanted = {0.0, 0.8, 0.6};

TEST(Light3D, TheBase_LightsAllInFull)
{
    EXPECT_EQ(Light3D().Intensity(kAway, kAnywhere, false), 1.0);
    EXPECT_EQ(Light3D().Intensity({}, {}, true), 1.0);
}

TEST(LinearLight, WithoutAmbient_IsTheCosine)
{
    const LinearLight light;
    EXPECT_EQ(light.Intensity(kToViewer, kAnywhere, false), 1.0);
    EXPECT_EQ(light.Intensity(kSlanted, kAnywhere, false), 0.6);
    EXPECT_EQ(light.Intensity({1.0, 0.0, 0.0}, kAnywhere, false), 0.0);
    EXPECT_EQ(light.Intensity({0.0, -1.0, 0.0}, kAnywhere, true), 0.0);
}

TEST(LinearLight, AFaceTurnedAway_IsDarkUnlessTwoSided)
{
    const LinearLight light;
    EXPECT_EQ(light.Intensity(kAway, kAnywhere, false), 0.0);
    EXPECT_EQ(light.Intensity(kAway, kAnywhere, true), 1.0);
    EXPECT_EQ(light.Intensity(Scale(kSlanted, -1.0), kAnywhere, true), 0.6);
}

TEST(LinearLight, Ambient_IsWhatTheLightMissesGets)
{
    LinearLight light;
    light.SetAmbient(0.5);
    EXPECT_EQ(light.Intensity(kAway, kAnywhere, false), 0.5);
    EXPECT_EQ(light.Intensity(kSlanted, kAnywhere, false), 0.8);
    EXPECT_EQ(light.Intensity(kToViewer, kAnywhere, false), 1.0);
}

TEST(LinearLight, AmbientOfOne_LightsEveryNormalInFull)
{
    LinearLight light;
    light.SetAmbient(1.0);
    for (const Vector3& normal : {kToViewer, kAway, kSlanted, Vector3{}})
        EXPECT_EQ(light.Intensity(normal, kAnywhere, false), 1.0);
}

TEST(LinearLight, NormalsThatAreNone_StayWithinTheScale)
{
    LinearLight light;
    EXPECT_EQ(light.Intensity({0.0, 0.0, 3.0}, kAnywhere, false), 1.0);
    EXPECT_EQ(light.Intensity({0.0, 0.0, kNaN}, kAnywhere, true), 0.0);
}

TEST(LinearLight, SetAmbient_OutsideZeroToOne_ChangesNothing)
{
    LinearLight light;
    EXPECT_EQ(light.GetAmbient(), 0.0);
    light.SetAmbient(0.25);
    for (const double ambient : {1.5, -0.1, kNaN}) {
        light.SetAmbient(ambient);
        EXPECT_EQ(light.GetAmbient(), 0.25) << ambient;
    }
    light.SetAmbient(0.0);
    EXPECT_EQ(light.GetAmbient(), 0.0);
}

} // namespace
} // namespace kelmora
