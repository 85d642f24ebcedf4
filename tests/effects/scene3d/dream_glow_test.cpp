#include "effects/scene3d/dream_glow.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "effects/scene3d/dream_glow_kernels.h"
#include "tests/reference/dream_glow.h"
#include "tests/support/fake_memory_provider.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

using reference::DreamGlow;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kEndless = std::numeric_limits<float>::infinity();
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

// Fog 1 is a gain of 509 in bytes: sqrt(0.8) * 1.5 * 380 = 509.8.
constexpr float kFullFog = 1.0f;

// (32767.5 / 380 / 1.5) squared / 0.8: the largest gain of bytes.
constexpr float kMostFog = 4130.92f;

void ApplyTo(const GuardedPicture& picture, const DreamGlow& glow, MemoryAllocator& allocator)
{
    const VideoFrame frame = picture.Frame();
    FrameBuffer view;
    view.AttachFrame(&frame);
    PRDreamGlowEffect effect(glow.radius, glow.shine, glow.fog, allocator);
    effect.Apply(&view);
    picture.Check();
}

void ApplyTo(const GuardedPicture& picture, const DreamGlow& glow)
{
    MemoryAllocator allocator;
    ApplyTo(picture, glow, allocator);
}

void TurnOver(reference::Picture& picture)
{
    const std::ptrdiff_t row = picture.width * 4;
    for (int y = 0; y < picture.height / 2; ++y)
        std::swap_ranges(picture.values.begin() + row * y, picture.values.begin() + row * (y + 1),
                         picture.values.begin() + row * (picture.height - 1 - y));
}

/// Kernels are not symmetric: rows count in the order of memory.
reference::Picture Expected(const GuardedPicture& picture, const DreamGlow& glow)
{
    reference::Picture expected = reference::Read(picture);
    if (picture.Layout().upward)
        TurnOver(expected);
    reference::ApplyDreamGlow(expected, glow);
    if (picture.Layout().upward)
        TurnOver(expected);
    return expected;
}

// The haze: a blur's last bits, summed and multiplied by a gain of 2 at the most. The wave alone: one rounding to
// single precision and the sine's 1e-7 times 0.31. Both: the wave's slope is less than 6.
constexpr double kHazeError = 1e-6;
constexpr double kWaveError = 1e-7;

double ErrorOf(const GuardedPicture& picture, const DreamGlow& glow)
{
    if (!IsFloatFormat(picture.Format()))
        return 0.0;
    const bool hazy = glow.fog > 0, shiny = glow.shine > 0;
    return (hazy ? kHazeError * (shiny ? 6.0 : 1.0) : 0.0) + (shiny ? kWaveError : 0.0);
}

void ExpectThePlainVersion(const GuardedPicture& picture, const DreamGlow& glow)
{
    const reference::Picture expected = Expected(picture, glow);
    ApplyTo(picture, glow);
    ASSERT_TRUE(reference::Matches(picture, expected, 0.0, ErrorOf(picture, glow)))
        << FormatName(picture.Format()) << " " << picture.Width() << " x " << picture.Height() << " radius "
        << glow.radius << " shine " << glow.shine << " fog " << glow.fog;
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed,
                     Noise noise = Noise::Uniform, const PictureLayout& layout = {})
{
    GuardedPicture picture(width, height, format, layout);
    picture.FillNoise(seed, noise);
    return picture;
}

GuardedPicture Flat(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint8_t level,
                    std::uint8_t alpha)
{
    GuardedPicture picture(width, height, format);
    picture.Fill(level, level, level, alpha);
    return picture;
}

void ExpectGrey(const GuardedPicture& picture, int x, int y, int level, int alpha)
{
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(picture.Byte(x, y, PlaceOfColour(picture.Format(), c)), level)
            << FormatName(picture.Format()) << " (" << x << ", " << y << ") colour " << c;
    EXPECT_EQ(picture.Byte(x, y, PlaceOfColour(picture.Format(), 3)), alpha)
        << FormatName(picture.Format()) << " (" << x << ", " << y << ")";
}

// --- the haze, by hand --------------------------------------------------------------------------------

// The pixel next to the outermost ones stands for them: 40 grey is a level of (255 * 40) >> 8 = 39, the glow
// (39 * 509) >> 8 = 77, black pixels under it get (77 * 255) >> 8 = 76 and alpha 77.
TEST(DreamGlow, RadiusZero_LiftsByThePictureWithItsOutermostPixelsReplaced)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture picture = Flat(7, 7, format, 0, 5);
        picture.SetColour(2, 2, 40, 40, 40, 5);
        picture.SetColour(5, 5, 40, 40, 40, 5);
        picture.SetColour(6, 0, 255, 255, 255, 5); // replaced, and so of no effect on its surroundings
        ApplyTo(picture, {0, 0.0f, kFullFog});
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                ExpectGrey(picture, i, j, 76, 77);
        ExpectGrey(picture, 2, 2, 77, 77); // (38 * 255) >> 8 = 37 above 40
        ExpectGrey(picture, 6, 6, 76, 77); // of an odd kernel, the last row and column alone
        ExpectGrey(picture, 5, 6, 76, 77);
        ExpectGrey(picture, 5, 5, 77, 77);
        ExpectGrey(picture, 4, 4, 0, 5);
        ExpectGrey(picture, 6, 0, 255, 5);
        ExpectGrey(picture, 5, 1, 0, 5);
    }
}

