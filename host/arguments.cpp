#include "host/arguments.h"

#include <algorithm>
#include <cmath>
#include <map>

#include <CLI/CLI.hpp>

#include "host/keyframes.h"
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
  kelmora render water-color in.mp4 -o out.mp4 --set "Blend=0@0s,1@2s"
  kelmora render smear in.mp4 --to second.mp4 --duration 1.5s -o joined.mp4
  kelmora sweep color-melt a.png --to b.png -o strip.png --width 200
  kelmora gallery a.png b.png -o gallery.html
  kelmora check Kelmora.so)";

constexpr const char* kValues = R"(Values of --set, as "kelmora describe EFFECT" shows the knobs:
  float    0 to 1, or on the scale that is shown with a 'u' behind: Spray=0.4, Spray=40u
  choice   a name or an index: Direction=left
  color    Background=#ff8800
  check    on or off
  point    x,y
Over time, each with its moment: Spray=0@0s,0.8@2s
The preset comes first, each --set over it.)";

const std::map<std::string, PixelFormat> kFormats = {
    {"bgra8", PF_BGRA8}, {"argb8", PF_ARGB8}, {"bgra32f", PF_BGRA32F}, {"argb32f", PF_ARGB32F}};

const std::map<std::string, ClipKind> kStreams = {{"y4m", ClipKind::Y4m}, {"pam", ClipKind::Pam}};

const std::map<std::string, Shell> kShells = {
    {"bash", Shell::Bash}, {"zsh", Shell::Zsh}, {"fish", Shell::Fish}};

constexpr const char* kCompletions = R"(Where shells look for it:
  kelmora completion bash > ~/.local/share/bash-completion/completions/kelmora
  kelmora completion zsh > ~/.zfunc/_kelmora        (a folder of $fpath)
  kelmora completion fish > ~/.config/fish/completions/kelmora.fish)";

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
    CLI::Option* const preset =
        command.add_option("--preset", frame.preset, "Set all knobs as a preset has them")->type_name("NAME");
    command
        .add_option("--preset-file", frame.presetFile, "Set all knobs as a preset file of an editor has them")
        ->excludes(preset)
        ->type_name("FILE");
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
    command.add_option("--format", frame.format, "Pixels of the pictures; bgra8 if not given")
        ->transform(CLI::CheckedTransformer(kFormats, CLI::ignore_case).description(""))
        ->type_name("bgra8|argb8|bgra32f|argb32f");
    command.add_option("--quality", frame.quality, "Of a JPEG file, 1 to 100; 92 if not given")
        ->check(CLI::Range(1, 100).description(""))
        ->type_name("NUMBER");
    AddLibrary(command, frame.library);
    command.add_flag_callback(
        "-f,--force", [&frame] { frame.overwrite = Overwrite::Yes; }, "Replace the output if it is there");
}

/// An option whose text `parse` understands or not.
template <class Value, class Parse>
void AddParsed(CLI::App& command, const char* name, Value& value, Parse parse, const char* description,
               const char* type, const char* wanted)
{
    command
        .add_option_function<std::string>(
            name,
            [&value, parse, name, wanted](const std::string& text) {
                const auto parsed = parse(text);
                if (!parsed)
                    throw CLI::ValidationError(name, "\"" + text + "\" is no " + wanted);
                value = *parsed;
            },
            description)
        ->type_name(type);
}

/// What is for clips alone.
void AddClipWays(CLI::App& command, RenderArguments& render)
{
    constexpr int mostJobs = 256;
    AddParsed(command, "--duration", render.duration, ParseSeconds,
              "Of a transition between clips, or of pictures that become a clip", "SECONDS",
              "time as 1.5s or 1500ms");
    AddParsed(command, "--frames", render.frames, ParseFrameRange,
              "Render a part of the clip, as 100-200; frames count from 0", "FIRST-LAST",
              "range of frames as 100-200, 100- or 100");
    AddParsed(command, "--rate", render.rate, ParseRate, "Of clips that tell none; 25 if not given", "NUMBER",
              "rate as 25, 29.97 or 30000/1001");
    command.add_option("--jobs", render.jobs, "Frames at a time; as many as processors if not given")
        ->check(CLI::Range(1, mostJobs).description(""))
        ->type_name("NUMBER");
    command.add_option("--stream", render.stream, "What goes into a pipe; y4m if not given")
        ->transform(CLI::CheckedTransformer(kStreams, CLI::ignore_case).description(""))
        ->type_name("y4m|pam");
    command.add_option("--encode", render.encode, "More words for FFmpeg, as \"-c:v libx264 -crf 18\"")
        ->type_name("WORDS");
    command.add_flag_callback(
        "--no-sound", [&render] { render.hasSound = false; }, "Leave the clip's sound behind");
    command.add_flag("--json", render.json, "Tell how far a clip is in lines of JSON");
}

