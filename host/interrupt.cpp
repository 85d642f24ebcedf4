#include "host/interrupt.h"

#include <atomic>
#include <csignal>

#include "host/failure.h"

namespace kelmora::host {
namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free); // or a signal must not touch it

extern "C" void NoteInterrupt(int number)
{
    interrupted = true;
    std::signal(number, SIG_DFL);
}

} // namespace

InterruptWatch::InterruptWatch()
{
    interrupted = false;
    m_beforeInterrupt = std::signal(SIGINT, NoteInterrupt);
    m_beforeEnd = std::signal(SIGTERM, NoteInterrupt);
    // A program that was started in the background of a script is not meant.
    if (m_beforeInterrupt == SIG_IGN)
        std::signal(SIGINT, SIG_IGN);
}

InterruptWatch::~InterruptWatch()
{
    std::signal(SIGINT, m_beforeInterrupt != SIG_ERR ? m_beforeInterrupt : SIG_DFL);
    std::signal(SIGTERM, m_beforeEnd != SIG_ERR ? m_beforeEnd : SIG_DFL);
    interrupted = false;
}

bool IsInterrupted()
{
    return interrupted;
}

void CheckInterrupt()
{
    if (interrupted)
        throw Failure(ExitCode::Interrupted, "stopped");
}

} // namespace kelmora::host
