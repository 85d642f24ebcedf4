#include "platform/help_viewer.h"

namespace kelmora::platform {

void ShowHelp(void* /*owner*/, const char16_t* /*file*/, std::uint32_t /*topic*/)
{
    // There is no viewer that a system could be relied on to have.
}

} // namespace kelmora::platform