CLI::App* AddRender(CLI::App& app, RenderArguments& render)
{
    CLI::App* const command = app.add_subcommand("render", "Render a picture or a clip");
    AddPictures(*command, render);
    command->get_option("input")->description("A picture, PNG, JPEG, BMP or TGA, or a clip; - is a pipe");
    command->get_option("--output")->description("Where to write the result, by its ending; - is a pipe");
    command->get_option("--to")->description("The picture or clip that a transition leads to");
    AddKnobs(*command, render);
    command
        ->add_option("--progress", render.progress,
                     "Position in the clip, 0 to 1; a clip's own or else 0.5 if not given")
        ->check(Numbers(0.0, 1.0))
        ->type_name("NUMBER");
    AddClipWays(*command, render);
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

CLI::App* AddGallery(CLI::App& app, GalleryArguments& gallery)
{
    constexpr int mostSteps = 101;
    constexpr int mostWidth = 4096;
    CLI::App* const command =
        app.add_subcommand("gallery", "Render every effect with every preset into one HTML page");
    command
        ->add_option("pictures", gallery.pictures,
                     "Pictures for the filters; transitions lead from the first to the second")
        ->required()
        ->expected(2, mostSteps)
        ->type_name("");
    command->add_option("-o,--output", gallery.output, "Where to write the page")
        ->required()
        ->type_name("FILE");
    command->add_option("--steps", gallery.steps, "Frames of what moves; 9 if not given")
        ->check(CLI::Range(2, mostSteps).description(""))
        ->type_name("NUMBER");
    command->add_option("--width", gallery.width, "Shrink frames that are wider than this; 400 if not given")
        ->check(CLI::Range(1, mostWidth).description(""))
        ->type_name("PIXELS");
    command->add_option("--quality", gallery.quality, "Of the JPEG pictures, 1 to 100; 75 if not given")
        ->check(CLI::Range(1, 100).description(""))
        ->type_name("NUMBER");
    AddLibrary(*command, gallery.library);
    command->add_flag_callback(
        "-f,--force", [&gallery] { gallery.overwrite = Overwrite::Yes; },
        "Replace the output if it is there");
    return command;
}

CLI::App* AddCompletion(CLI::App& app, CompletionArguments& completion)
{
    CLI::App* const command =
        app.add_subcommand("completion", "Print a program that completes kelmora's arguments in a shell");
    command->add_option("shell", completion.shell, "The shell")
        ->required()
        ->transform(CLI::CheckedTransformer(kShells).description(""))
        ->type_name("bash|zsh|fish");
    command->footer(kCompletions);
    return command;
}

CLI::App* AddManual(CLI::App& app)
{
    return app.add_subcommand("manual", "Print the manual page, for man");
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

const std::map<std::string, PresetAction> kPresetActions = {
    {"save", PresetAction::Save}, {"load", PresetAction::Load}, {"show", PresetAction::Show}};

CLI::App* AddPresets(CLI::App& app, PresetsArguments& presets)
{
    CLI::App* const command = app.add_subcommand("presets", "Save and read preset files, as editors do");
    command->add_option("action", presets.action, "save, load (writes the knobs for --set) or show")
        ->required()
        ->transform(CLI::CheckedTransformer(kPresetActions, CLI::ignore_case).description(""))
        ->type_name("");
    command->add_option("file", presets.file, "The preset file")->required()->type_name("");
    command
        ->add_option("--effect", presets.frame.effect,
                     "What the preset is for; load: the one that the file names")
        ->type_name("EFFECT");
    command->add_option("--name", presets.name, "Of the preset; that of the file if not given")
        ->type_name("TEXT");
    AddKnobs(*command, presets.frame);
    AddLibrary(*command, presets.frame.library);
    command->add_flag_callback(
        "-f,--force", [&presets] { presets.frame.overwrite = Overwrite::Yes; },
        "Replace the file if it is there");
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

/// The parser, and the places that it fills.
struct Parser {
    CLI::App app{"Video effects from the command line", "kelmora"};
    ListArguments list;
    DescribeArguments describe;
    RenderArguments render;
    SweepArguments sweep;
    GalleryArguments gallery;
    CompletionArguments completion;
    CheckArguments check;
    PresetsArguments presets;
    const CLI::App* listCommand = nullptr;
    const CLI::App* describeCommand = nullptr;
    const CLI::App* renderCommand = nullptr;
    const CLI::App* sweepCommand = nullptr;
    const CLI::App* galleryCommand = nullptr;
    const CLI::App* checkCommand = nullptr;
    const CLI::App* presetsCommand = nullptr;
    const CLI::App* completionCommand = nullptr;
    const CLI::App* manualCommand = nullptr;

    Parser()
    {
        app.set_version_flag("--version", std::string("kelmora " KELMORA_VERSION));
        // A path may begin with '/' there too. Commands take this over when they are made.
        app.allow_windows_style_options(false);
        app.require_subcommand(1);
        app.footer(kExamples);
        listCommand = AddList(app, list);
        describeCommand = AddDescribe(app, describe);
        renderCommand = AddRender(app, render);
        sweepCommand = AddSweep(app, sweep);
        galleryCommand = AddGallery(app, gallery);
        presetsCommand = AddPresets(app, presets);
        checkCommand = AddCheck(app, check);
        completionCommand = AddCompletion(app, completion);
        manualCommand = AddManual(app);
    }
};

std::string HelpHint(const CLI::App& app)
{
    const std::vector<const CLI::App*> chosen = app.get_subcommands({});
    for (const CLI::App* const command : chosen) {
        if (command->parsed())
            return "see kelmora " + command->get_name() + " --help";
    }
    return "see kelmora --help";
}

OptionDescription DescribeOption(const CLI::Option& option)
{
    OptionDescription description;
    if (option.get_positional())
        description.name = option.get_name(true);
    for (const std::string& name : option.get_snames())
        description.flags.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        description.flags.push_back("--" + name);
    description.value = option.get_type_name();
    description.text = option.get_description();
    description.isRequired = option.get_required();
    description.repeats = option.get_expected_max() > 1;
    return description;
}

CommandDescription DescribeCommand(const CLI::App& app)
{
    CommandDescription command{app.get_name(), app.get_description(), {}, app.get_footer()};
    for (const CLI::Option* const option : app.get_options())
        command.options.push_back(DescribeOption(*option));
    return command;
}

} // namespace

Command ParseArguments(const std::vector<std::string>& arguments)
{
    Parser parser;
    CLI::App& app = parser.app;
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

    if (parser.listCommand->parsed()) {
        fillLibrary(parser.list.library);
        return std::move(parser.list);
    }
    if (parser.describeCommand->parsed()) {
        fillLibrary(parser.describe.library);
        return std::move(parser.describe);
    }
    if (parser.renderCommand->parsed()) {
        fillLibrary(parser.render.library);
        return std::move(parser.render);
    }
    if (parser.sweepCommand->parsed()) {
        fillLibrary(parser.sweep.library);
        return std::move(parser.sweep);
    }
    if (parser.galleryCommand->parsed()) {
        fillLibrary(parser.gallery.library);
        return std::move(parser.gallery);
    }
    if (parser.presetsCommand->parsed()) {
        fillLibrary(parser.presets.frame.library);
        return std::move(parser.presets);
    }
    if (parser.completionCommand->parsed())
        return parser.completion;
    if (parser.manualCommand->parsed())
        return ManualArguments{};
    fillLibrary(parser.check.file);
    return std::move(parser.check);
}

ProgramDescription DescribeProgram()
{
    const Parser parser;
    ProgramDescription program;
    program.name = parser.app.get_name();
    program.version = KELMORA_VERSION;
    program.main = DescribeCommand(parser.app);
    for (const CLI::App* const command : parser.app.get_subcommands({}))
        program.commands.push_back(DescribeCommand(*command));
    return program;
}

} // namespace kelmora::host
