#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "contract/video_effect.h"
#include "tests/effects/new_effect.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/info.h"

namespace kelmora {

/// How many knobs the class's own host answers for.
std::size_t KnobCount(EffectClass which);

/// The first KnobCount levels of `levels` as a host keeps them.
std::vector<ParamValue> Levels(EffectClass which, const std::vector<float>& levels);

/// One render of `in` into `out`, watched: no call comes after the end, no reference is left, the records and
/// the render info stay as they were.
bool Render(IVideoEffect& effect, FakeHost& host, const GuardedPicture& in, GuardedPicture& out,
            bool halfHeight = false);

/// The same with a new object and a new host, which must give true.
void RenderFresh(EffectClass which, const std::vector<float>& levels, const GuardedPicture& in,
                 GuardedPicture& out, bool halfHeight = false);

/// What the plain version of the effect makes of `in` and the earlier `out`.
void RenderPlain(EffectClass which, const std::vector<float>& levels, const VideoFrame& in,
                 const VideoFrame& out, bool halfHeight, std::vector<double>* closeness = nullptr);

/// For EXPECT_TRUE: `now` is what the plain version makes of `in` and `before`. Bytes are equal.
///
/// Floats lie within 16 units of 2^-24 of it, times the largest magnitude at hand where that is above 1. The
/// plain version weighs with fractions rounded to single precision (half a unit each way in each of the two
/// passes), the library with whole numbers; both round each pass once (two units in all), which the edge step
/// or the combination, with an amount of up to 2, passes on at most doubled; their own roundings add six.
/// Where the edge step's two sides are closer than that to each other, either of its results may come out.
testing::AssertionResult AsPlain(EffectClass which, const std::vector<float>& levels,
                                 const GuardedPicture& in, const GuardedPicture& before,
                                 const GuardedPicture& now, bool halfHeight = false);

} // namespace kelmora
