#include "host/commands/describe.h"

#include <algorithm>
#include <iomanip>

#include "host/json_report.h"
#include "host/knob_value.h"
#include "host/library_file.h"

namespace kelmora::host {
namespace {

int Width(std::size_t longest)
{
    return static_cast<int>(longest);
}

void WriteKnob(std::size_t index, const Knob& knob, std::size_t nameWidth, std::ostream& out)
{
    out << std::right << std::setw(4) << index << "  " << std::left << std::setw(Width(nameWidth))
        << knob.name << "  " << std::setw(6) << KindText(knob.kind) << "  default "
        << ValueText(knob, knob.standard);
    if (knob.kind == ParamFloat) {
        out << ", shown as " << ShownText(knob, knob.standard) << " on " << FloatText(knob.min) << " to "
            << FloatText(knob.max) << (knob.angular ? ", an angle" : "");
    }
    for (std::size_t i = 0; i < knob.choices.size(); ++i)
        out << (i == 0 ? "; one of " : ", ") << knob.choices[i];
    out << "  [" << knob.rect.x << ", " << knob.rect.y << ", " << knob.rect.width << " x " << knob.rect.height
        << "]" << (knob.hostFlag != 0 ? "  hostFlag" : "") << '\n';
}

void WritePreset(const EffectFace& effect, const Preset& preset, std::size_t nameWidth, std::ostream& out)
{
    out << "  " << std::left << std::setw(Width(nameWidth)) << preset.name;
    for (std::size_t knob = 0; knob < effect.knobs.size(); ++knob) {
        out << "  " << effect.knobs[knob].name << "=" << ValueText(effect.knobs[knob], preset.values[knob]);
    }
    out << '\n';
}

template <class Entries>
std::size_t LongestName(const Entries& entries)
{
    std::size_t longest = 0;
    for (const auto& entry : entries)
        longest = std::max(longest, entry.name.size());
    return longest;
}

void WriteText(const EffectFace& effect, std::ostream& out)
{
    out << effect.number << "  " << effect.name << "  (" << effect.slug << "), "
        << (effect.pictures == 2 ? "two pictures" : "one picture") << ", help topic " << effect.helpId
        << "\n\n"
        << "Knobs\n";
    for (std::size_t knob = 0; knob < effect.knobs.size(); ++knob)
        WriteKnob(knob, effect.knobs[knob], LongestName(effect.knobs), out);
    out << "\nPresets\n";
    for (const Preset& preset : effect.presets)
        WritePreset(effect, preset, LongestName(effect.presets), out);

    out << "\nExample\n  kelmora render " << effect.slug << " in.png"
        << (effect.pictures == 2 ? " --to second.png" : "") << " -o out.png";
    if (!effect.presets.empty())
        out << " --preset \"" << effect.presets.front().name << "\"";
    if (!effect.knobs.empty()) {
        const Knob& knob = effect.knobs.front();
        out << " --set \"" << knob.name << "=" << ValueText(knob, knob.standard) << "\"";
    }
    out << '\n';
}

} // namespace

void RunDescribe(const DescribeArguments& arguments, std::ostream& out)
{
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::int32_t number = FindEffect(*library, arguments.effect);
    const EffectFace effect = ReadFace(number, *MakeEffect(*library, number));
    if (arguments.json)
        out << DescribeJson(effect);
    else
        WriteText(effect, out);
}

} // namespace kelmora::host
