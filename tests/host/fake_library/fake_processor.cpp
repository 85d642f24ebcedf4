#include "tests/host/fake_library/fake_processor.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "tests/host/fake_library/fault.h"

namespace kelmora::fake {
namespace {

/// A picture with its lowest row in memory first.
struct View {
    std::uint8_t* data = nullptr;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t stride = 0;
    std::int64_t pixelBytes = 0;

    std::uint8_t* At(std::int64_t x, std::int64_t y) const { return data + y * stride + x * pixelBytes; }

    /// Whether `bytes` may be taken from each pixel.
    bool Holds(std::int64_t bytes) const
    {
        if (Breaks("processor-trusts-records"))
            return data != nullptr && width > 0 && height > 0;
        return data != nullptr && width > 0 && height > 0 && pixelBytes >= bytes && stride >= width * bytes;
    }
};

View ViewOf(const VideoFrame& frame)
{
    View view = {static_cast<std::uint8_t*>(frame.data), frame.width, frame.height, frame.stride,
                 frame.pixelBytes};
    if (view.stride < 0 && view.height > 0 && view.data != nullptr) {
        view.data += (view.height - 1) * view.stride;
        view.stride = -view.stride;
    }
    return view;
}

/// Copies `bytes` of each row, the last of `src` first where it is turned.
void CopyRows(const View& src, const View& dst, std::int64_t bytes, std::int64_t height, bool turned)
{
    for (std::int64_t y = 0; y < height; ++y)
        std::memmove(dst.At(0, y), src.At(0, turned ? height - 1 - y : y), static_cast<std::size_t>(bytes));
}

std::int64_t CommonHeight(const View& a, const View& b)
{
    return std::min(a.height, b.height);
}

/// The level of a grey in video range.
std::uint8_t LevelOf(int luma)
{
    return static_cast<std::uint8_t>(std::clamp((76284 * luma - 1220601) >> 16, 0, 255));
}

std::uint8_t LumaOf(int level)
{
    return static_cast<std::uint8_t>(16 + (level * 219 + 127) / 255);
}

/// What null records are answered with.
bool NullAnswer()
{
    return Breaks("processor-true-for-null");
}

} // namespace

std::int32_t FakeProcessor::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (out == nullptr)
        return E_FAIL;
    *out = nullptr;
    if (*interfaceId != IUnknown::id && *interfaceId != IFrameProcessor::id)
        return E_NOINTERFACE;
    *out = static_cast<IFrameProcessor*>(this);
    AddRef();
    return S_OK;
}

std::uint32_t FakeProcessor::AddRef()
{
    return ++m_count;
}

std::uint32_t FakeProcessor::Release()
{
    const std::uint32_t left = --m_count;
    if (left == 0)
        Destroy(KELMORA_DESTROY_FREE);
    return left;
}

void* FakeProcessor::Destroy(std::uint32_t flags)
{
    if ((flags & KELMORA_DESTROY_FREE) != 0)
        delete this;
    return nullptr;
}

bool FakeProcessor::Copy(const VideoFrame* src, VideoFrame* dst)
{
    if (src == nullptr || dst == nullptr)
        return NullAnswer();
    const View from = ViewOf(*src), to = ViewOf(*dst);
    if (!from.Holds(4) || !to.Holds(4))
        return false;
    const std::int64_t bytes = 4 * std::min(from.width, to.width);
    CopyRows(from, to, bytes, CommonHeight(from, to), false);
    if (Breaks("processor-writes-behind-rows"))
        to.At(to.width, 0)[0] = 0;
    return true;
}

bool FakeProcessor::Resize(const VideoFrame* src, VideoFrame* dst, std::int32_t quality)
{
    if (src == nullptr)
        return NullAnswer();
    const FrameRect whole = {0, 0, std::max(src->width, 0) - 1, std::max(src->height, 0) - 1};
    return ResizeRegion(src, &whole, dst, quality);
}

bool FakeProcessor::ResizeRegion(const VideoFrame* src, const FrameRect* region, VideoFrame* dst,
                                 std::int32_t)
{
    if (src == nullptr || region == nullptr || dst == nullptr)
        return NullAnswer();
    const View from = ViewOf(*src), to = ViewOf(*dst);
    if (!from.Holds(4) || !to.Holds(4) || region->right >= from.width || region->bottom >= from.height)
        return false;
    const std::int64_t width = std::int64_t{region->right} - region->left + 1;
    const std::int64_t height = std::int64_t{region->bottom} - region->top + 1;
    const std::int64_t late = Breaks("processor-resizes-late") ? 1 : 0;
    for (std::int64_t y = 0; y < to.height; ++y)
        for (std::int64_t x = 0; x < to.width; ++x) {
            const std::int64_t fromX = std::min(x * width / to.width + late, width - 1);
            std::memmove(to.At(x, y), from.At(region->left + fromX, region->top + y * height / to.height), 4);
        }
    return true;
}

