#include "host/checks/check_text.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace kelmora::host {
namespace {

constexpr std::array kOutcomes = {Outcome::Passed, Outcome::Failed, Outcome::Skipped, Outcome::Crashed,
                                  Outcome::TimedOut};
constexpr std::string_view kIndent = "    ";

std::string Headline(Outcome outcome, const std::string& name)
{
    constexpr std::size_t kColumn = 11; // the longest outcome and two blanks
    std::string line = OutcomeText(outcome);
    line.resize(kColumn, ' ');
    return line + name;
}

/// A library may print what it likes, so lines end as some system ends them.
std::string WithoutReturn(std::string line)
{
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

} // namespace

const char* OutcomeText(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Passed:
        return "passed";
    case Outcome::Failed:
        return "failed";
    case Outcome::Skipped:
        return "skipped";
    case Outcome::Crashed:
        return "crashed";
    case Outcome::TimedOut:
        break;
    }
    return "timed out";
}

std::string ReportText(const std::string& name, const CheckReport& report)
{
    std::string text = Headline(report.outcome, name) + "\n";
    for (std::string detail : report.details) {
        std::replace(detail.begin(), detail.end(), '\n', ' ');
        text.append(kIndent).append(detail).append("\n");
    }
    return text;
}

std::optional<CheckReport> ParseReport(const std::string& text, const std::string& name)
{
    std::istringstream lines(text);
    std::optional<CheckReport> report;
    for (std::string line; std::getline(lines, line);) {
        line = WithoutReturn(std::move(line));
        const auto isHeadline = [&](Outcome outcome) { return line == Headline(outcome, name); };
        const auto outcome = std::find_if(kOutcomes.begin(), kOutcomes.end(), isHeadline);
        if (outcome != kOutcomes.end())
            report = CheckReport{*outcome, {}};
        else if (report && line.starts_with(kIndent))
            report->details.push_back(line.substr(kIndent.size()));
        else if (report)
            return report;
    }
    return report;
}

} // namespace kelmora::host
