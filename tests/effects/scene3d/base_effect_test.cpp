#include "effects/scene3d/base_effect.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "effects/scene3d/confetti_face.h"
#include "tests/effects/scene3d/transitions.h"

namespace kelmora {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A transition that does what a test wants.
class Probe final : public BaseEffect<kConfetti> {
public:
    std::function<bool(const TransitionFrame&)> action;
    Scene3D& Scene() { return scene; }

protected:
    bool RenderTransition(const TransitionFrame& frame) override { return action(frame); }
};

class Bare final : public BaseEffect<kConfetti> {};

/// A face that fills a frame.
QuadFace WholeFace(const FrameBuffer& texture)
{
    return {{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, &texture, nullptr, kTurnsSideways, {}, {}};
}

class TestFilter : public PREffect {
public:
    void Apply(FrameBuffer*) override {}
};

class BaseEffectTest : public testing::Test {
protected:
    BaseEffectTest()
    {
        m_effect->action = [](const TransitionFrame&) { return true; };
    }

    bool RenderProbe(double progress = 0.4)
    {
        FakeHost host;
        Moment moment;
        moment.second = &m_second;
        moment.progress = progress;
        return Render(*m_effect, host, moment, m_in, m_out);
    }

    void ExpectSceneIsEmpty()
    {
        const Scene3D& scene = m_effect->Scene();
        EXPECT_EQ(scene.GetAllocator(), nullptr);
        EXPECT_EQ(scene.GetLightCount(), 0u);
        EXPECT_EQ(scene.GetFilterCount(), 0u);
        if (scene.GetCanvas()) {
            EXPECT_FALSE(scene.GetCanvas()->IsValid());
            EXPECT_EQ(scene.GetCanvas()->GetPixels(), nullptr);
        }
    }

    void ExpectSceneWasEmpty(const TransitionFrame& frame)
    {
        EXPECT_EQ(m_effect->Scene().GetAllocator(), &frame.allocator);
        EXPECT_EQ(m_effect->Scene().GetLightCount(), 0u);
        EXPECT_EQ(m_effect->Scene().GetFilterCount(), 0u);
    }

    std::unique_ptr<Probe, ReleaseHeld> m_effect{new Probe};
    GuardedPicture m_in = Noisy(9, 7, PF_BGRA8, 1);
    GuardedPicture m_second = Noisy(9, 7, PF_BGRA8, 2);
    GuardedPicture m_out = Noisy(9, 7, PF_BGRA8, 3);
};

// --- interfaces -------------------------------------------------------------------------------------------

TEST_F(BaseEffectTest, QueryInterface_KnowsTheRootAndTheEffect)
{
    for (const InterfaceId* const id : {&IUnknown::id, &IVideoEffect::id}) {
        void* out = nullptr;
        EXPECT_EQ(m_effect->QueryInterface(id, &out), 0);
        EXPECT_EQ(out, static_cast<IVideoEffect*>(m_effect.get()));
        EXPECT_EQ(m_effect->Release(), 1u);
    }
}

TEST_F(BaseEffectTest, QueryInterface_NullOutOrUnknownId_IsRefused)
{
    EXPECT_EQ(static_cast<std::uint32_t>(m_effect->QueryInterface(&IUnknown::id, nullptr)), 0x80004005u);
    constexpr InterfaceId unknown = {0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};
    void* out = this;
    EXPECT_EQ(static_cast<std::uint32_t>(m_effect->QueryInterface(&unknown, &out)), 0x80004002u);
    EXPECT_EQ(out, nullptr);
}

TEST_F(BaseEffectTest, Counting_StartsAtOne)
{
    EXPECT_EQ(m_effect->AddRef(), 2u);
    EXPECT_EQ(m_effect->AddRef(), 3u);
    EXPECT_EQ(m_effect->Release(), 2u);
    EXPECT_EQ(m_effect->Release(), 1u);
    EXPECT_EQ((new Bare)->Release(), 0u);
}

// --- one frame --------------------------------------------------------------------------------------------

TEST_F(BaseEffectTest, Render_GivesWhatTheTransitionGives)
{
    for (const bool result : {true, false}) {
        m_effect->action = [&](const TransitionFrame&) { return result; };
        EXPECT_EQ(RenderProbe(), result);
    }
    FakeHost host;
    EXPECT_FALSE(Render(*HeldEffect(new Bare), host, m_in, m_out)) << "a transition of none";
}

TEST_F(BaseEffectTest, Render_HandsThePicturesAndTheProgressOn)
{
    for (const double progress : {0.0, 0.4, 1.0, -3.0, 7.5, kInfinity}) {
        m_effect->action = [&](const TransitionFrame& frame) {
            EXPECT_EQ(frame.firstPicture.data, m_in.Row(0));
            EXPECT_EQ(frame.secondPicture->data, m_second.Row(0));
            EXPECT_EQ(frame.output.data, m_out.Row(0));
            EXPECT_EQ(frame.firstPicture.width, 9);
            EXPECT_EQ(frame.secondPicture->height, 7);
            EXPECT_FALSE(frame.isBottomUp);
            EXPECT_EQ(frame.progress, progress);
            EXPECT_EQ(m_effect->Scene().GetAllocator(), &frame.allocator);
            return true;
        };
        EXPECT_TRUE(RenderProbe(progress));
    }
}

TEST_F(BaseEffectTest, Render_AProgressThatIsNoNumber_IsZero)
{
    m_effect->action = [](const TransitionFrame& frame) { return frame.progress == 0.0; };
    EXPECT_TRUE(RenderProbe(kNaN));
    EXPECT_TRUE(RenderProbe(-kNaN));
}

TEST_F(BaseEffectTest, Render_TheRowOrder_IsWhatTheHostSays)
{
    for (const bool bottomUp : {false, true})
        for (const bool upward : {false, true}) {
            const GuardedPicture in(9, 7, PF_BGRA8, {.upward = upward, .bottomUp = bottomUp});
            m_effect->action = [&](const TransitionFrame& frame) {
                EXPECT_EQ(frame.isBottomUp, bottomUp);
                return true;
            };
            FakeHost host;
            EXPECT_TRUE(Render(*m_effect, host, in, m_out));
        }
}

TEST_F(BaseEffectTest, Render_ASecondPictureThatIsMissing_HasNoPixels)
{
    m_effect->action = [](const TransitionFrame& frame) {
        return !frame.secondPicture || !frame.secondPicture->data;
    };
    FakeHost host;
    EXPECT_TRUE(Render(*m_effect, host, Moment{}, m_in, m_out));
}

TEST_F(BaseEffectTest, Render_WithoutInfo_IsRefused)
{
    m_effect->action = [](const TransitionFrame&) -> bool { throw std::logic_error("drawn"); };
    FakeHost host;
    VideoFrame first = m_in.Frame(), second = m_second.Frame(), output = m_out.Frame();
    EXPECT_FALSE(m_effect->Render(&host, &first, &second, &output, nullptr));
    ExpectSceneIsEmpty();
}

TEST_F(BaseEffectTest, Render_AfterTheFrame_TheSceneIsEmpty)
{
    int endings = 0;
    for (const auto& ending :
         {std::function<bool()>([] { return true; }), std::function<bool()>([] { return false; }),
          std::function<bool()>([]() -> bool { throw std::runtime_error("odd"); })}) {
        m_effect->action = [&](const TransitionFrame& frame) {
            ExpectSceneWasEmpty(frame);
            const LinearLight light;
            Scene3D& scene = m_effect->Scene();
            scene.SetCanvas(&frame.output);
            scene.AddLight(&light);
            scene.AddFilter(std::make_unique<TestFilter>());
            FrameBuffer texture;
            texture.AttachFrame(&frame.firstPicture);
            EXPECT_TRUE(scene.DrawFace(WholeFace(texture), 0x80000002, false));
            ++endings;
            return ending();
        };
        const bool isTrue = endings == 0;
        EXPECT_EQ(RenderProbe(), isTrue);
        EXPECT_TRUE(Equal(m_out, m_in));
        ExpectSceneIsEmpty();
    }
    EXPECT_EQ(endings, 3);
}

// --- pictures in the output's memory ------------------------------------------------------------------------

TEST_F(BaseEffectTest, Render_APictureInTheOutputsMemory_IsSetAside)
{
    const GuardedPicture before = m_out;
    m_effect->action = [&](const TransitionFrame& frame) {
        EXPECT_NE(frame.firstPicture.data, m_out.Row(0));
        EXPECT_NE(frame.secondPicture->data, m_out.Row(0));
        EXPECT_TRUE(Equal(frame.firstPicture, before.Frame()));
        EXPECT_TRUE(Equal(*frame.secondPicture, before.Frame()));
        return true;
    };
    FakeHost host;
    Moment moment;
    moment.second = &m_out;
    EXPECT_TRUE(Render(*m_effect, host, moment, m_out, m_out));
}

TEST_F(BaseEffectTest, Render_NoMemoryToSetAPictureAside_IsTrueAndDrawsNothing)
{
    for (const std::uint64_t refused : {0u, 1u}) {
        MemoryHabits habits;
        habits.refuseOnly = refused;
        FakeMemoryProvider memory(habits);
        FakeHost host;
        host.SetMemory(&memory);
        bool isDrawn = false;
        m_effect->action = [&](const TransitionFrame&) { return isDrawn = true; };
        const GuardedPicture before = m_out;
        Moment moment;
        moment.second = &m_out;
        EXPECT_TRUE(Render(*m_effect, host, moment, m_out, m_out));
        EXPECT_FALSE(isDrawn);
        EXPECT_TRUE(Equal(m_out, before));
        EXPECT_EQ(memory.OpenBlocks(), 0u);
        ExpectSceneIsEmpty();
    }
}

// --- both transitions ------------------------------------------------------------------------------------------

constexpr EffectClass kScenes[] = {EffectClass::BlowingLeaves, EffectClass::Layers, EffectClass::WrapConfetti,
                                   EffectClass::WrapPizzaBoxes};

const std::vector<float> kSome = {0.6f, 0.4f};

class EveryScene : public testing::TestWithParam<EffectClass> {};

TEST_P(EveryScene, Render_FramesInAnyOrder_AreTheSame)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(32, 24, format, 1), second = Noisy(32, 24, format, 2);
        std::vector<int> order;
        std::vector<GuardedPicture> frames;
        for (int i = 0; i <= 20; ++i) {
            order.push_back(i);
            frames.push_back(Rendered(GetParam(), kSome, in, second, i / 20.0));
        }
        std::shuffle(order.begin(), order.end(), std::mt19937(9));
        const HeldEffect effect = NewEffect(GetParam());
        FakeHost host(Levels(GetParam(), kSome));
        for (const int i : order)
            for (int again = 0; again < 2; ++again) {
                Moment moment;
                moment.second = &second;
                moment.progress = i / 20.0;
                GuardedPicture out = Noisy(32, 24, format, 99);
                EXPECT_TRUE(Render(*effect, host, moment, in, out));
                EXPECT_TRUE(Equal(out, frames[static_cast<std::size_t>(i)])) << i;
            }
    }
}

