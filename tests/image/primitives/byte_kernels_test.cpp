#include "image/primitives/byte_kernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"
#include "tests/support/guard_pages.h"

namespace kelmora {
namespace {

/// Calls check(kernels) for each variant that this machine runs.
template <class Check>
void ForEachKernels(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant))
            check(ByteKernelsFor(variant));
}

TEST(ByteKernels, EveryAvailableVariant_HasItsLoops)
{
    ForEachKernels([](const ByteKernels& kernels) {
        EXPECT_NE(kernels.premultiply, nullptr);
        EXPECT_NE(kernels.scale, nullptr);
        EXPECT_NE(kernels.average, nullptr);
        EXPECT_NE(kernels.reverse, nullptr);
        EXPECT_NE(kernels.copyChannel, nullptr);
        EXPECT_NE(kernels.extractChannel, nullptr);
        EXPECT_NE(kernels.setChannel, nullptr);
        EXPECT_NE(kernels.box3x3, nullptr);
        EXPECT_NE(kernels.box5x5, nullptr);
        EXPECT_NE(kernels.tintAlphaLast, nullptr);
        EXPECT_NE(kernels.tintAlphaFirst, nullptr);
        EXPECT_NE(kernels.yCbCr422ToRgb, nullptr);
    });
}

TEST(ByteKernels, AverageOfEveryPair_IsTheNearestAndTiesAreEven)
{
    ForEachKernels([](const ByteKernels& kernels) {
        for (int other = 0; other < 256; ++other) {
            std::uint8_t first[256], mean[257];
            for (int i = 0; i < 256; ++i) {
                first[i] = static_cast<std::uint8_t>(i);
                mean[i] = static_cast<std::uint8_t>(other);
            }
            mean[256] = 0xC3;
            kernels.average(first, mean, 256);
            for (int i = 0; i < 256; ++i) {
                const int sum = i + other;
                EXPECT_EQ(mean[i], sum % 4 == 3 ? sum / 2 + 1 : sum / 2) << i << ", " << other;
            }
            EXPECT_EQ(mean[256], 0xC3);
        }
    });
}

/// Bytes that tell their places: 251 is no multiple of 4.
std::vector<std::uint8_t> Places(int count, int first)
{
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>((first + i) % 251));
    return bytes;
}

constexpr int kMostPixels = 150;

TEST(ByteKernels, ReversalOfEveryLength_TurnsPixelsRoundInPlaceAndNot)
{
    ForEachKernels([](const ByteKernels& kernels) {
        for (int pixels = 1; pixels <= kMostPixels; ++pixels) {
            const auto src = Places(4 * kMostPixels + 1, 0);
            auto inPlace = src, other = Places(4 * kMostPixels + 1, 100);
            kernels.reverse(src.data(), other.data(), pixels);
            kernels.reverse(inPlace.data(), inPlace.data(), pixels);
            for (int i = 0; i <= 4 * kMostPixels; ++i) {
                const bool turned = i < 4 * pixels;
                ASSERT_EQ(other.data()[i], turned ? (i ^ 3) % 251 : (100 + i) % 251) << i << " of " << pixels;
                ASSERT_EQ(inPlace.data()[i], turned ? (i ^ 3) % 251 : i % 251) << i << " of " << pixels;
            }
        }
    });
}

TEST(ByteKernels, ChannelRowsOfEveryLength_EndWithTheLastPixelsChannel)
{
    // The last pixel's channel is the last byte before memory that nobody may touch.
    class LastBytes {
    public:
        LastBytes() : m_pages(3 * PageBytes()) { m_pages.Open(PageBytes(), PageBytes()); }

        std::uint8_t* Filled(const std::vector<std::uint8_t>& bytes)
        {
            std::uint8_t* const end = m_pages.Base() + 2 * PageBytes();
            return std::copy(bytes.begin(), bytes.end(), end - bytes.size()) - bytes.size();
        }

    private:
        GuardPages m_pages;
    };
    LastBytes srcBytes, copiedBytes, setBytes, planeBytes;
    ForEachKernels([&](const ByteKernels& kernels) {
        for (int pixels = 1; pixels <= kMostPixels; ++pixels) {
            const int last = 4 * (pixels - 1);
            const std::uint8_t* const src = srcBytes.Filled(Places(last + 1, 0));
            std::uint8_t* const copied = copiedBytes.Filled(Places(last + 1, 100));
            std::uint8_t* const set = setBytes.Filled(Places(last + 1, 100));
            std::uint8_t* const plane = planeBytes.Filled(Places(pixels, 100));
            kernels.copyChannel(src, copied, pixels);
            kernels.setChannel(77, set, pixels);
            kernels.extractChannel(src, plane, pixels);
            for (int i = 0; i <= last; ++i) {
                ASSERT_EQ(copied[i], i % 4 == 0 ? i % 251 : (100 + i) % 251) << i << " of " << pixels;
                ASSERT_EQ(set[i], i % 4 == 0 ? 77 : (100 + i) % 251) << i << " of " << pixels;
            }
            for (int x = 0; x < pixels; ++x)
                ASSERT_EQ(plane[x], 4 * x % 251) << x << " of " << pixels;
        }
    });
}

