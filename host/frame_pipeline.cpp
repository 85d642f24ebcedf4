#include "host/frame_pipeline.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "host/interrupt.h"

namespace kelmora::host {
namespace {

/// The state that the workers share.
class Pipeline {
public:
    Pipeline(FrameWork& work, int jobs) : m_work(work), m_running(jobs) {}

    /// What a worker does until the frames are at their end or something fails.
    void Work(int worker) noexcept
    {
        try {
            FrameSlot slot;
            while (Read(slot)) {
                m_work.Render(worker, slot);
                if (!Write(slot))
                    break;
            }
        } catch (...) {
            Fail(std::current_exception());
        }
        const std::lock_guard lock(m_mutex);
        --m_running;
        m_changed.notify_all();
    }

    /// Waits for all workers.
    std::int64_t Watch(const std::function<void(std::int64_t)>& report)
    {
        constexpr std::chrono::milliseconds kBetween(100);
        std::unique_lock lock(m_mutex);
        while (!m_changed.wait_for(lock, kBetween, [this] { return m_running == 0; })) {
            const std::int64_t written = m_written;
            lock.unlock();
            report(written);
            if (IsInterrupted())
                Fail(nullptr);
            lock.lock();
        }
        CheckInterrupt(); // it makes others fail: tell of it first
        if (m_failure != nullptr)
            std::rethrow_exception(m_failure);
        return m_written;
    }

    void Fail(std::exception_ptr failure) noexcept
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isOver)
            m_failure = std::move(failure);
        m_isOver = true;
        m_changed.notify_all();
    }

private:
    bool Read(FrameSlot& slot)
    {
        const std::lock_guard reading(m_reading);
        {
            const std::lock_guard lock(m_mutex);
            if (m_isOver || m_isAtEnd)
                return false;
        }
        slot.number = m_read;
        const bool isThere = m_work.Read(slot);
        if (isThere)
            ++m_read;
        const std::lock_guard lock(m_mutex);
        m_isAtEnd = !isThere;
        return isThere;
    }

    bool Write(const FrameSlot& slot)
    {
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this, &slot] { return m_isOver || m_written == slot.number; });
            if (m_isOver)
                return false;
        }
        m_work.Write(slot); // nobody else's turn
        const std::lock_guard lock(m_mutex);
        ++m_written;
        m_changed.notify_all();
        return true;
    }

    FrameWork& m_work;
    std::mutex m_reading;
    std::int64_t m_read = 0; ///< under m_reading
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::int64_t m_written = 0;
    int m_running;
    bool m_isAtEnd = false;
    bool m_isOver = false; ///< something failed
    std::exception_ptr m_failure;
};

} // namespace

std::int64_t RunFrames(FrameWork& work, int jobs, const std::function<void(std::int64_t)>& report)
{
    Pipeline pipeline(work, jobs);
    std::vector<std::thread> workers;
    workers.reserve(static_cast<std::size_t>(jobs));
    const auto join = [&workers] {
        for (std::thread& worker : workers)
            worker.join();
    };
    try {
        for (int worker = 0; worker < jobs; ++worker)
            workers.emplace_back(&Pipeline::Work, &pipeline, worker);
        const std::int64_t frames = pipeline.Watch(report);
        join();
        return frames;
    } catch (...) {
        pipeline.Fail(std::current_exception());
        join();
        throw;
    }
}

} // namespace kelmora::host
