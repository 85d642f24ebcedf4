#include "tests/golden/golden_cases.h"

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/golden/golden_render.h"

namespace kelmora {
namespace {

constexpr CpuVariant kVariants[] = {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512};

void CompareWithManifest(const std::string& effect, const std::string& manifestName, bool floats)
{
    const CpuVariant before = CurrentVariant();
    for (const CpuVariant variant : kVariants) {
        if (!UseVariant(variant))
            continue;
        SCOPED_TRACE("CPU variant " + std::to_string(static_cast<int>(variant)));
        GoldenManifest manifest(manifestName);
        const std::vector<GoldenCase> cases = GoldenCases(effect, floats);
        EXPECT_FALSE(cases.empty());
        for (const GoldenCase& one : cases)
            EXPECT_TRUE(manifest.Matches(one.Picture(), FormatName(one.format), one.preset, one.moment,
                                         RenderCase(effect, one).Frame()));
        EXPECT_TRUE(manifest.AllUsed());
    }
    UseVariant(before);
}

TEST(Golden, AirBrush_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("air_brush", "air_brush", false);
}

TEST(Golden, AirBrush_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("air_brush", "air_brush_float", true);
}

TEST(Golden, DetailEnhancer_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("detail_enhancer", "detail_enhancer", false);
}

TEST(Golden, DetailEnhancer_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("detail_enhancer", "detail_enhancer_float", true);
}

TEST(Golden, WaterColor_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("water_color", "water_color", false);
}

TEST(Golden, WaterColor_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("water_color", "water_color_float", true);
}

TEST(Golden, ColorMelt_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("color_melt", "color_melt", false);
}

TEST(Golden, ColorMelt_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("color_melt", "color_melt_float", true);
}

TEST(Golden, PaperCollage_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("paper_collage", "paper_collage", false);
}

TEST(Golden, PaperCollage_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("paper_collage", "paper_collage_float", true);
}

TEST(Golden, Smear_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("smear", "smear", false);
}

TEST(Golden, Smear_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("smear", "smear_float", true);
}

TEST(Golden, ActiveCamera_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("active_camera", "active_camera", false);
}

TEST(Golden, ActiveCamera_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("active_camera", "active_camera_float", true);
}

TEST(Golden, CropBorders_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("crop_borders", "crop_borders", false);
}

TEST(Golden, CropBorders_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("crop_borders", "crop_borders_float", true);
}

TEST(Golden, Pixelator_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("pixelator", "pixelator", false);
}

TEST(Golden, Pixelator_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("pixelator", "pixelator_float", true);
}

TEST(Golden, Confetti_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("confetti", "confetti", false);
}

TEST(Golden, Confetti_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("confetti", "confetti_float", true);
}

TEST(Golden, PizzaBoxes_BytePicturesOfAllPresets_AreThePlainVersions)
{
    CompareWithManifest("pizza_boxes", "pizza_boxes", false);
}

TEST(Golden, PizzaBoxes_FloatPicturesOfAllPresets_AreTheSameInEveryBuild)
{
    CompareWithManifest("pizza_boxes", "pizza_boxes_float", true);
}

} // namespace
} // namespace kelmora
