#pragma once

#include <cstdint>

#include "contract/video_frame.h"
#include "image/frame_buffer.h"

namespace kelmora {

/// The output picture as a scene sees it.
class SceneCanvas : public FrameBuffer {
public:
    /// Becomes a view of the picture. False, and not valid, for one without pixels.
    bool Attach(const VideoFrame* frame);

    /// Lets the picture go.
    void Detach();

    bool IsValid() const { return canvasWidth > 0 && canvasHeight > 0; }

    /// The picture at the top left. Where it is smaller than the canvas what lies outside becomes `padColour`,
    /// 0x00BBGGRR, with no alpha.
    // Kept: a smaller picture is copied, and the canvas padded, in words of four bytes whatever the format.
    void CopyFrom(const FrameBuffer& picture, std::uint32_t padColour);

    /// One colour, 0x00BBGGRR, everywhere; alpha stays.
    // Kept: black clears alpha as well, and `clearAlpha` clears channel 3, in alpha-first formats blue.
    void Fill(std::uint32_t colour, bool clearAlpha);

    /// Lays the picture, which may be null, over the canvas with its corner pixels at the quadrangle's corners.
    /// What cannot be laid leaves the canvas as it is.
    void Warp(const double quad[4][2], const FrameBuffer* picture, std::uint32_t interpolation);

    /// The same of what CopyLit makes of a picture of floats, without the copy. False where that cannot be done.
    bool WarpLit(const double quad[4][2], const FrameBuffer& picture, double light,
                 std::uint32_t interpolation);

    int canvasWidth = 0;
    int canvasHeight = 0;
    double aspect = 1.0; ///< of the world's frame; nothing sets another one
};

} // namespace kelmora
