#include <array>

#include "contract/render_info.h"
#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"
#include "host/strict_host.h"

namespace kelmora::host {
namespace {

constexpr std::int32_t kWidth = 32;
constexpr std::int32_t kHeight = 24;

std::string Place(const EffectFace& face, const FrameCase& frame)
{
    return face.name + ", " + CaseText(frame.output);
}

/// Renders with a provider of these habits and compares with the picture made without any.
void LookAtPicture(CheckRun& run, IVideoEffect& effect, const FrameCase& frame, const MemoryHabits& habits,
                   const std::vector<std::uint8_t>& expected, const std::string& finding)
{
    StrictMemory memory(habits);
    ExpectSame(run, frame.output, RenderedPixels(run, effect, frame, &memory), expected, finding);
}

void UsedAndReturned(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            const FrameCase frame = CaseFor(face, kWidth, kHeight, format);
            run.At(Place(face, frame));
            const std::vector<std::uint8_t> without = RenderedPixels(run, *effect, frame);
            MemoryHabits habits;
            LookAtPicture(run, *effect, frame, habits, without, "the host's memory gives another picture");
            habits.shift = 4;
            habits.slack = 48;
            LookAtPicture(run, *effect, frame, habits, without,
                          "memory that lies oddly gives another picture");
            habits.answersBackwards = true;
            LookAtPicture(run, *effect, frame, habits, without, "the pointer should count, not the answer");
        }
    });
}

void ContentDoesNotMatter(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            for (const std::int32_t side : {3, 24}) {
                const FrameCase frame = CaseFor(face, side + 1, side, format);
                run.At(Place(face, frame));
                MemoryHabits habits;
                habits.fill = 0;
                StrictMemory clean(habits);
                const std::vector<std::uint8_t> expected = RenderCase(run, *effect, frame, &clean).pixels;
                for (const std::uint8_t fill : {std::uint8_t{0xA5}, std::uint8_t{0x3F}, std::uint8_t{0xFF}}) {
                    habits.fill = fill;
                    StrictMemory memory(habits);
                    ExpectSame(run, frame.output, RenderCase(run, *effect, frame, &memory).pixels, expected,
                               "the picture depends on what new memory holds");
                }
            }
        }
    });
}

/// Refuses the n-th request, for every n until a render gets all that it wants; after each one the object
/// must still render as before.
void RefuseEach(CheckRun& run, IVideoEffect& effect, const EffectFace& face, const FrameCase& frame,
                bool fromThere)
{
    constexpr std::uint64_t kMost = 5000;
    const std::vector<std::uint8_t> expected = RenderedPixels(run, effect, frame);
    for (std::uint64_t n = 0; n < kMost; ++n) {
        run.At(Place(face, frame) + (fromThere ? ", refused from request " : ", refused request ")
               + std::to_string(n));
        MemoryHabits habits;
        (fromThere ? habits.refuseFrom : habits.refuseOnly) = n;
        StrictMemory memory(habits);
        RenderCase(run, effect, frame, &memory);
        if (memory.Refused() == 0)
            return;
        ExpectSame(run, frame.output, RenderedPixels(run, effect, frame), expected, "the next frame suffers");
    }
    run.Expect(false, "a render asks for memory without end");
}

void Refuses(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        RefuseEach(run, *effect, face, CaseFor(face, kWidth, kHeight, PF_BGRA8), false);
        RefuseEach(run, *effect, face, CaseFor(face, kWidth, kHeight, PF_ARGB32F), true);
        RefuseEach(run, *effect, face, CaseFor(face, kWidth, kHeight, PF_ARGB8), true);
    });
}

void Report(CheckRun& run, const StrictHost& host)
{
    for (const std::string& rule : host.BrokenRules())
        run.Expect(false, rule);
}

void HostNotKept(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        StrictHost first(face.Defaults());
        StrictHost second(face.Defaults());
        GuardedFrame picture(ShapeOf(kWidth, kHeight, PF_BGRA8));
        GuardedFrame output(ShapeOf(kWidth, kHeight, PF_BGRA8));
        picture.FillNoise(1);
        VideoFrame pictureRecord = picture.Record();
        VideoFrame outputRecord = output.Record();
        RenderInfo info = {};
        info.progress = 0.5;

        Held<IVideoEffect> effect = MakeEffect(library, face.number);
        effect->Render(&first, &pictureRecord, &pictureRecord, &outputRecord, &info);
        first.EndRender();
        run.Expect(first.KnobsAsked() > 0, "the host was not asked for the knobs");
        // Nothing of this has to do with the host of a render that is over.
        static_cast<void>(ReadFace(face.number, *effect));
        effect->AddRef();
        effect->Release();
        effect->Render(&second, &pictureRecord, &pictureRecord, &outputRecord, &info);
        second.EndRender();
        run.Expect(second.KnobsAsked() > 0, "the second host was not asked for the knobs");
        effect.reset();
        Report(run, first);
        Report(run, second);
    });
}

constexpr std::array kChecks = {
    Check{"memory-provider-used-and-returned", "Scratch memory comes from the host's provider and goes back.",
          UsedAndReturned},
    Check{"memory-content-does-not-matter", "No picture depends on what new memory holds.",
          ContentDoesNotMatter},
    Check{"memory-provider-refuses", "Any refused request for memory is survived.", Refuses},
    Check{"host-not-kept", "A host is not called or held after its render.", HostNotKept},
};

} // namespace

constinit const std::span<const Check> kMemoryChecks = kChecks;

} // namespace kelmora::host
