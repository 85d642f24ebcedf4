#include "effects/fixing/unsharp_combine.h"

#include <algorithm>

#include "effects/common/precision.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(UnsharpKernels, kUnsharpKernels, UnsharpKernelsFor)

namespace kelmora {
namespace {

// Far beyond what the knob can ask for (20000), and safe to multiply by a byte.
constexpr int kMostScaled = 8000000;

int ScaledAmount(float amount)
{
    return std::clamp(Truncate(10000.0 * static_cast<double>(amount)), -kMostScaled, kMostScaled);
}

bool GivesAllBytes(const ByteGain& gain, int scaled)
{
    for (int v = 255; v >= 0; --v)
        if (gain(v) != UnsharpCombine::Scaled(scaled, v))
            return false;
    return true;
}

} // namespace

std::optional<ByteGain> FindByteGain(int scaled)
{
    if (scaled < 0 || scaled > 2 * 10000)
        return std::nullopt;
    for (int shift = 6; shift <= 12; ++shift) {
        const int exact = static_cast<int>(scaled * (std::int64_t{256} << shift) / 10000);
        for (int factor = exact; factor <= exact + 1; ++factor) {
            // The product, its offset included, must stay inside a word.
            if (factor > 0xFFFF || 255 * factor / 256 + (1 << shift) > 0xFFFF)
                break;
            for (int offset = 0; offset < 1 << shift; offset = offset * 2 + 1) {
                const ByteGain gain = {static_cast<std::uint16_t>(factor), static_cast<std::uint16_t>(offset),
                                       shift};
                if (GivesAllBytes(gain, scaled))
                    return gain;
            }
        }
    }
    return std::nullopt;
}

UnsharpCombine::UnsharpCombine(std::uint32_t format, float amount)
    : m_kernels(UnsharpKernelsFor(CurrentVariant())), m_floats(IsFloat(format)),
      m_alphaIndex(AlphaIndex(format)), m_amount(amount)
{
    if (m_floats)
        return;
    const int scaled = ScaledAmount(amount);
    m_gain = FindByteGain(scaled);
    for (int v = 0; v < 256; ++v)
        m_table[static_cast<std::size_t>(v)] = Scaled(scaled, v);
}

void UnsharpCombine::operator()(const void* picture, const void* blurred, const void* alpha, void* result,
                                int width) const
{
    if (m_floats)
        m_kernels.floats({picture, blurred, alpha, result, width, m_alphaIndex, m_amount});
    else if (m_gain)
        m_kernels.bytes({picture, blurred, alpha, result, width, m_alphaIndex, *m_gain});
    else
        CombineByTable({picture, blurred, alpha, result, width, m_alphaIndex, {}});
}

void UnsharpCombine::CombineByTable(const UnsharpRow<ByteGain>& row) const
{
    const auto* picture = static_cast<const std::uint8_t*>(row.picture);
    const auto* blurred = static_cast<const std::uint8_t*>(row.blurred);
    const auto* alpha = static_cast<const std::uint8_t*>(row.alpha);
    auto* result = static_cast<std::uint8_t*>(row.result);
    for (int i = 0; i < row.width * 4; ++i) {
        const int sharp = m_table[picture[i]] + picture[i] - m_table[blurred[i]];
        result[i] = i % 4 == row.alphaIndex ? alpha[i] : static_cast<std::uint8_t>(std::clamp(sharp, 0, 255));
    }
}

} // namespace kelmora