TEST(ByteKernels, CopyOfAChannelToAnotherOfTheSameRow_TakesWhatStoodThere)
{
    ForEachKernels([](const ByteKernels& kernels) {
        for (const int from : {0, 3}) {
            auto row = Places(4 * kMostPixels, 0);
            kernels.copyChannel(row.data() + from, row.data() + 3 - from, kMostPixels);
            for (int i = 0; i < 4 * kMostPixels; ++i)
                ASSERT_EQ(row.data()[i], (i % 4 == 3 - from ? i - 3 + 2 * from : i) % 251) << i;
        }
    });
}

TEST(ByteKernels, BoxesOfEveryLength_AreTheMeansOfARamp)
{
    // Rows differ by 10 and columns by 1, but for a fall every 50 columns: away from it the mean is the middle value.
    constexpr int most = 1100, step = most + 4;
    std::vector<std::uint8_t> src(5 * step);
    const auto valueAt = [](int x, int y) { return 40 + 10 * y + x % 50; };
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < step; ++x)
            src[static_cast<std::size_t>(y * step + x)] = static_cast<std::uint8_t>(valueAt(x, y));
    const auto sumAt = [&](int x, int reach) {
        int sum = 0;
        for (int r = -reach; r <= reach; ++r)
            for (int c = -reach; c <= reach; ++c)
                sum += valueAt(2 + x + c, 2 + r);
        return sum;
    };
    ForEachKernels([&](const ByteKernels& kernels) {
        for (int width = 1; width <= most; width += width < 150 ? 1 : 119) {
            std::vector<std::uint8_t> three(most + 1, 7), five(most + 1, 7);
            const std::uint8_t* const middle = src.data() + 2 * step + 2;
            kernels.box3x3({middle, step, three.data(), width});
            kernels.box5x5({middle, step, five.data(), width});
            for (int x = 0; x <= most; ++x) {
                ASSERT_EQ(three.data()[x], x < width ? (sumAt(x, 1) + 5) * 455 / 4096 : 7)
                    << x << " of " << width;
                ASSERT_EQ(five.data()[x], x < width ? (sumAt(x, 2) + 13) * 10485 / 262144 : 7)
                    << x << " of " << width;
                if (const int place = (2 + x) % 50; x < width && place >= 2 && place < 48) {
                    ASSERT_EQ(five.data()[x], 60 + place);
                    ASSERT_EQ(three.data()[x], 60 + place);
                }
            }
        }
    });
}

TEST(ByteKernels, TintOfEveryCount_TakesLumaFromColoursAlone)
{
    // Luma in 1000ths is 100 * 10 + 300 * 20 + 500 * 30 = 22000; times 1.5, 2.75 and 0.5 over 1000 that is 33, 60.5
    // and 11: a hair is added, so that no product is whole.
    ForEachKernels([](const ByteKernels& kernels) {
        for (int pixels = 1; pixels <= 33; ++pixels)
            for (const int firstColour : {0, 1}) {
                std::uint8_t values[34 * 4];
                TintRow row = {};
                for (int c = 0; c < 3; ++c) {
                    constexpr std::int16_t luma[] = {100, 300, 500};
                    constexpr double scale[] = {0.0015, 0.00275, 0.0005};
                    row.luma[firstColour + c] = luma[c];
                    row.scale[firstColour + c] = scale[c] + 1e-9;
                }
                for (int i = 0; i < 34 * 4; ++i) {
                    const int colour = i % 4 - firstColour;
                    values[i] =
                        static_cast<std::uint8_t>(colour >= 0 && colour < 3 ? 10 * (colour + 1) : 200);
                }
                row.src = row.dst = values;
                row.pixels = pixels;
                firstColour == 0 ? kernels.tintAlphaLast(row) : kernels.tintAlphaFirst(row);
                for (int x = 0; x < pixels; ++x) {
                    const std::uint8_t* const pixel = values + 4 * x;
                    EXPECT_EQ(pixel[firstColour], 33);
                    EXPECT_EQ(pixel[firstColour + 1], 60);
                    EXPECT_EQ(pixel[firstColour + 2], 11);
                    EXPECT_EQ(pixel[firstColour == 0 ? 3 : 0], 0);
                }
                for (int i = 4 * pixels; i < 34 * 4; ++i)
                    EXPECT_GE(values[i], 10) << "behind the row";
            }
    });
}

TEST(ByteKernels, BlocksOfYCbCr_AreEvenAndOverwriteOnlyPixelsThatFollow)
{
    ForEachKernels([](const ByteKernels& kernels) {
        for (int pixels = 0; pixels <= 140; ++pixels) {
            // Y 235 with neutral chroma is 254 in each colour.
            std::uint8_t src[280], dst[3 * 140 + 1];
            for (int i = 0; i < 280; ++i)
                src[i] = i % 2 == 0 ? 235 : 128;
            for (std::uint8_t& value : dst)
                value = 7;
            const int done = kernels.yCbCr422ToRgb(src, dst, pixels);
            ASSERT_GE(done, 0);
            ASSERT_LE(done, pixels);
            ASSERT_EQ(done % 2, 0);
            for (int i = 0; i < 3 * done; ++i)
                ASSERT_EQ(dst[i], 254) << i << " of " << pixels;
            for (int i = 3 * pixels; i < 3 * 140 + 1; ++i)
                ASSERT_EQ(dst[i], 7) << i << " behind " << pixels;
        }
    });
}

} // namespace
} // namespace kelmora
