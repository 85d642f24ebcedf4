#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora::platform {

// What a file dialog is to do. A Windows header defines these as macros of the same value.
#ifndef OFN_OVERWRITEPROMPT
inline constexpr std::uint32_t OFN_OVERWRITEPROMPT = 0x00000002; ///< ask before a file is replaced
#endif
#ifndef OFN_PATHMUSTEXIST
inline constexpr std::uint32_t OFN_PATHMUSTEXIST = 0x00000800; ///< take no file in a folder that is not there
#endif
#ifndef OFN_FILEMUSTEXIST
inline constexpr std::uint32_t OFN_FILEMUSTEXIST = 0x00001000; ///< take no file that is not there
#endif
#ifndef OFN_EXPLORER
inline constexpr std::uint32_t OFN_EXPLORER = 0x00080000; ///< the look of the system's own file windows
#endif

enum class FileDialogKind {
    Open,
    Save,
};

/// What a file dialog shows, and where its answer goes. All texts are zero-ended.
struct FileDialog {
    FileDialogKind kind = FileDialogKind::Open;
    void* owner = nullptr;    ///< window that waits behind the dialog, or null
    char16_t* path = nullptr; ///< what the file's name is at first; gets its full path
    std::size_t capacity = 0; ///< characters of `path`, its end mark included
    const char16_t* title = nullptr;
    const char16_t* filter = nullptr;           ///< a label, a pattern such as "*.txt", and an empty text
    const char16_t* defaultExtension = nullptr; ///< without a dot; for a name that is typed without one
    std::uint32_t flags = 0;                    ///< OFN_ flags
};

/// Asks the user for a file and waits for the answer. False when there is none: the dialog was cancelled, cannot be
/// shown, or the path is longer than `capacity`; nothing useful is in `path` then. Throws std::bad_alloc.
///
/// Away from Windows it is the desktop's own dialog, by the program zenity or else kdialog: `owner` is not used,
/// of the flags OFN_OVERWRITEPROMPT alone, and a file to open has to be there whatever they say.
bool AskForFile(const FileDialog& dialog);

} // namespace kelmora::platform
