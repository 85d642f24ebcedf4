#include "host/arguments.h"

#include <algorithm>
#include <cmath>
#include <map>

#include <CLI/CLI.hpp>

#include "host/knob_value.h"
#include "host/library_file.h"

namespace kelmora::host {
namespace {

constexpr const char* kExamples = R"(Examples:
  kelmora list
  kelmora describe air-brush
  kelmora render air-brush in.png -o out.png --preset "Touch Up"
  kelmora render "Detail Enhancer" in.jpg -o out.jpg --set Strength=0.4
  kelmora render smear a.png --to b.png -o out.png --progress 0.3
  kelmora sweep color-melt a.png --to b.png -o strip.png --width 200
  kelmora check Kelmora.so)";

constexpr const char* kValues = R"(Values of --set, as "kelmora describe EFFECT" shows the knobs:
  float    0 to 1, or on the scale that is shown with a 'u' behind: Spray=0.4, Spray=40u
  choice   a name or an index: Direction=left
  color    Background=#ff8800
  check    on or off
  point    x,y
The preset comes first, each --set over it.)";

const std::map<std::string, PixelFormat> kFormats = {
    {"bgra8", PF_BGRA8}, {"argb8", PF_ARGB8}, {"bgra32f", PF_BGRA32F}, {"argb32f", PF_ARGB32F}};

/// Finite numbers from `min` to `max`. The library's own ranges let a not-a-number pass.
CLI::Validator Numbers(double min, double max)
{
    return CLI::Validator(
        [min, max](const std::string& text) {
            const auto number = ParseNumber(text);
            const bool fits = number && *number >= min && *number <= max;
            const std::string range =
                FloatText(static_cast<float>(min)) + " to " + FloatText(static_cast<float>(max));
            return fits ? std::string() : "\"" + text + "\" is no number from " + range;
        },
        "");
}

void AddLibrary(CLI::App& command, std::string& library)
{
    command.add_option("--library", library, "The library file; the one beside this program if not given")
        ->type_name("FILE");
}

void AddEffect(CLI::App& command, std::string& effect)
{
    command.add_option("effect", effect, "Number, name or short name, as \"kelmora list\" shows them")
        ->required()
        ->type_name("");
}

CLI::App* AddList(CLI::App& app, ListArguments& list)
{
    CLI::App* const command = app.add_subcommand("list", "Show the effects of the library");
    AddLibrary(*command, list.library);
    command->add_flag("--json", list.json, "As JSON");
    return command;
}

CLI::App* AddDescribe(CLI::App& app, DescribeArguments& describe)
{
    CLI::App* const command = app.add_subcommand("describe", "Show the knobs and presets of an effect");
    AddEffect(*command, describe.effect);
    AddLibrary(*command, describe.library);
    command->add_flag("--json", describe.json, "As JSON");
    return command;
}

/// The pictures that a command reads and writes.
void AddPictures(CLI::App& command, FrameArguments& frame)
{
    AddEffect(command, frame.effect);
    command.add_option("input", frame.input, "The picture: PNG, JPEG, BMP or TGA")->required()->type_name("");
    command.add_option("-o,--output", frame.output, "Where to write the result: .png or .jpg")
        ->required()
        ->type_name("FILE");
    command.add_option("--to", frame.second, "The picture that a transition ends with")->type_name("FILE");
}

/// How the effect is set.
void AddKnobs(CLI::App& command, FrameArguments& frame)
{
    command.add_option("--preset", frame.preset, "Set all knobs as a preset has them")->type_name("NAME");
    command.add_option("--set", frame.settings, "Set one knob; may be given again")
        ->type_name("KNOB=VALUE")
        ->allow_extra_args(false);
    command.footer(kValues);
}

/// How the pictures are worked on and written.
void AddWays(CLI::App& command, FrameArguments& frame)
{
    command.add_option("--time", frame.time, "Clock of the clip; 0 if not given")
        ->check(Numbers(-1e9, 1e9))
        ->type_name("SECONDS");
    command.add_option("--format", frame.format, "bgra8, argb8, bgra32f or argb32f; bgra8 if not given")
        ->transform(CLI::CheckedTransformer(kFormats, CLI::ignore_case).description(""))
        ->type_name("FORMAT");
    command.add_option("--quality", frame.quality, "Of a JPEG file, 1 to 100; 92 if not given")
        ->check(CLI::Range(1, 100).description(""))
        ->type_name("NUMBER");
    AddLibrary(command, frame.library);
    command.add_flag_callback(
        "-f,--force", [&frame] { frame.overwrite = Overwrite::Yes; }, "Replace the output if it is there");
}

