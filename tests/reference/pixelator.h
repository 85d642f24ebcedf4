#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "tests/reference/picture.h"

namespace kelmora::reference {

/// As the host answers for them: normalised, the centre's y upward.
struct PixelatorKnobs {
    float centerX = 0, centerY = 0, width = 0, height = 0, blockSize = 0;
};

/// What the knobs mean in a picture of a size.
struct PixelatorNumbers {
    int centreX = 0, centreY = 0, radiusX = 0, radiusY = 0;
    int soft = 0;
    float amount = 0; ///< of Pixelate
};
PixelatorNumbers PixelatorNumbersOf(const PixelatorKnobs& knobs, int width, int height, bool bottomUp);

/// The outline of an ellipse in a plane, 255 or 1.0. Gives whether all numbers on the way fit 32 bits.
bool DrawEllipse(Picture& mask, int cx, int cy, int a, int b);

/// Sets the pixels of equal value that hang together with the seed, one by one, by way of a stack.
void FloodFill(Picture& plane, int seedX, int seedY, double value);

/// The colours of blocks of `src` into `dst`, of the same size and format.
void Pixelate(const Picture& src, Picture& dst, float amount, bool halfHeight, int cx, int cy, int rx,
              int ry);

/// Which of the steps that want memory have it.
struct PixelatorMemory {
    bool fill = true;
    bool softEdge = true;
};

/// Pixelator, step by step, into `output`'s memory. The two records are of one picture format; rows are found as a
/// host's are, and by the composite as its own row length says.
void Pixelator(const VideoFrame& picture, const VideoFrame& output, const PixelatorKnobs& knobs,
               bool halfHeight, const PixelatorMemory& memory = {});

} // namespace kelmora::reference
