#include "bench/frame_bench.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <random>

#include "image/pixel_format.h"

namespace kelmora::bench {

namespace {

constexpr std::align_val_t kPage{4096};

std::size_t ValuesOf(int width, int height)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
}

} // namespace

PageMemory::PageMemory(std::size_t size)
    : m_data(static_cast<std::uint8_t*>(::operator new[](size, kPage))), m_size(size)
{
    std::memset(data(), 1, size); // every page is really there
}

void PageMemory::Free::operator()(std::uint8_t* data) const
{
    ::operator delete[](data, kPage);
}

Frame::Frame(int width, int height, std::uint32_t format)
    : m_bytes(ValuesOf(width, height) * static_cast<std::size_t>(PixelBytesOf(format)) / 4)
{
    const int pixelBytes = PixelBytesOf(format);
    const std::size_t values = ValuesOf(width, height);
    std::mt19937 noise(1);
    if (IsFloat(format)) {
        auto* floats = reinterpret_cast<float*>(m_bytes.data());
        std::generate_n(floats, values, [&] { return static_cast<float>(noise() & 255) * 0.003921569f; });
    } else {
        std::generate_n(m_bytes.data(), m_bytes.size(), [&] { return static_cast<std::uint8_t>(noise()); });
    }
    m_record = {m_bytes.data(), width, height, width * pixelBytes, pixelBytes, {}, format, 0};
}

VideoFrame Frame::Record()
{
    return m_record;
}

std::int32_t Host::QueryInterface(const InterfaceId*, void** out)
{
    *out = nullptr;
    return E_NOINTERFACE;
}

bool Host::GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind)
{
    if (knob >= m_levels.size())
        return false;
    *out = {FloatWord(m_levels[knob]), 0, kind};
    return true;
}

HostInfo* Host::GetHostInfo(HostInfo* result)
{
    *result = {};
    return result;
}

double Now()
{
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

CopyClock::CopyClock(int width, int height) : m_from(ValuesOf(width, height)), m_to(ValuesOf(width, height))
{
}

double CopyClock::Once()
{
    const double start = Now();
    std::memcpy(m_to.data(), m_from.data(), m_from.size());
    benchmark::DoNotOptimize(m_to.data());
    benchmark::ClobberMemory();
    return Now() - start;
}

namespace {

void CopyFrame(benchmark::State& state)
{
    const int width = static_cast<int>(state.range(0)), height = static_cast<int>(state.range(1));
    Frame from(width, height, PF_BGRA32F), to(width, height, PF_BGRA32F);
    Measure(state, width, height, [&] {
        std::memcpy(to.Bytes().data(), from.Bytes().data(), from.Bytes().size());
        benchmark::ClobberMemory();
    });
}

BENCHMARK(CopyFrame)->Name("float frame/memcpy")->Args({1920, 1080})->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelmora::bench
