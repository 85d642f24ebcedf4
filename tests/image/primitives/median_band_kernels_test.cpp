#include "image/primitives/median_band_kernels.h"

#include <cstddef>
#include <functional>
#include <new>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/median.h"
#include "tests/reference/picture.h"

namespace kelmora {
namespace {

using Loops = int (*)(const MedianBand& band);

/// The loops that this machine has.
template <class Check>
void ForEachLoops(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant)) {
            const MedianBandKernels& kernels = MedianBandKernelsFor(variant);
            if (kernels.narrow)
                check(kernels.narrow, MedianBandKernels::kNarrow);
            if (kernels.wide)
                check(kernels.wide, MedianBandKernels::kWide);
        }
}

/// The working space of a strip, of no more bytes than it may use.
class WorkingSpace {
public:
    explicit WorkingSpace(int columns) : m_memory(::operator new (Bytes(columns), std::align_val_t{64})) {}
    WorkingSpace(const WorkingSpace&) = delete;
    WorkingSpace& operator=(const WorkingSpace&) = delete;
    ~WorkingSpace() { ::operator delete (m_memory, std::align_val_t{64}); }

    void* Start() const { return m_memory; }

private:
    static std::size_t Bytes(int columns)
    {
        return static_cast<std::size_t>(MedianKernels::kState + columns * MedianKernels::kByteHistogram);
    }

    void* m_memory;
};

using Level = std::function<int(int x, int y)>;

/// Finds medians of `mask` by mask in a picture of those levels, as if those of the row above were from `least` to
/// `most`. Gives the rows that were found, each of which has been compared with sorting.
int FindAndCompare(Loops loops, int width, int height, int mask, const Level& level, int least, int most)
{
    GuardedPicture src(width + mask - 1, height + mask - 1, PF_BGRA8), dst(width, height, PF_BGRA8);
    for (int y = 0; y < src.Height(); ++y)
        for (int x = 0; x < src.Width(); ++x)
            src.SetByte(x, y, 0, static_cast<std::uint8_t>(level(x, y)));
    src.Freeze();
    const WorkingSpace work(width + mask);
    const MedianStrip strip = {ElementAt<std::uint8_t>(src),
                               src.Stride(),
                               dst.Row(0),
                               dst.Stride(),
                               width,
                               height,
                               mask,
                               mask,
                               work.Start()};
    const int found = loops({strip, least, most});
    const reference::Picture values = reference::Read(src);
    const reference::MedianMask corner = {mask, mask, 0, 0};
    for (int y = 0; y < found; ++y)
        for (int x = 0; x < width; ++x) {
            EXPECT_EQ(dst.Byte(x, y, 0), reference::MedianAt(values, x, y, 0, corner)) << x << ", " << y;
            EXPECT_EQ(dst.Byte(x, y, 1), 0);
        }
    dst.Check();
    return found;
}

/// Something between 0 and 7.
int Grain(int x, int y)
{
    return (x * 7 + y * 13 + x * y) % 8;
}

TEST(MedianBandKernels, Variants_HaveBothLoopsOrNone)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant)) {
            const MedianBandKernels& kernels = MedianBandKernelsFor(variant);
            EXPECT_EQ(kernels.narrow == nullptr, kernels.wide == nullptr);
        }
}

TEST(MedianBandKernels, ValuesCloseTogether_AreTheMiddleInOrder)
{
    ForEachLoops([](Loops loops, int) {
        for (const int mask : {1, 3, 5, 15})
            for (const int width : {1, 2, 17, 70})
                for (const int base : {0, 1, 100, 247, 248}) {
                    const Level level = [base](int x, int y) { return base + Grain(x, y); };
                    EXPECT_EQ(FindAndCompare(loops, width, 9, mask, level, base, base + 7), 9)
                        << width << ", " << mask << ", " << base;
                }
    });
}

TEST(MedianBandKernels, MasksOf127Pixels_DoNotOverflowACount)
{
    // All values are below the thresholds of one half, none are below those of the other.
    ForEachLoops([](Loops loops, int) {
        for (const int value : {0, 100, 255})
            EXPECT_EQ(FindAndCompare(
                          loops, 5, 3, MedianBandKernels::kMostMask, [value](int, int) { return value; },
                          value, value),
                      3);
    });
}

TEST(MedianBandKernels, WrongSpanOfTheRowAbove_IsMended)
{
    ForEachLoops([](Loops loops, int) {
        for (const int base : {0, 120, 248})
            for (const int guess : {0, 60, 130, 255}) {
                const Level level = [base](int x, int y) { return base + Grain(x, y); };
                EXPECT_EQ(FindAndCompare(loops, 20, 4, 3, level, guess, guess), 4) << base << ", " << guess;
            }
    });
}

TEST(MedianBandKernels, LevelsThatRiseOrFallOverTheWholeRange_AreFollowed)
{
    ForEachLoops([](Loops loops, int) {
        for (const int mask : {1, 5}) {
            EXPECT_EQ(FindAndCompare(
                          loops, 20, 500, mask, [](int, int y) { return y / 2 % 256; }, 0, 0),
                      500);
            EXPECT_EQ(FindAndCompare(
                          loops, 20, 500, mask, [](int, int y) { return 255 - y / 2 % 256; }, 255, 255),
                      500);
        }
    });
}

TEST(MedianBandKernels, MediansAsFarApartAsABandHolds_AreFoundAndNoFurther)
{
    // A band lies between its lowest and its highest threshold, one value less than it has thresholds; the values
    // 0 and 255 are the last ones anyhow.
    ForEachLoops([](Loops loops, int thresholds) {
        const auto find = [loops](int low, int high) {
            const Level level = [low, high](int x, int) { return x < 10 ? low : high; };
            return FindAndCompare(loops, 20, 3, 1, level, low, high);
        };
        for (const int low : {0, 50, 255 - (thresholds - 2)})
            EXPECT_EQ(find(low, low + thresholds - 2), 3) << low;
        EXPECT_EQ(find(60, 60 + thresholds), 0);
        EXPECT_EQ(find(0, 255), 0);
    });
}

TEST(MedianBandKernels, RowWithMediansTooFarApart_EndsWhatIsFound)
{
    // From row 20 on one half is brighter. A mask of 3 by 3 has more of its rows there from 19 on.
    ForEachLoops([](Loops loops, int thresholds) {
        const Level level = [thresholds](int x, int y) {
            return 50 + Grain(x, y) + (y >= 20 && x >= 12 ? thresholds + 16 : 0);
        };
        EXPECT_EQ(FindAndCompare(loops, 22, 40, 3, level, 50, 57), 19);
    });
}

TEST(MedianBandKernels, LevelsThatJumpWithEveryRow_AreGivenUp)
{
    ForEachLoops([](Loops loops, int) {
        const int found = FindAndCompare(
            loops, 20, 400, 1, [](int, int y) { return y % 2 != 0 ? 250 : 5; }, 5, 5);
        EXPECT_LT(found, 400);
    });
}

} // namespace
} // namespace kelmora
