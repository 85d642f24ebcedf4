#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <sstream>
#include <vector>

#include "tests/effects/render.h"
#include "tests/support/pictures.h"

namespace kelmora {

/// A picture and an output of one format for a random case. Page guards find reads outside of the rows.
inline PictureLayout RandomLayout(std::mt19937& random, std::uint32_t format)
{
    PictureLayout layout;
    constexpr Guard guards[] = {Guard::Moat, Guard::PageEnd, Guard::PageStart};
    layout.guard = guards[random() % 3];
    if (layout.guard == Guard::Moat)
        layout.slack = static_cast<std::int32_t>(random() % 3) * BytesOfPixel(format);
    layout.bottomUp = random() % 2 != 0;
    return layout;
}

/// Noise or a motif.
inline void FillAnyhow(GuardedPicture& picture, std::mt19937& random)
{
    if (const auto kind = random() % 10; kind < 7)
        Draw(picture, kAllMotifs[kind]);
    else
        picture.FillNoise(static_cast<std::uint32_t>(random()), kind == 7 ? Noise::Leaning : Noise::Uniform);
}

/// Renders one case, with noise or a motif, and compares it with the plain version.
inline void CompareCase(EffectClass which, std::uint32_t format, std::int32_t width, std::int32_t height,
                        std::int32_t outWidth, std::int32_t outHeight, const std::vector<float>& levels,
                        bool halfHeight, std::mt19937& random)
{
    std::ostringstream text;
    text << FormatName(format) << ", " << width << " x " << height << " into " << outWidth << " x "
         << outHeight << (halfHeight ? ", field" : "") << ", knobs";
    for (const float level : levels)
        text << " " << level;
    SCOPED_TRACE(text.str());

    PictureLayout inLayout = RandomLayout(random, format), outLayout = RandomLayout(random, format);
    inLayout.upward = outLayout.upward = random() % 4 == 0;
    GuardedPicture in(width, height, format, inLayout);
    FillAnyhow(in, random);
    GuardedPicture out(outWidth, outHeight, format, outLayout);
    out.FillNoise(static_cast<std::uint32_t>(random()));
    const GuardedPicture before = out;

    in.Freeze();
    RenderFresh(which, levels, in, out, halfHeight);
    in.Check();
    out.Check();
    EXPECT_TRUE(AsPlain(which, levels, in, before, out, halfHeight));
    if (!outLayout.upward) {
        EXPECT_TRUE(SameOutside(out, before, std::min(width, outWidth), std::min(height, outHeight)));
    }
}

/// The sizes of a transition's pictures.
struct TransitionSizes {
    std::int32_t width, height, secondWidth, secondHeight, outWidth, outHeight;
};

/// Up to `widest` by `highest` pixels, half of the time the same for all three.
inline TransitionSizes RandomSizes(std::mt19937& random, std::uint32_t widest, std::uint32_t highest)
{
    const auto upTo = [&](std::uint32_t most) { return static_cast<std::int32_t>(random() % most + 1); };
    TransitionSizes sizes = {upTo(widest),  upTo(highest), upTo(widest),
                             upTo(highest), upTo(widest),  upTo(highest)};
    if (random() % 2 != 0) {
        sizes.secondWidth = sizes.outWidth = sizes.width;
        sizes.secondHeight = sizes.outHeight = sizes.height;
    }
    return sizes;
}

/// The same for a transition, with pictures of one format.
inline void CompareTransition(EffectClass which, std::uint32_t format, const TransitionSizes& sizes,
                              const std::vector<float>& levels, double progress, bool halfHeight,
                              std::mt19937& random)
{
    std::ostringstream text;
    text << FormatName(format) << ", " << sizes.width << " x " << sizes.height << " to " << sizes.secondWidth
         << " x " << sizes.secondHeight << " in " << sizes.outWidth << " x " << sizes.outHeight << " at "
         << progress << (halfHeight ? ", field" : "") << ", knobs";
    for (const float level : levels)
        text << " " << level;
    SCOPED_TRACE(text.str());

    PictureLayout layouts[3] = {RandomLayout(random, format), RandomLayout(random, format),
                                RandomLayout(random, format)};
    layouts[0].upward = layouts[1].upward = layouts[2].upward = random() % 4 == 0;
    GuardedPicture in(sizes.width, sizes.height, format, layouts[0]);
    GuardedPicture second(sizes.secondWidth, sizes.secondHeight, format, layouts[1]);
    GuardedPicture out(sizes.outWidth, sizes.outHeight, format, layouts[2]);
    FillAnyhow(in, random);
    FillAnyhow(second, random);
    out.FillNoise(static_cast<std::uint32_t>(random()));
    const GuardedPicture before = out;

    in.Freeze();
    second.Freeze();
    Moment moment;
    moment.second = &second;
    moment.progress = progress;
    moment.halfHeight = halfHeight;
    RenderFresh(which, levels, moment, in, out);
    in.Check();
    second.Check();
    out.Check();
    EXPECT_TRUE(AsPlain(which, levels, moment, in, before, out));
    if (!layouts[2].upward && !IsScene(which)) {
        EXPECT_TRUE(SameOutside(out, before, std::min(sizes.width, sizes.outWidth),
                                std::min(sizes.height, sizes.outHeight)));
    }
}

} // namespace kelmora
