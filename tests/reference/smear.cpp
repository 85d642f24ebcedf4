#include "tests/reference/smear.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/reference/air_brush.h"
#include "tests/reference/blends.h"
#include "tests/reference/copies.h"
#include "tests/reference/plain_transform.h"
#include "tests/reference/rounding.h"
#include "tests/reference/warp.h"

namespace kelmora::reference {
namespace {

/// A host's picture as copies find it, and as composites do: of BGRA8 their rows are a whole number of pixels
/// apart.
struct Source {
    Picture copied, composed;

    Source(const VideoFrame* frame, std::uint32_t format) : copied(0, 0, format), composed(0, 0, format)
    {
        if (!frame || !frame->data || frame->format != format || frame->pixelBytes != BytesOfPixel(format))
            return;
        const Rows rows(*frame);
        copied = composed = ReadRows(rows);
        for (int y = 0; y < rows.height && format == PF_BGRA8; ++y)
            for (int x = 0; x < rows.width; ++x)
                for (int c = 0; c < 4; ++c)
                    composed.At(x, y, c) = ValueAt(rows.AtWhole(x, y), c, false);
    }
};

/// The picture laid over itself, each time twice as far off. `passing` is what the warps go through.
void Double(Picture& picture, Picture& passing, const Streak& streak, float sense, float angle)
{
    float step = sense * streak.step;
    for (int i = 0; i < streak.doublings; ++i, step *= 2) {
        Fill(passing, 0);
        PlainTransform move;
        move.Rotate(angle);
        move.Translate(step, 0);
        move.Rotate(-angle);
        WarpAffine(picture, passing, move.m);
        Mix(passing, picture, 128, 128);
    }
}

/// One picture's streaks on their background.
Picture Smeared(const Source (&clips)[2], bool second, const SmearKnobs& knobs, double progress, int width,
                int height)
{
    const Source& own = clips[second ? 1 : 0];
    Picture forward(width, height, own.copied.format), backward = forward, smeared = forward;
    const StreakLengths lengths = LengthsOf(knobs, width, second, progress);
    const auto angle = static_cast<float>(static_cast<double>(knobs.angle) * 3.141592502593994 * 2);
    CopyRect(own.copied, 0, 0, own.copied.width, own.copied.height, forward, 0, 0);
    Double(forward, smeared, StreakOf(lengths.forward), 1, angle);
    CopyRect(own.copied, 0, 0, own.copied.width, own.copied.height, backward, 0, 0);
    Double(backward, smeared, StreakOf(lengths.backward), -1, angle);

    const double q = RoundedToFloat(static_cast<double>(knobs.direction) * 255);
    const int u = TowardZero(255 - q), v = TowardZero(q);
    Mix(backward, forward, second ? u : v, second ? v : u);
    switch (knobs.background) {
    case 0:
    case 1:
        AlphaOver(forward, clips[knobs.background].composed, smeared, true);
        break;
    case 2:
        CopyRect(forward, 0, 0, width, height, smeared, 0, 0);
        break;
    case 3:
        AlphaOver(forward, own.composed, smeared, true);
        break;
    default:
        Fill(smeared, 0);
    }
    return smeared;
}

} // namespace

Streak StreakOf(double length)
{
    const double log = RoundedToFloat(std::log(std::max(length, 0.0) + 0.5));
    const int doublings = std::clamp(TowardZero(log / RoundedToFloat(std::log(2.0))), -1, 30);
    return {std::max(doublings, 0), static_cast<float>(std::ldexp(std::max(length, 0.0), -doublings - 1))};
}

StreakLengths LengthsOf(const SmearKnobs& knobs, int width, bool second, double progress)
{
    const double m = static_cast<double>(knobs.crossFade) * 0.5 + 0.5, threshold = second ? 1 - m : m;
    double share = 1;
    if (!second && threshold > progress)
        share = progress / threshold;
    else if (second && progress > threshold)
        share = (1 - progress) / (1 - threshold);
    const double reach = width * static_cast<double>(knobs.blur);
    const double distance = RoundedToFloat((reach + reach) * share);
    const double part = static_cast<double>(knobs.direction) * distance;
    const double forward = second ? part : distance - part;
    return {forward, distance - forward};
}

void Smear(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
           const SmearKnobs& knobs, const SmearMoment& moment)
{
    const Rows in(firstPicture), out(output);
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const double p = moment.progress > 0 ? std::min(moment.progress, 1.0) : 0;
    const Source clips[2] = {{&firstPicture, in.format}, {secondPicture, in.format}};
    Rows target = out;
    target.format = in.format;
    Picture result(width, height, in.format);
    CopyRect(ReadRows(target), 0, 0, width, height, result, 0, 0);

    const double c = static_cast<double>(knobs.crossFade), begin = 0.5 - c * 0.5;
    const auto show = [&](bool second, bool hasMemory) {
        if (hasMemory)
            CopyRect(Smeared(clips, second, knobs, p, width, height), 0, 0, width, height, result, 0, 0);
    };
    if (p < begin) {
        show(false, moment.firstHasMemory);
    } else if (p > begin + c) {
        show(true, moment.secondHasMemory);
    } else {
        show(false, moment.firstHasMemory);
        // Nothing over nothing where there is no fade; neither picture has a weight then.
        const double t = c == 0 ? std::numeric_limits<double>::quiet_NaN() : (p - begin) / c;
        const double q = RoundedToFloat(t * 255);
        if (moment.secondHasMemory)
            Mix(Smeared(clips, true, knobs, p, width, height), result, TowardZero(q), TowardZero(255 - q));
    }
    WriteRows(result, target);
}

} // namespace kelmora::reference
