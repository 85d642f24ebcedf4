#pragma once

#include <vector>

#include "contract/video_frame.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/picture.h"

namespace kelmora::reference {

/// As the host answers for them, normalised.
struct ColorMeltKnobs {
    float soften = 0, fog = 0, brightness = 0, color = 0, tempo = 0, crossFade = 0;
};

/// A host's progress as the melt takes it: 0 to 1, not-a-number counts as 0.
float MeltProgress(double progress);

/// How strong the melt is at `progress`: 0 at the ends, 1 in the middle. Not-a-number counts as 0.
float MeltAmount(double progress, float tempo);

/// Taps of the blur. Bytes have two at least, floats one.
int MeltTaps(float soften, int height, float amount, bool floats);

/// What the colour work multiplies saturation by, and the level that it pulls the value to (55 to 255).
double MeltSaturationGain(float color, float amount);
double MeltTarget(float brightness);

/// The dissolve of two pictures: the first alone up to where the fade begins, the second alone behind its end.
/// A `crossFade` of 0 cuts.
/// position   0 to 1
struct Dissolve {
    enum Kind { First, Second, Both } kind = First;
    double position = 0;
};
Dissolve MeltDissolve(float progress, float crossFade);

/// The edge step of the melt, alpha along with the colours. `fog` is what the host answered.
EdgePixel LiftAllByte(const EdgePixel& picture, const EdgePixel& blurred, float fog);
EdgePixel LiftAllFloat(const EdgePixel& picture, const EdgePixel& blurred, float fog);

/// A frame of the melt in numbers.
struct MeltNumbers {
    float amount;
    double gain, target; ///< see MeltSaturationGain and MeltTarget
    float fog;
};

/// What becomes of the mix and its blur: the blur's colours are driven, the edge step lets the mix show, and the
/// result is dissolved with the mix. All in the format of `keep`.
/// sway   see below
Picture MeltedPicture(const Picture& keep, const Picture& blurred, const MeltNumbers& melt,
                      std::vector<double>* sway = nullptr);

/// Color Melt, step by step, into `output`'s memory, whose format counts as the first picture's. Records of
/// one of the four picture formats; a second picture that is missing or has other pixels gives nothing.
/// sway   where given, floats: for each value, row after row, how far it moves when the blur under it moves
///        by a few roundings. Dark colours are stretched to bright ones, and hues turn over near grey, so that
///        a blur's last bit may show.
void ColorMelt(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
               const ColorMeltKnobs& knobs, double progress, std::vector<double>* sway = nullptr);

} // namespace kelmora::reference
