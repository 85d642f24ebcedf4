#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "contract/param.h"
#include "contract/video_host.h"
#include "tests/support/fake_memory_provider.h"

namespace kelmora {

/// Knob values as a host keeps them.
constexpr ParamValue LevelKnob(float level)
{
    return {FloatWord(level), 0, ParamFloat};
}
constexpr ParamValue ChoiceKnob(std::uint32_t index)
{
    return {index, 0, ParamChoice};
}
constexpr ParamValue ColorKnob(std::uint32_t bbggrr)
{
    return {bbggrr, 0, ParamColor};
}
constexpr ParamValue CheckKnob(bool on)
{
    return {on ? 1u : 0u, 0, ParamCheck};
}
constexpr ParamValue PointKnob(float x, float y)
{
    return {FloatWord(x), FloatWord(y), ParamPoint};
}

/// One question for a knob.
struct KnobRead {
    std::uint32_t knob;
    ParamKind kind;

    constexpr bool operator==(const KnobRead&) const = default;
};

/// Shown by a failed comparison of reads.
void PrintTo(const KnobRead& read, std::ostream* out);

/// What a host does when it is asked for IMemoryProvider.
enum class ProviderAnswer {
    Refuse,            ///< E_NOINTERFACE and null
    Give,              ///< the provider of SetMemory; refused as above when there is none
    SayYesGiveNothing, ///< S_OK and null
    SayNoLeaveGarbage, ///< E_NOINTERFACE and an address that must not be touched
};

/// A host that answers for its knobs, writes down what it is asked, and watches over the rules: knobs are
/// asked for with their own kind, the kept places are not called, every reference comes back, and nobody
/// calls after the end of the render. Breaking one fails the running test.
class FakeHost final : public IVideoHost {
public:
    FakeHost() = default;
    explicit FakeHost(std::vector<ParamValue> knobs) : m_knobs(std::move(knobs)) {}
    FakeHost(std::initializer_list<ParamValue> knobs) : m_knobs(knobs) {}
    ~FakeHost();

    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    /// Replaces the knobs, or one of them.
    void SetKnobs(std::vector<ParamValue> knobs) { m_knobs = std::move(knobs); }
    void SetKnob(std::size_t knob, const ParamValue& value);

    /// Questions for `knob` get false and nothing written.
    void RefuseKnob(std::uint32_t knob) { m_refused.insert(knob); }

    /// All questions for knobs get false and nothing written.
    void RefuseAllKnobs() { m_refusesAll = true; }

    /// Kinds that do not match the knob's own are answered without a failure.
    void AcceptAnyKind() { m_acceptsAnyKind = true; }

    /// Every answer says this kind instead of the one asked for.
    void AnswerWithKind(std::uint32_t kind) { m_answeredKind = kind; }

    /// The kept places of the table may be called.
    void AcceptReserved() { m_acceptsReserved = true; }

    /// Called at each question for a knob, before the answer. For hosts that act up in the middle.
    void OnKnob(std::function<void(std::uint32_t)> action) { m_onKnob = std::move(action); }

    /// The provider to offer, not owned; null offers none.
    void SetMemory(FakeMemoryProvider* memory);
    void SetProviderAnswer(ProviderAnswer answer) { m_providerAnswer = answer; }

    /// What GetHostInfo says.
    void SetInfo(const HostInfo& info) { m_info = info; }

    /// Knobs asked for, in order.
    const std::vector<KnobRead>& Reads() const { return m_reads; }

    /// Interfaces asked for, in order.
    const std::vector<InterfaceId>& Queries() const { return m_queries; }

    /// Calls of the kept places and of GetHostInfo, in order: "HostReserved4(1, 2, 3)".
    const std::vector<std::string>& OtherCalls() const { return m_otherCalls; }

    /// The count: 1 is the test's own.
    std::uint32_t References() const { return m_references; }

    /// Forgets what was written down and takes calls again.
    void BeginRender();

    /// From here on until BeginRender every call fails the test. Checks that all references came back.
    void EndRender();

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;
    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override;
    bool KELMORA_CALL HostReserved4(std::uint32_t first, std::uint32_t second, std::uint8_t third) override;
    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t first, std::uint32_t second) override;
    bool KELMORA_CALL HostReserved6(std::uint32_t first, std::uint32_t second) override;
    void KELMORA_CALL HostReserved7(std::uint32_t first, std::uint32_t second) override;
    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override;

private:
    void Expect(const char* call);
    void NoteReserved(const std::string& call);

    std::vector<ParamValue> m_knobs;
    std::set<std::uint32_t> m_refused;
    bool m_refusesAll = false;
    bool m_acceptsAnyKind = false;
    bool m_acceptsReserved = false;
    bool m_isOver = false;
    std::optional<std::uint32_t> m_answeredKind;
    std::function<void(std::uint32_t)> m_onKnob;
    FakeMemoryProvider* m_memory = nullptr;
    ProviderAnswer m_providerAnswer = ProviderAnswer::Refuse;
    HostInfo m_info = {"Fake host", {1, 2, 3}};
    std::vector<KnobRead> m_reads;
    std::vector<InterfaceId> m_queries;
    std::vector<std::string> m_otherCalls;
    std::uint32_t m_references = 1;
};

} // namespace kelmora
