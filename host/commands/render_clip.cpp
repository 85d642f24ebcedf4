#include "host/commands/render_clip.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

#include <nlohmann/json.hpp>

#include "host/clips/still_clip.h"
#include "host/commands/frame_choice.h"
#include "host/frame_pipeline.h"
#include "host/interrupt.h"
#include "host/json_report.h"
#include "host/library_file.h"
#include "host/progress_text.h"
#include "platform/standard_streams.h"

namespace kelmora::host {
namespace {

/// The clips that go in, and how the effect lies over them.
struct Inputs {
    std::unique_ptr<ClipReader> first;
    std::unique_ptr<ClipReader> second; ///< null: none
    ClipTimeline timeline;
};

std::string SizeText(const ClipFormat& format)
{
    return std::to_string(format.width) + " x " + std::to_string(format.height);
}

std::string RatioText(const Ratio& ratio)
{
    return std::to_string(ratio.over) + "/" + std::to_string(ratio.under);
}

void CheckUse(const RenderArguments& arguments)
{
    if (KindOfClip(arguments.output) == ClipKind::Nothing)
        throw Failure(ExitCode::Usage,
                      "cannot tell what to write to " + arguments.output
                          + ": end the name as a clip's, in .mp4, .mkv, .y4m or .pam");
    if (arguments.format != PF_BGRA8)
        throw Failure(ExitCode::Usage, "clips are rendered as bgra8: leave out --format");
    if (arguments.json && arguments.output == "-")
        throw Failure(ExitCode::Usage, "--json and the clip cannot both go to the standard output");
    if (arguments.input == "-" && arguments.second == "-")
        throw Failure(ExitCode::Usage, "only one clip can come from the standard input");
    if (arguments.output != "-")
        CheckTarget(arguments.output, arguments.overwrite);
}

/// Opens what is no picture; null for pictures, whose length others decide.
std::unique_ptr<ClipReader> OpenMoving(const std::string& path, const Ratio& rate)
{
    return KindOfClip(path) == ClipKind::Picture ? nullptr : OpenClip(path, rate);
}

std::int64_t BlendFrames(const RenderArguments& arguments, const Ratio& rate)
{
    constexpr double kMostSeconds = 1e6;
    if (!arguments.duration || !(*arguments.duration <= kMostSeconds))
        throw Failure(ExitCode::Usage,
                      arguments.duration ? "--duration is too long"
                                         : "say how long it takes: --duration 1.5s");
    return std::max<std::int64_t>(1, std::llround(*arguments.duration * rate.Value()));
}

/// Throws Failure unless both clips can be one.
void CheckAlike(const RenderArguments& arguments, const ClipFormat& first, const ClipFormat& second)
{
    if (first.width != second.width || first.height != second.height)
        throw Failure(ExitCode::Failed,
                      arguments.input + " has " + SizeText(first) + " pixels and " + arguments.second + " "
                          + SizeText(second) + ": bring both to one size first");
    if (!(first.rate == second.rate))
        throw Failure(ExitCode::Failed,
                      arguments.input + " has " + RatioText(first.rate) + " frames per second and "
                          + arguments.second + " " + RatioText(second.rate)
                          + ": bring both to one rate first");
}

void LayTransition(const RenderArguments& arguments, Inputs& inputs)
{
    ClipTimeline& timeline = inputs.timeline;
    CheckAlike(arguments, inputs.first->Format(), inputs.second->Format());
    timeline.first = inputs.first->CountFrames();
    timeline.second = inputs.second->Frames();
    if (!timeline.first)
        throw Failure(ExitCode::Failed,
                      "cannot tell how long " + arguments.input
                          + " is, and so where the transition begins: write it to a file first");
    if (timeline.SecondStart() < 0)
        throw Failure(ExitCode::Failed,
                      arguments.input + " has " + std::to_string(*timeline.first)
                          + " frames, fewer than the transition's " + std::to_string(timeline.blend));
}

Inputs OpenInputs(const RenderArguments& arguments)
{
    const Ratio rate = arguments.rate.value_or(kDefaultRate);
    const bool isTransition = !arguments.second.empty();
    Inputs inputs;
    inputs.first = OpenMoving(arguments.input, rate);
    if (isTransition)
        inputs.second = OpenMoving(arguments.second, rate);
    const ClipReader* const moving = inputs.first != nullptr ? inputs.first.get() : inputs.second.get();
    inputs.timeline.rate = moving != nullptr ? moving->Format().rate : rate;
    if (!isTransition && inputs.first != nullptr && arguments.duration)
        throw Failure(ExitCode::Usage,
                      "--duration is for transitions and pictures: --frames renders a part of a clip");

    const bool needsLength = isTransition || inputs.first == nullptr;
    const std::int64_t length = needsLength ? BlendFrames(arguments, inputs.timeline.rate) : 0;
    if (inputs.first == nullptr)
        inputs.first =
            std::make_unique<StillClip>(ReadPicture(arguments.input), inputs.timeline.rate, length);
    if (!isTransition) {
        inputs.timeline.first = inputs.first->Frames();
        return inputs;
    }
    if (inputs.second == nullptr)
        inputs.second =
            std::make_unique<StillClip>(ReadPicture(arguments.second), inputs.timeline.rate, length);
    inputs.timeline.blend = length;
    LayTransition(arguments, inputs);
    return inputs;
}

/// What the result's file says of itself: the first clip's format, or that of the moving one.
ClipFormat OutputFormat(const Inputs& inputs)
{
    ClipFormat format = inputs.first->Format();
    if (inputs.second != nullptr && format.pixelAspect.over == 0)
        format.pixelAspect = inputs.second->Format().pixelAspect;
    if (inputs.second != nullptr && format.colours.empty())
        format.colours = inputs.second->Format().colours;
    return format;
}

SoundPlan PlanSound(const RenderArguments& arguments, const Inputs& inputs)
{
    const ClipTimeline& timeline = inputs.timeline;
    const FrameRange& range = arguments.frames;
    const double rate = timeline.rate.Value();
    SoundPlan sound;
    if (!arguments.hasSound)
        return sound;
    if (inputs.first->HasSound())
        sound.first = arguments.input;
    if (inputs.second != nullptr && inputs.second->HasSound())
        sound.second = arguments.second;
    sound.isTransition = timeline.blend > 0;
    sound.firstSeconds = static_cast<double>(timeline.first.value_or(0)) / rate;
    sound.blendSeconds = static_cast<double>(timeline.blend) / rate;
    sound.isPart = !(range == FrameRange());
    sound.from = static_cast<double>(range.first) / rate;
    if (range.end)
        sound.seconds = static_cast<double>(*range.end - range.first) / rate;
    return sound;
}

/// The frames of the result that are wanted; nothing when only the end will tell.
std::optional<std::int64_t> WantedFrames(const FrameRange& range, std::optional<std::int64_t> all)
{
    if (!all)
        return range.end ? std::optional(*range.end - range.first) : std::nullopt;
    return std::max<std::int64_t>(0, std::min(range.end.value_or(*all), *all) - range.first);
}

/// Reads, renders and writes the frames of a clip.
class ClipWork final : public FrameWork {
public:
    ClipWork(const RenderArguments& arguments, const Inputs& inputs, const KnobTimeline& knobs,
             std::vector<Held<IVideoEffect>> effects, ClipWriter& writer)
        : m_arguments(arguments), m_inputs(inputs), m_knobs(knobs), m_effects(std::move(effects)),
          m_writer(writer), m_format(OutputFormat(inputs))
    {
        const std::int64_t first = arguments.frames.first;
        if (!inputs.timeline.first || inputs.timeline.blend == 0 || first < *inputs.timeline.first)
            inputs.first->Skip(first);
        if (inputs.second != nullptr)
            inputs.second->Skip(std::max<std::int64_t>(0, first - inputs.timeline.SecondStart()));
    }

