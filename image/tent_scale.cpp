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
    return static_cast<int>(std::lrint(product + static_cast<float>(scale.bias)));
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

} // namespace

TentScale MakeByteScale(std::int64_t weights, bool truncate)
{
    constexpr int kMostSpread = 256;
    TentScale scale;
    scale.factor = 1.0 / static_cast<double>(weights);
    // Half a step up so that whole quotients lie safely above their boundary, then half a unit down.
    scale.bias = truncate ? 0.5 * scale.factor - 0.5 : 0.0;

    const bool hasTies = !truncate && weights % 2 == 0;
    const auto tie = [&](int value) { return weights * value + weights / 2; };
    std::uint8_t tied[255] = {};
    for (int value = 0; hasTies && value < 255; ++value)
        tied[value] = static_cast<std::uint8_t>(ApplyScale(scale, tie(value)));

    TentScale single = scale;
    single.single = true;
    // One wrong tie can be put right by itself: it goes where the sum beside it goes.
    const auto keepsTies = [&] {
        single.patchedSum = 0;
        single.patch = 0;
        for (int value = 0; value < 255; ++value) {
            const int off = tied[value] - ApplyScale(single, tie(value));
            if (off != 0 && single.patch != 0)
                return false;
            if (off != 0) {
                single.patchedSum = static_cast<std::int32_t>(tie(value));
                single.patch = off;
            }
        }
        return true;
    };
    TentScale fallback = scale;
    for (single.spread = 1; single.spread <= (hasTies ? kMostSpread : 1); ++single.spread) {
        if (weights * 255 * single.spread >= 1 << 24) // beyond, single precision does not hold every sum
            break;
        const float nearest = static_cast<float>(scale.factor / single.spread);
        for (const float factor : {nearest, std::nextafter(nearest, 1.0f), std::nextafter(nearest, 0.0f)}) {
            single.factor = static_cast<double>(factor);
            if ((hasTies && !keepsTies()) || !Agree(single, scale, weights, truncate))
                continue;
            if (single.patch == 0)
                return single;
            fallback = single;
        }
    }
    return fallback;
}

} // namespace kelmora
