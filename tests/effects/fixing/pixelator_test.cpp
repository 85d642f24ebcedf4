#include <algorithm>
#include <limits>
#include <random>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "contract/param_tool_tip.h"
#include "tests/effects/pictures_as_plain.h"
#include "tests/golden/effect_presets.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::FacePixelator;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Center across and upward, Width, Height, Block Size.
using Numbers = std::vector<float>;

const Numbers kMax = ValuesOf(kPixelatorPresets[1], 5), kMin = ValuesOf(kPixelatorPresets[2], 5),
              kReset = ValuesOf(kPixelatorPresets[3], 5);

Numbers RandomLevels(std::mt19937& random)
{
    const auto level = [&] {
        const auto pick = random() % 6;
        return pick == 0 ? 0.0f : pick == 1 ? 1.0f : static_cast<float>(random() % 1001) / 1000.0f;
    };
    return {level(), level(), level(), level(), level()};
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed,
                     Noise noise = Noise::Uniform)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed, noise);
    return picture;
}

GuardedPicture Pixelated(const Numbers& levels, const GuardedPicture& in, bool halfHeight = false)
{
    GuardedPicture out = Noisy(in.Width(), in.Height(), in.Format(), 99);
    RenderFresh(kEffect, levels, in, out, halfHeight);
    return out;
}

int Green(const GuardedPicture& picture, int x, int y)
{
    return picture.Byte(x, y, PlaceOfColour(picture.Format(), 1));
}

/// The mean of a block's greens, toward zero.
int MeanGreen(const GuardedPicture& picture, int left, int top, int width, int height)
{
    int sum = 0;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x)
            sum += Green(picture, x, y);
    return sum / (width * height);
}

/// For EXPECT_TRUE: one green over the whole block, that of the picture's own block.
testing::AssertionResult IsBlock(const GuardedPicture& out, const GuardedPicture& in, int left, int top,
                                 int width, int height)
{
    const int mean = MeanGreen(in, left, top, width, height);
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x)
            if (Green(out, x, y) != mean)
                return testing::AssertionFailure()
                    << Green(out, x, y) << " at " << x << ", " << y << ", expected " << mean;
    return testing::AssertionSuccess();
}

/// A picture whose blocks of two are all one grey, so that every changed pixel shows the mask.
GuardedPicture Checkered(std::int32_t width, std::int32_t height, const PictureLayout& layout = {})
{
    return MakePicture(Motif::Checkerboard, width, height, PF_BGRA8, layout);
}

/// What a render of a checkerboard changed, in rows and columns of the record.
struct Box {
    int left = std::numeric_limits<int>::max(), top = left, right = -1, bottom = -1;
};

Box ChangedBox(const GuardedPicture& out, const GuardedPicture& in)
{
    Box box;
    for (int y = 0; y < in.Height(); ++y)
        for (int x = 0; x < in.Width(); ++x)
            if (Green(out, x, y) != Green(in, x, y)) {
                box.left = std::min(box.left, x);
                box.top = std::min(box.top, y);
                box.right = std::max(box.right, x);
                box.bottom = std::max(box.bottom, y);
            }
    return box;
}

// --- the face -----------------------------------------------------------------------------------------

TEST(Pixelator, GetParamInfo_HasAPointAndThreeLevels)
{
    const HeldEffect effect = NewEffect(kEffect);
    EXPECT_STREQ(effect->GetName(), "Pixelator");
    EXPECT_EQ(effect->GetHelpId(), 961u);
    ParamInfo center = {};
    ASSERT_TRUE(effect->GetParamInfo(0, &center));
    EXPECT_STREQ(center.name, "Center");
    EXPECT_EQ(center.kind, ParamPoint);
    EXPECT_EQ(center.value, FloatWord(0.511628f));
    EXPECT_EQ(center.valueY, FloatWord(0.465116f));
    EXPECT_EQ(center.rect, (ParamRect{0, 0, 198, 30}));
    EXPECT_EQ(center.shown, 1);
    constexpr const char* names[] = {"Width", "Height", "Block Size"};
    constexpr float initial[] = {0.41f, 0.615f, 0.505f};
    for (std::uint32_t i = 0; i < 3; ++i) {
        ParamInfo info = {};
        info.scale.hostFlag = 77;
        ASSERT_TRUE(effect->GetParamInfo(i + 1, &info));
        EXPECT_STREQ(info.name, names[i]);
        EXPECT_EQ(info.kind, ParamFloat);
        EXPECT_EQ(info.value, FloatWord(initial[i]));
        EXPECT_EQ(info.scale.min, 0.0f);
        EXPECT_EQ(info.scale.max, 100.0f);
        EXPECT_EQ(info.scale.hostFlag, i == 0 ? 1u : 0u);
        EXPECT_EQ(info.rect, (ParamRect{static_cast<std::int32_t>(66 * i), 90, 198, 30}));
    }
    ParamInfo beyond = {};
    EXPECT_FALSE(effect->GetParamInfo(4, &beyond));
}

