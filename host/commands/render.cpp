#include "host/commands/render.h"

#include <optional>

#include "host/commands/frame_choice.h"
#include "host/commands/render_clip.h"
#include "host/library_file.h"
#include "host/pictures/picture_file.h"

namespace kelmora::host {

namespace {

/// Throws Failure when the arguments speak of a clip, though a picture is to be written.
void CheckPicturesOnly(const RenderArguments& arguments)
{
    for (const std::string& path : {arguments.input, arguments.second}) {
        const ClipKind kind = KindOfClip(path);
        if (!path.empty() && kind != ClipKind::Picture && kind != ClipKind::Nothing)
            throw Failure(ExitCode::Usage,
                          path + " is a clip and " + arguments.output
                              + " a picture: end the output's name as a clip's, in .mp4, .mkv, .y4m or .pam");
    }
}

} // namespace

void RunRender(const RenderArguments& arguments, std::ostream& out, std::ostream& errors)
{
    if (KindOfClip(arguments.output) != ClipKind::Picture) {
        RunRenderClip(arguments, out, errors);
        return;
    }
    CheckPicturesOnly(arguments);

    // All that can be refused is refused before the work begins.
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::int32_t number = FindEffect(*library, arguments.effect);
    const Held<IVideoEffect> effect = MakeEffect(*library, number);
    const EffectFace face = ReadFace(number, *effect);
    FrameSettings settings = ChosenSettings(face, arguments);
    settings.progress = arguments.progress.value_or(0.5);
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
