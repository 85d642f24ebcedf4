#pragma once

#include <cstdint>

#include "contract/param.h"
#include "contract/render_info.h"
#include "contract/unknown.h"
#include "contract/video_frame.h"
#include "contract/video_host.h"

namespace kelmora {

/// A video effect: what a host shows of it, and how it renders a frame.
///
/// Nothing gives a count: walk an index upward from 0 until the answer is no. All calls of one object
/// come from one thread at a time; distinct objects may render at the same time.
struct IVideoEffect : IUnknown {
    static constexpr InterfaceId id = {
        0x0BCF7FCD, 0x6BE5, 0x4A40, {0x9A, 0x49, 0xA6, 0x8D, 0x6B, 0xF6, 0x60, 0x26}};

    /// The effect's display name, constant ASCII. Also EffectName of its presets.
    virtual const char* KELMORA_CALL GetName() = 0;

    /// The number of the effect's help topic. Effects of one group share a number.
    virtual std::uint32_t KELMORA_CALL GetHelpId() = 0;

    /// Describes knob `knob`; false past the last one.
    virtual bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) = 0;

    /// Makes one frame: a function of the pictures, the knobs at that frame and `info`, nothing else.
    ///
    /// host           knobs and memory; not kept
    /// firstPicture   the picture to filter, or the outgoing one of a transition
    /// secondPicture  the incoming picture of a transition; others ignore it
    /// output         written; the work is done on the smaller width and height of the pictures, and what
    ///                lies outside of that stays
    /// info           must not be null
    ///
    /// True on success. False when nothing could be made of the arguments.
    virtual bool KELMORA_CALL Render(IVideoHost* host, VideoFrame* firstPicture, VideoFrame* secondPicture,
                                     VideoFrame* output, RenderInfo* info) = 0;

    /// The name of factory preset `preset`, constant ASCII; null past the last one.
    virtual const char* KELMORA_CALL GetPresetName(std::uint32_t preset) = 0;

    /// Writes `value` and `valueY` of knob `knob` in factory preset `preset`, and leaves `kind`. False,
    /// nothing written, when an index is out of range or the pointer is null.
    virtual bool KELMORA_CALL GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out) = 0;

protected:
    ~IVideoEffect() = default;
};

} // namespace kelmora
