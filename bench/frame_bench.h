#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "contract/kelmora.h"

namespace kelmora::bench {

/// Bytes on whole memory pages, as editors keep their frames.
class PageMemory {
public:
    explicit PageMemory(std::size_t size);

    std::uint8_t* data() const { return m_data.get(); }
    std::size_t size() const { return m_size; }

private:
    struct Free {
        void operator()(std::uint8_t* data) const;
    };

    std::unique_ptr<std::uint8_t[], Free> m_data;
    std::size_t m_size;
};

/// What a picture shows.
enum class Content {
    Noise, ///< every value on its own: the worst case of what looks at neighbours or values
    Scene, ///< shapes with soft and hard edges under a little grain, as photographs have
};

/// A picture, its rows without slack.
class Frame {
public:
    Frame(int width, int height, std::uint32_t format, Content content = Content::Noise, unsigned seed = 1);

    VideoFrame Record();
    PageMemory& Bytes() { return m_bytes; }

private:
    PageMemory m_bytes;
    VideoFrame m_record = {};
};

/// Adds `work`'s time in multiples of a memcpy of a byte picture of `width` by `height` ("frames"): both are
/// timed in turn in the same run, so that a drifting clock cancels out, and the medians are compared.
template <class Work>
void Measure(benchmark::State& state, int width, int height, Work&& work);

/// The words of knobs that are levels.
std::vector<std::uint32_t> Levels(std::initializer_list<float> levels);

/// A host without memory of its own, whose knobs are one list of words.
class Host final : public IVideoHost {
public:
    explicit Host(std::vector<std::uint32_t> knobs) : m_knobs(std::move(knobs)) {}

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override;
    bool KELMORA_CALL HostReserved4(std::uint32_t, std::uint32_t, std::uint8_t) override { return false; }
    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t, std::uint32_t) override { return 0; }
    bool KELMORA_CALL HostReserved6(std::uint32_t, std::uint32_t) override { return false; }
    void KELMORA_CALL HostReserved7(std::uint32_t, std::uint32_t) override {}
    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override;

private:
    std::vector<std::uint32_t> m_knobs;
};

// --- body of Measure ----------------------------------------------------------------------------------

/// Nanoseconds of one memcpy of a byte picture.
class CopyClock {
public:
    CopyClock(int width, int height);
    double Once();

private:
    PageMemory m_from, m_to;
};

double Now(); ///< nanoseconds
double Median(std::vector<double> values);

template <class Work>
void Measure(benchmark::State& state, int width, int height, Work&& work)
{
    CopyClock copy(width, height);
    std::vector<double> copies, works;
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = 0; i < 6; ++i) // the first ones find the work's pictures in the caches
            if (const double time = copy.Once(); i >= 2)
                copies.push_back(time);
        work(); // brings the work's own pictures back
        work();
        state.ResumeTiming();
        const double start = Now();
        work();
        works.push_back(Now() - start);
    }
    state.counters["frames"] = Median(works) / Median(copies);
    state.counters["fps"] = 1e9 / Median(works);
}

} // namespace kelmora::bench
