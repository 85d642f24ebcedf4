#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "contract/param_tool_tip.h"
#include "contract/video_effect.h"

namespace kelmora::fake {

/// How many effects keep the file loaded. None, unless that very rule is to be broken.
extern std::atomic<std::int32_t> effectsThatCount;

/// A small effect that keeps every rule of the contract, save the one that it is told to break: "Fake Filter"
/// with a knob of each kind, or "Fake Blend" of two pictures.
///
/// The filter: colour + (255 - colour) * level * (distance from the top + 1) / height, with the colours
/// turned round when "Negative" is on; alpha stays. The blend: from the first picture to the second, all
/// channels.
class FakeEffect final : public IVideoEffect {
public:
    explicit FakeEffect(bool isBlend);
    FakeEffect(const FakeEffect&) = delete;
    FakeEffect& operator=(const FakeEffect&) = delete;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;
    const char* KELMORA_CALL GetName() override;
    std::uint32_t KELMORA_CALL GetHelpId() override;
    bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) override;
    bool KELMORA_CALL Render(IVideoHost* host, VideoFrame* firstPicture, VideoFrame* secondPicture,
                             VideoFrame* output, RenderInfo* info) override;
    const char* KELMORA_CALL GetPresetName(std::uint32_t preset) override;
    bool KELMORA_CALL GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out) override;

private:
    /// The second view.
    struct Tips final : IParamToolTip {
        explicit Tips(FakeEffect& effect) : m_effect(effect) {}
        std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
        std::uint32_t KELMORA_CALL AddRef() override;
        std::uint32_t KELMORA_CALL Release() override;
        const char* KELMORA_CALL GetToolTip(std::uint32_t knob) override;

        FakeEffect& m_effect;
        std::uint32_t m_ownCount = 1;
    };

    ~FakeEffect();

    const bool m_isBlend;
    std::atomic<std::uint32_t> m_count = 1;
    Tips m_tips;
    std::thread::id m_thread = std::this_thread::get_id();
    IVideoHost* m_keptHost = nullptr;
    double m_lastProgress = 0.0;
    std::uint32_t m_walks = 0;
};

} // namespace kelmora::fake
