// A program for the tests of platform/process: does what its first argument says.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace {

/// Leaves a program running that holds this one's streams for some seconds.
void LeaveBehind(const char* program)
{
#ifdef _WIN32
    ::_spawnl(_P_NOWAIT, program, "probe", "linger", nullptr);
#else
    if (::fork() == 0)
        ::execl(program, program, "linger", nullptr);
#endif
}

} // namespace

int main(int argc, char** argv)
{
    const std::string task = argc > 1 ? argv[1] : "";
    if (task == "arguments") {
        for (int i = 2; i < argc; ++i)
            std::cout << "[" << argv[i] << "]";
        return 0;
    }
    if (task == "code" && argc > 2)
        return std::atoi(argv[2]);
    if (task == "variable" && argc > 2) {
        const char* const value = std::getenv(argv[2]);
        std::cout << (value != nullptr ? value : "none");
        return 0;
    }
    if (task == "input") {
        std::cout << (std::cin.get() == std::char_traits<char>::eof() ? "empty" : "something");
        return 0;
    }
    if (task == "both") {
        std::cout << "to output";
        std::cerr << "to errors";
        return 0;
    }
    if (task == "echo") {
        std::cerr << "echoing";
        for (char letter = 0; std::cin.get(letter);)
            std::cout << letter;
        return 7;
    }
    if (task == "count") { // what it was given, as its exit code
        int letters = 0;
        for (char letter = 0; std::cin.get(letter);)
            ++letters;
        return letters % 100;
    }
    if (task == "flood") {
        const std::string line(1000, 'x');
        for (int i = 0; i < 3000; ++i) {
            std::cout << line;
            std::cerr << line;
        }
        return 0;
    }
    if (task == "leave") {
        LeaveBehind(argv[0]);
        std::cout << "to output" << std::flush;
        std::cerr << "to errors";
        return 3;
    }
    if (task == "linger") {
        std::this_thread::sleep_for(std::chrono::seconds(20));
        return 0;
    }
    if (task == "crash") {
        volatile std::uintptr_t nowhere = 8;
        *reinterpret_cast<volatile int*>(nowhere) = 1;
    }
    if (task == "hang") {
        std::cout << "hanging" << std::flush;
        std::this_thread::sleep_for(std::chrono::minutes(5));
    }
    return 99;
}
