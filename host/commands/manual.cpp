#include "host/commands/manual.h"

#include <algorithm>
#include <string_view>

namespace kelmora::host {
namespace {

/// The text as it stands on a page: a '-' is one that can be copied, and no line begins a request.
std::string Plain(std::string_view text)
{
    std::string plain;
    for (const char letter : text) {
        const bool isFirst = plain.empty() || plain.back() == '\n';
        if (isFirst && (letter == '.' || letter == '\''))
            plain += "\\&";
        if (letter == '\\')
            plain += "\\e";
        else if (letter == '-')
            plain += "\\-";
        else
            plain += letter;
    }
    return plain;
}

std::string Bold(const std::string& text)
{
    return "\\fB" + Plain(text) + "\\fR";
}

std::string Italic(const std::string& text)
{
    return "\\fI" + Plain(text) + "\\fR";
}

std::string Upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return text;
}

/// A value to put in for a word in capitals, or one to choose as it stands.
std::string Value(const std::string& value)
{
    return value.find('|') != std::string::npos ? Bold(value) : Italic(value);
}

bool IsPositional(const OptionDescription& option)
{
    return !option.name.empty();
}

/// "-o, --output FILE", or "EFFECT".
std::string Tag(const OptionDescription& option)
{
    if (IsPositional(option))
        return Italic(Upper(option.name)) + (option.repeats ? " ..." : "");
    std::string tag;
    for (const std::string& flag : option.flags)
        tag += (tag.empty() ? "" : ", ") + Bold(flag);
    return option.value.empty() ? tag : tag + " " + Value(option.value);
}

/// The arguments that a command cannot do without, the optional ones as one word.
std::string Synopsis(const std::string& program, const CommandDescription& command)
{
    std::string line = Bold(program + " " + command.name) + " [" + Italic("OPTIONS") + "]";
    for (const OptionDescription& option : command.options) {
        if (IsPositional(option))
            line += option.isRequired ? " " + Tag(option) : " [" + Tag(option) + "]";
    }
    for (const OptionDescription& option : command.options) {
        if (!IsPositional(option) && option.isRequired)
            line += " " + Bold(option.flags.front()) + " " + Value(option.value);
    }
    return line;
}

/// `known`: options that were told of before.
std::string Options(const CommandDescription& command, const std::vector<OptionDescription>& known)
{
    const auto isKnown = [&](const OptionDescription& option) {
        return !IsPositional(option)
            && std::any_of(known.begin(), known.end(),
                           [&](const OptionDescription& other) { return other.flags == option.flags; });
    };
    std::string text;
    for (const OptionDescription& option : command.options)
        if (!isKnown(option))
            text += ".TP\n" + Tag(option) + "\n" + Plain(option.text) + ".\n";
    return text;
}

/// Lines that stand as they are.
std::string Literal(const std::string& text)
{
    return text.empty() ? "" : ".PP\n.nf\n" + Plain(text) + "\n.fi\n";
}

constexpr const char* kEnd = R"(.SH EXIT STATUS
.TP
.B 0
All went well.
.TP
.B 1
A rendering, a file or a check failed.
.TP
.B 2
The arguments make no sense.
.TP
.B 3
There is no such effect, knob or preset.
.TP
.B 130
Ctrl-C came.
)";

} // namespace

std::string ManualFor(const ProgramDescription& program)
{
    std::string page = ".TH " + Upper(program.name) + " 1 \"\" \"" + program.name + " " + program.version
        + "\" \"User Commands\"\n.SH NAME\n" + Plain(program.name) + " \\- " + Plain(program.main.text)
        + "\n.SH SYNOPSIS\n";
    for (const CommandDescription& command : program.commands)
        page += Synopsis(program.name, command) + "\n.br\n";
    page += ".SH OPTIONS\n" + Options(program.main, {}) + ".SH COMMANDS\n";
    for (const CommandDescription& command : program.commands)
        page += ".SS " + command.name + "\n" + Plain(command.text) + ".\n"
            + Options(command, program.main.options) + Literal(command.footer);
    return page + ".SH EXAMPLES\n" + Literal(program.main.footer) + kEnd;
}

} // namespace kelmora::host
