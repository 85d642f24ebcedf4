#pragma once

namespace kelmora::host {

/// Turns a Ctrl-C, or a request to end, into an answer of IsInterrupted for as long as it lives, so that work
/// can be left in order. A second Ctrl-C ends the program at once. One at a time.
class InterruptWatch {
public:
    InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    ~InterruptWatch();

private:
    using Handler = void (*)(int);

    Handler m_beforeInterrupt;
    Handler m_beforeEnd;
};

/// Whether a Ctrl-C came while the watch of this moment lives. For any thread.
bool IsInterrupted();

/// Throws Failure when IsInterrupted.
void CheckInterrupt();

} // namespace kelmora::host
