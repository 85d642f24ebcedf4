#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/unknown.h"

namespace kelmora {

/// Looks texts up in the user's language. Where there is no translation, for whatever reason, it gives the
/// English text.
class TranslationHelper {
public:
    /// Characters of a text, the end mark included.
    static constexpr std::size_t kTextCapacity = 2048;

    /// No library, English.
    TranslationHelper() { SetContext(nullptr, nullptr); }

    /// Says where to look, and forgets the latest text.
    ///
    /// library       may offer IMultiLingual; not counted, so it has to outlive the lookups; null: none
    /// languageCode  two characters; null, or of another length, stands for "en"
    void SetContext(IUnknown* library, const char* languageCode);

    /// The text of `key` in `section` of the language table, zero-ended and cut to kTextCapacity; valid until
    /// the next lookup. Never null, at worst empty.
    ///
    /// defaultText  narrow text that stands in for a missing one; null: `key` itself
    /// found        gets whether the table had the text; may be null
    const char16_t* Lookup(std::uint32_t section, const char* key, const char* defaultText, bool* found);

private:
    /// Asks the library; gives the number of characters that it stored, below 1 when it had none.
    std::int32_t Ask(std::uint32_t section, const char* key);

    void CopyDefault(const char* defaultText);

    char languageCode[4];
    char16_t text[kTextCapacity];
    IUnknown* m_library = nullptr;
};

} // namespace kelmora
