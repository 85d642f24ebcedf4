#include "image/primitives/separable_warp.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/primitives/regions.h"
#include "tests/image/variants.h"
#include "tests/reference/picture.h"
#include "tests/reference/warp.h"

namespace kelmora {
namespace {

using reference::Picture;
using Coefficients = reference::AffineMap;

constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_BGRA32F};

/// Working space of just the size asked for, with marked bytes behind.
class Work {
public:
    explicit Work(std::int64_t bytes)
        : m_bytes(static_cast<std::size_t>(bytes)), m_memory(m_bytes + 128, 0xC3)
    {
        void* first = m_memory.data();
        std::size_t room = m_memory.size();
        m_first = static_cast<std::uint8_t*>(std::align(64, m_bytes, first, room));
    }

    void* First() { return m_first; }

    bool IsIntact() const
    {
        for (const std::uint8_t* at = m_first + m_bytes; at < m_memory.data() + m_memory.size(); ++at)
            if (*at != 0xC3)
                return false;
        return true;
    }

private:
    std::size_t m_bytes;
    std::vector<std::uint8_t> m_memory;
    std::uint8_t* m_first;
};

AffineMap InverseOf(const Coefficients& map)
{
    const double rows[2][3] = {{map[0][0], map[0][1], map[0][2]}, {map[1][0], map[1][1], map[1][2]}};
    AffineMap back = {};
    EXPECT_EQ(InvertAffine(rows, back), pxOk);
    return back;
}

WarpImage ImageOf(const GuardedPicture& picture, const WarpBounds& bounds)
{
    return {picture.Row(0), picture.Stride(), bounds};
}

/// All rows of `dst` in the order y = first, first + stride and so on around, between the columns.
void WarpRows(const GuardedPicture& src, const WarpBounds& bounds, const Coefficients& map,
              GuardedPicture& dst, WarpSpan columns, int stride)
{
    const bool floats = IsFloatFormat(src.Format());
    const AffineMap back = InverseOf(map);
    const WarpImage image = ImageOf(src, bounds);
    ASSERT_TRUE(SeparableWarp::Serves(back, image));
    Work work(SeparableWarp::WorkBytes(columns.end - columns.begin, floats));
    SeparableWarp warp(image, back, columns, floats, work.First());
    for (int i = 0; i < dst.Height(); ++i) {
        const int y = i * stride % dst.Height();
        const WarpSpan covered = warp.Covered(y);
        if (covered.IsEmpty())
            continue;
        ASSERT_TRUE(covered.begin >= columns.begin && covered.end <= columns.end);
        warp.Row(y, ElementAt<std::uint8_t>(dst, covered.begin, y));
    }
    ASSERT_TRUE(work.IsIntact());
}

void CheckRows(std::uint32_t format, int width, const WarpBounds& bounds, const Coefficients& map,
               WarpSpan columns, Guard guard)
{
    if (testing::Test::HasFatalFailure())
        return; // one message is enough
    SCOPED_TRACE(testing::PrintToString(map) + ", " + std::to_string(width) + " wide");
    GuardedPicture src(width, 9, format, {.guard = guard});
    src.FillNoise(1);
    src.Freeze();
    const reference::ResizeRegion region = {bounds.left, bounds.top, bounds.right - bounds.left + 1,
                                            bounds.bottom - bounds.top + 1};
    GuardedPicture before(40, 14, format, {.guard = guard});
    Picture plain = reference::Read(before);
    ASSERT_TRUE(reference::WarpAffine(reference::Read(src), region, plain,
                                      {columns.begin, 0, columns.end - columns.begin, 14}, map,
                                      reference::kLinear));
    ForEachVariant([&] {
        for (const int stride : {1, 13, 5}) {
            GuardedPicture dst(before);
            WarpRows(src, bounds, map, dst, columns, stride);
            ASSERT_TRUE(reference::Matches(dst, plain))
                << "variant " << static_cast<int>(CurrentVariant()) << ", every " << stride;
            dst.Check();
        }
    });
    src.Check();
}

const Coefficients kMaps[] = {
    {{{1, 0, 0}, {0, 1, 0}}},         {{{1, 0, 4}, {0, 1, 2}}},          {{{1, 0, -3.3}, {0, 1, 1.6}}},
    {{{1, 0, 0.25}, {0, 1, 0}}},      {{{1, 0, 0}, {0, 1, 0.25}}},       {{{1, 0, 2.0007}, {0, 1, -1.0004}}},
    {{{1.7, 0, -2.3}, {0, 1.4, 1}}},  {{{0.6, 0, 3.1}, {0, 0.7, 2.2}}},  {{{-1.2, 0, 30.5}, {0, 1.1, 0.4}}},
    {{{1.3, 0, 0.2}, {0, -0.9, 12}}}, {{{2, 0, 0}, {0, 1, 0}}},          {{{1, 0, 0}, {0, 3, -4}}},
    {{{9.7, 0, -20}, {0, 7.3, -9}}},  {{{0.11, 0, 17}, {0, 0.2, 5.05}}}, {{{1, 0, 60}, {0, 1, 0}}},
};

TEST(SeparableWarp, EveryMapAndWidthInAnyOrderOfRows_MatchesThePlainVersion)
{
    for (const std::uint32_t format : kFormats)
        for (const Coefficients& map : kMaps)
            for (const int width : {1, 2, 3, 4, 5, 8, 15, 16, 17, 31, 33, 40})
                CheckRows(format, width, {0, 0, width - 1, 8}, map, {0, 40},
                          width % 2 != 0 ? Guard::PageEnd : Guard::PageStart);
}

TEST(SeparableWarp, BoundsAndColumns_AreAllThatIsTakenAndWritten)
{
    for (const std::uint32_t format : kFormats)
        for (const Coefficients& map : kMaps)
            for (const WarpBounds& bounds :
                 {WarpBounds{3, 2, 20, 6}, {7, 4, 7, 4}, {0, 8, 29, 8}, {29, 0, 29, 8}})
                for (const WarpSpan& columns : {WarpSpan{0, 40}, {5, 22}, {11, 12}})
                    CheckRows(format, 30, bounds, map, columns, Guard::PageEnd);
}

// Working rows are filled to their last byte.
TEST(SeparableWarp, RowsOfWholeBlocks_StayInTheirSpace)
{
    for (const std::uint32_t format : kFormats)
        for (const Coefficients& map : kMaps)
            for (const WarpSpan& columns : {WarpSpan{0, 16}, {0, 32}, {3, 35}})
                CheckRows(format, 40, {0, 0, 39, 8}, map, columns, Guard::PageEnd);
}

TEST(SeparableWarp, RowsThatAreReadLater_AreTheSameFromAnyFirstPixel)
{
    // Long enough to go past the caches, which vectors on their own boundaries do.
    constexpr int kWidth = 1400;
    GuardedPicture src(kWidth, 3, PF_BGRA32F);
    src.FillNoise(1);
    const WarpImage image = ImageOf(src, {0, 0, kWidth - 1, 2});
    ForEachVariant([&] {
        for (const Coefficients& map : {kMaps[2], kMaps[6], kMaps[8]})
            for (int first = 0; first < 5; ++first) {
                GuardedPicture soon(kWidth, 3, PF_BGRA32F), later(kWidth, 3, PF_BGRA32F);
                const WarpSpan columns = {first, kWidth};
                Work work(SeparableWarp::WorkBytes(kWidth, true));
                for (GuardedPicture* dst : {&soon, &later}) {
                    SeparableWarp warp(image, InverseOf(map), columns, true, work.First());
                    if (dst == &later)
                        warp.RowsAreReadLater();
                    for (int y = 0; y < 3; ++y)
                        if (const WarpSpan covered = warp.Covered(y); !covered.IsEmpty())
                            warp.Row(y, ElementAt<std::uint8_t>(*dst, covered.begin, y));
                    dst->Check();
                }
                ASSERT_TRUE(Equal(soon, later)) << "from " << first;
            }
    });
}

TEST(SeparableWarp, RotatingMapsAndEnormousPictures_AreNotServed)
{
    GuardedPicture src(4, 4, PF_BGRA8);
    const WarpImage image = ImageOf(src, {0, 0, 3, 3});
    EXPECT_TRUE(SeparableWarp::Serves(InverseOf(kMaps[6]), image));
    EXPECT_FALSE(SeparableWarp::Serves(InverseOf({{{1, 0.1, 0}, {0, 1, 0}}}), image));
    EXPECT_FALSE(SeparableWarp::Serves(InverseOf({{{1, 0, 0}, {0.1, 1, 0}}}), image));
    constexpr int most = (1 << 22) - 2; // the last pixel of a side; in 256ths it is half of what 31 bits hold
    EXPECT_TRUE(SeparableWarp::Serves(InverseOf(kMaps[6]), ImageOf(src, {0, 0, most, 3})));
    EXPECT_TRUE(SeparableWarp::Serves(InverseOf(kMaps[6]), ImageOf(src, {0, 0, 3, most})));
    EXPECT_FALSE(SeparableWarp::Serves(InverseOf(kMaps[6]), ImageOf(src, {0, 0, most + 1, 3})));
    EXPECT_FALSE(SeparableWarp::Serves(InverseOf(kMaps[6]), ImageOf(src, {0, 0, 3, most + 1})));
}

} // namespace
} // namespace kelmora
