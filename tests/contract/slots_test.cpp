// The order of the tables. A pointer to a virtual member holds the place of its slot, so the order can be
// read without an object.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "contract/kelmora.h"

namespace kelmora {
namespace {

// The pointer's first word is the slot's offset in bytes, plus 1 on processors whose functions may start at
// odd addresses; the second adjusts `this`, which single inheritance never does.
template <class Member>
std::size_t SlotOf(Member member)
{
    static_assert(sizeof member == 2 * sizeof(std::size_t));
    std::size_t words[2];
    std::memcpy(words, &member, sizeof words);
    return (words[0] & ~std::size_t{1}) / sizeof(void*);
}

template <class Interface>
void ExpectRootFirst()
{
    EXPECT_EQ(SlotOf(&Interface::QueryInterface), 0u);
    EXPECT_EQ(SlotOf(&Interface::AddRef), 1u);
    EXPECT_EQ(SlotOf(&Interface::Release), 2u);
    EXPECT_EQ(sizeof(Interface), sizeof(void*));
}

TEST(Slots_OfUnknown, AreTheFirstThreeEverywhere)
{
    ExpectRootFirst<IUnknown>();
    ExpectRootFirst<IVideoEffect>();
    ExpectRootFirst<IVideoHost>();
    ExpectRootFirst<IParamToolTip>();
    ExpectRootFirst<IMemoryProvider>();
    ExpectRootFirst<IFrameProcessor>();
    ExpectRootFirst<IPresetSaver>();
    ExpectRootFirst<IEffectLibrary>();
    ExpectRootFirst<IMultiLingual>();
}

TEST(Slots_OfVideoEffect, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IVideoEffect::GetName), 3u);
    EXPECT_EQ(SlotOf(&IVideoEffect::GetHelpId), 4u);
    EXPECT_EQ(SlotOf(&IVideoEffect::GetParamInfo), 5u);
    EXPECT_EQ(SlotOf(&IVideoEffect::Render), 6u);
    EXPECT_EQ(SlotOf(&IVideoEffect::GetPresetName), 7u);
    EXPECT_EQ(SlotOf(&IVideoEffect::GetPresetValue), 8u);
}

TEST(Slots_OfVideoHost, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IVideoHost::GetParamValue), 3u);
    EXPECT_EQ(SlotOf(&IVideoHost::HostReserved4), 4u);
    EXPECT_EQ(SlotOf(&IVideoHost::HostReserved5), 5u);
    EXPECT_EQ(SlotOf(&IVideoHost::HostReserved6), 6u);
    EXPECT_EQ(SlotOf(&IVideoHost::HostReserved7), 7u);
    EXPECT_EQ(SlotOf(&IVideoHost::GetHostInfo), 8u);
}

TEST(Slots_OfParamToolTip, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IParamToolTip::GetToolTip), 3u);
}

TEST(Slots_OfMemoryProvider, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IMemoryProvider::Alloc), 3u);
    EXPECT_EQ(SlotOf(&IMemoryProvider::Free), 4u);
    EXPECT_EQ(SlotOf(&IMemoryProvider::AllocImage), 5u);
    EXPECT_EQ(SlotOf(&IMemoryProvider::FreeImage), 6u);
}

TEST(Slots_OfFrameProcessor, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IFrameProcessor::Copy), 3u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::Resize), 4u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::ReverseChannels), 5u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::YCbCr422ToBGRA), 6u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::BGRAToYCbCr422), 7u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::SetChannel), 8u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::AlphaOver), 9u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::PermuteChannels), 10u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::Premultiply), 11u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::YCbCrToARGB), 12u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::ARGBToYCbCr), 13u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::FlipVertical), 14u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::FlipVerticalTo), 15u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::Destroy), 16u);
    EXPECT_EQ(SlotOf(&IFrameProcessor::ResizeRegion), 17u);
}

TEST(Slots_OfPresetSaver, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IPresetSaver::LoadPreset), 3u);
    EXPECT_EQ(SlotOf(&IPresetSaver::SavePreset), 4u);
    EXPECT_EQ(SlotOf(&IPresetSaver::Destroy), 5u);
}

TEST(Slots_OfEffectLibrary, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IEffectLibrary::GetName), 3u);
    EXPECT_EQ(SlotOf(&IEffectLibrary::CreateEffect), 4u);
    EXPECT_EQ(SlotOf(&IEffectLibrary::ShowHelp), 5u);
    EXPECT_EQ(SlotOf(&IEffectLibrary::LibraryReserved), 6u);
    EXPECT_EQ(SlotOf(&IEffectLibrary::CreateFrameProcessor), 7u);
    EXPECT_EQ(SlotOf(&IEffectLibrary::CreatePresetSaver), 8u);
}

TEST(Slots_OfMultiLingual, StandInTheirOrder)
{
    EXPECT_EQ(SlotOf(&IMultiLingual::GetTextEx), 3u);
    EXPECT_EQ(SlotOf(&IMultiLingual::GetText), 4u);
}

} // namespace
} // namespace kelmora
