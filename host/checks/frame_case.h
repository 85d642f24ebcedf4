#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "contract/video_effect.h"
#include "host/checks/check.h"
#include "host/checks/guarded_frame.h"
#include "host/strict_memory.h"

namespace kelmora::host {

/// The formats of pictures that every effect takes.
inline constexpr std::array kPictureFormats = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

/// One frame to render, with all that its result may depend on, and some that it may not.
struct FrameCase {
    FrameShape first;
    FrameShape second;
    FrameShape output;
    bool hasSecond = false;
    std::vector<ParamValue> knobs;
    double progress = 0.5;
    double time = 1.0;
    std::uint32_t flags = 0;
    std::int16_t fieldMode = 3;
    std::uint32_t noise = 1;     ///< where the noise of the pictures starts
    std::uint8_t unread = 0;     ///< the bytes of the records that nobody reads
    std::uint8_t outputFill = 0; ///< the output's bytes before the render
};

/// What came of it.
struct FrameResult {
    bool done = false;                ///< what Render said
    std::vector<std::uint8_t> pixels; ///< of the output, the lowest row in memory first
};

/// A frame of pictures of one size and format with the knobs' defaults; with a second picture for
/// transitions.
FrameCase CaseFor(const EffectFace& face, std::int32_t width, std::int32_t height, PixelFormat format);

/// Renders the frame with a strict host, which offers `memory` unless it is null. Whatever the check is
/// about, a broken rule of the host or the memory, a written byte around a picture and a changed input are
/// findings.
FrameResult RenderCase(CheckRun& run, IVideoEffect& effect, const FrameCase& frame,
                       StrictMemory* memory = nullptr);

/// As RenderCase, and a finding when Render says false.
std::vector<std::uint8_t> RenderedPixels(CheckRun& run, IVideoEffect& effect, const FrameCase& frame,
                                         StrictMemory* memory = nullptr);

/// Unless both are the same, notes `finding` with the first pixel that differs. Gives whether they are.
bool ExpectSame(CheckRun& run, const FrameShape& shape, const std::vector<std::uint8_t>& is,
                const std::vector<std::uint8_t>& shouldBe, const std::string& finding);

/// A value within its range for each knob.
std::vector<ParamValue> RandomKnobs(const EffectFace& face, std::mt19937& engine);

/// Whether the effect's picture depends on the sizes and the orientation in a way of its own: its scene takes
/// the output's size, and its wind the record's own word on what is up.
bool IsScene(std::int32_t number);

/// Whether a transition works only where its second picture has pixels. The others work wherever the first
/// picture and the output have them, and take the second for nothing where it has none.
bool IsCutToSecond(std::int32_t number);

/// "bgra8, 33 x 21".
std::string CaseText(const FrameShape& shape);

} // namespace kelmora::host
