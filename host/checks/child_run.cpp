#include "host/checks/child_run.h"

#include <sstream>

#include "host/checks/check_text.h"
#include "platform/process.h"

namespace kelmora::host {
namespace {

/// The last place that the child's trace names, and the line of a sanitizer's or a runtime's complaint.
std::vector<std::string> LastWords(const std::string& errors)
{
    std::string place;
    std::string complaint;
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.starts_with("at: "))
            place = line;
        else if (line.find("ERROR") != std::string::npos || line.find("error") != std::string::npos)
            complaint = line;
    }
    std::vector<std::string> words;
    if (!place.empty())
        words.push_back(place);
    if (!complaint.empty())
        words.push_back(complaint);
    return words;
}

CheckReport WithLastWords(Outcome outcome, const std::string& reason, const std::string& errors)
{
    CheckReport report{outcome, {reason}};
    for (std::string& line : LastWords(errors))
        report.details.push_back(std::move(line));
    return report;
}

} // namespace

CheckReport RunCheckInChild(const ChildRun& child, const std::string& name)
{
    const std::vector<std::string> arguments = {child.program,  "check",   child.file,
                                                "--in-process", "--trace", "--only",
                                                name,           "--seed",  std::to_string(child.seed)};
    const platform::ProcessResult result = platform::RunProcess(arguments, child.limit, child.environment);
    switch (result.end) {
    case platform::ProcessEnd::NotStarted:
        return {Outcome::Failed, {"the process of the check did not start: " + result.crash}};
    case platform::ProcessEnd::Crashed:
        return WithLastWords(Outcome::Crashed, result.crash, result.errors);
    case platform::ProcessEnd::TimedOut:
        return WithLastWords(Outcome::TimedOut, "no end after " + std::to_string(child.limit.count()) + " ms",
                             result.errors);
    case platform::ProcessEnd::Exited:
        break;
    }
    const auto report = ParseReport(result.output, name);
    const bool isHealthy = result.exitCode == 0;
    if (!report || (!isHealthy && report->outcome != Outcome::Failed)) {
        return WithLastWords(Outcome::Crashed, "it ended with code " + std::to_string(result.exitCode),
                             result.errors);
    }
    return *report;
}

} // namespace kelmora::host
