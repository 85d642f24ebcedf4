#pragma once

#include <cstdint>

#include "contract/param_tool_tip.h"
#include "contract/video_effect.h"
#include "effects/common/counted.h"
#include "effects/common/face_answers.h"
#include "effects/common/frame.h"
#include "effects/common/tables.h"
#include "image/float_environment.h"
#include "image/primitives/memory.h"

namespace kelmora {

/// An effect whose answers to the host come from a table, and whose Render is shielded: what no effect can
/// work with is refused, arithmetic is the library's own, and nothing escapes. Derived classes give
/// RenderFrame.
///
/// Views: further interfaces of the effect, answered after IVideoEffect in this order.
template <const auto& face, class... Views>
class TableEffect : public IVideoEffect, public Views... {
    static_assert(IsSound(face));

public:
    TableEffect() = default;
    TableEffect(const TableEffect&) = delete;
    TableEffect& operator=(const TableEffect&) = delete;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        if (!out)
            return E_FAIL;
        *out = nullptr;
        if (!interfaceId)
            return E_FAIL;
        if (IsSameId(interfaceId, IUnknown::id) || IsSameId(interfaceId, IVideoEffect::id))
            *out = static_cast<IVideoEffect*>(this);
        else
            static_cast<void>(
                ((IsSameId(interfaceId, Views::id) && (*out = static_cast<Views*>(this))) || ...));
        if (!*out)
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

    const char* KELMORA_CALL GetName() override { return face.name; }
    std::uint32_t KELMORA_CALL GetHelpId() override { return face.helpId; }

    bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) override
    {
        return AnswerParamInfo(face, knob, info);
    }

    const char* KELMORA_CALL GetPresetName(std::uint32_t preset) override
    {
        return AnswerPresetName(face, preset);
    }

    bool KELMORA_CALL GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out) override
    {
        return AnswerPresetValue(face, preset, knob, out);
    }

    bool KELMORA_CALL Render(IVideoHost* host, VideoFrame* firstPicture, VideoFrame* secondPicture,
                             VideoFrame* output, RenderInfo* info) override
    {
        if (!host || !firstPicture || !firstPicture->data || !output || !output->data)
            return false;
        try {
            const RenderCall call = {*host, *firstPicture, secondPicture, *output, info};
            return WithFloatEnvironment([&] { return RenderFrame(call); });
        } catch (...) {
            return false; // the host's stack must not be unwound
        }
    }

protected:
    /// Makes one frame. The pictures of `call` have pixels; nothing else about them is known.
    virtual bool RenderFrame(const RenderCall& call) = 0;

    // Beyond the slots that hosts know, where compilers may differ.
    virtual ~TableEffect() = default;

private:
    HolderCount m_holders;
    BlockKeeper m_keeper; // frames follow each other on one object
};

/// A TableEffect with a tool tip per knob.
template <const auto& face, const auto& toolTips>
class ToolTipEffect : public TableEffect<face, IParamToolTip> {
    static_assert(toolTips.size() == face.knobs.size());

public:
    const char* KELMORA_CALL GetToolTip(std::uint32_t knob) override
    {
        return knob < toolTips.size() ? toolTips[knob] : nullptr;
    }
};

} // namespace kelmora
