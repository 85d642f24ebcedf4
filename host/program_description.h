#pragma once

#include <string>
#include <vector>

namespace kelmora::host {

/// One argument that a command takes: an option with its flags, or a positional one with a name.
struct OptionDescription {
    std::string name;               ///< of a positional argument; empty for an option
    std::vector<std::string> flags; ///< "-o", "--output"; empty for a positional argument
    std::string value;              ///< "FILE"; the words to choose from as "a|b"; empty: takes none
    std::string text;               ///< what it is for
    bool isRequired = false;
    bool repeats = false;
};

struct CommandDescription {
    std::string name;
    std::string text;                       ///< what it does, one line
    std::vector<OptionDescription> options; ///< in the order of the help
    std::string footer;                     ///< the end of the help; may be empty
};

/// All arguments of a program, for whoever explains them elsewhere than in its help.
struct ProgramDescription {
    std::string name;
    std::string version;
    CommandDescription main; ///< the options before any command
    std::vector<CommandDescription> commands;
};

} // namespace kelmora::host
