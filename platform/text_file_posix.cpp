#include "platform/text_file.h"

#include "platform/text.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelmora::platform {
namespace {

/// An open file.
class File {
public:
    explicit File(int number) : m_number(number) {}
    ~File()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool IsOpen() const { return m_number >= 0; }
    int Number() const { return m_number; }

    /// Closes it; some systems say no earlier than here that the disk is full.
    bool Close()
    {
        const int number = m_number;
        m_number = -1;
        return ::close(number) == 0;
    }

    bool IsRegular() const
    {
        struct stat status = {};
        return ::fstat(m_number, &status) == 0 && S_ISREG(status.st_mode);
    }

private:
    int m_number;
};

/// The system's form of a path; empty when there is none.
std::string Narrow(std::u16string_view path)
{
    const Converted needed = Utf16ToNarrow(path, {});
    std::string narrow(needed.whole ? needed.length : 0, '\0');
    if (!narrow.empty())
        Utf16ToNarrow(path, narrow);
    return narrow;
}

/// Reads as much as there is, up to `count` bytes; below 0 on failure.
ssize_t ReadSome(int number, char* bytes, std::size_t count)
{
    ssize_t taken = 0;
    do
        taken = ::read(number, bytes, count);
    while (taken < 0 && errno == EINTR);
    return taken;
}

bool WriteAll(int number, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(number, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return false;
        text.remove_prefix(static_cast<std::size_t>(written < 0 ? 0 : written));
    }
    return true;
}

/// A name in the folder of `path` that no other writer has.
std::string PartPath(const std::string& path)
{
    static std::atomic<unsigned> counter{0};
    char name[64];
    std::snprintf(name, sizeof name, ".kelmora-%lu-%u.part", static_cast<unsigned long>(::getpid()),
                  counter.fetch_add(1, std::memory_order_relaxed));
    return path.substr(0, path.rfind('/') + 1) + name; // without a folder: npos + 1 is 0
}

/// Where the file itself is: a link to it stays a link. A file that is not there yet keeps its path.
std::string Target(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : path;
}

/// The rights that the new file is to have; false when the one that is there must not be replaced.
bool RightsFor(const std::string& target, mode_t& rights, bool& known)
{
    struct stat status = {};
    known = ::stat(target.c_str(), &status) == 0;
    if (!known)
        return errno == ENOENT;
    rights = status.st_mode & 07777;
    return S_ISREG(status.st_mode) && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) == 0;
}

} // namespace

bool ReadFile(const char16_t* path, std::size_t most, std::string& content)
{
    // Without waiting: a pipe of that name might never have a writer.
    const File file(::open(Narrow(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen() || !file.IsRegular())
        return false;
    content.clear();
    constexpr std::size_t chunk = std::size_t{1} << 16;
    for (;;) {
        const std::size_t before = content.size();
        content.resize(before + chunk);
        const ssize_t taken = ReadSome(file.Number(), content.data() + before, chunk);
        if (taken < 0)
            return false;
        content.resize(before + static_cast<std::size_t>(taken));
        if (taken == 0)
            return true;
        if (content.size() > most)
            return false;
    }
}

bool ReplaceTextFile(const char16_t* path, std::string_view text)
{
    const std::string target = Target(Narrow(path));
    mode_t rights = 0;
    bool replaces = false;
    if (target.empty() || !RightsFor(target, rights, replaces))
        return false;
    const std::string part = PartPath(target);
    File file(::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen())
        return false;
    bool good = WriteAll(file.Number(), text) && ::fsync(file.Number()) == 0;
    good = good && (!replaces || ::fchmod(file.Number(), rights) == 0);
    good = file.Close() && good;
    if (good && ::rename(part.c_str(), target.c_str()) == 0)
        return true;
    ::unlink(part.c_str());
    return false;
}

} // namespace kelmora::platform
