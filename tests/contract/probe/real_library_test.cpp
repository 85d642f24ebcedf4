// The probe as a host of the real library file, as it is delivered.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/kelmora.h"
#include "platform/module.h"
#include "tests/contract/probe/call_aligned.h"
#include "tests/contract/probe/probe.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

using kelmora_probe::Word;

struct Expected {
    std::int32_t number;
    const char* name;
    Word helpId;
    int knobs;
    int presets;
    bool takesMemory = true; ///< of the host, with the knobs' defaults
};

void PrintTo(const Expected& expected, std::ostream* out)
{
    *out << expected.number << " " << expected.name;
}

// Filters and transitions of several families.
constexpr Expected kVisited[] = {
    {Effect3DConfetti, "3D Confetti", 970, 4, 14},
    {Effect3DPizzaBoxes, "3D Pizza Boxes", 966, 8, 17},
    {EffectColorMelt, "Color Melt", 962, 4, 9},
    {EffectPaperCollage, "Paper Collage", 962, 7, 13},
    {EffectAirBrush, "Air Brush", 961, 2, 6},
    {EffectDetailEnhancer, "Detail Enhancer", 961, 1, 4},
    {EffectWaterColor, "Water Color", 961, 5, 11, false},
};

constexpr std::int32_t kWidth = 64;
constexpr std::int32_t kHeight = 48;

class RealLibrary : public testing::Test {
protected:
    void SetUp() override
    {
        std::string error;
        m_file = platform::Module::LoadFile(KELMORA_LIBRARY_FILE, &error);
        ASSERT_TRUE(m_file) << KELMORA_LIBRARY_FILE << ": " << error;
        m_getEffectsLibrary = m_file.FunctionNamed<GetEffectsLibraryFunction>("GetEffectsLibrary");
        m_canUnload = m_file.FunctionNamed<CanUnloadDLLNowFunction>("CanUnloadDLLNow");
        ASSERT_NE(m_getEffectsLibrary, nullptr);
        ASSERT_NE(m_canUnload, nullptr);
    }

    // Whether any number gives an effect.
    bool MakesEffects() const
    {
        IEffectLibrary* const library = m_getEffectsLibrary();
        bool any = false;
        for (std::int32_t number = 100; number < 110; ++number) {
            if (IVideoEffect* const effect = library->CreateEffect(number)) {
                effect->Release();
                any = true;
            }
        }
        library->Release();
        return any;
    }

    platform::Module m_file;
    GetEffectsLibraryFunction m_getEffectsLibrary = nullptr;
    CanUnloadDLLNowFunction m_canUnload = nullptr;
};

class RealLibraryEffect : public RealLibrary, public testing::WithParamInterface<Expected> {
protected:
    // What a host built with contract/ gets of the same frame.
    void RenderOurselves(const GuardedPicture& first, const GuardedPicture& second, GuardedPicture& output,
                         RenderInfo& info) const
    {
        IEffectLibrary* const library = m_getEffectsLibrary();
        IVideoEffect* const effect = library->CreateEffect(GetParam().number);
        ASSERT_NE(effect, nullptr);
        FakeHost host;
        ParamInfo knob = {};
        for (std::uint32_t i = 0; effect->GetParamInfo(i, &knob); ++i) {
            host.SetKnob(i, {knob.value, knob.valueY, knob.kind});
            knob = {};
        }
        VideoFrame firstFrame = first.Frame();
        VideoFrame secondFrame = second.Frame();
        VideoFrame outputFrame = output.Frame();
        EXPECT_TRUE(effect->Render(&host, &firstFrame, &secondFrame, &outputFrame, &info));
        effect->Release();
        library->Release();
    }
};

// The results of the calls of that name, in order.
std::vector<Word> ResultsOf(const kelmora_probe::Report& report, const std::string& what)
{
    std::vector<Word> results;
    for (int i = 0; i < report.count; ++i)
        if (report.calls[i].what == what)
            results.push_back(report.calls[i].result);
    return results;
}

const char* Text(Word address)
{
    return reinterpret_cast<const char*>(address);
}

