#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "contract/effect_library.h"
#include "contract/preset_saver.h"
#include "library/language/translation_helper.h"
#include "platform/dialogs.h"

namespace kelmora {

/// Asks the user for files. Stateless.
class CShellDialog {
public:
    virtual ~CShellDialog() = default;

    /// Shows the dialog and waits; gives whether the user confirmed. Throws std::bad_alloc.
    ///
    /// owner             window that waits behind the dialog, or null
    /// path              gets the file's full path; what it holds is the name that is offered
    /// capacity          characters of `path`, its end mark included
    /// filter            a label, a pattern, and an empty text, each zero-ended
    /// defaultExtension  without a dot
    /// flags             OFN_ flags
    bool AskForFile(platform::FileDialogKind kind, void* owner, char16_t* path, std::size_t capacity,
                    const char16_t* title, const char16_t* filter, const char16_t* defaultExtension,
                    std::uint32_t flags) const;
};

/// Keeps a user's presets in files that the user chooses; see IPresetSaver. Starts with a count of 1.
///
/// Both operations show a message where they fail, give 0 and change nothing where the user cancels, and let
/// nothing escape. The library of a call with a language is held, uncounted, until the next such call, but asked
/// for texts in that call alone.
///
/// The count may be changed from any thread, all else is for one thread at a time.
class CPresetSaver final : public IPresetSaver {
public:
    CPresetSaver() = default;
    CPresetSaver(const CPresetSaver&) = delete;
    CPresetSaver& operator=(const CPresetSaver&) = delete;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;

    /// Without a library every file with an entry will do, and 2 cannot come. The preset gets the names of library
    /// and effect before the file is read, so they stand in it where reading fails.
    // Kept: the dialogs are named otherwise where a language is given.
    std::int32_t KELMORA_CALL LoadPreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                         PresetData* preset, const char* languageCode) override;

    /// The preset gets the names of library and effect, when there is such an effect.
    std::int32_t KELMORA_CALL SavePreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                         PresetData* preset, const char* languageCode) override;

    /// Gives the address of the memory that is left, null when it was freed.
    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) override;

private:
    struct Releaser {
        void operator()(IVideoEffect* effect) const { effect->Release(); }
    };
    using HeldEffect = std::unique_ptr<IVideoEffect, Releaser>;

    /// What the arguments of an operation say.
    struct Call {
        void* parent;
        IEffectLibrary* library;
        std::int32_t effectId;
        PresetData* preset;
        bool translated; ///< whether a language was given
    };

    ~CPresetSaver() = default;

    Call Begin(void* parent, IEffectLibrary* library, std::int32_t effectId, PresetData* preset,
               const char* languageCode);
    bool AskForFile(platform::FileDialogKind kind, const Call& call, char16_t* path, std::size_t capacity);
    std::int32_t Load(const Call& call, HeldEffect& effect);
    std::int32_t Save(const Call& call);
    static HeldEffect NameEffect(const Call& call);

    std::atomic<std::uint32_t> m_references{1};
    TranslationHelper m_translation;
};

} // namespace kelmora
