#include "tests/reference/neighbourhood.h"

#include <algorithm>

namespace kelmora::reference {
namespace {

int SumAround(const Picture& src, int x, int y, int c, int reach)
{
    int sum = 0;
    for (int j = -reach; j <= reach; ++j)
        for (int i = -reach; i <= reach; ++i)
            sum += static_cast<int>(src.At(x + i, y + j, c));
    return sum;
}

/// Toward minus infinity, by a power of two that is written as a number.
int FloorDivide(int value, int divisor)
{
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

} // namespace

int SharpenAt(const Picture& src, int x, int y, int c)
{
    const int value = 17 * static_cast<int>(src.At(x, y, c)) - SumAround(src, x, y, c, 1);
    const int eighths = FloorDivide(value, 8);
    const int bit = eighths % 2 != 0 ? 1 : 0; // bit 3 of the value
    return std::clamp(FloorDivide(value + bit + 3, 8), 0, 255);
}

void Sharpen(const Picture& src, int left, int top, Picture& dst)
{
    for (int y = 0; y < dst.height; ++y)
        for (int x = 0; x < dst.width; ++x)
            for (int c = 0; c < 3; ++c)
                dst.At(x, y, c) = SharpenAt(src, left + x, top + y, c);
}

int BoxAverageAt(const Picture& src, int x, int y, int c, int size)
{
    const int sum = SumAround(src, x, y, c, size / 2);
    return size == 3 ? (sum + 5) * 455 / 4096 : (sum + 13) * 10485 / 262144;
}

} // namespace kelmora::reference
