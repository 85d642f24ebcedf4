#include "image/tent_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "image/pixel_format.h"
#include "image/primitives/tent_kernels.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"
#include "tests/reference/picture.h"
#include "tests/reference/tent.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {
namespace {

using reference::BlurSteps;
using reference::Picture;

// How far running sums of floats may lie from the plain version. The plain version's weights are rounded to
// floats (2^-24 each), ours are not; both round to a float after each of two passes. That is at most 2^-24 for
// the weights and 2^-23 for both roundings, twice: below 6 * 2^-24 of the result where no value is negative.
// The sums themselves err by 2^-53 per step, far below the absolute part.
constexpr double kRelative = 6.0 / (1 << 24);
constexpr double kAbsolute = 1e-9;

BlurSteps StepsOf(const TentJob& job)
{
    BlurSteps steps;
    steps.width = job.size.width;
    steps.height = job.size.height;
    steps.tapsX = job.rowTaps;
    steps.tapsY = job.columnTaps;
    steps.padX = job.padWidth;
    steps.padY = job.padHeight;
    steps.truncate = job.truncate;
    return steps;
}

/// A job with one of the two paddings that callers use: as far as the kernel reaches, or the kernel's size.
TentJob JobOf(int width, int height, int rowTaps, int columnTaps, bool wide)
{
    TentJob job;
    job.size = {width, height};
    job.rowTaps = rowTaps;
    job.columnTaps = columnTaps;
    job.padWidth = wide ? rowTaps : rowTaps / 2 * 2;
    job.padHeight = wide ? columnTaps : columnTaps / 2 * 2;
    return job;
}

/// How the source of a random job lies: every third one beside an unreadable page.
PictureLayout LayoutOf(int turn)
{
    if (turn % 3 == 2)
        return {.guard = turn % 2 == 0 ? Guard::PictureStart : Guard::PictureEnd};
    return {.slack = turn % 6, .shift = turn % 5};
}

/// Runs the filter into a new picture and sees to it that each row came once, from the top down.
TentResult RunTent(const GuardedPicture& src, const TentJob& job, GuardedPicture& dst,
                   MemoryAllocator& allocator)
{
    int next = 0;
    const TentResult result =
        FilterTentRows(ViewOf(src), job, allocator, [&](int y, const std::uint8_t* row) {
            EXPECT_EQ(y, next++);
            std::copy_n(row, dst.Width() * dst.PixelBytes(), dst.Row(y));
        });
    EXPECT_EQ(next, result == TentResult::Done ? job.size.height : 0);
    return result;
}

constexpr std::uint32_t kPictures[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

TEST(TentFilter, RandomJobs_EqualThePlainVersionInEveryVariant)
{
    std::mt19937 random(20);
    for (int turn = 0; turn < 160; ++turn) {
        const auto pick = [&](int most) {
            return 1 + static_cast<int>(random() % static_cast<unsigned>(most));
        };
        const int width = pick(70), height = pick(70);
        const int most = turn % 4 == 0 ? 300 : 24;
        TentJob job = JobOf(width, height, pick(most), pick(most), turn % 2 == 0);
        const std::uint32_t format = kPictures[random() % 4];
        job.truncate = random() % 2 == 0;
        const bool floats = IsFloat(format);
        GuardedPicture src(width, height, format, LayoutOf(turn));
        src.FillNoise(static_cast<std::uint32_t>(turn), turn % 3 == 0 ? Noise::Leaning : Noise::Uniform);
        src.Freeze();
        const Picture expected = reference::PlainBlur(reference::Read(src), StepsOf(job));
        ForEachVariant([&] {
            FakeMemoryProvider memory({.fill = 0x7FA5A5A5u, .misalign = turn % 64});
            FakeHost host;
            host.SetMemory(&memory);
            MemoryAllocator allocator(&host);
            GuardedPicture dst(width, height, format);
            const TentResult result = RunTent(src, job, dst, allocator);
            ASSERT_EQ(result, job.HasInside() ? TentResult::Done : TentResult::NotServed);
            if (result == TentResult::Done) {
                ASSERT_TRUE(reference::Matches(dst, expected, floats ? kRelative : 0, floats ? kAbsolute : 0))
                    << width << " x " << height << ", taps " << job.rowTaps << " x " << job.columnTaps
                    << ", format " << format << ", truncate " << job.truncate << ", variant "
                    << static_cast<int>(CurrentVariant());
            }
        });
        src.Check();
    }
}

TEST(TentFilter, EveryTapCount_RoundsBytesAsTheFiltersDo)
{
    // The division by a tent's weights is a multiplication of our own; ties and boundaries differ per size.
    for (int taps = 1; taps <= 300; ++taps)
        for (const bool truncate : {false, true}) {
            TentJob job = JobOf(12, 6, taps, 1 + (taps * 7) % 120, taps % 2 == 0);
            job.truncate = truncate;
            GuardedPicture src(12, 6, PF_BGRA8), dst(12, 6, PF_BGRA8);
            src.FillNoise(static_cast<std::uint32_t>(taps), taps % 2 == 0 ? Noise::Special : Noise::Uniform);
            MemoryAllocator allocator;
            ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
            ASSERT_TRUE(reference::Matches(dst, reference::PlainBlur(reference::Read(src), StepsOf(job))))
                << taps << " taps, truncate " << truncate;
        }
}

TEST(TentFilter, TapsBeyondSinglePrecision_RoundBytesAsTheFiltersDo)
{
    // A tent of 511 taps weighs 256 * 256: times 255 that still fits the 24 bits of a float, 514 taps do not.
    for (const int taps : {511, 514, 600})
        for (const bool truncate : {false, true})
            for (const bool tall : {false, true}) {
                TentJob job = JobOf(12, 12, tall ? 3 : taps, tall ? taps : 3, false);
                job.truncate = truncate;
                GuardedPicture src(12, 12, PF_BGRA8);
                src.FillNoise(static_cast<std::uint32_t>(taps));
                const Picture expected = reference::PlainBlur(reference::Read(src), StepsOf(job));
                ForEachVariant([&] {
                    GuardedPicture dst(12, 12, PF_BGRA8);
                    MemoryAllocator allocator;
                    ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
                    ASSERT_TRUE(reference::Matches(dst, expected)) << taps << " taps, truncate " << truncate;
                });
            }
}

TEST(TentFilter, StepsOfOneLevel_RoundEveryTieAsTheFiltersDo)
{
    // Where the middle of an even kernel stands on a step, half its weights lie on either side: a tie, and in the
    // row or column beside each channel has a tie of another level.
    constexpr int kLong = 700, kWide = 264;
    for (const int taps : {2, 26, 48, 160, 200, 216, 256})
        for (const bool down : {true, false}) {
            const TentJob job =
                down ? JobOf(kWide, kLong, 1, taps, false) : JobOf(kLong, kWide, taps, 1, false);
            GuardedPicture src(job.size.width, job.size.height, PF_BGRA8);
            for (int level = 0; level < kWide; ++level)
                for (int at = 0; at < kLong; ++at)
                    for (int c = 0; c < 4; ++c) {
                        const int value = std::min(level, 254) + (at >= kLong / 2 ? 1 : 0);
                        (down ? src.Row(at) + 4 * level : src.Row(level) + 4 * at)[c] =
                            static_cast<std::uint8_t>(value);
                    }
            const Picture expected = reference::PlainBlur(reference::Read(src), StepsOf(job));
            ForEachVariant([&] {
                GuardedPicture dst(job.size.width, job.size.height, PF_BGRA8);
                MemoryAllocator allocator;
                ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
                ASSERT_TRUE(reference::Matches(dst, expected)) << taps << " taps, down " << down;
            });
        }
}

TEST(TentFilter, SizesWithoutAnInside_AreNotServed)
{
    for (int side = 1; side <= 5; ++side)
        for (const bool wide : {false, true}) {
            const TentJob even = JobOf(side, 9, 4, 4, wide), odd = JobOf(9, side, 5, 5, wide);
            // Two pixels on each side go; padding beyond an odd kernel leaves one more.
            EXPECT_EQ(even.HasInside(), side >= 5);
            EXPECT_EQ(odd.HasInside(), side >= (wide ? 4 : 5));
        }
}

TEST(TentFilter, FloatsThatRunningSumsCannotTake_EqualThePlainVersionExactly)
{
    constexpr float inf = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const float wild : {nan, inf, -inf, 1e38f, -1e38f, 1025.0f, 3.4e38f}) {
            const TentJob job = JobOf(23, 19, 7, 6, true);
            GuardedPicture src(23, 19, format);
            src.FillNoise(1);
            src.SetFloat(11, 2, 1, wild); // in the first row that counts: every sum is made afresh
            src.SetFloat(20, 15, 3, -wild);
            const Picture expected = reference::PlainBlur(reference::Read(src), StepsOf(job));
            ForEachVariant([&] {
                GuardedPicture dst(23, 19, format);
                MemoryAllocator allocator;
                ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
                EXPECT_TRUE(reference::Matches(dst, expected)) << wild;
            });
        }
}

TEST(TentFilter, WildFloatsFurtherDown_ComeOutRightAboveAndBelow)
{
    for (int row = 0; row < 60; ++row)
        for (const int columnTaps : {1, 8, 31}) {
            const TentJob job = JobOf(9, 60, 3, columnTaps, false);
            GuardedPicture src(9, 60, PF_BGRA32F);
            src.FillNoise(2);
            src.SetFloat(4, row, 0, std::numeric_limits<float>::quiet_NaN());
            src.SetFloat(5, row, 2, 1e38f);
            const Picture expected = reference::PlainBlur(reference::Read(src), StepsOf(job));
            GuardedPicture dst(9, 60, PF_BGRA32F);
            MemoryAllocator allocator;
            ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
            ASSERT_TRUE(reference::Matches(dst, expected, kRelative, kAbsolute)) << row << ", " << columnTaps;
        }
}

TEST(TentFilter, SpecialFloatsEverywhere_EqualThePlainVersionExactly)
{
    for (const int taps : {1, 2, 9, 40}) {
        const TentJob job = JobOf(33, 30, taps, taps, taps % 2 == 1);
        GuardedPicture src(33, 30, PF_ARGB32F, {.slack = 5, .shift = 1});
        src.FillNoise(3, Noise::Special);
        GuardedPicture dst(33, 30, PF_ARGB32F);
        MemoryAllocator allocator;
        ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
        EXPECT_TRUE(reference::Matches(dst, reference::PlainBlur(reference::Read(src), StepsOf(job))));
    }
}

TEST(TentFilter, LargestSummedFloats_StayWithinTheBound)
{
    // 1024 is the largest magnitude that is summed; a small value beside it must not drown.
    const TentJob job = JobOf(40, 40, 15, 15, false);
    GuardedPicture src(40, 40, PF_BGRA32F), dst(40, 40, PF_BGRA32F);
    src.FillNoise(4, Noise::Positive);
    for (int y = 0; y < 40; ++y)
        src.SetFloat(y, 3, y % 4, 1024.0f);
    MemoryAllocator allocator;
    ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
    EXPECT_TRUE(reference::Matches(dst, reference::PlainBlur(reference::Read(src), StepsOf(job)), kRelative,
                                   kAbsolute));
}

TEST(TentFilter, JobsItCannotDo_AreNotServedBeforeAnyRow)
{
    FakeMemoryProvider memory;
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    const auto fail = [](int, const std::uint8_t*) { ADD_FAILURE() << "a row came"; };
    const TentJob good = JobOf(9, 9, 3, 3, false);
    for (const std::uint32_t format : {PF_Packed8, PF_Mask8, PF_Mask32F}) {
        const GuardedPicture src(9, 9, format);
        EXPECT_EQ(FilterTentRows(ViewOf(src), good, allocator, fail), TentResult::NotServed) << format;
    }
    const GuardedPicture src(9, 9, PF_BGRA8);
    const GuardedPicture liar(9, 9, 1, PF_BGRA8), small(9, 8, PF_BGRA8), narrow(8, 9, PF_BGRA8);
    EXPECT_EQ(FilterTentRows(ViewOf(liar), good, allocator, fail), TentResult::NotServed);
    EXPECT_EQ(FilterTentRows(ViewOf(small), good, allocator, fail), TentResult::NotServed);
    EXPECT_EQ(FilterTentRows(ViewOf(narrow), good, allocator, fail), TentResult::NotServed);
    EXPECT_EQ(FilterTentRows(FrameBuffer(), good, allocator, fail), TentResult::NotServed);
    for (const int taps : {0, -1, std::numeric_limits<int>::min(), 5801, std::numeric_limits<int>::max()}) {
        TentJob job = good;
        job.rowTaps = taps;
        EXPECT_EQ(FilterTentRows(ViewOf(src), job, allocator, fail), TentResult::NotServed) << taps;
        job = good;
        job.columnTaps = taps;
        EXPECT_EQ(FilterTentRows(ViewOf(src), job, allocator, fail), TentResult::NotServed) << taps;
    }
    EXPECT_EQ(memory.Asked(), 0u);
}

TEST(TentFilter, EachRefusedAllocation_IsNoMemoryBeforeAnyRow)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        const GuardedPicture src(9, 9, format);
        const TentJob job = JobOf(9, 9, 3, 3, false);
        FakeMemoryProvider memory;
        FakeHost host;
        host.SetMemory(&memory);
        MemoryAllocator allocator(&host);
        GuardedPicture dst(9, 9, format);
        ASSERT_EQ(RunTent(src, job, dst, allocator), TentResult::Done);
        const std::uint64_t asked = memory.Asked();
        ASSERT_GT(asked, 0u);
        for (std::uint64_t n = 0; n < asked; ++n) {
            memory.SetHabits({.refuseOnly = n});
            EXPECT_EQ(RunTent(src, job, dst, allocator), TentResult::NoMemory) << n;
            EXPECT_EQ(memory.OpenBlocks(), 0u);
        }
    }
}

