#include "image/primitives/warp.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/primitives/warps.h"

namespace kelmora {
namespace {

using reference::Picture;
using reference::Point;
using Affine = reference::AffineMap;

constexpr std::uint32_t kFormats[] = {PF_Mask8, PF_BGRA8, PF_BGRA32F}; // one for each member

PxStatus WarpAffine(const GuardedPicture& src, const GuardedPicture& dst, const Affine& map,
                    int code = pxLinear)
{
    return CallOn(src, WholeOf(src), dst, WholeOf(dst), map, static_cast<std::uint32_t>(code)).RunAffine();
}

/// Turned by `degrees` and zoomed about `centre`, which comes to stand at `to`.
Affine Turned(double degrees, double xZoom, double yZoom, Point centre, Point to)
{
    const double c = std::cos(degrees * kPi / 180), s = std::sin(degrees * kPi / 180);
    Affine map = {{{xZoom * c, -yZoom * s, 0}, {xZoom * s, yZoom * c, 0}}};
    map[0][2] = to.x - map[0][0] * centre.x - map[0][1] * centre.y;
    map[1][2] = to.y - map[1][0] * centre.x - map[1][1] * centre.y;
    return map;
}

Affine Shift(double x, double y)
{
    return {{{1, 0, x}, {0, 1, y}}};
}

void CheckAffine(GuardedPicture& src, const PxRect& from, GuardedPicture& dst, const PxRect& to,
                 const Affine& map, int code, Noise noise = Noise::Uniform)
{
    if (testing::Test::HasFatalFailure())
        return; // one message is enough
    SCOPED_TRACE(Words(map, src, from, to, static_cast<std::uint32_t>(code)));
    src.Thaw();
    src.FillNoise(1, noise);
    src.Freeze();
    dst.FillNoise(2);
    Picture expected = reference::Read(dst);
    ASSERT_TRUE(reference::WarpAffine(reference::Read(src), Plain(from), expected, Plain(to), map, code));
    CheckVariants(src, dst, expected, ToleranceOf(src.Format(), static_cast<std::uint32_t>(code)),
                  [&](const GuardedPicture& result) {
                      return CallOn(src, from, result, to, map, static_cast<std::uint32_t>(code)).RunAffine();
                  });
}

/// A plane of one row, mapped along x alone; turned, along y.
std::vector<int> MappedRow(const std::vector<int>& row, double zoom, double shift, int length, int code,
                           bool turned = false)
{
    const int width = static_cast<int>(row.size());
    GuardedPicture src(turned ? 1 : width, turned ? width : 1, PF_Mask8);
    GuardedPicture dst(turned ? 1 : length, turned ? length : 1, PF_Mask8);
    for (int i = 0; i < width; ++i)
        src.SetByte(turned ? 0 : i, turned ? i : 0, 0,
                    static_cast<std::uint8_t>(row[static_cast<std::size_t>(i)]));
    dst.FillBytes(kUntouched);
    const Affine along = {{{zoom, 0, shift}, {0, 1, 0}}}, down = {{{1, 0, 0}, {0, zoom, shift}}};
    EXPECT_EQ(WarpAffine(src, dst, turned ? down : along, code), pxOk);
    std::vector<int> result;
    for (int i = 0; i < length; ++i)
        result.push_back(dst.Byte(turned ? 0 : i, turned ? i : 0));
    return result;
}

using Row = std::vector<int>;

// --- affine: numbers worked out by hand -------------------------------------------------------------------

TEST(WarpAffine, Identity_CopiesEverySizeExactly)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (int width = 1; width <= 40; ++width)
                for (const int height : {1, 2, 3, 9, 41 - width}) {
                    GuardedPicture src(width, height, format), dst(width, height, format);
                    src.FillNoise(3);
                    ForEachVariant([&] {
                        dst.FillNoise(4);
                        ASSERT_EQ(WarpAffine(src, dst, Shift(0, 0), code), pxOk);
                        ASSERT_TRUE(Equal(dst, src)) << format << ", code " << code << ", " << width;
                    });
                }
}

TEST(WarpAffine, WholeShifts_MovePixelsAndLeaveTheRest)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const int dx : {-40, -20, -3, 0, 1, 7, 22})
                for (const int dy : {-11, -2, 0, 5, 30}) {
                    GuardedPicture src(21, 11, format), dst(30, 14, format);
                    src.FillNoise(3);
                    dst.FillNoise(4);
                    Picture expected = reference::Read(dst);
                    const Picture from = reference::Read(src);
                    for (int y = 0; y < 11; ++y)
                        for (int x = 0; x < 21; ++x)
                            for (int c = 0; c < from.channels; ++c)
                                if (x + dx >= 0 && x + dx < 30 && y + dy >= 0 && y + dy < 14)
                                    expected.At(x + dx, y + dy, c) = from.At(x, y, c);
                    CheckVariants(src, dst, expected, 0.0, [&](const GuardedPicture& result) {
                        return WarpAffine(src, result, Shift(dx, dy), code);
                    });
                }
}

