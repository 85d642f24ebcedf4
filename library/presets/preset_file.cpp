#include "library/presets/preset_file.h"

#include "image/float_environment.h"
#include "library/presets/number_text.h"
#include "library/presets/xml_limits.h"
#include "platform/text.h"
#include "platform/text_file.h"

#include <algorithm>
#include <cstring>

#include <tinyxml.h>

namespace kelmora {
namespace {

constexpr char kTemplate[] = "<?xml version=\"1.0\"  standalone='no' >\n"
                             "<!-- Effect's Preset File -->\n"
                             "<Preset>\n"
                             "</Preset>";

// --- reading ------------------------------------------------------------------------------------------------

/// The text as the parser gets it: no byte-order mark, lines ended by a single line feed, and zeros behind its end,
/// past which the parser may look for the rest of a character.
std::string ReadyToParse(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    constexpr std::size_t zeros = 4;
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    std::string ready;
    ready.reserve(text.size() + zeros);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            ready += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            ready += '\n';
    }
    ready.append(zeros, '\0');
    return ready;
}

/// Names are narrow text, and the files do not say in which encoding. Taken for UTF-8, a letter of a code page
/// would swallow the quote behind it; so only what is UTF-8 is taken for that.
TiXmlEncoding EncodingOf(std::string_view text)
{
    return platform::Utf8ToUtf16(text, {}).whole ? TIXML_DEFAULT_ENCODING : TIXML_ENCODING_LEGACY;
}

void CopyName(const TiXmlElement& element, const char* attribute, char (&field)[PresetData::kNameBytes])
{
    const char* const value = element.Attribute(attribute);
    const std::size_t length = value ? std::min(std::strlen(value), sizeof field - 1) : 0;
    std::copy_n(value, length, field);
    field[length] = '\0';
}

/// Calls `use` with the text of an attribute, if the element has it.
template <class Use>
void WithAttribute(const TiXmlElement& element, const char* attribute, Use use)
{
    if (const char* const value = element.Attribute(attribute))
        use(std::string_view(value));
}

/// Reads the words of an entry that its element has.
void ReadEntry(const TiXmlElement& element, ParamValue& entry)
{
    entry.kind = ParamPoint;
    WithAttribute(element, "type",
                  [&](auto text) { entry.kind = static_cast<std::uint32_t>(ReadInteger(text)); });
    switch (entry.kind) {
    case ParamPoint:
        WithAttribute(element, "x", [&](auto text) { entry.value = FloatWord(ReadLevel(text)); });
        WithAttribute(element, "y", [&](auto text) { entry.valueY = FloatWord(ReadLevel(text)); });
        break;
    case ParamChoice:
    case ParamColor:
        WithAttribute(element, "value",
                      [&](auto text) { entry.value = static_cast<std::uint32_t>(ReadInteger(text)); });
        break;
    case ParamFloat:
        WithAttribute(element, "value", [&](auto text) { entry.value = FloatWord(ReadLevel(text)); });
        break;
    case ParamCheck:
        WithAttribute(element, "value", [&](auto text) {
            entry.value = (entry.value & ~0xFFu) | (ReadInteger(text) != 0 ? 1u : 0u);
        });
        break;
    default:
        break;
    }
}

void ReadEntries(const TiXmlElement& root, PresetData& preset)
{
    constexpr const char* name = "parameter";
    // Kept: a word that an element does not set has the value that the element before it left.
    ParamValue entry = {};
    for (auto* element = root.FirstChildElement(name); element; element = element->NextSiblingElement(name)) {
        if (preset.paramCount == PresetData::kMostParams)
            return;
        ReadEntry(*element, entry);
        preset.params[preset.paramCount++] = entry;
    }
}

bool ReadDocument(const std::string& text, PresetData* preset)
{
    TiXmlDocument document;
    document.Parse(text.c_str(), nullptr, EncodingOf(text));
    const TiXmlElement* const root = document.Error() ? nullptr : document.FirstChildElement("Preset");
    if (!root || !preset)
        return false;
    preset->paramCount = 0;
    CopyName(*root, "Name", preset->Name);
    CopyName(*root, "LibraryName", preset->LibraryName);
    CopyName(*root, "EffectName", preset->EffectName);
    ReadEntries(*root, *preset);
    return preset->paramCount != 0;
}

// --- writing ------------------------------------------------------------------------------------------------

void SetName(TiXmlElement& element, const char* attribute, const char (&field)[PresetData::kNameBytes])
{
    // The host's field need not have an end mark.
    const auto* const end = static_cast<const char*>(std::memchr(field, '\0', sizeof field - 1));
    element.SetAttribute(attribute, std::string(field, end ? end : field + sizeof field - 1));
}

void SetLevel(TiXmlElement& element, const char* attribute, std::uint32_t word)
{
    char text[kLevelTextCapacity];
    WriteLevel(WordFloat(word), text);
    element.SetAttribute(attribute, text);
}

TiXmlElement ElementOf(const ParamValue& entry)
{
    TiXmlElement element("parameter");
    element.SetAttribute("type", static_cast<int>(entry.kind));
    switch (entry.kind) {
    case ParamPoint:
        SetLevel(element, "x", entry.value);
        SetLevel(element, "y", entry.valueY);
        break;
    case ParamChoice:
    case ParamColor:
        element.SetAttribute("value", static_cast<int>(entry.value));
        break;
    case ParamFloat:
        SetLevel(element, "value", entry.value);
        break;
    case ParamCheck:
        element.SetAttribute("value", (entry.value & 0xFF) != 0 ? 1 : 0);
        break;
    default:
        break;
    }
    return element;
}

std::string WriteDocument(const PresetData& preset)
{
    TiXmlDocument document;
    document.Parse(kTemplate);
    TiXmlElement& root = *document.FirstChildElement("Preset");
    SetName(root, "Name", preset.Name);
    SetName(root, "LibraryName", preset.LibraryName);
    SetName(root, "EffectName", preset.EffectName);
    const std::int32_t count = std::clamp(preset.paramCount, 0, PresetData::kMostParams);
    for (std::int32_t i = 0; i < count; ++i)
        root.InsertEndChild(ElementOf(preset.params[i]));
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

} // namespace

bool IsPresetPath(std::u16string_view path)
{
    const platform::Converted narrow = platform::Utf16ToNarrow(path, {});
    return narrow.whole && narrow.length == path.size();
}

bool ReadPreset(std::string_view text, PresetData* preset)
{
    const std::string ready = ReadyToParse(text.substr(0, text.find('\0')));
    if (!IsWithinXmlLimits(ready))
        return false;
    return WithFloatEnvironment([&] { return ReadDocument(ready, preset); });
}

std::string PresetText(const PresetData& preset)
{
    return WithFloatEnvironment([&] { return WriteDocument(preset); });
}

bool LoadPresetFile(const char16_t* path, PresetData* preset)
try {
    std::string text;
    return platform::ReadFile(path, kMostPresetFileBytes, text) && ReadPreset(text, preset);
} catch (...) {
    return false;
}

bool SavePresetFile(const char16_t* path, const PresetData& preset)
try {
    return platform::ReplaceTextFile(path, PresetText(preset));
} catch (...) {
    return false;
}

} // namespace kelmora
