#pragma once

#include <atomic>
#include <cstdint>

#include "contract/frame_processor.h"
#include "image/frame_buffer.h"
#include "image/picture_check.h"

namespace kelmora {

/// The toolbox for the host's own pictures; see IFrameProcessor. No effect uses it. Starts with a count of 1.
///
/// What all operations share beyond the rules of ImageOps:
/// - False for a null record, and where memory is out; nothing escapes, and the host's floating-point state
///   stays.
/// - Of a record only the fields are read, each once. No byte outside of the rows that it promises is read or
///   written, whatever it says.
/// - One record may be source and destination at once: the result is that of a copied source. What other
///   pictures that share memory become is open, the resizes apart.
/// - Pictures are worked on as they lie in memory, the lowest row first: a negative stride is turned round.
///
/// The count may be changed from any thread, all else is for one thread at a time.
class FrameProcessor final : public IFrameProcessor {
public:
    FrameProcessor() = default;
    FrameProcessor(const FrameProcessor&) = delete;
    FrameProcessor& operator=(const FrameProcessor&) = delete;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;

    /// False where a picture's pixels have fewer than four bytes.
    // Kept: four bytes per pixel are copied whatever the pixels have, so of 16-byte pixels the first quarter of
    // each row.
    bool KELMORA_CALL Copy(const VideoFrame* src, VideoFrame* dst) override;

    // Kept: the pixels count as four bytes whatever the format says; floats do not survive it.
    bool KELMORA_CALL Resize(const VideoFrame* src, VideoFrame* dst, std::int32_t quality) override;

    bool KELMORA_CALL ReverseChannels(const VideoFrame* src, VideoFrame* dst) override;

    /// Works on the smaller size of both; a last odd pixel of the source is two bytes. See primitives/ycbcr.h.
    bool KELMORA_CALL YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, std::int32_t alpha,
                                     std::int32_t reserved) override;
    bool KELMORA_CALL BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst, std::int32_t reserved) override;

    bool KELMORA_CALL SetChannel(VideoFrame* frame, std::int32_t channel, std::int32_t value) override;

    /// The result is the first argument.
    bool KELMORA_CALL AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b,
                                bool premultiplied) override;

    /// False for a null `order`.
    bool KELMORA_CALL PermuteChannels(VideoFrame* frame, const std::int32_t* order) override;

    bool KELMORA_CALL Premultiply(VideoFrame* frame) override;
    bool KELMORA_CALL YCbCrToARGB(const VideoFrame* src, VideoFrame* dst) override;
    bool KELMORA_CALL ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst) override;

    /// True for every record, also where there are no pixels to exchange, or pixels of no bytes.
    // Kept: rows are exchanged in as many whole words as the stride has, up to the end of the pixels, so where it is
    // no multiple of 4 up to three bytes at the end of a row may stay.
    bool KELMORA_CALL FlipVertical(VideoFrame* frame) override;

    /// The smaller height and the smaller row, in bytes. True for all records.
    bool KELMORA_CALL FlipVerticalTo(const VideoFrame* src, VideoFrame* dst) override;

    /// Gives the address of the memory that is left, null when it was freed.
    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) override;

    /// Takes no more of the region than `dst` has pixels. Formats 0, 1, 3, 4 of `src`; that of `dst` is not
    /// looked at. False for an empty region and for one that reaches bytes which are not the picture's.
    // Kept: in float pictures the region begins four times as far to the right as `left` says.
    bool KELMORA_CALL ResizeRegion(const VideoFrame* src, const FrameRect* region, VideoFrame* dst,
                                   std::int32_t quality) override;

    /// The picture between packed YCbCr and BGRA, three bytes per pixel: empty until it is needed, and kept
    /// from call to call.
    const FrameBuffer& Conversion() const { return m_conversion; }

private:
    ~FrameProcessor() = default;

    /// Makes sure that the conversion picture has `needed` pixels, and `view` one on `used` of them. False
    /// when there is no memory, and for sizes without pixels.
    bool AttachConversion(Size needed, Size used, FrameBuffer& view);

    std::atomic<std::uint32_t> m_references{1};
    FrameBuffer m_conversion;
};

} // namespace kelmora
