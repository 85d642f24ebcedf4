#include "host/arguments.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "host/library_file.h"

namespace kelmora::host {
namespace {

using Words = std::vector<std::string>;

/// The refusal of these arguments.
TextAnswer Refusal(const Words& words)
{
    const Command command = ParseArguments(words);
    if (const auto* const answer = std::get_if<TextAnswer>(&command))
        return *answer;
    ADD_FAILURE() << "taken";
    return {};
}

template <class Arguments>
Arguments Parsed(const Words& words)
{
    const Command command = ParseArguments(words);
    if (const auto* const answer = std::get_if<TextAnswer>(&command))
        ADD_FAILURE() << answer->text;
    return std::holds_alternative<Arguments>(command) ? std::get<Arguments>(command) : Arguments{};
}

TEST(ParseArguments, List_TakesItsOptions)
{
    EXPECT_FALSE(Parsed<ListArguments>({"list"}).json);
    EXPECT_EQ(Parsed<ListArguments>({"list"}).library, DefaultLibraryPath());
    const auto list = Parsed<ListArguments>({"list", "--json", "--library", "other.so"});
    EXPECT_TRUE(list.json);
    EXPECT_EQ(list.library, "other.so");
}

TEST(ParseArguments, Describe_NeedsAnEffect)
{
    EXPECT_EQ(Parsed<DescribeArguments>({"describe", "Air Brush"}).effect, "Air Brush");
    EXPECT_EQ(Refusal({"describe"}).code, ExitCode::Usage);
}

TEST(ParseArguments, Render_DefaultsAreThoseOfTheHelp)
{
    const auto render = Parsed<RenderArguments>({"render", "106", "in.png", "-o", "out.png"});
    EXPECT_EQ(render.effect, "106");
    EXPECT_EQ(render.input, "in.png");
    EXPECT_EQ(render.output, "out.png");
    EXPECT_EQ(render.second, "");
    EXPECT_EQ(render.preset, "");
    EXPECT_TRUE(render.settings.empty());
    EXPECT_EQ(render.format, PF_BGRA8);
    EXPECT_EQ(render.progress, std::nullopt);
    EXPECT_EQ(render.time, 0.0);
    EXPECT_EQ(render.quality, 92);
    EXPECT_EQ(render.overwrite, Overwrite::No);
}

TEST(ParseArguments, Render_TakesAllItsOptions)
{
    const auto render = Parsed<RenderArguments>(
        {"render", "--set",    "Spray=0.4", "smear",     "--set",    "Edge=1",     "a.png",     "--to",
         "b.png",  "--output", "o.jpg",     "--preset",  "Touch Up", "--progress", "0.3",       "--time",
         "-2.5",   "--format", "ARGB32F",   "--quality", "75",       "--force",    "--library", "x.dll"});
    EXPECT_EQ(render.effect, "smear");
    EXPECT_EQ(render.input, "a.png");
    EXPECT_EQ(render.second, "b.png");
    EXPECT_EQ(render.output, "o.jpg");
    EXPECT_EQ(render.preset, "Touch Up");
    EXPECT_EQ(render.settings, (Words{"Spray=0.4", "Edge=1"}));
    EXPECT_EQ(render.progress, 0.3);
    EXPECT_EQ(render.time, -2.5);
    EXPECT_EQ(render.format, PF_ARGB32F);
    EXPECT_EQ(render.quality, 75);
    EXPECT_EQ(render.overwrite, Overwrite::Yes);
    EXPECT_EQ(render.library, "x.dll");
}

TEST(ParseArguments, Render_TakesTheOptionsOfClips)
{
    const auto render = Parsed<RenderArguments>(
        {"render",     "smear",    "-",        "-o",       "-",         "--to",       "b.mp4",
         "--duration", "1500ms",   "--frames", "100-200",  "--rate",    "29.97",      "--jobs",
         "3",          "--stream", "pam",      "--encode", "-c:v ffv1", "--no-sound", "--json"});
    EXPECT_EQ(render.input, "-");
    EXPECT_EQ(render.output, "-");
    EXPECT_EQ(render.duration, 1.5);
    EXPECT_EQ(render.frames, (FrameRange{100, 201}));
    EXPECT_EQ(render.rate, (Ratio{2997, 100}));
    EXPECT_EQ(render.jobs, 3);
    EXPECT_EQ(render.stream, ClipKind::Pam);
    EXPECT_EQ(render.encode, "-c:v ffv1");
    EXPECT_FALSE(render.hasSound);
    EXPECT_TRUE(render.json);
}

TEST(ParseArguments, Render_BadOptionsOfClips_AreRefusedWithWhatIsWanted)
{
    const Words bad[] = {
        {"--duration", "-1s"}, {"--frames", "9-3"}, {"--rate", "0"}, {"--jobs", "0"}, {"--stream", "avi"}};
    for (const Words& option : bad) {
        Words words = {"render", "1", "i", "-o", "o.mp4"};
        words.insert(words.end(), option.begin(), option.end());
        EXPECT_EQ(Refusal(words).code, ExitCode::Usage) << option[0];
    }
    EXPECT_NE(Refusal({"render", "1", "i", "-o", "o.mp4", "--frames", "9-3"}).text.find("100-200"),
              std::string::npos);
}

TEST(ParseArguments, Render_EveryFormatHasItsWord)
{
    const std::pair<const char*, PixelFormat> formats[] = {
        {"bgra8", PF_BGRA8}, {"argb8", PF_ARGB8}, {"bgra32f", PF_BGRA32F}, {"argb32f", PF_ARGB32F}};
    for (const auto& [word, format] : formats) {
        EXPECT_EQ(Parsed<RenderArguments>({"render", "1", "i", "-o", "o", "--format", word}).format, format)
            << word;
    }
    EXPECT_EQ(Refusal({"render", "1", "i", "-o", "o", "--format", "rgb"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"render", "1", "i", "-o", "o", "--format", "6"}).code, ExitCode::Usage);
}

TEST(ParseArguments, Render_NumbersOutOfTheirRange_AreRefused)
{
    const std::pair<const char*, const char*> bad[] = {
        {"--progress", "1.5"}, {"--progress", "-0.1"}, {"--progress", "nan"}, {"--progress", "half"},
        {"--time", "inf"},     {"--time", "1e300"},    {"--quality", "0"},    {"--quality", "101"},
    };
    for (const auto& [option, value] : bad) {
        EXPECT_EQ(Refusal({"render", "1", "i", "-o", "o", option, value}).code, ExitCode::Usage)
            << option << " " << value;
    }
}

TEST(ParseArguments, Render_NumberOutOfItsRange_IsRefusedWithTheRange)
{
    EXPECT_EQ(Refusal({"render", "1", "i", "-o", "o", "--progress", "2"}).text,
              "--progress: \"2\" is no number from 0 to 1; see kelmora render --help");
}

TEST(ParseArguments, Render_WithoutItsParts_IsRefused)
{
    EXPECT_EQ(Refusal({"render"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"render", "106"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"render", "106", "in.png"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"render", "106", "in.png", "-o"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"render", "106", "in.png", "more.png", "-o", "out.png"}).code, ExitCode::Usage);
}

TEST(ParseArguments, Sweep_DefaultsAreThoseOfTheHelp)
{
    const auto sweep =
        Parsed<SweepArguments>({"sweep", "smear", "a.png", "--to", "b.png", "-o", "strip.png"});
    EXPECT_EQ(sweep.effect, "smear");
    EXPECT_EQ(sweep.input, "a.png");
    EXPECT_EQ(sweep.second, "b.png");
    EXPECT_EQ(sweep.output, "strip.png");
    EXPECT_EQ(sweep.library, DefaultLibraryPath());
    EXPECT_EQ(sweep.steps, 11);
    EXPECT_EQ(sweep.columns, 0);
    EXPECT_EQ(sweep.width, 0);
    EXPECT_EQ(sweep.preset, "");
    EXPECT_TRUE(sweep.settings.empty());
    EXPECT_EQ(sweep.format, PF_BGRA8);
    EXPECT_EQ(sweep.time, 0.0);
    EXPECT_EQ(sweep.quality, 92);
    EXPECT_EQ(sweep.overwrite, Overwrite::No);
}

TEST(ParseArguments, Sweep_TakesAllItsOptions)
{
    const auto sweep =
        Parsed<SweepArguments>({"sweep",     "smear",  "a.png", "--to",      "b.png", "-o",        "s.jpg",
                                "--steps",   "5",      "-f",    "--width",   "120",   "--preset",  "Gentle",
                                "--columns", "3",      "--set", "Fog=1",     "--set", "Color=50u", "--format",
                                "argb8",     "--time", "1.5",   "--quality", "80",    "--library", "x.so"});
    EXPECT_EQ(sweep.steps, 5);
    EXPECT_EQ(sweep.columns, 3);
    EXPECT_EQ(sweep.width, 120);
    EXPECT_EQ(sweep.preset, "Gentle");
    EXPECT_EQ(sweep.settings, (Words{"Fog=1", "Color=50u"}));
    EXPECT_EQ(sweep.format, PF_ARGB8);
    EXPECT_EQ(sweep.time, 1.5);
    EXPECT_EQ(sweep.quality, 80);
    EXPECT_EQ(sweep.overwrite, Overwrite::Yes);
    EXPECT_EQ(sweep.library, "x.so");
}

TEST(ParseArguments, Sweep_NumbersOutOfTheirRange_AreRefused)
{
    const std::pair<const char*, const char*> bad[] = {
        {"--steps", "1"},    {"--steps", "1002"}, {"--steps", "2.5"},   {"--columns", "0"},
        {"--columns", "-1"}, {"--width", "0"},    {"--width", "65536"}, {"--progress", "0.5"},
    };
    for (const auto& [option, value] : bad) {
        EXPECT_EQ(Refusal({"sweep", "1", "a", "--to", "b", "-o", "o", option, value}).code, ExitCode::Usage)
            << option << " " << value;
    }
}

TEST(ParseArguments, Gallery_TakesItsOptions)
{
    const auto standard = Parsed<GalleryArguments>({"gallery", "a.png", "b.png", "-o", "page.html"});
    EXPECT_EQ(standard.pictures, (Words{"a.png", "b.png"}));
    EXPECT_EQ(standard.output, "page.html");
    EXPECT_EQ(standard.library, DefaultLibraryPath());
    EXPECT_EQ(standard.steps, 9);
    EXPECT_EQ(standard.width, 400);
    EXPECT_EQ(standard.quality, 75);
    EXPECT_EQ(standard.overwrite, Overwrite::No);
    const auto gallery =
        Parsed<GalleryArguments>({"gallery", "a", "b", "c", "--output", "p", "--steps", "21", "--width",
                                  "640", "--quality", "50", "--library", "x.so", "-f"});
    EXPECT_EQ(gallery.pictures, (Words{"a", "b", "c"}));
    EXPECT_EQ(gallery.steps, 21);
    EXPECT_EQ(gallery.width, 640);
    EXPECT_EQ(gallery.quality, 50);
    EXPECT_EQ(gallery.library, "x.so");
    EXPECT_EQ(gallery.overwrite, Overwrite::Yes);
    EXPECT_EQ(Refusal({"gallery", "a", "-o", "p"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"gallery", "a", "b"}).code, ExitCode::Usage);
    EXPECT_EQ(Refusal({"gallery", "a", "b", "-o", "p", "--steps", "1"}).code, ExitCode::Usage);
}

TEST(ParseArguments, Completion_NeedsAShellThatIsKnown)
{
    EXPECT_EQ(Parsed<CompletionArguments>({"completion", "bash"}).shell, Shell::Bash);
    EXPECT_EQ(Parsed<CompletionArguments>({"completion", "zsh"}).shell, Shell::Zsh);
    EXPECT_EQ(Parsed<CompletionArguments>({"completion", "fish"}).shell, Shell::Fish);
    EXPECT_EQ(Refusal({"completion", "csh"}).code, ExitCode::Usage);
}

TEST(DescribeProgram, Render_HasItsArgumentsInTheOrderOfTheHelp)
{
    const ProgramDescription program = DescribeProgram();
    EXPECT_EQ(program.name, "kelmora");
    EXPECT_EQ(program.version, KELMORA_TEST_VERSION);
    const auto render =
        std::find_if(program.commands.begin(), program.commands.end(),
                     [](const CommandDescription& command) { return command.name == "render"; });
    ASSERT_NE(render, program.commands.end());
    ASSERT_GE(render->options.size(), 6u);
    EXPECT_EQ(render->options[0].flags, (Words{"-h", "--help"}));
    EXPECT_EQ(render->options[1].name, "effect");
    EXPECT_TRUE(render->options[1].isRequired);
    EXPECT_FALSE(render->options[1].repeats);
    EXPECT_EQ(render->options[2].name, "input");
    EXPECT_EQ(render->options[3].flags, (Words{"-o", "--output"}));
    EXPECT_EQ(render->options[3].value, "FILE");
    EXPECT_TRUE(render->options[3].isRequired);
    EXPECT_NE(render->footer.find("Values of --set"), std::string::npos);
}

TEST(ParseArguments, Check_TakesItsOptions)
{
    const auto check = Parsed<CheckArguments>(
        {"check", "--only", "guard-bytes", "lib.so", "--only", "exports-present", "--seed", "7"});
    EXPECT_EQ(check.file, "lib.so");
    EXPECT_EQ(check.only, (Words{"guard-bytes", "exports-present"}));
    EXPECT_EQ(check.seed, 7u);
    EXPECT_FALSE(check.inProcess);
    EXPECT_FALSE(check.listOnly);
    EXPECT_TRUE(Parsed<CheckArguments>({"check", "--list"}).listOnly);
    EXPECT_TRUE(Parsed<CheckArguments>({"check", "x", "--in-process"}).inProcess);
    EXPECT_EQ(Refusal({"check", "x", "--seed", "-1"}).code, ExitCode::Usage);
}

TEST(ParseArguments, PathFromTheRoot_IsNoOption)
{
    EXPECT_EQ(Parsed<CheckArguments>({"check", "/tmp/library"}).file, "/tmp/library");
    const auto render = Parsed<RenderArguments>({"render", "106", "/tmp/in.png", "-o", "/tmp/out.png"});
    EXPECT_EQ(render.input, "/tmp/in.png");
    EXPECT_EQ(render.output, "/tmp/out.png");
}

TEST(ParseArguments, UnknownOnes_AreRefusedInOneLineWithAHint)
{
    for (const Words& words : {Words{}, Words{"paint"}, Words{"list", "--yaml"}, Words{"--yaml"}}) {
        const TextAnswer answer = Refusal(words);
        EXPECT_EQ(answer.code, ExitCode::Usage);
        EXPECT_EQ(answer.text.find('\n'), std::string::npos) << answer.text;
        EXPECT_NE(answer.text.find("--help"), std::string::npos) << answer.text;
    }
    EXPECT_NE(Refusal({"list", "--yaml"}).text.find("see kelmora list --help"), std::string::npos);
}

TEST(ParseArguments, Help_HasExamples)
{
    const TextAnswer help = Refusal({"--help"});
    EXPECT_EQ(help.code, ExitCode::Done);
    for (const char* const word :
         {"list", "describe", "render", "sweep", "check", "Examples:", "--preset \"Touch Up\""})
        EXPECT_NE(help.text.find(word), std::string::npos) << word;
    const TextAnswer render = Refusal({"render", "--help"});
    EXPECT_EQ(render.code, ExitCode::Done);
    for (const char* const word : {"Usage: kelmora render ", "--progress", "--set", "#ff8800"})
        EXPECT_NE(render.text.find(word), std::string::npos) << word;
    const TextAnswer sweep = Refusal({"sweep", "--help"});
    EXPECT_EQ(sweep.code, ExitCode::Done);
    for (const char* const word : {"Usage: kelmora sweep ", "--steps", "--columns", "--width", "#ff8800"})
        EXPECT_NE(sweep.text.find(word), std::string::npos) << word;
}

TEST(ParseArguments, Version_IsTheProjects)
{
    const TextAnswer version = Refusal({"--version"});
    EXPECT_EQ(version.code, ExitCode::Done);
    EXPECT_EQ(version.text, "kelmora " KELMORA_TEST_VERSION "\n");
}

} // namespace
} // namespace kelmora::host
