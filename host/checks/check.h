#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "contract/effect_library.h"
#include "host/effect_face.h"
#include "host/library_file.h"

namespace kelmora::host {

/// How a check came out.
enum class Outcome { Passed, Failed, Skipped, Crashed, TimedOut };

/// A check's outcome with what was found: of a failed one the findings, of the others the reason.
struct CheckReport {
    Outcome outcome = Outcome::Passed;
    std::vector<std::string> details;

    bool operator==(const CheckReport&) const = default;
};

/// One check in progress: where it is and what it has found.
class CheckRun {
public:
    /// A check that goes on from finding to finding says no more after this many.
    static constexpr std::size_t kMostFindings = 8;

    /// file   the library file, UTF-8
    /// seed   of everything random
    /// trace  gets each place as it is reached; null for none
    CheckRun(std::string file, std::uint32_t seed, std::ostream* trace = nullptr)
        : m_file(std::move(file)), m_seed(seed), m_trace(trace)
    {
    }

    const std::string& File() const { return m_file; }
    std::uint32_t Seed() const { return m_seed; }

    /// What is looked at from here on: begins every finding, and is the last trace before a crash.
    void At(const std::string& place);

    /// Unless `holds`, notes `finding`, which says what should be or what is wrong. Gives `holds`.
    bool Expect(bool holds, const std::string& finding);

    /// The check has nothing to look at.
    void Skip(const std::string& reason);

    /// Takes over the findings of a run on another thread.
    void Take(const CheckRun& other);

    CheckReport Report() const;

private:
    std::string m_file;
    std::uint32_t m_seed;
    std::ostream* m_trace;
    std::string m_place;
    std::string m_skipReason;
    std::vector<std::string> m_findings;
};

/// One rule of the contract, and how to see that a library keeps it.
struct Check {
    const char* name;     ///< words joined by '-'
    const char* sentence; ///< the rule
    void (*run)(CheckRun& run);
};

// The checks, one list per source.
extern const std::span<const Check> kLibraryChecks;
extern const std::span<const Check> kObjectChecks;
extern const std::span<const Check> kTableChecks;
extern const std::span<const Check> kRenderChecks;
extern const std::span<const Check> kLayoutChecks;
extern const std::span<const Check> kHostileChecks;
extern const std::span<const Check> kMemoryChecks;
extern const std::span<const Check> kProcessorChecks;
extern const std::span<const Check> kThreadChecks;

/// All checks, in the order in which they are best run: what fails early explains what fails later.
std::vector<Check> AllChecks();

/// Runs a check in this process.
CheckReport RunCheckHere(const Check& check, CheckRun run);

/// Calls `look` for each effect of the library, skips the check when there is none. The object is new, and
/// its place is set to its name.
void ForEachEffect(CheckRun& run,
                   const std::function<void(IEffectLibrary& library, const EffectFace& face)>& look);

} // namespace kelmora::host
