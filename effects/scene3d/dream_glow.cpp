#include "effects/scene3d/dream_glow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "effects/common/by_format.h"
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
    return ByFormat(DreamGlowKernelsFor(CurrentVariant()), format);
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

/// What glows, and where to: into pixels of their own, or in place, where the part is all of the picture.
struct GlowPlace {
    const FrameBuffer& picture;
    const TentPart part;
    const FrameBuffer& result; ///< of the part's size

    bool IsInPlace() const { return picture.GetPixels() == result.GetPixels(); }
    const std::uint8_t* Source(int row) const { return picture.PixelAddress(part.x, part.y + row, 0); }
    std::uint8_t* Result(int row) const { return result.PixelAddress(0, row, 0); }
};

struct GlowLook {
    std::int32_t radius;
    float fog, shine;
    std::uint32_t colour;
};

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

/// Puts finished rows into the result: as they are, or with the wave through them.
class RowFinish {
public:
    RowFinish(const FrameBuffer& result, float shine, std::uint32_t colour)
        : m_picture(result), m_shine(RowsFor(result.GetFormat()).shine), m_shines(shine > 0.0f)
    {
        m_look.amount = static_cast<double>(shine) * kShineShare;
        m_look.start = 2.0 * (static_cast<double>(shine) * 3.1415);
        m_look.slope = WaveSlope();
        m_look.sway = kSway;
        m_look.keep = 1.0 - m_look.amount;
        m_look.red = GlowShare(colour & 255);
        m_look.green = GlowShare(colour >> 8 & 255);
        m_look.blue = GlowShare(colour >> 16 & 255);
        if (m_shines && !IsFloat(result.GetFormat()))
            FillTable();
    }
    RowFinish(const RowFinish&) = delete;
    RowFinish& operator=(const RowFinish&) = delete;

