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
    if (fs::is_other(target, ignored)) // a rename would put a file in its place
        CannotWrite(path, "it is no file");
    const fs::path folder = fs::absolute(target, ignored).parent_path();
    if (!fs::is_directory(folder, ignored))
        CannotWrite(path, "there is no folder " + TextOf(folder));
    if (overwrite == Overwrite::No && fs::exists(fs::symlink_status(target, ignored)))
        AlreadyThere(path);
}

PartFile::PartFile(const std::string& target, Overwrite overwrite) : m_target(target), m_overwrite(overwrite)
{
    CheckTarget(target, overwrite);
    const fs::path path = PathOf(target);
    fs::path name = path.stem();
    name += "." + std::to_string(platform::ProcessNumber()) + ".part";
    name += path.extension();
    m_path = path.parent_path() / name;
}

PartFile::~PartFile()
{
    std::error_code ignored;
    fs::remove(m_path, ignored);
}

void PartFile::Keep() const
{
    const fs::path target = PathOf(m_target);
    std::error_code error;
    if (m_overwrite == Overwrite::Yes)
        fs::rename(m_path, target, error);
    else
        error = NameIfFree(m_path, target);
    if (error == std::errc::file_exists && m_overwrite == Overwrite::No)
        AlreadyThere(m_target);
    if (error)
        CannotWrite(m_target, error.message());
}

void WriteWhole(const std::string& path, const std::vector<std::uint8_t>& bytes, Overwrite overwrite)
{
    const PartFile part(path, overwrite);
    std::ofstream file(part.Path(), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close(); // a full disk shows no earlier than here
    if (!file)
        CannotWrite(path, "the folder is read-only or the disk is full");
    part.Keep();
}

} // namespace kelmora::host
