#pragma once

#include <cstdint>

#include "image/color_matrix.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"
#include "image/transform_2d.h"

namespace kelmora {

/// Operations on whole pictures. There is no state: an effect makes one on its stack.
///
/// Rules that all share, and that a comment below repeats only where it differs:
/// - An operation with two pictures works on the smaller width and the smaller height of both, at the top
///   left.
/// - It picks what to do by `format` and `pixelBytes`; both pictures must share a format.
/// - False means that nothing was written: a picture is null or has no pixels, its rows are too short for
///   what the operation takes from them, or its format is not served. AdjustColor and HSVToRGB see to alpha in
///   a step of its own behind the colours, which is refused where pixels have more bytes than their format.
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

    // --- fills, conversion, blends ----------------------------------------------------------------------

    /// Sets one channel, 0 to 3, to `value`, 0 to 255 (floats: times 0.003921569). Formats 0, 1, 3, 4.
    bool SetChannel(FrameBuffer& frame, int channel, int value);

    /// Fills with 0xAARRGGBB. Float pictures get each byte times 0.003921569 in the format's order (Mask32F
    /// with 16 bytes per pixel: as ARGB32F), planes the low byte.
    // Kept: bytes get the colour's own four bytes, low byte first, whatever the format, so in PF_ARGB8 the
    // low byte becomes alpha.
    bool Fill(FrameBuffer& frame, std::uint32_t colour);

    /// New channel i becomes old channel order[i], in place. Formats 0 and 1.
    bool PermuteChannels(FrameBuffer& frame, const int order[4]);

    /// Between pictures of bytes and of floats, and of the two channel orders. Byte to float: times
    /// 0.003921569. Float to byte: clamped to 0..1 (not-a-number: 0), times 255.0, plus 0.5, truncated; both
    /// in double. False for two pictures of one format, and from alpha-first to alpha-last or back along with
    /// a change of type, save from 0 to 4 and from 4 to 0.
    bool Convert(const FrameBuffer& src, FrameBuffer& dst);

    /// `a` over `b` into `out`, which may be either. `premultiplied` says what the colours of `a` and `b`
    /// are; the result's colours are premultiplied always. The format of `a` decides; one that is no picture
    /// counts as BGRA8 where pixels have 4 bytes.
    // Kept: in BGRA8 the rows are a whole number of pixels apart, whatever the strides say.
    bool AlphaOver(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, bool premultiplied);

    /// Colours times alpha; may work in place. Formats 0, 1, 3, 4.
    // Kept: only for format 0 does the alpha of `dst` become that of `src`.
    bool Premultiply(const FrameBuffer& src, FrameBuffer& dst);

    /// out = a * wa + b * wb on all four channels, weights from 0 to 1; `out` may be `a` or `b`. Formats 0, 1,
    /// 3, 4. Floats: the weights are clamped to 0..1 and, when their sum in single precision is above 1,
    /// results are cut to at most 1.0. Bytes: weights in 255ths, sums divided by 255 toward zero, at most
    /// 255. A weight that is not a number counts as 0.
    bool AddWeighted(const FrameBuffer& a, const FrameBuffer& b, FrameBuffer& out, float wa, float wb);

    /// b = a * wa + b * wb, weights from 0 to 255, clamped. Formats 0, 1, 3, 4 and Mask8.
    bool Mix(const FrameBuffer& a, FrameBuffer& b, int wa, int wb);

    // --- colour -----------------------------------------------------------------------------------------

    /// The channels become H, S, V, A in memory order, in all formats but PF_BGRA8 as floats from 0 to 1 are
    /// (see hsv.h) and bytes from 0 to 255 (PF_ARGB8: truncated). Hue begins at blue. Formats 0, 1, 3, 4.
    bool RGBToHSV(const FrameBuffer& src, FrameBuffer& dst);
    bool HSVToRGB(const FrameBuffer& src, FrameBuffer& dst);

    /// Luma times `colour`, 0x00BBGGRR. Formats 0, 1, 3, 4.
    // Kept: alpha becomes luma * 0.003921569, near 0; callers restore it.
    bool Tint(const FrameBuffer& src, FrameBuffer& dst, std::uint32_t colour);

    /// All four channels to 0..1 in place; not-a-number becomes 0. Format 3.
    bool ClampFloats(FrameBuffer& frame);

    /// Turns hue, changes saturation, adds brightness, multiplies contrast, in this order; each knob from 0
    /// to 1 with 0.5 neutral (contrast nearly so). Alpha becomes that of `src`. Other formats than 0, 1, 3, 4
    /// are copied.
    // Kept: the grey that less saturation leads to gives blue the weight of red, and red that of blue.
    // Kept: of a PF_BGRA32F `dst` that is larger than `src` the rest is cut to 0..1 as well.
    bool AdjustColor(const FrameBuffer& src, FrameBuffer& dst, float contrast, float brightness,
                     float saturation, float hue, MemoryAllocator* allocator);

