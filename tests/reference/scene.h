#pragma once

#include <deque>

#include "contract/video_frame.h"
#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/quad_face.h"
#include "image/frame_buffer.h"
#include "tests/reference/picture.h"
#include "tests/reference/warp.h"

namespace kelmora::reference {

/// What faces show. A face holds a view, of which only the size counts here, and the pixels stand beside it.
class Textures {
public:
    /// The view is valid as long as this. A picture without pixels gets one without a size.
    const FrameBuffer& Add(const Picture& picture);

    /// Of a view that was added.
    const Picture& Of(const FrameBuffer& view) const;

private:
    struct Texture {
        Picture picture;
        FrameBuffer view;
    };
    std::deque<Texture> m_textures;
};

/// A host's picture; an empty one for null and for one without pixels.
Picture ReadOrNone(const VideoFrame* frame);

/// A byte at `light` of its brightness, halves up.
int LitByte(int value, double light);

/// All pixels at `light` below 1, alpha as it was.
void Light(Picture& picture, double light);

/// The mean luminance of the part of a picture that has four channels, 0 to 255; of what the part would have
/// been, also where it hangs over an edge.
int AverageBrightness(const Picture& picture, const SourceRect& part);

/// The picture at the top left of a canvas of its format, and transparent black where it does not reach. Where it
/// does not reach everywhere, the first `width` words of four bytes of each row count.
void LayBackground(Picture& canvas, const Picture& picture);

/// A scene with one light that shines away from the viewer.
struct Scene {
    Picture canvas;
    Matrix4 move; ///< from the world to where it is seen
    bool twoSided = false;
    double ambient = 0;
    int blocksGiven = -1;  ///< so many blocks of memory can be had, then none; below 0: all
    int blockRefused = -1; ///< the one block that cannot be had

    int asked = 0;                     ///< blocks asked for so far
    int heldWidth = 0, heldHeight = 0; ///< of the block that the last face left behind
};

/// Where a point of the world that was moved lies on the canvas, without the dust of rounding.
Point OnCanvas(const Picture& canvas, const Vector3& moved);

/// Lays one face over the canvas, if it is to be seen.
void DrawFace(Scene& scene, const Textures& textures, const QuadFace& face);

} // namespace kelmora::reference
