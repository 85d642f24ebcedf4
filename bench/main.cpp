// Times every case beside a memcpy of the frame, one after the other in one thread, or, with --compare, looks whether
// the makers' results are like ours.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>
#include <tuple>

#include <benchmark/benchmark.h>

#include "bench/cases.h"
#include "image/pixel_format.h"
#include "image/primitives/cpu_variant.h"

namespace kelmora::bench {
namespace {

struct FrameSize {
    int width, height;
    bool isFullHd;
};
constexpr FrameSize kSizes[] = {{1280, 720, false}, {1920, 1080, true}, {3840, 2160, false}};

const char* NameOf(std::uint32_t format)
{
    return HasFloats(format) ? "bgra32f" : "bgra8";
}

/// The pictures of one size, format and content. Cases come sorted by these, so one set at a time will do.
class Stage {
public:
    Stage(int width, int height, std::uint32_t format, Content content)
        : m_content(content), m_first(width, height, format, content, 1),
          m_second(width, height, format, content, 2), m_output(width, height, format),
          m_copied(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4),
          m_copy(m_copied.size())
    {
    }

    static Stage& Get(const FrameSize& size, std::uint32_t format, Content content)
    {
        static std::unique_ptr<Stage> stage;
        if (!stage || stage->m_output.Width() != size.width || stage->m_output.Format() != format
            || stage->m_content != content) {
            stage.reset(); // before the next one takes its memory
            stage = std::make_unique<Stage>(size.width, size.height, format, content);
        }
        return *stage;
    }

    Setting Pictures() const { return {m_first, m_second, m_output}; }

