// Writes the manifest of an effect's byte pictures: make_golden air_brush > tests/golden/air_brush.txt
// The hashes are those of the plain, slow version of the effect. Of the library the scenes' geometry alone is used.

#include <cstdio>
#include <string>

#include "tests/golden/effect_presets.h"
#include "tests/golden/golden_cases.h"
#include "tests/reference/active_camera.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/color_melt.h"
#include "tests/reference/confetti.h"
#include "tests/reference/crop_borders.h"
#include "tests/reference/detail_enhancer.h"
#include "tests/reference/paper_collage.h"
#include "tests/reference/pixelator.h"
#include "tests/reference/pizza_boxes.h"
#include "tests/reference/smear.h"
#include "tests/reference/water_color.h"

namespace kelmora {
namespace {

void RenderPlain(const std::string& effect, const GoldenCase& one, const VideoFrame& in,
                 const VideoFrame& second, const VideoFrame& out)
{
    const std::vector<float>& k = one.inner;
    const auto whole = [&](std::size_t i) { return static_cast<std::uint32_t>(k.at(i)); };
    if (effect == "air_brush")
        reference::AirBrush(in, out, k.at(0), k.at(1));
    else if (effect == "detail_enhancer")
        reference::DetailEnhancer(in, out, k.at(0), k.at(1), false);
    else if (effect == "water_color")
        reference::WaterColor(in, out, {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5)}, false);
    else if (effect == "color_melt")
        reference::ColorMelt(in, &second, out, {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5)},
                             one.moment);
    else if (effect == "smear")
        reference::Smear(in, &second, out, {k.at(0), k.at(1), k.at(2), k.at(3), whole(4)},
                         {.progress = one.moment});
    else if (effect == "active_camera")
        reference::ActiveCamera(
            in, out, {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5), k.at(6), k.at(7), whole(8) != 0},
            {one.moment});
    else if (effect == "pixelator")
        reference::Pixelator(in, out, {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4)}, false);
    else if (effect == "crop_borders")
        reference::CropBorders(in, out, {k.at(0), k.at(1), k.at(2), whole(3)}, false);
    else if (effect == "confetti")
        reference::Confetti(
            in, &second, out,
            {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5), whole(6) != 0, whole(7) != 0},
            {one.moment});
    else if (effect == "pizza_boxes")
        reference::PizzaBoxes(in, &second, out,
                              {k.at(0), k.at(1), k.at(2), k.at(3), whole(4), whole(5) != 0, whole(6) != 0,
                               whole(7) != 0, k.at(8), k.at(9), whole(10)},
                              {one.moment});
    else
        reference::PaperCollage(
            in, second, out,
            {k.at(0), k.at(1), k.at(2), whole(3), whole(4), k.at(5), k.at(6), k.at(7), k.at(8), k.at(9)},
            one.moment, false);
}

} // namespace
} // namespace kelmora

int main(int count, char** arguments)
{
    using namespace kelmora;
    const std::string effect = count == 2 ? arguments[1] : "";
    if (!EffectRowOf(effect)) {
        std::fputs("usage: make_golden NAME > tests/golden/NAME.txt\n", stderr);
        return 2;
    }
    const std::string comment = "# make_golden " + effect + " > tests/golden/" + effect
        + ".txt: the plain version's bytes, equal in every build.\n";
    const std::string text = ManifestText(comment, GoldenCases(effect, false), [&](const GoldenCase& one) {
        const GuardedPicture in = MakePicture(one.motif, one.width, one.height, one.format);
        const GuardedPicture second = MakePicture(one.second, one.width, one.height, one.format);
        GuardedPicture out(one.width, one.height, one.format);
        RenderPlain(effect, one, in.Frame(), second.Frame(), out.Frame());
        return HexDigest(Digest(out));
    });
    std::fwrite(text.data(), 1, text.size(), stdout);
}
