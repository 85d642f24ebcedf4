#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "contract/video_frame.h"

namespace kelmora::reference {

/// As the host answers for them: normalised, and colours 0x00BBGGRR.
struct PaperCollageKnobs {
    float rounding = 0, layers = 0, balance = 0;
    std::uint32_t foreground = 0, background = 0;
    float blendColors = 0, shadow = 0, angle = 0, tempo = 0, crossFade = 0;
};

/// How far the collage is in, and the position of the dissolve, 0 to 1 each.
struct PaperCurve {
    float amount = 0, fade = 0;
};
PaperCurve CrossfadeCurve(double progress, float crossFade, float tempo);

/// 2 to 8 sheets for a knob of any number.
int PaperLayerCount(float layers);

/// The grey level of each sheet.
std::vector<int> PaperLevels(int count);

/// From grey to level, after the balance.
std::array<int, 256> PaperTable(int count, float balance);

/// The grey that falls on the middle of the levels: 12 to 242 for knobs from 0 to 1.
int BalancePoint(float balance);

/// a and b by k and 255 - k, one level short of either.
int PaperColorMix(int a, int b, int k);

/// The grey of a colour, in single precision.
int PaperGrey(int blue, int green, int red);

/// Paper Collage, step by step, every sheet a composite of whole pictures, into `output`'s memory. The three
/// records are of one picture format.
/// hasSheets   false as when there is no memory for the sheets: the grey that they are cut from stays
void PaperCollage(const VideoFrame& firstPicture, const VideoFrame& secondPicture, const VideoFrame& output,
                  const PaperCollageKnobs& knobs, double progress, bool halfHeight, bool hasSheets = true);

} // namespace kelmora::reference
