#pragma once

#include "contract/video_frame.h"

namespace kelmora::reference {

/// As the host answers for them, levels normalised.
struct ConfettiKnobs {
    float shading = 0, columns = 0, rows = 0, power = 0, direction = 0, flutter = 0;
    bool vacuum = false, reverse = false;
};

/// A frame, and what it has no memory for.
struct TransitionMoment {
    double progress = 0;
    int blocksGiven = -1;  ///< so many blocks, then none; below 0: all
    int blockRefused = -1; ///< the number of one block
    bool hasFaces = true;  ///< false: no memory for the list of them
};

/// 3D Confetti, face by face, pixel by pixel, into `output`'s memory. The pictures are of its format.
void Confetti(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
              const ConfettiKnobs& knobs, const TransitionMoment& moment);

} // namespace kelmora::reference
