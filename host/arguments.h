#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "contract/video_frame.h"
#include "host/clip_timeline.h"
#include "host/clips/clip_kind.h"
#include "host/failure.h"
#include "host/pictures/picture_file.h"
#include "host/pictures/safe_write.h"
#include "host/program_description.h"

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
    std::string preset;     ///< empty: none
    std::string presetFile; ///< empty: none
    std::vector<std::string> settings;
    PixelFormat format = PF_BGRA8;
    double time = 0.0; ///< seconds
    int quality = kDefaultQuality;
    Overwrite overwrite = Overwrite::No;
};

/// `kelmora render EFFECT INPUT -o OUTPUT`
struct RenderArguments : FrameArguments {
    std::optional<double> progress;  ///< nothing: follows the clip; 0.5 for a picture
    std::optional<double> duration;  ///< seconds, of a transition and of pictures that become a clip
    std::optional<Ratio> rate;       ///< of clips that tell none
    FrameRange frames;               ///< the part of the clip to render
    int jobs = 0;                    ///< frames at a time; 0: as many as there are processors
    ClipKind stream = ClipKind::Y4m; ///< what a pipe carries, Y4m or Pam
    std::string encode;              ///< more words for FFmpeg
    bool hasSound = true;            ///< false: none goes along
    bool json = false;
};

/// `kelmora sweep EFFECT FIRST --to SECOND -o OUTPUT`
struct SweepArguments : FrameArguments {
    int steps = 11;  ///< frames, from progress 0 to progress 1; at least 2
    int columns = 0; ///< frames in a row; 0: all
    int width = 0;   ///< most pixels across a frame; 0: as they are
};

/// `kelmora gallery PICTURE PICTURE... -o OUTPUT`
struct GalleryArguments {
    std::string library;
    std::vector<std::string> pictures; ///< two or more
    std::string output;
    int steps = 9;    ///< frames of what moves, at least 2
    int width = 400;  ///< most pixels across a frame
    int quality = 75; ///< of the JPEG pictures
    Overwrite overwrite = Overwrite::No;
};

enum class Shell { Bash, Zsh, Fish };

/// `kelmora completion SHELL`
struct CompletionArguments {
    Shell shell = Shell::Bash;
};

/// `kelmora manual`
struct ManualArguments {};

enum class PresetAction { Save, Load, Show };

/// `kelmora presets ACTION FILE`
struct PresetsArguments {
    PresetAction action = PresetAction::Show;
    std::string file;
    std::string name;     ///< of the preset; empty: as the file
    FrameArguments frame; ///< library, effect, knobs, and whether to replace the file
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

using Command =
    std::variant<TextAnswer, ListArguments, DescribeArguments, RenderArguments, SweepArguments,
                 GalleryArguments, CheckArguments, PresetsArguments, CompletionArguments, ManualArguments>;

/// Reads the arguments behind the program's name, UTF-8.
Command ParseArguments(const std::vector<std::string>& arguments);

/// The arguments that ParseArguments takes, as the help shows them.
ProgramDescription DescribeProgram();

} // namespace kelmora::host