// 200 / 2 = 100 on both columns: a level of 99 and a glow of (99 * 509) >> 8 = 196. White at (255 * 200) >> 8 = 199
// is above it and stays.
TEST(DreamGlow, TwoTaps_AreTheMeanOfAPixelAndTheNext)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture picture = Flat(9, 8, format, 0, 0);
        for (int y = 0; y < 8; ++y)
            picture.SetColour(4, y, 200, 200, 200, 250);
        ApplyTo(picture, {1, 0.0f, kFullFog});
        for (int y = 0; y < 8; ++y) {
            ExpectGrey(picture, 2, y, 0, 0);
            ExpectGrey(picture, 3, y, 195, 196); // (196 * 255) >> 8
            ExpectGrey(picture, 4, y, 200, 250);
            ExpectGrey(picture, 5, y, 0, 0);
        }
    }
}

TEST(DreamGlow, ABlackPicture_StaysAsItWas)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::int32_t radius : {0, 1, 8}) {
            const GuardedPicture before = Flat(11, 9, format, 0, 77);
            const GuardedPicture picture = before;
            ApplyTo(picture, {radius, 0.0f, kFullFog});
            EXPECT_TRUE(Equal(picture, before)) << radius;
        }
}

TEST(DreamGlow, AWhitePicture_IsCutAtTheGlowColourAndOpaque)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture picture = Flat(11, 9, format, 255, 10);
        ApplyTo(picture, {4, 0.0f, kFullFog});
        EXPECT_TRUE(Near(picture, Flat(11, 9, format, 255, 255), 0.0)) << FormatName(format);
    }
}

// Fog 0.253125 is a gain of trunc(sqrt(0.2025) * 1.5 * 380) = trunc(256.5): once the brightness.
TEST(DreamGlow, Kept_WhiteBytes_HaveTheLevel254)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture picture = Flat(11, 9, format, 255, 0);
        ApplyTo(picture, {4, 0.0f, 0.253125f});
        ExpectGrey(picture, 5, 5, 255, 254);
    }
}

// One blue pixel in the dark. Its haze is the blur's blue, which alpha-last floats do not take.
TEST(DreamGlow, Kept_Bgra32F_HazesBySharpBlue)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        GuardedPicture picture(9, 9, format);
        picture.FillFloat(0.0f, 0.0f, 0.0f, 0.0f);
        picture.SetColour(4, 4, 255, 0, 0, 0);
        ApplyTo(picture, {2, 0.0f, kFullFog});
        const int red = PlaceOfColour(format, 2), alpha = PlaceOfColour(format, 3);
        // 1 2 1 both ways: 2 / 16 of the blue, times 0.113 and the gain of sqrt(0.8) * 1.5 * 1.49.
        const double beside = format == PF_ARGB32F ? 0.125 * 0.113 * std::sqrt(0.8) * 1.5 * 1.49 : 0.0;
        EXPECT_NEAR(static_cast<double>(picture.Float(5, 4, red)), beside, 1e-6) << FormatName(format);
        EXPECT_NEAR(static_cast<double>(picture.Float(5, 4, alpha)), beside, 1e-6) << FormatName(format);
        // On the pixel itself sharp blue is its own level, 0.113, which the gain lifts to 0.226.
        const double within = (format == PF_ARGB32F ? 0.25 : 1.0) * 0.113 * std::sqrt(0.8) * 1.5 * 1.49;
        EXPECT_NEAR(static_cast<double>(picture.Float(4, 4, red)), std::max(within - 0.113, 0.0), 1e-6);
    }
}

// --- what does nothing --------------------------------------------------------------------------------

TEST(DreamGlow, NoFogAndNoShine_TouchNeitherPictureNorMemory)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float fog : {0.0f, -0.0f, -1.0f, kNaN})
            for (const float shine : {0.0f, -0.0f, -1.0f, kNaN, -kEndless}) {
                FakeMemoryProvider memory;
                GuardedPicture picture = Noisy(13, 9, format, 1);
                picture.Freeze();
                {
                    MemoryAllocator allocator(&memory);
                    ApplyTo(picture, {5, shine, fog}, allocator);
                }
                EXPECT_EQ(memory.Asked(), 0u);
            }
}

TEST(DreamGlow, NoFog_LeavesTheWaveAlone)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float fog : {0.0f, -1.0f, kNaN})
            ExpectThePlainVersion(Noisy(13, 9, format, 2), {5, 0.6f, fog});
}

TEST(DreamGlow, NoShine_LeavesTheHazeAlone)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float shine : {0.0f, -1.0f, kNaN}) {
            const GuardedPicture picture = Noisy(13, 9, format, 3), hazed = picture;
            ApplyTo(hazed, {5, 0.0f, 0.7f});
            ApplyTo(picture, {5, shine, 0.7f});
            EXPECT_TRUE(Equal(picture, hazed));
        }
}

