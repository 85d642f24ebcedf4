#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "contract/param.h"
#include "contract/video_host.h"
#include "host/rule_book.h"

namespace kelmora::host {

/// The host's side of a render: answers for the knobs and, where it has one, offers a memory provider. A
/// strict one writes down every rule of the contract that the library breaks; from EndRender on no call is
/// allowed any more.
///
/// Owned by whoever made it: no Release ends it.
class StrictHost final : public IVideoHost {
public:
    /// knobs   a value per knob, with the knob's kind
    /// memory  what to offer as IMemoryProvider, not owned; null offers none
    explicit StrictHost(std::vector<ParamValue> knobs, Strictness strictness = Strictness::Strict,
                        IUnknown* memory = nullptr)
        : m_knobs(std::move(knobs)), m_memory(memory), m_rules(strictness)
    {
    }
    StrictHost(const StrictHost&) = delete;
    StrictHost& operator=(const StrictHost&) = delete;
    ~StrictHost() = default;

    /// Call when Render has returned. References that are still out break a rule, and so does every later
    /// call.
    void EndRender();

    /// Questions for a knob.
    std::size_t KnobsAsked() const { return m_knobsAsked; }

    /// Questions for IMemoryProvider.
    std::size_t MemoryAsked() const { return m_memoryAsked; }

    /// The count: 1 is the owner's.
    std::uint32_t References() const { return m_references; }

    const std::vector<std::string>& BrokenRules() const { return m_rules.All(); }

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
    void NoteCall(const char* call) noexcept;
    void NoteReserved(const char* call) noexcept;

    std::vector<ParamValue> m_knobs;
    IUnknown* m_memory;
    RuleBook m_rules;
    std::thread::id m_thread = std::this_thread::get_id();
    std::size_t m_knobsAsked = 0;
    std::size_t m_memoryAsked = 0;
    std::uint32_t m_references = 1;
    bool m_isOver = false;
};

} // namespace kelmora::host
