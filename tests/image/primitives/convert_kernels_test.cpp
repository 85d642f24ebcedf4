#include "image/primitives/convert_kernels.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kMoat = 0xA7;

template <class Check>
void ForEachKernels(Check&& check)
{
    for (const CpuVariant variant : kAllVariants)
        if (IsAvailable(variant))
            check(ConvertKernelsFor(variant));
}

/// Exact: the product of a byte and a float fits into a double.
float PlainLevel(int byte)
{
    return static_cast<float>(byte * static_cast<double>(0.003921569f));
}

/// Exact: 24 bits times 8, and a half, fit into a double.
int PlainByte(float level)
{
    if (!(level > 0.0f))
        return 0;
    return level >= 1.0f ? 255 : static_cast<int>(std::floor(static_cast<double>(level) * 255.0 + 0.5));
}

/// Levels on both sides of everything at which a byte changes, or may seem to.
std::vector<float> LevelsWithEdges()
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> levels = {0.0f, -0.0f,  1e-45f, 1e-38f, -1e-45f,  0.5f,     1.0f,
                                 2.0f, -1.0f,  1e38f,  -1e38f, 3e9f,     -3e9f,    8421505,
                                 1e7f, -0.51f, NAN,    -NAN,   infinity, -infinity};
    for (int twice = 0; twice <= 512; ++twice) {
        const float edge = static_cast<float>(twice / 510.0);
        float below = edge, above = edge;
        levels.push_back(edge);
        for (int i = 0; i < 3; ++i) {
            levels.push_back(below = std::nextafter(below, -infinity));
            levels.push_back(above = std::nextafter(above, infinity));
        }
    }
    for (std::uint32_t i = 0; i < 4096; ++i)
        levels.push_back(static_cast<float>((i * 2654435761u) >> 8) / 16777216.0f);
    levels.resize(levels.size() / 4 * 4);
    return levels;
}

TEST(ConvertKernels, ToBytesAtEveryEdge_IsTheNearestHalvesUp)
{
    const std::vector<float> levels = LevelsWithEdges();
    ForEachKernels([&](const ConvertKernels& kernels) {
        Bytes straight(levels.size()), reversed(levels.size());
        kernels.toBytes(levels.data(), straight.data(), static_cast<int>(levels.size() / 4));
        kernels.toBytesReversed(levels.data(), reversed.data(), static_cast<int>(levels.size() / 4));
        for (std::size_t i = 0; i < levels.size(); ++i) {
            const int expected = PlainByte(levels[i]);
            ASSERT_EQ(straight[i], expected) << static_cast<double>(levels[i]);
            ASSERT_EQ(reversed[i ^ 3], expected) << static_cast<double>(levels[i]);
        }
    });
}

TEST(ConvertKernels, ToFloatsOfEveryByte_IsTheRoundedProduct)
{
    Bytes bytes(256);
    for (std::size_t i = 0; i < 256; ++i)
        bytes[i] = static_cast<std::uint8_t>(i);
    ForEachKernels([&](const ConvertKernels& kernels) {
        std::vector<float> straight(256), reversed(256);
        kernels.toFloats(bytes.data(), straight.data(), 64);
        kernels.toFloatsReversed(bytes.data(), reversed.data(), 64);
        for (std::size_t i = 0; i < 256; ++i) {
            ASSERT_EQ(straight[i], PlainLevel(static_cast<int>(i)));
            ASSERT_EQ(reversed[i ^ 3], PlainLevel(static_cast<int>(i)));
        }
    });
}

TEST(ConvertKernels, EveryLengthAtAnyAddress_StaysInsideOfItsRow)
{
    ForEachKernels([](const ConvertKernels& kernels) {
        for (int pixels = 1; pixels <= 70; ++pixels)
            for (std::size_t shift = 0; shift < 5; ++shift) {
                const auto channels = static_cast<std::size_t>(pixels) * 4;
                Bytes bytes(channels + shift + 1, kMoat), floats(4 * channels + shift + 1, kMoat);
                for (std::size_t i = 0; i < channels; ++i)
                    bytes[shift + i] = static_cast<std::uint8_t>(i * 37 + 11);
                const Bytes before = bytes;

                kernels.toFloatsReversed(bytes.data() + shift, floats.data() + shift, pixels);
                for (std::size_t i = 0; i < channels; ++i) {
                    float level;
                    std::memcpy(&level, floats.data() + shift + 4 * i, 4);
                    ASSERT_EQ(level, PlainLevel(before[shift + (i ^ 3)])) << pixels;
                }
                bytes.assign(bytes.size(), kMoat);
                kernels.toBytesReversed(floats.data() + shift, bytes.data() + shift, pixels);
                ASSERT_EQ(bytes, before) << pixels;
                for (std::size_t i = 0; i < shift; ++i)
                    ASSERT_EQ(floats[i], kMoat);
                ASSERT_EQ(floats.back(), kMoat) << pixels;
            }
    });
}

TEST(ConvertKernels, RowsTooLongForACache_AreTheSameWhereverTheyBegin)
{
    constexpr std::size_t channels = 4 * 1303;
    Bytes bytes(channels);
    for (std::size_t i = 0; i < channels; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    alignas(64) static float memory[channels + 16];
    ForEachKernels([&](const ConvertKernels& kernels) {
        for (const std::size_t shift : {std::size_t{0}, std::size_t{1}, std::size_t{4}}) {
            float* const floats = memory + shift;
            floats[channels] = 7;
            kernels.toFloats(bytes.data(), floats, channels / 4);
            for (std::size_t i = 0; i < channels; ++i)
                ASSERT_EQ(floats[i], PlainLevel(bytes[i])) << i;
            ASSERT_EQ(floats[channels], 7.0f);
        }
    });
}

} // namespace
} // namespace kelmora