TEST(DreamGlow, OtherFormats_StayAsTheyWere)
{
    for (const std::uint32_t format : {std::uint32_t{PF_Packed8}, std::uint32_t{5}, std::uint32_t{PF_Mask8},
                                       std::uint32_t{PF_Mask32F}, std::uint32_t{99}}) {
        const int bytes = format == PF_Mask8 ? 1 : 4;
        GuardedPicture picture(12, 8, bytes, format);
        picture.FillBytes(100);
        picture.Freeze();
        ApplyTo(picture, {2, 0.5f, 0.5f});
    }
}

TEST(DreamGlow, PicturesThatHoldLessThanTheySay_StayAsTheyWere)
{
    MemoryAllocator allocator;
    PRDreamGlowEffect effect(2, 0.5f, 0.5f, allocator);
    effect.Apply(nullptr);
    FrameBuffer nothing;
    effect.Apply(&nothing);

    std::vector<std::uint8_t> bytes(12 * 8 * 16, 100);
    const std::vector<std::uint8_t> before = bytes;
    FrameBuffer odd;
    odd.Attach(bytes.data(), 12, 8, 12 * 4, 16, PF_BGRA32F, false); // rows too short
    effect.Apply(&odd);
    odd.Attach(bytes.data(), 12, 8, 12 * 16, 16, PF_BGRA8, false); // pixels of another size
    effect.Apply(&odd);
    odd.Attach(bytes.data(), 12, 8, 12 * 4, 4, PF_ARGB32F, false);
    effect.Apply(&odd);
    odd.Attach(bytes.data(), 0, 8, 12 * 4, 4, PF_BGRA8, false);
    effect.Apply(&odd);
    odd.Attach(bytes.data(), 12, -8, 12 * 4, 4, PF_BGRA8, false);
    effect.Apply(&odd);
    EXPECT_EQ(bytes, before);
}

// --- whole pictures against the plain version -----------------------------------------------------------

// Kernels of every parity, in pictures that are higher and wider than the kernel, lower, and hardly there.
TEST(DreamGlow, KernelsOfEverySize_AreThePlainVersions)
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (const int taps : {1, 2, 3, 4, 5, 9, 10, 31, 32})
            for (const auto& [width, height] : {std::pair{7, 90}, {90, 7}, {33, 34}, {5, 5}, {6, 4}})
                for (const Noise noise : {Noise::Uniform, Noise::Leaning})
                    ExpectThePlainVersion(Noisy(width, height, format, ++seed, noise),
                                          {taps - 1, 0.0f, 0.45f});
}

TEST(DreamGlow, AFogOf1080Lines_IsThePlainVersion)
{
    std::uint32_t seed = 50;
    for (const std::uint32_t format : kPictureFormats)
        for (const int taps : {216, 217})
            for (const auto& [width, height] : {std::pair{5, 300}, {300, 5}, {20, 119}, {9, 9}})
                ExpectThePlainVersion(Noisy(width, height, format, ++seed, Noise::Leaning),
                                      {taps - 1, 0.0f, 0.9f});
}

TEST(DreamGlow, AllSmallSizes_AreThePlainVersions)
{
    std::uint32_t seed = 100;
    for (const std::uint32_t format : kPictureFormats)
        for (int height = 1; height <= 7; ++height)
            for (int width = 1; width <= 7; ++width)
                for (const int taps : {1, 2, 3, 4, 9, 10})
                    ExpectThePlainVersion(Noisy(width, height, format, ++seed), {taps - 1, 0.0f, 0.5f});
}

TEST(DreamGlow, EveryWidthToFortyInEveryMemory_IsThePlainVersion)
{
    std::uint32_t seed = 500;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 40; ++width) {
            PictureLayout layout;
            layout.guard = width % 3 == 0 ? Guard::PageEnd : width % 3 == 1 ? Guard::PageStart : Guard::Moat;
            layout.upward = width % 4 == 1;
            if (layout.guard == Guard::Moat) {
                layout.slack = width % 2 == 0 ? 0 : 12;
                layout.shift = width % 5 * 4;
            }
            const float shine = static_cast<float>(width % 8) / 8.0f,
                        fog = static_cast<float>(width % 7) / 7.0f;
            ExpectThePlainVersion(Noisy(width, 41 - width, format, ++seed, Noise::Uniform, layout),
                                  {width % 11, shine, fog});
        }
}

TEST(DreamGlow, BothStages_FollowEachOther)
{
    std::uint32_t seed = 700;
    for (const std::uint32_t format : kPictureFormats)
        for (const float shine : {0.1f, 0.35f, 0.777f, 0.8f, 1.0f})
            for (const float fog : {0.02f, 0.3f, 1.0f})
                ExpectThePlainVersion(MakePicture(Motif::Moving, 71, 38, format, {}, ++seed % 20),
                                      {12, shine, fog});
}

TEST(DreamGlow, WildKnobs_AreThePlainVersionsInBytes)
{
    std::uint32_t seed = 800;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        for (const float fog : {3.0f, 77.0f, 1000.0f, kMostFog})
            ExpectThePlainVersion(Noisy(23, 19, format, ++seed, Noise::Leaning), {6, 0.0f, fog});
        for (const float shine : {1.6f, 1.7f, 2.0f, 5.0f, 80.0f})
            ExpectThePlainVersion(Noisy(23, 19, format, ++seed, Noise::Leaning), {6, shine, 0.0f});
    }
}

