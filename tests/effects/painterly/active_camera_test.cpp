#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "image/primitives/cpu_variant.h"
#include "tests/effects/pictures_as_plain.h"
#include "tests/golden/effect_presets.h"
#include "tests/reference/active_camera.h"

namespace kelmora {
namespace {

constexpr EffectClass kEffect = EffectClass::Activecamera;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kTimes[] = {0.0, 0.04, 0.3, 1.0, 1.96, 2.7, 4.7, 9.99, 17.25, 61.9, 130.0};

/// Horizontal, Vertical, Rotation, Crop, Rate, Jitter, Hold, Blur, Synchronize Axes.
struct Camera {
    float horizontal = 0, vertical = 0, rotation = 0, crop = 0, rate = 0, jitter = 0, hold = 0, blur = 0;
    bool synchronize = false;

    std::vector<float> Levels() const
    {
        return {horizontal, vertical, rotation, crop, rate, jitter, hold, blur, synchronize ? 1.0f : 0.0f};
    }
};

std::vector<float> RandomLevels(std::mt19937& random)
{
    const auto level = [&] {
        const auto pick = random() % 8;
        return pick == 0 ? 0.0f : pick == 1 ? 1.0f : static_cast<float>(random() % 1001) / 1000.0f;
    };
    Camera camera = {level(), level(), level(), level(),          level(),
                     level(), level(), level(), random() % 2 != 0};
    return camera.Levels();
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

/// Clear black with one opaque white pixel.
GuardedPicture Dot(std::int32_t width, std::int32_t height, std::uint32_t format, int x, int y)
{
    GuardedPicture picture(width, height, format);
    picture.SetColour(x, y, 255, 255, 255, 255);
    return picture;
}

GuardedPicture Seen(const std::vector<float>& levels, const GuardedPicture& in, const Moment& moment)
{
    GuardedPicture out = Noisy(in.Width(), in.Height(), in.Format(), 99);
    RenderFresh(kEffect, levels, moment, in, out);
    return out;
}

GuardedPicture Seen(const std::vector<float>& levels, const GuardedPicture& in, double time)
{
    Moment moment;
    moment.time = time;
    return Seen(levels, in, moment);
}

/// Renders one case at a moment and compares it with the plain version.
void CompareMoment(EffectClass which, std::uint32_t format, const TransitionSizes& sizes,
                   const std::vector<float>& levels, const Moment& moment, std::mt19937& random)
{
    std::ostringstream text;
    text << FormatName(format) << ", " << sizes.width << " x " << sizes.height << " in " << sizes.outWidth
         << " x " << sizes.outHeight << " at " << moment.time << (moment.halfHeight ? ", field" : "");
    if (moment.pixelAspect)
        text << ", aspect " << *moment.pixelAspect;
    text << ", knobs";
    for (const float level : levels)
        text << " " << level;
    SCOPED_TRACE(text.str());

    PictureLayout inLayout = RandomLayout(random, format), outLayout = RandomLayout(random, format);
    inLayout.upward = outLayout.upward = random() % 4 == 0;
    GuardedPicture in(sizes.width, sizes.height, format, inLayout);
    GuardedPicture out(sizes.outWidth, sizes.outHeight, format, outLayout);
    FillAnyhow(in, random);
    out.FillNoise(static_cast<std::uint32_t>(random()));
    const GuardedPicture before = out;
    in.Freeze();
    RenderFresh(which, levels, moment, in, out);
    in.Check();
    out.Check();
    EXPECT_TRUE(AsPlain(which, levels, moment, in, before, out));
    if (!outLayout.upward) {
        EXPECT_TRUE(SameOutside(out, before, std::min(sizes.width, sizes.outWidth),
                                std::min(sizes.height, sizes.outHeight)));
    }
}

Moment RandomMoment(std::mt19937& random)
{
    Moment moment;
    moment.time = kTimes[random() % std::size(kTimes)];
    moment.halfHeight = random() % 2 != 0;
    if (random() % 2 != 0)
        moment.pixelAspect = 0.5 + static_cast<double>(random() % 20) / 10.0;
    return moment;
}

// --- knobs --------------------------------------------------------------------------------------------

TEST(ActiveCamera, Render_AsksForItsKnobsInTheirOrder)
{
    FakeHost host(Levels(kEffect, Camera{.crop = 0.5f, .blur = 0.5f}.Levels()));
    const GuardedPicture in = MakePicture(Motif::Ramp, 9, 7, PF_BGRA8);
    GuardedPicture out(9, 7, PF_BGRA8);
    EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
    std::vector<KnobRead> reads;
    for (std::uint32_t knob = 0; knob < 8; ++knob)
        reads.push_back({knob, ParamFloat});
    reads.push_back({8, ParamCheck});
    EXPECT_EQ(host.Reads(), reads);
    EXPECT_TRUE(host.OtherCalls().empty());
    EXPECT_EQ(host.Queries(), std::vector<InterfaceId>{IMemoryProvider::id});
}

TEST(ActiveCamera, Render_TheLowByteAloneChecksTheBox)
{
    const std::vector<float> moving = Camera{.horizontal = 1, .vertical = 1, .rate = 0.8f}.Levels();
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 30, PF_BGRA8);
    const auto seen = [&](std::uint32_t word) {
        std::vector<ParamValue> knobs = Levels(kEffect, moving);
        knobs[8].value = word;
        FakeHost host(knobs);
        GuardedPicture out(40, 30, PF_BGRA8);
        Moment moment;
        moment.time = 6.5;
        EXPECT_TRUE(Render(*NewEffect(kEffect), host, moment, in, out));
        return out;
    };
    const GuardedPicture off = seen(0), on = seen(1);
    EXPECT_FALSE(Equal(off, on));
    EXPECT_TRUE(Equal(seen(0xFFFFFF00), off));
    EXPECT_TRUE(Equal(seen(0xAB000080), on));
}

// Its host has six knobs; Rotation and Hold are 0 and the axes move together.
TEST(ActiveCamera, RenderOfTheWrapper_IsTheInnerEffectWithItsFixedKnobs)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 30, PF_BGRA8);
    for (const PresetRow& preset : kWrapActiveCameraPresets)
        for (const double time : {0.0, 3.3, 20.1}) {
            Moment moment;
            moment.time = time;
            FakeHost host(Levels(EffectClass::WrapActiveCamera, ValuesOf(preset, 6)));
            GuardedPicture out(40, 30, PF_BGRA8), expected(40, 30, PF_BGRA8);
            EXPECT_TRUE(Render(*NewEffect(EffectClass::WrapActiveCamera), host, moment, in, out));
            EXPECT_EQ(host.Reads(),
                      (std::vector<KnobRead>{{0, ParamFloat},
                                             {1, ParamFloat},
                                             {2, ParamFloat},
                                             {3, ParamFloat},
                                             {4, ParamFloat},
                                             {5, ParamFloat}}));
            const float* const v = preset.values;
            RenderFresh(kEffect, {v[0], v[1], 0.0f, v[2], v[3], v[4], 0.0f, v[5], 1.0f}, moment, in,
                        expected);
            EXPECT_TRUE(Equal(out, expected)) << preset.name << " at " << time;
        }
}

