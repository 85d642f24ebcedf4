#pragma once

#include <cstdint>

#include "contract/unknown.h"
#include "platform/module.h"

namespace kelmora {

/// The companion's object that reads a language table and looks texts up in it.
struct ILangXMLParser : IUnknown {
    /// A place in the table; nothing is known of it and nothing calls it.
    virtual void KELMORA_CALL ParserReserved3() = 0;

    /// Loads the table in the file `path`, zero-ended. True when it was loaded.
    virtual bool KELMORA_CALL Load(const char16_t* path) = 0;

    /// As IMultiLingual::GetTextEx.
    virtual std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                                 std::uintptr_t d, std::uintptr_t e, std::uintptr_t f,
                                                 std::uintptr_t g) = 0;

    /// As IMultiLingual::GetText.
    virtual std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section,
                                               const char* key, char16_t* buffer, std::uint32_t capacity) = 0;

protected:
    ~ILangXMLParser() = default;
};

/// The companion's export that gives its parser, or null.
using GetLangXMLParserFunction = ILangXMLParser*(KELMORA_CALL*)();

/// The language companion: a module, mostly not there, that translates texts. It may be closed and of any
/// quality, so nothing it gives is taken for granted.
class LanguageCompanion {
public:
    LanguageCompanion() = default;
    LanguageCompanion(const LanguageCompanion&) = delete;
    LanguageCompanion& operator=(const LanguageCompanion&) = delete;

    /// Releases the parser, then the module.
    ~LanguageCompanion();

    /// Loads the companion and its table, each from beside the library, or else from where the system looks
    /// for a bare name. True when the table was loaded.
    ///
    /// szLangDLLName  file name of the companion, narrow text
    /// szXMLFileName  file name of the table, narrow text
    ///
    /// With a null name, or a parser from an earlier call, shows a message and gives false. A companion that
    /// is there but of no use stays loaded.
    bool LoadLanguage(const char* szLangDLLName, const char* szXMLFileName);

    /// The companion's parser; null when there is none.
    ILangXMLParser* Parser() const { return m_pLangXMLParser; }

private:
    /// Unloads the module unless it objects, and forgets it in any case.
    void LetModuleGo();

    bool LoadTable(const char16_t* name);

    ILangXMLParser* m_pLangXMLParser = nullptr;
    platform::Module m_languageModule;
};

} // namespace kelmora