    /// Full-range float RGB to Y, Cb, Cr in the places of R, G, B, and back. PF_ARGB32F; alpha is left alone.
    // Kept: it runs in stages, each of which reads `src` anew, so that with two different pictures only the
    // last stage counts. In place all do.
    bool ARGBToYCbCr32F(const FrameBuffer& src, FrameBuffer& dst);
    bool YCbCrToARGB32F(const FrameBuffer& src, FrameBuffer& dst);

    /// Between four-byte BGRA and three-byte RGB pixels, by pixelBytes; formats are not looked at.
    bool BGRAToRGB24(const FrameBuffer& src, FrameBuffer& dst);
    bool RGB24ToBGRA(const FrameBuffer& src, FrameBuffer& dst, int alpha);

    /// Between three-byte RGB and packed YCbCr 4:2:2, see primitives/ycbcr.h.
    bool RGB24ToYCbCr422(const FrameBuffer& src, FrameBuffer& dst);
    bool YCbCr422ToRGB24(const FrameBuffer& src, FrameBuffer& dst);

    // --- geometry ---------------------------------------------------------------------------------------

    /// Resizes the rectangle of `src` from (srcLeft, srcTop) to (srcRight, srcBottom), both of these beyond its
    /// last pixel, into such a one of `dst`; see primitives/resize.h.
    ///
    /// quality         0 nearest, 1 linear, 2 cubic, 3 Lanczos, any other linear
    /// xFactor, ...    sizes of the result over those of the source; 0 for those of the rectangles
    ///
    /// False where pixelBytes differ, a rectangle is empty or reaches out of its picture.
    // Kept: formats other than 0, 1, 3, 4, Mask32F and planes of bytes do nothing and give true.
    bool ResizeRect(const FrameBuffer& src, FrameBuffer& dst, int srcLeft, int srcTop, int srcRight,
                    int srcBottom, int dstLeft, int dstTop, int dstRight, int dstBottom, int quality,
                    double xFactor, double yFactor);

    /// Lays the common size of `src` over `dst` through `t`, which takes positions in `src` to those in `dst`,
    /// with linear interpolation; pixels that nothing reaches stay as they were. Formats 0, 1, 3, 4 and Mask8.
    /// False for a map without an inverse. See primitives/warp.h.
    bool WarpAffine(const FrameBuffer& src, FrameBuffer& dst, const Transform2D& t);

    /// Lays the whole of `src` over `dst` so that its corner pixels, clockwise from the top left, come to stand
    /// at the quadrangle's corners: x and y of each, in pixels. Formats 0, 1, 3, 4. False for a quadrangle that
    /// is not convex. interpolation: pxNearest, pxLinear, pxCubic, with pxSmoothEdges or without.
    bool WarpQuad(const FrameBuffer& src, FrameBuffer& dst, const double quad[4][2],
                  std::uint32_t interpolation);

    // --- colour matrices --------------------------------------------------------------------------------

    /// With `order`: m = a * m, otherwise m = m * a. Rows 0 to 4 and columns 0 to 3 of the product; column 4
    /// of `m` stays.
    void ColorMatrixCombine(const ColorMatrix& a, ColorMatrix& m, int order);

    /// m = m * diagonal.
    void ColorMatrixScale(ColorMatrix& m, float r, float g, float b, float a);

    /// m = offset * m.
    // Kept: `r` lands in column 2 and `b` in column 0.
    void ColorMatrixOffset(ColorMatrix& m, float r, float g, float b, float a);

    /// Toward grey (0), as it is (1) and beyond.
    void ColorMatrixSaturate(ColorMatrix& m, float s);

    /// A turn by `degrees` in the plane of two axes, 0 to 4: red, green, blue, alpha and the offset. Others, and one
    /// axis twice, change nothing.
    void ColorMatrixRotate(ColorMatrix& m, float degrees, int axisA, int axisB, int order);
    void ColorMatrixRotateX(ColorMatrix& m, float degrees, int order);
    void ColorMatrixRotateY(ColorMatrix& m, float degrees, int order);
    void ColorMatrixRotateZ(ColorMatrix& m, float degrees, int order);

    // Kept: `b` has no effect.
    void ColorMatrixShear(ColorMatrix& m, float a, float b, int order);

    /// Turns hue around the axis of equal luminance.
    void ColorMatrixHue(ColorMatrix& m, float degrees);

    /// v = v * m, with the offset row.
    void ColorMatrixTransform(const ColorMatrix& m, float v[4]);
};

} // namespace kelmora
