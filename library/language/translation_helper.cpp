#include "library/language/translation_helper.h"

#include "contract/multi_lingual.h"
#include "library/language/strings.h"

#include <algorithm>
#include <cstring>

namespace kelmora {
namespace {

/// The IMultiLingual of `library`, counted, or null.
IMultiLingual* TextsOf(IUnknown* library)
{
    void* texts = nullptr;
    if (!library || library->QueryInterface(&IMultiLingual::id, &texts) != S_OK)
        return nullptr;
    return static_cast<IMultiLingual*>(texts);
}

} // namespace

void TranslationHelper::SetContext(IUnknown* library, const char* code)
{
    text[0] = u'\0';
    m_library = library;
    // Character by character: a shorter code ends before the third may be read.
    const bool two = code && code[0] && code[1] && !code[2];
    std::memcpy(languageCode, two ? code : "en", 3);
    languageCode[3] = '\0';
}

const char16_t* TranslationHelper::Lookup(std::uint32_t section, const char* key, const char* defaultText,
                                          bool* found)
{
    const std::int32_t count = Ask(section, key);
    if (count < 1)
        CopyDefault(defaultText ? defaultText : key);
    if (found)
        *found = count > 0;
    return text;
}

std::int32_t TranslationHelper::Ask(std::uint32_t section, const char* key)
{
    text[0] = u'\0';
    IMultiLingual* const texts = key ? TextsOf(m_library) : nullptr;
    if (!texts)
        return 0;
    const std::uint32_t count = texts->GetText(languageCode, section, key, text, kTextCapacity);
    texts->Release();
    text[kTextCapacity - 1] = u'\0'; // a table may fill the room to its end
    return static_cast<std::int32_t>(count);
}

void TranslationHelper::CopyDefault(const char* defaultText)
{
    const LVUnicodeString wide = LVString(defaultText).ToUnicode();
    const std::size_t length = std::min<std::size_t>(wide.GetLength(), kTextCapacity - 1);
    std::copy_n(wide.GetBuffer(), length, text);
    text[length] = u'\0';
}

} // namespace kelmora
