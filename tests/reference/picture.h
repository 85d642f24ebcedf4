#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "contract/video_frame.h"
#include "tests/support/guarded_picture.h"

namespace kelmora::reference {

/// A picture as the plain versions take it: every channel value a double, whatever the format. Bytes and
/// floats are both exact in it. New pictures hold zeros.
struct Picture {
    int width = 0;
    int height = 0;
    std::uint32_t format = 0;
    int channels = 0; ///< 4, or 1 for masks
    bool floats = false;
    std::vector<double> values;

    Picture() = default;

    /// width, height   pixels, 0 or more
    /// format          one of the formats in use
    Picture(int width, int height, std::uint32_t format);

    /// A channel in memory order. Throws std::out_of_range outside of the picture: a plain version that
    /// strays fails its test.
    double& At(int x, int y, int c) { return values.at(Index(x, y, c)); }
    double At(int x, int y, int c) const { return values.at(Index(x, y, c)); }

    /// 0 for the alpha-first formats, else 3.
    int AlphaPlace() const { return format == PF_ARGB8 || format == PF_ARGB32F ? 0 : 3; }

private:
    std::size_t Index(int x, int y, int c) const;
};

/// The pixels of a host's picture.
Picture Read(const VideoFrame& frame);
Picture Read(const GuardedPicture& picture);

/// Puts the values into a picture of the same size and format.
void Write(const Picture& from, GuardedPicture& to);

/// For EXPECT_TRUE: the same values as the expected picture. Not-a-number equals not-a-number, whatever
/// its bits; 0 equals -0.
/// relative    largest distance that still counts as equal, as a part of the expected value's magnitude
/// absolute    likewise, added to it
testing::AssertionResult Matches(const GuardedPicture& actual, const Picture& expected, double relative = 0.0,
                                 double absolute = 0.0);

} // namespace kelmora::reference
