#pragma once

#include <algorithm>
#include <cstring>
#include <string>

#include "host/clips/byte_stream.h"

namespace kelmora::host {

/// Bytes from a text.
class MemorySource final : public ByteSource {
public:
    /// knowsSize  false: like a pipe
    explicit MemorySource(std::string text, bool knowsSize = true)
        : m_text(std::move(text)), m_knowsSize(knowsSize)
    {
    }

    std::optional<std::uint64_t> Size() const override
    {
        return m_knowsSize ? std::optional<std::uint64_t>(m_text.size()) : std::nullopt;
    }

private:
    std::size_t Take(void* bytes, std::size_t count) override
    {
        const std::size_t part = std::min(count, m_text.size() - m_at);
        std::memcpy(bytes, m_text.data() + m_at, part);
        m_at += part;
        return part;
    }

    std::string m_text;
    bool m_knowsSize;
    std::size_t m_at = 0;
};

/// Bytes into a text that outlives it.
class MemorySink final : public ByteSink {
public:
    explicit MemorySink(std::string& text) : m_text(text) {}

    void Write(const void* bytes, std::size_t count) override
    {
        m_text.append(static_cast<const char*>(bytes), count);
    }
    void Finish() override { m_text += "END"; }

private:
    std::string& m_text;
};

} // namespace kelmora::host