TEST(WarpAffine, HalfShift_LiesBetweenPixelsAndRoundsHalvesUp)
{
    // Pixel x shows what stood at x - 0.5; the first and the last one would show what there is not.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(MappedRow({0, 100, 201}, 1, 0.5, 5, pxLinear, turned),
                  (Row{kUntouched, 50, 151, kUntouched, kUntouched}));
        EXPECT_EQ(MappedRow({0, 100, 201}, 1, -0.5, 3, pxLinear, turned), (Row{50, 151, kUntouched}));
        EXPECT_EQ(MappedRow({1, 2, 4}, 1, 0.5, 3, pxLinear, turned), (Row{kUntouched, 2, 3}));
    }
}

TEST(WarpAffine, ShiftsOfBytes_CountIn256thsTiesToEven)
{
    // 0.5, 1.5 and 2.5 steps of 1/256 become 0, 2 and 2; a step is one level here.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(MappedRow({0, 255, 0}, 1, -0.5 / 256, 2, pxLinear, turned), (Row{0, 255}));
        EXPECT_EQ(MappedRow({0, 255, 0}, 1, -1.5 / 256, 2, pxLinear, turned), (Row{2, 253}));
        EXPECT_EQ(MappedRow({0, 255, 0}, 1, -2.5 / 256, 2, pxLinear, turned), (Row{2, 253}));
        EXPECT_EQ(MappedRow({0, 255, 0}, 1, -3.0 / 256, 2, pxLinear, turned), (Row{3, 252}));
        // The other way: 255 - 2 steps into the pixel before.
        EXPECT_EQ(MappedRow({0, 255, 0}, 1, 1.5 / 256, 3, pxLinear, turned), (Row{kUntouched, 253, 2}));
    }
}

TEST(WarpAffine, PositionsOfBytes_CountIn256thsTiesToEven)
{
    // Zoomed by 512, pixel x stands at x / 512: half a step apart. 255 steps over 256 of a level each, rounded.
    const Row expected = {0, 0, 1, 2, 2, 2, 3, 4, 4, 4, 5};
    for (const bool turned : {false, true})
        EXPECT_EQ(MappedRow({0, 255}, 512, 0, 11, pxLinear, turned), expected);
}

TEST(WarpAffine, Zoom_SpreadsPixelsEvenly)
{
    for (const bool turned : {false, true}) {
        EXPECT_EQ(MappedRow({0, 100, 51}, 2, 0, 6, pxLinear, turned), (Row{0, 50, 100, 76, 51, kUntouched}));
        EXPECT_EQ(MappedRow({0, 100, 50}, 2, 1, 6, pxLinear, turned), (Row{kUntouched, 0, 50, 100, 75, 50}));
        EXPECT_EQ(MappedRow({1, 2, 3, 4, 5, 6, 7}, 0.5, 0, 5, pxLinear, turned),
                  (Row{1, 3, 5, 7, kUntouched}));
        EXPECT_EQ(MappedRow({0, 30, 60}, 3, -3, 4, pxLinear, turned), (Row{30, 40, 50, 60}));
    }
}

TEST(WarpAffine, MirroredRow_RunsBackward)
{
    for (const bool turned : {false, true})
        for (const int code : kCodes) {
            EXPECT_EQ(MappedRow({10, 20, 30, 40}, -1, 3, 5, code, turned), (Row{40, 30, 20, 10, kUntouched}));
            EXPECT_EQ(MappedRow({10, 20, 30, 40}, -1, 4, 5, code, turned), (Row{kUntouched, 40, 30, 20, 10}));
        }
}

