#include "effects/scene3d/dream_glow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "effects/common/precision.h"
#include "effects/scene3d/dream_glow_kernels.h"
#include "image/exact_math.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/variant_table.h"
#include "image/tent_filter.h"

KELMORA_VARIANT_TABLE(DreamGlowKernels, kDreamGlowKernels, DreamGlowKernelsFor)

namespace kelmora {
namespace {

constexpr std::int32_t kMostRadius = 32766; // no memory holds the pictures that larger ones belong to

const DreamGlowKernels::Rows& RowsFor(std::uint32_t format)
{
    const DreamGlowKernels& kernels = DreamGlowKernelsFor(CurrentVariant());
    switch (format) {
    case PF_ARGB8:
        return kernels.argb8;
    case PF_BGRA32F:
        return kernels.bgra32f;
    case PF_ARGB32F:
        return kernels.argb32f;
    default:
        return kernels.bgra8;
    }
}

bool IsServed(const FrameBuffer& picture)
{
    const std::uint32_t format = picture.GetFormat();
    return IsPicture(format) && picture.GetPixelBytes() == PixelBytesOf(format)
        && Holds(picture, picture.GetWidth(), PixelBytesOf(format));
}

std::size_t RowBytes(const FrameBuffer& picture)
{
    return static_cast<std::size_t>(picture.GetWidth()) * static_cast<std::size_t>(picture.GetPixelBytes());
}

// --- the wave -----------------------------------------------------------------------------------------

constexpr double kShineShare = Single(0.6);
constexpr double kSway = Single(0.8);

constexpr double WaveSlope()
{
    constexpr float turns = 0.6f * 6.0f + 1.0f;
    constexpr float slope = 2.0f * turns * 3.1415f;
    return static_cast<double>(slope);
}

/// What the glow colour's byte is multiplied by to be a share of the wave.
constexpr double GlowShare(std::uint32_t level)
{
    return level / 356.0;
}

/// What is added to level * keep for every sum of three bytes.
template <class T>
using ByteWaves = std::array<T, GlowShine::kSums>;

double ByteWave(const GlowShine& look, std::size_t sum)
{
    const double light = static_cast<double>(sum) / 768.0;
    const double sine = ExactTurn(look.start + look.slope * light).sine;
    return look.amount * 256.0 * ((sine * look.sway + 1.0) * 0.5 + light);
}

/// What follows the point in level * keep for all 256 levels, sorted, and a 1 behind them.
using Parts = std::array<double, 257>;

void FindParts(double keep, Parts& parts)
{
    for (int level = 0; level < 256; ++level) {
        const double product = level * keep;
        parts[static_cast<std::size_t>(level)] = product - Truncate(product);
    }
    parts[256] = 1.0;
    std::sort(parts.begin(), parts.end());
}

/// The most that level * keep + step is off by in single precision, while it is below 256: four roundings of half a
/// unit at the most.
constexpr double kStepError = 4.0 / (1 << 17);

/// Looks for steps that single precision can take the place of the waves with: such that all levels come out of
/// trunc(level * keep + step) as they do of trunc(level * keep + wave) in double. What follows the point in a wave
/// matters only in which levels it carries over to the next whole number, so a step takes the middle of all that
/// carry the same. False when that leaves no room for errors.
[[gnu::noinline]] // its table and the waves together would be too large a frame
bool FindSteps(const GlowShine& look, ByteWaves<float>& steps)
{
    const bool isGrey = look.blue == look.green && look.green == look.red;
    if (!isGrey || !(look.keep >= 0.0))
        return false;
    Parts parts;
    FindParts(look.keep, parts);
    for (std::size_t sum = 0; sum < steps.size(); ++sum) {
        const double wave = std::min(look.red * ByteWave(look, sum), 256.0);
        const int whole = Truncate(wave);
        const auto carried = std::lower_bound(parts.begin() + 1, parts.end() - 1, 1.0 - (wave - whole));
        const double least = *carried, left = carried[-1];
        if (least - left < 2.0 * kStepError)
            return false;
        steps[sum] = static_cast<float>(whole + 1.0 - 0.5 * (least + left));
    }
    return true;
}

/// Puts finished rows into the picture: as they are, or with the wave through them.
class RowFinish {
public:
    RowFinish(const FrameBuffer& picture, float shine, std::uint32_t colour)
        : m_picture(picture), m_shine(RowsFor(picture.GetFormat()).shine), m_shines(shine > 0.0f)
    {
        m_look.amount = static_cast<double>(shine) * kShineShare;
        m_look.start = 2.0 * (static_cast<double>(shine) * 3.1415);
        m_look.slope = WaveSlope();
        m_look.sway = kSway;
        m_look.keep = 1.0 - m_look.amount;
        m_look.red = GlowShare(colour & 255);
        m_look.green = GlowShare(colour >> 8 & 255);
        m_look.blue = GlowShare(colour >> 16 & 255);
        if (m_shines && !IsFloat(picture.GetFormat()))
            FillTable();
    }
    RowFinish(const RowFinish&) = delete;
    RowFinish& operator=(const RowFinish&) = delete;

    bool Shines() const { return m_shines; }

    void operator()(const std::uint8_t* row, int y) const
    {
        std::uint8_t* to = m_picture.PixelAddress(0, y, 0);
        if (m_shines)
            m_shine(row, to, m_picture.GetWidth(), m_look);
        else
            std::memcpy(to, row, RowBytes(m_picture));
    }

private:
    void FillTable()
    {
        if (FindSteps(m_look, m_steps)) {
            m_look.steps = m_steps.data();
            return;
        }
        for (std::size_t sum = 0; sum < m_waves.size(); ++sum)
            m_waves[sum] = ByteWave(m_look, sum);
        m_look.waves = m_waves.data();
    }

