#include "platform/desktop_posix.h"

#include <chrono>
#include <cstdlib>

#include "platform/process.h"
#include "platform/text.h"

namespace kelmora::platform {
namespace {

// A user may go to lunch before answering.
constexpr std::chrono::hours kPatience(24 * 365);

bool IsSet(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool HasScreen()
{
    return IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY");
}

/// Runs `program`; false when it is not there.
bool Run(const char* program, const std::vector<std::string>& arguments, DesktopAnswer& answer)
{
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    // Texts and paths are UTF-8 whatever the host's locale is.
    ProcessResult result = RunProcess(words, kPatience, {"CHARSET=UTF-8", "G_FILENAME_ENCODING=UTF-8"});
    if (result.end == ProcessEnd::NotStarted)
        return false;
    // Where the host has made the exit code unknowable the answer tells: a dialog that is cancelled prints none.
    const bool agreed = result.exitCode == 0 || (result.exitCode == kExitCodeLost && !result.output.empty());
    answer.confirmed = result.end == ProcessEnd::Exited && agreed;
    answer.output = std::move(result.output);
    // A path may end with a line feed of its own; only the last one is the program's.
    if (answer.output.ends_with('\n'))
        answer.output.pop_back();
    return true;
}

} // namespace

DesktopAnswer AskDesktop(const std::vector<std::string>& zenity, const std::vector<std::string>& kdialog)
{
    DesktopAnswer answer;
    if (HasScreen() && !Run("zenity", zenity, answer))
        Run("kdialog", kdialog, answer);
    return answer;
}

std::string ForZenity(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string NarrowText(std::u16string_view text)
{
    std::string narrow(Utf16ToNarrow(text, {}).length, '\0');
    if (!narrow.empty())
        Utf16ToNarrow(text, narrow);
    return narrow;
}

} // namespace kelmora::platform
