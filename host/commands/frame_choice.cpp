#include "host/commands/frame_choice.h"

#include "host/failure.h"
#include "host/knob_value.h"

namespace kelmora::host {

FrameSettings ChosenSettings(const EffectFace& face, const FrameArguments& arguments)
{
    FrameSettings settings;
    settings.knobs = arguments.preset.empty() ? face.Defaults() : PresetValues(face, arguments.preset);
    for (const std::string& setting : arguments.settings)
        Assign(face, setting, settings.knobs);
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
