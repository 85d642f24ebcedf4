#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "contract/video_effect.h"
#include "tests/effects/new_effect.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"

namespace kelmora {

/// What a frame is made from, besides the knobs and the first picture.
struct Moment {
    const GuardedPicture* second = nullptr; ///< the picture that a transition goes to
    double progress = 0.4;
    bool halfHeight = false;
    double time = 0.0;
    std::optional<double> pixelAspect = {};
};

/// How many levels the class's own host answers for: one for each knob, and two for a point.
std::size_t KnobCount(EffectClass which);

/// The first KnobCount levels of `levels` as a host keeps them; the level of a colour or a choice is its number,
/// that of a check box 0 or 1. Where there are fewer levels begin anew; colours are the face's own, choices those
/// with most steps, boxes are checked.
std::vector<ParamValue> Levels(EffectClass which, const std::vector<float>& levels);

/// A second picture where a test needs some: `in`, mirrored from left to right.
GuardedPicture Incoming(const GuardedPicture& in);

/// One render of `in` into `out`, watched: no call comes after the end, no reference is left, the records and
/// the render info stay as they were.
bool Render(IVideoEffect& effect, FakeHost& host, const Moment& moment, const GuardedPicture& in,
            GuardedPicture& out);

/// With Incoming's picture at a progress of 0.4.
bool Render(IVideoEffect& effect, FakeHost& host, const GuardedPicture& in, GuardedPicture& out,
            bool halfHeight = false);

/// Whether the effect succeeds with pictures of that size: Crop Borders has no border to soften in the smallest.
bool Succeeds(EffectClass which, const std::vector<float>& levels, std::int32_t width, std::int32_t height);

/// The same with a new object and a new host; the result must be that of Succeeds.
void RenderFresh(EffectClass which, const std::vector<float>& levels, const Moment& moment,
                 const GuardedPicture& in, GuardedPicture& out);
void RenderFresh(EffectClass which, const std::vector<float>& levels, const GuardedPicture& in,
                 GuardedPicture& out, bool halfHeight = false);

/// What the plain version cannot tell of its float results.
struct Doubts {
    std::vector<double> closeness; ///< Air Brush, for each pixel: of the two sides of its decision
    std::vector<double> sway;      ///< Color Melt, for each value: how far the blur's rounding moves it
};

/// What the plain version of the effect makes of `in` and the earlier `out`; `second`, which stands for the
/// moment's, may be null.
void RenderPlain(EffectClass which, const std::vector<float>& levels, const VideoFrame& in,
                 const VideoFrame* second, const VideoFrame& out, const Moment& moment,
                 Doubts* doubts = nullptr);

/// What may be left in the output when memory is refused, with Incoming's picture at a progress of 0.4: the picture, the
/// output as it stood, or what the steps before that have made; of a scene, what the pieces that had memory show.
std::vector<GuardedPicture> LeftWithoutMemory(EffectClass which, const std::vector<float>& levels,
                                              const GuardedPicture& in, const GuardedPicture& before,
                                              bool halfHeight = false);

/// For EXPECT_TRUE: `now` is what the plain version makes of `in` and `before`. Bytes are equal, and so are
/// the floats of effects that work in bytes or whose every rounding is settled.
///
/// Other floats lie within 16 units of 2^-24 of it, times the largest magnitude at hand where that is above
/// 1. The plain version weighs with fractions rounded to single precision (half a unit each way in each of
/// the two passes), the library with whole numbers; both round each pass once (two units in all), which the
/// edge step or the combination, with an amount of up to 2, passes on at most doubled; their own roundings add
/// six. Where Air Brush's edge step has two sides that are closer than that to each other, either of its
/// results may come out. In Color Melt, whose colour work stretches small differences, a value may move twice
/// as far again as the plain version's own does when its blur moves by six units.
testing::AssertionResult AsPlain(EffectClass which, const std::vector<float>& levels, const Moment& moment,
                                 const GuardedPicture& in, const GuardedPicture& before,
                                 const GuardedPicture& now);
testing::AssertionResult AsPlain(EffectClass which, const std::vector<float>& levels,
                                 const GuardedPicture& in, const GuardedPicture& before,
                                 const GuardedPicture& now, bool halfHeight = false);

} // namespace kelmora