TEST(DreamGlow, FogBeyondTheMost_CountsAsTheMostInBytes)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const float fog : {5000.0f, 1e30f, kEndless}) {
            const GuardedPicture most = Noisy(23, 19, format, 4, Noise::Leaning), picture = most;
            ApplyTo(most, {3, 0.0f, kMostFog});
            ApplyTo(picture, {3, 0.0f, fog});
            EXPECT_TRUE(Equal(picture, most)) << fog;
        }
}

// Where the wave's angle is no number, or keeps nothing of the picture but infinities, nothing is left of colour.
TEST(DreamGlow, AnEndlessShine_IsBlack)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture picture = Flat(20, 3, format, 90, 40), black = Flat(20, 3, format, 0, 40);
        ApplyTo(picture, {0, kEndless, 0.0f});
        EXPECT_TRUE(Near(picture, black, 0.0)) << FormatName(format);
    }
}

// --- floats beyond 0 to 1 -----------------------------------------------------------------------------

TEST(DreamGlow, BrightFloats_AreThePlainVersions)
{
    std::uint32_t seed = 900;
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const int radius : {0, 1, 4, 9}) {
            GuardedPicture picture = Noisy(27, 31, format, ++seed, Noise::Positive); // to 4
            const DreamGlow glow = {radius, 0.0f, 0.5f};
            const reference::Picture expected = Expected(picture, glow);
            ApplyTo(picture, glow);
            EXPECT_TRUE(reference::Matches(picture, expected, 0.0, 4 * kHazeError)) << radius;
        }
}

TEST(DreamGlow, NegativeAndVeryBrightFloats_ShineAsThePlainVersion)
{
    std::uint32_t seed = 950;
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const float reach : {-3.0f, 40.0f, 3000.0f, -1e6f}) {
            GuardedPicture picture = Noisy(37, 21, format, ++seed);
            for (int y = 0; y < 21; ++y)
                for (int x = 0; x < 37; ++x)
                    for (int c = 0; c < 3; ++c) {
                        const int place = PlaceOfColour(format, c);
                        picture.SetFloat(x, y, place, reach * picture.Float(x, y, place));
                    }
            ExpectThePlainVersion(picture, {0, 0.63f, 0.0f});
        }
}

/// Whether the colours are from 0 to 1.
bool IsShown(const GuardedPicture& picture, int x, int y)
{
    for (int c = 0; c < 3; ++c)
        if (const float v = picture.Float(x, y, PlaceOfColour(picture.Format(), c)); !(v >= 0 && v <= 1))
            return false;
    return true;
}

TEST(DreamGlow, SpecialFloats_ComeOutOfTheWaveAsColours)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        const GuardedPicture before = Noisy(61, 40, format, 7, Noise::Special), picture = before;
        ApplyTo(picture, {0, 0.5f, 0.0f});
        const int alpha = PlaceOfColour(format, 3);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 61; ++x) {
                EXPECT_TRUE(IsShown(picture, x, y)) << x << ", " << y;
                const float is = picture.Float(x, y, alpha), was = before.Float(x, y, alpha);
                EXPECT_TRUE(is == was || (std::isnan(is) && std::isnan(was)));
            }
    }
}

// The haze of a not-a-number reaches as far as the kernel does; there pixels become white, and none is left that
// is no number.
TEST(DreamGlow, NotANumber_IsGoneFromTheHazeAndHarmsNoneBeyondTheKernel)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const float special : {kNaN, kEndless, -kEndless}) {
            const DreamGlow glow = {6, 0.0f, 0.5f};
            GuardedPicture picture = Noisy(40, 30, format, 8);
            const reference::Picture untroubled = Expected(picture, glow);
            picture.SetFloat(20, 15, PlaceOfColour(format, 1), special);
            ApplyTo(picture, glow);
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 40; ++x)
                    for (int c = 0; c < 4; ++c) {
                        const float v = picture.Float(x, y, c);
                        ASSERT_TRUE(v <= 1.0f) << x << ", " << y;
                        if (std::max(std::abs(x - 20), std::abs(y - 15)) <= 3)
                            continue;
                        ASSERT_NEAR(static_cast<double>(v), untroubled.At(x, y, c), kHazeError)
                            << x << ", " << y;
                    }
        }
}

// --- memory -------------------------------------------------------------------------------------------

TEST(DreamGlow, TheHaze_AsksForTheRowsThatWaitFirst)
{
    // Of six taps three reach upward: the row in the middle waits for two more, and gives its place to the fourth.
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [height, waiting] : {std::pair{19, 4}, {3, 3}}) {
            FakeMemoryProvider memory;
            {
                MemoryAllocator allocator(&memory);
                ApplyTo(Noisy(23, height, format, 1), {5, 0.4f, 0.5f}, allocator);
            }
            ASSERT_FALSE(memory.Calls().empty());
            const MemoryCall& first = memory.Calls().front();
            EXPECT_EQ(first.kind, MemoryCall::AllocImage);
            EXPECT_EQ(first.width, 23);
            EXPECT_EQ(first.height, waiting);
            EXPECT_EQ(first.pixelBytes, IsFloatFormat(format) ? 16 : 4);
            EXPECT_EQ(memory.OpenBlocks(), 0u);
        }
}

