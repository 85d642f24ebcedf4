#include "tests/library/seams.h"

#include <algorithm>
#include <new>

#include "platform/help_viewer.h"

namespace kelmora {

std::vector<ShownMessage>& ShownMessages()
{
    static std::vector<ShownMessage> messages;
    return messages;
}

std::vector<ShownHelp>& ShownHelps()
{
    static std::vector<ShownHelp> helps;
    return helps;
}

std::vector<ShownDialog>& ShownDialogs()
{
    static std::vector<ShownDialog> dialogs;
    return dialogs;
}

DialogAnswer& NextDialogAnswer()
{
    static DialogAnswer answer;
    return answer;
}

void* TheForegroundWindow()
{
    static char window;
    return &window;
}

namespace platform {

void ShowMessage(void* owner, const char16_t* text, const char16_t* title, MessageKind kind)
{
    ShownMessages().push_back({owner, text, title, kind});
}

void* ForegroundWindow()
{
    return TheForegroundWindow();
}

bool AskForFile(const FileDialog& dialog)
{
    const char16_t* end = dialog.filter;
    while (*end)
        end += std::u16string_view(end).size() + 1;
    ShownDialogs().push_back({dialog.kind, dialog.owner, dialog.path, dialog.capacity, dialog.title,
                              std::u16string(dialog.filter, end), dialog.defaultExtension, dialog.flags});
    const DialogAnswer& answer = NextDialogAnswer();
    if (answer.runsOutOfMemory)
        throw std::bad_alloc();
    if (answer.confirms && answer.path.size() < dialog.capacity)
        dialog.path[answer.path.copy(dialog.path, answer.path.size())] = u'\0';
    return answer.confirms;
}

void ShowHelp(void* owner, const char16_t* file, std::uint32_t topic)
{
    ShownHelps().push_back({owner, file, topic});
}

} // namespace platform
} // namespace kelmora
