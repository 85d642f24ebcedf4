#include "bench/pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <random>
#include <vector>

#include "image/pixel_format.h"

namespace kelmora::bench {
namespace {

constexpr std::align_val_t kPage{4096};

std::size_t BytesOf(int width, int height, std::uint32_t format)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height)
        * static_cast<std::size_t>(PixelBytesOf(format));
}

using Waves = std::vector<std::array<double, 4>>;

/// A wave per channel at `count` places, `scale` of them to a unit.
Waves WavesAlong(int count, double scale, double frequency, double angle, double turn)
{
    Waves waves(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < waves.size(); ++i)
        for (std::size_t c = 0; c < 4; ++c)
            waves[i][c] =
                std::sin(frequency * static_cast<double>(i) / scale + angle + turn * static_cast<double>(c));
    return waves;
}

/// Waves across and down, cut by the edges of a few shapes, and three bits of grain. Alpha runs from clear to full.
void DrawScene(int width, int height, unsigned seed, std::mt19937& noise, std::vector<std::uint8_t>& values)
{
    const double angle = static_cast<double>(seed), scale = height;
    const Waves across = WavesAlong(width, scale, 5, angle, 1), fine = WavesAlong(width, scale, 40, angle, 1),
                down = WavesAlong(height, scale, 9, -angle, 0.5);
    std::size_t place = 0;
    for (std::size_t y = 0; y < down.size(); ++y) {
        const double v = std::fmod(2.0 * static_cast<double>(y) / scale + angle, 1.0);
        for (std::size_t x = 0; x < across.size(); ++x) {
            const double u = std::fmod(3.0 * static_cast<double>(x) / scale + angle, 1.0);
            const double lift = u + v > 1.1 ? 40 : 0;
            const std::uint_fast32_t grain = noise();
            for (std::size_t c = 0; c < 4; ++c) {
                const double wave = across[x][c] + down[y][c] + 0.5 * fine[x][c] * down[y][3 - c];
                const double level = 110 + 30 * wave + lift + static_cast<double>(grain >> (3 * c) & 7);
                values[place++] = static_cast<std::uint8_t>(std::clamp(level, 0.0, 255.0));
            }
        }
    }
}

} // namespace

PageMemory::PageMemory(std::size_t size)
    : m_data(static_cast<std::uint8_t*>(::operator new[](size, kPage))), m_size(size)
{
    std::memset(data(), 0, size); // every page is really there
}

void PageMemory::Free::operator()(std::uint8_t* data) const
{
    ::operator delete[](data, kPage);
}

Picture::Picture(int width, int height, std::uint32_t format) : m_memory(BytesOf(width, height, format))
{
    const int pixelBytes = PixelBytesOf(format);
    m_record = {m_memory.data(), width, height, width * pixelBytes, pixelBytes, {}, format, 0};
}

Picture::Picture(int width, int height, std::uint32_t format, Content content, unsigned seed)
    : Picture(width, height, format)
{
    std::mt19937 noise(seed);
    std::vector<std::uint8_t> values(BytesOf(width, height, PF_BGRA8));
    if (content == Content::Scene)
        DrawScene(width, height, seed, noise, values);
    else
        std::generate(values.begin(), values.end(), [&] { return static_cast<std::uint8_t>(noise()); });
    if (HasFloats(format))
        std::transform(values.begin(), values.end(), Floats(),
                       [](std::uint8_t byte) { return static_cast<float>(byte) * 0.003921569f; });
    else
        std::copy(values.begin(), values.end(), Bytes());
}

bool HasFloats(std::uint32_t format)
{
    return IsFloat(format);
}

} // namespace kelmora::bench
