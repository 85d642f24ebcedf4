#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kelmora::host {

/// Whether an existing file may be replaced.
enum class Overwrite { No, Yes };

/// Throws Failure when there is a file at `path`, UTF-8, that must stay, or when `path` is a folder, a
/// device or a pipe, or lies in no folder. For saying so before the work begins.
void CheckTarget(const std::string& path, Overwrite overwrite);

/// A file in the making, beside its target and under another name with the same ending. Without Keep it is
/// removed.
class PartFile {
public:
    /// Makes nothing yet. Throws Failure as CheckTarget does.
    PartFile(const std::string& target, Overwrite overwrite);
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;
    ~PartFile();

    const std::filesystem::path& Path() const { return m_path; }

    /// Gives the file its target's name, in one step. Throws Failure when that does not work.
    void Keep() const;

private:
    std::string m_target;
    Overwrite m_overwrite;
    std::filesystem::path m_path;
};

/// Writes a file so that at `path` there is the old one, or none, until the new one is whole: it is written
/// beside under another name first. Throws Failure when that does not work, or as CheckTarget does, and then
/// leaves nothing behind.
void WriteWhole(const std::string& path, const std::vector<std::uint8_t>& bytes, Overwrite overwrite);

} // namespace kelmora::host