TEST(TentFilter, WorkingSpace_IsRowsAndNotPictures)
{
    FakeMemoryProvider memory;
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    const GuardedPicture src(400, 2000, PF_BGRA8);
    GuardedPicture dst(400, 2000, PF_BGRA8);
    ASSERT_EQ(RunTent(src, JobOf(400, 2000, 31, 31, true), dst, allocator), TentResult::Done);
    EXPECT_LT(memory.PeakBytes(), std::uint64_t{400} * 2000 * 4 / 10);
}

// --- parts ------------------------------------------------------------------------------------------------

/// The part of the expected picture that a job asks for.
Picture Cut(const Picture& whole, const TentPart& part)
{
    Picture cut(part.size.width, part.size.height, whole.format);
    for (int y = 0; y < part.size.height; ++y)
        for (int x = 0; x < part.size.width; ++x)
            for (int c = 0; c < 4; ++c)
                cut.At(x, y, c) = whole.At(part.x + x, part.y + y, c);
    return cut;
}

/// The filter into a picture of the part's size; every row must come once, from the part's top down.
TentResult RunPart(const GuardedPicture& src, const TentJob& job, GuardedPicture& dst)
{
    FakeMemoryProvider memory({.fill = 0x7FA5A5A5u});
    FakeHost host;
    host.SetMemory(&memory);
    MemoryAllocator allocator(&host);
    int next = job.part.y;
    const TentResult result =
        FilterTentRows(ViewOf(src), job, allocator, [&](int y, const std::uint8_t* row) {
            EXPECT_EQ(y, next++);
            std::copy_n(row, dst.Width() * dst.PixelBytes(), dst.Row(y - job.part.y));
        });
    EXPECT_EQ(next, job.part.y + (result == TentResult::Done ? job.part.size.height : 0));
    return result;
}