TEST(WarpAffine, Nearest_AddsAHalfAndTruncates)
{
    // Positions x / 2 and x / 4.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(MappedRow({10, 20, 30}, 2, 0, 6, pxNearest, turned), (Row{10, 20, 20, 30, 30, kUntouched}));
        EXPECT_EQ(MappedRow({10, 20}, 4, 0, 6, pxNearest, turned), (Row{10, 10, 20, 20, 20, kUntouched}));
        EXPECT_EQ(MappedRow({10, 20, 30}, 1, 0.5, 4, pxNearest, turned),
                  (Row{kUntouched, 20, 30, kUntouched}));
    }
}

TEST(WarpAffine, Cubic_IsCatmullRomWithEdgePixelsRepeated)
{
    // Half way the taps are -1/16, 9/16, 9/16, -1/16.
    // At 0.5: (9 * 0 + 9 * 16 - 64) / 16 = 5; at 1.5: (9 * 16 + 9 * 64) / 16 = 45;
    // at 2.5: (-16 + 9 * 64) / 16 = 35.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(MappedRow({0, 16, 64, 0}, 2, 0, 8, pxCubic, turned),
                  (Row{0, 5, 16, 45, 64, 35, 0, kUntouched}));
        EXPECT_EQ(MappedRow({0, 16, 64, 0}, 1, 0.5, 4, pxCubic, turned), (Row{kUntouched, 5, 45, 35}));
    }
}

TEST(WarpAffine, CubicBytes_RoundTiesToEvenAndSaturate)
{
    // (9 (b + c) - (a + d)) / 16 of a, b, c, d: 8, 24 and 40 over 16.
    for (const bool turned : {false, true}) {
        EXPECT_EQ(MappedRow({1, 1, 0, 0}, 1, -0.5, 2, pxCubic, turned)[1], 0);
        EXPECT_EQ(MappedRow({3, 3, 0, 0}, 1, -0.5, 2, pxCubic, turned)[1], 2);
        EXPECT_EQ(MappedRow({5, 5, 0, 0}, 1, -0.5, 2, pxCubic, turned)[1], 2);
        EXPECT_EQ(MappedRow({0, 255, 255, 0}, 2, 0, 7, pxCubic, turned),
                  (Row{0, 128, 255, 255, 255, 128, 0}));
        EXPECT_EQ(MappedRow({0, 0, 255, 255}, 2, 0, 7, pxCubic, turned), (Row{0, 0, 0, 128, 255, 255, 255}));
    }
}

TEST(WarpAffine, LinearBytes_RoundOnceForBothAxes)
{
    // Half way between all four; a row rounded by itself would make 1 of the first.
    const auto middle = [](const std::array<std::uint8_t, 4>& pixels) {
        GuardedPicture src(2, 2, PF_Mask8), dst(1, 1, PF_Mask8);
        for (int i = 0; i < 4; ++i)
            src.SetByte(i % 2, i / 2, 0, pixels[static_cast<std::size_t>(i)]);
        EXPECT_EQ(WarpAffine(src, dst, Shift(-0.5, -0.5)), pxOk);
        return static_cast<int>(dst.Byte(0, 0));
    };
    EXPECT_EQ(middle({0, 1, 0, 0}), 0);
    EXPECT_EQ(middle({0, 1, 1, 0}), 1);
    EXPECT_EQ(middle({255, 254, 255, 255}), 255);
    EXPECT_EQ(middle({255, 254, 254, 255}), 255);
    EXPECT_EQ(middle({255, 254, 254, 254}), 254);
}

