// The command line, a word a line: arguments, settings, keyframes and names of any text. No fault, nothing but what
// the arguments may be comes through, and a value that was read is written so that it reads back the same. No file is
// touched.

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "contract/effect_library.h"
#include "fuzz/input.h"
#include "host/arguments.h"
#include "host/clip_timeline.h"
#include "host/clips/clip_kind.h"
#include "host/commands/frame_choice.h"
#include "host/effect_face.h"
#include "host/keyframes.h"
#include "host/knob_value.h"
#include "host/names.h"
#include "library/effect_numbers.h"

namespace kelmora::fuzz {
namespace {

using namespace host;

/// The faces of all effects.
const std::vector<EffectFace>& Faces()
{
    static const std::vector<EffectFace> faces = [] {
        std::vector<EffectFace> all;
        for (std::int32_t number = Effect3DConfetti; number <= EffectWaterColor; ++number) {
            IVideoEffect* const effect = CreateEffectOfNumber(number);
            all.push_back(ReadFace(number, *effect));
            effect->Release();
        }
        return all;
    }();
    return faces;
}

/// The effect that is meant, or the first one.
const EffectFace& FaceOf(const std::string& asked)
{
    std::vector<std::string> names;
    for (const EffectFace& face : Faces())
        names.push_back(face.name);
    const auto found = FindName(names, asked);
    Require(!UnknownName("effect", asked, names, "").empty());
    return Faces()[found.value_or(0)];
}

bool IsWithin(float level)
{
    return level >= 0.0f && level <= 1.0f;
}

/// What every value of a knob is.
void RequireFits(const Knob& knob, const ParamValue& value)
{
    Require(value.kind == static_cast<std::uint32_t>(knob.kind));
    if (knob.kind == ParamFloat)
        Require(IsWithin(WordFloat(value.value)));
    if (knob.kind == ParamChoice)
        Require(value.value < knob.choices.size());
    if (knob.kind == ParamColor)
        Require(value.value <= 0xFFFFFF);
}

/// What a text gives to a knob; nothing where it is no value.
std::optional<ParamValue> ValueOf(const Knob& knob, const std::string& text)
{
    try {
        return ParseValue(knob, text);
    } catch (const Failure& failure) {
        Require(failure.Code() == ExitCode::Usage);
        return std::nullopt;
    }
}

void ReadValue(const Knob& knob, const std::string& text)
{
    const auto value = ValueOf(knob, text);
    if (!value)
        return;
    RequireFits(knob, *value);
    const auto again = ValueOf(knob, ValueText(knob, *value));
    Require(again && again->value == value->value && again->valueY == value->valueY);
    Require((knob.kind == ParamFloat) != ShownText(knob, *value).empty());
}

void ReadKeyframes(const Knob& knob, const std::string& text)
{
    try {
        const std::vector<Keyframe> keyframes = ParseKeyframes(knob, text);
        Require(!keyframes.empty());
        for (std::size_t i = 0; i < keyframes.size(); ++i) {
            Require(std::isfinite(keyframes[i].seconds) && keyframes[i].seconds >= 0.0);
            Require(i == 0 || keyframes[i - 1].seconds < keyframes[i].seconds);
            RequireFits(knob, ValueAt(keyframes, keyframes[i].seconds));
            RequireFits(knob, ValueAt(keyframes, keyframes[i].seconds * 1.25));
        }
    } catch (const Failure& failure) {
        Require(failure.Code() == ExitCode::Usage);
    }
}

/// A knob of each kind that there is.
const std::vector<Knob>& KnobsOfEachKind()
{
    static const std::vector<Knob> knobs = [] {
        std::vector<Knob> found;
        for (const EffectFace& face : Faces())
            for (const Knob& knob : face.knobs)
                if (std::none_of(found.begin(), found.end(),
                                 [&](const Knob& other) { return other.kind == knob.kind; }))
                    found.push_back(knob);
        found.push_back(found.front());
        found.back().kind = ParamPoint; // no effect has one; the contract does
        found.back().name = "Point";
        return found;
    }();
    return knobs;
}

/// Texts in the places where the command line has them.
void ReadWords(const std::vector<std::string>& words)
{
    FaceOf(words.front());
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const Knob& knob = KnobsOfEachKind()[(i + words.front().size()) % KnobsOfEachKind().size()];
        if (word.find('@') == std::string::npos)
            ReadValue(knob, word);
        else
            ReadKeyframes(knob, word);
        if (const auto seconds = ParseSeconds(word))
            Require(*seconds >= 0.0 && std::isfinite(*seconds));
        if (const auto range = ParseFrameRange(word))
            Require(range->first >= 0 && (!range->end || *range->end > range->first));
        if (const auto rate = ParseRate(word))
            Require(rate->over > 0 && rate->under > 0 && rate->Value() >= 0.001 && rate->Value() <= 1000.0);
        KindOfClip(word);
    }
}

/// What the settings make of an effect's knobs at a few moments.
void Settle(FrameArguments& frame)
{
    frame.presetFile.clear(); // it would be read
    const EffectFace& face = FaceOf(frame.effect);
    try {
        const KnobTimeline knobs = ChosenKnobs(face, frame);
        for (const double seconds : {0.0, 0.5, 1.0, frame.time, 1e300}) {
            const std::vector<ParamValue> values = knobs.At(seconds);
            Require(values.size() == face.knobs.size());
            for (std::size_t i = 0; i < values.size(); ++i)
                RequireFits(face.knobs[i], values[i]);
        }
        CheckPictureCount(face, frame);
    } catch (const Failure& failure) {
        Require(failure.Code() == ExitCode::Usage || failure.Code() == ExitCode::Unknown);
    }
}

// --- the commands -------------------------------------------------------------------------------------------

void RequireFrame(FrameArguments& frame)
{
    Require(frame.quality >= 1 && frame.quality <= 100);
    Require(std::isfinite(frame.time) && std::fabs(frame.time) <= 1e9);
    Require(!frame.library.empty());
    Settle(frame);
}

struct Checker {
    void operator()(const TextAnswer& answer) const { Require(!answer.text.empty()); }
    void operator()(const ListArguments& list) const { Require(!list.library.empty()); }
    void operator()(const DescribeArguments& describe) const { Require(!describe.library.empty()); }

