#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "contract/kelmora.h"

namespace kelmora {
namespace {

using Bytes = std::array<unsigned, 16>;

Bytes InMemory(const InterfaceId& id)
{
    std::uint8_t raw[16];
    static_assert(sizeof raw == sizeof id);
    std::memcpy(raw, &id, sizeof raw);
    Bytes bytes = {};
    for (std::size_t i = 0; i < 16; ++i)
        bytes[i] = raw[i];
    return bytes;
}

// The first three groups of the usual notation are numbers, low byte first in memory; the last two are
// bytes as they stand.
TEST(InterfaceIds_InMemory, AreTheirSixteenBytes)
{
    EXPECT_EQ(InMemory(IUnknown::id), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46}));
    EXPECT_EQ(InMemory(IVideoEffect::id),
              (Bytes{0xCD, 0x7F, 0xCF, 0x0B, 0xE5, 0x6B, 0x40, 0x4A, 0x9A, 0x49, 0xA6, 0x8D, 0x6B, 0xF6, 0x60,
                     0x26}));
    EXPECT_EQ(InMemory(IVideoHost::id),
              (Bytes{0x6F, 0xB3, 0xBC, 0x4A, 0xDC, 0x7F, 0xE6, 0x43, 0xB4, 0x5D, 0xFA, 0xD4, 0xD7, 0xAA, 0x80,
                     0xDD}));
    EXPECT_EQ(InMemory(IParamToolTip::id),
              (Bytes{0x23, 0x45, 0x0A, 0xC4, 0xE1, 0xEC, 0x3B, 0x49, 0xA7, 0x3D, 0xEC, 0xF1, 0x15, 0x38, 0xF6,
                     0x00}));
    EXPECT_EQ(InMemory(IMemoryProvider::id),
              (Bytes{0x81, 0x5B, 0x63, 0x9F, 0x6A, 0x50, 0xEE, 0x4D, 0x9D, 0xC7, 0x9E, 0x0B, 0xAB, 0xA2, 0xD5,
                     0xA2}));
    EXPECT_EQ(InMemory(IFrameProcessor::id),
              (Bytes{0x11, 0x9C, 0xD1, 0xB9, 0xCC, 0x28, 0x17, 0x4C, 0x80, 0xC6, 0x23, 0x5D, 0xAD, 0x31, 0x68,
                     0x4A}));
    EXPECT_EQ(InMemory(IPresetSaver::id),
              (Bytes{0x62, 0x14, 0xCD, 0x44, 0x3D, 0x6E, 0x8E, 0x43, 0x9B, 0x72, 0x8C, 0x53, 0x3A, 0xA8, 0xFD,
                     0x8C}));
    EXPECT_EQ(InMemory(IEffectLibrary::id),
              (Bytes{0x5F, 0x0B, 0x8D, 0x9B, 0x5A, 0x06, 0xB1, 0x46, 0x88, 0x9C, 0xF0, 0x57, 0x93, 0x4C, 0xE8,
                     0xA4}));
    EXPECT_EQ(InMemory(IMultiLingual::id),
              (Bytes{0x4E, 0x5D, 0xE8, 0xF6, 0x38, 0xDC, 0x6C, 0x47, 0xAC, 0x59, 0xEB, 0x50, 0x0B, 0xA9, 0x3C,
                     0xDC}));
}

TEST(InterfaceIds_Compared, DifferByAnySingleByte)
{
    for (std::size_t i = 0; i < 16; ++i) {
        InterfaceId other = IVideoEffect::id;
        EXPECT_TRUE(other == IVideoEffect::id);
        std::uint8_t raw[16];
        std::memcpy(raw, &other, sizeof raw);
        raw[i] ^= 1;
        std::memcpy(&other, raw, sizeof raw);
        EXPECT_FALSE(other == IVideoEffect::id) << "byte " << i;
        EXPECT_FALSE(IsSameId(&other, IVideoEffect::id)) << "byte " << i;
    }
}

TEST(InterfaceIds_Compared, MayStandAtAnyAddress)
{
    for (std::size_t shift = 0; shift < 8; ++shift) {
        alignas(8) std::uint8_t raw[24] = {};
        std::memcpy(raw + shift, &IVideoEffect::id, sizeof(InterfaceId));
        const auto* const asked = reinterpret_cast<const InterfaceId*>(raw + shift);
        EXPECT_TRUE(IsSameId(asked, IVideoEffect::id));
        EXPECT_FALSE(IsSameId(asked, IVideoHost::id));
        raw[shift + 15] ^= 1;
        EXPECT_FALSE(IsSameId(asked, IVideoEffect::id));
    }
}

TEST(InterfaceIds_AllNine, AreDistinct)
{
    const InterfaceId ids[] = {IUnknown::id,      IVideoEffect::id,    IVideoHost::id,
                               IParamToolTip::id, IMemoryProvider::id, IFrameProcessor::id,
                               IPresetSaver::id,  IEffectLibrary::id,  IMultiLingual::id};
    for (const InterfaceId& first : ids) {
        int same = 0;
        for (const InterfaceId& second : ids)
            same += first == second;
        EXPECT_EQ(same, 1);
    }
}

} // namespace
} // namespace kelmora