// --- whole pictures against the plain version -----------------------------------------------------------

TEST(ActiveCamera, Render_AllSmallSizes_AreThePlainVersions)
{
    std::mt19937 random(1);
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 7; ++height)
            for (int width = 1; width <= 7; ++width)
                CompareMoment(kEffect, format, {width, height, width, height, width, height},
                              RandomLevels(random), RandomMoment(random), random);
}

TEST(ActiveCamera, Render_RandomSizesKnobsAndTimes_AreThePlainVersions)
{
    std::mt19937 random(2);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 80; ++i)
            CompareMoment(kEffect, format, RandomSizes(random, 40, 40), RandomLevels(random),
                          RandomMoment(random), random);
}

TEST(ActiveCamera, Render_AllPresetsAtManyTimes_AreThePlainVersions)
{
    std::mt19937 random(3);
    for (const std::uint32_t format : kPictureFormats)
        for (const PresetRow& preset : kActiveCameraPresets)
            for (const double time : kTimes) {
                Moment moment;
                moment.time = time;
                CompareMoment(kEffect, format, {33, 25, 33, 25, 33, 25}, ValuesOf(preset, 9), moment, random);
            }
}

TEST(ActiveCamera, Render_AllPresetsOfTheWrapper_AreThePlainVersions)
{
    std::mt19937 random(4);
    for (const std::uint32_t format : kPictureFormats)
        for (const PresetRow& preset : kWrapActiveCameraPresets)
            for (const double time : {0.0, 1.3, 40.04}) {
                Moment moment;
                moment.time = time;
                CompareMoment(EffectClass::WrapActiveCamera, format, RandomSizes(random, 40, 30),
                              ValuesOf(preset, 6), moment, random);
            }
}

