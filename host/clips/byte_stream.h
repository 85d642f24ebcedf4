#pragma once

#include <cstddef>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "host/pictures/safe_write.h"

namespace kelmora::host {

/// Bytes to read, one after the other.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Reads `count` bytes; fewer at the end alone.
    std::size_t Read(void* bytes, std::size_t count);

    /// The next `count` bytes, or fewer at the end, which stay to be read.
    std::string Ahead(std::size_t count);

    /// The bytes up to a line end, which is taken and left out; nothing when none comes within `most` bytes.
    std::optional<std::string> Line(std::size_t most);

    /// Passes over bytes; false when the end comes first.
    bool Skip(std::uint64_t count);

    /// All bytes from the first to the last; nothing when only the end will tell.
    virtual std::optional<std::uint64_t> Size() const { return std::nullopt; }

private:
    virtual std::size_t Take(void* bytes, std::size_t count) = 0;

    std::string m_ahead;
};

/// The file at `path`, UTF-8, or the standard input for "-". Throws Failure when there is none.
std::unique_ptr<ByteSource> OpenSource(const std::string& path);

/// Takes bytes, one after the other. Throws Failure when that does not work.
class ByteSink {
public:
    ByteSink() = default;
    ByteSink(const ByteSink&) = delete;
    ByteSink& operator=(const ByteSink&) = delete;
    virtual ~ByteSink() = default;

    virtual void Write(const void* bytes, std::size_t count) = 0;

    /// Makes the file whole and gives it its name.
    virtual void Finish() = 0;
};

/// The file at `path`, UTF-8, which appears when it is whole, or the standard output for "-". Throws Failure
/// when that cannot be written to.
std::unique_ptr<ByteSink> OpenSink(const std::string& path, Overwrite overwrite);

} // namespace kelmora::host
