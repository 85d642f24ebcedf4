#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "contract/video_effect.h"
#include "effects/common/counted.h"
#include "effects/common/face_answers.h"
#include "effects/common/tables.h"

namespace kelmora {

// A wrapper shows a simpler face of an inner effect: fewer knobs, its own presets. Toward the host it is an
// effect; toward the inner effect it is the host, and answers for the knobs that it hides. One class serves
// all wrappers: only tables differ.

/// What a wrapper says when its inner effect asks for a knob: a knob of the host, or a fixed value.
struct Answer {
    int hostKnob = -1; ///< below 0: `fixed` is the answer
    Value fixed;
};

constexpr Answer FromHost(int knob)
{
    return {knob, {}};
}

constexpr Answer Always(Value value)
{
    return {-1, value};
}

/// A wrapper, complete: what the host sees, and what the inner effect is told.
template <std::size_t Knobs, std::size_t Presets, std::size_t InnerKnobs>
struct WrapperTables {
    Face<Knobs, Presets> face;
    std::array<Answer, InnerKnobs> answers;
};

/// Holds when every inner knob gets an answer of its own kind.
template <std::size_t K, std::size_t P, std::size_t I, std::size_t IP>
consteval bool AnswersAll(const WrapperTables<K, P, I>& wrapper, const Face<I, IP>& inner)
{
    for (std::size_t k = 0; k < I; ++k) {
        const Answer& answer = wrapper.answers[k];
        if (answer.hostKnob >= static_cast<int>(K))
            return false;
        const ParamKind told = answer.hostKnob < 0
            ? answer.fixed.kind
            : wrapper.face.knobs[static_cast<std::size_t>(answer.hostKnob)].initial.kind;
        if (told != inner.knobs[k].initial.kind)
            return false;
    }
    return true;
}

/// The inner effect behind the face of `tables`. The inner effect lives and dies with the wrapper.
template <class Inner, const auto& tables>
class Wrapper final : public IVideoEffect, public IVideoHost {
    static_assert(IsSound(tables.face));

public:
    Wrapper() = default;
    Wrapper(const Wrapper&) = delete;
    Wrapper& operator=(const Wrapper&) = delete;

    // --- both views ---------------------------------------------------------------------------------

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        if (!out)
            return E_FAIL;
        *out = nullptr;
        if (!interfaceId)
            return E_FAIL;
        if (IsSameId(interfaceId, IUnknown::id) || IsSameId(interfaceId, IVideoEffect::id))
            *out = static_cast<IVideoEffect*>(this);
        else if (IsSameId(interfaceId, IVideoHost::id))
            *out = static_cast<IVideoHost*>(this);
        else if (m_pHost) // the inner effect's way to the host's memory
            return AskHost([&](IVideoHost& host) { return host.QueryInterface(interfaceId, out); });
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    std::uint32_t KELMORA_CALL AddRef() override { return m_holders.Add(); }

    std::uint32_t KELMORA_CALL Release() override
    {
        const std::uint32_t left = m_holders.Drop();
        if (left == 0)
            delete this;
        return left;
    }

    // --- toward the host ----------------------------------------------------------------------------

    const char* KELMORA_CALL GetName() override { return m_inner.GetName(); }
    std::uint32_t KELMORA_CALL GetHelpId() override { return m_inner.GetHelpId(); }

    bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) override
    {
        return AnswerParamInfo(tables.face, knob, info);
    }

    bool KELMORA_CALL Render(IVideoHost* host, VideoFrame* firstPicture, VideoFrame* secondPicture,
                             VideoFrame* output, RenderInfo* info) override
    {
        // Not counted, and kept after the call. A wrapper that were its own host would ask itself for ever.
        m_pHost = host == static_cast<IVideoHost*>(this) ? nullptr : host;
        return m_inner.Render(m_pHost ? this : nullptr, firstPicture, secondPicture, output, info);
    }

    const char* KELMORA_CALL GetPresetName(std::uint32_t preset) override
    {
        return AnswerPresetName(tables.face, preset);
    }

    bool KELMORA_CALL GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out) override
    {
        return AnswerPresetValue(tables.face, preset, knob, out);
    }

    // --- toward the inner effect --------------------------------------------------------------------

    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override
    {
        if (!m_pHost || !out)
            return false;
        out->kind = kind;
        if (knob >= tables.answers.size())
            return false;
        const Answer& answer = tables.answers[knob];
        if (answer.hostKnob >= 0)
            return AskHost([&](IVideoHost& host) {
                return host.GetParamValue(static_cast<std::uint32_t>(answer.hostKnob), out, kind);
            });
        // A check box owns the low byte of its word; every other kind owns the word.
        out->value =
            answer.fixed.kind == ParamCheck ? (out->value & ~0xFFu) | answer.fixed.word : answer.fixed.word;
        return true;
    }

    bool KELMORA_CALL HostReserved4(std::uint32_t first, std::uint32_t second, std::uint8_t third) override
    {
        return m_pHost && AskHost([&](IVideoHost& host) { return host.HostReserved4(first, second, third); });
    }

    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t first, std::uint32_t second) override
    {
        return m_pHost ? AskHost([&](IVideoHost& host) { return host.HostReserved5(first, second); }) : 0;
    }

    bool KELMORA_CALL HostReserved6(std::uint32_t, std::uint32_t) override { return false; }
    void KELMORA_CALL HostReserved7(std::uint32_t, std::uint32_t) override {}

    /// Zeros, also when a host is known: inner effects see no host name.
    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override
    {
        if (result)
            *result = {};
        return result;
    }

private:
    ~Wrapper() = default;

    /// Asks the host, which is unknown until it has answered: one that hands the question back here, another wrapper
    /// for one, would be asked for ever.
    template <class Question>
    auto AskHost(Question question)
    {
        IVideoHost* const host = std::exchange(m_pHost, nullptr);
        const auto answer = question(*host);
        m_pHost = host;
        return answer;
    }

    Inner m_inner; // its own count stays at 1 and is never used
    IVideoHost* m_pHost = nullptr;
    HolderCount m_holders;
};

} // namespace kelmora
