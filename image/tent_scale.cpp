#include "image/tent_scale.h"

#include <cmath>
#include <initializer_list>

namespace kelmora {

int ApplyScale(const TentScale& scale, std::int64_t sum)
{
    if (!scale.single)
        return static_cast<int>(std::lrint(static_cast<double>(sum) * scale.factor + scale.bias));
    const std::int64_t patched = sum == scale.patchedSum ? sum + scale.patch : sum;
    const float spread = static_cast<float>(patched) * static_cast<float>(scale.spread);
    const float product = spread * static_cast<float>(scale.factor);
    const float pair = product + static_cast<float>(patched) * static_cast<float>(scale.rest);
    return static_cast<int>(std::lrint(pair + static_cast<float>(scale.bias)));
}

namespace {

/// Whether two scales agree on the sums beside a rounding boundary. Elsewhere they do: single precision errs
/// by far less than one step of a sum.
bool Agree(const TentScale& a, const TentScale& b, std::int64_t weights, bool truncate)
{
    for (std::int64_t value = 0; value <= 255; ++value) {
        const std::int64_t boundary = weights * value - (truncate ? 0 : weights / 2);
        for (std::int64_t sum = boundary - 1; sum <= boundary + 1; ++sum)
            if (sum >= 0 && sum <= weights * 255 && ApplyScale(a, sum) != ApplyScale(b, sum))
                return false;
    }
    return true;
}

/// The sums halfway between two levels, and the levels that a scale gives them.
class Ties {
public:
    Ties(const TentScale& exact, std::int64_t weights, bool truncate)
        : m_weights(weights), m_count(truncate || weights % 2 != 0 ? 0 : 255)
    {
        for (int i = 0; i < m_count; ++i)
            m_levels[i] = static_cast<std::uint8_t>(ApplyScale(exact, Sum(i)));
    }

    int Count() const { return m_count; }
    std::int64_t Sum(int i) const { return m_weights * i + m_weights / 2; }
    /// How far below its level `scale` puts tie `i`.
    int Lack(const TentScale& scale, int i) const { return m_levels[i] - ApplyScale(scale, Sum(i)); }

private:
    std::int64_t m_weights;
    int m_count;
    std::uint8_t m_levels[255] = {};
};

/// Whether `scale` keeps the ties, one of them perhaps patched: it goes where the sum beside it goes.
bool KeepsTies(TentScale& scale, const Ties& ties)
{
    scale.patchedSum = 0;
    scale.patch = 0;
    for (int i = 0; i < ties.Count(); ++i) {
        const int lack = ties.Lack(scale, i);
        if (lack != 0 && scale.patch != 0)
            return false;
        if (lack != 0) {
            scale.patchedSum = static_cast<std::int32_t>(ties.Sum(i));
            scale.patch = lack;
        }
    }
    return true;
}

/// Finds the second factor with which `scale` keeps the ties. What it adds is about half a float's last bit, so it
/// decides where the addition rounds a tie to; more of it never moves one down.
bool FindRest(TentScale& scale, const Ties& ties)
{
    constexpr int kHalvings = 30;
    double low = std::ldexp(-scale.factor, -21), high = -low;
    for (int n = 0; n < kHalvings; ++n) {
        const double middle = (low + high) / 2;
        scale.rest = static_cast<double>(static_cast<float>(middle));
        int lack = 0;
        for (int i = 0; i < ties.Count() && lack == 0; ++i)
            lack = ties.Lack(scale, i);
        if (lack == 0)
            return true;
        (lack > 0 ? low : high) = middle;
    }
    return false;
}

} // namespace

TentScale MakeByteScale(std::int64_t weights, bool truncate)
{
    constexpr int kMostSpread = 256;
    constexpr std::int64_t kMostExact = (1 << 24) - 1; // beyond, single precision does not hold every sum
    TentScale scale;
    scale.factor = 1.0 / static_cast<double>(weights);
    // Half a step up so that whole quotients lie safely above their boundary, then half a unit down.
    scale.bias = truncate ? 0.5 * scale.factor - 0.5 : 0.0;
    const Ties ties(scale, weights, truncate);

    TentScale single = scale;
    single.single = true;
    TentScale fallback = scale;
    for (single.spread = 1; single.spread <= (ties.Count() > 0 ? kMostSpread : 1); ++single.spread) {
        if (weights * 255 * single.spread > kMostExact)
            break;
        const float nearest = static_cast<float>(scale.factor / single.spread);
        for (const float factor : {nearest, std::nextafter(nearest, 1.0f), std::nextafter(nearest, 0.0f)}) {
            single.factor = static_cast<double>(factor);
            if (!KeepsTies(single, ties) || !Agree(single, scale, weights, truncate))
                continue;
            if (single.patch == 0)
                return single;
            fallback = single;
        }
    }

    TentScale pair = scale;
    pair.single = true;
    pair.factor = static_cast<double>(static_cast<float>(scale.factor));
    if (weights * 255 <= kMostExact && ties.Count() > 0 && FindRest(pair, ties)
        && Agree(pair, scale, weights, truncate))
        return pair;
    return fallback;
}

} // namespace kelmora
