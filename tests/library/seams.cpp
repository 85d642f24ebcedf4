#include "tests/library/seams.h"

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

namespace platform {

void ShowMessage(void* owner, const char16_t* text, const char16_t* title, MessageKind kind)
{
    ShownMessages().push_back({owner, text, title, kind});
}

void* ForegroundWindow()
{
    return nullptr;
}

void ShowHelp(void* owner, const char16_t* file, std::uint32_t topic)
{
    ShownHelps().push_back({owner, file, topic});
}

} // namespace platform
} // namespace kelmora
