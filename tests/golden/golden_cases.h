#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/hash.h"
#include "tests/support/pictures.h"

namespace kelmora {

/// One line of a manifest before its hash is known.
struct GoldenCase {
    Motif motif;
    Motif second; ///< of the picture that a transition goes to
    std::int32_t width;
    std::int32_t height;
    std::uint32_t format;
    bool wrapped;             ///< made by the wrapper, else by the inner effect
    std::string preset;       ///< with the class before it: both have presets of the same names
    std::vector<float> knobs; ///< as the class's own host answers
    std::vector<float> inner; ///< what the inner effect reads
    double moment;            ///< a progress or a time

    /// "moving-64x48".
    std::string Picture() const;
};

/// The cases of the effect with this key ("air_brush"), in the order of the manifest. None for others.
/// floats  whether the float formats or the byte formats are asked for
std::vector<GoldenCase> GoldenCases(std::string_view effect, bool floats);

/// A moment as manifests have it: "0", "0.25".
std::string MomentText(double moment);

/// A manifest's text: its comment, then a line for each case with the hash that `render` gives.
template <class Render>
std::string ManifestText(std::string_view comment, const std::vector<GoldenCase>& cases, Render&& render)
{
    std::string text(comment);
    for (const GoldenCase& one : cases)
        text += one.Picture() + " " + std::string(FormatName(one.format)) + " " + one.preset + " "
            + MomentText(one.moment) + " " + render(one) + "\n";
    return text;
}

} // namespace kelmora
