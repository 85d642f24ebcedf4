#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "contract/param_tool_tip.h"
#include "host/checks/check.h"
#include "host/held.h"

namespace kelmora::host {
namespace {

/// A record between marked bytes, filled with one byte before it is handed in.
template <class Record>
class MarkedRecord {
public:
    explicit MarkedRecord(std::uint8_t fill)
    {
        m_bytes.fill(kMark);
        std::memset(Get(), fill, sizeof(Record));
    }

    Record* Get() { return reinterpret_cast<Record*>(m_bytes.data() + kMargin); }
    std::uint8_t Byte(std::size_t offset) const { return m_bytes[kMargin + offset]; }

    bool AreMarksIntact() const
    {
        const auto isMark = [](std::uint8_t byte) { return byte == kMark; };
        return std::all_of(m_bytes.begin(), m_bytes.begin() + kMargin, isMark)
            && std::all_of(m_bytes.end() - kMargin, m_bytes.end(), isMark);
    }

    bool IsAll(std::uint8_t byte) const
    {
        return std::all_of(m_bytes.begin() + kMargin, m_bytes.end() - kMargin,
                           [byte](std::uint8_t one) { return one == byte; });
    }

private:
    static constexpr std::uint8_t kMark = 0x5C;
    static constexpr std::size_t kMargin = 64;
    alignas(Record) std::array<std::uint8_t, sizeof(Record) + 2 * kMargin> m_bytes;
};

constexpr std::uint8_t kFill = 0xCC;

std::string KnobText(std::size_t knob)
{
    return "knob " + std::to_string(knob) + " ";
}

bool IsAscii(const std::string& text)
{
    return !text.empty()
        && std::all_of(text.begin(), text.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

/// Tries the effect's answers for indices that it does not have.
void LookPastEnd(CheckRun& run, IVideoEffect& effect, const EffectFace& face, std::uint32_t past)
{
    const std::string at = " at index " + std::to_string(past);
    MarkedRecord<ParamInfo> info(kFill);
    run.Expect(!effect.GetParamInfo(past, info.Get()), "GetParamInfo should say false" + at);
    run.Expect(info.IsAll(kFill) || info.IsAll(0), "GetParamInfo should write nothing" + at);
    run.Expect(info.AreMarksIntact(), "GetParamInfo should stay in the record" + at);
    run.Expect(effect.GetPresetName(past) == nullptr, "GetPresetName should give null" + at);

    const auto knobs = static_cast<std::uint32_t>(face.knobs.size());
    MarkedRecord<ParamValue> value(kFill);
    run.Expect(!effect.GetPresetValue(past, 0, value.Get()),
               "GetPresetValue should say false for the preset" + at);
    if (!face.presets.empty() && past >= knobs)
        run.Expect(!effect.GetPresetValue(0, past, value.Get()),
                   "GetPresetValue should say false for the knob" + at);
    run.Expect(value.IsAll(kFill) && value.AreMarksIntact(), "GetPresetValue should write nothing" + at);
}

bool IsSameWalk(const EffectFace& a, const EffectFace& b)
{
    const auto isSameKnob = [](const Knob& one, const Knob& other) {
        return one.name == other.name && one.kind == other.kind;
    };
    const auto isSamePreset = [](const Preset& one, const Preset& other) { return one.name == other.name; };
    return std::equal(a.knobs.begin(), a.knobs.end(), b.knobs.begin(), b.knobs.end(), isSameKnob)
        && std::equal(a.presets.begin(), a.presets.end(), b.presets.begin(), b.presets.end(), isSamePreset);
}

void WalkEnds(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        run.Expect(!face.knobs.empty(), "an effect should have knobs");
        const auto knobs = static_cast<std::uint32_t>(face.knobs.size());
        const auto presets = static_cast<std::uint32_t>(face.presets.size());
        constexpr std::uint32_t kBeyond = 20;
        for (std::uint32_t i = 0; i < kBeyond; ++i) {
            ParamInfo info = {};
            run.Expect(!effect->GetParamInfo(knobs + i, &info), "a knob follows behind the last one");
            run.Expect(effect->GetPresetName(presets + i) == nullptr, "a preset follows behind the last one");
        }
        for (int walk = 0; walk < 2; ++walk)
            run.Expect(IsSameWalk(ReadFace(face.number, *effect), face), "every walk should find the same");
    });
}

void IndexFarPastEnd(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        std::vector<std::uint32_t> indices = {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0x10000u};
        std::mt19937 engine(run.Seed());
        for (int i = 0; i < 1000; ++i)
            indices.push_back(static_cast<std::uint32_t>(engine()) | kMostPresets);
        for (const std::uint32_t index : indices)
            LookPastEnd(run, *effect, face, index);
        run.Expect(!effect->GetPresetValue(0, 0, nullptr), "GetPresetValue should say false without a place");

        void* view = nullptr;
        if (effect->QueryInterface(&IParamToolTip::id, &view) == S_OK) {
            const Held<IParamToolTip> tips(static_cast<IParamToolTip*>(view));
            for (const std::uint32_t index : indices)
                run.Expect(tips->GetToolTip(index) == nullptr, "GetToolTip should give null past the end");
        }
    });
}

