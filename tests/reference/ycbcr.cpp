#include "tests/reference/ycbcr.h"

#include <algorithm>
#include <cstddef>

namespace kelmora::reference {
namespace {

/// Toward minus infinity.
int ShiftedDown(int value, int bits)
{
    const int divisor = 1 << bits;
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

std::uint8_t Clamped(int sum)
{
    return static_cast<std::uint8_t>(std::clamp(ShiftedDown(sum, 16), 0, 255));
}

std::uint8_t LowByte(int value)
{
    return static_cast<std::uint8_t>(((value % 256) + 256) % 256);
}

} // namespace

std::vector<std::uint8_t> RgbRow(const std::vector<std::uint8_t>& ycbcr, int width)
{
    std::vector<std::uint8_t> rgb;
    for (int x = 0; x < width; ++x) {
        const std::size_t pair = static_cast<std::size_t>(x / 2) * 4;
        const bool alone = x % 2 == 0 && x == width - 1;
        const int luma = ycbcr.at(pair + static_cast<std::size_t>(x % 2) * 2);
        const int cb = ycbcr.at(pair + 1);
        const int cr = !alone ? ycbcr.at(pair + 3) : pair == 0 ? 128 : ycbcr.at(pair - 1);
        rgb.push_back(Clamped(76284 * luma + 104595 * cr - 14608761));
        rgb.push_back(Clamped(76284 * luma - 25690 * cb - 53281 * cr + 8887730));
        rgb.push_back(Clamped(76284 * luma + 132186 * cb - 18140365));
    }
    return rgb;
}

std::vector<std::uint8_t> YCbCrRow(const std::vector<std::uint8_t>& rgb, int width)
{
    std::vector<std::uint8_t> ycbcr;
    const auto at = [&](int x, std::size_t c) -> int { return rgb.at(static_cast<std::size_t>(x) * 3 + c); };
    const auto luma = [&](int x, int offset) {
        return LowByte(ShiftedDown(16843 * at(x, 0) + 33030 * at(x, 1) + 6423 * at(x, 2) + offset, 16));
    };
    for (int x = 0; x < width; x += 2) {
        ycbcr.push_back(luma(x, 0x108000));
        if (x + 1 == width) {
            ycbcr.push_back(
                LowByte(ShiftedDown(-9699 * at(x, 0) - 19071 * at(x, 1) + 28770 * at(x, 2) + 0x808000, 16)));
            break;
        }
        const int r = at(x, 0) + at(x + 1, 0), g = at(x, 1) + at(x + 1, 1), b = at(x, 2) + at(x + 1, 2);
        ycbcr.push_back(LowByte(ShiftedDown(-9699 * r - 19071 * g + 28770 * b + 0x1010000, 17)));
        ycbcr.push_back(luma(x + 1, 0x100000));
        ycbcr.push_back(LowByte(ShiftedDown(28770 * r - 24117 * g - 4653 * b + 0x1010000, 17)));
    }
    return ycbcr;
}

} // namespace kelmora::reference
