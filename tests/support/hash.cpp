#include "tests/support/hash.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <fstream>
#include <sstream>

namespace kelmora {
namespace {

std::string FormatNumber(double value)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

std::vector<std::string_view> Words(std::string_view line)
{
    std::vector<std::string_view> words;
    constexpr std::string_view blanks = " \t\r";
    std::size_t start = line.find_first_not_of(blanks);
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(line.find_first_of(blanks, start), line.size());
        words.push_back(line.substr(start, end - start));
        start = line.find_first_not_of(blanks, end);
    }
    return words;
}

} // namespace

std::uint64_t Digest(const VideoFrame& frame)
{
    std::uint64_t digest = 0xCBF29CE484222325u;
    const std::ptrdiff_t rowBytes = static_cast<std::ptrdiff_t>(frame.width) * frame.pixelBytes;
    for (std::int32_t y = 0; y < frame.height; ++y) {
        const auto* const row =
            static_cast<const std::uint8_t*>(frame.data) + static_cast<std::ptrdiff_t>(frame.stride) * y;
        for (std::ptrdiff_t i = 0; i < rowBytes; ++i)
            digest = (digest ^ row[i]) * 0x100000001B3u;
    }
    return digest;
}

std::uint64_t Digest(const GuardedPicture& picture)
{
    return Digest(picture.Frame());
}

std::string HexDigest(std::uint64_t digest)
{
    std::string text(16, '0');
    for (std::size_t i = 0; i < 16; ++i)
        text[15 - i] = "0123456789abcdef"[(digest >> (4 * i)) & 15];
    return text;
}

GoldenManifest::GoldenManifest(std::string_view name) : m_name(name)
{
    const std::string path = std::string(KELMORA_GOLDEN_DIR "/") + m_name + ".txt";
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        ADD_FAILURE() << "no manifest " << path;
        return;
    }
    std::ostringstream text;
    text << file.rdbuf();
    Parse(text.str());
}

GoldenManifest GoldenManifest::FromText(std::string_view name, std::string_view text)
{
    GoldenManifest manifest;
    manifest.m_name = name;
    manifest.Parse(text);
    return manifest;
}

void GoldenManifest::Parse(std::string_view text)
{
    int number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ++number;
        const std::vector<std::string_view> words = Words(line);
        if (words.empty() || words[0][0] == '#')
            continue;
        GoldenLine golden;
        golden.number = number;
        const std::string_view progress = words.size() >= 5 ? words[words.size() - 2] : std::string_view();
        const auto parsed =
            std::from_chars(progress.data(), progress.data() + progress.size(), golden.progress);
        const bool isNumber = parsed.ec == std::errc() && parsed.ptr == progress.data() + progress.size();
        if (words.size() < 5 || !isNumber || words.back().size() != 16) {
            ADD_FAILURE() << m_name << ".txt:" << number
                          << ": not `picture format preset progress hash`: " << line;
            continue;
        }
        golden.picture = words[0];
        golden.format = words[1];
        golden.preset = words[2];
        for (std::size_t i = 3; i + 2 < words.size(); ++i)
            golden.preset.append(" ").append(words[i]);
        golden.hash = words.back();
        m_lines.push_back(golden);
    }
}

testing::AssertionResult GoldenManifest::Matches(std::string_view picture, std::string_view format,
                                                 std::string_view preset, double progress,
                                                 const VideoFrame& frame)
{
    const std::string actual = HexDigest(Digest(frame));
    const std::string moment = FormatNumber(progress);
    std::string line;
    for (const std::string_view field : {picture, format, preset, std::string_view(moment)})
        line.append(field).append(" ");
    line += actual;
    for (GoldenLine& golden : m_lines) {
        if (golden.picture != picture || golden.format != format || golden.preset != preset
            || golden.progress != progress)
            continue;
        golden.used = true;
        if (golden.hash == actual)
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << m_name << ".txt:" << golden.number << ": picture " << picture << ", format " << format
            << ", preset " << preset << ", progress " << moment << ", " << frame.width << " x "
            << frame.height << ": expected " << golden.hash << ", got " << actual
            << "\n  the line would read: " << line;
    }
    return testing::AssertionFailure() << m_name << ".txt has no line for: " << line;
}

testing::AssertionResult GoldenManifest::AllUsed() const
{
    for (const GoldenLine& golden : m_lines)
        if (!golden.used)
            return testing::AssertionFailure()
                << m_name << ".txt:" << golden.number << " was never asked for: " << golden.picture << " "
                << golden.format << " " << golden.preset;
    return testing::AssertionSuccess();
}

} // namespace kelmora
