#pragma once

#include <cstdint>
#include <vector>

#include "contract/video_effect.h"
#include "contract/video_frame.h"
#include "tests/endurance/plain_host.h"

namespace kelmora {

/// Numbers from a seed, the same on every machine.
class Draws {
public:
    explicit Draws(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Word();

    /// 0 to bound - 1; `bound` is at least 1.
    std::uint32_t Below(std::uint32_t bound);

    /// 0 to 1, both included.
    double Fraction() { return Below(257) / 256.0; }

    bool OneIn(std::uint32_t times) { return Below(times) == 0; }

private:
    std::uint64_t m_state;
};

/// How many presets the effect says it has.
std::uint32_t PresetCount(IVideoEffect& effect);

/// All that a render goes by.
struct DrawnRender {
    std::uint32_t preset = 0;
    std::uint32_t format = PF_BGRA8;
    std::int32_t width = 0;
    std::int32_t height = 0;
    double progress = 0.5;
    double time = 0.0;
    bool halfHeight = false;
    std::uint64_t noise = 0; ///< seed of both pictures
};

/// Any preset of `effect`, any format that effects work on, sides of `least` to `most` pixels.
DrawnRender Draw(Draws& draws, IVideoEffect& effect, std::int32_t least, std::int32_t most);

/// Memory for the three pictures of a render, made once, so that a long run allocates none.
class RenderPictures {
public:
    /// For sides of up to `most` pixels.
    explicit RenderPictures(std::int32_t most);

    /// Noise in both pictures, with levels from 0 to 1 in floats; the output holds 0x5A bytes.
    void Fill(const DrawnRender& render);

    VideoFrame First() { return Frame(m_first); }
    VideoFrame Second() { return Frame(m_second); }
    VideoFrame Output() { return Frame(m_output); }

    /// 64-bit FNV-1a of the output. Under MemorySanitizer every byte must have been written.
    std::uint64_t OutputDigest() const;

private:
    VideoFrame Frame(std::vector<std::uint8_t>& memory) const;
    std::size_t Bytes() const;
    void FillNoise(std::vector<std::uint8_t>& memory, std::uint64_t seed) const;

    std::uint32_t m_format = PF_BGRA8;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::vector<std::uint8_t> m_first;
    std::vector<std::uint8_t> m_second;
    std::vector<std::uint8_t> m_output;
};

/// One render with fresh noise. What comes out is in `pictures`; the result is the effect's.
bool RenderDrawn(IVideoEffect& effect, const DrawnRender& render, PlainHost& host, RenderPictures& pictures);

} // namespace kelmora