CLI::App* AddRender(CLI::App& app, RenderArguments& render)
{
    CLI::App* const command = app.add_subcommand("render", "Render one frame of an effect");
    AddPictures(*command, render);
    AddKnobs(*command, render);
    command->add_option("--progress", render.progress, "Position in the clip, 0 to 1; 0.5 if not given")
        ->check(Numbers(0.0, 1.0))
        ->type_name("NUMBER");
    AddWays(*command, render);
    return command;
}

CLI::App* AddSweep(CLI::App& app, SweepArguments& sweep)
{
    constexpr int mostSteps = 1001; // a frame at every thousandth
    constexpr int mostWidth = 65535;
    CLI::App* const command =
        app.add_subcommand("sweep", "Render a transition from end to end, its frames side by side");
    AddPictures(*command, sweep);
    AddKnobs(*command, sweep);
    command->add_option("--steps", sweep.steps, "Frames, from progress 0 to 1; 11 if not given")
        ->check(CLI::Range(2, mostSteps).description(""))
        ->type_name("NUMBER");
    command->add_option("--columns", sweep.columns, "Frames in a row; all if not given")
        ->check(CLI::Range(1, mostSteps).description(""))
        ->type_name("NUMBER");
    command->add_option("--width", sweep.width, "Shrink frames that are wider than this; none if not given")
        ->check(CLI::Range(1, mostWidth).description(""))
        ->type_name("PIXELS");
    AddWays(*command, sweep);
    return command;
}

CLI::App* AddCheck(CLI::App& app, CheckArguments& check)
{
    CLI::App* const command = app.add_subcommand(
        "check", "Check a library file against the contract, each check in its own process");
    command->add_option("file", check.file, "The library file; the one beside this program if not given")
        ->type_name("");
    command->add_option("--only", check.only, "Run this check alone; may be given again")
        ->type_name("NAME")
        ->allow_extra_args(false);
    command->add_flag("--list", check.listOnly, "Show the checks, run none");
    command->add_flag("--in-process", check.inProcess, "Run in this process, for a debugger");
    command->add_flag("--trace", check.trace, "Write each step to standard error");
    command->add_option("--seed", check.seed, "Where the random values start; 1 if not given")
        ->type_name("NUMBER");
    return command;
}

/// The message of CLI11's error, in one line.
std::string OneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

std::string HelpHint(const CLI::App& app)
{
    const std::vector<const CLI::App*> chosen = app.get_subcommands({});
    for (const CLI::App* const command : chosen) {
        if (command->parsed())
            return "see kelmora " + command->get_name() + " --help";
    }
    return "see kelmora --help";
}

} // namespace

Command ParseArguments(const std::vector<std::string>& arguments)
{
    CLI::App app("Video effects from the command line", "kelmora");
    app.set_version_flag("--version", std::string("kelmora " KELMORA_VERSION));
    app.allow_windows_style_options(false); // a path may begin with '/' there too
    app.require_subcommand(1);
    app.footer(kExamples);

    ListArguments list;
    DescribeArguments describe;
    RenderArguments render;
    SweepArguments sweep;
    CheckArguments check;
    const CLI::App* const listCommand = AddList(app, list);
    const CLI::App* const describeCommand = AddDescribe(app, describe);
    const CLI::App* const renderCommand = AddRender(app, render);
    const CLI::App* const sweepCommand = AddSweep(app, sweep);
    const CLI::App* const checkCommand = AddCheck(app, check);
    const auto fillLibrary = [](std::string& path) {
        if (path.empty())
            path = DefaultLibraryPath();
    };

    try {
        app.parse(
            std::vector<std::string>(arguments.rbegin(), arguments.rend())); // it takes them from the back
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> chosen = app.get_subcommands();
        return TextAnswer{ExitCode::Done, chosen.empty() ? app.help() : chosen.front()->help(app.get_name())};
    } catch (const CLI::Success& success) { // the version
        return TextAnswer{ExitCode::Done, std::string(success.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return TextAnswer{ExitCode::Usage, OneLine(error.what()) + "; " + HelpHint(app)};
    }

    if (listCommand->parsed()) {
        fillLibrary(list.library);
        return list;
    }
    if (describeCommand->parsed()) {
        fillLibrary(describe.library);
        return describe;
    }
    if (renderCommand->parsed()) {
        fillLibrary(render.library);
        return render;
    }
    if (sweepCommand->parsed()) {
        fillLibrary(sweep.library);
        return sweep;
    }
    if (checkCommand->parsed())
        fillLibrary(check.file);
    return check;
}

} // namespace kelmora::host
