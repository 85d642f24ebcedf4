// The probe as a host of the real library file, as it is delivered.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/kelmora.h"
#include "platform/module.h"
#include "tests/contract/probe/call_aligned.h"
#include "tests/contract/probe/probe.h"
#include "tests/support/fake_host.h"
#include "tests/support/flush_record.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"
#include "tests/support/pictures.h"

// Sanitizers make frames larger and have calls of their own above them; unoptimised code keeps every temporary.
#if defined(__OPTIMIZE__) && !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__)                              \
    && !defined(__SANITIZE_THREAD__)
#if defined(__has_feature)
#if !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer) && !__has_feature(memory_sanitizer)
#define KELMORA_STACK_AS_DELIVERED
#endif
#else
#define KELMORA_STACK_AS_DELIVERED
#endif
#endif

#ifdef KELMORA_STACK_AS_DELIVERED
#include <pthread.h>
#endif

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

    // Calls use(effect, host) for every effect; the host has the defaults of its knobs.
    template <class Use>
    void ForEachEffect(Use use) const
    {
        IEffectLibrary* const library = m_getEffectsLibrary();
        for (std::int32_t number = Effect3DConfetti; number <= EffectWaterColor; ++number) {
            IVideoEffect* const effect = library->CreateEffect(number);
            ASSERT_NE(effect, nullptr) << number;
            SCOPED_TRACE(effect->GetName());
            FakeHost host;
            ParamInfo knob = {};
            for (std::uint32_t i = 0; effect->GetParamInfo(i, &knob); ++i) {
                host.SetKnob(i, {knob.value, knob.valueY, knob.kind});
                knob = {};
            }
            use(*effect, host);
            EXPECT_EQ(effect->Release(), 0u);
        }
        library->Release();
    }

    platform::Module m_file;
    GetEffectsLibraryFunction m_getEffectsLibrary = nullptr;
    CanUnloadDLLNowFunction m_canUnload = nullptr;
};

// The pictures of one frame: first, second and output.
struct Pictures {
    Pictures(std::int32_t width, std::int32_t height, std::uint32_t format,
             const std::array<PictureLayout, 3>& layouts)
        : first(width, height, format, layouts[0]), second(width, height, format, layouts[1]),
          output(width, height, format, layouts[2])
    {
        first.FillNoise(1);
        second.FillNoise(2);
        output.FillNoise(3);
    }

    GuardedPicture first, second, output;
};

struct Records {
    explicit Records(const Pictures& pictures)
        : first(pictures.first.Frame()), second(pictures.second.Frame()), output(pictures.output.Frame())
    {
    }

    bool Render(IVideoEffect& effect, FakeHost& host)
    {
        InfoFields fields = AtProgress(0.4);
        fields.time = 12.5;
        RenderInfo info = MakeInfo(fields);
        return effect.Render(&host, &first, &second, &output, &info);
    }