    /// Copies a picture of bytes, for comparison with what a case costs.
    void CopyOnce()
    {
        std::memcpy(m_copy.data(), m_copied.data(), m_copy.size());
        benchmark::DoNotOptimize(m_copy.data());
        benchmark::ClobberMemory();
    }

private:
    Content m_content;
    Picture m_first, m_second, m_output;
    PageMemory m_copied, m_copy;
};

/// On an output of zeros.
Work Prepared(const Case& work, const Setting& pictures)
{
    std::memset(pictures.output.Bytes(), 0, pictures.output.Memory().size());
    return work.prepare(pictures);
}

/// Of the processor, in all threads, so that other programs count little and hidden threads do.
double Seconds(const std::function<void()>& work)
{
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Work and memcpy in turn, so that a drifting clock cancels out. Each begins with its own pictures in the caches, as
/// far as they fit.
void Measure(benchmark::State& state, const Case& work, const FrameSize& size, CpuVariant variant)
{
    constexpr double longWork = 0.02; // seconds: what the caches held before is no matter then
    const CpuVariant before = CurrentVariant();
    UseVariant(variant);
    Stage& stage = Stage::Get(size, work.format, work.content);
    const Work ready = Prepared(work, stage.Pictures());
    std::vector<double> copies, works = {Seconds(ready.run)};
    for (auto _ : state) {
        stage.CopyOnce();
        for (int i = 0; i < 2; ++i)
            copies.push_back(Seconds([&] { stage.CopyOnce(); }));
        if (works.back() < longWork)
            ready.run();
        works.push_back(Seconds(ready.run));
        state.SetIterationTime(works.back());
    }
    works.erase(works.begin()); // the first use of everything
    UseVariant(before);
    state.counters["work_ms"] = Median(works) * 1e3;
    state.counters["copy_ms"] = Median(copies) * 1e3;
    state.counters["copies"] = Median(works) / Median(copies);
    state.SetLabel(work.likeness.remark);
}

void AddBenchmark(const Case& work, const FrameSize& size, CpuVariant variant, const std::string& maker)
{
    const std::string name = std::string(work.kind == Kind::Effect ? "effect/" : "operation/") + work.name
        + "/" + NameOf(work.format) + "/" + maker + "/" + std::to_string(size.width) + "/"
        + std::to_string(size.height);
    benchmark::RegisterBenchmark(
        name.c_str(),
        [&work, &size, variant](benchmark::State& state) { Measure(state, work, size, variant); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

/// Neighbours in the list are neighbours in time: all that uses the same pictures, and there one thing's makers.
std::vector<const Case*> InOrder()
{
    std::vector<const Case*> cases;
    std::vector<std::string_view> names;
    for (const Case& work : AllCases()) {
        cases.push_back(&work);
        if (work.maker == kOurs)
            names.push_back(work.name);
    }
    const auto key = [&](const Case* work) {
        const auto place = std::find(names.begin(), names.end(), work->name);
        return std::tuple(HasFloats(work->format), work->content == Content::Noise, place,
                          work->maker != kOurs);
    };
    std::stable_sort(cases.begin(), cases.end(),
                     [&](const Case* a, const Case* b) { return key(a) < key(b); });
    return cases;
}

void AddAll()
{
    for (const FrameSize& size : kSizes)
        for (const Case* work : InOrder()) {
            if (work->sizes == Sizes::FullHd && !size.isFullHd)
                continue;
            AddBenchmark(*work, size, CurrentVariant(), work->maker);
            // What 32-bit builds have.
            if (work->maker == kOurs && size.isFullHd && CurrentVariant() != CpuVariant::Baseline)
                AddBenchmark(*work, size, CpuVariant::Baseline, work->maker + " sse2");
        }
}

// --- likeness -----------------------------------------------------------------------------------------------

/// The colours in the middle of a picture whose values lie so, in levels of 255. Makers treat what lies near the border
/// in their own ways.
template <class T>
std::vector<double> MiddleOf(const T* values, const Picture& picture, Layout layout)
{
    const std::size_t perPixel = layout == Layout::Plane ? 1 : layout == Layout::Rgb ? 3 : 4;
    const double unit = HasFloats(picture.Format()) ? 255 : 1;
    const auto width = static_cast<std::size_t>(picture.Width()),
               height = static_cast<std::size_t>(picture.Height());
    std::vector<double> colours;
    for (std::size_t y = height / 4; y < height * 3 / 4; ++y)
        for (std::size_t x = width / 4; x < width * 3 / 4; ++x)
            for (std::size_t c = 0; c < std::min<std::size_t>(perPixel, 3); ++c)
                colours.push_back(unit * static_cast<double>(values[(y * width + x) * perPixel + c]));
    return colours;
}

std::vector<double> ResultOf(const Case& work, const Stage& stage, Layout layout)
{
    const Setting pictures = stage.Pictures();
    const Work ready = Prepared(work, pictures);
    ready.run();
    if (ready.show)
        ready.show();
    const Picture& output = pictures.output;
    return HasFloats(output.Format()) ? MiddleOf(output.Floats(), output, layout)
                                      : MiddleOf(output.Bytes(), output, layout);
}

/// False when the results differ by more than the case says.
bool IsLikeOurs(const Case& work, const Case& ours)
{
    Stage& stage = Stage::Get(kSizes[0], work.format, work.content);
    const std::vector<double> a = ResultOf(ours, stage, ours.layout), b = ResultOf(work, stage, ours.layout);
    double sum = 0, most = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += std::abs(a[i] - b[i]);
        most = std::max(most, std::abs(a[i] - b[i]));
    }
    const double mean = sum / static_cast<double>(a.size());
    const bool isLike = mean <= work.likeness.most; // so not-a-number is unlike
    std::printf("%s/%s/%s mean %.3f largest %.1f%s\n", work.name.c_str(), NameOf(work.format),
                work.maker.c_str(), mean, most, isLike ? "" : ": unlike ours");
    return isLike;
}

int Compare()
{
    int failures = 0;
    const std::vector<const Case*> cases = InOrder();
    for (const Case* work : cases) {
        if (work->maker == kOurs)
            continue;
        const auto ours = std::find_if(cases.begin(), cases.end(), [&](const Case* other) {
            return other->maker == kOurs && other->name == work->name && other->format == work->format;
        });
        if (ours == cases.end()) {
            std::printf("%s/%s/%s has nothing of ours beside it\n", work->name.c_str(), NameOf(work->format),
                        work->maker.c_str());
            ++failures;
        } else if (work->likeness.most >= 0 && !IsLikeOurs(*work, **ours)) {
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}

} // namespace
} // namespace kelmora::bench

int main(int argc, char** argv)
{
    using namespace kelmora::bench;
    if (argc == 2 && std::string_view(argv[1]) == "--compare")
        return Compare();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    for (const auto& [maker, version] : AllMakers())
        benchmark::AddCustomContext(maker, version);
    AddAll();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