// At a Rate of 1 there are some ten thousand knots by then, three times as many as without.
TEST(ActiveCamera, Render_LateTimes_AreThePlainVersions)
{
    std::mt19937 random(5);
    for (const double time : {1000.02, 1023.99, 1024.5, 3600.0})
        for (const float rate : {0.0f, 0.5f, 1.0f})
            for (const float hold : {0.0f, 0.3f, 1.0f}) {
                const Camera camera = {0.4f, 0.5f, 0.2f, 0.3f, rate, 0.7f, hold, 0.5f, false};
                Moment moment;
                moment.time = time;
                CompareMoment(kEffect, PF_BGRA8, {24, 20, 24, 20, 24, 20}, camera.Levels(), moment, random);
            }
}

TEST(ActiveCamera, Render_EveryCpuVariant_GivesTheSamePixels)
{
    const CpuVariant before = CurrentVariant();
    const std::vector<float> levels = Camera{0.5f, 0.5f, 0.7f, 0.4f, 0.6f, 0.5f, 0.3f, 0.6f, false}.Levels();
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(97, 41, format, 77);
        ASSERT_TRUE(UseVariant(CpuVariant::Baseline));
        const GuardedPicture expected = Seen(levels, in, 5.5);
        for (const CpuVariant variant : {CpuVariant::Avx2, CpuVariant::Avx512}) {
            if (!UseVariant(variant))
                continue;
            EXPECT_TRUE(Equal(Seen(levels, in, 5.5), expected)) << FormatName(format);
        }
    }
    UseVariant(before);
}

// --- the view -------------------------------------------------------------------------------------------------

TEST(ActiveCamera, Render_ResetToNone_ReturnsThePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const double time : kTimes) {
            const GuardedPicture in = Noisy(31, 22, format, 1);
            EXPECT_TRUE(Equal(Seen(Camera{}.Levels(), in, time), in)) << FormatName(format) << " at " << time;
        }
}

// Full Crop is a zoom of 1.67 about the middle, (20, 15) in a picture of 40 by 30: column 20 stays, 30 shows what was
// at 20 + 10 / 1.67 = 25.988, so between columns 25 and 26.
TEST(ActiveCamera, Render_NoMotion_ZoomsAboutTheMiddleAtAnyTime)
{
    GuardedPicture in(40, 30, PF_BGRA32F);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            in.SetFloat(x, y, 1, static_cast<float>(x + 100 * y));
    const std::vector<float> levels =
        Camera{.crop = 1, .rate = 0.9f, .jitter = 0.5f, .hold = 0.3f, .synchronize = true}.Levels();
    const GuardedPicture out = Seen(levels, in, 0.0);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            ASSERT_NEAR(static_cast<double>(out.Float(x, y, 1)),
                        20 + (x - 20) / 1.67 + 100 * (15 + (y - 15) / 1.67), 1e-2);
    for (const double time : kTimes)
        EXPECT_TRUE(Equal(Seen(levels, in, time), out)) << time;
}

TEST(ActiveCamera, Render_HalfTheCrop_ZoomsHalfAsFar)
{
    // 1 + 0.5 * 0.67 = 1.335: a dot 8 columns right of the middle comes to stand at 8 * 1.335 = 10.68.
    const GuardedPicture out = Seen(Camera{.crop = 0.5f}.Levels(), Dot(40, 30, PF_BGRA32F, 28, 15), 0.0);
    EXPECT_GT(out.Float(31, 15, 1), out.Float(30, 15, 1));
    EXPECT_GT(out.Float(30, 15, 1), 0.0f);
    EXPECT_EQ(out.Float(28, 15, 1), 0.0f);
    EXPECT_EQ(out.Float(33, 15, 1), 0.0f);
}

