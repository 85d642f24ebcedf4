#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace kelmora {

/// Every byte of a file as it stands there; empty when there is none.
inline std::string FileContent(const std::filesystem::path& file)
{
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

} // namespace kelmora
