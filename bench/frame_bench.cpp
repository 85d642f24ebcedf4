#include "bench/frame_bench.h"

#include <algorithm>
#include <chrono>
#include <cmath>
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

/// Waves of several lengths, cut by the edges of a few shapes, and three bits of grain.
void Draw(int width, int height, unsigned seed, std::mt19937& noise, std::vector<std::uint8_t>& values)
{
    std::size_t place = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = static_cast<double>(x) / height, v = static_cast<double>(y) / height;
            const double angle = static_cast<double>(seed);
            const bool inShape = std::fmod(u * 3 + angle, 1.0) + std::fmod(v * 2 + angle, 1.0) > 1.1;
            for (int channel = 0; channel < 4; ++channel) {
                const double wave = std::sin(5 * u + angle + channel) + std::cos(9 * v - angle)
                    + 0.5 * std::sin(40 * (u + v) + channel);
                const double level = 110 + 30 * wave + (inShape ? 40 - 20 * channel : 0);
                values[place++] = static_cast<std::uint8_t>(level + static_cast<double>(noise() & 7));
            }
        }
    }
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

Frame::Frame(int width, int height, std::uint32_t format, Content content, unsigned seed)
    : m_bytes(ValuesOf(width, height) * static_cast<std::size_t>(PixelBytesOf(format)) / 4)
{
    const int pixelBytes = PixelBytesOf(format);
    const std::size_t values = ValuesOf(width, height);
    std::mt19937 noise(seed);
    std::vector<std::uint8_t> bytes(values);
    if (content == Content::Scene)
        Draw(width, height, seed, noise, bytes);
    else
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(noise()); });
    if (IsFloat(format)) {
        std::transform(bytes.begin(), bytes.end(), reinterpret_cast<float*>(m_bytes.data()),
                       [](std::uint8_t byte) { return static_cast<float>(byte) * 0.003921569f; });
    } else {
        std::copy(bytes.begin(), bytes.end(), m_bytes.data());
    }
    m_record = {m_bytes.data(), width, height, width * pixelBytes, pixelBytes, {}, format, 0};
}

VideoFrame Frame::Record()
{
    return m_record;
}

std::vector<std::uint32_t> Levels(std::initializer_list<float> levels)
{
    std::vector<std::uint32_t> words;
    for (const float level : levels)
        words.push_back(FloatWord(level));
    return words;
}

std::int32_t Host::QueryInterface(const InterfaceId*, void** out)
{
    *out = nullptr;
    return E_NOINTERFACE;
}

bool Host::GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind)
{
    if (knob >= m_knobs.size())
        return false;
    *out = {m_knobs[knob], 0, kind};
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