    const FrameBuffer& m_picture;
    const DreamGlowKernels::Shine m_shine;
    const bool m_shines;
    GlowShine m_look;
    union { // one or the other
        ByteWaves<double> m_waves;
        ByteWaves<float> m_steps;
    };
};

// --- the haze -----------------------------------------------------------------------------------------

/// How much brighter than the blur the haze is; 0, below or not-a-number for none.
float FogGain(float fog)
{
    const float strength = fog * 0.8f;
    return static_cast<float>(std::sqrt(static_cast<double>(strength)) * 1.5);
}

GlowFog MakeFog(float gain, std::uint32_t colour)
{
    const float byteGain = gain * 380.0f;
    return {std::min(Truncate(static_cast<double>(byteGain)), GlowFog::kMostGain), gain * 1.49f, colour};
}

/// Lays the haze over a picture in place. A row waits in the scratch picture until the blur has no more use for
/// the row that it replaces: so of the scratch picture no more is touched than the kernel is high.
class Haze {
public:
    Haze(const FrameBuffer& picture, const FrameBuffer& scratch, std::int32_t radius, const GlowFog& fog,
         const RowFinish& finish)
        : m_picture(picture), m_scratch(scratch), m_fog(RowsFor(picture.GetFormat()).fog), m_look(fog),
          m_finish(finish), m_job(TentJob::PaddedByTaps(SizeOf(picture), radius + 1)),
          m_waits(std::min(m_job.columnTaps - m_job.columnTaps / 2 + 1, picture.GetHeight()))
    {
    }

    /// False, the picture untouched, when there is no memory.
    bool Lay(MemoryAllocator& allocator)
    {
        switch (FilterTentRows(m_picture, m_job, allocator,
                               [this](int y, const std::uint8_t* blurred) { LayRow(y, blurred); })) {
        case TentResult::Done:
            for (int y = m_picture.GetHeight() - m_waits; y < m_picture.GetHeight(); ++y)
                FinishRow(y);
            return true;
        case TentResult::NotServed:
            return LayStepwise(allocator);
        case TentResult::NoMemory:
            break;
        }
        return false;
    }

private:
    std::uint8_t* WaitingRow(int y) const { return m_scratch.PixelAddress(0, y % m_waits, 0); }
    void FinishRow(int y) const { m_finish(WaitingRow(y), y); }

    /// `y`: once each from the top down. The blur's running sums still have a tap m_waits - 1 rows above.
    void LayRow(int y, const std::uint8_t* blurred) const
    {
        if (y >= m_waits)
            FinishRow(y - m_waits);
        m_fog(m_picture.PixelAddress(0, y, 0), blurred, WaitingRow(y), m_picture.GetWidth(), m_look);
    }

    bool LayStepwise(MemoryAllocator& allocator) const
    {
        // By an alpha-last name alpha-first pixels are filtered as any others, channel by channel, in their order.
        FrameBuffer from, to;
        AttachAlphaLast(from, m_picture);
        AttachAlphaLast(to, m_scratch);
        if (!FilterTentStepwise(from, to, m_job, from.GetFormat(), allocator, true))
            return false;
        for (int y = 0; y < m_picture.GetHeight(); ++y) {
            std::uint8_t* row = m_scratch.PixelAddress(0, y, 0);
            m_fog(m_picture.PixelAddress(0, y, 0), row, row, m_picture.GetWidth(), m_look);
            m_finish(row, y);
        }
        return true;
    }

    static void AttachAlphaLast(FrameBuffer& view, const FrameBuffer& picture)
    {
        view.Attach(picture.GetPixels(), picture.GetWidth(), picture.GetHeight(), picture.GetStride(),
                    picture.GetPixelBytes(), AlphaLast(picture.GetFormat()), false);
    }

    const FrameBuffer& m_picture;
    const FrameBuffer& m_scratch;
    const DreamGlowKernels::Fog m_fog;
    const GlowFog& m_look;
    const RowFinish& m_finish;
    const TentJob m_job;
    const int m_waits; ///< rows
};

/// What is left of a picture when its haze fails.
void FinishEmptied(const FrameBuffer& picture, const FrameBuffer& scratch, const RowFinish& finish)
{
    std::uint8_t* zeros = scratch.PixelAddress(0, 0, 0);
    std::memset(zeros, 0, RowBytes(picture));
    for (int y = 0; y < picture.GetHeight(); ++y)
        finish(zeros, y);
}

/// False, the picture untouched, when there is no haze to lay or no memory for its scratch picture.
bool LayHaze(const FrameBuffer& picture, std::int32_t radius, const GlowFog& fog, const RowFinish& finish,
             MemoryAllocator& allocator)
{
    FrameBuffer scratch;
    if (!scratch.Allocate(picture.GetWidth(), picture.GetHeight(), picture.GetPixelBytes(), &allocator,
                          picture.GetFormat(), false))
        return false;
    // Kept: a haze that cannot be made leaves an empty picture, where one without a scratch picture leaves all.
    if (radius < 0 || radius > kMostRadius || !Haze(picture, scratch, radius, fog, finish).Lay(allocator))
        FinishEmptied(picture, scratch, finish);
    return true;
}

} // namespace

void PRDreamGlowEffect::Apply(FrameBuffer* picture)
{
    if (!picture || !IsServed(*picture))
        return;
    const RowFinish finish(*picture, shine, colour);
    const float gain = FogGain(fog);
    if (gain > 0.0f && LayHaze(*picture, radius, MakeFog(gain, colour), finish, *allocator))
        return;
    for (int y = 0; finish.Shines() && y < picture->GetHeight(); ++y)
        finish(picture->PixelAddress(0, y, 0), y);
}

} // namespace kelmora
