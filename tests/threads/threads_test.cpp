// What a host may do from several threads at once. Objects of their own share nothing but code, the counts and the
// memory that is kept between frames.

#include <array>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "contract/effect_library.h"
#include "effects/fixing/pixelator.h"
#include "image/primitives/memory.h"
#include "library/exports.h"
#include "tests/effects/new_effect.h"
#include "tests/endurance/drawn_render.h"

namespace kelmora {
namespace {

constexpr std::size_t kThreads = 8;
constexpr std::int32_t kNumbers = EffectWaterColor - Effect3DConfetti + 1;

constexpr int kRenders = 2002, kWalks = 10000;
#ifdef _WIN32
constexpr int kLibraries = 500; // Wine takes its time to look for the companion
#else
constexpr int kLibraries = 5000;
#endif

/// Runs `work(t)` on kThreads threads at once.
template <class Work>
void OnAllThreads(const Work& work)
{
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t)
        threads.emplace_back([&work, t] { work(t); });
    for (std::thread& thread : threads)
        thread.join();
}

/// The library of a test; released at its end.
class Threads : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(library, nullptr); }

    void TearDown() override
    {
        EXPECT_EQ(library ? library->Release() : 0u, 0u);
        EXPECT_EQ(CanUnloadDLLNow(), 1);
    }

    /// Numbers 100 to 109, then Pixelator, over and over.
    HeldEffect Make(int index) const
    {
        const std::int32_t kind = index % (kNumbers + 1);
        return HeldEffect(kind == kNumbers ? new CFacePixelator
                                           : library->CreateEffect(Effect3DConfetti + kind));
    }

    /// The digests of a series of renders, each by an object of its own. What one gives depends on `seed` alone.
    std::vector<std::uint64_t> Series(std::uint64_t seed) const
    {
        constexpr std::int32_t least = 16, most = 28;
        Draws draws(seed);
        PlainHost host;
        RenderPictures pictures(most);
        std::vector<std::uint64_t> digests;
        for (int i = 0; i < kRenders; ++i) {
            const HeldEffect effect = Make(i);
            host.Provide(i % 2 != 0);
            RenderDrawn(*effect, Draw(draws, *effect, least, most), host, pictures);
            digests.push_back(pictures.OutputDigest());
        }
        EXPECT_EQ(host.OpenBlocks(), 0);
        return digests;
    }

    IEffectLibrary* library = GetEffectsLibrary();
};

TEST_F(Threads, ObjectsOfTheirOwn_AllEffects_GiveThePicturesThatOneThreadGives)
{
    std::array<std::vector<std::uint64_t>, kThreads> expected, found;
    for (std::size_t t = 0; t < kThreads; ++t)
        expected[t] = Series(t);
    OnAllThreads([&](std::size_t t) { found[t] = Series(t); });
    for (std::size_t t = 0; t < kThreads; ++t)
        EXPECT_EQ(found[t], expected[t]) << t;
    EXPECT_NE(expected[0], expected[1]);
}

/// Float pictures large enough for their blocks to be kept between frames.
constexpr std::int32_t kLarge = 160;

std::uint64_t LargeDigest(IVideoEffect& effect, PlainHost& host, RenderPictures& pictures)
{
    DrawnRender render;
    render.width = render.height = kLarge;
    render.format = PF_BGRA32F;
    RenderDrawn(effect, render, host, pictures);
    return pictures.OutputDigest();
}

TEST_F(Threads, LargePictures_WhoseBlocksAllTheThreadsReuse_AreThoseThatOneThreadGives)
{
    std::array<std::uint64_t, kNumbers + 1> expected{};
    PlainHost host;
    RenderPictures pictures(kLarge);
    for (int i = 0; i <= kNumbers; ++i)
        expected[static_cast<std::size_t>(i)] = LargeDigest(*Make(i), host, pictures);
    std::array<int, kThreads> wrong{};
    OnAllThreads([&](std::size_t t) {
        PlainHost ownHost;
        RenderPictures ownPictures(kLarge);
        for (std::size_t i = t; i < t + expected.size(); ++i)
            wrong[t] += LargeDigest(*Make(static_cast<int>(i)), ownHost, ownPictures)
                != expected[i % expected.size()];
    });
    for (std::size_t t = 0; t < kThreads; ++t)
        EXPECT_EQ(wrong[t], 0) << t;
    EXPECT_EQ(BlockKeeper::KeptBytes(), 0) << "all objects are gone";
}