TEST_P(EveryScene, Render_AnOutputThatIsGone_IsNotTouchedAgain)
{
    // An address that faults when it is written to belongs to the first frame.
    const GuardedPicture in = Noisy(20, 16, PF_BGRA8, 1), second = Noisy(20, 16, PF_BGRA8, 2);
    const HeldEffect effect = NewEffect(GetParam());
    FakeHost host(Levels(GetParam(), kSome));
    Moment moment;
    moment.second = &second;
    {
        auto gone =
            std::make_unique<GuardedPicture>(20, 16, PF_BGRA8, PictureLayout{.guard = Guard::PageEnd});
        EXPECT_TRUE(Render(*effect, host, moment, in, *gone));
    }
    GuardedPicture out(20, 16, PF_BGRA8), expected(20, 16, PF_BGRA8);
    VideoFrame none = out.Frame();
    none.width = 0; // nothing takes the old view's place
    VideoFrame first = in.Frame(), next = second.Frame();
    RenderInfo info = MakeInfo(AtProgress(0.4));
    host.BeginRender();
    EXPECT_TRUE(effect->Render(&host, &first, &next, &none, &info));
    host.EndRender();
    EXPECT_TRUE(Render(*effect, host, moment, in, out));
    RenderFresh(GetParam(), kSome, moment, in, expected);
    EXPECT_TRUE(Equal(out, expected));
}

