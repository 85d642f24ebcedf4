#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "host/program.h"

namespace kelmora::host {

/// What the program did with its arguments.
struct ProgramRun {
    int code = -1;
    std::string out;
    std::string errors;
};

/// Runs the program in this process.
inline ProgramRun RunWith(const std::vector<std::string>& arguments)
{
    std::ostringstream out;
    std::ostringstream errors;
    ProgramRun run;
    run.code = RunProgram(arguments, out, errors);
    run.out = out.str();
    run.errors = errors.str();
    return run;
}

} // namespace kelmora::host
