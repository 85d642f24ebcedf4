#pragma once

#include <atomic>
#include <cstdint>

namespace kelmora {

/// The count of an object's holders, 1 at the start. It may be changed from any thread.
class HolderCount {
public:
    std::uint32_t Add() { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }

    /// Gives the new count; at 0 the caller is the last and destroys the object.
    std::uint32_t Drop() { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<std::uint32_t> m_count{1};
};

} // namespace kelmora
