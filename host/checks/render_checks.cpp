#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

#include "contract/render_info.h"
#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"

namespace kelmora::host {
namespace {

constexpr std::int32_t kWidth = 33;
constexpr std::int32_t kHeight = 21;

std::string Place(const EffectFace& face, const FrameShape& shape)
{
    return face.name + ", " + CaseText(shape);
}

bool AreFinite(const std::vector<std::uint8_t>& pixels)
{
    for (std::size_t i = 0; i + sizeof(float) <= pixels.size(); i += sizeof(float)) {
        float level = 0.0f;
        std::memcpy(&level, &pixels[i], sizeof level);
        if (!std::isfinite(level))
            return false;
    }
    return true;
}

/// Renders the frame over two different old contents: a pixel that stays as it was shows.
void LookAtWholeOutput(CheckRun& run, IVideoEffect& effect, FrameCase frame)
{
    frame.outputFill = 0x00;
    const std::vector<std::uint8_t> over0 = RenderedPixels(run, effect, frame);
    frame.outputFill = 0xA5;
    const std::vector<std::uint8_t> overA5 = RenderedPixels(run, effect, frame);
    ExpectSame(run, frame.output, overA5, over0, "the picture depends on what was in the output");
    if (frame.output.pixelBytes == 16)
        run.Expect(AreFinite(over0), "the picture should hold numbers only");
}

void AllFormats(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        for (const PixelFormat format : kPictureFormats) {
            const Held<IVideoEffect> effect = MakeEffect(library, face.number);
            FrameCase frame = CaseFor(face, kWidth, kHeight, format);
            run.At(Place(face, frame.output));
            for (const double progress : {0.0, 0.3, 1.0}) {
                frame.progress = progress;
                LookAtWholeOutput(run, *effect, frame);
            }
            frame.flags = RenderFieldPicture;
            frame.fieldMode = 0;
            LookAtWholeOutput(run, *effect, frame);
        }
    });
}

void EveryPreset(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const Preset& preset : face.presets) {
            for (const PixelFormat format : {PF_BGRA8, PF_ARGB32F}) {
                FrameCase frame = CaseFor(face, kWidth, kHeight, format);
                frame.knobs = preset.values;
                run.At(Place(face, frame.output) + ", preset \"" + preset.name + "\"");
                LookAtWholeOutput(run, *effect, frame);
            }
        }
    });
}

void IsRepeatable(CheckRun& run)
{
    std::mt19937 engine(run.Seed());
    ForEachEffect(run, [&run, &engine](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            FrameCase frame = CaseFor(face, kWidth, kHeight, format);
            frame.knobs = RandomKnobs(face, engine);
            frame.noise = static_cast<std::uint32_t>(engine());
            run.At(Place(face, frame.output));
            const std::vector<std::uint8_t> once = RenderedPixels(run, *effect, frame);
            const std::vector<std::uint8_t> twice = RenderedPixels(run, *effect, frame);
            ExpectSame(run, frame.output, twice, once,
                       "the same frame comes out differently the second time");
            const Held<IVideoEffect> other = MakeEffect(library, face.number);
            const std::vector<std::uint8_t> fresh = RenderedPixels(run, *other, frame);
            ExpectSame(run, frame.output, fresh, once,
                       "the same frame comes out differently on a new object");
        }
    });
}

/// Frames of a clip in which the knobs move.
std::vector<FrameCase> Clip(const EffectFace& face, PixelFormat format, std::mt19937& engine)
{
    constexpr int kFrames = 12;
    std::vector<FrameCase> clip;
    for (int i = 0; i <= kFrames; ++i) {
        FrameCase frame = CaseFor(face, kWidth, kHeight, format);
        frame.progress = static_cast<double>(i) / kFrames;
        frame.time = i * 0.7;
        frame.knobs = RandomKnobs(face, engine);
        frame.noise = static_cast<std::uint32_t>(100 + i);
        clip.push_back(std::move(frame));
    }
    return clip;
}

void OutOfOrder(CheckRun& run)
{
    std::mt19937 engine(run.Seed());
    ForEachEffect(run, [&run, &engine](IEffectLibrary& library, const EffectFace& face) {
        for (const PixelFormat format : {PF_BGRA8, PF_BGRA32F}) {
            const std::vector<FrameCase> clip = Clip(face, format, engine);
            run.At(Place(face, clip.front().output));
            const Held<IVideoEffect> effect = MakeEffect(library, face.number);
            std::vector<std::vector<std::uint8_t>> inOrder;
            inOrder.reserve(clip.size());
            for (const FrameCase& frame : clip)
                inOrder.push_back(RenderedPixels(run, *effect, frame));

            std::vector<std::size_t> order(clip.size());
            std::iota(order.begin(), order.end(), std::size_t{0});
            for (std::size_t i = order.size() - 1; i > 0; --i)
                std::swap(order[i], order[engine() % (i + 1)]);
            for (const std::size_t i : order) {
                const std::vector<std::uint8_t> shuffled = RenderedPixels(run, *effect, clip[i]);
                ExpectSame(run, clip[i].output, shuffled, inOrder[i],
                           "frame " + std::to_string(i) + " comes out differently after other frames");
            }
        }
    });
}