    bool Read(FrameSlot& slot) override
    {
        const std::int64_t frame = FrameOf(slot);
        if (m_arguments.frames.end && frame >= *m_arguments.frames.end)
            return false;
        const Moment moment = m_inputs.timeline.At(frame);
        slot.first.clear();
        slot.second.clear();
        if (moment.hasFirst && !m_inputs.first->Read(slot.first)) {
            if (m_inputs.second != nullptr)
                EndsTooSoon(m_arguments.input);
            return false;
        }
        if (moment.hasSecond && !m_inputs.second->Read(slot.second)) {
            if (moment.hasFirst)
                EndsTooSoon(m_arguments.second);
            return false;
        }
        return true;
    }

    void Render(int worker, FrameSlot& slot) override
    {
        const Moment moment = m_inputs.timeline.At(FrameOf(slot));
        const bool isTransition = m_inputs.second != nullptr;
        if (isTransition && moment.hasFirst != moment.hasSecond) {
            slot.output.swap(moment.hasFirst ? slot.first : slot.second);
            return;
        }
        FrameSettings settings;
        settings.time = m_arguments.time + moment.seconds;
        settings.progress = m_arguments.progress.value_or(moment.progress);
        settings.knobs = m_knobs.At(settings.time);
        settings.pixelAspect = m_format.pixelAspect.Value();
        RenderFrame(*m_effects[static_cast<std::size_t>(worker)], m_format.width, m_format.height, slot.first,
                    isTransition ? &slot.second : nullptr, slot.output, settings);
    }

    void Write(const FrameSlot& slot) override { m_writer.Write(slot.output); }

private:
    std::int64_t FrameOf(const FrameSlot& slot) const { return m_arguments.frames.first + slot.number; }

    [[noreturn]] static void EndsTooSoon(const std::string& path)
    {
        throw Failure(ExitCode::Failed, path + " ends before the transition does");
    }

