#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/process.h"

namespace kelmora::host {

/// Whether the programs of FFmpeg are there.
inline bool HasFfmpeg()
{
    const platform::ProcessResult result =
        platform::RunProcess({"ffprobe", "-version"}, std::chrono::minutes(1));
    return result.end == platform::ProcessEnd::Exited && result.exitCode == 0;
}

/// Runs ffmpeg and expects it to work. Gives what it wrote to its standard output.
inline std::string Ffmpeg(std::vector<std::string> words)
{
    words.insert(words.begin(), {"ffmpeg", "-v", "error", "-nostdin", "-y"});
    const platform::ProcessResult result = platform::RunProcess(words, std::chrono::minutes(2));
    EXPECT_EQ(result.end, platform::ProcessEnd::Exited) << result.crash;
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    return result.output;
}

} // namespace kelmora::host
