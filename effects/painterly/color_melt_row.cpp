#include "effects/painterly/color_melt_row.h"

#include <algorithm>
#include <cmath>

#include "effects/common/by_format.h"
#include "effects/common/precision.h"
#include "effects/painterly/edge_lift.h"
#include "image/levels.h"
#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(MeltKernels, kMeltKernels, MeltKernelsFor)

namespace kelmora {
namespace {

using Table = std::array<std::uint8_t, 256>;

std::uint8_t ToByte(double value)
{
    return static_cast<std::uint8_t>(value > 0.0 ? Truncate(std::min(value, 255.0)) : 0);
}

std::uint8_t OnLine(const ByteLine& line, int x)
{
    const float y = static_cast<float>(x) * line.gain + line.offset;
    return ToByte(static_cast<double>(y));
}

/// Looks for a line that gives what the table holds; single precision can be off by one where a value falls on
/// a whole number, and a touch more or less of an offset mends that.
bool FindLine(const Table& table, double gain, double offset, ByteLine& line)
{
    for (const double touch : {0.0, 1e-5, -1e-5, 1e-4, -1e-4}) {
        line = {static_cast<float>(gain), static_cast<float>(offset + touch)};
        bool same = std::isfinite(line.gain) && std::isfinite(line.offset);
        for (int x = 0; x < 256 && same; ++x)
            same = OnLine(line, x) == table[static_cast<std::size_t>(x)];
        if (same)
            return true;
    }
    return false;
}

int Weight255(float weight)
{
    return std::clamp(Truncate(static_cast<double>(weight) * 255.0 + 0.5), 0, 255);
}

} // namespace

MeltRow::MeltRow(std::uint32_t format, const Melt& melt)
    : m_row(ByFormat(MeltKernelsFor(CurrentVariant()), format))
{
    const double amount = static_cast<double>(melt.amount);
    for (int x = 0; x < 256; ++x) {
        const auto i = static_cast<std::size_t>(x);
        m_saturations[i] = ToByte(x * melt.saturationGain);
        m_values[i] = ToByte((melt.targetValue - x) * amount + x);
    }
    m_look.saturations = m_saturations.data();
    m_look.values = m_values.data();
    m_look.straight = FindLine(m_saturations, melt.saturationGain, 0.0, m_look.saturationLine)
        && FindLine(m_values, 1.0 - amount, melt.targetValue * amount, m_look.valueLine);
    m_look.share = AllChannelsByteShare(melt.fogLevel);
    m_look.mixPart = 1.0f - melt.amount;
    m_look.meltPart = melt.amount;
    m_look.mixWeight = Weight255(m_look.mixPart);
    m_look.meltWeight = Weight255(m_look.meltPart);

    m_look.saturationGain = static_cast<float>(melt.saturationGain);
    m_look.target = static_cast<float>(melt.targetValue * kByteUnit);
    m_look.amount = melt.amount;
    m_look.fogShare = melt.fogShare;
    m_look.capped = m_look.mixPart + m_look.meltPart > 1.0f;
}

void MeltRow::operator()(const void* mix, const void* blurred, void* result, int width) const
{
    m_row(mix, blurred, result, width, m_look);
}

} // namespace kelmora
