#pragma once

#include <cstdint>
#include <limits>

namespace kelmora {

/// Counts, and where asked refuses, the operator new of the thread that made it, from its constructor to
/// its destructor. Only in programs linked with kelmora_failing_new. Scopes of one thread may nest; the
/// innermost rules. A module that the program loads has an operator new of its own where its
/// runtime is linked in (a DLL), and the program's elsewhere.
///
/// A refused call throws std::bad_alloc, or gives null in the nothrow forms. Keep test macros out of the
/// scope: they allocate.
class FailingNew {
public:
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    /// refuseOnly  number of the one call to refuse, from 0
    /// refuseFrom  number of the first of all calls to refuse, from 0
    explicit FailingNew(std::uint64_t refuseOnly = kNever, std::uint64_t refuseFrom = kNever);
    ~FailingNew();

    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    /// False where operator new cannot be replaced: ThreadSanitizer brings its own. Skip the test there.
    static bool Works();

    /// Calls of operator new in this scope, granted or not.
    std::uint64_t Calls() const { return m_calls; }

    /// How many of them were refused.
    std::uint64_t Refused() const { return m_refused; }

    /// Blocks given in this scope minus blocks taken back in it.
    std::int64_t OpenBlocks() const { return m_openBlocks; }

    /// Blocks that all threads hold together, scopes or not.
    static std::int64_t OpenBlocksOfProgram();

private:
    friend struct FailingNewAccess;

    std::uint64_t m_refuseOnly;
    std::uint64_t m_refuseFrom;
    std::uint64_t m_calls = 0;
    std::uint64_t m_refused = 0;
    std::int64_t m_openBlocks = 0;
    FailingNew* m_outer;
};

} // namespace kelmora
