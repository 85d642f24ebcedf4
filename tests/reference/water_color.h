#pragma once

#include "contract/video_frame.h"

namespace kelmora::reference {

/// As the host answers for them, normalised.
struct WaterColorKnobs {
    float colorShift = 0, color = 0, brightness = 0, contrast = 0, brushWidth = 0, blend = 0;
};

/// Radius of Water Color's median, in pixels; 0 and below stand for none. Any number for `brushWidth`.
int WaterColorRadius(float brushWidth, int height, bool halfHeight);

/// Passes of the median, where there is one.
int WaterColorPasses(int height, bool halfHeight);

/// Water Color, step by step, into `output`'s memory, whose format counts as the picture's. The records are of
/// one of the four picture formats. False where a median would need more memory than there can be.
bool WaterColor(const VideoFrame& picture, const VideoFrame& output, const WaterColorKnobs& knobs,
                bool halfHeight);

/// What is left in alpha-last bytes when there is no memory for the median after the first `medians`, or, after all of
/// them, for the sharpening.
void WaterColorUpTo(const VideoFrame& picture, const VideoFrame& output, const WaterColorKnobs& knobs,
                    bool halfHeight, int medians);

} // namespace kelmora::reference