TEST(TentFilterPart, RandomParts_AreThoseOfThePlainVersionInEveryVariant)
{
    std::mt19937 random(21);
    for (int turn = 0; turn < 160; ++turn) {
        const auto pick = [&](int most) {
            return 1 + static_cast<int>(random() % static_cast<unsigned>(most));
        };
        const int width = 5 + pick(70), height = 5 + pick(70);
        const int most = turn % 4 == 0 ? 200 : 20;
        TentJob job = JobOf(width, height, pick(most), pick(most), turn % 2 == 0);
        job.part.x = pick(width) - 1;
        job.part.y = pick(height) - 1;
        job.part.size = {pick(width - job.part.x), pick(height - job.part.y)};
        const std::uint32_t format = kPictures[random() % 4];
        const bool floats = IsFloat(format);
        GuardedPicture src(width, height, format, LayoutOf(turn));
        src.FillNoise(static_cast<std::uint32_t>(turn), turn % 3 == 0 ? Noise::Leaning : Noise::Uniform);
        src.Freeze();
        const Picture expected = Cut(reference::PlainBlur(reference::Read(src), StepsOf(job)), job.part);
        ForEachVariant([&] {
            GuardedPicture dst(job.part.size.width, job.part.size.height, format);
            ASSERT_EQ(RunPart(src, job, dst), TentResult::Done);
            ASSERT_TRUE(reference::Matches(dst, expected, floats ? kRelative : 0, floats ? kAbsolute : 0))
                << width << " x " << height << ", taps " << job.rowTaps << " x " << job.columnTaps
                << ", part " << job.part.size.width << " x " << job.part.size.height << " at " << job.part.x
                << ", " << job.part.y << ", format " << format;
        });
        src.Check();
    }
}

