#include "tests/golden/golden_cases.h"

#include <span>
#include <sstream>

#include "tests/golden/effect_presets.h"

namespace kelmora {
namespace {

struct PictureCase {
    Motif motif, second;
    std::int32_t width, height;
};

// Effects with several moments for each picture have one size for each motif.
constexpr PictureCase kStillPictures[] = {
    {Motif::Moving, Motif::Moving, 64, 48},
    {Motif::Moving, Motif::Moving, 61, 47},
    {Motif::AlphaRamp, Motif::AlphaRamp, 64, 48},
    {Motif::AlphaRamp, Motif::AlphaRamp, 61, 47},
};
constexpr PictureCase kMovedPictures[] = {
    {Motif::Moving, Motif::SoftEdges, 64, 48},
    {Motif::AlphaRamp, Motif::Moving, 61, 47},
};

constexpr double kOneMoment[] = {0.0};
constexpr double kProgressMoments[] = {0.25, 0.5, 0.8};
constexpr double kTimeMoments[] = {0.3, 4.7, 61.9};

std::span<const double> MomentsOf(const EffectRow& effect)
{
    switch (effect.moments) {
    case Moments::OfProgress:
        return kProgressMoments;
    case Moments::OfTime:
        return kTimeMoments;
    default:
        return kOneMoment;
    }
}

void AddPresets(std::vector<GoldenCase>& cases, const EffectRow& effect, bool wrapped,
                const PictureCase& picture, std::uint32_t format)
{
    const std::size_t knobCount = wrapped ? effect.wrapperKnobs : effect.answers.size();
    for (const PresetRow& preset : wrapped ? effect.wrapperPresets : effect.innerPresets) {
        const std::vector<float> knobs = ValuesOf(preset, knobCount);
        const std::vector<float> inner = wrapped ? InnerKnobs(effect, knobs) : knobs;
        const std::string name =
            std::string(wrapped ? effect.wrapperClass : effect.innerClass) + ": " + preset.name;
        for (const double moment : MomentsOf(effect))
            cases.push_back({picture.motif, picture.second, picture.width, picture.height, format, wrapped,
                             name, knobs, inner, moment});
    }
}

} // namespace

std::string GoldenCase::Picture() const
{
    return std::string(Name(motif)) + "-" + std::to_string(width) + "x" + std::to_string(height);
}

std::vector<GoldenCase> GoldenCases(std::string_view effect, bool floats)
{
    std::vector<GoldenCase> cases;
    const EffectRow* const row = EffectRowOf(effect);
    if (!row)
        return cases;
    const std::span<const PictureCase> pictures = row->moments == Moments::One
        ? std::span<const PictureCase>(kStillPictures)
        : std::span<const PictureCase>(kMovedPictures);
    for (const PictureCase& picture : pictures)
        for (const std::uint32_t format : kPictureFormats)
            if (IsFloatFormat(format) == floats)
                for (const bool wrapped : {false, true})
                    AddPresets(cases, *row, wrapped, picture, format);
    return cases;
}

std::string MomentText(double moment)
{
    std::ostringstream text;
    text << moment;
    return text.str();
}

} // namespace kelmora
