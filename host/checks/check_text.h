#pragma once

#include <optional>
#include <string>

#include "host/checks/check.h"

namespace kelmora::host {

/// The outcome in words: "passed", "failed", "skipped", "crashed", "timed out".
const char* OutcomeText(Outcome outcome);

/// What is printed for a check: a line with the outcome and the name, then an indented line per detail.
std::string ReportText(const std::string& name, const CheckReport& report);

/// The report on `name` in a text that may hold other lines before and behind it. Nothing when there is none.
std::optional<CheckReport> ParseReport(const std::string& text, const std::string& name);

} // namespace kelmora::host
