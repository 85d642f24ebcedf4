#include "host/commands/completion.h"

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace kelmora::host {
namespace {

/// A program with one command that takes every kind of argument.
ProgramDescription Painter()
{
    ProgramDescription program;
    program.name = "kelmora";
    program.main = {"kelmora", "Paints", {{"", {"-h", "--help"}, "", "Show the help", false, false}}, ""};
    program.commands = {{"draw",
                         "Draw: it's a [picture]",
                         {{"effect", {}, "", "The effect", true, false},
                          {"input", {}, "", "What to draw", true, true},
                          {"", {"-o", "--output"}, "FILE", "Where it's put [file]", true, false},
                          {"", {"--preset"}, "NAME", "The preset", false, false},
                          {"", {"--only"}, "NAME", "The check", false, true},
                          {"", {"--ink"}, "red|blue", "The ink", false, false},
                          {"", {"--size"}, "NUMBER", "The size", false, false},
                          {"", {"-f", "--force"}, "", "Replace", false, false}},
                         ""}};
    return program;
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST(CompletionFor, Bash_KnowsCommandsFlagsAndValues)
{
    const std::string text = CompletionFor(Painter(), Shell::Bash);
    EXPECT_TRUE(Has(text, "_kelmora_words 'draw -h --help'\n"));
    EXPECT_TRUE(Has(text, "draw) _kelmora_words '-o --output --preset --only --ink --size -f --force' ;;\n"));
    EXPECT_TRUE(Has(text, "draw:-o|draw:--output) _kelmora_files; return ;;\n"));
    EXPECT_TRUE(Has(text, "draw:--ink) _kelmora_words 'red blue'; return ;;\n"));
    EXPECT_TRUE(Has(text, "draw:--preset) _kelmora_presets; return ;;\n"));
    EXPECT_TRUE(Has(text, "draw:--only) _kelmora_checks; return ;;\n"));
    EXPECT_TRUE(Has(text, "draw:--size) :; return ;;\n"));
    EXPECT_TRUE(Has(text, "draw:2) _kelmora_effects ;;\n"));
    EXPECT_TRUE(Has(text, "draw:*) _kelmora_files ;;\n"));
    EXPECT_FALSE(Has(text, "draw:-f")); // takes no value
    EXPECT_TRUE(text.ends_with("complete -F _kelmora kelmora\n"));
}

TEST(CompletionFor, Zsh_KnowsCommandsFlagsAndValues)
{
    const std::string text = CompletionFor(Painter(), Shell::Zsh);
    EXPECT_TRUE(text.starts_with("#compdef kelmora\n"));
    EXPECT_TRUE(Has(text, "names=(${(f)\"$(kelmora list 2>/dev/null | sed 's/^[^ ]*  *//; s/ .*//')\"})\n"));
    EXPECT_TRUE(Has(text, "    compadd -a names\n"));
    EXPECT_TRUE(Has(text, "'draw:Draw\\: it'\\''s a [picture]'"));
    EXPECT_TRUE(Has(text, "':effect:_kelmora_effects'"));
    EXPECT_TRUE(Has(text, "'*:input:_files'"));
    EXPECT_TRUE(Has(text, "'(-o --output)'{-o,--output}'[Where it'\\''s put \\[file\\]]:FILE:_files'"));
    EXPECT_TRUE(Has(text, "'--ink[The ink]:red|blue:(red blue)'"));
    EXPECT_TRUE(Has(text, "'*--only[The check]:NAME:_kelmora_checks'"));
    EXPECT_TRUE(Has(text, "'(-f --force)'{-f,--force}'[Replace]'"));
}

TEST(CompletionFor, Fish_KnowsCommandsFlagsAndValues)
{
    const std::string text = CompletionFor(Painter(), Shell::Fish);
    EXPECT_TRUE(Has(text, "-n __fish_use_subcommand -a draw -d 'Draw: it\\'s a [picture]'\n"));
    const std::string draw = "complete -c kelmora -n '__fish_seen_subcommand_from draw'";
    EXPECT_TRUE(Has(text, draw + " -a '(__kelmora_effects)' -d 'The effect'\n"));
    EXPECT_TRUE(Has(text, draw + " -F -d 'What to draw'\n"));
    EXPECT_TRUE(Has(text, draw + " -s o -l output -r -F -d"));
    EXPECT_TRUE(Has(text, draw + " -l ink -x -a 'red blue' -d 'The ink'\n"));
    EXPECT_TRUE(Has(text, draw + " -l size -x -d 'The size'\n"));
    EXPECT_TRUE(Has(text, draw + " -s f -l force -d 'Replace'\n"));
}

TEST(CompletionFor, EveryShell_HasEveryCommandOfTheProgram)
{
    for (const char* const shell : {"bash", "zsh", "fish"}) {
        const ProgramRun run = RunWith({"completion", shell});
        EXPECT_EQ(run.code, 0) << shell;
        for (const CommandDescription& command : DescribeProgram().commands)
            EXPECT_TRUE(Has(run.out, command.name)) << shell << ": " << command.name;
    }
    EXPECT_EQ(RunWith({"completion", "tcsh"}).code, 2);
    EXPECT_EQ(RunWith({"completion"}).code, 2);
}

} // namespace
} // namespace kelmora::host