// A walk from 0 begins with a rest that lasts unit / 2 at least: 0.05 at a Rate of 1. Where it rests and how the
// generator begins: state = 0 + 111, times 214013 plus 2531011 is 26286454; over 65536 that is 401, its low nine bits
// 401, so the place is 401 / 256 - 1 = 0.56640625. All of Horizontal moves a width of 64 by 0.25 * 0.56640625 * 64 =
// 9.0625 pixels.
TEST(ActiveCamera, Render_TimeZero_RestsAtTheFirstKey)
{
    for (const float rate : {0.0f, 0.5f, 1.0f}) {
        const Camera camera = {.horizontal = 1, .rate = rate};
        const GuardedPicture out = Seen(camera.Levels(), Dot(64, 5, PF_BGRA32F, 20, 2), 0.0);
        EXPECT_FLOAT_EQ(out.Float(29, 2, 1), 0.9375f * ByteLevel(255));
        EXPECT_FLOAT_EQ(out.Float(30, 2, 1), 0.0625f * ByteLevel(255));
        for (int x = 0; x < 9; ++x)
            EXPECT_EQ(out.Float(x, 2, 3), 0.0f) << "nothing comes in at the edge";
    }
}

// The same with 222 and 333: 222 * 214013 + 2531011 = 50041897, over 65536 763, low nine bits 251, -0.01953125; a
// height of 64 moves by -0.3125 rows. 333 gives 73797340, 1126, 102, -0.6015625, a quarter of it in radians.
TEST(ActiveCamera, Render_TimeZero_MovesEachAxisByItsOwnSeed)
{
    const GuardedPicture up = Seen(Camera{.vertical = 1}.Levels(), Dot(5, 64, PF_BGRA32F, 2, 20), 0.0);
    EXPECT_FLOAT_EQ(up.Float(2, 20, 1), 0.6875f * ByteLevel(255));
    EXPECT_FLOAT_EQ(up.Float(2, 19, 1), 0.3125f * ByteLevel(255));

    // Turned about (100, 50) by -0.150390625, a dot 60 columns right of it comes to stand 59.32 right, 8.99 up.
    const GuardedPicture turned =
        Seen(Camera{.rotation = 1}.Levels(), Dot(200, 100, PF_BGRA32F, 160, 50), 0.0);
    EXPECT_GT(turned.Float(159, 41, 1), 0.5f);
    EXPECT_EQ(turned.Float(160, 50, 1), 0.0f);
}

// Rows that stand for two: the turn is made in a picture twice as high. cos and sin of 0.150390625 are 0.98871 and
// 0.14982: 60 columns right become 59.32, and 60 * 0.14982 / 2 = 4.49 rows up.
TEST(ActiveCamera, Render_FieldWithoutAnAspect_TurnsInASpaceTwiceAsHigh)
{
    const GuardedPicture in = Dot(200, 100, PF_BGRA32F, 160, 50);
    const std::vector<float> levels = Camera{.rotation = 1}.Levels();
    Moment moment;
    moment.halfHeight = true;
    const GuardedPicture field = Seen(levels, in, moment);
    EXPECT_GT(field.Float(159, 45, 1), 0.2f);
    EXPECT_GT(field.Float(159, 46, 1), 0.2f);
    EXPECT_EQ(field.Float(159, 41, 1), 0.0f);

    // An aspect of its own comes first.
    moment.pixelAspect = 1.0;
    EXPECT_TRUE(Equal(Seen(levels, in, moment), Seen(levels, in, Moment{})));
    moment.pixelAspect = 2.0;
    EXPECT_TRUE(Equal(Seen(levels, in, moment), field));
    moment.halfHeight = false;
    EXPECT_TRUE(Equal(Seen(levels, in, moment), field));
}

