#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "tests/reference/picture.h"

namespace kelmora::reference {

/// Taps of Air Brush's tent for a picture of `pictureHeight` rows. Any number for `spray`; not-a-number asks
/// for as few as 0 times the height does.
int AirBrushTaps(float spray, int pictureHeight);

/// The pixel of the edge step in blue, green, red, alpha.
struct EdgePixel {
    double blue, green, red, alpha;
};

/// The edge step for one pixel: `picture` and its blur. Bytes are whole numbers, 0 to 255.
/// closeness   where given: how far the blur's share lies above the picture's luminance. Around 0 the last bit
///             of a float blur decides between two unlike results.
EdgePixel LiftByte(const EdgePixel& picture, const EdgePixel& blurred, float edge);
EdgePixel LiftFloat(const EdgePixel& picture, const EdgePixel& blurred, float edge,
                    double* closeness = nullptr);

/// Air Brush, step by step: a tent blur of `picture` goes to the memory of `output`, and the edge step of the
/// picture's format over it. The records are of one of the four picture formats; rows are found as a host's
/// are, and by the edge step as its own row length says.
/// Where given, `closeness` gets LiftFloat's for each pixel, row after row.
void AirBrush(const VideoFrame& picture, const VideoFrame& output, float spray, float edge,
              std::vector<double>* closeness = nullptr);

// --- what the twins of effects share ------------------------------------------------------------------

/// The rows of a record in the order of their addresses: a negative stride starts at the last row.
struct Rows {
    std::uint8_t* first;
    int width, height, stride, pixelBytes;
    std::uint32_t format;

    explicit Rows(const VideoFrame& frame);

    std::uint8_t* At(int x, int y) const;

    /// As the loops that go pixel by pixel find it: their rows are a whole number of pixels apart.
    std::uint8_t* AtWhole(int x, int y) const;

    bool Floats() const { return IsFloatFormat(format); }
};

double ValueAt(const std::uint8_t* pixel, int channel, bool floats);
void PutValue(std::uint8_t* pixel, int channel, bool floats, double value);

/// The whole picture, and a picture into the top left of one.
Picture ReadRows(const Rows& rows);
void WriteRows(const Picture& from, const Rows& to);

/// Toward zero; not-a-number gives 0, and what no int holds the nearest one.
int TowardZero(double value);

} // namespace kelmora::reference
