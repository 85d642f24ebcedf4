#include "tests/golden/golden_render.h"

#include "tests/effects/new_effect.h"
#include "tests/support/fake_host.h"
#include "tests/support/info.h"

namespace kelmora {

GuardedPicture RenderCase(std::string_view effect, const GoldenCase& one)
{
    GuardedPicture in = MakePicture(one.motif, one.width, one.height, one.format);
    GuardedPicture out(one.width, one.height, one.format);
    FakeHost host;
    for (std::size_t k = 0; k < one.knobs.size(); ++k)
        host.SetKnob(k, LevelKnob(one.knobs[k]));
    const HeldEffect object = NewEffect(
        effect == "air_brush" ? (one.wrapped ? EffectClass::WrapAirbrush : EffectClass::Airbrush)
                              : (one.wrapped ? EffectClass::WrapDetailEnhancer : EffectClass::UnsharpMask));
    VideoFrame first = in.Frame(), output = out.Frame();
    RenderInfo info = MakeInfo({});
    EXPECT_TRUE(object->Render(&host, &first, nullptr, &output, &info));
    return out;
}

} // namespace kelmora