/// Where a part lies in a picture.
struct Place {
    int x, y, width, height;
};

/// The part as it is when all of the picture glows, in pixels of its own.
void ExpectPartOfTheWhole(const GuardedPicture& picture, const DreamGlow& glow, const Place& part)
{
    const GuardedPicture whole = picture;
    ApplyTo(whole, glow);
    const GuardedPicture result(part.width, part.height, picture.Format(), {.slack = 16});
    const VideoFrame frame = picture.Frame(), resultFrame = result.Frame();
    FrameBuffer from, to;
    from.AttachFrame(&frame);
    to.AttachFrame(&resultFrame);
    MemoryAllocator memory;
    const PRDreamGlowEffect effect(glow.radius, glow.shine, glow.fog, memory);
    // Rows that run upward are counted in the order of memory.
    const int y = picture.Layout().upward ? picture.Height() - part.y - part.height : part.y;
    ASSERT_TRUE(effect.ApplyInto(from, part.x, part.y, to));
    result.Check();
    for (int row = 0; row < part.height; ++row)
        for (int x = 0; x < part.width; ++x)
            for (int c = 0; c < 4; ++c) {
                const int wholeRow = picture.Layout().upward ? y + part.height - 1 - row : y + row;
                if (IsFloatFormat(picture.Format())) {
                    ASSERT_NEAR(static_cast<double>(result.Float(x, row, c)),
                                static_cast<double>(whole.Float(part.x + x, wholeRow, c)),
                                ErrorOf(picture, glow))
                        << x << ", " << row;
                } else {
                    ASSERT_EQ(result.Byte(x, row, c), whole.Byte(part.x + x, wholeRow, c))
                        << x << ", " << row;
                }
            }
}

TEST(DreamGlow, ApplyInto_AnyPart_IsThatOfTheWholePicture)
{
    const Place parts[] = {{0, 0, 41, 37}, {0, 0, 41, 12}, {0, 30, 41, 7}, {5, 0, 9, 37},
                           {32, 0, 9, 37}, {13, 17, 3, 4}, {40, 36, 1, 1}, {0, 0, 2, 2}};
    for (const std::uint32_t format : kPictureFormats)
        for (const DreamGlow& glow : {DreamGlow{0, 0.0f, 0.5f},
                                      {6, 0.4f, 0.5f},
                                      {30, 0.0f, 0.9f},
                                      {7, 0.4f, 0.0f},
                                      {7, 0.0f, 0.0f},
                                      {-1, 0.4f, 0.5f},
                                      {32767, 0.4f, 0.5f}})
            for (const bool upward : {false, true}) {
                GuardedPicture picture =
                    Noisy(41, 37, format, 8, Noise::Uniform, {.slack = 16, .shift = 4, .upward = upward});
                picture.Freeze();
                for (const Place& part : parts)
                    ExpectPartOfTheWhole(picture, glow, part);
            }
}

TEST(DreamGlow, ApplyInto_APictureWithoutAnInside_IsThatOfTheWholePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const Place& part : {Place{0, 0, 4, 3}, {1, 1, 2, 2}, {3, 0, 1, 3}})
            ExpectPartOfTheWhole(Noisy(4, 3, format, 8), {5, 0.4f, 0.5f}, part);
}

TEST(DreamGlow, ApplyInto_WhatIsNoPartOfSuchAPicture_IsRefused)
{
    const GuardedPicture picture = Noisy(9, 7, PF_BGRA8, 1), result = Noisy(4, 3, PF_BGRA8, 2),
                         before = result;
    const VideoFrame frame = picture.Frame();
    FrameBuffer from;
    from.AttachFrame(&frame);
    MemoryAllocator memory;
    const PRDreamGlowEffect effect(5, 0.4f, 0.5f, memory);
    const auto apply = [&](int x, int y, std::uint32_t format) {
        VideoFrame resultFrame = result.Frame();
        resultFrame.format = format;
        FrameBuffer to;
        to.AttachFrame(&resultFrame);
        return effect.ApplyInto(from, x, y, to);
    };
    EXPECT_FALSE(apply(-1, 0, PF_BGRA8));
    EXPECT_FALSE(apply(0, -1, PF_BGRA8));
    EXPECT_FALSE(apply(6, 0, PF_BGRA8));
    EXPECT_FALSE(apply(0, 5, PF_BGRA8));
    EXPECT_FALSE(apply(kLargest, kLargest, PF_BGRA8));
    EXPECT_FALSE(apply(0, 0, PF_ARGB8));
    EXPECT_FALSE(apply(0, 0, PF_Packed8));
    EXPECT_TRUE(Equal(result, before));
    EXPECT_TRUE(apply(5, 4, PF_BGRA8));
}

