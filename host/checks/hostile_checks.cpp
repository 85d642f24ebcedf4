#include <array>
#include <limits>

#include "contract/render_info.h"
#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"
#include "host/strict_host.h"

namespace kelmora::host {
namespace {

constexpr std::int32_t kSide = 17;

/// Memory for three pictures with records that a check can spoil.
struct Scene {
    explicit Scene(const FrameShape& shape) : first(shape), second(shape), output(shape)
    {
        first.FillNoise(1);
        second.FillNoise(2);
        output.Fill(kOld);
        firstRecord = first.Record();
        secondRecord = second.Record();
        outputRecord = output.Record();
        info.progress = 0.5;
    }

    bool Render(IVideoEffect& effect, const EffectFace& face, VideoFrame* firstUsed, VideoFrame* outputUsed)
    {
        StrictHost host(face.Defaults(), Strictness::Plain);
        return effect.Render(&host, firstUsed, face.pictures == 2 ? &secondRecord : nullptr, outputUsed,
                             &info);
    }
    bool Render(IVideoEffect& effect, const EffectFace& face)
    {
        return Render(effect, face, &firstRecord, &outputRecord);
    }
    bool IsOutputUntouched() const
    {
        const std::vector<std::uint8_t> pixels = output.Pixels();
        return pixels == std::vector<std::uint8_t>(pixels.size(), kOld);
    }
    bool AreGuardsIntact() const
    {
        return first.AreGuardsIntact() && second.AreGuardsIntact() && output.AreGuardsIntact();
    }

    static constexpr std::uint8_t kOld = 0xA5;
    GuardedFrame first;
    GuardedFrame second;
    GuardedFrame output;
    VideoFrame firstRecord;
    VideoFrame secondRecord;
    VideoFrame outputRecord;
    RenderInfo info = {};
};

void ExpectRefusal(CheckRun& run, bool done, const Scene& scene, const std::string& what)
{
    run.Expect(!done, "Render should say false " + what);
    run.Expect(scene.IsOutputUntouched() && scene.AreGuardsIntact(), "Render should write nothing " + what);
}

void WithoutPictures(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        Scene scene(ShapeOf(kSide, kSide, PF_BGRA8));
        run.At(face.name + ", no record of the first picture");
        ExpectRefusal(run, scene.Render(*effect, face, nullptr, &scene.outputRecord), scene,
                      "without a first picture");
        run.At(face.name + ", no record of the output");
        ExpectRefusal(run, scene.Render(*effect, face, &scene.firstRecord, nullptr), scene,
                      "without an output");
        run.At(face.name + ", no memory of the first picture");
        VideoFrame empty = scene.firstRecord;
        empty.data = nullptr;
        ExpectRefusal(run, scene.Render(*effect, face, &empty, &scene.outputRecord), scene,
                      "without a first picture's memory");
        run.At(face.name + ", no memory of the output");
        empty = scene.outputRecord;
        empty.data = nullptr;
        ExpectRefusal(run, scene.Render(*effect, face, &scene.firstRecord, &empty), scene,
                      "without the output's memory");
    });
}

/// Spoils one record after the other: each in turn has the size that `spoil` gives it.
template <class Spoil>
void SpoilEach(CheckRun& run, IVideoEffect& effect, const EffectFace& face, const FrameShape& shape,
               const std::string& how, Spoil spoil)
{
    constexpr std::array kNames = {"first picture", "second picture", "output"};
    for (std::size_t which = 0; which < kNames.size(); ++which) {
        Scene scene(shape);
        const std::array records = {&scene.firstRecord, &scene.secondRecord, &scene.outputRecord};
        spoil(*records[which]);
        run.At(face.name + ", " + CaseText(shape) + ", " + kNames[which] + " with " + how);
        static_cast<void>(scene.Render(effect, face));
        run.Expect(scene.AreGuardsIntact(), "bytes around a picture were written");
    }
}