TEST(WarpAffine, QuarterTurnsAndMirrors_MovePixelsExactly)
{
    struct {
        Affine map;
        int width, height; // of the result of 7 x 4
        int x[3], y[3];    // the source's position: of x, of y, and a constant
    } const cases[] = {
        {{{{0, -1, 3}, {1, 0, 0}}}, 4, 7, {0, 1, 0}, {-1, 0, 3}},
        {{{{0, 1, 0}, {-1, 0, 6}}}, 4, 7, {0, -1, 6}, {1, 0, 0}},
        {{{{-1, 0, 6}, {0, -1, 3}}}, 7, 4, {-1, 0, 6}, {0, -1, 3}},
        {{{{1, 0, 0}, {0, -1, 3}}}, 7, 4, {1, 0, 0}, {0, -1, 3}},
        {{{{0, 1, 0}, {1, 0, 0}}}, 4, 7, {0, 1, 0}, {1, 0, 0}},
    };
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const auto& one : cases) {
                GuardedPicture src(7, 4, format), dst(one.width, one.height, format);
                src.FillNoise(3);
                const Picture from = reference::Read(src);
                Picture expected = reference::Read(dst);
                for (int y = 0; y < one.height; ++y)
                    for (int x = 0; x < one.width; ++x)
                        for (int c = 0; c < from.channels; ++c)
                            expected.At(x, y, c) = from.At(one.x[0] * x + one.x[1] * y + one.x[2],
                                                           one.y[0] * x + one.y[1] * y + one.y[2], c);
                CheckVariants(src, dst, expected, 0.0, [&](const GuardedPicture& result) {
                    return WarpAffine(src, result, one.map, code);
                });
            }
}

TEST(WarpAffine, Shear_SlidesRows)
{
    // x' = x + y: row y stands y pixels farther right.
    for (const int code : kCodes) {
        GuardedPicture src(3, 3, PF_Mask8), dst(5, 3, PF_Mask8);
        for (int i = 0; i < 9; ++i)
            src.SetByte(i % 3, i / 3, 0, static_cast<std::uint8_t>(10 * (i + 1)));
        dst.FillBytes(kUntouched);
        ASSERT_EQ(WarpAffine(src, dst, {{{1, 1, 0}, {0, 1, 0}}}, code), pxOk);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x)
                EXPECT_EQ(dst.Byte(x, y), x < y || x >= y + 3 ? kUntouched : 10 * (3 * y + x - y + 1));
    }
}

TEST(WarpAffine, PositionsAThousandthOutside_StillCount)
{
    // The edge pixel as far as 1/1000 beyond it, on all four sides, of shifts and of zooms.
    for (const double zoom : {1.0, 2.0, -2.0, 3.5})
        for (const bool turned : {false, true})
            for (const int code : kCodes) {
                const auto at = [&](double position) { // with that one shown at pixel 5
                    return MappedRow({100, 150, 200}, zoom, 5 - position * zoom, 11, code, turned)[5];
                };
                EXPECT_EQ(at(-0.0009), 100) << zoom << ", code " << code;
                EXPECT_EQ(at(-0.0011), kUntouched) << zoom << ", code " << code;
                EXPECT_EQ(at(2.0009), 200) << zoom << ", code " << code;
                EXPECT_EQ(at(2.0011), kUntouched) << zoom << ", code " << code;
            }
}

TEST(WarpAffine, MapsWithinAMillionthOfTheIdentity_AreShifts)
{
    // At the far end of a ramp of 1900 floats 0.9 millionths would be 0.0017 of a pixel.
    GuardedPicture src(1900, 2, PF_BGRA32F), dst(1900, 2, PF_BGRA32F);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 1900; ++x)
            for (int c = 0; c < 4; ++c)
                src.SetFloat(x, y, c, static_cast<float>(x));
    for (const double off : {0.9e-6, -0.9e-6}) {
        for (const Affine& map : {Affine{{{1 + off, 0, 0}, {0, 1, 0}}},
                                  {{{1, off, 0}, {0, 1, 0}}},
                                  {{{1, 0, 0}, {off, 1, 0}}},
                                  {{{1, 0, 0}, {0, 1 + off, 0}}}}) {
            dst.FillFloat(-1, -1, -1, -1);
            ASSERT_EQ(WarpAffine(src, dst, map), pxOk);
            EXPECT_TRUE(Equal(dst, src)) << off;
        }
    }
    ASSERT_EQ(WarpAffine(src, dst, {{{1 + 2e-6, 0, 0}, {0, 1, 0}}}), pxOk);
    EXPECT_NEAR(static_cast<double>(dst.Float(1000, 0)), 999.998, 1e-4);
}