    /// `row` may be the place where it is put.
    void operator()(const std::uint8_t* row, int y) const
    {
        std::uint8_t* to = m_picture.PixelAddress(0, y, 0);
        if (m_shines)
            m_shine(row, to, m_picture.GetWidth(), m_look);
        else if (to != row)
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

/// Lays the haze. In place a row waits in a scratch picture until the blur has no more use for the row that it
/// replaces.
class Haze {
public:
    Haze(const GlowPlace& place, std::int32_t radius, const GlowFog& fog, const RowFinish& finish)
        : m_place(place), m_fog(RowsFor(place.picture.GetFormat()).fog), m_look(fog), m_finish(finish),
          m_job(JobFor(place, radius)),
          m_waits(place.IsInPlace()
                      ? std::min(m_job.columnTaps - m_job.columnTaps / 2 + 1, place.part.size.height)
                      : 0)
    {
    }

    /// False when there is no memory for the rows that wait.
    bool Allocate(MemoryAllocator& allocator)
    {
        return m_waits == 0
            || m_waiting.Allocate(m_place.part.size.width, m_waits, m_place.picture.GetPixelBytes(),
                                  &allocator, m_place.picture.GetFormat(), false);
    }

    /// False, the result untouched, when there is no memory.
    bool Lay(MemoryAllocator& allocator)
    {
        switch (FilterTentRows(m_place.picture, m_job, allocator, [this](int y, const std::uint8_t* blurred) {
            LayRow(y - m_place.part.y, blurred);
        })) {
        case TentResult::Done:
            for (int y = m_place.part.size.height - m_waits; y < m_place.part.size.height; ++y)
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
    static TentJob JobFor(const GlowPlace& place, std::int32_t radius)
    {
        TentJob job = TentJob::PaddedByTaps(SizeOf(place.picture), radius + 1);
        job.part = place.part;
        return job;
    }

    std::uint8_t* HazyRow(int y) const
    {
        return m_waits > 0 ? m_waiting.PixelAddress(0, y % m_waits, 0) : m_place.Result(y);
    }
    void FinishRow(int y) const { m_finish(HazyRow(y), y); }

    /// `y`: once each from the top down. The blur's running sums still have a tap m_waits - 1 rows above.
    void LayRow(int y, const std::uint8_t* blurred) const
    {
        if (m_waits > 0 && y >= m_waits)
            FinishRow(y - m_waits);
        m_fog(m_place.Source(y), blurred, HazyRow(y), m_place.part.size.width, m_look);
        if (m_waits == 0)
            FinishRow(y);
    }

    bool LayStepwise(MemoryAllocator& allocator) const
    {
        const FrameBuffer& picture = m_place.picture;
        FrameBuffer from, to;
        // By an alpha-last name alpha-first pixels are filtered as any others, channel by channel, in their order.
        from.Attach(picture.GetPixels(), picture.GetWidth(), picture.GetHeight(), picture.GetStride(),
                    picture.GetPixelBytes(), AlphaLast(picture.GetFormat()), false);
        if (!to.Allocate(picture.GetWidth(), picture.GetHeight(), picture.GetPixelBytes(), &allocator,
                         from.GetFormat(), false)
            || !FilterTentStepwise(from, to, m_job, from.GetFormat(), allocator, true))
            return false;
        for (int y = 0; y < m_place.part.size.height; ++y) {
            std::uint8_t* row = to.PixelAddress(m_place.part.x, m_place.part.y + y, 0);
            m_fog(m_place.Source(y), row, row, m_place.part.size.width, m_look);
            m_finish(row, y);
        }
        return true;
    }

    const GlowPlace& m_place;
    const DreamGlowKernels::Fog m_fog;
    const GlowFog& m_look;
    const RowFinish& m_finish;
    const TentJob m_job;
    const int m_waits; ///< rows
    FrameBuffer m_waiting;
};

/// What is left of a picture when its haze fails.
void FinishEmptied(const GlowPlace& place, const RowFinish& finish)
{
    for (int y = 0; y < place.part.size.height; ++y) {
        std::memset(place.Result(y), 0, RowBytes(place.result));
        finish(place.Result(y), y);
    }
}

/// False, the result untouched, when there is no memory for the rows that wait.
bool LayHaze(const GlowPlace& place, std::int32_t radius, const GlowFog& fog, const RowFinish& finish,
             MemoryAllocator& allocator)
{
    const bool hasKernel = radius >= 0 && radius <= kMostRadius;
    Haze haze(place, hasKernel ? radius : 0, fog, finish);
    if (!haze.Allocate(allocator))
        return false;
    // Kept: a haze that cannot be made leaves an empty picture, where one whose rows cannot wait leaves all.
    if (!hasKernel || !haze.Lay(allocator))
        FinishEmptied(place, finish);
    return true;
}

void Glow(const GlowPlace& place, const GlowLook& look, MemoryAllocator& allocator)
{
    const RowFinish finish(place.result, look.shine, look.colour);
    const float gain = FogGain(look.fog);
    if (gain > 0.0f && LayHaze(place, look.radius, MakeFog(gain, look.colour), finish, allocator))
        return;
    for (int y = 0; y < place.part.size.height; ++y)
        finish(place.Source(y), y);
}

} // namespace

void PRDreamGlowEffect::Apply(FrameBuffer* picture)
{
    if (picture && IsServed(*picture))
        Glow({*picture, {0, 0, SizeOf(*picture)}, *picture}, {radius, fog, shine, colour}, *allocator);
}

bool PRDreamGlowEffect::ApplyInto(const FrameBuffer& picture, int x, int y, FrameBuffer& result) const
{
    const TentPart part = {x, y, SizeOf(result)};
    const bool isInside = x >= 0 && y >= 0 && std::int64_t{x} + part.size.width <= picture.GetWidth()
        && std::int64_t{y} + part.size.height <= picture.GetHeight();
    if (!isInside || picture.GetFormat() != result.GetFormat() || !IsServed(picture) || !IsServed(result))
        return false;
    Glow({picture, part, result}, {radius, fog, shine, colour}, *allocator);
    return true;
}

} // namespace kelmora
