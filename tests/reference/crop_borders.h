#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "tests/reference/picture.h"

namespace kelmora::reference {

/// As the host answers for them: normalised, and the number of the style.
struct CropBordersKnobs {
    float horizontal = 0, vertical = 0, feather = 0;
    std::uint32_t style = 0; ///< 0 scale, 1 overlay, 2 extend, 3 transparent
};

/// The kept rectangle, whose right and bottom lie beyond its last pixel, and the softness of its edge.
struct CropNumbers {
    int left = 0, top = 0, right = 0, bottom = 0;
    float feather = 0; ///< pixels, downward

    bool IsInside(int width, int height) const
    {
        return left >= 0 && top >= 0 && left < right && top < bottom && right <= width && bottom <= height;
    }
};
CropNumbers CropOf(const CropBordersKnobs& knobs, int width, int height);

/// Crop Borders, step by step, into `output`'s memory. The two records are of one picture format. The result is
/// the effect's: steps after one that fails are left out.
///
/// Bytes are exact, floats of the zoom and of the mask right but for a few roundings.
bool CropBorders(const VideoFrame& picture, const VideoFrame& output, const CropBordersKnobs& knobs,
                 bool halfHeight);

/// The frame that is left when the first `steps` of Overlay's and Transparent's steps on the output have run: 0
/// for none, 1 for the extended border, 2 with the mask for alpha, 3 all but Overlay's last one.
void CropBordersUpTo(const VideoFrame& picture, const VideoFrame& output, const CropBordersKnobs& knobs,
                     bool halfHeight, int steps);

} // namespace kelmora::reference
