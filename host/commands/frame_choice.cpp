#include "host/commands/frame_choice.h"

#include "host/failure.h"
#include "host/knob_value.h"
#include "host/preset_file_choice.h"

namespace kelmora::host {

namespace {

std::vector<ParamValue> ValuesBefore(const EffectFace& face, const FrameArguments& arguments)
{
    if (!arguments.presetFile.empty())
        return PresetFileValues(face, arguments.presetFile);
    return arguments.preset.empty() ? face.Defaults() : PresetValues(face, arguments.preset);
}

} // namespace

KnobTimeline ChosenKnobs(const EffectFace& face, const FrameArguments& arguments)
{
    KnobTimeline knobs(ValuesBefore(face, arguments));
    for (const std::string& setting : arguments.settings)
        knobs.Set(face, setting);
    return knobs;
}

FrameSettings ChosenSettings(const EffectFace& face, const FrameArguments& arguments)
{
    FrameSettings settings;
    settings.knobs = ChosenKnobs(face, arguments).At(arguments.time);
    settings.format = arguments.format;
    settings.time = arguments.time;
    return settings;
}

void CheckPictureCount(const EffectFace& face, const FrameArguments& arguments)
{
    if (face.pictures == 2 && arguments.second.empty())
        throw Failure(ExitCode::Usage,
                      "\"" + face.name + "\" blends two pictures: give the second one with --to");
    if (face.pictures == 1 && !arguments.second.empty())
        throw Failure(ExitCode::Usage, "\"" + face.name + "\" takes one picture: leave out --to");
}

} // namespace kelmora::host
