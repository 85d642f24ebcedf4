#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace kelmora::host {

/// The whole program: reads the arguments behind its name, runs the command, and gives the exit code. Results
/// go to `out`, one line for each thing gone wrong to `errors`.
int RunProgram(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors);

} // namespace kelmora::host
