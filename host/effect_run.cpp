#include "host/effect_run.h"

#include "contract/render_info.h"
#include "host/failure.h"
#include "host/pictures/pixel_conversion.h"
#include "host/strict_host.h"

namespace kelmora::host {
namespace {

/// A record of pixels whose rows follow each other without a gap.
VideoFrame RecordOf(std::vector<std::uint8_t>& pixels, std::int32_t width, std::int32_t height,
                    PixelFormat format)
{
    VideoFrame frame = {};
    frame.data = pixels.data();
    frame.width = width;
    frame.height = height;
    frame.pixelBytes = BytesOfPixel(format);
    frame.stride = width * frame.pixelBytes;
    frame.format = format;
    return frame;
}

void Run(IVideoEffect& effect, VideoFrame& first, VideoFrame* second, VideoFrame& output,
         const FrameSettings& settings)
{
    RenderInfo info = {};
    info.progress = settings.progress;
    info.time = settings.time;
    if (settings.pixelAspect > 0.0) {
        info.flags = RenderHasAspect;
        info.pixelAspect = settings.pixelAspect;
    }
    StrictHost host(settings.knobs, Strictness::Plain);
    if (!effect.Render(&host, &first, second, &output, &info))
        throw Failure(ExitCode::Failed, "the effect could not render the picture");
}

} // namespace

void RenderFrame(IVideoEffect& effect, std::int32_t width, std::int32_t height,
                 std::vector<std::uint8_t>& first, std::vector<std::uint8_t>* second,
                 std::vector<std::uint8_t>& output, const FrameSettings& settings)
{
    output.assign(first.size(), 0); // an effect may leave pixels as they stood
    VideoFrame firstFrame = RecordOf(first, width, height, PF_BGRA8);
    VideoFrame secondFrame = {};
    if (second != nullptr)
        secondFrame = RecordOf(*second, width, height, PF_BGRA8);
    VideoFrame outputFrame = RecordOf(output, width, height, PF_BGRA8);
    Run(effect, firstFrame, second != nullptr ? &secondFrame : nullptr, outputFrame, settings);
}

Picture RenderPicture(IVideoEffect& effect, const Picture& first, const Picture* second,
                      const FrameSettings& settings)
{
    std::vector<std::uint8_t> firstPixels = ToFormat(first, settings.format);
    std::vector<std::uint8_t> secondPixels;
    std::vector<std::uint8_t> output(firstPixels.size());
    VideoFrame firstFrame = RecordOf(firstPixels, first.width, first.height, settings.format);
    VideoFrame outputFrame = RecordOf(output, first.width, first.height, settings.format);
    VideoFrame secondFrame = {};
    if (second != nullptr) {
        secondPixels = ToFormat(*second, settings.format);
        secondFrame = RecordOf(secondPixels, second->width, second->height, settings.format);
    }

    Run(effect, firstFrame, second != nullptr ? &secondFrame : nullptr, outputFrame, settings);
    return FromFormat(output, first.width, first.height, settings.format);
}

} // namespace kelmora::host