TEST(Pixelator, GetPresetValue_HasFivePresetsOfAPointAndThreeLevels)
{
    const HeldEffect effect = NewEffect(kEffect);
    std::uint32_t preset = 0;
    for (const PresetRow& row : kPixelatorPresets) {
        EXPECT_STREQ(effect->GetPresetName(preset), row.name);
        ParamValue value = {};
        ASSERT_TRUE(effect->GetPresetValue(preset, 0, &value));
        EXPECT_EQ(value.value, FloatWord(row.values[0])) << row.name;
        EXPECT_EQ(value.valueY, FloatWord(row.values[1])) << row.name;
        for (std::uint32_t knob = 1; knob < 4; ++knob) {
            ASSERT_TRUE(effect->GetPresetValue(preset, knob, &value));
            EXPECT_EQ(value.value, FloatWord(row.values[knob + 1])) << row.name << ", " << knob;
        }
        EXPECT_FALSE(effect->GetPresetValue(preset, 4, &value));
        ++preset;
    }
    EXPECT_EQ(preset, 5u);
    EXPECT_EQ(effect->GetPresetName(preset), nullptr);
}

TEST(Pixelator, GetToolTip_HasATextForEachKnobAndNoMore)
{
    const HeldEffect effect = NewEffect(kEffect);
    void *asked = nullptr, *back = nullptr;
    ASSERT_EQ(effect->QueryInterface(&IParamToolTip::id, &asked), S_OK);
    auto* const tips = static_cast<IParamToolTip*>(asked);
    constexpr std::string_view texts[] = {"Face center", "Width of pixelated region",
                                          "Height of pixelated region", "Pixelated block size"};
    for (std::uint32_t knob = 0; knob < 4; ++knob)
        EXPECT_EQ(tips->GetToolTip(knob), texts[knob]);
    for (const std::uint32_t beyond : {4u, 5u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(tips->GetToolTip(beyond), nullptr);
    ASSERT_EQ(tips->QueryInterface(&IVideoEffect::id, &back), S_OK);
    EXPECT_EQ(static_cast<IVideoEffect*>(back), effect.get());
    EXPECT_EQ(effect->Release(), 2u);
    EXPECT_EQ(tips->Release(), 1u);
}

TEST(Pixelator, Render_AsksForItsKnobsInTheirOrder)
{
    FakeHost host(Levels(kEffect, {0.5f, 0.4f, 0.3f, 0.6f, 0.5f}));
    const GuardedPicture in = MakePicture(Motif::Ramp, 19, 17, PF_BGRA8);
    GuardedPicture out(19, 17, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    EXPECT_EQ(host.Reads(),
              (std::vector<KnobRead>{{0, ParamPoint}, {1, ParamFloat}, {2, ParamFloat}, {3, ParamFloat}}));
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(Pixelator, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 16; ++height)
            for (int width = 1; width <= 9; ++width)
                CompareCase(kEffect, format, width, height, width, height, RandomLevels(random),
                            random() % 2 != 0, random);
}

TEST(Pixelator, Render_RandomSizesAndKnobs_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 120; ++i) {
            const TransitionSizes sizes = RandomSizes(random, 60, 60);
            CompareCase(kEffect, format, sizes.width, sizes.height, sizes.outWidth, sizes.outHeight,
                        RandomLevels(random), random() % 2 != 0, random);
        }
}

TEST(Pixelator, Render_AllPresets_AreThePlainVersions)
{
    std::mt19937 random(3);
    for (const std::uint32_t format : kPictureFormats)
        for (const PresetRow& preset : kPixelatorPresets)
            for (const bool halfHeight : {false, true})
                for (const auto& [width, height] : {std::pair{64, 48}, {61, 47}, {33, 120}})
                    CompareCase(kEffect, format, width, height, width, height, ValuesOf(preset, 5),
                                halfHeight, random);
}

// 14 % of 720 rows is more than the hundred pixels that a blur has at most.
TEST(Pixelator, Render_SoftEdgesBeyondAHundredPixels_AreThePlainVersions)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F})
        CompareCase(kEffect, format, 200, 760, 200, 760, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, false, random);
}