TEST(ActiveCamera, Render_AspectsThatNoPixelHas_StayInsideTheMemory)
{
    const GuardedPicture in = Noisy(20, 20, PF_BGRA8, 1);
    for (const double aspect : {0.0, -1.0, 1e300, 1e-300, std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        Moment moment;
        moment.pixelAspect = aspect;
        Seen(Camera{0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, false}.Levels(), in, moment).Check();
    }
}

TEST(ActiveCamera, Render_WhereThePictureDoesNotReach_IsClear)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture in(64, 8, format);
        in.Fill(255, 255, 255, 255);
        for (const float blur : {0.0f, 0.001f}) { // 9.0625 columns to the right, see above
            const GuardedPicture out = Seen(Camera{.horizontal = 1, .blur = blur}.Levels(), in, 0.0);
            for (int y = 0; y < 8; ++y)
                for (int i = 0; i < 9 * out.PixelBytes(); ++i)
                    ASSERT_EQ(out.Row(y)[i], 0) << FormatName(format);
        }
    }
}

// --- time ------------------------------------------------------------------------------------------------------

TEST(ActiveCamera, Render_NegativeTimes_CountAsZero)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 30, PF_BGRA8);
    for (const PresetRow& preset : kActiveCameraPresets) {
        const std::vector<float> levels = ValuesOf(preset, 9);
        const GuardedPicture expected = Seen(levels, in, 0.0);
        for (const double time : {-0.0, -1e-30, -0.2, -5.0, -1e300})
            EXPECT_TRUE(Equal(Seen(levels, in, time), expected)) << preset.name << " at " << time;
    }
}

// At 0 the earlier moment lies before it: both samples are one, and 127 and 128 of 255 parts of white make white.
TEST(ActiveCamera, Render_BlurNearTheStart_MixesASampleWithItself)
{
    const Camera still = {.horizontal = 1, .rate = 1}, blurred = {.horizontal = 1, .rate = 1, .blur = 1};
    const GuardedPicture in = Noisy(64, 9, PF_BGRA8, 1);
    const GuardedPicture one = Seen(still.Levels(), in, 0.0), both = Seen(blurred.Levels(), in, 0.0);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 64; ++x)
            for (int c = 0; c < 4; ++c) // each product is cut to a whole level
                ASSERT_LE(std::abs(one.Byte(x, y, c) - both.Byte(x, y, c)), 1);
}

TEST(ActiveCamera, Render_TimesThatAreNotFinite_CountAsZero)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 30, PF_BGRA8);
    for (const PresetRow& preset : kActiveCameraPresets) {
        const std::vector<float> levels = ValuesOf(preset, 9);
        const GuardedPicture expected = Seen(levels, in, 0.0);
        for (const double time :
             {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
              -std::numeric_limits<double>::infinity()})
            EXPECT_TRUE(Equal(Seen(levels, in, time), expected)) << preset.name << " at " << time;
    }
}

TEST(ActiveCamera, Render_HugeTimes_ComeToAnEnd)
{
    const GuardedPicture in = Noisy(9, 7, PF_BGRA8, 1);
    for (const PresetRow& preset : {kActiveCameraPresets[12], kActiveCameraPresets[4]})
        for (const double time : {131072.5, 4194304.0, 1e30, 1e300})
            Seen(ValuesOf(preset, 9), in, time).Check();
    const Camera wildest = {1, 1, 1, 1, 1, 1, 0, 1, true};
    for (const double time : {131072.3, 131089.7, 4194304.0, 4194305.0})
        Seen(wildest.Levels(), in, time).Check();
}

TEST(ActiveCamera, Render_ShuffledFrames_AreThoseInOrder)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 32, 24, PF_BGRA8);
    for (const PresetRow& preset :
         {kActiveCameraPresets[0], kActiveCameraPresets[3], kActiveCameraPresets[12]}) {
        const std::vector<float> levels = ValuesOf(preset, 9);
        std::vector<int> order;
        std::vector<GuardedPicture> frames;
        const HeldEffect inOrder = NewEffect(kEffect), shuffled = NewEffect(kEffect);
        FakeHost host(Levels(kEffect, levels));
        const auto frame = [&](IVideoEffect& effect, int i) {
            Moment moment;
            moment.time = i / 25.0;
            GuardedPicture out(32, 24, PF_BGRA8);
            EXPECT_TRUE(Render(effect, host, moment, in, out));
            return out;
        };
        for (int i = 0; i < 100; ++i) {
            order.push_back(i);
            frames.push_back(frame(*inOrder, i));
        }
        std::shuffle(order.begin(), order.end(), std::mt19937(9));
        int changes = 0;
        for (const int i : order) {
            EXPECT_TRUE(Equal(frame(*shuffled, i), frames[static_cast<std::size_t>(i)])) << i;
            changes +=
                i > 0 && !Equal(frames[static_cast<std::size_t>(i)], frames[static_cast<std::size_t>(i - 1)]);
        }
        EXPECT_GT(changes, 30) << preset.name << " stands still";
    }
}

