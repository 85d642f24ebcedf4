#pragma once

#include <cstdint>

#include "image/frame_buffer.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// Operations on whole pictures. There is no state: an effect makes one on its stack.
///
/// Rules that all share, and that a comment below repeats only where it differs:
/// - An operation with two pictures works on the smaller width and the smaller height of both, at the top
///   left.
/// - It picks what to do by `format` and `pixelBytes`; both pictures must share a format.
/// - False means that nothing was written: a picture is null or has no pixels, its rows are too short for
///   what the operation takes from them, or its format is not served.
/// - Rows are addressed by the stride, and what lies between them is left alone.
class ImageOps {
public:
    // --- copies and channels ---------------------------------------------------------------------------

    /// Copies pixels. Formats without an exact copy (Packed8) copy nothing and give true all the same.
    /// Pictures of different pixelBytes give false.
    bool Copy(const FrameBuffer& src, FrameBuffer& dst);

    /// Copies the rectangle of `w` by `h` pixels at (x, y) to (dstX, dstY), cut to what fits in both
    /// pictures. False for a negative corner, an empty rectangle and a format without an exact copy.
    bool CopyRect(const FrameBuffer& src, int x, int y, int w, int h, FrameBuffer& dst, int dstX, int dstY);

    /// Copies one channel to one channel, between pictures of four channels and planes of one, all bytes or
    /// all floats. A plane's own channel number is ignored. False for two planes and for a channel outside
    /// 0 to 3.
    bool CopyChannel(const FrameBuffer& src, FrameBuffer& dst, int srcChannel, int dstChannel);

    /// Turns alpha-first into alpha-last and back: channel i becomes channel 3 - i. Formats 0, 1, 3, 4; the
    /// `format` fields stay. May work in place.
    bool ReverseChannels(const FrameBuffer& src, FrameBuffer& dst);

    // --- filters ---------------------------------------------------------------------------------------

    /// Convolves along rows. `src` is padded and `dst` is not, as a rule: the work covers
    /// min(src width - (kernelSize, less 1 when odd), dst width) by min(src height - 2 * topMargin, dst
    /// height) pixels, from (anchor, topMargin) on in `src`.
    ///
    /// kernel    kernelSize taps, of any number: whole ones serve byte formats, floats serve float formats
    /// anchor    below kernelSize; kernelSize / 2 centres the kernel
    /// divisor   of the sums of byte formats; float formats ignore it
    ///
    /// Pictures of the alpha-first formats have loops of their own: the taps run forward, bytes are divided
    /// toward zero, and without `withAlpha` alpha is copied. In the others alpha stays untouched then.
    bool RowFilter(const FrameBuffer& src, FrameBuffer& dst, const int* kernel, int kernelSize, int anchor,
                   int topMargin, int divisor, bool withAlpha);
    bool RowFilter(const FrameBuffer& src, FrameBuffer& dst, const float* kernel, int kernelSize, int anchor,
                   int topMargin, int divisor, bool withAlpha);

    /// Convolves along columns: the row filter turned by a right angle, save that it covers
    /// src height - kernelSize rows, one row less than the row filter would for an odd size.
    bool ColumnFilter(const FrameBuffer& src, FrameBuffer& dst, const int* kernel, int kernelSize,
                      int leftMargin, int anchor, int divisor, bool withAlpha);
    bool ColumnFilter(const FrameBuffer& src, FrameBuffer& dst, const float* kernel, int kernelSize,
                      int leftMargin, int anchor, int divisor, bool withAlpha);

    /// See tent_kernel.h.
    float MakeTentKernelF(float* kernel, int taps);
    int MakeTentKernelI(int* kernel, int taps);

    /// The largest size of a blur, in pixels.
    static constexpr int kMostBlurTaps = 100;

    /// Smooths with a tent of `xSize` by `ySize` pixels, each truncated and cut to kMostBlurTaps; below 1 it copies.
    /// The two outermost rows and columns count as copies of the third. `src` and `dst` may be the same
    /// picture; they may differ in channel order, and must not in pixelBytes. Without `withAlpha` the alpha
    /// channel of `src`'s format is copied from `src`. False also when there is no scratch memory.
    bool Blur(const FrameBuffer& src, FrameBuffer& dst, float xSize, float ySize, MemoryAllocator* allocator,
              bool withAlpha);

    /// Places `src` at (marginX, marginY) in `dst` and extends its edge pixels to every side. For pictures
    /// of the same memory or the same size the middle of `src` is what is placed: all but a margin on each
    /// side. False when no middle is left or it does not fit, and for Packed8.
    bool ExtendBorder(const FrameBuffer& src, FrameBuffer& dst, int marginX, int marginY);
};

} // namespace kelmora