TEST_P(EveryScene, Render_PicturesOfOtherFormatsAndSizes_StaysInsideThePictures)
{
    std::mt19937 random(7);
    constexpr std::uint32_t formats[] = {PF_BGRA8,   PF_ARGB8, PF_BGRA32F, PF_ARGB32F,
                                         PF_Packed8, PF_Mask8, PF_Mask32F};
    for (const std::uint32_t from : formats)
        for (const std::uint32_t to : formats)
            for (const std::uint32_t into : formats) {
                const TransitionSizes sizes = RandomSizes(random, 20, 20);
                const auto layout = [&](std::uint32_t format) { return RandomLayout(random, format); };
                GuardedPicture in(sizes.width, sizes.height, from, layout(from));
                GuardedPicture second(sizes.secondWidth, sizes.secondHeight, to, layout(to));
                GuardedPicture out(sizes.outWidth, sizes.outHeight, into, layout(into));
                in.FillBytes(0x3F);
                second.FillBytes(0x40);
                in.Freeze();
                second.Freeze();
                Moment moment;
                moment.second = &second;
                for (const double progress : {0.0, 0.3, 0.8, 1.0}) {
                    moment.progress = progress;
                    RenderFresh(GetParam(), kSome, moment, in, out);
                }
                in.Check();
                second.Check();
                out.Check();
            }
}

