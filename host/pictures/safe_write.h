#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelmora::host {

/// Whether an existing file may be replaced.
enum class Overwrite { No, Yes };

/// Throws Failure when there is a file at `path`, UTF-8, that must stay, or when `path` is a folder or lies
/// in no folder. For saying so before the work begins.
void CheckTarget(const std::string& path, Overwrite overwrite);

/// Writes a file so that at `path` there is the old one, or none, until the new one is whole: it is written
/// beside under another name first. Throws Failure when that does not work, or as CheckTarget does, and then
/// leaves nothing behind.
void WriteWhole(const std::string& path, const std::vector<std::uint8_t>& bytes, Overwrite overwrite);

} // namespace kelmora::host
