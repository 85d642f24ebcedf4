#include "library/library_object.h"

#include "image/frame_processor.h"
#include "library/effect_numbers.h"
#include "library/path_library.h"
#include "library/presets/preset_saver.h"
#include "platform/help_viewer.h"

#include <cstdio>
#include <new>

namespace kelmora {
namespace {

/// Formats the state of the language support for whoever looks at it in a debugger; nothing shows it.
void NoteLanguageSupport(bool supported, const ILangXMLParser* parser)
{
    char line[1024];
    // Eight hexadecimal digits, so the low word of the address.
    std::snprintf(line, sizeof line, "m_bSupportMultiLanguage %s, m_pLangXMLParser 0x%08x",
                  supported ? "true" : "false",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(parser)));
}

} // namespace

CKelmora::CKelmora() : m_bSupportMultiLanguage(m_language.LoadLanguage("LVQBLang.dll", "LVKelmoraLang.xml"))
{
    NoteLanguageSupport(m_bSupportMultiLanguage, m_language.Parser());
}

void* CKelmora::Destroy(std::uint32_t flags)
{
    if (flags & KELMORA_DESTROY_FREE) {
        delete this;
        return nullptr;
    }
    this->~CKelmora();
    return static_cast<DLLDependentObject*>(this);
}

std::int32_t CKelmora::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (!out)
        return E_FAIL;
    *out = nullptr;
    if (!interfaceId)
        return E_FAIL;
    if (IsSameId(interfaceId, IUnknown::id) || IsSameId(interfaceId, IEffectLibrary::id))
        *out = static_cast<IEffectLibrary*>(this);
    else if (IsSameId(interfaceId, IMultiLingual::id) && m_bSupportMultiLanguage)
        *out = static_cast<IMultiLingual*>(this);
    else
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

std::uint32_t CKelmora::AddRef()
{
    return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint32_t CKelmora::Release()
{
    const std::uint32_t left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        Destroy(KELMORA_DESTROY_FREE);
    return left;
}

const char* CKelmora::GetName()
{
    return "Larkvee Kelmora";
}

IVideoEffect* CKelmora::CreateEffect(std::int32_t effectId)
{
    try {
        return CreateEffectOfNumber(effectId);
    } catch (...) {
        return nullptr; // an effect whose constructor needs memory of its own found none
    }
}

void CKelmora::ShowHelp(void* parent, std::uint32_t topic)
{
    char16_t file[kBesideCapacity];
    if (PathLibrary().BesideModule(u"Kelmora.chm", file))
        platform::ShowHelp(parent, file, topic);
}

void* CKelmora::LibraryReserved()
{
    return nullptr;
}

IFrameProcessor* CKelmora::CreateFrameProcessor()
{
    return new (std::nothrow) FrameProcessor;
}

IPresetSaver* CKelmora::CreatePresetSaver()
{
    return new (std::nothrow) CPresetSaver;
}

ILangXMLParser* CKelmora::Texts() const
{
    return m_bSupportMultiLanguage ? m_language.Parser() : nullptr;
}

std::uint32_t CKelmora::GetTextEx(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c, std::uintptr_t d,
                                  std::uintptr_t e, std::uintptr_t f, std::uintptr_t g)
{
    ILangXMLParser* const texts = Texts();
    return texts ? texts->GetTextEx(a, b, c, d, e, f, g) : 0;
}

std::uint32_t CKelmora::GetText(const char* languageCode, std::uint32_t section, const char* key,
                                char16_t* buffer, std::uint32_t capacity)
{
    ILangXMLParser* const texts = Texts();
    return texts ? texts->GetText(languageCode, section, key, buffer, capacity) : 0;
}

} // namespace kelmora