    VideoFrame first, second, output;
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

// Were the size of one picture taken with the pixels of another, the pages would be left.
TEST_F(RealLibrary, RecordsThatTheHostRewritesDuringARender_CountAsOfOneMoment)
{
    PictureLayout pages;
    pages.guard = Guard::PageEnd;
    const std::array layouts = {pages, pages, pages};
    const auto small = [&layouts] { return Pictures(13, 11, PF_BGRA8, layouts); };
    const auto large = [&layouts] { return Pictures(45, 36, PF_ARGB32F, layouts); };
    ForEachEffect([&](IVideoEffect& effect, FakeHost& host) {
        const Pictures ofSmall = small(), ofLarge = large();
        EXPECT_TRUE(Records(ofSmall).Render(effect, host));
        const std::size_t questions = host.Reads().size();
        ASSERT_GT(questions, 0u);
        EXPECT_TRUE(Records(ofLarge).Render(effect, host));
        for (const bool grows : {false, true})
            for (std::size_t at = 0; at < questions; ++at) {
                const Pictures given = grows ? small() : large(), others = grows ? large() : small();
                const GuardedPicture givenBefore(given.output), othersBefore(others.output);
                Records records(given);
                std::size_t asked = 0;
                host.OnKnob([&](std::uint32_t) {
                    if (asked++ == at)
                        records = Records(others);
                });
                EXPECT_TRUE(records.Render(effect, host));
                const bool first = Equal(others.output, othersBefore)
                    && Equal(given.output, (grows ? ofSmall : ofLarge).output);
                const bool then = Equal(given.output, givenBefore)
                    && Equal(others.output, (grows ? ofLarge : ofSmall).output);
                EXPECT_TRUE(first || then) << "rewritten at question " << at;
            }
        host.OnKnob({});
    });
}

TEST_F(RealLibrary, PicturesAtAnyAddress_GiveTheSamePixels)
{
    ForEachEffect([](IVideoEffect& effect, FakeHost& host) {
        for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}) {
            const Pictures expected(37, 29, format, {});
            EXPECT_TRUE(Records(expected).Render(effect, host));
            for (std::int32_t shift = 1; shift < 16; ++shift) {
                std::array<PictureLayout, 3> layouts;
                layouts[0] = {.slack = BytesOfPixel(format), .shift = shift};
                layouts[1].shift = 16 - shift;
                layouts[2] = {.slack = 2 * BytesOfPixel(format), .shift = shift * 7 % 16};
                const Pictures pictures(37, 29, format, layouts);
                EXPECT_TRUE(Records(pictures).Render(effect, host));
                EXPECT_TRUE(Equal(pictures.output, expected.output)) << shift;
            }
        }
    });
}

// Loops that go by the pixel and loops that go by the stride meet different bytes then, so there is no one right
// picture. The last row ends where the memory does.
TEST_F(RealLibrary, RowsOfNoWholePixels_StayInsideTheMemory)
{
    constexpr std::int32_t width = 9, height = 7;
    ForEachEffect([](IVideoEffect& effect, FakeHost& host) {
        for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F})
            for (std::int32_t slack = 1; slack < BytesOfPixel(format); ++slack) {
                const std::int32_t stride = width * BytesOfPixel(format) + slack;
                const auto bytes = static_cast<std::size_t>(stride * height - slack);
                FlushRecord<char> first(std::uint8_t{0x3E}, bytes), second(std::uint8_t{0x3D}, bytes);
                const FlushRecord<char> output(std::uint8_t{0x3F}, bytes);
                first.Freeze();
                second.Freeze();
                const auto frame = [&](const FlushRecord<char>& memory) {
                    return VideoFrame{memory.Get(),         width, height, stride,
                                      BytesOfPixel(format), {},    format, 0};
                };
                VideoFrame firstFrame = frame(first), secondFrame = frame(second),
                           outputFrame = frame(output);
                RenderInfo info = MakeInfo(AtProgress(0.4));
                EXPECT_TRUE(effect.Render(&host, &firstFrame, &secondFrame, &outputFrame, &info))
                    << format << ", " << slack;
            }
    });
}

#ifdef KELMORA_STACK_AS_DELIVERED

// What one render takes on a thread with little stack.
struct SmallRender {
    IVideoEffect* effect;
    FakeHost* host;
    Records* records;
    bool done;
};

void* RunSmallRender(void* argument)
{
    auto& render = *static_cast<SmallRender*>(argument);
    render.done = render.records->Render(*render.effect, *render.host);
    return nullptr;
}

TEST_F(RealLibrary, RenderOnAThreadOf64KiBOfStack_IsDone)
{
    pthread_attr_t small;
    ASSERT_EQ(pthread_attr_init(&small), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&small, std::size_t{64} * 1024), 0);
    ForEachEffect([&small](IVideoEffect& effect, FakeHost& host) {
        for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F}) {
            const Pictures expected(160, 120, format, {}), pictures(160, 120, format, {});
            EXPECT_TRUE(Records(expected).Render(effect, host));
            Records records(pictures);
            SmallRender render = {&effect, &host, &records, false};
            pthread_t thread = {};
            ASSERT_EQ(pthread_create(&thread, &small, RunSmallRender, &render), 0);
            pthread_join(thread, nullptr);
            EXPECT_TRUE(render.done);
            EXPECT_TRUE(Equal(pictures.output, expected.output));
        }
    });
    pthread_attr_destroy(&small);
}

#endif

} // namespace
} // namespace kelmora