TEST(WarpAffine, LinearFloats_AreNotClampedOrRounded)
{
    GuardedPicture src(2, 1, PF_BGRA32F), dst(5, 1, PF_BGRA32F);
    for (int c = 0; c < 4; ++c) {
        src.SetFloat(0, 0, c, -3.0f);
        src.SetFloat(1, 0, c, 5.0f + static_cast<float>(c));
    }
    ForEachVariant([&] {
        ASSERT_EQ(WarpAffine(src, dst, {{{4, 0, 0}, {0, 1, 0}}}), pxOk);
        for (int x = 0; x < 5; ++x)
            for (int c = 0; c < 4; ++c)
                EXPECT_EQ(dst.Float(x, 0, c), -3.0f + static_cast<float>(x) * static_cast<float>(8 + c) / 4);
    });
}

// --- affine: against the plain version --------------------------------------------------------------------

/// Of all kinds, for a picture of that size.
std::vector<Affine> MapsFor(int width, int height)
{
    const Point middle = {(width - 1) / 2.0, (height - 1) / 2.0};
    const Point beside = {middle.x + 1.37, middle.y - 0.61};
    std::vector<Affine> maps = {
        Shift(0.3, 0),
        Shift(0, -0.7),
        Shift(-2.123456, 1.987654),
        Shift(width - 1.0, 0.25),
        Turned(0, 2, 2, middle, middle),
        Turned(0, 1.5, 0.5, middle, beside),
        Turned(0, 1.0003, 0.9997, middle, middle),
        Turned(0, -1.25, 0.8, middle, middle),
        Turned(180, 1, 1.1, middle, beside),
        Turned(90, 1, 1, middle, beside),
        {{{1, 0.4, -1}, {0, 1, 0}}},
        {{{1, 0, 0}, {-0.6, 1, 2}}},
        {{{0.9, 0.3, 0.5}, {0.5, -1.2, height - 1.0}}},
        {{{7, 0, -3 * middle.x}, {0, 0.3, middle.y}}},
        {{{0.02, 0, middle.x}, {0, 0.02, middle.y}}},
    };
    for (const double degrees : {0.001, 3.0, 17.5, 45.0, 123.0, 201.0, 300.0, 359.0})
        maps.push_back(Turned(degrees, 1 + degrees / 400, 1.3 - degrees / 500, middle, beside));
    return maps;
}

TEST(WarpAffine, EveryMemberCodeWidthAndHeight_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (int width = 1; width <= 40; ++width)
                for (const int height : {width, 41 - width, 1 + 7 * width % 13}) {
                    const std::vector<Affine> maps = MapsFor(width, height);
                    GuardedPicture src(width, height, format), dst(width, height, format);
                    const auto pick = static_cast<std::size_t>(width * 5 + height + code);
                    for (std::size_t i = 0; i < 4; ++i)
                        CheckAffine(src, WholeOf(src), dst, WholeOf(dst), maps[(pick + i * 6) % maps.size()],
                                    code);
                }
}

TEST(WarpAffine, EveryMap_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Affine& map : MapsFor(37, 29))
                for (const Noise noise : {Noise::Uniform, Noise::Leaning}) {
                    GuardedPicture src(37, 29, format), dst(53, 31, format);
                    CheckAffine(src, WholeOf(src), dst, WholeOf(dst), map, code, noise);
                }
}

TEST(WarpAffine, EveryLayout_MatchesThePlainVersion)
{
    const std::vector<Affine> maps = MapsFor(19, 13);
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Affine& map : maps)
                ForEachLayout([&](const PictureLayout& layout) {
                    GuardedPicture src(19, 13, format, layout), dst(23, 17, format, layout);
                    CheckAffine(src, WholeOf(src), dst, WholeOf(dst), map, code);
                });
}

TEST(WarpAffine, UnreadablePagesAround_AreNeverTouched)
{
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Guard guard : {Guard::PageStart, Guard::PageEnd})
                for (const int width : {1, 2, 3, 5, 8, 17, 33})
                    for (const Affine& map : MapsFor(width, 7)) {
                        GuardedPicture src(width, 7, format, {.guard = guard}),
                            dst(width, 7, format, {.guard = guard});
                        CheckAffine(src, WholeOf(src), dst, WholeOf(dst), map, code);
                    }
}

