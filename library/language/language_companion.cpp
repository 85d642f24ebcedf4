#include "library/language/language_companion.h"

#include "contract/effect_library.h"
#include "library/path_library.h"
#include "platform/messages.h"
#include "platform/text.h"

#include <span>
#include <utility>

namespace kelmora {
namespace {

/// A file name in wide characters, at most as long as a path.
class WideName {
public:
    /// A name that is too long leaves an empty one.
    explicit WideName(const char* narrow)
    {
        const std::span<char16_t> room(m_text, platform::kPathCapacity - 1);
        m_text[platform::NarrowToUtf16(narrow, room).length] = u'\0';
    }

    const char16_t* Text() const { return m_text; }
    bool IsEmpty() const { return m_text[0] == u'\0'; }

private:
    char16_t m_text[platform::kPathCapacity];
};

/// Loads the module `name` from beside the library, or else from the system's places.
platform::Module LoadCompanion(const WideName& name)
{
    if (name.IsEmpty())
        return {};
    char16_t path[kBesideCapacity];
    platform::Module module;
    if (PathLibrary().BesideModule(name.Text(), path))
        module = platform::Module::LoadFile(path);
    if (!module)
        module = platform::Module::LoadByName(name.Text());
    return module;
}

} // namespace

LanguageCompanion::~LanguageCompanion()
{
    // The parser's code lies in the module.
    if (m_pLangXMLParser)
        std::exchange(m_pLangXMLParser, nullptr)->Release();
    LetModuleGo();
}

bool LanguageCompanion::LoadLanguage(const char* szLangDLLName, const char* szXMLFileName)
{
    if (m_pLangXMLParser || !szLangDLLName || !szXMLFileName) {
        platform::ShowMessage(nullptr, u"!(! m_pLangParser && szLangDLLName && szXMLFileName)", u"",
                              platform::MessageKind::Plain);
        return false;
    }
    LetModuleGo();
    m_languageModule = LoadCompanion(WideName(szLangDLLName));
    if (const auto getParser = m_languageModule.FunctionNamed<GetLangXMLParserFunction>("GetLangXMLParser"))
        m_pLangXMLParser = getParser();
    return m_pLangXMLParser && LoadTable(WideName(szXMLFileName).Text());
}

bool LanguageCompanion::LoadTable(const char16_t* name)
{
    char16_t path[kBesideCapacity];
    PathLibrary().BesideModule(name, path); // empty where the folder is unknown; then the name decides
    return m_pLangXMLParser->Load(path) || m_pLangXMLParser->Load(name);
}

void LanguageCompanion::LetModuleGo()
{
    if (!m_languageModule)
        return;
    const auto canUnload = m_languageModule.FunctionNamed<CanUnloadDLLNowFunction>("CanUnloadDLLNow");
    if (!canUnload || canUnload())
        m_languageModule.Unload();
    else
        m_languageModule.Detach();
}

} // namespace kelmora
