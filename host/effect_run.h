#pragma once

#include <cstdint>
#include <vector>

#include "contract/param.h"
#include "contract/video_effect.h"
#include "contract/video_frame.h"
#include "host/pictures/picture.h"

namespace kelmora::host {

/// What is set for one frame.
struct FrameSettings {
    std::vector<ParamValue> knobs; ///< a value per knob
    PixelFormat format = PF_BGRA8; ///< one of the four picture formats
    double progress = 0.0;         ///< 0 to 1
    double time = 0.0;             ///< seconds
    double pixelAspect = 0.0;      ///< width of a pixel over its height; 0: not known
};

/// Renders BGRA8 frames without a gap between their rows, for a transition two of one size. `output` gets the
/// size of `first`. Throws Failure when the effect cannot render it.
///
/// second  null: none
void RenderFrame(IVideoEffect& effect, std::int32_t width, std::int32_t height,
                 std::vector<std::uint8_t>& first, std::vector<std::uint8_t>* second,
                 std::vector<std::uint8_t>& output, const FrameSettings& settings);

/// Renders one frame of `first`, for a transition on its way to `second`, into a picture of the size of
/// `first`. Throws Failure when the effect cannot render it.
Picture RenderPicture(IVideoEffect& effect, const Picture& first, const Picture* second,
                      const FrameSettings& settings);

} // namespace kelmora::host