bool FakeProcessor::ReverseChannels(const VideoFrame* src, VideoFrame* dst)
{
    if (src == nullptr || dst == nullptr)
        return NullAnswer();
    const View from = ViewOf(*src), to = ViewOf(*dst);
    if (!from.Holds(4) || !to.Holds(4))
        return false;
    const int channels = Breaks("processor-reverses-three") ? 3 : 4;
    for (std::int64_t y = 0; y < CommonHeight(from, to); ++y)
        for (std::int64_t x = 0; x < std::min(from.width, to.width); ++x) {
            std::memmove(to.At(x, y), from.At(x, y), 4);
            std::reverse(to.At(x, y), to.At(x, y) + channels);
        }
    return true;
}

bool FakeProcessor::YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, std::int32_t alpha, std::int32_t)
{
    if (src == nullptr || dst == nullptr)
        return NullAnswer();
    const View from = ViewOf(*src), to = ViewOf(*dst);
    if (!from.Holds(2) || !to.Holds(4))
        return false;
    for (std::int64_t y = 0; y < to.height; ++y)
        for (std::int64_t x = 0; x < to.width; ++x) {
            const bool isBeyond = x >= from.width || y >= from.height;
            if (isBeyond && !Breaks("processor-shows-older-frame"))
                continue;
            const std::uint8_t level = isBeyond ? std::uint8_t{33} : LevelOf(*from.At(x, y));
            std::memset(to.At(x, y), level, 3);
            to.At(x, y)[3] = static_cast<std::uint8_t>(alpha);
        }
    return true;
}

bool FakeProcessor::BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst, std::int32_t)
{
    if (src == nullptr || dst == nullptr)
        return NullAnswer();
    const View from = ViewOf(*src), to = ViewOf(*dst);
    if (!from.Holds(4) || !to.Holds(2))
        return false;
    const std::int64_t width = std::min(from.width, to.width);
    for (std::int64_t y = 0; y < CommonHeight(from, to); ++y)
        for (std::int64_t x = 0; x < width; ++x) {
            to.At(x, y)[0] = LumaOf(*from.At(x, y));
            to.At(x, y)[1] = 128;
            if (Breaks("processor-writes-odd-pairs") && x % 2 == 0 && x == width - 1)
                std::memset(to.At(x, y) + 2, 128, 2);
        }
    return true;
}

bool FakeProcessor::FlipVertical(VideoFrame* frame)
{
    return FlipVerticalTo(frame, frame);
}

bool FakeProcessor::FlipVerticalTo(const VideoFrame* src, VideoFrame* dst)
{
    if (src == nullptr || dst == nullptr)
        return NullAnswer();
    const View from = ViewOf(*src), to = ViewOf(*dst);
    if (!from.Holds(from.pixelBytes) || !to.Holds(to.pixelBytes) || from.pixelBytes < 1 || to.pixelBytes < 1)
        return true;
    const std::int64_t bytes = std::min(from.width * from.pixelBytes, to.width * to.pixelBytes);
    const std::int64_t height = CommonHeight(from, to);
    // A copy first, for both may be the same.
    std::vector<std::uint8_t> copy(static_cast<std::size_t>(bytes * height));
    const View between = {copy.data(), bytes, height, bytes, 1};
    CopyRows(from, between, bytes, height, false);
    CopyRows(between, to, bytes, height - (Breaks("processor-flips-but-one") ? 1 : 0), true);
    return true;
}

bool FakeProcessor::SetChannel(VideoFrame* frame, std::int32_t, std::int32_t)
{
    return frame == nullptr && NullAnswer();
}

bool FakeProcessor::AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b, bool)
{
    return (out == nullptr || a == nullptr || b == nullptr) && NullAnswer();
}

bool FakeProcessor::PermuteChannels(VideoFrame* frame, const std::int32_t*)
{
    return frame == nullptr && NullAnswer();
}

bool FakeProcessor::Premultiply(VideoFrame* frame)
{
    return frame == nullptr && NullAnswer();
}

bool FakeProcessor::YCbCrToARGB(const VideoFrame* src, VideoFrame* dst)
{
    return (src == nullptr || dst == nullptr) && NullAnswer();
}

bool FakeProcessor::ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst)
{
    return (src == nullptr || dst == nullptr) && NullAnswer();
}

} // namespace kelmora::fake