TEST_P(RealLibraryEffect, VisitedByAForeignHost_AnswersAndRendersAsForOurOwn)
{
    if (!MakesEffects())
        GTEST_SKIP() << "the library makes no effect";
    const GuardedPicture first = MakePicture(Motif::ZonePlate, kWidth, kHeight, PF_BGRA8);
    const GuardedPicture second = MakePicture(Motif::HardEdges, kWidth, kHeight, PF_BGRA8);
    RenderInfo info = MakeInfo(AtProgress(0.5));
    GuardedPicture expected(kWidth, kHeight, PF_BGRA8);
    expected.FillWord(0x7FA5A5A5u);
    const GuardedPicture untouched(expected);
    RenderOurselves(first, second, expected, info);
    ASSERT_FALSE(Equal(expected, untouched));

    for (const unsigned residue : {0u, 4u, 8u, 12u}) {
        SCOPED_TRACE(testing::Message() << "stack " << residue << " bytes past a multiple of 16");
        GuardedPicture output(untouched);
        VideoFrame firstFrame = first.Frame();
        VideoFrame secondFrame = second.Frame();
        VideoFrame outputFrame = output.Frame();
        const auto report = std::make_unique<kelmora_probe::Report>();
        kelmora_probe::Visit visit = {};
        visit.getEffectsLibrary = reinterpret_cast<void*>(m_getEffectsLibrary);
        visit.effectId = GetParam().number;
        visit.firstPicture = &firstFrame;
        visit.secondPicture = &secondFrame;
        visit.output = &outputFrame;
        visit.info = &info;
        visit.report = report.get();
        VisitAligned(&visit, residue);

        for (int i = 0; i < report->count; ++i)
            EXPECT_EQ(report->calls[i].stackShift, 0) << report->calls[i].what;

        const std::vector<Word> created = ResultsOf(*report, "IEffectLibrary::CreateEffect");
        ASSERT_EQ(created.size(), 2u);
        ASSERT_NE(created[0], 0u);
        EXPECT_EQ(created[1], 0u) << "number 110";
        EXPECT_EQ(m_canUnload(), 1);

        // The effect's face.
        EXPECT_EQ(ResultsOf(*report, "IVideoEffect::QueryInterface"), (std::vector<Word>{0, 0x80004002u}));
        EXPECT_EQ(ResultsOf(*report, "the effect's own view"), (std::vector<Word>{1}));
        EXPECT_EQ(ResultsOf(*report, "a view that it has not"), (std::vector<Word>{0}));
        EXPECT_EQ(ResultsOf(*report, "IVideoEffect::Release"), (std::vector<Word>{1, 0}));
        EXPECT_EQ(ResultsOf(*report, "IVideoEffect::GetHelpId"), (std::vector<Word>{GetParam().helpId}));
        EXPECT_EQ(ResultsOf(*report, "IVideoEffect::GetPresetValue"), (std::vector<Word>{1}));
        const std::vector<Word> name = ResultsOf(*report, "IVideoEffect::GetName");
        ASSERT_EQ(name.size(), 1u);
        EXPECT_STREQ(Text(name[0]), GetParam().name);
        EXPECT_EQ(visit.knobs, GetParam().knobs);
        EXPECT_EQ(visit.presets, GetParam().presets);

        // The frame.
        EXPECT_EQ(ResultsOf(*report, "IVideoEffect::Render"), (std::vector<Word>{1}));
        EXPECT_TRUE(Equal(output, expected));
        EXPECT_GT(visit.knobsAsked, 0);
        EXPECT_EQ(visit.knobsOffTable, 0);
        EXPECT_TRUE(visit.blocksGiven > 0 || !GetParam().takesMemory);
        EXPECT_EQ(visit.blocksRefused, 0);
        EXPECT_EQ(visit.blocksOpen, 0);
        EXPECT_EQ(visit.hostReferences, 0);
        EXPECT_EQ(visit.memoryReferences, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, RealLibraryEffect, testing::ValuesIn(kVisited),
                         [](const testing::TestParamInfo<Expected>& value) {
                             return std::to_string(value.param.number);
                         });

// A visit that asks for no effect.
std::unique_ptr<kelmora_probe::Report> VisitWithoutEffect(GetEffectsLibraryFunction getEffectsLibrary,
                                                          unsigned residue)
{
    auto report = std::make_unique<kelmora_probe::Report>();
    const GuardedPicture picture = MakePicture(Motif::Ramp, 8, 8, PF_BGRA8);
    VideoFrame frame = picture.Frame();
    kelmora_probe::Visit visit = {};
    visit.getEffectsLibrary = reinterpret_cast<void*>(getEffectsLibrary);
    visit.effectId = 99;
    visit.firstPicture = &frame;
    visit.report = report.get();
    VisitAligned(&visit, residue);
    for (int i = 0; i < report->count; ++i)
        EXPECT_EQ(report->calls[i].stackShift, 0) << report->calls[i].what;
    return report;
}

TEST_F(RealLibrary, VisitedByAForeignHost_CountsAndNamesItself)
{
    for (const unsigned residue : {0u, 4u, 8u, 12u}) {
        const auto report = VisitWithoutEffect(m_getEffectsLibrary, residue);
        EXPECT_EQ(ResultsOf(*report, "IEffectLibrary::QueryInterface"), (std::vector<Word>{0, 0}));
        EXPECT_EQ(ResultsOf(*report, "the library's own view"), (std::vector<Word>{1}));
        EXPECT_EQ(ResultsOf(*report, "the library's root"), (std::vector<Word>{1}));
        EXPECT_EQ(ResultsOf(*report, "IEffectLibrary::AddRef"), (std::vector<Word>{4}));
        EXPECT_EQ(ResultsOf(*report, "IEffectLibrary::Release"), (std::vector<Word>{3, 2, 1, 0}));
        EXPECT_EQ(ResultsOf(*report, "IEffectLibrary::CreateEffect"), (std::vector<Word>{0, 0}))
            << "99 and 110";
        const std::vector<Word> name = ResultsOf(*report, "IEffectLibrary::GetName");
        ASSERT_EQ(name.size(), 1u);
        EXPECT_STREQ(Text(name[0]), "Larkvee Kelmora");
        EXPECT_EQ(m_canUnload(), 1);
    }
}

TEST_F(RealLibrary, VisitedByAForeignHost_GivesServicesThatEndByCountOrBySlot)
{
    for (const unsigned residue : {0u, 4u, 8u, 12u}) {
        const auto report = VisitWithoutEffect(m_getEffectsLibrary, residue);
        const std::vector<Word> processors = ResultsOf(*report, "IEffectLibrary::CreateFrameProcessor");
        ASSERT_EQ(processors.size(), 2u);
        EXPECT_NE(processors[0], 0u);
        EXPECT_NE(processors[1], 0u);
        EXPECT_EQ(ResultsOf(*report, "IFrameProcessor, a null record"), (std::vector<Word>{0}));
        EXPECT_EQ(ResultsOf(*report, "IFrameProcessor::Release"), (std::vector<Word>{0}));
        EXPECT_EQ(ResultsOf(*report, "IFrameProcessor::Destroy").size(), 1u);
        const std::vector<Word> savers = ResultsOf(*report, "IEffectLibrary::CreatePresetSaver");
        ASSERT_EQ(savers.size(), 2u);
        EXPECT_NE(savers[0], 0u);
        EXPECT_NE(savers[1], 0u);
        EXPECT_EQ(ResultsOf(*report, "IPresetSaver::Release"), (std::vector<Word>{0}));
        EXPECT_EQ(ResultsOf(*report, "IPresetSaver::Destroy").size(), 1u);
        EXPECT_EQ(m_canUnload(), 1);
    }
}

// The pictures of a host that works with the toolbox.
struct ToolboxPictures {
    GuardedPicture first = MakePicture(Motif::ZonePlate, kWidth, kHeight, PF_BGRA8);
    GuardedPicture large{kWidth, kHeight, PF_BGRA8, {.slack = 4}};
    GuardedPicture small{41, 30, PF_BGRA8, {.slack = 8}};
    GuardedPicture packed{kWidth, kHeight, 2, PF_Packed8, {.slack = 2}};
    GuardedPicture floats = MakePicture(Motif::Ramp, 9, 7, PF_ARGB32F);
};

// What a host built with contract/ makes of them with the calls that the probe makes.
void WorkOurselves(IFrameProcessor& processor, const ToolboxPictures& pictures)
{
    const VideoFrame first = pictures.first.Frame();
    VideoFrame large = pictures.large.Frame(), small = pictures.small.Frame();
    VideoFrame packed = pictures.packed.Frame(), floats = pictures.floats.Frame();
    constexpr std::int32_t order[4] = {1, 2, 0, 3};
    constexpr FrameRect region = {3, 2, 20, 15};
    EXPECT_TRUE(processor.Copy(&first, &large));
    EXPECT_TRUE(processor.Resize(&large, &small, 2));
    EXPECT_TRUE(processor.ReverseChannels(&small, &large));
    EXPECT_TRUE(processor.PermuteChannels(&large, order));
    EXPECT_TRUE(processor.SetChannel(&large, 3, 99));
    EXPECT_TRUE(processor.AlphaOver(&small, &large, &first, true));
    EXPECT_TRUE(processor.AlphaOver(&large, &small, &first, false));
    EXPECT_TRUE(processor.Premultiply(&large));
    EXPECT_TRUE(processor.FlipVertical(&large));
    EXPECT_TRUE(processor.FlipVerticalTo(&large, &small));
    EXPECT_TRUE(processor.ResizeRegion(&small, &region, &large, 1));
    EXPECT_TRUE(processor.BGRAToYCbCr422(&large, &packed, 0));
    EXPECT_TRUE(processor.YCbCr422ToBGRA(&packed, &small, 200, 0));
    EXPECT_TRUE(processor.YCbCrToARGB(&floats, &floats));
    EXPECT_TRUE(processor.ARGBToYCbCr(&floats, &floats));
}

TEST_F(RealLibrary, ToolboxOfAForeignHost_MakesThePicturesOfOurOwn)
{
    const ToolboxPictures expected;
    IEffectLibrary* const library = m_getEffectsLibrary();
    IFrameProcessor* const processor = library->CreateFrameProcessor();
    ASSERT_NE(processor, nullptr);
    WorkOurselves(*processor, expected);
    EXPECT_EQ(processor->Release(), 0u);
    library->Release();

    for (const unsigned residue : {0u, 4u, 8u, 12u}) {
        SCOPED_TRACE(testing::Message() << "stack " << residue << " bytes past a multiple of 16");
        const ToolboxPictures pictures;
        VideoFrame first = pictures.first.Frame();
        VideoFrame large = pictures.large.Frame(), small = pictures.small.Frame();
        VideoFrame packed = pictures.packed.Frame(), floats = pictures.floats.Frame();
        const auto report = std::make_unique<kelmora_probe::Report>();
        kelmora_probe::Visit visit = {};
        visit.getEffectsLibrary = reinterpret_cast<void*>(m_getEffectsLibrary);
        visit.effectId = 99;
        visit.firstPicture = &first;
        visit.large = &large;
        visit.small = &small;
        visit.packed = &packed;
        visit.floats = &floats;
        visit.report = report.get();
        VisitAligned(&visit, residue);

        for (int i = 0; i < report->count; ++i)
            EXPECT_EQ(report->calls[i].stackShift, 0) << report->calls[i].what;
        EXPECT_EQ(ResultsOf(*report, "IFrameProcessor::QueryInterface"), (std::vector<Word>{0, 0x80004002u}));
        EXPECT_EQ(ResultsOf(*report, "the processor's own view"), (std::vector<Word>{1}));
        EXPECT_EQ(ResultsOf(*report, "IFrameProcessor::AddRef"), (std::vector<Word>{3}));
        EXPECT_EQ(ResultsOf(*report, "IFrameProcessor::Release"), (std::vector<Word>{2, 1, 0}));
        for (const char* const call : {"Copy", "Resize", "ReverseChannels", "PermuteChannels", "SetChannel",
                                       "Premultiply", "FlipVertical", "FlipVerticalTo", "ResizeRegion",
                                       "BGRAToYCbCr422", "YCbCr422ToBGRA", "YCbCrToARGB", "ARGBToYCbCr"})
            EXPECT_EQ(ResultsOf(*report, call), (std::vector<Word>{1})) << call;
        EXPECT_EQ(ResultsOf(*report, "AlphaOver"), (std::vector<Word>{1, 1}));
        EXPECT_TRUE(Equal(pictures.large, expected.large));
        EXPECT_TRUE(Equal(pictures.small, expected.small));
        EXPECT_TRUE(Equal(pictures.packed, expected.packed));
        EXPECT_TRUE(Equal(pictures.floats, expected.floats));
    }
}

} // namespace
} // namespace kelmora
