#include "library/presets/preset_extension.h"

#include <algorithm>
#include <string_view>

namespace kelmora {
namespace {

struct LibraryCode {
    std::string_view name;
    std::u16string_view code;
};

// Each library of the family has a row.
constexpr LibraryCode kLibraryCodes[] = {
    {"Larkvee Kelmora", u"klm"},
};

std::u16string_view CodeOf(std::string_view libraryName)
{
    for (const LibraryCode& row : kLibraryCodes) {
        if (row.name == libraryName)
            return row.code;
    }
    return u"unk";
}

char16_t LetterOf(std::int32_t effectId)
{
    const auto distance = static_cast<std::int8_t>(static_cast<std::uint32_t>(effectId) - 100u);
    return static_cast<char16_t>(u'a' + distance);
}

} // namespace

void MakePresetExtension(const char* libraryName, std::int32_t effectId,
                         char16_t (&extension)[kPresetExtensionCapacity])
{
    constexpr std::u16string_view none = u"prs";
    constexpr std::u16string_view head = u"fxp";
    std::fill_n(extension, kPresetExtensionCapacity, u'\0');
    if (!libraryName) {
        std::copy(none.begin(), none.end(), extension);
        return;
    }
    const std::u16string_view code = CodeOf(libraryName);
    char16_t* end = std::copy(head.begin(), head.end(), extension);
    end = std::copy(code.begin(), code.end(), end);
    *end = LetterOf(effectId);
}

} // namespace kelmora
