#include "platform/dialogs.h"

#include <algorithm>
#include <span>
#include <string>

#include <sys/stat.h>

#include "platform/desktop_posix.h"
#include "platform/text.h"

namespace kelmora::platform {
namespace {

/// The texts of a dialog as its programs take them.
struct Texts {
    std::string title;
    std::string label;
    std::string pattern;
};

Texts TextsOf(const FileDialog& dialog)
{
    const std::u16string_view label = dialog.filter;
    return {NarrowText(dialog.title), NarrowText(label), NarrowText(dialog.filter + label.size() + 1)};
}

DesktopAnswer AskForPath(const FileDialog& dialog, const Texts& texts, const std::string& path)
{
    std::string label = texts.label;
    std::replace(label.begin(), label.end(), '|', '/'); // it ends zenity's label
    std::vector<std::string> zenity = {"--file-selection", "--title=" + texts.title,
                                       "--file-filter=" + label + " | " + texts.pattern};
    if (!path.empty())
        zenity.push_back("--filename=" + path);
    std::vector<std::string> kdialog = {"--title", texts.title};
    if (dialog.kind == FileDialogKind::Save) {
        zenity.push_back("--save");
        if (dialog.flags & OFN_OVERWRITEPROMPT)
            zenity.push_back("--confirm-overwrite");
        kdialog.push_back("--getsavefilename");
    } else {
        kdialog.push_back("--getopenfilename");
    }
    kdialog.push_back(path.empty() ? "." : path);
    kdialog.push_back(texts.label);
    return AskDesktop(zenity, kdialog);
}

/// Whether a file may be replaced that the dialog did not ask about.
bool AskToReplace(const Texts& texts, const std::string& path)
{
    const std::string question = path + " already exists.\nDo you want to replace it?";
    return AskDesktop(
               {"--question", "--no-markup", "--title=" + texts.title, "--text=" + ForZenity(question)},
               {"--title", texts.title, "--yesno", question})
        .confirmed;
}

bool IsThere(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0;
}

bool HasExtension(const std::string& path)
{
    return path.find('.', path.rfind('/') + 1) != path.npos; // without a folder: npos + 1 is 0
}

/// Stores the path, zero-ended; false when it is too long.
bool Store(const std::string& path, const FileDialog& dialog)
{
    const std::span<char16_t> room(dialog.path, dialog.capacity - 1);
    const Converted wide = NarrowToUtf16(path, {});
    if (wide.length > room.size())
        return false;
    if (wide.length > 0)
        NarrowToUtf16(path, room);
    dialog.path[wide.length] = u'\0';
    return true;
}

} // namespace

bool AskForFile(const FileDialog& dialog)
{
    const Texts texts = TextsOf(dialog);
    std::string path = NarrowText(dialog.path);
    for (;;) {
        DesktopAnswer answer = AskForPath(dialog, texts, path);
        if (!answer.confirmed)
            return false;
        path = std::move(answer.output);
        if (dialog.kind == FileDialogKind::Open || path.empty() || HasExtension(path))
            return Store(path, dialog);
        path += '.' + NarrowText(dialog.defaultExtension);
        if (!(dialog.flags & OFN_OVERWRITEPROMPT) || !IsThere(path) || AskToReplace(texts, path))
            return Store(path, dialog);
    }
}

} // namespace kelmora::platform