/// Nobody reads these bytes, so no picture depends on them.
void UnreadBytes(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : {PF_BGRA8, PF_ARGB32F}) {
            FrameCase frame = CaseFor(face, kWidth, kHeight, format);
            frame.first.bottomUp = frame.second.bottomUp = frame.output.bottomUp = 1;
            run.At(Place(face, frame.output));
            const std::vector<std::uint8_t> plain = RenderedPixels(run, *effect, frame);

            FrameCase other = frame;
            other.unread = 0xEE;
            other.flags = ~static_cast<std::uint32_t>(RenderFieldPicture | RenderHasAspect);
            ExpectSame(run, frame.output, RenderedPixels(run, *effect, other), plain,
                       "the picture depends on bytes that are not part of the records");
            other = frame;
            other.first.bottomUp = other.second.bottomUp = other.output.bottomUp = 0xFF;
            ExpectSame(run, frame.output, RenderedPixels(run, *effect, other), plain,
                       "the picture depends on which value but zero is in bottomUp");
            other = frame;
            other.flags = RenderFieldPicture;
            other.fieldMode = 3;
            ExpectSame(run, frame.output, RenderedPixels(run, *effect, other), plain,
                       "a picture of fieldMode 3 is taken for a field");
            if (face.pictures == 1) {
                other = frame;
                other.hasSecond = true;
                ExpectSame(run, frame.output, RenderedPixels(run, *effect, other), plain,
                           "a filter looks at the second picture");
            }
        }
    });
}

/// The effects whose output has the input's alpha whatever the knobs. The others make alpha part of their
/// job.
bool KeepsAlpha(std::int32_t number)
{
    constexpr std::array kKeepers = {EffectAirBrush, EffectDetailEnhancer, EffectWaterColor};
    return std::find(kKeepers.begin(), kKeepers.end(), number) != kKeepers.end();
}

std::vector<std::uint8_t> AlphaOf(const std::vector<std::uint8_t>& pixels, const FrameShape& shape)
{
    const auto pixelBytes = static_cast<std::size_t>(shape.pixelBytes);
    const std::size_t channelBytes = pixelBytes / 4;
    const bool isFirst = shape.format == PF_ARGB8 || shape.format == PF_ARGB32F;
    std::vector<std::uint8_t> alpha;
    for (std::size_t pixel = 0; pixel < pixels.size(); pixel += pixelBytes) {
        const auto start =
            pixels.begin() + static_cast<std::ptrdiff_t>(pixel + (isFirst ? 0 : 3 * channelBytes));
        alpha.insert(alpha.end(), start, start + static_cast<std::ptrdiff_t>(channelBytes));
    }
    return alpha;
}

void OutputAlpha(CheckRun& run)
{
    bool isAny = false;
    std::mt19937 engine(run.Seed());
    ForEachEffect(run, [&](IEffectLibrary& library, const EffectFace& face) {
        if (!KeepsAlpha(face.number))
            return;
        isAny = true;
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            FrameCase frame = CaseFor(face, kWidth, kHeight, format);
            frame.knobs = RandomKnobs(face, engine);
            run.At(Place(face, frame.output));
            GuardedFrame input(frame.first);
            input.FillNoise(frame.noise);
            const std::vector<std::uint8_t> output = RenderedPixels(run, *effect, frame);
            run.Expect(AlphaOf(output, frame.output) == AlphaOf(input.Pixels(), frame.first),
                       "the output should have the alpha of the input");
        }
    });
    if (!isAny)
        run.Skip("the library makes no effect that keeps alpha");
}

constexpr std::array kChecks = {
    Check{"render-all-formats", "Every effect renders the whole picture in all four formats.", AllFormats},
    Check{"render-every-preset", "Every effect renders the whole picture with each of its presets.",
          EveryPreset},
    Check{"render-is-repeatable", "The same frame gives the same picture, on any object.", IsRepeatable},
    Check{"render-out-of-order", "A frame's picture does not depend on the frames before it.", OutOfOrder},
    Check{"unread-bytes-do-not-matter", "Bytes that are no field of a record change no picture.",
          UnreadBytes},
    Check{"output-alpha-is-the-inputs", "Effects on colours alone hand the alpha through.", OutputAlpha},
};

} // namespace

constinit const std::span<const Check> kRenderChecks = kChecks;

} // namespace kelmora::host