// Between rows that are not there nothing is interpolated, whatever weight it would have.
TEST(WarpAffine, SourcesOneRowHigh_AreReadAlone)
{
    const Affine leaning = {{{1.0, 0.3, 0.25}, {0.0, 1.0, 0.0}}};
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Guard guard : {Guard::PictureStart, Guard::PictureEnd})
                for (const int width : {1, 2, 5, 17, 33}) {
                    GuardedPicture src(width, 1, format, {.guard = guard}),
                        dst(width + 1, 2, format, {.guard = guard});
                    CheckAffine(src, WholeOf(src), dst, WholeOf(dst), leaning, code);
                }
}

/// Of 0 and 8 above 16 and 32, a quarter to the right and half way down: 2 and 20 make 11.
template <class T>
void CheckWideSource(std::uint32_t format)
{
    constexpr int width = 1 << 22, row = 4 * width;
    const std::unique_ptr<T, decltype(&std::free)> memory(
        static_cast<T*>(std::calloc(std::size_t{2} * row, sizeof(T))), &std::free);
    ASSERT_TRUE(memory);
    T* const upperLeft = memory.get() + std::ptrdiff_t{4} * 1000;
    std::fill_n(upperLeft + 4, 4, T{8});
    std::fill_n(upperLeft + row, 4, T{16});
    std::fill_n(upperLeft + row + 4, 4, T{32});
    constexpr int pixel = 4 * sizeof(T), step = width * pixel;
    constexpr double map[3][3] = {{2, 0, -2000.5}, {0, 1, -0.5}, {0, 0, 1}};
    for (const bool affine : {true, false}) {
        T dst[4] = {};
        const WarpCall call = {format, memory.get(), width,        2,   step,    {0, 0, width, 2},
                               dst,    pixel,        {0, 0, 1, 1}, map, pxLinear};
        ASSERT_EQ(affine ? call.RunAffine() : call.RunQuad(), pxOk);
        for (const T value : dst)
            EXPECT_EQ(value, T{11}) << affine;
    }
}

TEST(Warps, SourcesTooWideForTheLoops_AreInterpolatedPixelByPixel)
{
    CheckWideSource<std::uint8_t>(PF_BGRA8);
    CheckWideSource<float>(PF_BGRA32F);
}

TEST(WarpAffine, Regions_AreTakenAndWrittenAlone)
{
    const PxRect from[] = {{0, 0, 30, 20}, {4, 3, 11, 9},   {29, 19, 1, 1},
                           {5, 19, 9, 9},  {12, 2, 1, 100}, {20, 10, INT_MAX, INT_MAX}};
    const PxRect to[] = {{0, 0, 35, 25}, {3, 2, 20, 11}, {34, 24, 1, 1}, {0, 24, 35, 1}, {17, 0, 1, 25}};
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const PxRect& source : from)
                for (const PxRect& target : to)
                    for (const Affine& map : {Shift(0, 0), Shift(2.3, -1.6), Shift(-3, 4),
                                              Turned(0, 1.4, 1.9, {15, 10}, {16, 12}),
                                              Turned(33, 1.7, 1.2, {15, 10}, {17, 12})}) {
                        GuardedPicture src(30, 20, format), dst(35, 25, format);
                        CheckAffine(src, source, dst, target, map, code);
                    }
}

TEST(WarpAffine, RandomMaps_MatchThePlainVersion)
{
    std::mt19937 random(7);
    const auto between = [&](double low, double high) { return low + (high - low) * Unit(random); };
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (int round = 0; round < 150; ++round) {
                GuardedPicture src(static_cast<int>(1 + random() % 40), static_cast<int>(1 + random() % 40),
                                   format);
                GuardedPicture dst(static_cast<int>(1 + random() % 80), static_cast<int>(1 + random() % 40),
                                   format);
                const double size = std::pow(10.0, between(-1, 1));
                Affine map = {{{between(-size, size), between(-size, size), 0},
                               {between(-size, size), between(-size, size), 0}}};
                // Some pixel of the source comes to stand on some pixel of the destination.
                const Point from = {between(0, src.Width() - 1), between(0, src.Height() - 1)};
                map[0][2] = between(0, dst.Width() - 1) - map[0][0] * from.x - map[0][1] * from.y;
                map[1][2] = between(0, dst.Height() - 1) - map[1][0] * from.x - map[1][1] * from.y;
                CheckAffine(src, WholeOf(src), dst, WholeOf(dst), map, code);
            }
}

