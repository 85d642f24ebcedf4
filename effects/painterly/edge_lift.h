#pragma once

#include <cstdint>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

// The edge step: by luminance, a pixel that is darker than a share of the blur around it is lifted, in all
// three colours by the same amount, up to that share; any other takes, colour by colour, the darker of itself
// and the blur. A high `edge` makes the share small, so that most pixels darken. Alpha becomes the picture's.
//
// picture           first pixel of the picture
// output            first pixel of the blur, which becomes the result
// *RowPixels        pixels from row to row
// width, height     pixels
// edge              normalised, 0 to 1
//
// Float colours are not clamped: a lifted pixel may leave 0..1.

void EdgeLiftKeepAlpha_BGRA8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                             int outputRowPixels, int width, int height, float edge);
void EdgeLiftKeepAlpha_ARGB8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                             int outputRowPixels, int width, int height, float edge);
void EdgeLiftKeepAlpha_BGRA32F(const float* picture, float* output, int pictureRowPixels, int outputRowPixels,
                               int width, int height, float edge);
void EdgeLiftKeepAlpha_ARGB32F(const float* picture, float* output, int pictureRowPixels, int outputRowPixels,
                               int width, int height, float edge);

// The same with alpha as a fourth channel: it takes the darker, or is lifted along, and has no part in the
// luminance.
//
// fogLevel      bytes: as `edge`. Floats: the share itself that dark pixels are lifted to.

void EdgeLiftAllChannels_BGRA8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                               int outputRowPixels, int width, int height, float fogLevel);
void EdgeLiftAllChannels_ARGB8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                               int outputRowPixels, int width, int height, float fogLevel);
void EdgeLiftAllChannels_BGRA32F(const float* picture, float* output, int pictureRowPixels,
                                 int outputRowPixels, int width, int height, float share);
void EdgeLiftAllChannels_ARGB32F(const float* picture, float* output, int pictureRowPixels,
                                 int outputRowPixels, int width, int height, float share);

/// The share that the float members of EdgeLiftKeepAlpha lift to: 245 of 255 at an edge of 0, nothing at 1.
constexpr float FloatLiftShare(double edge)
{
    return static_cast<float>((1.0 - edge * edge) * 0.9607843160629272);
}

/// The share, in 256ths, that the byte members of EdgeLiftAllChannels make of `fogLevel`.
// Kept: it can be one less than that of EdgeLiftKeepAlpha, which multiplies before it subtracts.
int AllChannelsByteShare(float fogLevel);

/// EdgeLiftKeepAlpha for one row, with the blur and the result apart. Rows may start at any address; `result`
/// may be `blurred`.
class EdgeLiftRow {
public:
    /// `format`: a picture format.
    EdgeLiftRow(std::uint32_t format, float edge);

    void operator()(const void* picture, const void* blurred, void* result, int width) const;

private:
    void (*m_lift)(const void*, const void*, void*, int, float);
    float m_share; ///< bytes: of 256, a whole number
};

} // namespace kelmora
