#pragma once

namespace kelmora::platform {

/// What a message says by its icon.
enum class MessageKind {
    Plain,       ///< no icon
    Exclamation, ///< a warning
};

/// Shows a message with an OK button and waits until the user has answered. Does nothing where there is no
/// way to show one.
///
/// owner        window that waits behind the message, or null
/// text, title  zero-ended, may be empty
void ShowMessage(void* owner, const char16_t* text, const char16_t* title, MessageKind kind);

/// The window that the user works with, as owner of a message; null where that is not known.
void* ForegroundWindow();

} // namespace kelmora::platform