    void operator()(RenderArguments& render) const
    {
        RequireFrame(render);
        Require(!render.progress || (*render.progress >= 0.0 && *render.progress <= 1.0));
        Require(!render.duration || (*render.duration >= 0.0 && std::isfinite(*render.duration)));
        Require(render.jobs >= 0 && render.jobs <= 256);
        Require(render.stream == ClipKind::Y4m || render.stream == ClipKind::Pam);
    }

    void operator()(SweepArguments& sweep) const
    {
        RequireFrame(sweep);
        Require(sweep.steps >= 2 && sweep.columns >= 0 && sweep.width >= 0);
    }

    void operator()(const GalleryArguments& gallery) const
    {
        Require(gallery.pictures.size() >= 2 && gallery.steps >= 2 && gallery.width >= 1);
        Require(gallery.quality >= 1 && gallery.quality <= 100);
    }

    void operator()(const CheckArguments& check) const { Require(!check.file.empty()); }

    void operator()(PresetsArguments& presets) const { Settle(presets.frame); }

    void operator()(const CompletionArguments&) const {}
    void operator()(const ManualArguments&) const {}
};

std::vector<std::string> Lines(std::string_view text)
{
    std::vector<std::string> lines;
    constexpr std::size_t most = 40;
    while (!text.empty() && lines.size() < most) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    const std::vector<std::string> words = fuzz::Lines({reinterpret_cast<const char*>(data), size});
    // To make a parser takes as long as to read a hundred words, so that not every text gets one.
    if (!words.empty() && words.front() == "kelmora") {
        auto command = host::ParseArguments({words.begin() + 1, words.end()});
        std::visit(fuzz::Checker(), command);
    } else if (!words.empty()) {
        fuzz::ReadWords(words);
    }
    return 0;
}