// --- the walk, through the effect ----------------------------------------------------------------------------

TEST(ActiveCamera, Render_RatesUnderATenThousandth_GiveTheWalkOfRateZero)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 30, PF_BGRA8);
    const auto seen = [&](float rate, double time) {
        return Seen(Camera{.horizontal = 1, .vertical = 1, .rate = rate, .jitter = 0.5f}.Levels(), in, time);
    };
    for (const double time : kTimes)
        for (const float rate : {1e-10f, 0.00005f, 0.0000999f, -0.3f})
            EXPECT_TRUE(Equal(seen(rate, time), seen(0.0f, time))) << rate << " at " << time;
    bool differs = false;
    for (const double time : kTimes)
        differs = differs || !Equal(seen(0.00025f, time), seen(0.0f, time));
    EXPECT_TRUE(differs);
}

TEST(ActiveCamera, Render_AChangeOfRate_ChangesThePathAndNotJustItsSpeed)
{
    // A path that were only faster would stand where the other one does at some time of its first 60 units.
    const GuardedPicture in = Dot(64, 64, PF_BGRA32F, 32, 32);
    const auto centre = [&](float rate, double time) {
        const GuardedPicture out =
            Seen(Camera{.horizontal = 1, .vertical = 1, .rate = rate}.Levels(), in, time);
        double x = 0, y = 0, sum = 0;
        for (int j = 0; j < 64; ++j)
            for (int i = 0; i < 64; ++i) {
                const auto value = static_cast<double>(out.Float(i, j, 1));
                x += value * i;
                y += value * j;
                sum += value;
            }
        return std::pair{x / sum, y / sum};
    };
    const auto [x, y] = centre(0.8f, 20.0);
    double nearest = 1e9;
    for (int i = 0; i < 600; ++i) {
        const auto [otherX, otherY] = centre(0.81f, i / 10.0);
        nearest = std::min(nearest, std::hypot(x - otherX, y - otherY));
    }
    EXPECT_GT(nearest, 0.01);
}

TEST(ActiveCamera, Render_HoldZero_MovesAllTheTime)
{
    const GuardedPicture in = MakePicture(Motif::SoftEdges, 64, 48, PF_BGRA32F);
    const std::vector<float> levels = Camera{.horizontal = 1, .vertical = 1, .rate = 0.5f}.Levels();
    // Without jitter a rest would leave the picture as it was; after the first one there is none.
    for (int i = 20; i < 200; ++i)
        EXPECT_FALSE(Equal(Seen(levels, in, i / 10.0), Seen(levels, in, (i + 1) / 10.0))) << i;
}

TEST(ActiveCamera, Render_FullHold_JumpsFromRestToRest)
{
    const GuardedPicture in = MakePicture(Motif::SoftEdges, 64, 48, PF_BGRA32F);
    const std::vector<float> levels =
        Camera{.horizontal = 1, .vertical = 1, .rate = 0.5f, .hold = 1, .synchronize = true}.Levels();
    // Steps of unit / 2 at least, 3.9^0.5 - 0.9 over 2 = 0.537: of two hundred moments a tenth apart, over 20 units,
    // most are like the one before, and the rests last 1.1 units on an average.
    int jumps = 0;
    for (int i = 0; i < 200; ++i)
        jumps += !Equal(Seen(levels, in, i / 10.0), Seen(levels, in, (i + 1) / 10.0));
    EXPECT_GE(jumps, 9);
    EXPECT_LE(jumps, 38);
}