// --- what is seen ---------------------------------------------------------------------------------------------

// 240 rows: a soft edge of 33 pixels. Of the one point that a radius of 0 leaves, 17 / 289 remain in each
// direction, a level of 255 at most; its blocks are of 2 by 2 pixels.
TEST(Pixelator, Render_ResetToNone_LeavesASoftDotAtTheCentreAlone)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture in = Noisy(320, 240, format, 1), out = Pixelated(kReset, in);
        // 320 * 0.51139544 = 163.6, 240 * 0.53418632 = 128.2
        EXPECT_TRUE(Near(out, in, 2.0));
        for (int y = 0; y < 240; ++y)
            for (int x = 0; x < 320; ++x)
                if (std::abs(x - 163) > 17 || std::abs(y - 128) > 17) {
                    ASSERT_EQ(Green(out, x, y), Green(in, x, y)) << x << ", " << y;
                }
    }
}

// Blocks of 72; the ellipse, 467 by 311 pixels around (351, 256), leaves the upper corners alone.
TEST(Pixelator, Render_MaxOn480Rows_HasBlocksOf72NearlyEverywhere)
{
    const GuardedPicture in = Noisy(720, 480, PF_BGRA8, 1), out = Pixelated(kMax, in);
    for (int top = 72; top + 72 <= 432; top += 72)
        for (int left = 144; left + 72 <= 576; left += 72)
            EXPECT_TRUE(IsBlock(out, in, left, top, 72, 72)) << left << ", " << top;
    for (const auto& [x, y] : {std::pair{719, 0}, {0, 0}})
        EXPECT_EQ(Green(out, x, y), Green(in, x, y)) << x << ", " << y;
    int changed = 0;
    for (int y = 0; y < 480; ++y)
        for (int x = 0; x < 720; ++x)
            changed += Green(out, x, y) != Green(in, x, y);
    EXPECT_GT(changed, 720 * 480 * 9 / 10);
}

TEST(Pixelator, Render_Min_HasBlocksOfTwo)
{
    const GuardedPicture in = Noisy(180, 120, PF_ARGB8, 1), out = Pixelated(kMin, in);
    for (int top = 40; top < 80; top += 2)
        for (int left = 60; left < 120; left += 2)
            EXPECT_TRUE(IsBlock(out, in, left, top, 2, 2)) << left << ", " << top;
}

// 240 rows of a field: 240 * 2 * 0.3 * 0.5 = 72 pixels wide, 36 high.
TEST(Pixelator, Render_AField_HasBlocksThatAreSquareOnTheFrame)
{
    const GuardedPicture in = Noisy(720, 240, PF_BGRA8, 1), out = Pixelated(kMax, in, true);
    for (int top = 72; top + 36 <= 180; top += 36)
        for (int left = 288; left + 72 <= 432; left += 72)
            EXPECT_TRUE(IsBlock(out, in, left, top, 72, 36)) << left << ", " << top;
}