TEST(TentFilterPart, FloatsThatRunningSumsCannotTake_EqualThePlainVersionExactly)
{
    TentJob job = JobOf(40, 36, 7, 6, true);
    job.part = {9, 8, {20, 15}};
    GuardedPicture src(40, 36, PF_ARGB32F), dst(20, 15, PF_ARGB32F);
    src.FillNoise(5);
    src.SetFloat(15, 8, 1, std::numeric_limits<float>::infinity());
    const Picture expected = Cut(reference::PlainBlur(reference::Read(src), StepsOf(job)), job.part);
    ASSERT_EQ(RunPart(src, job, dst), TentResult::Done);
    EXPECT_TRUE(reference::Matches(dst, expected));
}

TEST(TentFilterPart, PartsThatStickOut_AreNotServed)
{
    constexpr int most = std::numeric_limits<int>::max();
    const GuardedPicture src(20, 20, PF_BGRA8);
    for (const TentPart part :
         {TentPart{1, 0, {20, 5}}, TentPart{0, 16, {5, 5}}, TentPart{-1, 0, {5, 5}}, TentPart{0, -1, {5, 5}},
          TentPart{5, 0, {most, 5}}, TentPart{0, 5, {5, most}}}) {
        TentJob job = JobOf(20, 20, 3, 3, false);
        job.part = part;
        GuardedPicture dst(5, 5, PF_BGRA8);
        EXPECT_EQ(RunPart(src, job, dst), TentResult::NotServed) << part.x << ", " << part.y;
    }
}

