#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "bench/pictures.h"
#include "contract/kelmora.h"

namespace kelmora::bench {

/// An effect, set as in the table of figures.
struct EffectCase {
    const char* name;
    EffectId effectId;
    std::vector<std::uint32_t> knobs; ///< words
    Content content = Content::Scene;
    double progress = 0.0;
    double time = 0.0;
};

/// Every effect at its dearest or as users find it, some in two ways.
std::span<const EffectCase> EffectCases();

/// A host whose knobs are one list of words, with or without memory of its own.
class Host final : public IVideoHost {
public:
    explicit Host(std::vector<std::uint32_t> knobs, IMemoryProvider* memory = nullptr)
        : m_knobs(std::move(knobs)), m_memory(memory)
    {
    }

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override;
    bool KELMORA_CALL HostReserved4(std::uint32_t, std::uint32_t, std::uint8_t) override { return false; }
    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t, std::uint32_t) override { return 0; }
    bool KELMORA_CALL HostReserved6(std::uint32_t, std::uint32_t) override { return false; }
    void KELMORA_CALL HostReserved7(std::uint32_t, std::uint32_t) override {}
    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override;

private:
    std::vector<std::uint32_t> m_knobs;
    IMemoryProvider* m_memory;
};

} // namespace kelmora::bench
