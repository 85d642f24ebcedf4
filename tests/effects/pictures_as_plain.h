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
    if (const auto kind = random() % 10; kind < 7)
        Draw(in, kAllMotifs[kind]);
    else
        in.FillNoise(static_cast<std::uint32_t>(random()), kind == 7 ? Noise::Leaning : Noise::Uniform);
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

} // namespace kelmora
