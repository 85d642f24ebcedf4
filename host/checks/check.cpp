#include "host/checks/check.h"

#include <exception>

#include "host/held.h"

namespace kelmora::host {

void CheckRun::At(const std::string& place)
{
    m_place = place;
    if (m_trace != nullptr)
        *m_trace << "at: " << place << std::endl; // through to the pipe before a crash
}

bool CheckRun::Expect(bool holds, const std::string& finding)
{
    if (!holds && m_findings.size() < kMostFindings)
        m_findings.push_back(m_place.empty() ? finding : m_place + ": " + finding);
    return holds;
}

void CheckRun::Skip(const std::string& reason)
{
    m_skipReason = reason;
}

void CheckRun::Take(const CheckRun& other)
{
    for (const std::string& finding : other.m_findings) {
        if (m_findings.size() < kMostFindings)
            m_findings.push_back(finding);
    }
}

CheckReport CheckRun::Report() const
{
    if (!m_findings.empty())
        return {Outcome::Failed, m_findings};
    if (!m_skipReason.empty())
        return {Outcome::Skipped, {m_skipReason}};
    return {};
}

std::vector<Check> AllChecks()
{
    std::vector<Check> all;
    for (const auto& list : {kLibraryChecks, kObjectChecks, kTableChecks, kRenderChecks, kLayoutChecks,
                             kHostileChecks, kMemoryChecks, kProcessorChecks, kThreadChecks})
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

CheckReport RunCheckHere(const Check& check, CheckRun run)
{
    try {
        check.run(run);
    } catch (const std::exception& error) {
        run.Expect(false, error.what());
    }
    return run.Report();
}

void ForEachEffect(CheckRun& run, const std::function<void(IEffectLibrary&, const EffectFace&)>& look)
{
    const LibraryFile file(run.File());
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::vector<std::int32_t> numbers = EffectNumbers(*library);
    if (numbers.empty())
        run.Skip("the library makes no effect");
    for (const std::int32_t number : numbers) {
        run.At("effect " + std::to_string(number));
        const EffectFace face = ReadFace(number, *MakeEffect(*library, number));
        run.At(face.name);
        look(*library, face);
    }
}

} // namespace kelmora::host
