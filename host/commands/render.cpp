#include "host/commands/render.h"

#include <optional>

#include "host/effect_run.h"
#include "host/knob_value.h"
#include "host/library_file.h"
#include "host/pictures/picture_file.h"

namespace kelmora::host {
namespace {

std::vector<ParamValue> KnobValues(const EffectFace& face, const RenderArguments& arguments)
{
    std::vector<ParamValue> values =
        arguments.preset.empty() ? face.Defaults() : PresetValues(face, arguments.preset);
    for (const std::string& setting : arguments.settings)
        Assign(face, setting, values);
    return values;
}

} // namespace

void RunRender(const RenderArguments& arguments)
{
    // All that can be refused is refused before the work begins.
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::int32_t number = FindEffect(*library, arguments.effect);
    const Held<IVideoEffect> effect = MakeEffect(*library, number);
    const EffectFace face = ReadFace(number, *effect);
    FrameSettings settings;
    settings.knobs = KnobValues(face, arguments);
    settings.format = arguments.format;
    settings.progress = arguments.progress;
    settings.time = arguments.time;
    if (face.pictures == 2 && arguments.second.empty())
        throw Failure(ExitCode::Usage,
                      "\"" + face.name + "\" blends two pictures: give the second one with --to");
    if (face.pictures == 1 && !arguments.second.empty())
        throw Failure(ExitCode::Usage, "\"" + face.name + "\" takes one picture: leave out --to");
    CheckPictureTarget(arguments.output, arguments.overwrite);

    const Picture first = ReadPicture(arguments.input);
    std::optional<Picture> second;
    if (!arguments.second.empty())
        second = ReadPicture(arguments.second);
    const Picture result = RenderPicture(*effect, first, second ? &*second : nullptr, settings);
    WritePicture(arguments.output, result, arguments.overwrite, arguments.quality);
}

} // namespace kelmora::host
