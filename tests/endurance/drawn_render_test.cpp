#include "tests/endurance/drawn_render.h"

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"

namespace kelmora {
namespace {

/// An effect of three presets that writes the first picture's bytes plus 1, or nothing where it gets no memory.
class PlusOne final : public IVideoEffect {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void**) override { return E_NOINTERFACE; }
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    const char* KELMORA_CALL GetName() override { return "Plus One"; }
    std::uint32_t KELMORA_CALL GetHelpId() override { return 0; }
    bool KELMORA_CALL GetParamInfo(std::uint32_t, ParamInfo*) override { return false; }
    const char* KELMORA_CALL GetPresetName(std::uint32_t preset) override
    {
        return preset < 3 ? "Some" : nullptr;
    }

    bool KELMORA_CALL GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out) override
    {
        *out = {preset, knob, ParamChoice};
        return true;
    }

    bool KELMORA_CALL Render(IVideoHost* host, VideoFrame* first, VideoFrame*, VideoFrame* output,
                             RenderInfo*) override
    {
        host->GetParamValue(4, &answer, ParamChoice);
        void* provider = nullptr;
        void* memory = nullptr;
        if (host->QueryInterface(&IMemoryProvider::id, &provider) == S_OK) {
            auto* const source = static_cast<IMemoryProvider*>(provider);
            if (!source->Alloc(&memory, 8))
                return false;
            if (!leaks)
                source->Free(memory);
        }
        const auto bytes = static_cast<std::size_t>(first->stride) * static_cast<std::size_t>(first->height);
        for (std::size_t i = 0; i < bytes; ++i)
            static_cast<std::uint8_t*>(output->data)[i] =
                static_cast<std::uint8_t>(static_cast<std::uint8_t*>(first->data)[i] + 1);
        leaked = leaks ? memory : nullptr;
        return true;
    }

    ParamValue answer = {};
    bool leaks = false;
    void* leaked = nullptr;
};

TEST(Draws, OneSeed_GivesTheSameNumbersBelowTheBound)
{
    Draws first(5), second(5), other(6);
    bool differs = false;
    for (int i = 0; i < 1000; ++i) {
        const std::uint32_t number = first.Below(7);
        EXPECT_LT(number, 7u);
        EXPECT_EQ(number, second.Below(7));
        differs = differs || number != other.Below(7);
    }
    EXPECT_TRUE(differs);
}

TEST(Draws, Word_FirstsOfSeedZero_AreThoseOfSplitMix64)
{
    Draws draws(0);
    EXPECT_EQ(draws.Word(), 0xE220A8397B1DCDAFu);
    EXPECT_EQ(draws.Word(), 0x6E789E6AA1B965F4u);
}

TEST(DrawnRender, Draw_StaysInItsRangesAndReachesTheirEnds)
{
    PlusOne effect;
    Draws draws(1);
    bool presets[3] = {}, least = false, most = false;
    for (int i = 0; i < 2000; ++i) {
        const DrawnRender render = Draw(draws, effect, 16, 20);
        ASSERT_LT(render.preset, 3u);
        ASSERT_TRUE(render.width >= 16 && render.width <= 20);
        ASSERT_TRUE(render.height >= 16 && render.height <= 20);
        ASSERT_TRUE(render.progress >= 0.0 && render.progress <= 1.0);
        presets[render.preset] = true;
        least = least || render.width == 16;
        most = most || render.height == 20;
    }
    EXPECT_TRUE(presets[0] && presets[1] && presets[2] && least && most);
}

TEST(DrawnRender, RenderDrawn_ShowsThePresetAndDigestsWhatCameOut)
{
    PlusOne effect;
    PlainHost host;
    RenderPictures pictures(4);
    DrawnRender render;
    render.preset = 2;
    render.width = 2;
    render.height = 1;
    EXPECT_TRUE(RenderDrawn(effect, render, host, pictures));
    EXPECT_EQ(effect.answer.value, 2u);
    EXPECT_EQ(effect.answer.valueY, 4u);
    std::uint64_t digest = 0xCBF29CE484222325u;
    const VideoFrame first = pictures.First();
    for (int i = 0; i < 8; ++i) {
        const auto byte = static_cast<std::uint8_t>(static_cast<std::uint8_t*>(first.data)[i] + 1);
        digest = (digest ^ byte) * 0x100000001B3u;
    }
    EXPECT_EQ(pictures.OutputDigest(), digest);
    render.noise = 1;
    RenderDrawn(effect, render, host, pictures);
    EXPECT_NE(pictures.OutputDigest(), digest);
}

TEST(PlainHost, Provide_CountsWhatIsOpenAndRefusesTheOneOfThatNumber)
{
    PlusOne effect;
    PlainHost host;
    RenderPictures pictures(4);
    DrawnRender render;
    render.width = render.height = 4;
    host.Provide(true, 1);
    EXPECT_TRUE(RenderDrawn(effect, render, host, pictures));
    EXPECT_FALSE(RenderDrawn(effect, render, host, pictures));
    EXPECT_EQ(host.Refused(), 1u);
    effect.leaks = true;
    EXPECT_TRUE(RenderDrawn(effect, render, host, pictures));
    EXPECT_EQ(host.OpenBlocks(), 1);
    host.Free(effect.leaked);
    EXPECT_EQ(host.OpenBlocks(), 0);
    host.Provide(false);
    effect.leaks = false;
    EXPECT_TRUE(RenderDrawn(effect, render, host, pictures));
}

} // namespace
} // namespace kelmora
