// Any records and any numbers: every operation of the toolbox, in any order, no fault.

#include "fuzz/input.h"
#include "image/frame_processor.h"

namespace kelmora::fuzz {
namespace {

/// Mostly near the pictures' sizes.
std::int32_t Number(Input& input)
{
    return input.Below(16) == 0 ? input.Take<std::int32_t>() : input.Below(64) - 8;
}

/// A record of the three at hand, or none; the same one may come twice.
VideoFrame* Record(Input& input, VideoFrame* const (&records)[3])
{
    const int choice = input.Below(32);
    return choice == 31 ? nullptr : records[choice % 3];
}

/// Up to 15 behind `edge`, whatever that is.
std::int32_t SomeBehind(std::int32_t edge, Input& input)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(edge)
                                     + static_cast<std::uint32_t>(input.Below(16)));
}

void ResizeRegion(Input& input, IFrameProcessor& box, const VideoFrame* src, VideoFrame* dst)
{
    FrameRect region = {};
    region.left = Number(input);
    region.top = Number(input);
    region.right = input.Below(4) == 0 ? Number(input) : SomeBehind(region.left, input);
    region.bottom = input.Below(4) == 0 ? Number(input) : SomeBehind(region.top, input);
    box.ResizeRegion(src, input.Below(32) == 0 ? nullptr : &region, dst, input.Below(5) - 1);
}

void PermuteChannels(Input& input, IFrameProcessor& box, VideoFrame* frame)
{
    std::int32_t order[4];
    for (std::int32_t& channel : order)
        channel = input.Below(8) == 0 ? Number(input) : input.Below(4);
    box.PermuteChannels(frame, input.Below(32) == 0 ? nullptr : order);
}

void CallOne(Input& input, IFrameProcessor& box, VideoFrame* const (&records)[3])
{
    VideoFrame* const src = Record(input, records);
    VideoFrame* const dst = Record(input, records);
    switch (input.Below(15)) {
    case 0:
        box.Copy(src, dst);
        break;
    case 1:
        box.Resize(src, dst, input.Below(5) - 1);
        break;
    case 2:
        box.ReverseChannels(src, dst);
        break;
    case 3:
        box.YCbCr422ToBGRA(src, dst, Number(input), Number(input));
        break;
    case 4:
        box.BGRAToYCbCr422(src, dst, Number(input));
        break;
    case 5: {
        const std::int32_t channel = input.Below(6) - 1;
        box.SetChannel(dst, channel, Number(input));
        break;
    }
    case 6: {
        const VideoFrame* const below = Record(input, records);
        box.AlphaOver(dst, src, below, input.Below(2) != 0);
        break;
    }
    case 7:
        PermuteChannels(input, box, dst);
        break;
    case 8:
        box.Premultiply(dst);
        break;
    case 9:
        box.YCbCrToARGB(src, dst);
        break;
    case 10:
        box.ARGBToYCbCr(src, dst);
        break;
    case 11:
        box.FlipVertical(dst);
        break;
    case 12:
        box.FlipVerticalTo(src, dst);
        break;
    default:
        ResizeRegion(input, box, src, dst);
        break;
    }
}

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    fuzz::Input input(data, size);
    const bool alike = input.Below(2) != 0;
    constexpr int usualBytes[] = {0, 2, 4, 0};
    const int bytes = usualBytes[input.Below(4)];
    fuzz::Picture first(input, bytes);
    fuzz::Picture second = alike ? fuzz::Picture(input, first) : fuzz::Picture(input, 4);
    fuzz::Picture third = alike ? fuzz::Picture(input, first) : fuzz::Picture(input);
    VideoFrame* const records[] = {&first.Record(), &second.Record(), &third.Record()};
    auto* const box = new FrameProcessor;
    for (int call = input.Below(6); call >= 0; --call)
        fuzz::CallOne(input, *box, records);
    box->Release();
    return 0;
}
