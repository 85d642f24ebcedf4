#include <array>
#include <thread>

#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"

namespace kelmora::host {
namespace {

/// One thread's work: an object of its own and the pictures that it should make.
struct Worker {
    explicit Worker(const CheckRun& run) : findings(run.File(), run.Seed()) {}

    void Work(const std::vector<FrameCase>& frames, const std::vector<std::vector<std::uint8_t>>& expected)
    {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            ExpectSame(findings, frames[i].output, RenderedPixels(findings, *effect, frames[i]), expected[i],
                       "beside another thread frame " + std::to_string(i) + " differs");
        }
    }

    Held<IVideoEffect> effect;
    CheckRun findings;
};

void TwoThreads(CheckRun& run)
{
    std::mt19937 engine(run.Seed());
    ForEachEffect(run, [&run, &engine](IEffectLibrary& library, const EffectFace& face) {
        std::vector<FrameCase> frames;
        std::vector<std::vector<std::uint8_t>> expected;
        const Held<IVideoEffect> alone = MakeEffect(library, face.number);
        constexpr std::size_t kFrames = 16;
        for (std::size_t i = 0; i < kFrames; ++i) {
            frames.push_back(CaseFor(face, 40, 30, kPictureFormats[i % kPictureFormats.size()]));
            frames.back().knobs = RandomKnobs(face, engine);
            frames.back().noise = static_cast<std::uint32_t>(i);
            frames.back().progress = static_cast<double>(i) / kFrames;
            expected.push_back(RenderedPixels(run, *alone, frames.back()));
        }
        std::array workers = {Worker(run), Worker(run)};
        std::vector<std::thread> threads;
        for (Worker& worker : workers) {
            worker.effect = MakeEffect(library, face.number);
            worker.findings.At(face.name);
            threads.emplace_back([&worker, &frames, &expected] { worker.Work(frames, expected); });
        }
        for (std::thread& thread : threads)
            thread.join();
        for (const Worker& worker : workers)
            run.Take(worker.findings);
    });
}

void CountsFromTwoThreads(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        Held<IVideoEffect> effect = MakeEffect(library, face.number);
        const auto count = [&effect] {
            constexpr int kTimes = 200000;
            for (int i = 0; i < kTimes; ++i) {
                effect->AddRef();
                effect->Release();
            }
        };
        std::thread one(count);
        std::thread other(count);
        one.join();
        other.join();
        effect->AddRef();
        const std::uint32_t left = effect->Release();
        if (!run.Expect(left == 1, "the count should be 1 after pairs of AddRef and Release on two threads"))
            static_cast<void>(effect.release()); // its count cannot be trusted any more
    });
}

constexpr std::array kChecks = {
    Check{"two-threads-two-objects", "Objects of their own render on two threads as they do alone.",
          TwoThreads},
    Check{"counts-from-two-threads", "References are counted right from two threads.", CountsFromTwoThreads},
};

} // namespace

constinit const std::span<const Check> kThreadChecks = kChecks;

} // namespace kelmora::host