// A hundredth of 300 columns, less the rounding of 0.01, is column 2, and 300 * 0.99 is 297. Wide open, the mask
// around it reaches 10 pixels and half of the soft edge of 14 on.
TEST(Pixelator, Render_CentresAtTheEnds_LandAHundredthInside)
{
    const GuardedPicture in = Checkered(300, 100);
    const Box low = ChangedBox(Pixelated({0, 0.5f, 0.05f, 0.3f, 0}, in), in);
    EXPECT_EQ(low.left, 0);
    EXPECT_NEAR(low.right, 2 + 9 + 7, 2);
    const Box high = ChangedBox(Pixelated({1, 0.5f, 0.05f, 0.3f, 0}, in), in);
    EXPECT_EQ(high.right, 299);
    EXPECT_NEAR(high.left, 297 - 9 - 7, 2);
    EXPECT_NEAR(low.right + high.left, 299, 2);
}

TEST(Pixelator, Render_RowsUpAndDownward_ShowTheEllipseAtTheSamePlace)
{
    const GuardedPicture down = Checkered(200, 200), up = Checkered(200, 200, {.bottomUp = true});
    for (const float y : {0.3f, 0.4f, 0.65f}) {
        const Numbers levels = {0.3f, y, 0.2f, 0.2f, 0};
        const Box topDown = ChangedBox(Pixelated(levels, down), down);
        GuardedPicture out(200, 200, PF_BGRA8, {.bottomUp = true});
        RenderFresh(kEffect, levels, up, out);
        const Box bottomUp = ChangedBox(out, up);
        EXPECT_EQ(topDown.left, bottomUp.left);
        EXPECT_EQ(topDown.right, bottomUp.right);
        // The record's last row is the screen's first. Both ways the centre is cut to a whole row.
        EXPECT_NEAR(topDown.top, 199 - bottomUp.bottom, 2);
        EXPECT_NEAR(topDown.bottom, 199 - bottomUp.top, 2);
        EXPECT_NEAR(topDown.top + topDown.bottom, 2 * (1 - (y * 0.98f + 0.01f)) * 200, 4);
    }
}

TEST(Pixelator, Render_AnyKnobs_KeepThePicturesAlpha)
{
    std::mt19937 random(5);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 10; ++i) {
            const GuardedPicture in = Noisy(50, 44, format, static_cast<std::uint32_t>(i));
            const GuardedPicture out = Pixelated(RandomLevels(random), in, i % 2 != 0);
            const int alpha = PlaceOfColour(format, 3);
            for (int y = 0; y < 44; ++y)
                for (int x = 0; x < 50; ++x) {
                    const bool kept = IsFloatFormat(format) ? out.Float(x, y, alpha) == in.Float(x, y, alpha)
                                                            : out.Byte(x, y, alpha) == in.Byte(x, y, alpha);
                    ASSERT_TRUE(kept) << x << ", " << y;
                }
        }
}

// 100 under a mask of 64: alpha-first bytes are (64 * 100 + 191 * 100) / 255 = 100, alpha-last ones 25 + 74 = 99.
TEST(Pixelator, Kept_FlatGrey_LosesALevelWithAlphaLast)
{
    GuardedPicture last(80, 60, PF_BGRA8), first(80, 60, PF_ARGB8);
    last.Fill(100, 100, 100, 255);
    first.Fill(100, 100, 100, 255);
    const GuardedPicture lastOut = Pixelated({0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, last);
    EXPECT_TRUE(Equal(Pixelated({0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, first), first));
    EXPECT_TRUE(Near(lastOut, last, 1.0));
    EXPECT_FALSE(Equal(lastOut, last));
    std::mt19937 random(6);
    for (int i = 0; i < 20; ++i) {
        const Numbers levels = RandomLevels(random);
        const GuardedPicture in = Noisy(50, 44, PF_BGRA8, static_cast<std::uint32_t>(i));
        EXPECT_TRUE(Near(WithChannelsReversed(Pixelated(levels, WithChannelsReversed(in))),
                         Pixelated(levels, in), 1.0));
    }
}

// --- memory and what no host should say -------------------------------------------------------------------------

TEST(Pixelator, Render_RefusedAllocations_SucceedWithWhatThereIsMemoryFor)
{
    const Numbers levels = {0.5f, 0.5f, 0.6f, 0.6f, 0.7f};
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F}) {
        const GuardedPicture in = Noisy(40, 36, format, 1), whole = Pixelated(levels, in);
        bool wasPicture = false, wasOther = false;
        for (std::uint64_t n = 0;; ++n) {
            ASSERT_LT(n, 100u);
            MemoryHabits habits;
            habits.refuseOnly = n;
            FakeMemoryProvider memory(habits);
            FakeHost host(Levels(kEffect, levels));
            host.SetMemory(&memory);
            GuardedPicture out = Noisy(50, 40, format, 2);
            const GuardedPicture before = out;
            EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
            EXPECT_EQ(memory.OpenBlocks(), 0u);
            EXPECT_TRUE(SameOutside(out, before, 40, 36));
            GuardedPicture part(40, 36, format);
            for (int y = 0; y < 36; ++y)
                std::copy_n(out.Row(y), 40 * in.PixelBytes(), part.Row(y));
            if (memory.Refused() == 0) {
                EXPECT_TRUE(Equal(part, whole));
                break;
            }
            const bool isPicture = static_cast<bool>(Equal(part, in));
            (isPicture ? wasPicture : wasOther) = true;
        }
        EXPECT_TRUE(wasPicture && wasOther);
    }
}

