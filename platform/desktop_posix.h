#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelmora::platform {

// Windows of the user's desktop, shown by the desktop's own programs: zenity, or where that is not installed
// kdialog. Texts are UTF-8 and reach the programs as they are: no shell sees them.

/// How a desktop program came to its end.
struct DesktopAnswer {
    bool confirmed = false; ///< the user said yes
    std::string output;     ///< the path that was chosen, byte by byte
};

/// Shows a window and waits for the answer, as long as it takes. Not confirmed when there is no screen or none of
/// the programs. Throws std::bad_alloc.
///
/// zenity, kdialog  the arguments for each, without the program's name
DesktopAnswer AskDesktop(const std::vector<std::string>& zenity, const std::vector<std::string>& kdialog);

/// The form of a text that zenity shows as that text: it takes a backslash for the start of an escape.
std::string ForZenity(std::string_view text);

/// UTF-16 as the narrow text of the system. Throws std::bad_alloc.
std::string NarrowText(std::u16string_view text);

} // namespace kelmora::platform
