#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/messages.h"

namespace kelmora {

// This program has its own platform::ShowMessage and platform::ShowHelp. They show nothing and note here what
// they were asked for.

struct ShownMessage {
    void* owner;
    std::u16string text;
    std::u16string title;
    platform::MessageKind kind;
};

struct ShownHelp {
    void* owner;
    std::u16string file;
    std::uint32_t topic;
};

/// In the order of the calls; a test clears what it wants to look at.
std::vector<ShownMessage>& ShownMessages();
std::vector<ShownHelp>& ShownHelps();

} // namespace kelmora