TEST(DreamGlow, ApplyInto_WithoutMemory_MakesTheGlowOfAnEmptyPicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const float shine : {0.0f, 0.6f}) {
            MemoryHabits habits;
            habits.refuseFrom = 0;
            FakeMemoryProvider memory(habits);
            const GuardedPicture picture = Noisy(23, 19, format, 5), result = Noisy(7, 5, format, 6);
            reference::Picture expected = reference::Read(result);
            std::fill(expected.values.begin(), expected.values.end(), 0.0);
            reference::ApplyDreamGlow(expected, {0, shine, 0.0f});
            const VideoFrame frame = picture.Frame(), resultFrame = result.Frame();
            FrameBuffer from, to;
            from.AttachFrame(&frame);
            to.AttachFrame(&resultFrame);
            MemoryAllocator allocator(&memory);
            EXPECT_TRUE(PRDreamGlowEffect(5, shine, 0.5f, allocator).ApplyInto(from, 3, 4, to));
            EXPECT_TRUE(reference::Matches(result, expected, 0.0, IsFloatFormat(format) ? kWaveError : 0.0));
        }
}

/// What becomes of a picture whose haze fails: without a scratch picture nothing, with one it is emptied.
reference::Picture WithoutHaze(const GuardedPicture& picture, bool emptied, float shine)
{
    reference::Picture expected = reference::Read(picture);
    if (emptied)
        std::fill(expected.values.begin(), expected.values.end(), 0.0);
    reference::ApplyDreamGlow(expected, {0, shine, 0.0f});
    return expected;
}

void ExpectRefused(const GuardedPicture& picture, const MemoryHabits& habits, std::uint64_t refused,
                   int radius, float shine)
{
    FakeMemoryProvider memory(habits);
    const GuardedPicture result = picture;
    {
        MemoryAllocator allocator(&memory);
        ApplyTo(result, {radius, shine, 0.5f}, allocator);
    }
    ASSERT_GT(memory.Refused(), 0u);
    EXPECT_EQ(memory.OpenBlocks(), 0u);
    EXPECT_TRUE(reference::Matches(result, WithoutHaze(picture, refused > 0, shine), 0.0,
                                   IsFloatFormat(picture.Format()) ? kWaveError : 0.0))
        << FormatName(picture.Format()) << " refused " << refused;
}

TEST(DreamGlow, Kept_AHazeThatCannotBeMade_EmptiesThePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{23, 19}, {4, 3}}) // with and without an inside
            for (const float shine : {0.0f, 0.6f})
                for (const std::uint32_t fill : {0xA5A5A5A5u, 0x7FA5A5A5u}) {
                    const GuardedPicture picture = Noisy(width, height, format, 5);
                    FakeMemoryProvider counting;
                    {
                        MemoryAllocator allocator(&counting);
                        ApplyTo(GuardedPicture(picture), {5, shine, 0.5f}, allocator);
                    }
                    ASSERT_GT(counting.Asked(), 2u);
                    for (std::uint64_t n = 0; n < counting.Asked(); ++n) {
                        MemoryHabits only, from;
                        only.fill = from.fill = fill;
                        only.refuseOnly = from.refuseFrom = n;
                        ExpectRefused(picture, only, n, 5, shine);
                        ExpectRefused(picture, from, n, 5, shine);
                    }
                }
}

TEST(DreamGlow, ARadiusThatNoPictureHas_EmptiesThePicture)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::int32_t radius : {-1, -kLargest - 1, 32767, kLargest})
            for (const float shine : {0.0f, 0.6f}) {
                MemoryHabits habits;
                habits.fill = 0x7FA5A5A5;
                FakeMemoryProvider memory(habits);
                const GuardedPicture picture = Noisy(14, 12, format, 6);
                const reference::Picture expected = WithoutHaze(picture, true, shine);
                {
                    MemoryAllocator allocator(&memory);
                    ApplyTo(picture, {radius, shine, 0.5f}, allocator);
                }
                EXPECT_EQ(memory.Asked(), 1u);
                EXPECT_TRUE(
                    reference::Matches(picture, expected, 0.0, IsFloatFormat(format) ? kWaveError : 0.0))
                    << radius;
            }
}

TEST(DreamGlow, WhatTheMemoryHeldBefore_DoesNotShow)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{41, 37}, {4, 9}, {2, 2}})
            for (const int radius : {0, 1, 7, 50}) {
                GuardedPicture results[2] = {Noisy(width, height, format, 9),
                                             Noisy(width, height, format, 9)};
                for (int i = 0; i < 2; ++i) {
                    MemoryHabits habits;
                    habits.fill = i == 0 ? 0u : 0x7FA5A5A5u;
                    FakeMemoryProvider memory(habits);
                    MemoryAllocator allocator(&memory);
                    ApplyTo(results[i], {radius, 0.4f, 0.5f}, allocator);
                }
                EXPECT_TRUE(Equal(results[0], results[1]))
                    << width << " x " << height << " radius " << radius;
            }
}

// --- the wave in bytes --------------------------------------------------------------------------------

