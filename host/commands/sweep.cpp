#include "host/commands/sweep.h"

#include <algorithm>

#include "host/commands/frame_choice.h"
#include "host/library_file.h"
#include "host/pictures/contact_sheet.h"
#include "host/pictures/picture_file.h"
#include "host/pictures/picture_shrink.h"

namespace kelmora::host {
namespace {

SheetGrid GridFor(const Picture& first, const SweepArguments& arguments)
{
    SheetGrid grid;
    grid.frameWidth = arguments.width > 0 ? std::min(arguments.width, first.width) : first.width;
    grid.frameHeight = ShrunkHeight(first.width, first.height, grid.frameWidth);
    grid.frames = arguments.steps;
    grid.columns = arguments.columns > 0 ? std::min(arguments.columns, arguments.steps) : arguments.steps;
    return grid;
}

} // namespace

void RunSweep(const SweepArguments& arguments)
{
    // All that can be refused is refused before the work begins.
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::int32_t number = FindEffect(*library, arguments.effect);
    const Held<IVideoEffect> effect = MakeEffect(*library, number);
    const EffectFace face = ReadFace(number, *effect);
    FrameSettings settings = ChosenSettings(face, arguments);
    if (face.pictures == 1)
        throw Failure(ExitCode::Usage,
                      "\"" + face.name
                          + "\" takes one picture and leads nowhere: \"kelmora render\" renders it");
    CheckPictureCount(face, arguments);
    CheckPictureTarget(arguments.output, arguments.overwrite);

    const Picture first = ReadPicture(arguments.input);
    const Picture second = ReadPicture(arguments.second);
    const SheetGrid grid = GridFor(first, arguments);
    CheckPictureSize(arguments.output, grid.Width(), grid.Height());
    Picture sheet = EmptySheet(grid);
    for (int frame = 0; frame < grid.frames; ++frame) {
        settings.progress = static_cast<double>(frame) / static_cast<double>(grid.frames - 1);
        const Picture picture = RenderPicture(*effect, first, &second, settings);
        PlaceFrame(grid, frame, Shrink(picture, grid.frameWidth), sheet);
    }
    WritePicture(arguments.output, sheet, arguments.overwrite, arguments.quality);
}

} // namespace kelmora::host