// --- rows on demand -----------------------------------------------------------------------------------------

/// The rows of a picture, each of which is gone when rows are asked for that lie RowsAtOnce below.
class ForgetfulRows final : public TentRowSource {
public:
    ForgetfulRows(const GuardedPicture& picture, int kept)
        : m_picture(picture), m_ring(picture.Width(), kept, picture.Format()), m_kept(kept)
    {
    }

    const std::uint8_t* Row(int y) override
    {
        EXPECT_GT(y, m_lowest - m_kept) << "a row that is gone";
        for (; m_lowest < y; ++m_lowest)
            std::copy_n(m_picture.Row(m_lowest + 1), m_picture.Width() * m_picture.PixelBytes(),
                        m_ring.Row((m_lowest + 1) % m_kept));
        return m_ring.Row(y % m_kept);
    }

private:
    const GuardedPicture& m_picture;
    GuardedPicture m_ring;
    const int m_kept;
    int m_lowest = -1;
};

TEST(TentFilterSource, RowsOnDemand_GiveWhatThePictureGivesInEveryVariant)
{
    std::mt19937 random(22);
    for (int turn = 0; turn < 80; ++turn) {
        const auto pick = [&](int most) {
            return 1 + static_cast<int>(random() % static_cast<unsigned>(most));
        };
        const int width = 5 + pick(40), height = 5 + pick(120);
        const TentJob job = JobOf(width, height, pick(30), pick(turn % 4 == 0 ? 90 : 12), turn % 2 == 0);
        const std::uint32_t format = kPictures[random() % 4];
        GuardedPicture src(width, height, format);
        src.FillNoise(static_cast<std::uint32_t>(turn));
        if (turn % 8 == 3 && IsFloat(format)) // every sum afresh from there
            src.SetFloat(width / 2, height / 2, 0, std::numeric_limits<float>::infinity());
        ForEachVariant([&] {
            MemoryAllocator allocator;
            GuardedPicture expected(width, height, format), dst(width, height, format);
            ASSERT_EQ(RunTent(src, job, expected, allocator), TentResult::Done);
            ForgetfulRows rows(src, job.RowsAtOnce());
            const auto takeRow = [&](int y, const std::uint8_t* row) {
                EXPECT_TRUE(std::equal(src.Row(y), src.Row(y) + width * src.PixelBytes(), rows.Row(y)));
                std::copy_n(row, width * dst.PixelBytes(), dst.Row(y));
            };
            ASSERT_EQ(FilterTentRows(rows, format, job, allocator, takeRow), TentResult::Done);
            ASSERT_TRUE(Equal(dst, expected)) << width << " x " << height << ", " << job.columnTaps;
        });
    }
}