// A black pixel without an angle but the shine's own: shine 0.5 keeps 0.7, its wave is
// (sin(3.1415) * 0.8 + 1) / 2 = 0.500037, times 0.3 * 256 * 255 / 356 = 55.0112 is 27.5.
TEST(DreamGlow, Shine_OfBlack_IsTheWaveAlone)
{
    const GuardedPicture bytes = Flat(3, 3, PF_BGRA8, 0, 9);
    ApplyTo(bytes, {0, 0.5f, 0.0f});
    ExpectGrey(bytes, 1, 1, 27, 9);
    const GuardedPicture floats = Flat(3, 3, PF_BGRA32F, 0, 0);
    ApplyTo(floats, {0, 0.5f, 0.0f});
    EXPECT_NEAR(static_cast<double>(floats.Float(1, 1, 2)), 0.3 * 255 / 356 * 0.500037, 1e-6);
}

/// Every level beside every sum of the two others, in all three colours.
GuardedPicture EveryLevelAndSum(std::uint32_t format)
{
    GuardedPicture picture(256, 511, format);
    for (int y = 0; y < 511; ++y)
        for (int x = 0; x < 256; ++x) {
            const auto level = static_cast<std::uint8_t>(x), half = static_cast<std::uint8_t>(y / 2);
            const auto rest = static_cast<std::uint8_t>(y - y / 2);
            const auto alpha = static_cast<std::uint8_t>(x ^ y);
            y % 3 == 0       ? picture.SetColour(x, y, level, half, rest, alpha)
                : y % 3 == 1 ? picture.SetColour(x, y, half, level, rest, alpha)
                             : picture.SetColour(x, y, rest, half, level, alpha);
        }
    return picture;
}

// 0.8, 0.9 and 1.7 are among those whose levels single precision cannot tell apart.
TEST(DreamGlow, EveryLevelAndSum_ShinesAsThePlainVersion)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture picture = EveryLevelAndSum(format);
        for (const float shine :
             {1e-6f, 0.01f, 0.1f, 0.123f, 0.25f, 0.5f, 0.6123f, 0.75f, 0.777f, 0.8f, 0.9f, 1.0f, 1.6f, 1.7f})
            ExpectThePlainVersion(GuardedPicture(picture), {0, shine, 0.0f});
    }
}

// --- the rows, for every instruction set ----------------------------------------------------------------

class DreamGlowVariant : public testing::TestWithParam<CpuVariant> {
protected:
    void SetUp() override
    {
        if (!UseVariant(GetParam()))
            GTEST_SKIP() << "not on this processor, or not in this build";
    }
    void TearDown() override { UseVariant(m_before); }

    /// The same with the variant that every processor has.
    static GuardedPicture Baseline(const GuardedPicture& picture, const DreamGlow& glow)
    {
        UseVariant(CpuVariant::Baseline);
        GuardedPicture result = picture;
        ApplyTo(result, glow);
        UseVariant(GetParam());
        return result;
    }

private:
    CpuVariant m_before = CurrentVariant();
};

TEST_P(DreamGlowVariant, EveryWidth_GivesTheSameBits)
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 140; ++width)
            for (const DreamGlow& glow : {DreamGlow{3, 0.0f, 0.6f},
                                          {3, 0.777f, 0.0f},
                                          {3, 0.8f, 0.0f},
                                          {3, 5.0f, 0.0f},
                                          {0, 0.3f, 1.0f}}) {
                const Noise noise = width % 3 == 0 ? Noise::Leaning
                    : width % 3 == 1               ? Noise::Uniform
                                                   : Noise::Special;
                const GuardedPicture picture = Noisy(width, 3 + width % 5, format, ++seed, noise);
                const GuardedPicture expected = Baseline(picture, glow);
                ApplyTo(picture, glow);
                ASSERT_TRUE(Equal(picture, expected)) << FormatName(format) << " " << width;
            }
}

reference::EdgePixel PixelAt(const GuardedPicture& picture, int x, int y)
{
    const auto colour = [&](int c) {
        const int place = PlaceOfColour(picture.Format(), c);
        return IsFloatFormat(picture.Format()) ? static_cast<double>(picture.Float(x, y, place))
                                               : static_cast<double>(picture.Byte(x, y, place));
    };
    return {colour(0), colour(1), colour(2), colour(3)};
}

const DreamGlowKernels::Rows& RowsOf(std::uint32_t format)
{
    const DreamGlowKernels& kernels = DreamGlowKernelsFor(CurrentVariant());
    return format == PF_BGRA8  ? kernels.bgra8
        : format == PF_ARGB8   ? kernels.argb8
        : format == PF_BGRA32F ? kernels.bgra32f
                               : kernels.argb32f;
}

void ExpectFogRows(const GuardedPicture& picture, const GuardedPicture& blurred, float fog)
{
    const std::uint32_t format = picture.Format();
    const GlowFog look = {static_cast<int>(reference::GlowByteGain(fog)), reference::GlowFloatGain(fog),
                          0xFFFFFF};
    GuardedPicture result(picture.Width(), picture.Height(), format, picture.Layout());
    for (int y = 0; y < picture.Height(); ++y)
        RowsOf(format).fog(picture.Row(y), blurred.Row(y), result.Row(y), picture.Width(), look);
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x) {
            const reference::EdgePixel p = PixelAt(picture, x, y), is = PixelAt(result, x, y);
            reference::EdgePixel t = PixelAt(blurred, x, y);
            if (format == PF_BGRA32F)
                t.blue = p.blue;
            const reference::EdgePixel expected = IsFloatFormat(format)
                ? reference::GlowFloat(p, t, reference::GlowFloatGain(fog))
                : reference::GlowByte(p, t, reference::GlowByteGain(fog));
            ASSERT_TRUE(is.blue == expected.blue && is.green == expected.green && is.red == expected.red
                        && is.alpha == expected.alpha)
                << FormatName(format) << " fog " << fog << " at (" << x << ", " << y << "): " << is.red
                << ", expected " << expected.red;
        }
}

