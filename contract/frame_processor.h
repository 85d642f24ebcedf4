#pragma once

#include <cstdint>

#include "contract/unknown.h"
#include "contract/video_frame.h"

namespace kelmora {

/// A rectangle of pixels; right and bottom belong to it.
struct FrameRect {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

static_assert(sizeof(FrameRect) == 16);

/// A picture toolbox for the host's own work. Every operation gives true on success and false for a null
/// record. [one thread at a time]
struct IFrameProcessor : IUnknown {
    static constexpr InterfaceId id = {
        0xB9D19C11, 0x28CC, 0x4C17, {0x80, 0xC6, 0x23, 0x5D, 0xAD, 0x31, 0x68, 0x4A}};

    /// Copies 4 bytes per pixel over the smaller size, whatever the formats and pixelBytes say. False where a
    /// pixel has fewer.
    virtual bool KELMORA_CALL Copy(const VideoFrame* src, VideoFrame* dst) = 0;

    /// Scales `src` to the size of `dst`. quality: 0 nearest, 1 linear, 2 cubic, any other linear.
    virtual bool KELMORA_CALL Resize(const VideoFrame* src, VideoFrame* dst, std::int32_t quality) = 0;

    /// Turns alpha-first into alpha-last and back.
    virtual bool KELMORA_CALL ReverseChannels(const VideoFrame* src, VideoFrame* dst) = 0;

    /// Packed YCbCr 4:2:2 to BGRA with a constant alpha. `reserved` is not read.
    virtual bool KELMORA_CALL YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, std::int32_t alpha,
                                             std::int32_t reserved) = 0;

    /// BGRA to packed YCbCr 4:2:2. `reserved` is not read.
    virtual bool KELMORA_CALL BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst,
                                             std::int32_t reserved) = 0;

    /// Sets one channel of every pixel; `value` 0 to 255.
    virtual bool KELMORA_CALL SetChannel(VideoFrame* frame, std::int32_t channel, std::int32_t value) = 0;

    /// `a` over `b` into `out`.
    virtual bool KELMORA_CALL AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b,
                                        bool premultiplied) = 0;

    /// New channel i is old channel order[i].
    virtual bool KELMORA_CALL PermuteChannels(VideoFrame* frame, const std::int32_t* order) = 0;

    /// Multiplies the colours by alpha, in place.
    virtual bool KELMORA_CALL Premultiply(VideoFrame* frame) = 0;

    /// Y, Cb, Cr in the place of red, green, blue to ARGB, pictures of PF_ARGB32F alone. In several stages, each
    /// from `src` into `dst`: meant for one record that is both, for of two only the last stage remains.
    virtual bool KELMORA_CALL YCbCrToARGB(const VideoFrame* src, VideoFrame* dst) = 0;

    /// The way back, in stages as well: one record that is both.
    virtual bool KELMORA_CALL ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst) = 0;

    /// Exchanges top and bottom, in place.
    virtual bool KELMORA_CALL FlipVertical(VideoFrame* frame) = 0;

    /// Copies the smaller height upside down: in each row as many bytes as the shorter one has, whatever the formats
    /// say.
    virtual bool KELMORA_CALL FlipVerticalTo(const VideoFrame* src, VideoFrame* dst) = 0;

    /// The place of a deleting destructor. flags: KELMORA_DESTROY_FREE. Use Release instead.
    virtual void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) = 0;

    /// Scales `region` of `src` to the size of `dst`; `quality` as in Resize.
    virtual bool KELMORA_CALL ResizeRegion(const VideoFrame* src, const FrameRect* region, VideoFrame* dst,
                                           std::int32_t quality) = 0;

protected:
    ~IFrameProcessor() = default;
};

} // namespace kelmora
