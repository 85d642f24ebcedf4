#include "tests/reference/copies.h"

#include <algorithm>

namespace kelmora::reference {

void CopyRect(const Picture& src, int x, int y, int w, int h, Picture& dst, int dstX, int dstY)
{
    for (int j = 0; j < h; ++j)
        for (int i = 0; i < w; ++i) {
            const bool inSource = x + i < src.width && y + j < src.height;
            const bool inDestination = dstX + i < dst.width && dstY + j < dst.height;
            if (inSource && inDestination)
                for (int c = 0; c < src.channels; ++c)
                    dst.At(dstX + i, dstY + j, c) = src.At(x + i, y + j, c);
        }
}

void CopyChannel(const Picture& src, Picture& dst, int srcChannel, int dstChannel)
{
    for (int y = 0; y < std::min(src.height, dst.height); ++y)
        for (int x = 0; x < std::min(src.width, dst.width); ++x)
            dst.At(x, y, dst.channels == 1 ? 0 : dstChannel) =
                src.At(x, y, src.channels == 1 ? 0 : srcChannel);
}

Picture SwappedChannels(const Picture& src, const int (&order)[4])
{
    Picture result = src;
    for (int y = 0; y < src.height; ++y)
        for (int x = 0; x < src.width; ++x)
            for (int c = 0; c < 4; ++c)
                result.At(x, y, c) = src.At(x, y, order[c]);
    return result;
}

Picture ReversedChannels(const Picture& src)
{
    return SwappedChannels(src, {3, 2, 1, 0});
}

Picture Padded(const Picture& src, int width, int height, int top, int left)
{
    Picture result(width, height, src.format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < src.channels; ++c)
                result.At(x, y, c) =
                    src.At(std::clamp(x - left, 0, src.width - 1), std::clamp(y - top, 0, src.height - 1), c);
    return result;
}

} // namespace kelmora::reference