TEST_P(DreamGlowVariant, FogRows_AreThePlainVersionBitForBit)
{
    std::uint32_t seed = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (int width = 1; width <= 70; ++width)
            for (const float fog : {0.001f, 0.2f, 0.5f, 1.0f, 9.0f, kMostFog}) {
                PictureLayout layout;
                layout.guard = width % 2 == 0 ? Guard::PageEnd : Guard::PageStart;
                const Noise noise = width % 2 == 0 ? Noise::Uniform : Noise::Leaning;
                GuardedPicture picture = Noisy(width, 2, format, ++seed, noise, layout);
                GuardedPicture blurred = Noisy(width, 2, format, ++seed, noise, layout);
                picture.Freeze();
                blurred.Freeze();
                ExpectFogRows(picture, blurred, fog);
                if (HasFatalFailure())
                    return;
            }
}

// By hand: level 0 under a glow of (100 * 256) >> 8: blue 128, green 64, red 16. The pixel's own green is above
// the glow's already and comes down to it.
TEST_P(DreamGlowVariant, AColouredGlow_LiftsEachColourToItsOwn)
{
    const GlowFog look = {256, 1.0f, 0x00804010};
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        GuardedPicture picture(5, 1, format), blurred(5, 1, format), result(5, 1, format);
        picture.Fill(20, 0, 2, 7);
        blurred.Fill(101, 101, 101, 0); // a level of (101 * 255) >> 8 = 100
        RowsOf(format).fog(picture.Row(0), blurred.Row(0), result.Row(0), 5, look);
        // The picture's level is (30 * 20 + 76 * 2) >> 8 = 2: 98 to lift.
        EXPECT_EQ(PixelAt(result, 4, 0).blue, 20 + ((98 * 128) >> 8));
        EXPECT_EQ(PixelAt(result, 4, 0).green, (98 * 64) >> 8);
        EXPECT_EQ(PixelAt(result, 4, 0).red, 2 + ((98 * 16) >> 8));
        EXPECT_EQ(PixelAt(result, 4, 0).alpha, 100);
        picture.Fill(200, 200, 200, 255);
        RowsOf(format).fog(picture.Row(0), blurred.Row(0), result.Row(0), 5, look);
        EXPECT_EQ(PixelAt(result, 4, 0).blue, 128);
        EXPECT_EQ(PixelAt(result, 4, 0).green, 64);
        EXPECT_EQ(PixelAt(result, 4, 0).red, 16);
        EXPECT_EQ(PixelAt(result, 4, 0).alpha, 255);
    }
}

// By hand: an even table of 100 and a keep of a half, over 60 40 20.
TEST_P(DreamGlowVariant, AColouredWave_AddsItsSharesToWhatIsKept)
{
    const std::vector<double> waves(GlowShine::kSums, 100.0);
    GlowShine look;
    look.waves = waves.data();
    look.keep = 0.5;
    look.blue = 0.75;
    look.green = 0.5;
    look.red = 3.0;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (int width = 1; width <= 40; ++width) {
            PictureLayout layout;
            layout.guard = width % 2 == 0 ? Guard::PageEnd : Guard::PageStart;
            GuardedPicture picture(width, 1, format, layout);
            picture.Fill(60, 41, 20, 7);
            RowsOf(format).shine(picture.Row(0), picture.Row(0), width, look); // in place
            const reference::EdgePixel last = PixelAt(picture, width - 1, 0);
            EXPECT_EQ(last.blue, 105);
            EXPECT_EQ(last.green, 70); // 70.5, toward zero
            EXPECT_EQ(last.red, 255);
            EXPECT_EQ(last.alpha, 7);
        }
}

// 100 * (1 - 2^-30) is less than 100 by no more than a ten-millionth.
TEST_P(DreamGlowVariant, AColourJustBelowALevel_IsTheLevelBelow)
{
    const std::vector<double> waves(GlowShine::kSums, 0.0);
    GlowShine look;
    look.waves = waves.data();
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const double missing : {0.0, 0x1p-30}) {
            look.keep = 1.0 - missing;
            GuardedPicture picture(5, 1, format);
            picture.Fill(100, 255, 0, 7);
            RowsOf(format).shine(picture.Row(0), picture.Row(0), 5, look);
            const int less = missing > 0.0 ? 1 : 0;
            EXPECT_EQ(PixelAt(picture, 4, 0).blue, 100 - less);
            EXPECT_EQ(PixelAt(picture, 4, 0).green, 255 - less);
            EXPECT_EQ(PixelAt(picture, 4, 0).red, 0);
        }
}

INSTANTIATE_TEST_SUITE_P(Variants, DreamGlowVariant,
                         testing::Values(CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512));

} // namespace
} // namespace kelmora