    const RenderArguments& m_arguments;
    const Inputs& m_inputs;
    const KnobTimeline& m_knobs;
    std::vector<Held<IVideoEffect>> m_effects;
    ClipWriter& m_writer;
    ClipFormat m_format;
};

/// Tells how far the work is: people at a terminal, or machines, once a second.
class Reporter {
public:
    Reporter(const RenderArguments& arguments, std::optional<std::int64_t> frames, std::ostream& out,
             std::ostream& errors)
        : m_arguments(arguments), m_frames(frames), m_out(out), m_errors(errors)
    {
    }
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;
    ~Reporter()
    {
        if (m_isLineOpen)
            m_errors << "\r\x1b[K" << std::flush;
    }

    void Tell(std::int64_t done)
    {
        const double seconds = Seconds();
        if (m_arguments.json && seconds >= m_nextLine) {
            nlohmann::ordered_json line;
            line["schema"] = kJsonSchema;
            line["done"] = done;
            line["frames"] = m_frames ? nlohmann::ordered_json(*m_frames) : nlohmann::ordered_json();
            m_out << line.dump() << std::endl;
            m_nextLine = std::floor(seconds) + 1.0;
        } else if (!m_arguments.json && m_isWatched) {
            m_errors << '\r' << ProgressText(done, m_frames, seconds) << "\x1b[K" << std::flush;
            m_isLineOpen = true;
        }
    }

    void TellEnd(const EffectFace& face, const ClipFormat& format, std::int64_t frames, int jobs)
    {
        if (!m_arguments.json)
            return;
        const double seconds = std::max(Seconds(), 1e-3);
        constexpr auto replace = nlohmann::ordered_json::error_handler_t::replace;
        nlohmann::ordered_json line;
        line["schema"] = kJsonSchema;
        line["effect"] = face.slug;
        line["output"] = m_arguments.output;
        line["width"] = format.width;
        line["height"] = format.height;
        line["rate"] = RatioText(format.rate);
        line["firstFrame"] = m_arguments.frames.first;
        line["frames"] = frames;
        line["jobs"] = jobs;
        line["seconds"] = std::round(seconds * 1000.0) / 1000.0;
        line["framesPerSecond"] = std::round(static_cast<double>(frames) / seconds * 100.0) / 100.0;
        m_out << line.dump(-1, ' ', false, replace) << std::endl;
    }

private:
    using Clock = std::chrono::steady_clock;

    double Seconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

    const RenderArguments& m_arguments;
    std::optional<std::int64_t> m_frames;
    std::ostream& m_out;
    std::ostream& m_errors;
    Clock::time_point m_start = Clock::now();
    double m_nextLine = 1.0;
    bool m_isWatched = platform::IsErrorTerminal();
    bool m_isLineOpen = false;
};

int JobsFor(const RenderArguments& arguments)
{
    constexpr int kMost = 64; // each holds frames
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    return arguments.jobs > 0 ? arguments.jobs : std::clamp(processors, 1, kMost);
}

} // namespace

void RunRenderClip(const RenderArguments& arguments, std::ostream& out, std::ostream& errors)
{
    // All that can be refused is refused before the work begins.
    CheckUse(arguments);
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::int32_t number = FindEffect(*library, arguments.effect);
    const EffectFace face = ReadFace(number, *MakeEffect(*library, number));
    const KnobTimeline knobs = ChosenKnobs(face, arguments);
    CheckPictureCount(face, arguments);

    const InterruptWatch watch;
    const Inputs inputs = OpenInputs(arguments);
    const std::optional<std::int64_t> wanted = WantedFrames(arguments.frames, inputs.timeline.Frames());
    const std::string noFrames = "there is no frame " + std::to_string(arguments.frames.first) + " to render";
    if (wanted && *wanted == 0)
        throw Failure(ExitCode::Failed, noFrames);
    const int jobs = JobsFor(arguments);
    std::vector<Held<IVideoEffect>> effects;
    effects.reserve(static_cast<std::size_t>(jobs));
    for (int job = 0; job < jobs; ++job)
        effects.push_back(MakeEffect(*library, number));

    const ClipFormat format = OutputFormat(inputs);
    const ClipTarget target = {arguments.output, arguments.overwrite, arguments.stream, arguments.encode};
    const std::unique_ptr<ClipWriter> writer = MakeClip(target, format, PlanSound(arguments, inputs));
    ClipWork work(arguments, inputs, knobs, std::move(effects), *writer);
    Reporter reporter(arguments, wanted, out, errors);
    const std::int64_t frames =
        RunFrames(work, jobs, [&reporter](std::int64_t done) { reporter.Tell(done); });
    if (frames == 0)
        throw Failure(ExitCode::Failed, noFrames);
    writer->Finish();
    reporter.TellEnd(face, format, frames, jobs);
}

} // namespace kelmora::host