TEST(TentFilterSource, BlocksOfEveryVariant_AreNoHigherThanRowsAtOnceHasRoomFor)
{
    ForEachVariant([] {
        EXPECT_LE(TentKernelsFor(CurrentVariant()).byteRows, TentJob::kMostBlockRows);
        EXPECT_LE(TentKernelsFor(CurrentVariant()).floatRows, TentJob::kMostBlockRows);
    });
}

// --- step by step -----------------------------------------------------------------------------------------

TEST(TentFilterStepwise, EveryServedFormat_EqualsThePlainVersion)
{
    std::mt19937 random(7);
    for (int turn = 0; turn < 120; ++turn) {
        const std::uint32_t format = kServedFormats[turn % 6];
        const auto pick = [&](int most) {
            return 1 + static_cast<int>(random() % static_cast<unsigned>(most));
        };
        const int width = pick(33), height = pick(20);
        TentJob job = JobOf(width, height, pick(120), pick(12), turn % 4 < 2);
        job.truncate = format == PF_ARGB8;
        BlurSteps steps = StepsOf(job);
        steps.withAlpha = random() % 2 == 0;
        GuardedPicture src(width, height, format, {.slack = turn % 6, .shift = turn % 3});
        GuardedPicture dst(width + turn % 3, height + turn % 2, format, {.slack = turn % 5});
        src.FillNoise(1, turn % 5 == 0 ? Noise::Special : Noise::Uniform);
        dst.FillNoise(2);
        Picture expected = reference::Read(dst);
        const bool done = reference::PlainBlur(reference::Read(src), expected, steps);
        FakeMemoryProvider memory({.fill = 0x7FA5A5A5u});
        FakeHost host;
        host.SetMemory(&memory);
        MemoryAllocator allocator(&host);
        FrameBuffer to = ViewOf(dst);
        // Bit for bit, floats too: the same taps are summed in the same order.
        ASSERT_EQ(FilterTentStepwise(ViewOf(src), to, job, format, allocator, steps.withAlpha), done);
        ASSERT_TRUE(reference::Matches(dst, expected)) << width << " x " << height << ", taps " << job.rowTaps
                                                       << " x " << job.columnTaps << ", format " << format;
        dst.Check();
    }
}

TEST(TentFilterStepwise, SpecialFloatsOfRecycledMemory_NeverShow)
{
    // No inside: the borders cannot be rebuilt, and what they held before must not matter.
    for (const std::uint32_t format : kServedFormats) {
        GuardedPicture src(4, 3, format);
        src.FillNoise(1);
        const TentJob job = JobOf(4, 3, 6, 5, false);
        GuardedPicture first(4, 3, format), second(4, 3, format);
        for (GuardedPicture* dst : {&first, &second}) {
            FakeMemoryProvider memory({.fill = dst == &first ? 0u : 0xFFFFFFFFu});
            FakeHost host;
            host.SetMemory(&memory);
            MemoryAllocator allocator(&host);
            FrameBuffer to = ViewOf(*dst);
            ASSERT_TRUE(FilterTentStepwise(ViewOf(src), to, job, format, allocator, true));
        }
        EXPECT_TRUE(Equal(first, second)) << format;
    }
}

TEST(TentFilterStepwise, SumsBeyond32Bits_StayConstant)
{
    // More taps than running sums hold.
    GuardedPicture src(12, 6, PF_BGRA8), dst(12, 6, PF_BGRA8);
    src.FillBytes(255);
    const TentJob job = JobOf(12, 6, 5802, 3, false);
    MemoryAllocator allocator;
    FrameBuffer to = ViewOf(dst);
    ASSERT_TRUE(FilterTentStepwise(ViewOf(src), to, job, PF_BGRA8, allocator, true));
    EXPECT_TRUE(Equal(dst, src));
}

} // namespace
} // namespace kelmora
