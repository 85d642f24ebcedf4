#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kelmora {

/// Bytes of one page of memory.
std::size_t PageBytes();

/// A stretch of address space in which nothing may be touched but what Open has opened. A stray read or
/// write of one byte ends the program at the instruction that does it, with a line that says where. (Under a
/// sanitizer the line is the sanitizer's.)
///
/// Offsets and sizes given to the members are multiples of PageBytes().
class GuardPages {
public:
    /// Reserves `bytes`, rounded up to whole pages. Ends the program when the system has no room.
    explicit GuardPages(std::size_t bytes);
    ~GuardPages();

    GuardPages(const GuardPages&) = delete;
    GuardPages& operator=(const GuardPages&) = delete;

    std::uint8_t* Base() const { return m_base; }

    /// What a report calls this memory.
    void SetName(std::string name) { m_name = std::move(name); }

    /// Makes pages readable and writable. They start as zeros.
    void Open(std::size_t offset, std::size_t bytes);

    /// Writes to the standard error what was touched at `address`, in which test, and where that lies from the
    /// open pages. False when the address belongs to no GuardPages. The handler of faults calls it.
    static bool Report(const void* address);

    /// Open pages: readable only, or writable again.
    void SetReadOnly(std::size_t offset, std::size_t bytes, bool readOnly);

private:
    struct Stretch {
        std::size_t first;
        std::size_t end;
    };

    void Enter();
    void Leave();

    std::uint8_t* m_base = nullptr;
    std::size_t m_bytes = 0;
    std::string m_name = "memory";
    std::vector<Stretch> m_open;
    GuardPages* m_next = nullptr;
};

} // namespace kelmora