TEST(ActiveCamera, Render_NoJitter_LeavesTheRestsStill)
{
    // In the first rest, of 0.537 at least, nothing moves without jitter and something with it.
    const GuardedPicture in = MakePicture(Motif::SoftEdges, 64, 48, PF_BGRA32F);
    const auto seen = [&](float jitter, double time) {
        return Seen(Camera{.horizontal = 1, .rate = 0.5f, .jitter = jitter}.Levels(), in, time);
    };
    for (const double time : {0.1, 0.25, 0.5})
        EXPECT_TRUE(Equal(seen(0.0f, time), seen(0.0f, 0.0))) << time;
    EXPECT_FALSE(Equal(seen(1.0f, 0.25), seen(1.0f, 0.0)));
}

TEST(ActiveCamera, Render_SynchronizedAxes_RestTogetherAtPlacesOfTheirOwn)
{
    const GuardedPicture in = MakePicture(Motif::SoftEdges, 64, 48, PF_BGRA32F);
    const auto moves = [&](bool horizontal, bool together, int i) {
        const Camera camera = {.horizontal = horizontal ? 1.0f : 0.0f,
                               .vertical = horizontal ? 0.0f : 1.0f,
                               .rate = 0.5f,
                               .hold = 0.5f,
                               .synchronize = together};
        return !Equal(Seen(camera.Levels(), in, i / 10.0), Seen(camera.Levels(), in, (i + 1) / 10.0));
    };
    int apart = 0;
    for (int i = 0; i < 150; ++i) {
        EXPECT_EQ(moves(true, true, i), moves(false, true, i)) << i;
        apart += moves(true, false, i) != moves(false, false, i);
    }
    EXPECT_GT(apart, 10);
}

// --- blur --------------------------------------------------------------------------------------------------------

// Full Blur mixes the moment, 127 of 255 parts, with the one a quarter before it, 128 parts.
TEST(ActiveCamera, Render_FullBlur_MixesTwoMomentsAQuarterApart)
{
    GuardedPicture in(64, 48, PF_BGRA32F);
    in.FillNoise(3);
    Camera camera = {.horizontal = 0.6f, .vertical = 0.7f, .rotation = 0.4f, .crop = 0.2f, .rate = 0.8f};
    for (const double time : {1.5, 7.75, 30.0}) {
        camera.blur = 0;
        const GuardedPicture now = Seen(camera.Levels(), in, time);
        const GuardedPicture earlier = Seen(camera.Levels(), in, time - 0.25);
        EXPECT_FALSE(Equal(now, earlier));
        camera.blur = 1;
        const GuardedPicture out = Seen(camera.Levels(), in, time);
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_NEAR(static_cast<double>(out.Float(x, y, c)),
                                static_cast<double>(now.Float(x, y, c)) * 127 / 255
                                    + static_cast<double>(earlier.Float(x, y, c)) * 128 / 255,
                                1e-6);
    }
}

TEST(ActiveCamera, Render_WithoutMemory_LeavesTheOutput)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float blur : {0.0f, 0.4f}) {
            MemoryHabits habits;
            habits.refuseFrom = 0;
            FakeMemoryProvider memory(habits);
            FakeHost host(Levels(kEffect, Camera{.horizontal = 1, .crop = 0.5f, .blur = blur}.Levels()));
            host.SetMemory(&memory);
            const GuardedPicture in = Noisy(21, 17, format, 1);
            GuardedPicture out = Noisy(21, 17, format, 2);
            const GuardedPicture before = out;
            EXPECT_TRUE(Render(*NewEffect(kEffect), host, in, out));
            EXPECT_EQ(Equal(out, before), blur > 0) << "only the second sample needs memory";
            EXPECT_EQ(memory.Asked(), blur > 0 ? 1u : 0u);
        }
}

// --- what no host should say ---------------------------------------------------------------------------------

TEST(ActiveCamera, Render_HostileKnobs_ComeToAnEndInsideTheMemory)
{
    constexpr float hostile[] = {kNaN,  kInfinity, -kInfinity, 1e30f, -1e30f,
                                 -1.0f, 1e-40f,    1.0774f,    1.08f, 2.0f};
    std::mt19937 random(6);
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F})
        for (std::size_t knob = 0; knob < 8; ++knob)
            for (const float value : hostile)
                for (const double time : {0.0, 3.7, 60.0}) {
                    std::vector<float> levels = RandomLevels(random);
                    levels[knob] = value;
                    Seen(levels, Noisy(11, 9, format, 1), time).Check();
                }
}

