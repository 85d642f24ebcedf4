#include "tests/reference/median.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kelmora::reference {

MedianMask CentredMask(int width, int height)
{
    return {width, height, width / 2, height / 2};
}

double MedianAt(const Picture& src, int x, int y, int c, const MedianMask& mask)
{
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(mask.width) * static_cast<std::size_t>(mask.height));
    for (int j = 0; j < mask.height; ++j)
        for (int i = 0; i < mask.width; ++i)
            values.push_back(src.At(x - mask.anchorX + i, y - mask.anchorY + j, c));
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Median(const Picture& src, int left, int top, Picture& dst, const MedianMask& mask, int channels)
{
    for (int y = 0; y < dst.height; ++y)
        for (int x = 0; x < dst.width; ++x)
            for (int c = 0; c < std::min(channels, dst.channels); ++c)
                dst.At(x, y, c) = MedianAt(src, left + x, top + y, c, mask);
}

} // namespace kelmora::reference
