#include "tests/reference/tent.h"

#include <algorithm>
#include <utility>

#include "tests/reference/copies.h"
#include "tests/reference/filter.h"

namespace kelmora::reference {
namespace {

template <class Tap>
FilterStep<Tap> StepOf(Axis axis, std::vector<Tap> kernel, int divisor, const BlurSteps& steps, bool forward)
{
    FilterStep<Tap> step;
    step.axis = axis;
    step.kernel = std::move(kernel);
    step.anchor = (axis == Axis::Row ? steps.tapsX : steps.tapsY) / 2;
    step.margin = (axis == Axis::Row ? steps.tapsY : steps.tapsX) / 2;
    step.divisor = divisor;
    step.withAlpha = steps.withAlpha;
    step.forward = forward;
    return step;
}

bool Pass(const Picture& src, Picture& dst, Axis axis, const BlurSteps& steps)
{
    const int taps = axis == Axis::Row ? steps.tapsX : steps.tapsY;
    if (src.floats)
        return Filter(src, dst, StepOf(axis, TentFractions(taps), 1, steps, src.AlphaPlace() == 0));
    return Filter(src, dst, StepOf(axis, TentWeights(taps), TentWeightSum(taps), steps, steps.truncate));
}

} // namespace

std::vector<int> TentWeights(int taps)
{
    std::vector<int> weights;
    for (int i = 0; i < taps; ++i)
        weights.push_back(std::min(i + 1, taps - i));
    return weights;
}

int TentWeightSum(int taps)
{
    int sum = 0;
    for (const int weight : TentWeights(taps))
        sum += weight;
    return sum;
}

std::vector<float> TentFractions(int taps)
{
    std::vector<float> fractions;
    for (const int weight : TentWeights(taps))
        fractions.push_back(static_cast<float>(weight) / static_cast<float>(TentWeightSum(taps)));
    return fractions;
}

bool PlainBlur(const Picture& src, Picture& dst, const BlurSteps& steps)
{
    const int halfX = steps.tapsX / 2, halfY = steps.tapsY / 2;
    Picture a(steps.width + steps.padX, steps.height + steps.padY, dst.format);
    Picture b = a;
    CopyRect(src, 0, 0, steps.width, steps.height, a, halfX, halfY);
    if (steps.reverseChannels)
        a = ReversedChannels(a);
    ExtendBorder(a, a, halfX + 2, halfY + 2, true);
    Pass(a, b, Axis::Column, steps);
    ExtendBorder(b, b, halfX + 2, halfY + 2, true);
    return Pass(b, dst, Axis::Row, steps);
}

Picture PlainBlur(const Picture& src, const BlurSteps& steps)
{
    Picture dst(steps.width, steps.height, src.format);
    PlainBlur(src, dst, steps);
    return dst;
}

bool PlainBlurOperation(const Picture& src, Picture& dst, float xSize, float ySize, bool withAlpha,
                        bool inPlace)
{
    BlurSteps steps;
    steps.width = std::min(src.width, dst.width);
    steps.height = std::min(src.height, dst.height);
    if (!(xSize >= 1) || !(ySize >= 1)) {
        CopyRect(src, 0, 0, steps.width, steps.height, dst, 0, 0);
        return true;
    }
    steps.tapsX = static_cast<int>(std::min(xSize, 100.0f));
    steps.tapsY = static_cast<int>(std::min(ySize, 100.0f));
    steps.padX = 2 * (steps.tapsX / 2);
    steps.padY = 2 * (steps.tapsY / 2);
    steps.truncate = dst.format == PF_ARGB8;
    steps.withAlpha = withAlpha;
    steps.reverseChannels = src.channels == 4 && src.AlphaPlace() == 0 && dst.AlphaPlace() == 3;
    if (!PlainBlur(src, dst, steps))
        return false;
    if (!withAlpha && !inPlace && src.channels == 4) {
        // By the source's format alone, whatever stands there in the destination.
        const int place = src.format == PF_BGRA8 || src.format == PF_BGRA32F ? 3 : 0;
        CopyChannel(src, dst, place, place);
    }
    return true;
}

} // namespace kelmora::reference