void NamesFit(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        run.Expect(IsAscii(face.name), "the effect's name should be ASCII");
        run.Expect(face.name.size() < PresetData::kNameBytes,
                   "the effect's name should fit into a saved preset");
        for (const Preset& preset : face.presets)
            run.Expect(IsAscii(preset.name), "the name of every preset should be ASCII");
        for (std::uint32_t knob = 0; knob < face.knobs.size(); ++knob) {
            MarkedRecord<ParamInfo> marked(kFill); // a name without its end mark runs on into the marks
            ParamInfo& info = *marked.Get();
            effect->GetParamInfo(knob, &info);
            run.Expect(IsAscii(FieldText(info.name)), KnobText(knob) + "should have a name in ASCII");
            run.Expect(FieldText(info.name).size() < sizeof info.name,
                       KnobText(knob) + "should have an end to its name");
            for (std::size_t i = 0; i < face.knobs[knob].choices.size(); ++i) {
                const auto& name = info.choice.choiceNames[i];
                run.Expect(IsAscii(FieldText(name)), KnobText(knob) + "should name its choices in ASCII");
                run.Expect(FieldText(name).size() < sizeof name,
                           KnobText(knob) + "should end its choices' names");
            }
        }
    });
}

void RecordsAreFilled(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (std::uint32_t knob = 0; knob < face.knobs.size(); ++knob) {
            ParamInfo info = {};
            effect->GetParamInfo(knob, &info);
            run.Expect(info.kind <= ParamCheck, KnobText(knob) + "should have a kind that hosts know");
            run.Expect(info.shown == 1, KnobText(knob) + "should be shown");
            run.Expect(info.rect.width > 0 && info.rect.height > 0,
                       KnobText(knob) + "should have a size in the panel");
            if (info.kind == ParamChoice) {
                const bool isCount = info.choice.choiceCount >= 1 && info.choice.choiceCount <= 10;
                run.Expect(isCount, KnobText(knob) + "should have 1 to 10 choices");
            }
            if (info.kind == ParamFloat) {
                run.Expect(info.scale.hostFlag <= 1, KnobText(knob) + "should have a hostFlag of 0 or 1");
                run.Expect(info.scale.angular <= 1, KnobText(knob) + "should be angular, 1, or not, 0");
                run.Expect(info.scale.min < info.scale.max && std::isfinite(info.scale.min)
                               && std::isfinite(info.scale.max),
                           KnobText(knob) + "should have a scale with a lower and an upper end");
            }
        }
    });
}

/// Whether a knob of `kind` has a field at `offset` of its record.
bool HasField(std::uint32_t kind, std::size_t offset)
{
    if (offset >= offsetof(ParamInfo, reserved))
        return false;
    if (offset < offsetof(ParamInfo, scale) || offset >= offsetof(ParamInfo, name))
        return true;
    constexpr std::size_t kScaleEnd = offsetof(ParamInfo, scale) + offsetof(ParamScale, angular) + 1;
    return kind == ParamChoice || (kind == ParamFloat && offset < kScaleEnd);
}

