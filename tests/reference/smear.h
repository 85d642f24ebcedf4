#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "tests/reference/picture.h"

namespace kelmora::reference {

/// As the host answers for them: normalised, and the number of the background.
struct SmearKnobs {
    float blur = 0, angle = 0, direction = 0, crossFade = 0;
    std::uint32_t background = 0; ///< 0 first clip, 1 second clip, 2 transparent, 3 blended
};

/// A streak to one side: so often is the picture laid over itself, the first time so far off.
struct Streak {
    int doublings = 0;
    float step = 0; ///< pixels, not negative
};

/// The streak of a length in pixels.
Streak StreakOf(double length);

/// How long the streaks of a picture are.
struct StreakLengths {
    double forward = 0, backward = 0;
};

/// second   of the second picture, else of the first
/// progress 0 to 1
StreakLengths LengthsOf(const SmearKnobs& knobs, int width, bool second, double progress);

/// What a frame needs besides the pictures.
struct SmearMoment {
    double progress = 0;
    bool firstHasMemory = true,
         secondHasMemory = true; ///< false as when there is none for that picture's streaks
};

/// Smear, step by step, warp by warp, into `output`'s memory, whose format is the first picture's. A second
/// picture that is missing or has other pixels counts as transparent black.
void Smear(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
           const SmearKnobs& knobs, const SmearMoment& moment);

} // namespace kelmora::reference
