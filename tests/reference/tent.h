#pragma once

#include <cstdint>
#include <vector>

#include "tests/reference/picture.h"

namespace kelmora::reference {

/// The tent's whole weights: 1 2 3 2 1 for 5 taps, 1 2 2 1 for 4.
std::vector<int> TentWeights(int taps);

/// The sum of the whole weights.
int TentWeightSum(int taps);

/// The weights divided by their sum, in single precision.
std::vector<float> TentFractions(int taps);

/// What a tent blur over padded scratch pictures is asked for.
struct BlurSteps {
    int width = 0; ///< pixels at the top left of the source that are taken
    int height = 0;
    int tapsX = 1; ///< kernel sizes, 1 or more
    int tapsY = 1;
    int padX = 0; ///< what the scratch pictures are wider and higher by, at least 2 * (taps / 2)
    int padY = 0;
    bool truncate = false; ///< bytes: the alpha-first loops' division
    bool withAlpha = true;
    bool reverseChannels = false; ///< alpha-first pixels into an alpha-last destination
};

/// The blur, step by step: the picture at (tapsX / 2, tapsY / 2) in a zeroed scratch picture, its border
/// extended with margins of half a kernel plus two, a column pass into a second zeroed scratch picture, its
/// border extended, a row pass into `dst`. A border that cannot be extended stays as it is: zeros.
/// The scratch pictures have the format of `dst`. Values of `dst` that no step writes are kept.
/// Gives what the row pass gave: false, and `dst` untouched, when it had nothing to do.
bool PlainBlur(const Picture& src, Picture& dst, const BlurSteps& steps);

/// The same into a new zeroed picture of steps.width by steps.height in the source's format.
Picture PlainBlur(const Picture& src, const BlurSteps& steps);

/// ImageOps' smoothing on top of it: sizes truncated and cut to 100, padding of 2 * (taps / 2), alpha copied
/// afterwards unless `withAlpha`. `dst` has the same bytes per pixel as `src`. The result is the operation's.
/// inPlace   both are one picture, so that the alpha that is copied afterwards is the blurred one's own
bool PlainBlurOperation(const Picture& src, Picture& dst, float xSize, float ySize, bool withAlpha,
                        bool inPlace = false);

} // namespace kelmora::reference
