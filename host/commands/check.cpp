#include "host/commands/check.h"

#include <array>
#include <string_view>

#include "host/checks/check_text.h"
#include "host/checks/child_run.h"
#include "host/names.h"
#include "host/path_text.h"
#include "platform/process.h"

namespace kelmora::host {
namespace {

std::vector<Check> ChosenChecks(const std::vector<std::string>& only)
{
    std::vector<Check> all = AllChecks();
    if (only.empty())
        return all;
    std::vector<std::string> names;
    names.reserve(all.size());
    for (const Check& check : all)
        names.emplace_back(check.name);
    std::vector<Check> chosen;
    for (const std::string& asked : only) {
        const auto found = FindName(names, asked);
        if (!found) {
            throw Failure(ExitCode::Unknown,
                          UnknownName("check", asked, names, "\"kelmora check --list\" shows all checks"));
        }
        chosen.push_back(all[*found]);
    }
    return chosen;
}

void WriteList(const std::vector<Check>& checks, std::ostream& out)
{
    for (const Check& check : checks)
        out << check.name << "\n    " << check.sentence << '\n';
}

/// How many checks came out how.
class Tally {
public:
    void Count(Outcome outcome) { ++m_counts[static_cast<std::size_t>(outcome)]; }
    bool IsGood() const { return Of(Outcome::Failed) + Of(Outcome::Crashed) + Of(Outcome::TimedOut) == 0; }

    void Write(std::uint32_t seed, std::ostream& out) const
    {
        std::size_t all = 0;
        for (const std::size_t count : m_counts)
            all += count;
        out << all << (all == 1 ? " check: " : " checks: ") << Of(Outcome::Passed) << " passed, "
            << Of(Outcome::Failed) << " failed, " << Of(Outcome::Skipped) << " skipped, "
            << Of(Outcome::Crashed) << " crashed, " << Of(Outcome::TimedOut) << " timed out; seed " << seed
            << '\n';
    }

private:
    std::size_t Of(Outcome outcome) const { return m_counts[static_cast<std::size_t>(outcome)]; }

    std::array<std::size_t, 5> m_counts = {};
};

/// The check that all others stand on, and what they report when it does not hold.
constexpr std::string_view kExportsCheck = "exports-present";
const CheckReport kNoLibrary = {Outcome::Skipped, {"the file is no effect library"}};

CheckReport RunOne(const Check& check, const CheckArguments& arguments, std::ostream& errors)
{
    if (!arguments.inProcess)
        return RunCheckInChild({platform::ProgramPath(), arguments.file, arguments.seed}, check.name);
    std::ostream* const trace = arguments.trace ? &errors : nullptr;
    return RunCheckHere(check, CheckRun(arguments.file, arguments.seed, trace));
}

} // namespace

ExitCode RunCheck(const CheckArguments& arguments, std::ostream& out, std::ostream& errors)
{
    const std::vector<Check> checks = ChosenChecks(arguments.only);
    if (arguments.listOnly) {
        WriteList(checks, out);
        return ExitCode::Done;
    }
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(PathOf(arguments.file), ignored))
        throw Failure(ExitCode::Failed, "there is no library file " + arguments.file);

    Tally tally;
    bool isLibrary = true;
    for (const Check& check : checks) {
        const CheckReport report = isLibrary ? RunOne(check, arguments, errors) : kNoLibrary;
        if (std::string_view(check.name) == kExportsCheck)
            isLibrary = report.outcome == Outcome::Passed;
        tally.Count(report.outcome);
        out << ReportText(check.name, report) << std::flush;
    }
    tally.Write(arguments.seed, out);
    return tally.IsGood() ? ExitCode::Done : ExitCode::Failed;
}

} // namespace kelmora::host
