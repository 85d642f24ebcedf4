// Writes the manifest of an effect's float pictures:
// make_float_golden air_brush > tests/golden/air_brush_float.txt
// The order in which floats are summed is the library's own choice, so the hashes are the library's.

#include <cstdio>
#include <string>

#include "tests/golden/effect_presets.h"
#include "tests/golden/golden_cases.h"
#include "tests/golden/golden_render.h"

int main(int count, char** arguments)
{
    using namespace kelmora;
    const std::string effect = count == 2 ? arguments[1] : "";
    if (!EffectRowOf(effect)) {
        std::fputs("usage: make_float_golden NAME > tests/golden/NAME_float.txt\n", stderr);
        return 2;
    }
    const std::string comment = "# make_float_golden " + effect + " > tests/golden/" + effect
        + "_float.txt: made by the library itself. The rounding of float sums is our own choice; it must be "
          "the same in every build.\n";
    const std::string text = ManifestText(comment, GoldenCases(effect, true), [&](const GoldenCase& one) {
        return HexDigest(Digest(RenderCase(effect, one)));
    });
    std::fwrite(text.data(), 1, text.size(), stdout);
}
