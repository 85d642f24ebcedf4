#include "host/commands/gallery.h"

#include <algorithm>

#include "host/effect_run.h"
#include "host/gallery/page.h"
#include "host/library_file.h"
#include "host/path_text.h"
#include "host/pictures/picture_file.h"
#include "host/pictures/picture_shrink.h"

namespace kelmora::host {
namespace {

constexpr double kSeconds = 2.0; // how long a film along the time is

/// Renders the shots of a page.
class Studio {
public:
    Studio(const GalleryArguments& arguments, std::vector<Picture> pictures)
        : m_arguments(arguments), m_pictures(std::move(pictures))
    {
    }

    Film Untouched(std::size_t picture) const { return FilmOf({Small(m_pictures[picture])}); }

    std::vector<PageShot> Shots(IVideoEffect& effect, const EffectFace& face, const Preset& preset) const
    {
        FrameSettings settings;
        settings.knobs = preset.values;
        std::vector<PageShot> shots;
        if (face.pictures == 2) {
            shots.push_back(Transition(effect, settings));
            return shots;
        }
        // Films are large, and one shows how the picture moves.
        const std::size_t count = MovesByTime(effect, face) ? 1 : m_pictures.size();
        for (std::size_t i = 0; i < count; ++i)
            shots.push_back(Filter(effect, i, settings));
        return shots;
    }

private:
    const GalleryArguments& m_arguments;
    std::vector<Picture> m_pictures;

    Picture Small(const Picture& picture) const
    {
        return Shrink(picture, std::min(m_arguments.width, picture.width));
    }

    Film FilmOf(const std::vector<Picture>& frames) const { return MakeFilm(frames, m_arguments.quality); }

    double ShareOf(int step) const
    {
        return static_cast<double>(step) / static_cast<double>(m_arguments.steps - 1);
    }

    PageShot Transition(IVideoEffect& effect, FrameSettings settings) const
    {
        std::vector<Picture> frames;
        for (int step = 0; step < m_arguments.steps; ++step) {
            settings.progress = ShareOf(step);
            frames.push_back(Small(RenderPicture(effect, m_pictures[0], &m_pictures[1], settings)));
        }
        return {0, Along::Progress, FilmOf(frames)};
    }

    Picture FilteredAt(IVideoEffect& effect, std::size_t picture, FrameSettings settings,
                       double seconds) const
    {
        settings.time = seconds;
        return Small(RenderPicture(effect, m_pictures[picture], nullptr, settings));
    }

    /// Whether the effect with its defaults gives another picture at another time.
    bool MovesByTime(IVideoEffect& effect, const EffectFace& face) const
    {
        FrameSettings settings;
        settings.knobs = face.Defaults();
        return FilteredAt(effect, 0, settings, 0.0) != FilteredAt(effect, 0, settings, kSeconds / 2);
    }

    PageShot Filter(IVideoEffect& effect, std::size_t picture, const FrameSettings& settings) const
    {
        std::vector<Picture> frames = {FilteredAt(effect, picture, settings, 0.0)};
        if (FilteredAt(effect, picture, settings, kSeconds / 2) == frames.front())
            return {picture, Along::Nothing, FilmOf(frames)};
        for (int step = 1; step < m_arguments.steps; ++step)
            frames.push_back(FilteredAt(effect, picture, settings, kSeconds * ShareOf(step)));
        return {picture, Along::Time, FilmOf(frames)};
    }
};

PageEffect Show(const Studio& studio, IEffectLibrary& library, std::int32_t number)
{
    const Held<IVideoEffect> effect = MakeEffect(library, number);
    PageEffect result{ReadFace(number, *effect), {}};
    for (const Preset& preset : result.face.presets) {
        try {
            result.shots.push_back(studio.Shots(*effect, result.face, preset));
        } catch (const Failure& failure) {
            throw Failure(failure.Code(),
                          result.face.name + ", preset \"" + preset.name + "\": " + failure.what());
        }
    }
    return result;
}

/// What the films of these sizes can be made of is known before the work begins.
void CheckFilmSizes(const GalleryArguments& arguments, const std::vector<Picture>& pictures)
{
    for (const Picture& picture : pictures) {
        const std::int32_t width = std::min(arguments.width, picture.width);
        const std::int64_t rows = FilmPitch(ShrunkHeight(picture.width, picture.height, width));
        CheckPictureSize("a film.jpg", width, rows * arguments.steps);
    }
}

} // namespace

void RunGallery(const GalleryArguments& arguments, std::ostream& out)
{
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    CheckTarget(arguments.output, arguments.overwrite);
    std::vector<Picture> pictures;
    for (const std::string& path : arguments.pictures)
        pictures.push_back(ReadPicture(path));
    CheckFilmSizes(arguments, pictures);

    const Studio studio(arguments, std::move(pictures));
    Page page;
    const char* const name = library->GetName();
    page.library = name != nullptr ? name : "";
    page.seconds = kSeconds;
    for (std::size_t i = 0; i < arguments.pictures.size(); ++i)
        page.pictures.push_back({TextOf(PathOf(arguments.pictures[i]).stem()), studio.Untouched(i)});
    std::size_t presets = 0;
    for (const std::int32_t number : EffectNumbers(*library)) {
        page.effects.push_back(Show(studio, *library, number));
        presets += page.effects.back().shots.size();
    }
    const std::string html = PageHtml(page);
    WriteWhole(arguments.output, {html.begin(), html.end()}, arguments.overwrite);
    out << page.effects.size() << " effects with " << presets << " presets, " << html.size() / 1000
        << " kB\n";
}

} // namespace kelmora::host