TEST_P(EveryScene, Render_HostileKnobsAndMoments_EndsSoonInsideThePictures)
{
    constexpr float wild[] = {0.0f,  1.0f,   -1.0f,  static_cast<float>(kNaN),
                              1e30f, -1e30f, 1e-40f, static_cast<float>(kInfinity),
                              40.0f, -0.1f};
    std::mt19937 random(5);
    const GuardedPicture in = Noisy(13, 11, PF_BGRA8, 1), second = Noisy(13, 11, PF_BGRA8, 2);
    for (int i = 0; i < 2000; ++i) {
        std::vector<float> levels;
        for (std::size_t k = 0; k < KnobCount(GetParam()); ++k)
            levels.push_back(random() % 2 != 0 ? wild[random() % 10] : 0.3f);
        std::vector<ParamValue> knobs = Levels(GetParam(), std::vector<float>(KnobCount(GetParam()), 1.0f));
        for (std::size_t k = 0; k < knobs.size(); ++k)
            knobs[k] = knobs[k].kind == ParamFloat
                ? LevelKnob(levels[k])
                : ParamValue{static_cast<std::uint32_t>(random()), 0, knobs[k].kind};
        FakeHost host(knobs);
        GuardedPicture out(12, 12, PF_BGRA8, {.guard = Guard::PageEnd});
        Moment moment;
        moment.second = &second;
        constexpr double moments[] = {0.0, 1e-300, 0.3, 0.5, 0.999999, 1.0, -1.0, 1e300, kNaN, kInfinity};
        moment.progress = moments[random() % 10];
        EXPECT_TRUE(Render(*NewEffect(GetParam()), host, moment, in, out));
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, EveryScene, testing::ValuesIn(kScenes),
                         [](const auto& tested) { return NameOf(tested.param); });

} // namespace
} // namespace kelmora
