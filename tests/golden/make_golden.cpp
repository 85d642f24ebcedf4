// Writes the manifest of an effect's byte pictures: make_golden air_brush > tests/golden/air_brush.txt
// The hashes are those of the plain, slow version of the effect. The library is not in this program.

#include <cstdio>
#include <cstring>
#include <string>

#include "tests/golden/golden_cases.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/detail_enhancer.h"
#include "tests/support/hash.h"

int main(int count, char** arguments)
{
    using namespace kelmora;
    const std::string effect = count == 2 ? arguments[1] : "";
    if (effect != "air_brush" && effect != "detail_enhancer") {
        std::fputs("usage: make_golden air_brush|detail_enhancer > tests/golden/NAME.txt\n", stderr);
        return 2;
    }
    const std::string comment = "# make_golden " + effect + " > tests/golden/" + effect
        + ".txt: the plain version's bytes, equal in every build.\n";
    const std::string text = ManifestText(comment, GoldenCases(effect, false), [&](const GoldenCase& one) {
        const GuardedPicture in = MakePicture(one.motif, one.width, one.height, one.format);
        GuardedPicture out(one.width, one.height, one.format);
        if (effect == "air_brush")
            reference::AirBrush(in.Frame(), out.Frame(), one.inner[0], one.inner[1]);
        else
            reference::DetailEnhancer(in.Frame(), out.Frame(), one.inner[0], one.inner[1], false);
        return HexDigest(Digest(out));
    });
    std::fwrite(text.data(), 1, text.size(), stdout);
}
