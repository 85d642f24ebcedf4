#include "tests/support/guard_pages.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <sys/mman.h>
#include <unistd.h>
#endif

// A sanitizer reports faults itself, and shows the calls that led there.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KELMORA_SANITIZER_REPORTS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KELMORA_SANITIZER_REPORTS 1
#endif
#endif

namespace kelmora {
namespace {

[[noreturn]] void GiveUp(const char* what, std::size_t bytes)
{
    std::fprintf(stderr, "guard pages: %s %lu bytes failed\n", what, static_cast<unsigned long>(bytes));
    std::abort();
}

std::mutex g_mutex;
GuardPages* g_first = nullptr;

#ifdef KELMORA_SANITIZER_REPORTS

void InstallHandler() {}

#elif defined(_WIN32)

LONG CALLBACK OnException(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2)
        GuardPages::Report(reinterpret_cast<const void*>(record.ExceptionInformation[1]));
    return EXCEPTION_CONTINUE_SEARCH;
}

void InstallHandler()
{
    AddVectoredExceptionHandler(1, OnException);
}

#else

void OnFault(int signal, siginfo_t* info, void*)
{
    GuardPages::Report(info->si_addr);
    // The instruction runs again on return, this time with the system's own answer.
    std::signal(signal, SIG_DFL);
}

void InstallHandler()
{
    struct sigaction action = {};
    action.sa_sigaction = OnFault;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, nullptr);
    sigaction(SIGBUS, &action, nullptr);
}

#endif

} // namespace

// Runs in a program that is about to end: no locks, no memory taken.
bool GuardPages::Report(const void* address)
{
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    for (const GuardPages* pages = g_first; pages; pages = pages->m_next) {
        const auto base = reinterpret_cast<std::uintptr_t>(pages->m_base);
        if (place < base || place >= base + pages->m_bytes)
            continue;
        const std::size_t offset = place - base;
        const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
        std::fprintf(stderr, "guard page touched in %s.%s: %s", test ? test->test_suite_name() : "no test",
                     test ? test->name() : "", pages->m_name.c_str());
        for (std::size_t i = 0; i < pages->m_open.size(); ++i) {
            const Stretch& stretch = pages->m_open[i];
            const bool isLast = i + 1 == pages->m_open.size();
            if (offset < stretch.first) {
                std::fprintf(stderr, ", %lu bytes before stretch %lu",
                             static_cast<unsigned long>(stretch.first - offset),
                             static_cast<unsigned long>(i));
                break;
            }
            if (offset < stretch.end) {
                std::fprintf(stderr, ", a write into stretch %lu, which may only be read",
                             static_cast<unsigned long>(i));
                break;
            }
            if (isLast || offset < (stretch.end + pages->m_open[i + 1].first) / 2) {
                std::fprintf(stderr, ", byte %lu past the end of stretch %lu",
                             static_cast<unsigned long>(offset - stretch.end), static_cast<unsigned long>(i));
                break;
            }
        }
        std::fprintf(stderr, "\n");
        std::fflush(stderr);
        return true;
    }
    return false;
}

void GuardPages::Enter()
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    static const bool installed = (InstallHandler(), true);
    static_cast<void>(installed);
    m_next = g_first;
    g_first = this;
}

void GuardPages::Leave()
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    GuardPages** link = &g_first;
    while (*link != this)
        link = &(*link)->m_next;
    *link = m_next;
}

#ifdef _WIN32

std::size_t PageBytes()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}

GuardPages::GuardPages(std::size_t bytes) : m_bytes((bytes + PageBytes() - 1) / PageBytes() * PageBytes())
{
    m_base = static_cast<std::uint8_t*>(VirtualAlloc(nullptr, m_bytes, MEM_RESERVE, PAGE_NOACCESS));
    if (!m_base)
        GiveUp("reserving", m_bytes);
    Enter();
}

GuardPages::~GuardPages()
{
    Leave();
    VirtualFree(m_base, 0, MEM_RELEASE);
}

void GuardPages::Open(std::size_t offset, std::size_t bytes)
{
    if (!VirtualAlloc(m_base + offset, bytes, MEM_COMMIT, PAGE_READWRITE))
        GiveUp("opening", bytes);
    m_open.push_back({offset, offset + bytes});
}

void GuardPages::SetReadOnly(std::size_t offset, std::size_t bytes, bool readOnly)
{
    DWORD before = 0;
    if (!VirtualProtect(m_base + offset, bytes, readOnly ? PAGE_READONLY : PAGE_READWRITE, &before))
        GiveUp("protecting", bytes);
}

#else

std::size_t PageBytes()
{
    static const std::size_t bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

GuardPages::GuardPages(std::size_t bytes) : m_bytes((bytes + PageBytes() - 1) / PageBytes() * PageBytes())
{
    void* const base = mmap(nullptr, m_bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED)
        GiveUp("reserving", m_bytes);
    m_base = static_cast<std::uint8_t*>(base);
    Enter();
}

GuardPages::~GuardPages()
{
    Leave();
    munmap(m_base, m_bytes);
}

void GuardPages::Open(std::size_t offset, std::size_t bytes)
{
    if (mprotect(m_base + offset, bytes, PROT_READ | PROT_WRITE) != 0)
        GiveUp("opening", bytes);
    m_open.push_back({offset, offset + bytes});
}

void GuardPages::SetReadOnly(std::size_t offset, std::size_t bytes, bool readOnly)
{
    if (mprotect(m_base + offset, bytes, readOnly ? PROT_READ : PROT_READ | PROT_WRITE) != 0)
        GiveUp("protecting", bytes);
}

#endif

} // namespace kelmora
