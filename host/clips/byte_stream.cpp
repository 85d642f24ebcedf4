#include "host/clips/byte_stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <system_error>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/path_text.h"
#include "platform/standard_streams.h"

namespace kelmora::host {
namespace {

class FileSource final : public ByteSource {
public:
    explicit FileSource(const std::string& path) : m_file(PathOf(path), std::ios::binary)
    {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(PathOf(path), error);
        if (!m_file)
            throw Failure(ExitCode::Failed,
                          "cannot read " + path + (error ? ": " + error.message() : std::string()));
        if (!error) // a named pipe has no size
            m_size = size;
    }

    std::optional<std::uint64_t> Size() const override { return m_size; }

private:
    std::size_t Take(void* bytes, std::size_t count) override
    {
        m_file.read(static_cast<char*>(bytes), static_cast<std::streamsize>(count));
        return static_cast<std::size_t>(m_file.gcount());
    }

    std::ifstream m_file;
    std::optional<std::uint64_t> m_size;
};

class StandardSource final : public ByteSource {
private:
    std::size_t Take(void* bytes, std::size_t count) override
    {
        return platform::ReadStandardInput(bytes, count, IsInterrupted);
    }
};

class FileSink final : public ByteSink {
public:
    FileSink(const std::string& path, Overwrite overwrite)
        : m_path(path), m_part(path, overwrite), m_file(m_part.Path(), std::ios::binary | std::ios::trunc)
    {
        Check();
    }

    void Write(const void* bytes, std::size_t count) override
    {
        m_file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
        Check();
    }

    void Finish() override
    {
        m_file.close(); // a full disk shows no earlier than here
        Check();
        m_part.Keep();
    }

private:
    void Check() const
    {
        if (!m_file)
            throw Failure(ExitCode::Failed,
                          "cannot write " + m_path + ": the folder is read-only or the disk is full");
    }

    std::string m_path;
    PartFile m_part;
    std::ofstream m_file; // closed before the part is removed
};

class StandardSink final : public ByteSink {
public:
    void Write(const void* bytes, std::size_t count) override
    {
        if (!platform::WriteStandardOutput(bytes, count))
            throw Failure(ExitCode::Failed, "cannot write to the standard output");
    }
    void Finish() override {}
};

} // namespace

std::size_t ByteSource::Read(void* bytes, std::size_t count)
{
    const std::size_t known = std::min(count, m_ahead.size());
    std::memcpy(bytes, m_ahead.data(), known);
    m_ahead.erase(0, known);
    return count > known ? known + Take(static_cast<char*>(bytes) + known, count - known) : known;
}

std::string ByteSource::Ahead(std::size_t count)
{
    const std::size_t known = m_ahead.size();
    if (known < count) {
        m_ahead.resize(count);
        m_ahead.resize(known + Take(m_ahead.data() + known, count - known));
    }
    return m_ahead.substr(0, count);
}

std::optional<std::string> ByteSource::Line(std::size_t most)
{
    std::string line;
    char letter = 0;
    while (line.size() < most && Read(&letter, 1) == 1) {
        if (letter == '\n')
            return line;
        line += letter;
    }
    return std::nullopt;
}

bool ByteSource::Skip(std::uint64_t count)
{
    std::array<char, 4096> dropped;
    while (count > 0) {
        const std::size_t part = static_cast<std::size_t>(std::min<std::uint64_t>(count, dropped.size()));
        if (Read(dropped.data(), part) < part)
            return false;
        count -= part;
    }
    return true;
}

std::unique_ptr<ByteSource> OpenSource(const std::string& path)
{
    if (path == "-")
        return std::make_unique<StandardSource>();
    return std::make_unique<FileSource>(path);
}

std::unique_ptr<ByteSink> OpenSink(const std::string& path, Overwrite overwrite)
{
    if (path == "-")
        return std::make_unique<StandardSink>();
    return std::make_unique<FileSink>(path, overwrite);
}

} // namespace kelmora::host
