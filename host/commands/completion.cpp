#include "host/commands/completion.h"

#include <algorithm>
#include <string_view>

namespace kelmora::host {
namespace {

/// What an argument's value is completed with.
enum class Source { None, Files, Words, Effects, Presets, Checks };

Source SourceOf(const OptionDescription& option)
{
    if (option.value.find('|') != std::string::npos)
        return Source::Words;
    if (option.name == "effect")
        return Source::Effects;
    if (!option.name.empty() || option.value == "FILE")
        return Source::Files;
    const auto has = [&](const char* flag) {
        return std::find(option.flags.begin(), option.flags.end(), flag) != option.flags.end();
    };
    return has("--preset") ? Source::Presets : has("--only") ? Source::Checks : Source::None;
}

bool IsPositional(const OptionDescription& option)
{
    return !option.name.empty();
}

bool TakesValue(const OptionDescription& option)
{
    return !option.value.empty();
}

/// "a|b" as "a b".
std::string Spaced(std::string words)
{
    std::replace(words.begin(), words.end(), '|', ' ');
    return words;
}

/// The text with `mark` before each letter of `special`.
std::string Marked(std::string_view text, std::string_view special, std::string_view mark)
{
    std::string marked;
    for (const char letter : text) {
        if (special.find(letter) != std::string_view::npos)
            marked += mark;
        marked += letter;
    }
    return marked;
}

/// The text between single quotes, as bash and zsh read them.
std::string Quoted(std::string_view text)
{
    std::string quoted = "'";
    for (const char letter : text)
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return quoted + "'";
}

std::string Flags(const CommandDescription& command)
{
    std::string flags;
    for (const OptionDescription& option : command.options)
        for (const std::string& flag : option.flags)
            flags += (flags.empty() ? "" : " ") + flag;
    return flags;
}

std::string CommandNames(const ProgramDescription& program)
{
    std::string names;
    for (const CommandDescription& command : program.commands)
        names += (names.empty() ? "" : " ") + command.name;
    return names;
}

std::vector<const OptionDescription*> Positionals(const CommandDescription& command)
{
    std::vector<const OptionDescription*> found;
    for (const OptionDescription& option : command.options)
        if (IsPositional(option))
            found.push_back(&option);
    return found;
}

// ---- bash

constexpr const char* kBashHead =
    R"sh(# Completes kelmora's arguments in bash. Made by "kelmora completion bash".

_kelmora_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_kelmora_files() { compopt -o default; }

# The lines of its input that begin as what was typed does.
_kelmora_lines() {
    local line typed=${current//[\\\"\']/}
    while IFS= read -r line; do
        [[ $line == "$typed"* ]] || continue
        [[ $current == [\"\']* ]] || line=$(printf %q "$line")
        COMPREPLY+=("$line")
    done
}

_kelmora_effects() { _kelmora_lines < <("$program" list 2>/dev/null | sed 's/^[^ ]*  *//; s/ .*//'); }

_kelmora_presets() {
    _kelmora_lines < <("$program" describe "${COMP_WORDS[2]//[\\\"\']/}" 2>/dev/null |
        sed -n '/^Presets$/,/^$/s/^  //p' | sed 's/  .*//')
}

_kelmora_checks() { _kelmora_lines < <("$program" check --list 2>/dev/null | grep -v '^ '); }

_kelmora() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}
    COMPREPLY=()
)sh";

std::string BashAnswer(const OptionDescription& option)
{
    switch (SourceOf(option)) {
    case Source::Files:
        return "_kelmora_files";
    case Source::Words:
        return "_kelmora_words " + Quoted(Spaced(option.value));
    case Source::Effects:
        return "_kelmora_effects";
    case Source::Presets:
        return "_kelmora_presets";
    case Source::Checks:
        return "_kelmora_checks";
    case Source::None:
        break;
    }
    return ":";
}

/// The cases of what stands behind a flag that takes a value.
std::string BashValues(const CommandDescription& command)
{
    std::string cases;
    for (const OptionDescription& option : command.options) {
        if (IsPositional(option) || !TakesValue(option))
            continue;
        std::string pattern;
        for (const std::string& flag : option.flags)
            pattern += (pattern.empty() ? "" : "|") + (command.name + ":" + flag);
        cases += "    " + pattern + ") " + BashAnswer(option) + "; return ;;\n";
    }
    return cases;
}

std::string BashPositionals(const CommandDescription& command)
{
    const std::vector<const OptionDescription*> positionals = Positionals(command);
    if (positionals.empty())
        return {};
    std::string cases = "    " + command.name + ":2) " + BashAnswer(*positionals.front()) + " ;;\n";
    if (positionals.size() > 1 || positionals.front()->repeats)
        cases += "    " + command.name + ":*) " + BashAnswer(*positionals.back()) + " ;;\n";
    return cases;
}

std::string ForBash(const ProgramDescription& program)
{
    std::string values, flags, positionals;
    for (const CommandDescription& command : program.commands) {
        values += BashValues(command);
        flags += "        " + command.name + ") _kelmora_words " + Quoted(Flags(command)) + " ;;\n";
        positionals += BashPositionals(command);
    }
    return std::string(kBashHead) + "    if ((COMP_CWORD == 1)); then\n        _kelmora_words "
        + Quoted(CommandNames(program) + " " + Flags(program.main))
        + "\n        return\n    fi\n    case ${COMP_WORDS[1]}:$before in\n" + values
        + "    esac\n    if [[ $current == -* ]]; then\n        case ${COMP_WORDS[1]} in\n" + flags
        + "        esac\n        return\n    fi\n    case ${COMP_WORDS[1]}:$COMP_CWORD in\n" + positionals
        + "    esac\n}\n\ncomplete -F _kelmora kelmora\n";
}

// ---- zsh

constexpr const char* kZshHead = R"sh(#compdef kelmora
# Completes kelmora's arguments in zsh. Made by "kelmora completion zsh".

_kelmora_effects() {
    local -a names=(${(f)"$(kelmora list 2>/dev/null | sed 's/^[^ ]*  *//; s/ .*//')"})
    compadd -a names
}

_kelmora_presets() {
    local -a names=(${(f)"$(kelmora describe ${(Q)words[2]} 2>/dev/null |
        sed -n '/^Presets$/,/^$/s/^  //p' | sed 's/  .*//')"})
    compadd -a names
}

_kelmora_checks() {
    local -a names=(${(f)"$(kelmora check --list 2>/dev/null | grep -v '^ ')"})
    compadd -a names
}

_kelmora() {
    local context state line
    typeset -A opt_args
)sh";

std::string ZshAction(const OptionDescription& option)
{
    switch (SourceOf(option)) {
    case Source::Files:
        return "_files";
    case Source::Words:
        return "(" + Spaced(option.value) + ")";
    case Source::Effects:
        return "_kelmora_effects";
    case Source::Presets:
        return "_kelmora_presets";
    case Source::Checks:
        return "_kelmora_checks";
    case Source::None:
        break;
    }
    return " ";
}

/// One line of _arguments.
std::string ZshArgument(const OptionDescription& option)
{
    if (IsPositional(option))
        return Quoted((option.repeats ? "*:" : ":") + option.name + ":" + ZshAction(option));
    const std::string text = "[" + Marked(option.text, "[]\\", "\\") + "]";
    const std::string value =
        TakesValue(option) ? ":" + Marked(option.value, ":\\", "\\") + ":" + ZshAction(option) : "";
    if (option.flags.size() == 1)
        return Quoted((option.repeats ? "*" : "") + option.flags.front() + text + value);
    std::string all, alternatives;
    for (const std::string& flag : option.flags) {
        all += (all.empty() ? "" : " ") + flag;
        alternatives += (alternatives.empty() ? "" : ",") + flag;
    }
    return Quoted(option.repeats ? "*" : "(" + all + ")") + "{" + alternatives + "}" + Quoted(text + value);
}

std::string ZshArguments(const CommandDescription& command, const std::string& indent)
{
    std::string lines;
    for (const OptionDescription& option : command.options)
        lines += " \\\n" + indent + ZshArgument(option);
    return lines;
}

std::string ForZsh(const ProgramDescription& program)
{
    std::string names, cases;
    for (const CommandDescription& command : program.commands) {
        names += "            " + Quoted(command.name + ":" + Marked(command.text, ":\\", "\\")) + "\n";
        cases += "        " + command.name + ") _arguments" + ZshArguments(command, "            ") + " ;;\n";
    }
    return std::string(kZshHead) + "    _arguments -C" + ZshArguments(program.main, "        ")
        + " \\\n        '1:command:->command' '*::argument:->argument'\n    case $state in\n    "
          "command)\n"
          "        local -a commands=(\n"
        + names
        + "        )\n        _describe command commands ;;\n    argument)\n        case $words[1] in\n"
        + cases + "        esac ;;\n    esac\n}\n\n_kelmora \"$@\"\n";
}

// ---- fish

constexpr const char* kFishHead =
    R"sh(# Completes kelmora's arguments in fish. Made by "kelmora completion fish".

function __kelmora_effects
    kelmora list 2>/dev/null | sed 's/^[^ ]*  *//; s/ .*//'
end

function __kelmora_presets
    set -l words (commandline -opc)
    kelmora describe "$words[3]" 2>/dev/null | sed -n '/^Presets$/,/^$/s/^  //p' | sed 's/  .*//'
end

function __kelmora_checks
    kelmora check --list 2>/dev/null | grep -v '^ '
end

complete -c kelmora -f
)sh";

std::string FishQuoted(std::string_view text)
{
    return "'" + Marked(text, "'\\", "\\") + "'";
}

std::string FishSource(const OptionDescription& option)
{
    switch (SourceOf(option)) {
    case Source::Files:
        return " -F";
    case Source::Words:
        return " -a " + FishQuoted(Spaced(option.value));
    case Source::Effects:
        return " -a '(__kelmora_effects)'";
    case Source::Presets:
        return " -a '(__kelmora_presets)'";
    case Source::Checks:
        return " -a '(__kelmora_checks)'";
    case Source::None:
        break;
    }
    return {};
}

std::string FishOption(const std::string& condition, const OptionDescription& option)
{
    std::string line = "complete -c kelmora -n " + FishQuoted(condition);
    for (const std::string& flag : option.flags)
        line += flag.starts_with("--") ? " -l " + flag.substr(2) : " -s " + flag.substr(1);
    if (IsPositional(option) || TakesValue(option))
        line += (IsPositional(option)                    ? ""
                     : SourceOf(option) == Source::Files ? " -r"
                                                         : " -x")
            + FishSource(option);
    return line + " -d " + FishQuoted(option.text) + "\n";
}

std::string ForFish(const ProgramDescription& program)
{
    std::string text = kFishHead;
    for (const OptionDescription& option : program.main.options)
        text += FishOption("__fish_use_subcommand", option);
    for (const CommandDescription& command : program.commands)
        text += "complete -c kelmora -n __fish_use_subcommand -a " + command.name + " -d "
            + FishQuoted(command.text) + "\n";
    for (const CommandDescription& command : program.commands)
        for (const OptionDescription& option : command.options)
            text += FishOption("__fish_seen_subcommand_from " + command.name, option);
    return text;
}

} // namespace

std::string CompletionFor(const ProgramDescription& program, Shell shell)
{
    switch (shell) {
    case Shell::Zsh:
        return ForZsh(program);
    case Shell::Fish:
        return ForFish(program);
    case Shell::Bash:
        break;
    }
    return ForBash(program);
}

} // namespace kelmora::host