void UntouchedFieldsStay(CheckRun& run)
{
    constexpr std::array<std::uint8_t, 3> kFills = {0x00, kFill, 0x33};
    ForEachEffect(run, [&run, &kFills](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (std::uint32_t knob = 0; knob < face.knobs.size(); ++knob) {
            std::array records = {MarkedRecord<ParamInfo>(kFills[0]), MarkedRecord<ParamInfo>(kFills[1]),
                                  MarkedRecord<ParamInfo>(kFills[2])};
            for (MarkedRecord<ParamInfo>& record : records) {
                effect->GetParamInfo(knob, record.Get());
                run.Expect(record.AreMarksIntact(), KnobText(knob) + "is written past its record");
            }
            for (std::size_t i = 0; i < sizeof(ParamInfo); ++i) {
                const std::array bytes = {records[0].Byte(i), records[1].Byte(i), records[2].Byte(i)};
                const bool isUntouched = bytes == kFills;
                const bool isWritten = bytes[0] == bytes[1] && bytes[1] == bytes[2];
                // Some effects clear the whole record first, so a zero is as good as no touch.
                const bool mayWrite = HasField(face.knobs[knob].kind, i) || bytes[0] == 0;
                run.Expect(isUntouched || (isWritten && mayWrite),
                           KnobText(knob) + "writes byte " + std::to_string(i)
                               + ", which it has no field for");
            }
        }
        for (std::uint32_t preset = 0; preset < face.presets.size(); ++preset) {
            for (std::uint32_t knob = 0; knob < face.knobs.size(); ++knob) {
                MarkedRecord<ParamValue> value(kFill);
                effect->GetPresetValue(preset, knob, value.Get());
                run.Expect(value.Get()->kind == 0xCCCCCCCCu, "GetPresetValue should leave the kind");
                run.Expect(value.AreMarksIntact(), "GetPresetValue should stay in the record");
            }
        }
    });
}

bool IsInRange(const Knob& knob, const ParamValue& value)
{
    const float level = WordFloat(value.value);
    switch (knob.kind) {
    case ParamFloat:
        return level >= 0.0f && level <= 1.0f;
    case ParamPoint:
        return std::isfinite(level) && std::isfinite(WordFloat(value.valueY));
    case ParamChoice:
        return value.value < knob.choices.size();
    case ParamColor:
        return value.value <= 0xFFFFFFu;
    case ParamCheck:
        break;
    }
    return true;
}

void PresetsInRange(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary&, const EffectFace& face) {
        for (std::size_t knob = 0; knob < face.knobs.size(); ++knob) {
            run.Expect(IsInRange(face.knobs[knob], face.knobs[knob].standard),
                       KnobText(knob) + "has a default out of its range");
            for (const Preset& preset : face.presets) {
                run.Expect(IsInRange(face.knobs[knob], preset.values[knob]),
                           "preset \"" + preset.name + "\" has knob " + std::to_string(knob)
                               + " out of its range");
            }
        }
    });
}

constexpr std::array kChecks = {
    Check{"knobs-walk-ends", "Walking the knobs and the presets comes to an end, the same each time.",
          WalkEnds},
    Check{"index-far-past-end", "Indices that are far too large are past the end and write nothing.",
          IndexFarPastEnd},
    Check{"names-fit-records", "Names are ASCII and end inside of their fields.", NamesFit},
    Check{"records-are-filled", "Every knob's record says what a host needs to show it.", RecordsAreFilled},
    Check{"untouched-fields-stay", "Fields that a knob does not have stay as the host left them.",
          UntouchedFieldsStay},
    Check{"presets-in-range", "Defaults and presets lie in the ranges of their knobs.", PresetsInRange},
};

} // namespace

constinit const std::span<const Check> kTableChecks = kChecks;

} // namespace kelmora::host
