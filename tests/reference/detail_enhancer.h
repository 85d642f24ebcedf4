#pragma once

#include "contract/video_frame.h"

namespace kelmora::reference {

/// Vertical size of Detail Enhancer's blur, before the blur cuts it to 100. Any number for `definition`.
int DetailEnhancerBlurSize(float definition, int height);

/// Byte `picture` sharpened against its blur: by whole ten-thousandths of `amount`, each product truncated.
int SharpenByte(int picture, int blurred, float amount);

/// Likewise for floats, clamped to 0..1; not-a-number gives 0.
float SharpenFloat(float picture, float blurred, float amount);

/// Detail Enhancer, step by step, into `output`'s memory. The records are of one picture format.
void DetailEnhancer(const VideoFrame& picture, const VideoFrame& output, float definition, float strength,
                    bool halfHeight);

} // namespace kelmora::reference