TEST(ActiveCamera, Render_FormatsThatFillAndWarpDoNotServe_LeaveTheOutput)
{
    for (const std::uint32_t format : {2u, 5u, 8u, 0xFFFFFFFFu})
        for (const std::int32_t pixelBytes : {4, 16})
            for (const float blur : {0.0f, 0.5f}) {
                GuardedPicture in(12, 12, pixelBytes, format), out(12, 12, pixelBytes, format);
                in.FillBytes(90);
                out.FillBytes(17);
                const GuardedPicture before = out;
                RenderFresh(kEffect, Camera{.crop = 0.5f, .blur = blur}.Levels(), Moment{}, in, out);
                EXPECT_TRUE(Equal(out, before)) << format << " of " << pixelBytes;
            }
}

TEST(ActiveCamera, Render_PicturesOfTwoFormats_ClearTheOutput)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::uint32_t other : kPictureFormats) {
            if (format == other)
                continue;
            const GuardedPicture in = Noisy(12, 10, format, 1);
            for (const float blur : {0.0f, 0.5f}) {
                GuardedPicture out = Noisy(12, 10, other, 2);
                RenderFresh(kEffect, Camera{.crop = 0.5f, .blur = blur}.Levels(), Moment{}, in, out);
                EXPECT_TRUE(Equal(out, GuardedPicture(12, 10, other)))
                    << FormatName(format) << " to " << FormatName(other);
            }
        }
}

// A plane of bytes is moved like a channel of a picture.
TEST(ActiveCamera, Render_PlanesOfBytes_AreMovedToo)
{
    for (const float blur : {0.0f, 0.5f}) {
        const Camera camera = {0.5f, 0.5f, 0.4f, 0.3f, 0.8f, 0.5f, 0.0f, blur, false};
        const GuardedPicture picture = Noisy(24, 18, PF_BGRA8, 1);
        GuardedPicture plane(24, 18, PF_Mask8), out(24, 18, PF_Mask8);
        for (int y = 0; y < 18; ++y)
            for (int x = 0; x < 24; ++x)
                plane.SetByte(x, y, 0, picture.Byte(x, y, 1));
        Moment moment;
        moment.time = 3.3;
        const GuardedPicture expected = Seen(camera.Levels(), picture, moment);
        RenderFresh(kEffect, camera.Levels(), moment, plane, out);
        for (int y = 0; y < 18; ++y)
            for (int x = 0; x < 24; ++x)
                ASSERT_EQ(out.Byte(x, y, 0), expected.Byte(x, y, 1));
    }
}

// --- what the effect promises ----------------------------------------------------------------------------

TEST(ActiveCamera, Render_ProgressAndTheSecondPicture_PlayNoPart)
{
    const GuardedPicture in = MakePicture(Motif::Moving, 40, 50, PF_BGRA8);
    const GuardedPicture other = MakePicture(Motif::ZonePlate, 13, 90, PF_ARGB32F);
    const std::vector<float> levels = ValuesOf(kActiveCameraPresets[0], 9);
    const GuardedPicture expected = Seen(levels, in, 2.5);
    for (const double progress : {0.0, 0.7, std::numeric_limits<double>::quiet_NaN()})
        for (const GuardedPicture* second : {&other, static_cast<const GuardedPicture*>(nullptr)}) {
            Moment moment;
            moment.second = second;
            moment.progress = progress;
            moment.time = 2.5;
            EXPECT_TRUE(Equal(Seen(levels, in, moment), expected));
        }
}

TEST(ActiveCamera, Render_WithoutInfo_IsRefusedAndWritesNothing)
{
    FakeHost host(Levels(kEffect, Camera{.crop = 0.5f}.Levels()));
    const GuardedPicture in = MakePicture(Motif::Ramp, 20, 30, PF_BGRA8);
    GuardedPicture out = Noisy(20, 30, PF_BGRA8, 4);
    const GuardedPicture before = out;
    VideoFrame first = in.Frame(), output = out.Frame();
    EXPECT_FALSE(NewEffect(kEffect)->Render(&host, &first, nullptr, &output, nullptr));
    EXPECT_TRUE(Equal(out, before));
}

} // namespace
} // namespace kelmora
