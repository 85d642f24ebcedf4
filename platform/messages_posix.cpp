#include "platform/messages.h"

#include "platform/desktop_posix.h"

namespace kelmora::platform {

void ShowMessage(void* /*owner*/, const char16_t* text, const char16_t* title, MessageKind kind)
try {
    const bool warns = kind == MessageKind::Exclamation;
    const std::string words = NarrowText(text);
    const std::string name = NarrowText(title);
    AskDesktop(
        {warns ? "--warning" : "--info", "--no-markup", "--title=" + name, "--text=" + ForZenity(words)},
        {"--title", name, warns ? "--sorry" : "--msgbox", words});
} catch (...) { // no memory: nothing to show
}

void* ForegroundWindow()
{
    return nullptr;
}

} // namespace kelmora::platform
