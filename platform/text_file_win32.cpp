#include "platform/text_file.h"

#include "platform/wide_win32.h"

#include <atomic>
#include <cstdio>

#include <windows.h>

namespace kelmora::platform {
namespace {

/// An open file.
class File {
public:
    explicit File(HANDLE handle) : m_handle(handle) {}
    ~File()
    {
        if (IsOpen())
            CloseHandle(m_handle);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Handle() const { return m_handle; }

    /// Closes it; gives whether that worked.
    bool Close()
    {
        const HANDLE handle = m_handle;
        m_handle = INVALID_HANDLE_VALUE;
        return CloseHandle(handle) != 0;
    }

private:
    HANDLE m_handle;
};

bool WriteAll(HANDLE file, std::string_view text)
{
    while (!text.empty()) {
        constexpr std::size_t most = std::size_t{1} << 20;
        const auto wanted = static_cast<DWORD>(text.size() < most ? text.size() : most);
        DWORD written = 0;
        if (!::WriteFile(file, text.data(), wanted, &written, nullptr) || written == 0)
            return false;
        text.remove_prefix(written);
    }
    return true;
}

/// A name in the folder of `path` that no other writer has.
std::u16string PartPath(std::u16string_view path)
{
    static std::atomic<unsigned> counter{0};
    char name[64];
    std::snprintf(name, sizeof name, "kelmora-%lu-%u.part", GetCurrentProcessId(),
                  counter.fetch_add(1, std::memory_order_relaxed));
    const std::string_view plain(name);
    std::u16string part(path.substr(0, path.find_last_of(u"\\/:") + 1)); // without a folder: npos + 1 is 0
    part.append(plain.begin(), plain.end());
    return part;
}

/// Whether a file may take this place: nothing is there, or a file that may be written to.
bool MayReplace(const char16_t* path)
{
    const DWORD attributes = GetFileAttributesW(Wide(path));
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    return (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_READONLY)) == 0;
}

} // namespace

bool ReadFile(const char16_t* path, std::size_t most, std::string& content)
{
    const File file(CreateFileW(Wide(path), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file.IsOpen() || GetFileType(file.Handle()) != FILE_TYPE_DISK)
        return false;
    content.clear();
    constexpr std::size_t chunk = std::size_t{1} << 16;
    for (;;) {
        const std::size_t before = content.size();
        content.resize(before + chunk);
        DWORD taken = 0;
        if (!::ReadFile(file.Handle(), content.data() + before, chunk, &taken, nullptr))
            return false;
        content.resize(before + taken);
        if (taken == 0)
            return true;
        if (content.size() > most)
            return false;
    }
}

bool ReplaceTextFile(const char16_t* path, std::string_view text)
{
    if (!MayReplace(path))
        return false;
    const std::u16string part = PartPath(path);
    File file(CreateFileW(Wide(part.c_str()), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                          nullptr));
    if (!file.IsOpen())
        return false;
    bool good = WriteAll(file.Handle(), text) && FlushFileBuffers(file.Handle());
    good = file.Close() && good;
    if (good
        && MoveFileExW(Wide(part.c_str()), Wide(path), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    DeleteFileW(Wide(part.c_str()));
    return false;
}

} // namespace kelmora::platform