TEST(Pixelator, Render_HostileKnobs_StayInsideTheMemory)
{
    constexpr float hostile[] = {kNaN,  kInfinity, -kInfinity, 1e30f, -1e30f,
                                 -1.0f, 1e-40f,    3.0f,       9.99f, 1e9f};
    std::mt19937 random(7);
    for (const std::uint32_t format : kPictureFormats)
        for (std::size_t knob = 0; knob < 5; ++knob)
            for (const float value : hostile)
                for (const auto& [width, height] : {std::pair{17, 13}, {40, 31}, {3, 3}, {1, 1}})
                    for (const bool halfHeight : {false, true}) {
                        Numbers levels = RandomLevels(random);
                        levels[knob] = value;
                        CompareCase(kEffect, format, width, height, width, height, levels, halfHeight,
                                    random);
                        const GuardedPicture in = Noisy(width, height, format, 1, Noise::Special);
                        GuardedPicture out = Noisy(width, height, format, 2);
                        FakeHost host(Levels(kEffect, levels));
                        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out, halfHeight));
                        out.Check();
                    }
}

// A mask that is full everywhere shows every block; none of them is what the memory held before.
TEST(Pixelator, Render_EllipsesBeyondThePicture_ShowBlocksEverywhere)
{
    for (const std::uint32_t fill : {0x7FA5A5A5u, 0xFFFFFFFFu}) {
        MemoryHabits habits;
        habits.fill = fill;
        FakeMemoryProvider memory(habits);
        FakeHost host(Levels(kEffect, {0.5f, 0.5f, 2.5f, 2.5f, 0.0f}));
        host.SetMemory(&memory);
        const GuardedPicture in = Checkered(40, 30);
        GuardedPicture out(40, 30, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                ASSERT_EQ(Green(out, x, y), 127); // (0 + 255 + 255 + 0) / 4
    }
}

TEST(Pixelator, Render_ProgressTimeAndTheSecondPicture_PlayNoPart)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 50, PF_BGRA8);
    const GuardedPicture other = MakePicture(Motif::ZonePlate, 13, 90, PF_ARGB32F);
    const Numbers levels = {0.5f, 0.6f, 0.5f, 0.4f, 0.5f};
    const GuardedPicture expected = Pixelated(levels, in);
    for (const GuardedPicture* second : {&other, static_cast<const GuardedPicture*>(nullptr)}) {
        Moment moment;
        moment.second = second;
        moment.progress = std::numeric_limits<double>::quiet_NaN();
        moment.time = 1e300;
        moment.pixelAspect = 3.0;
        GuardedPicture out(40, 50, PF_BGRA8);
        RenderFresh(kEffect, levels, moment, in, out);
        EXPECT_TRUE(Equal(out, expected));
    }
}

TEST(Pixelator, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    FakeHost host(Levels(kEffect, kMax));
    const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
    GuardedPicture out = Noisy(20, 30, PF_BGRA8, 4);
    const GuardedPicture before = out;
    VideoFrame first = in.Frame(), output = out.Frame();
    EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &first, nullptr, &output, nullptr));
    EXPECT_TRUE(Equal(out, before));
}

} // namespace
} // namespace kelmora
