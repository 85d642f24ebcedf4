#include "platform/messages.h"

namespace kelmora::platform {

void ShowMessage(void* /*owner*/, const char16_t* /*text*/, const char16_t* /*title*/, MessageKind /*kind*/)
{
}

void* ForegroundWindow()
{
    return nullptr;
}

} // namespace kelmora::platform
