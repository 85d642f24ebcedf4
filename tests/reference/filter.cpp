#include "tests/reference/filter.h"

#include <algorithm>
#include <cmath>

namespace kelmora::reference {
namespace {

int Saturate(std::int64_t value)
{
    return static_cast<int>(value < 0 ? 0 : value > 255 ? 255 : value);
}

std::int64_t FloorDivide(std::int64_t a, std::int64_t b)
{
    const std::int64_t quotient = a / b;
    return quotient * b > a ? quotient - 1 : quotient;
}

bool IsPowerOfTwo(int value)
{
    for (std::int64_t power = 1; power <= value; power *= 2)
        if (power == value)
            return true;
    return false;
}

int SizeOf(const std::vector<int>& kernel)
{
    return static_cast<int>(kernel.size());
}

int SizeOf(const std::vector<float>& kernel)
{
    return static_cast<int>(kernel.size());
}

/// The value that tap `offset` pixels from (x, y) along the axis meets.
double Tapped(const Picture& src, Axis axis, int x, int y, int c, int offset)
{
    return axis == Axis::Row ? src.At(x + offset, y, c) : src.At(x, y + offset, c);
}

/// The value of one channel, finished. (x, y) is the region's pixel in `src`.
double Value(const Picture& src, int x, int y, int c, const FilterStep<int>& step)
{
    const int size = SizeOf(step.kernel);
    if (!step.forward)
        return ByteFromSum(SumAt(src, step.axis, x, y, c, step.kernel, step.anchor), step.divisor);
    std::int64_t sum = 0;
    for (int i = 0; i < size; ++i)
        sum += static_cast<std::int64_t>(step.kernel[static_cast<std::size_t>(i)])
            * static_cast<std::int64_t>(Tapped(src, step.axis, x, y, c, i + step.anchor + 1 - size));
    return ByteFromSumTruncating(sum, step.divisor);
}

double Value(const Picture& src, int x, int y, int c, const FilterStep<float>& step)
{
    const int size = SizeOf(step.kernel);
    double sum = 0;
    if (!step.forward)
        sum = SumAt(src, step.axis, x, y, c, step.kernel, step.anchor);
    else
        for (int i = 0; i < size; ++i)
            sum += static_cast<double>(step.kernel[static_cast<std::size_t>(i)])
                * Tapped(src, step.axis, x, y, c, i + step.anchor + 1 - size);
    return static_cast<double>(static_cast<float>(sum));
}

struct Span {
    int length, src, dst;
};

/// Along the kernel. The row filter allows for an odd size, the column filter does not.
Span Along(int srcLength, int dstLength, int size, int anchor, bool rowRule)
{
    const int lost = rowRule ? size - size % 2 : size;
    const int length = std::min(srcLength - lost, dstLength);
    const int spare = dstLength - length;
    return {length, anchor, size <= spare ? (spare - size) / 2 + anchor : 0};
}

Span Across(int srcLength, int dstLength, int margin)
{
    const int length = std::min(srcLength - 2 * margin, dstLength);
    return {length, margin, 2 * margin <= dstLength - length ? margin : 0};
}

template <class Tap>
bool FilterPicture(const Picture& src, Picture& dst, const FilterStep<Tap>& step)
{
    const int size = SizeOf(step.kernel);
    const bool row = step.axis == Axis::Row;
    const Span x = row ? Along(src.width, dst.width, size, step.anchor, true)
                       : Across(src.width, dst.width, step.margin);
    const Span y = row ? Across(src.height, dst.height, step.margin)
                       : Along(src.height, dst.height, size, step.anchor, false);
    if (x.length < 1 || y.length < 1 || step.anchor >= size)
        return false;
    for (int j = 0; j < y.length; ++j)
        for (int i = 0; i < x.length; ++i)
            for (int c = 0; c < src.channels; ++c) {
                double& to = dst.At(x.dst + i, y.dst + j, c);
                const bool isAlpha = src.channels == 4 && c == (step.forward ? 0 : 3);
                if (!isAlpha || step.withAlpha)
                    to = Value(src, x.src + i, y.src + j, c, step);
                else if (step.forward)
                    to = src.At(x.src + i, y.src + j, c);
            }
    return true;
}

} // namespace

int ByteFromSum(std::int64_t sum, int divisor)
{
    if (divisor == 1)
        return Saturate(sum);
    if (IsPowerOfTwo(divisor)) {
        const std::int64_t below = FloorDivide(sum, divisor);
        const std::int64_t twice = 2 * (sum - below * divisor);
        const bool up = twice > divisor || (twice == divisor && below % 2 != 0);
        return Saturate(up ? below + 1 : below);
    }
    const double value = static_cast<double>(sum) * (1.0 / divisor);
    if (value >= 255.0)
        return 255;
    if (value <= 0.5)
        return 0;
    const double below = std::floor(value);
    const double part = value - below;
    const bool up = part > 0.5 || (part == 0.5 && static_cast<int>(below) % 2 != 0);
    return static_cast<int>(below) + (up ? 1 : 0);
}

int ByteFromSumTruncating(std::int64_t sum, int divisor)
{
    return Saturate(divisor == 0 ? sum : sum / divisor);
}

std::int64_t SumAt(const Picture& src, Axis axis, int x, int y, int c, const std::vector<int>& kernel,
                   int anchor)
{
    std::int64_t sum = 0;
    for (int j = 0; j < SizeOf(kernel); ++j)
        sum += static_cast<std::int64_t>(kernel[static_cast<std::size_t>(j)])
            * static_cast<std::int64_t>(Tapped(src, axis, x, y, c, anchor - j));
    return sum;
}

double SumAt(const Picture& src, Axis axis, int x, int y, int c, const std::vector<float>& kernel, int anchor)
{
    double sum = 0;
    for (int j = 0; j < SizeOf(kernel); ++j)
        sum +=
            static_cast<double>(kernel[static_cast<std::size_t>(j)]) * Tapped(src, axis, x, y, c, anchor - j);
    return sum;
}

bool Filter(const Picture& src, Picture& dst, const FilterStep<int>& step)
{
    return FilterPicture(src, dst, step);
}

bool Filter(const Picture& src, Picture& dst, const FilterStep<float>& step)
{
    return FilterPicture(src, dst, step);
}

bool ExtendBorder(const Picture& src, Picture& dst, int marginX, int marginY, bool sameMemory)
{
    int left = 0, top = 0, width = src.width, height = src.height;
    if (sameMemory || (src.width == dst.width && src.height == dst.height)) {
        left = marginX;
        top = marginY;
        width -= 2 * marginX;
        height -= 2 * marginY;
    }
    if (width < 1 || height < 1 || marginX + width > dst.width || marginY + height > dst.height)
        return false;
    const Picture before = src; // they may be one picture
    for (int y = 0; y < dst.height; ++y)
        for (int x = 0; x < dst.width; ++x)
            for (int c = 0; c < dst.channels; ++c)
                dst.At(x, y, c) = before.At(left + std::clamp(x - marginX, 0, width - 1),
                                            top + std::clamp(y - marginY, 0, height - 1), c);
    return true;
}

} // namespace kelmora::reference