/// What a host reads of a face: every knob and every preset's values.
std::uint64_t Walk(IVideoEffect& effect)
{
    std::uint64_t sum = effect.GetHelpId();
    ParamInfo info = {};
    std::uint32_t knobs = 0;
    while (effect.GetParamInfo(knobs, &info))
        sum = sum * 31 + info.value + ++knobs;
    for (std::uint32_t preset = 0; effect.GetPresetName(preset); ++preset)
        for (std::uint32_t knob = 0; knob < knobs; ++knob) {
            ParamValue value = {};
            EXPECT_TRUE(effect.GetPresetValue(preset, knob, &value));
            sum = sum * 31 + value.value;
        }
    return sum;
}

TEST_F(Threads, OneLibrary_AllMakeWalkAndRelease_FindTheSameFaces)
{
    std::array<std::uint64_t, kNumbers> expected{};
    for (std::int32_t i = 0; i < kNumbers; ++i)
        expected[static_cast<std::size_t>(i)] = Walk(*Make(i));
    std::array<int, kThreads> wrong{};
    OnAllThreads([&](std::size_t t) {
        for (int round = 0; round < kWalks; ++round) {
            const auto i = (static_cast<std::size_t>(round) + t) % kNumbers;
            library->AddRef();
            const HeldEffect effect(library->CreateEffect(Effect3DConfetti + static_cast<std::int32_t>(i)));
            wrong[t] += Walk(*effect) != expected[i];
            IFrameProcessor* const processor = library->CreateFrameProcessor();
            IPresetSaver* const saver = library->CreatePresetSaver();
            wrong[t] += processor->Release() != 0;
            wrong[t] += saver->Release() != 0;
            library->Release();
        }
    });
    for (std::size_t t = 0; t < kThreads; ++t)
        EXPECT_EQ(wrong[t], 0) << t;
    EXPECT_EQ(library->AddRef(), 2u);
    EXPECT_EQ(library->Release(), 1u);
}

/// Effects on their way to the thread that releases them.
class Handover {
public:
    /// An empty one says that no more will come.
    void Give(HeldEffect effect)
    {
        const std::lock_guard lock(m_mutex);
        m_effects.push_back(std::move(effect));
        m_there.notify_one();
    }

    HeldEffect Take()
    {
        std::unique_lock lock(m_mutex);
        m_there.wait(lock, [this] { return !m_effects.empty(); });
        HeldEffect effect = std::move(m_effects.front());
        m_effects.pop_front();
        return effect;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_there;
    std::deque<HeldEffect> m_effects;
};

TEST_F(Threads, Release_ByAnotherThread_WhileTheOwnerRendersWithOthers_ChangesNothing)
{
    PlainHost host;
    RenderPictures pictures(kLarge);
    std::array<std::uint64_t, kNumbers + 1> expected{};
    for (int i = 0; i <= kNumbers; ++i)
        expected[static_cast<std::size_t>(i)] = LargeDigest(*Make(i), host, pictures);

    Handover handover;
    std::thread other([&handover] {
        while (const HeldEffect effect = handover.Take())
            effect->AddRef(), effect->Release();
    });
    for (int i = 0; i < 10 * (kNumbers + 1); ++i) {
        HeldEffect effect = Make(i);
        EXPECT_EQ(LargeDigest(*effect, host, pictures),
                  expected[static_cast<std::size_t>(i % (kNumbers + 1))])
            << i;
        handover.Give(std::move(effect));
    }
    handover.Give(nullptr);
    other.join();
    EXPECT_EQ(BlockKeeper::KeptBytes(), 0);
}

TEST(ThreadsAndLibraries, MadeAndReleasedInParallel_LeaveNothingAlive)
{
    ASSERT_EQ(CanUnloadDLLNow(), 1);
    std::array<int, 2> alive{};
    std::array<std::thread, 2> threads;
    for (std::size_t t = 0; t < threads.size(); ++t)
        threads[t] = std::thread([&alive, t] {
            for (int round = 0; round < kLibraries; ++round) {
                IEffectLibrary* const library = GetEffectsLibrary();
                alive[t] += CanUnloadDLLNow() == 0; // at least our own one lives
                library->Release();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(alive[0], kLibraries);
    EXPECT_EQ(alive[1], kLibraries);
    EXPECT_EQ(CanUnloadDLLNow(), 1);
}

} // namespace
} // namespace kelmora
