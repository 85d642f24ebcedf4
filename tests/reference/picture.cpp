#include "tests/reference/picture.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace kelmora::reference {

Picture::Picture(int width_, int height_, std::uint32_t format_)
    : width(width_), height(height_), format(format_), floats(IsFloatFormat(format_))
{
    channels = BytesOfPixel(format) / (floats ? 4 : 1);
    values.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)
                      * static_cast<std::size_t>(channels),
                  0.0);
}

std::size_t Picture::Index(int x, int y, int c) const
{
    if (x < 0 || y < 0 || c < 0 || x >= width || y >= height || c >= channels)
        throw std::out_of_range("a plain version left its picture");
    return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x))
        * static_cast<std::size_t>(channels)
        + static_cast<std::size_t>(c);
}

Picture Read(const VideoFrame& frame)
{
    Picture picture(frame.width, frame.height, frame.format);
    for (int y = 0; y < picture.height; ++y) {
        const auto* row =
            static_cast<const std::uint8_t*>(frame.data) + static_cast<std::ptrdiff_t>(frame.stride) * y;
        for (int x = 0; x < picture.width; ++x)
            for (int c = 0; c < picture.channels; ++c) {
                if (picture.floats) {
                    float value;
                    std::memcpy(&value, row + (x * picture.channels + c) * 4, 4);
                    picture.At(x, y, c) = static_cast<double>(value);
                } else {
                    picture.At(x, y, c) = row[x * picture.channels + c];
                }
            }
    }
    return picture;
}

Picture Read(const GuardedPicture& picture)
{
    return Read(picture.Frame());
}

void Write(const Picture& from, GuardedPicture& to)
{
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x)
            for (int c = 0; c < from.channels; ++c) {
                if (from.floats)
                    to.SetFloat(x, y, c, static_cast<float>(from.At(x, y, c)));
                else
                    to.SetByte(x, y, c, static_cast<std::uint8_t>(from.At(x, y, c)));
            }
}

testing::AssertionResult Matches(const GuardedPicture& actual, const Picture& expected, double relative,
                                 double absolute)
{
    const Picture is = Read(actual);
    if (is.width != expected.width || is.height != expected.height || is.channels != expected.channels)
        return testing::AssertionFailure() << "the sizes or formats differ";
    for (int y = 0; y < is.height; ++y)
        for (int x = 0; x < is.width; ++x)
            for (int c = 0; c < is.channels; ++c) {
                const double a = is.At(x, y, c), e = expected.At(x, y, c);
                const bool same = a == e || (std::isnan(a) && std::isnan(e))
                    || (std::isfinite(a) && std::isfinite(e)
                        && std::fabs(a - e) <= relative * std::fabs(e) + absolute);
                if (!same)
                    return testing::AssertionFailure()
                        << "at (" << x << ", " << y << ") channel " << c << ": " << a << ", expected " << e;
            }
    return testing::AssertionSuccess();
}

} // namespace kelmora::reference
