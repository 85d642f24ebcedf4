#pragma once

#include <cstdint>
#include <limits>

#include "contract/memory_provider.h"
#include "contract/video_effect.h"
#include "contract/video_host.h"

namespace kelmora {

/// A host with nothing in it but what a render needs: the values of one preset, and memory that is counted and can
/// be refused. It allocates nothing of its own, so that what a long run finds open is the library's.
class PlainHost final : public IVideoHost, public IMemoryProvider {
public:
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    /// Answers with the values of `preset` of `effect`, which is only asked while it renders.
    void Show(IVideoEffect& effect, std::uint32_t preset);

    /// Whether IMemoryProvider is there for who asks, and which of its next allocations is refused, from 0.
    void Provide(bool provides, std::uint64_t refuse = kNever);

    /// Blocks given and not yet taken back.
    std::int64_t OpenBlocks() const { return m_openBlocks; }

    /// Allocations refused, ever.
    std::uint64_t Refused() const { return m_refused; }

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override;
    bool KELMORA_CALL HostReserved4(std::uint32_t, std::uint32_t, std::uint8_t) override { return false; }
    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t, std::uint32_t) override { return 0; }
    bool KELMORA_CALL HostReserved6(std::uint32_t, std::uint32_t) override { return false; }
    void KELMORA_CALL HostReserved7(std::uint32_t, std::uint32_t) override {}
    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override;
    bool KELMORA_CALL Alloc(void** out, std::uint32_t bytes) override;
    void KELMORA_CALL Free(void* memory) override;
    bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                                 std::int32_t* stride) override;
    void KELMORA_CALL FreeImage(void* memory) override { Free(memory); }

private:
    IVideoEffect* m_effect = nullptr;
    std::uint32_t m_preset = 0;
    bool m_provides = false;
    std::uint64_t m_refuse = kNever;
    std::uint64_t m_asked = 0;
    std::uint64_t m_refused = 0;
    std::int64_t m_openBlocks = 0;
};

} // namespace kelmora
