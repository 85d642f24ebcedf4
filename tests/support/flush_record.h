#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tests/support/guard_pages.h"

namespace kelmora {

/// A record whose last byte is the last readable one: whoever reads or writes past it faults.
///
/// `bytes` is what the reader may rely on, sizeof(Record) unless told otherwise. When that is no multiple
/// of the record's alignment the record lies unaligned, as a host's may.
template <class Record>
class FlushRecord {
public:
    /// Every byte starts as `fill`.
    explicit FlushRecord(std::uint8_t fill = 0, std::size_t bytes = sizeof(Record))
        : m_pages(2 * PageBytes()), m_bytes(bytes)
    {
        m_pages.Open(0, PageBytes());
        std::memset(m_pages.Base(), fill, PageBytes());
    }

    explicit FlushRecord(const Record& record, std::size_t bytes = sizeof(Record)) : FlushRecord(0, bytes)
    {
        std::memcpy(Bytes(), &record, bytes);
    }

    /// The record's bytes.
    std::uint8_t* Bytes() const { return m_pages.Base() + PageBytes() - m_bytes; }

    /// What is handed over.
    Record* Get() const { return reinterpret_cast<Record*>(Bytes()); }

    /// A copy, wherever the record lies. Bytes past its end are 0.
    Record Read() const
    {
        Record copy = {};
        std::memcpy(&copy, Bytes(), m_bytes);
        return copy;
    }

    /// From here on a write is a fault.
    void Freeze() { m_pages.SetReadOnly(0, PageBytes(), true); }

private:
    GuardPages m_pages;
    std::size_t m_bytes;
};

} // namespace kelmora
