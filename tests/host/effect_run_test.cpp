#include "host/effect_run.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "host/library_file.h"
#include "tests/host/fake_library_file.h"

namespace kelmora::host {
namespace {

class RenderPictureTest : public testing::Test {
protected:
    FrameSettings Settings(std::int32_t number, float level) const
    {
        FrameSettings settings;
        settings.knobs = ReadFace(number, *MakeEffect(*m_library, number)).Defaults();
        settings.knobs[0].value = FloatWord(level);
        return settings;
    }

    LibraryFile m_file{kFakeLibrary};
    Held<IEffectLibrary> m_library = m_file.MakeLibrary();
};

constexpr PixelFormat kFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

TEST_F(RenderPictureTest, Filter_EveryFormat_GivesTheSamePicture)
{
    const Picture input{1, 1, {51, 102, 0, 200}};
    for (const PixelFormat format : kFormats) {
        FrameSettings settings = Settings(106, 0.5f);
        settings.format = format;
        // Half of the way to 255 from each colour: 51 + 204 / 2, 102 + 153 / 2 = 178.5 up, 255 / 2 = 127.5
        // up.
        EXPECT_EQ(RenderPicture(*MakeEffect(*m_library, 106), input, nullptr, settings),
                  (Picture{1, 1, {153, 179, 128, 200}}))
            << format;
    }
}

TEST_F(RenderPictureTest, Transition_IsOnItsWayToTheSecondPicture)
{
    const Picture first{2, 1, {0, 100, 200, 255, 40, 40, 40, 40}};
    const Picture second{2, 1, {200, 100, 0, 55, 80, 80, 80, 80}};
    FrameSettings settings = Settings(102, 0.5f);
    settings.progress = 0.25;
    EXPECT_EQ(RenderPicture(*MakeEffect(*m_library, 102), first, &second, settings),
              (Picture{2, 1, {50, 100, 150, 205, 50, 50, 50, 50}}));
}

TEST_F(RenderPictureTest, RowsFromTheTop_AreRow0First)
{
    // The filter lifts row y of 2 by level * (y + 1) / 2.
    const Picture input{1, 2, {0, 0, 0, 255, 0, 0, 0, 255}};
    EXPECT_EQ(RenderPicture(*MakeEffect(*m_library, 106), input, nullptr, Settings(106, 0.4f)),
              (Picture{1, 2, {51, 51, 51, 255, 102, 102, 102, 255}}));
}

/// Says false to every frame.
class Refuser : public IVideoEffect {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void**) override { return E_NOINTERFACE; }
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    const char* KELMORA_CALL GetName() override { return "Refuser"; }
    std::uint32_t KELMORA_CALL GetHelpId() override { return 0; }
    bool KELMORA_CALL GetParamInfo(std::uint32_t, ParamInfo*) override { return false; }
    bool KELMORA_CALL Render(IVideoHost*, VideoFrame*, VideoFrame*, VideoFrame*, RenderInfo*) override
    {
        return false;
    }
    const char* KELMORA_CALL GetPresetName(std::uint32_t) override { return nullptr; }
    bool KELMORA_CALL GetPresetValue(std::uint32_t, std::uint32_t, ParamValue*) override { return false; }
};

TEST(RenderPicture, EffectThatSaysFalse_IsAFailure)
{
    Refuser effect;
    EXPECT_THROW(RenderPicture(effect, {1, 1, {0, 0, 0, 0}}, nullptr, {}), Failure);
}

TEST_F(RenderPictureTest, Frame_IsThatOfThePicture)
{
    const Held<IVideoEffect> effect = MakeEffect(*m_library, 106);
    std::vector<std::uint8_t> first = {0, 102, 51, 200}; // blue first
    std::vector<std::uint8_t> output = {9, 9, 9, 9, 9};
    RenderFrame(*effect, 1, 1, first, nullptr, output, Settings(106, 0.5f));
    EXPECT_EQ(output, (std::vector<std::uint8_t>{128, 179, 153, 200}));
}

TEST_F(RenderPictureTest, FrameOfATransition_HasBothPictures)
{
    const Held<IVideoEffect> effect = MakeEffect(*m_library, 102);
    FrameSettings settings = Settings(102, 0.5f);
    settings.progress = 0.25;
    settings.pixelAspect = 1.5;
    std::vector<std::uint8_t> first = {0, 0, 0, 255};
    std::vector<std::uint8_t> second = {100, 200, 40, 255};
    std::vector<std::uint8_t> output;
    RenderFrame(*effect, 1, 1, first, &second, output, settings);
    EXPECT_EQ(output, (std::vector<std::uint8_t>{25, 50, 10, 255}));
}

} // namespace
} // namespace kelmora::host
