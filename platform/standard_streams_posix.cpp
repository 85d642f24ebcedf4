#include "platform/standard_streams.h"

#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace kelmora::platform {

std::size_t ReadStandardInput(void* bytes, std::size_t count, StopQuestion stop)
{
    constexpr int kMilliseconds = 100;
    auto* const to = static_cast<char*>(bytes);
    std::size_t done = 0;
    while (done < count && !stop()) {
        pollfd waiting = {STDIN_FILENO, POLLIN, 0};
        if (::poll(&waiting, 1, kMilliseconds) <= 0)
            continue;
        const ssize_t got = ::read(STDIN_FILENO, to + done, count - done);
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (got == 0 || (errno != EINTR && errno != EAGAIN))
            break;
    }
    return done;
}

bool WriteStandardOutput(const void* bytes, std::size_t count)
{
    const auto* const from = static_cast<const char*>(bytes);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t put = ::write(STDOUT_FILENO, from + done, count - done);
        if (put > 0) {
            done += static_cast<std::size_t>(put);
        } else if (put < 0 && errno == EAGAIN) { // whoever gave us the stream does not let it wait
            pollfd waiting = {STDOUT_FILENO, POLLOUT, 0};
            ::poll(&waiting, 1, -1);
        } else if (put == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool IsErrorTerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}

} // namespace kelmora::platform
