#pragma once

#include <atomic>
#include <cstdint>

#include "contract/frame_processor.h"

namespace kelmora::fake {

/// A small toolbox that keeps the rules of the contract, save the one that it is told to break. It resizes to
/// the nearest pixel whatever the quality, and knows the greys of packed YCbCr alone. What it does not do at
/// all it answers with false.
class FakeProcessor final : public IFrameProcessor {
public:
    FakeProcessor() = default;
    FakeProcessor(const FakeProcessor&) = delete;
    FakeProcessor& operator=(const FakeProcessor&) = delete;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;
    bool KELMORA_CALL Copy(const VideoFrame* src, VideoFrame* dst) override;
    bool KELMORA_CALL Resize(const VideoFrame* src, VideoFrame* dst, std::int32_t quality) override;
    bool KELMORA_CALL ReverseChannels(const VideoFrame* src, VideoFrame* dst) override;
    bool KELMORA_CALL YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, std::int32_t alpha,
                                     std::int32_t reserved) override;
    bool KELMORA_CALL BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst, std::int32_t reserved) override;
    bool KELMORA_CALL SetChannel(VideoFrame* frame, std::int32_t channel, std::int32_t value) override;
    bool KELMORA_CALL AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b,
                                bool premultiplied) override;
    bool KELMORA_CALL PermuteChannels(VideoFrame* frame, const std::int32_t* order) override;
    bool KELMORA_CALL Premultiply(VideoFrame* frame) override;
    bool KELMORA_CALL YCbCrToARGB(const VideoFrame* src, VideoFrame* dst) override;
    bool KELMORA_CALL ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst) override;
    bool KELMORA_CALL FlipVertical(VideoFrame* frame) override;
    bool KELMORA_CALL FlipVerticalTo(const VideoFrame* src, VideoFrame* dst) override;
    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) override;
    bool KELMORA_CALL ResizeRegion(const VideoFrame* src, const FrameRect* region, VideoFrame* dst,
                                   std::int32_t quality) override;

private:
    ~FakeProcessor() = default;

    std::atomic<std::uint32_t> m_count = 1;
};

} // namespace kelmora::fake
