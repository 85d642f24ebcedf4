#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "contract/video_frame.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {

/// 64-bit FNV-1a over the pixels: row after row from row 0, width * pixelBytes bytes each. What lies
/// between the rows, the size and the format play no part.
std::uint64_t Digest(const VideoFrame& frame);
std::uint64_t Digest(const GuardedPicture& picture);

/// Sixteen hexadecimal digits.
std::string HexDigest(std::uint64_t digest);

/// One line of a manifest: which picture was rendered how, and what came out.
struct GoldenLine {
    std::string picture;
    std::string format;
    std::string preset; ///< may hold spaces
    double progress = 0.0;
    std::string hash;
    int number = 0; ///< of the line, from 1
    bool used = false;
};

/// The hashes of one effect's pictures: tests/golden/NAME.txt.
///
/// Lines are `picture format preset progress hash`, separated by blanks; only the preset's name may hold
/// blanks itself. Empty lines and lines that start with # are comments.
class GoldenManifest {
public:
    /// Reads tests/golden/`name`.txt. A missing or malformed file fails the running test.
    explicit GoldenManifest(std::string_view name);

    /// A manifest from text, for tests of this class.
    static GoldenManifest FromText(std::string_view name, std::string_view text);

    /// For EXPECT_TRUE: `frame` has the hash of the line with these four fields. A failure names all of
    /// them, what was expected and the line as it would have to read.
    testing::AssertionResult Matches(std::string_view picture, std::string_view format,
                                     std::string_view preset, double progress, const VideoFrame& frame);

    /// For EXPECT_TRUE: every line has been asked for.
    testing::AssertionResult AllUsed() const;

    const std::vector<GoldenLine>& Lines() const { return m_lines; }

private:
    GoldenManifest() = default;
    void Parse(std::string_view text);

    std::string m_name;
    std::vector<GoldenLine> m_lines;
};

} // namespace kelmora
