#include "host/pictures/safe_write.h"

#include <fstream>
#include <system_error>

#include "host/failure.h"
#include "host/path_text.h"
#include "platform/process.h"

namespace kelmora::host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void CannotWrite(const std::string& path, const std::string& reason)
{
    throw Failure(ExitCode::Failed, "cannot write " + path + ": " + reason);
}

[[noreturn]] void AlreadyThere(const std::string& path)
{
    throw Failure(ExitCode::Failed, path + " is already there; --force replaces it");
}

/// The file under its name for the time being. Removes it, unless it was moved away.
class PartFile {
public:
    explicit PartFile(fs::path path) : m_path(std::move(path)) {}
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;
    ~PartFile()
    {
        std::error_code ignored;
        fs::remove(m_path, ignored);
    }

    const fs::path& Path() const { return m_path; }

    bool Write(const std::vector<std::uint8_t>& bytes) const
    {
        std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        file.close(); // a full disk shows no earlier than here
        return file.good();
    }

private:
    fs::path m_path;
};

/// Gives the file its name if no other has it. A link cannot replace a file, so this holds also when somebody
/// makes one at the same moment.
std::error_code NameIfFree(const fs::path& part, const fs::path& target)
{
    std::error_code error;
    fs::create_hard_link(part, target, error);
    if (!error || fs::exists(fs::symlink_status(target)))
        return error;
    // A file system without links.
    fs::rename(part, target, error);
    return error;
}

} // namespace

void CheckTarget(const std::string& path, Overwrite overwrite)
{
    std::error_code ignored;
    const fs::path target = PathOf(path);
    if (fs::is_directory(target, ignored))
        CannotWrite(path, "it is a folder");
    const fs::path folder = fs::absolute(target, ignored).parent_path();
    if (!fs::is_directory(folder, ignored))
        CannotWrite(path, "there is no folder " + TextOf(folder));
    if (overwrite == Overwrite::No && fs::exists(fs::symlink_status(target, ignored)))
        AlreadyThere(path);
}

void WriteWhole(const std::string& path, const std::vector<std::uint8_t>& bytes, Overwrite overwrite)
{
    CheckTarget(path, overwrite);
    const fs::path target = PathOf(path);
    fs::path partName = target;
    partName += "." + std::to_string(platform::ProcessNumber()) + ".part";
    const PartFile part(partName);
    if (!part.Write(bytes))
        CannotWrite(path, "the folder is read-only or the disk is full");

    std::error_code error;
    if (overwrite == Overwrite::Yes)
        fs::rename(part.Path(), target, error);
    else
        error = NameIfFree(part.Path(), target);
    if (error == std::errc::file_exists && overwrite == Overwrite::No)
        AlreadyThere(path);
    if (error)
        CannotWrite(path, error.message());
}

} // namespace kelmora::host
