#pragma once

#include "effects/fixing/crop_borders_kernels.h"
#include "effects/fixing/crop_borders_rows.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"
#include "image/primitives/resize.h"
#include "image/scratch.h"

namespace kelmora::crop_borders {

/// The kept part of a picture of floats, zoomed to the whole of `dst`, a picture of its size and format, and cut to
/// 0 to 1, since cubic taps overshoot. Pixels in the hole may stay as they are. False for a rectangle that does not
/// lie inside, and when there is no memory.
bool ZoomFloats(const FrameBuffer& src, FrameBuffer& dst, const Rect& kept, const PxRect& hole);

/// CropRows for pictures of floats. Their mask is a product: down a column the blur adds up whole numbers and rounds
/// once, to the level of that row; along the row it adds that level up as many times, exact in double, and rounds
/// again. So two profiles of whole numbers hold the whole mask.
class FloatCropRows {
public:
    /// `src` and `dst` have one size and one float format.
    FloatCropRows(const FrameBuffer& src, FrameBuffer& dst, const Crop& crop);

    /// Whether the picture is one that the pass serves: floats in whole pixels from row to row, not tiny, with the
    /// kept part inside.
    bool AreServed() const;

    /// Makes the profiles. False when there is no memory.
    bool Begin(MemoryAllocator& allocator);

    /// `dst` becomes the zoomed kept part where Overlay lets it be seen. False when there is no memory.
    bool ZoomGround();

    /// `dst`, which holds the ground, becomes the kept part with its soft edge over it. Alpha is the source's.
    void Overlay();

    /// `dst` becomes the kept part, extended, with its alpha times the mask.
    void Transparent();

private:
    /// Columns or rows from `first` to before `end`.
    struct Span {
        int first, end;
    };

    /// The mask along one axis.
    struct Profile {
        double* counts = nullptr; ///< per pixel: the weights of the blur's taps that lie on the kept part
        double factor = 1.0;      ///< what makes a level of them
        Span full = {0, 0};       ///< the pixels of the kept part with all the weights
    };

    /// One side of the picture.
    struct Side {
        int size;
        Span kept;
        float feather;
        int nearest; ///< pixels nearer to the ends count as copies of the one that is this far off
    };

    void Measure(Profile& profile, const Side& side) const;
    void MakeMaskRow(int y);
    void Compose(bool overlays);
    void MaskSpan(void (*compose)(const CropMaskRow&), int y, Span span);

    const FrameBuffer& m_src;
    FrameBuffer& m_dst;
    Crop m_crop;
    int m_width, m_height;
    int m_alpha;
    bool m_blurs;
    Profile m_columns, m_rows;
    float* m_mask = nullptr;   ///< the mask of the row at hand
    float m_maskLevel = -1.0f; ///< of the row that it was made for
    Scratch m_scratch;
};

} // namespace kelmora::crop_borders