void BadRecords(CheckRun& run)
{
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            const FrameShape shape = ShapeOf(kSide, kSide, format);
            for (const std::int32_t side : {0, -1, -10, kLeast}) {
                const std::string text = std::to_string(side);
                SpoilEach(run, *effect, face, shape, "width " + text,
                          [side](VideoFrame& frame) { frame.width = side; });
                SpoilEach(run, *effect, face, shape, "height " + text,
                          [side](VideoFrame& frame) { frame.height = side; });
            }
            for (const std::uint32_t other : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 99u, 0xFFFFFFFFu})
                SpoilEach(run, *effect, face, shape, "format " + std::to_string(other),
                          [other](VideoFrame& frame) { frame.format = other; });
            // Fewer bytes than the memory has: more would be a promise that is not kept.
            for (const std::int32_t bytes : {0, 1, 2, 3, 4, -1, -16, kLeast})
                SpoilEach(run, *effect, face, shape, "pixelBytes " + std::to_string(bytes),
                          [bytes](VideoFrame& frame) {
                              frame.pixelBytes = bytes < frame.pixelBytes ? bytes : frame.pixelBytes;
                          });
            for (const std::int32_t stride : {0, 1, kSide})
                SpoilEach(run, *effect, face, shape, "stride " + std::to_string(stride),
                          [stride](VideoFrame& frame) { frame.stride = stride; });
        }
    });
}

/// Pictures whose formats do not agree with each other.
void MixedFormats(CheckRun& run)
{
    std::mt19937 engine(run.Seed());
    ForEachEffect(run, [&run, &engine](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        constexpr int kCases = 200;
        for (int i = 0; i < kCases; ++i) {
            FrameCase frame = CaseFor(face, kSide, kSide, PF_BGRA8);
            for (FrameShape* const shape : {&frame.first, &frame.second, &frame.output}) {
                constexpr std::array kPixelBytes = {1, 2, 3, 4, 16};
                shape->width = 1 + static_cast<std::int32_t>(engine() % kSide);
                shape->height = 1 + static_cast<std::int32_t>(engine() % kSide);
                shape->format = static_cast<std::uint32_t>(engine() % 9);
                shape->pixelBytes = kPixelBytes[engine() % kPixelBytes.size()];
            }
            run.At(face.name + ", " + CaseText(frame.first) + " of " + std::to_string(frame.first.pixelBytes)
                   + " bytes into " + CaseText(frame.output) + " of "
                   + std::to_string(frame.output.pixelBytes) + " bytes, second " + CaseText(frame.second)
                   + " of " + std::to_string(frame.second.pixelBytes));
            RenderCase(run, *effect, frame);
        }
    });
}

void OddKnobs(CheckRun& run)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    const std::array words = {FloatWord(0.0f),      FloatWord(1.0f),       FloatWord(-1.0f),
                              FloatWord(2.0f),      FloatWord(1.08f),      FloatWord(1e30f),
                              FloatWord(-1e30f),    FloatWord(1e-42f),     FloatWord(kNan),
                              FloatWord(kInfinity), FloatWord(-kInfinity), 10u,
                              0x7FFFFFFFu,          0x80000000u,           0xFFFFFFFFu};
    constexpr double kHuge = std::numeric_limits<double>::infinity();
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    constexpr std::array kProgress = {0.5, 0.0, 1.0, -5.0, 7.0, kHuge, -kHuge, kNoNumber};
    constexpr std::array kTimes = {1.0,  0.0,   -1e9,  131072.5, 4194304.0,
                                   1e38, 1e300, kHuge, -kHuge,   kNoNumber};
    std::mt19937 engine(run.Seed());
    ForEachEffect(run, [&](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        constexpr int kCases = 300;
        for (int i = 0; i < kCases; ++i) {
            FrameCase frame = CaseFor(face, kSide, kSide, kPictureFormats[engine() % kPictureFormats.size()]);
            std::string text;
            for (ParamValue& value : frame.knobs) {
                value.value = words[engine() % words.size()];
                value.valueY = words[engine() % words.size()];
                text += " " + std::to_string(value.value);
            }
            frame.progress = kProgress[engine() % kProgress.size()];
            frame.time = kTimes[engine() % kTimes.size()];
            run.At(face.name + ", " + CaseText(frame.output) + ", progress " + std::to_string(frame.progress)
                   + ", time " + std::to_string(frame.time) + ", knob words" + text);
            RenderCase(run, *effect, frame);
        }
    });
}

constexpr std::array kChecks = {
    Check{"render-without-pictures", "Without a picture to read or to write Render says false.",
          WithoutPictures},
    Check{"render-bad-records", "Records that make no sense do no harm.", BadRecords},
    Check{"render-mixed-formats", "Pictures that do not fit together do no harm.", MixedFormats},
    Check{"render-odd-knobs", "No knob value, position or time does harm or hangs.", OddKnobs},
};

} // namespace

constinit const std::span<const Check> kHostileChecks = kChecks;

} // namespace kelmora::host
