#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "tests/reference/confetti.h"

namespace kelmora::reference {

/// As the host answers for them: levels normalised, choices by their numbers.
struct PizzaBoxesKnobs {
    float slices = 0, cohesion = 0, depth = 0, ebb = 0;
    std::uint32_t orientation = 0; ///< 0 horizontal, else vertical
    bool rotateRight = false, spread = false, alternate = false;
    float fog = 0, shine = 0;
    std::uint32_t background = 0; ///< 0 first picture, 1 second picture, 2 transparent, else none
};

/// 3D Pizza Boxes, face by face, pixel by pixel, into `output`'s memory. The pictures are of its format.
/// glows  false as when there is no memory for the glow's copies
void PizzaBoxes(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
                const PizzaBoxesKnobs& knobs, const TransitionMoment& moment, bool glows = true);

} // namespace kelmora::reference
