#include "tests/golden/golden_render.h"

#include "tests/effects/render.h"

namespace kelmora {

GuardedPicture RenderCase(std::string_view effect, const GoldenCase& one)
{
    const GuardedPicture in = MakePicture(one.motif, one.width, one.height, one.format);
    const GuardedPicture second = MakePicture(one.second, one.width, one.height, one.format);
    GuardedPicture out(one.width, one.height, one.format);
    for (const EffectClass which : kAllEffects) {
        if (KeyOf(which) != effect || (which != InnerOf(which)) != one.wrapped)
            continue;
        FakeHost host(Levels(which, one.knobs));
        Moment moment;
        moment.second = &second;
        (ClockOf(which) == Clock::Time ? moment.time : moment.progress) = one.moment;
        EXPECT_TRUE(Render(*NewEffect(which), host, moment, in, out));
    }
    return out;
}

} // namespace kelmora
