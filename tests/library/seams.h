#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/dialogs.h"
#include "platform/messages.h"

namespace kelmora {

// This program has its own platform::ShowMessage, platform::ShowHelp and platform::AskForFile. They show nothing
// and note here what they were asked for.

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

struct ShownDialog {
    platform::FileDialogKind kind;
    void* owner;
    std::u16string path; ///< as it was before
    std::size_t capacity;
    std::u16string title;
    std::u16string filter; ///< with the zeros in it, up to the empty text
    std::u16string extension;
    std::uint32_t flags;
};

/// What the user does with a file dialog. The path is the full one.
struct DialogAnswer {
    bool confirms = false;
    std::u16string path;
    bool runsOutOfMemory = false;
};

/// In the order of the calls; a test clears what it wants to look at.
std::vector<ShownMessage>& ShownMessages();
std::vector<ShownHelp>& ShownHelps();
std::vector<ShownDialog>& ShownDialogs();

/// For every dialog, until a test sets another one.
DialogAnswer& NextDialogAnswer();

/// What the program takes for the window that the user works with.
void* TheForegroundWindow();

} // namespace kelmora
