#include "platform/standard_streams.h"

#include <algorithm>

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace kelmora::platform {
namespace {

constexpr std::size_t kMost = std::size_t{1} << 20;

} // namespace

std::size_t ReadStandardInput(void* bytes, std::size_t count, StopQuestion stop)
{
    auto* const to = static_cast<char*>(bytes);
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    std::size_t done = 0;
    DWORD got = 0;
    while (done < count && !stop()
           && ::ReadFile(input, to + done, static_cast<DWORD>(std::min(count - done, kMost)), &got, nullptr)
               != 0
           && got > 0)
        done += got;
    return done;
}

bool WriteStandardOutput(const void* bytes, std::size_t count)
{
    const auto* const from = static_cast<const char*>(bytes);
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    std::size_t done = 0;
    DWORD put = 0;
    while (
        done < count
        && ::WriteFile(output, from + done, static_cast<DWORD>(std::min(count - done, kMost)), &put, nullptr)
            != 0
        && put > 0)
        done += put;
    return done == count;
}

bool IsErrorTerminal()
{
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace kelmora::platform
