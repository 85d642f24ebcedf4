#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "contract/video_frame.h"
#include "host/failure.h"
#include "host/pictures/picture_file.h"
#include "host/pictures/safe_write.h"

namespace kelmora::host {

/// `kelmora list`
struct ListArguments {
    std::string library;
    bool json = false;
};

/// `kelmora describe EFFECT`
struct DescribeArguments {
    std::string library;
    std::string effect;
    bool json = false;
};

/// What every command that renders takes.
struct FrameArguments {
    std::string library;
    std::string effect;
    std::string input;
    std::string second; ///< empty: none
    std::string output;
    std::string preset; ///< empty: none
    std::vector<std::string> settings;
    PixelFormat format = PF_BGRA8;
    double time = 0.0; ///< seconds
    int quality = kDefaultQuality;
    Overwrite overwrite = Overwrite::No;
};

/// `kelmora render EFFECT INPUT -o OUTPUT`
struct RenderArguments : FrameArguments {
    double progress = 0.5;
};

/// `kelmora sweep EFFECT FIRST --to SECOND -o OUTPUT`
struct SweepArguments : FrameArguments {
    int steps = 11;  ///< frames, from progress 0 to progress 1; at least 2
    int columns = 0; ///< frames in a row; 0: all
    int width = 0;   ///< most pixels across a frame; 0: as they are
};

/// `kelmora check FILE`
struct CheckArguments {
    std::string file;
    std::vector<std::string> only; ///< empty: all checks
    bool listOnly = false;
    bool inProcess = false;
    bool trace = false; ///< each step to standard error, so that the last one before a crash is known
    std::uint32_t seed = 1;
};

/// Nothing to run: help or the version was asked for, or the arguments make no sense.
struct TextAnswer {
    ExitCode code = ExitCode::Done;
    std::string text; ///< for standard output when the code is Done, else for standard error
};

using Command = std::variant<TextAnswer, ListArguments, DescribeArguments, RenderArguments, SweepArguments,
                             CheckArguments>;

/// Reads the arguments behind the program's name, UTF-8.
Command ParseArguments(const std::vector<std::string>& arguments);

} // namespace kelmora::host