TEST(WarpAffine, Linear_IsCloseToTheExactMean)
{
    // Half a step of 1/256 per axis is at most 255 / 512 of a level, and the rounding half a level.
    for (const std::uint32_t format : kFormats)
        for (const Affine& map : MapsFor(37, 29)) {
            GuardedPicture src(37, 29, format), dst(37, 29, format);
            src.FillNoise(3, Noise::Leaning);
            const Picture from = reference::Read(src);
            const std::optional<Affine> back = reference::Inverse(map);
            ASSERT_TRUE(back);
            ASSERT_EQ(WarpAffine(src, dst, map), pxOk);
            const Picture result = reference::Read(dst);
            for (int y = 0; y < 29; ++y)
                for (int x = 0; x < 37; ++x) {
                    const Point at = reference::Mapped(*back, {1.0 * x, 1.0 * y});
                    if (!reference::IsInside({0, 0, 37, 29}, at))
                        continue;
                    for (int c = 0; c < from.channels; ++c) {
                        const double exact =
                            reference::ExactSample(from, {0, 0, 37, 29}, at, c, reference::kLinear);
                        ASSERT_NEAR(result.At(x, y, c), exact, from.floats ? 1e-6 : 1.5) << x << ", " << y;
                    }
                }
        }
}

TEST(WarpAffine, SpecialFloats_AreTheSameInEveryVariant)
{
    for (const int code : kCodes)
        for (const Affine& map : MapsFor(21, 17)) {
            GuardedPicture src(21, 17, PF_BGRA32F);
            src.FillNoise(5, Noise::Special);
            std::optional<Picture> first;
            ForEachVariant([&] {
                GuardedPicture dst(24, 17, PF_BGRA32F);
                ASSERT_EQ(WarpAffine(src, dst, map, code), pxOk);
                if (!first)
                    first = reference::Read(dst);
                ASSERT_TRUE(reference::Matches(dst, *first)) << "code " << code;
            });
        }
}

TEST(WarpAffine, NearestFloats_MoveBitsOfEveryKind)
{
    for (const Affine& map : MapsFor(21, 17)) {
        GuardedPicture src(21, 17, PF_BGRA32F), dst(24, 17, PF_BGRA32F);
        CheckAffine(src, WholeOf(src), dst, WholeOf(dst), map, pxNearest, Noise::Special);
    }
}

TEST(WarpAffine, EnormousAndTinyMaps_MatchThePlainVersion)
{
    const Affine maps[] = {Shift(1e9, 0),
                           Shift(0, -1e18),
                           Shift(1e90, -1e90),
                           Shift(1e-300, -1e-300),
                           {{{1e9, 0, 0}, {0, 1e9, 0}}},
                           {{{1e-9, 0, 3}, {0, 1e-9, 4}}},
                           {{{1e90, 0, 0}, {0, 1e90, 0}}},
                           {{{1e-90, 0, 1}, {0, 1e-90, 2}}},
                           {{{1e9, 1, -5e8}, {-1, 1e-9, 0}}},
                           {{{3e9, 4e9, 0}, {-4e9, 3e9, 0}}},
                           {{{1, 1e12, 0}, {0, 1, 2}}},
                           {{{2147483648.0, 0, 0}, {0, 1, 0}}},
                           {{{1, 0, 2147483648.0}, {0, 1, 0}}},
                           {{{1, 0, -2147483649.0}, {0, 1, 4294967296.0}}}};
    for (const std::uint32_t format : kFormats)
        for (const int code : kCodes)
            for (const Affine& map : maps) {
                GuardedPicture src(13, 9, format), dst(17, 11, format);
                CheckAffine(src, WholeOf(src), dst, WholeOf(dst), map, code);
            }
}

// --- affine: what is refused ------------------------------------------------------------------------------

const Affine kStill = Shift(0, 0);

class WarpAffineRefusals : public testing::TestWithParam<std::uint32_t> {
protected:
    WarpAffineRefusals() : m_src(9, 8, GetParam()), m_dst(12, 10, GetParam())
    {
        m_src.FillNoise(1);
        m_dst.FillNoise(2);
        m_dst.Freeze();
    }

