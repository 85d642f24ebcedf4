#include "host/commands/render.h"

#include <optional>

#include "host/commands/frame_choice.h"
#include "host/library_file.h"
#include "host/pictures/picture_file.h"

namespace kelmora::host {

void RunRender(const RenderArguments& arguments)
{
    // All that can be refused is refused before the work begins.
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::int32_t number = FindEffect(*library, arguments.effect);
    const Held<IVideoEffect> effect = MakeEffect(*library, number);
    const EffectFace face = ReadFace(number, *effect);
    FrameSettings settings = ChosenSettings(face, arguments);
    settings.progress = arguments.progress;
    CheckPictureCount(face, arguments);
    CheckPictureTarget(arguments.output, arguments.overwrite);

    const Picture first = ReadPicture(arguments.input);
    std::optional<Picture> second;
    if (!arguments.second.empty())
        second = ReadPicture(arguments.second);
    const Picture result = RenderPicture(*effect, first, second ? &*second : nullptr, settings);
    WritePicture(arguments.output, result, arguments.overwrite, arguments.quality);
}

} // namespace kelmora::host
