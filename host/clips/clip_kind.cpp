#include "host/clips/clip_kind.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>

#include "host/clips/ffmpeg_reader.h"
#include "host/clips/pam.h"
#include "host/clips/y4m.h"
#include "host/failure.h"
#include "host/names.h"
#include "host/path_text.h"

namespace kelmora::host {

ClipKind KindOfClip(const std::string& path)
{
    constexpr std::array<std::string_view, 5> kPictures = {".png", ".jpg", ".jpeg", ".bmp", ".tga"};
    if (path == "-")
        return ClipKind::Pipe;
    const std::string ending = Slug(TextOf(PathOf(path).extension()));
    if (std::find(kPictures.begin(), kPictures.end(), ending) != kPictures.end())
        return ClipKind::Picture;
    if (ending == ".y4m")
        return ClipKind::Y4m;
    if (ending == ".pam")
        return ClipKind::Pam;
    return ending.empty() ? ClipKind::Nothing : ClipKind::Film;
}

std::unique_ptr<ClipReader> OpenClip(const std::string& path, const Ratio& rate)
{
    std::error_code ignored;
    if (path != "-" && std::filesystem::is_directory(PathOf(path), ignored))
        throw Failure(ExitCode::Failed, "cannot read " + path + ": it is a folder");
    std::unique_ptr<ByteSource> source = OpenSource(path);
    const std::string mark = source->Ahead(std::string_view(kY4mMark).size());
    const std::string name = path == "-" ? "the standard input" : path;
    if (mark == kY4mMark)
        return std::make_unique<Y4mReader>(name, std::move(source));
    if (mark.starts_with(std::string(kPamMark) + "\n"))
        return std::make_unique<PamReader>(name, std::move(source), rate);
    if (mark.empty())
        throw Failure(ExitCode::Failed, "cannot read " + name + ": it is empty");
    if (path == "-")
        throw Failure(ExitCode::Failed, "cannot read " + name + ": it is neither Y4M nor PAM");
    return std::make_unique<FfmpegReader>(path);
}

std::unique_ptr<ClipWriter> MakeClip(const ClipTarget& target, const ClipFormat& format,
                                     const SoundPlan& sound)
{
    const ClipKind named = KindOfClip(target.path);
    const ClipKind kind = named == ClipKind::Pipe ? target.pipe : named;
    if (kind == ClipKind::Y4m)
        return std::make_unique<Y4mWriter>(format, OpenSink(target.path, target.overwrite));
    if (kind == ClipKind::Pam)
        return std::make_unique<PamWriter>(format, OpenSink(target.path, target.overwrite));
    return std::make_unique<FfmpegWriter>(target.path, target.overwrite, format, sound, target.encode);
}

} // namespace kelmora::host
