#pragma once

#include <filesystem>
#include <string>

namespace kelmora::host {

/// The path that `text`, UTF-8, names.
inline std::filesystem::path PathOf(const std::string& text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

/// The path as UTF-8 text.
inline std::string TextOf(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace kelmora::host
