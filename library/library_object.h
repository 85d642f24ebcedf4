#pragma once

#include <atomic>
#include <cstdint>

#include "contract/effect_library.h"
#include "contract/multi_lingual.h"
#include "library/dll_dependent_object.h"
#include "library/language/language_companion.h"

namespace kelmora {

/// The library object: names the library, makes effects and service objects, and passes lookups of texts on
/// to the language companion. Starts with a count of 1. Each object loads the companion for itself.
class CKelmora final : public DLLDependentObject, public IEffectLibrary, public IMultiLingual {
public:
    /// Connects the language companion, if there is one.
    CKelmora();

    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) override;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;

    const char* KELMORA_CALL GetName() override;
    IVideoEffect* KELMORA_CALL CreateEffect(std::int32_t effectId) override;
    void KELMORA_CALL ShowHelp(void* parent, std::uint32_t topic) override;
    void* KELMORA_CALL LibraryReserved() override;
    IFrameProcessor* KELMORA_CALL CreateFrameProcessor() override;
    IPresetSaver* KELMORA_CALL CreatePresetSaver() override;

    std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                         std::uintptr_t d, std::uintptr_t e, std::uintptr_t f,
                                         std::uintptr_t g) override;
    std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section, const char* key,
                                       char16_t* buffer, std::uint32_t capacity) override;

private:
    ~CKelmora() = default;

    /// The parser to ask for texts; null without a loaded language table.
    ILangXMLParser* Texts() const;

    std::atomic<std::uint32_t> m_references{1};
    LanguageCompanion m_language; // the parser, then the module
    bool m_bSupportMultiLanguage;
};

} // namespace kelmora
