#include "host/commands/manual.h"

#include <gtest/gtest.h>

#include "host/arguments.h"
#include "tests/host/program_run.h"

namespace kelmora::host {
namespace {

/// A program with one command that takes a picture, two options and a flag.
ProgramDescription Painter()
{
    ProgramDescription program;
    program.name = "painter";
    program.version = "1.2";
    program.main = {
        "painter", "Paints", {{"", {"-h", "--help"}, "", "Show the help", false, false}}, "  painter x"};
    program.commands = {{"draw",
                         "Draw a picture",
                         {{"input", {}, "", "What to draw", true, false},
                          {"", {"-o", "--output"}, "FILE", "Where to", true, false},
                          {"", {"--ink"}, "red|blue", "The 'ink'", false, false},
                          {"", {"--back\\slash"}, "", ".dot", false, false}},
                         ".first\n  last"}};
    return program;
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST(ManualFor, Head_NamesTheProgramAndItsVersion)
{
    const std::string page = ManualFor(Painter());
    EXPECT_TRUE(page.starts_with(
        ".TH PAINTER 1 \"\" \"painter 1.2\" \"User Commands\"\n.SH NAME\npainter \\- Paints\n"))
        << page;
}

TEST(ManualFor, Synopsis_HasWhatACommandCannotDoWithout)
{
    EXPECT_TRUE(Has(ManualFor(Painter()),
                    "\\fBpainter draw\\fR [\\fIOPTIONS\\fR] \\fIINPUT\\fR \\fB\\-o\\fR \\fIFILE\\fR\n.br\n"));
}

TEST(ManualFor, Options_StandWithTheirValuesAndTexts)
{
    const std::string page = ManualFor(Painter());
    EXPECT_TRUE(Has(page, ".SS draw\nDraw a picture.\n"));
    EXPECT_TRUE(Has(page, ".TP\n\\fB\\-o\\fR, \\fB\\-\\-output\\fR \\fIFILE\\fR\nWhere to.\n"));
    EXPECT_TRUE(Has(page, ".TP\n\\fB\\-\\-ink\\fR \\fBred|blue\\fR\nThe 'ink'.\n"));
}

TEST(ManualFor, OptionsOfTheProgram_AreNotRepeatedWithEveryCommand)
{
    ProgramDescription program = Painter();
    program.commands[0].options.push_back(program.main.options[0]);
    const std::string page = ManualFor(program);
    const std::size_t first = page.find("Show the help");
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(page.find("Show the help", first + 1), std::string::npos);
}

TEST(ManualFor, LettersThatManReads_AreWrittenOut)
{
    const std::string page = ManualFor(Painter());
    EXPECT_TRUE(Has(page, "\\-\\-back\\eslash"));
    EXPECT_TRUE(Has(page, "\n\\&.dot.\n"));
    EXPECT_TRUE(Has(page, ".nf\n\\&.first\n  last\n.fi\n"));
}

TEST(ManualFor, EveryArgumentOfTheProgram_IsOnThePage)
{
    const ProgramRun run = RunWith({"manual"});
    EXPECT_EQ(run.code, 0);
    const ProgramDescription program = DescribeProgram();
    EXPECT_GE(program.commands.size(), 8u);
    for (const CommandDescription& command : program.commands) {
        EXPECT_TRUE(Has(run.out, ".SS " + command.name + "\n")) << command.name;
        const ProgramRun help = RunWith({command.name, "--help"});
        for (const OptionDescription& option : command.options)
            EXPECT_TRUE(Has(help.out, option.text)) << command.name << ": " << option.text;
    }
    EXPECT_TRUE(Has(run.out, "\\fB\\-\\-progress\\fR \\fINUMBER\\fR\nPosition in the clip"));
}

} // namespace
} // namespace kelmora::host