    ~WarpAffineRefusals() override { m_dst.Check(); }

    /// A call that would work.
    WarpCall Good() const { return CallOn(m_src, WholeOf(m_src), m_dst, WholeOf(m_dst), kStill, pxLinear); }

    GuardedPicture m_src, m_dst;
};

TEST_P(WarpAffineRefusals, EveryBadArgumentInTurn_HasItsStatus)
{
    ForEachBadCall(Good(), m_src.Width() * m_src.PixelBytes(), m_dst.Width() * m_dst.PixelBytes(),
                   [](const WarpCall& call, PxStatus status) { EXPECT_EQ(call.RunAffine(), status); });
    EXPECT_EQ(pxRegionOutsideSource, 29);
}

TEST_P(WarpAffineRefusals, UnknownInterpolations_AreRefused)
{
    for (const int bad : {0, 3, 5, 6, 7, 8, 16, 32, -1, INT_MIN, INT_MAX, INT_MIN + pxLinear}) {
        WarpCall call = Good();
        call.code = static_cast<std::uint32_t>(bad);
        EXPECT_EQ(call.RunAffine(), pxBadInterpolation) << bad;
    }
}

TEST_P(WarpAffineRefusals, MapsWithoutAFiniteInverse_AreDegenerate)
{
    const Affine maps[] = {{{{0, 0, 0}, {0, 0, 0}}},           {{{1, 0, 0}, {0, 0, 0}}},
                           {{{0, 0, 0}, {0, 1, 0}}},           {{{1, 2, 3}, {2, 4, 5}}},
                           {{{3, -1, 0}, {-6, 2, 0}}},         {{{0, 1, 0}, {0, 1, 0}}},
                           {{{1e-310, 0, 0}, {0, 1e-310, 0}}}, {{{1e300, 0, 0}, {0, 1e300, 0}}}};
    for (const Affine& map : maps) {
        WarpCall call = CallOn(m_src, WholeOf(m_src), m_dst, WholeOf(m_dst), map, pxLinear);
        for (const int code : kCodes) {
            call.code = static_cast<std::uint32_t>(code);
            EXPECT_EQ(call.RunAffine(), pxDegenerateWarp) << testing::PrintToString(map);
        }
    }
}

TEST_P(WarpAffineRefusals, CoefficientsThatAreNotFinite_AreDegenerate)
{
    for (const double bad : {kNotANumber, kInfinity, -kInfinity})
        for (std::size_t i = 0; i < 6; ++i)
            for (const Affine& good : {Shift(0, 0), Turned(30, 1, 1, {4, 4}, {4, 4})}) {
                Affine map = good;
                map[i / 3][i % 3] = bad;
                EXPECT_EQ(CallOn(m_src, WholeOf(m_src), m_dst, WholeOf(m_dst), map, pxLinear).RunAffine(),
                          pxDegenerateWarp)
                    << bad << " at " << i;
            }
}

TEST_P(WarpAffineRefusals, WithSeveralReasons_NameTheFirst)
{
    Affine bad = {};
    WarpCall call = CallOn(m_src, {9, 0, 0, 1}, m_dst, WholeOf(m_dst), bad, 3);
    call.src = nullptr;
    call.srcStep = 1 - m_src.PixelBytes();
    EXPECT_EQ(call.RunAffine(), pxNullPointer);
    call.src = m_src.Row(0);
    EXPECT_EQ(call.RunAffine(), pxBadSize);
    call.srcRegion.width = 1;
    EXPECT_EQ(call.RunAffine(), pxBadStep);
    call.srcStep = m_src.Stride();
    EXPECT_EQ(call.RunAffine(), pxRegionOutsideSource);
    call.srcRegion.x = 0;
    EXPECT_EQ(call.RunAffine(), pxBadInterpolation);
    call.code = pxLinear;
    EXPECT_EQ(call.RunAffine(), pxDegenerateWarp);
}

INSTANTIATE_TEST_SUITE_P(EveryMember, WarpAffineRefusals, testing::ValuesIn(kFormats));

} // namespace
} // namespace kelmora
