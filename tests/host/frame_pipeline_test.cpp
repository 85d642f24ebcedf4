#include "host/frame_pipeline.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>

#include "host/failure.h"
#include "host/interrupt.h"

namespace kelmora::host {
namespace {

/// Frames whose one byte is twice their number, with a look at what is held at a time.
class CountingWork : public FrameWork {
public:
    explicit CountingWork(std::int64_t frames) : m_frames(frames) {}

    bool Read(FrameSlot& slot) override
    {
        EXPECT_FALSE(m_isReading.exchange(true));
        const bool isThere = slot.number < m_frames;
        if (isThere) {
            slot.first.assign(1, static_cast<std::uint8_t>(slot.number));
            const int held = ++m_held;
            m_mostHeld = std::max(m_mostHeld, held);
        }
        m_isReading = false;
        return isThere;
    }

    void Render(int worker, FrameSlot& slot) override
    {
        EXPECT_GE(worker, 0);
        // The first of four takes longest, so that the others are done before it.
        std::this_thread::sleep_for(std::chrono::microseconds(slot.number % 4 == 0 ? 3000 : 300));
        slot.output.assign(1, static_cast<std::uint8_t>(2 * slot.first[0]));
    }

    void Write(const FrameSlot& slot) override
    {
        written.push_back(slot.output[0]);
        --m_held;
    }

    int MostHeld() const { return m_mostHeld; }

    FrameBytes written;

private:
    std::int64_t m_frames;
    std::atomic<bool> m_isReading = false;
    std::atomic<int> m_held = 0;
    int m_mostHeld = 0; // read and changed while reading alone
};

constexpr auto kNoReport = [](std::int64_t) {};

TEST(RunFrames, AnyNumberOfJobs_WritesInOrderAndHoldsAFrameEach_Concurrently)
{
    FrameBytes expected;
    for (int frame = 0; frame < 60; ++frame)
        expected.push_back(static_cast<std::uint8_t>(2 * frame));
    for (const int jobs : {1, 2, 5}) {
        CountingWork work(60);
        EXPECT_EQ(RunFrames(work, jobs, kNoReport), 60);
        EXPECT_EQ(work.written, expected) << jobs;
        EXPECT_LE(work.MostHeld(), jobs);
    }
}

TEST(RunFrames, MoreJobsThanFrames_AndNoFrames_End)
{
    CountingWork two(2);
    EXPECT_EQ(RunFrames(two, 8, kNoReport), 2);
    CountingWork none(0);
    EXPECT_EQ(RunFrames(none, 3, kNoReport), 0);
}

/// Fails in one of its stages at frame 5.
class FailingWork final : public CountingWork {
public:
    explicit FailingWork(char stage) : CountingWork(100), m_stage(stage) {}

    bool Read(FrameSlot& slot) override
    {
        FailIn('r', slot);
        return CountingWork::Read(slot);
    }
    void Render(int worker, FrameSlot& slot) override
    {
        FailIn('x', slot);
        CountingWork::Render(worker, slot);
    }
    void Write(const FrameSlot& slot) override
    {
        FailIn('w', slot);
        CountingWork::Write(slot);
    }

private:
    void FailIn(char stage, const FrameSlot& slot) const
    {
        if (stage == m_stage && slot.number == 5)
            throw Failure(ExitCode::Failed, "frame 5");
    }

    char m_stage;
};

TEST(RunFrames, FailureInAnyStage_EndsTheWorkAndIsThrownHere)
{
    for (const char stage : {'r', 'x', 'w'}) {
        for (const int jobs : {1, 4}) {
            FailingWork work(stage);
            try {
                RunFrames(work, jobs, kNoReport);
                ADD_FAILURE() << stage;
            } catch (const Failure& failure) {
                EXPECT_STREQ(failure.what(), "frame 5");
            }
            EXPECT_LE(work.written.size(), 5u);
        }
    }
}

/// Is told to stop at frame 5 of very many.
class InterruptedWork final : public CountingWork {
public:
    InterruptedWork() : CountingWork(1'000'000) {}

    void Write(const FrameSlot& slot) override
    {
        if (slot.number == 5)
            std::raise(SIGINT);
        CountingWork::Write(slot);
    }
};

TEST(RunFrames, Interrupt_EndsTheWork)
{
    const InterruptWatch watch;
    InterruptedWork work;
    try {
        RunFrames(work, 2, kNoReport);
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Interrupted);
    }
}

TEST(RunFrames, Report_GrowsUpToTheEnd)
{
    std::vector<std::int64_t> told;
    CountingWork work(200);
    RunFrames(work, 1, [&told](std::int64_t done) { told.push_back(done); });
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_FALSE(told.empty()); // 50 of them take 3 ms each
}

} // namespace
} // namespace kelmora::host
