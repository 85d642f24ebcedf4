#pragma once

#include <cstdint>
#include <limits>

namespace kelmora {

/// Counts, and where asked refuses, what the program takes with malloc, operator new included, from the constructor
/// to the destructor. Only in programs linked with kelmora_failing_heap; modules that they load have a malloc of their
/// own. One at a time, and while no other thread runs.
///
/// Keep test macros out of the scope: they allocate.
class FailingHeap {
public:
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    /// refuseOnly  number of the one call to refuse, from 0
    /// refuseFrom  number of the first of all calls to refuse, from 0
    explicit FailingHeap(std::uint64_t refuseOnly = kNever, std::uint64_t refuseFrom = kNever);
    ~FailingHeap();

    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;

    /// Calls in this scope, granted or not.
    std::uint64_t Calls() const { return m_calls; }

    /// How many of them were refused.
    std::uint64_t Refused() const { return m_refused; }

    /// Blocks taken minus blocks given back since the program began. Only differences mean something: blocks may come
    /// from elsewhere.
    static std::int64_t OpenBlocksOfProgram();

private:
    friend struct FailingHeapAccess;

    std::uint64_t m_refuseOnly;
    std::uint64_t m_refuseFrom;
    std::uint64_t m_calls = 0;
    std::uint64_t m_refused = 0;
};

} // namespace kelmora
