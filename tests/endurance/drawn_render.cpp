#include "tests/endurance/drawn_render.h"

#include <algorithm>
#include <cstring>

#include "contract/render_info.h"

#ifdef __has_feature
#if __has_feature(memory_sanitizer)
#include <sanitizer/msan_interface.h>
#define KELMORA_SEES_UNWRITTEN 1
#endif
#endif

namespace kelmora {
namespace {

constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};
constexpr double kLastSecond = 20.0;

bool HoldsFloats(std::uint32_t format)
{
    return format == PF_BGRA32F || format == PF_ARGB32F;
}

} // namespace

// SplitMix64.
std::uint64_t Draws::Word()
{
    m_state += 0x9E3779B97F4A7C15u;
    std::uint64_t word = m_state;
    word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9u;
    word = (word ^ (word >> 27)) * 0x94D049BB133111EBu;
    return word ^ (word >> 31);
}

std::uint32_t Draws::Below(std::uint32_t bound)
{
    return static_cast<std::uint32_t>((Word() >> 32) * bound >> 32);
}

std::uint32_t PresetCount(IVideoEffect& effect)
{
    std::uint32_t count = 0;
    while (effect.GetPresetName(count))
        ++count;
    return count;
}

DrawnRender Draw(Draws& draws, IVideoEffect& effect, std::int32_t least, std::int32_t most)
{
    const auto range = static_cast<std::uint32_t>(most - least + 1);
    DrawnRender render;
    render.preset = draws.Below(PresetCount(effect));
    render.format = kFormats[draws.Below(4)];
    render.width = least + static_cast<std::int32_t>(draws.Below(range));
    render.height = least + static_cast<std::int32_t>(draws.Below(range));
    render.progress = draws.Fraction();
    render.time = kLastSecond * draws.Fraction();
    render.halfHeight = draws.OneIn(4);
    render.noise = draws.Word();
    return render;
}

RenderPictures::RenderPictures(std::int32_t most)
{
    const auto bytes = static_cast<std::size_t>(most) * static_cast<std::size_t>(most) * 16;
    for (std::vector<std::uint8_t>* const memory : {&m_first, &m_second, &m_output})
        memory->resize(bytes);
}

VideoFrame RenderPictures::Frame(std::vector<std::uint8_t>& memory) const
{
    const std::int32_t pixelBytes = HoldsFloats(m_format) ? 16 : 4;
    return {memory.data(), m_width, m_height, m_width * pixelBytes, pixelBytes, {}, m_format, 0};
}

std::size_t RenderPictures::Bytes() const
{
    return static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height)
        * (HoldsFloats(m_format) ? 16 : 4);
}

void RenderPictures::FillNoise(std::vector<std::uint8_t>& memory, std::uint64_t seed) const
{
    Draws draws(seed);
    const bool floats = HoldsFloats(m_format);
    for (std::size_t i = 0; i < Bytes(); i += 8) {
        const std::uint64_t word = draws.Word();
        if (floats) {
            const float levels[] = {static_cast<float>(word & 0xFFFF) / 65535.0f,
                                    static_cast<float>(word >> 48) / 65535.0f};
            std::memcpy(&memory[i], levels, sizeof levels);
        } else {
            std::memcpy(&memory[i], &word, std::min(sizeof word, Bytes() - i));
        }
    }
}

void RenderPictures::Fill(const DrawnRender& render)
{
    m_format = render.format;
    m_width = render.width;
    m_height = render.height;
    FillNoise(m_first, render.noise);
    FillNoise(m_second, ~render.noise);
    std::fill_n(m_output.begin(), Bytes(), std::uint8_t{0x5A});
}

std::uint64_t RenderPictures::OutputDigest() const
{
#ifdef KELMORA_SEES_UNWRITTEN
    __msan_check_mem_is_initialized(m_output.data(), Bytes());
#endif
    std::uint64_t digest = 0xCBF29CE484222325u;
    for (std::size_t i = 0; i < Bytes(); ++i)
        digest = (digest ^ m_output[i]) * 0x100000001B3u;
    return digest;
}

bool RenderDrawn(IVideoEffect& effect, const DrawnRender& render, PlainHost& host, RenderPictures& pictures)
{
    pictures.Fill(render);
    host.Show(effect, render.preset);
    VideoFrame first = pictures.First(), second = pictures.Second(), output = pictures.Output();
    RenderInfo info = {};
    info.flags = render.halfHeight ? static_cast<std::uint32_t>(RenderFieldPicture) : 0u;
    info.progress = render.progress;
    info.time = render.time;
    return effect.Render(&host, &first, &second, &output, &info);
}

} // namespace kelmora
