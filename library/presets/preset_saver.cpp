#include "library/presets/preset_saver.h"

#include "library/language/strings.h"
#include "library/presets/preset_check.h"
#include "library/presets/preset_extension.h"
#include "library/presets/preset_file.h"
#include "platform/messages.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace kelmora {
namespace {

using platform::FileDialogKind;

constexpr std::int32_t kDone = 0; // or cancelled
constexpr std::int32_t kFailed = 1;
constexpr std::int32_t kOtherEffect = 2;

// Of a path and of a message, the end mark included.
constexpr std::size_t kTextCapacity = 1024;

/// Section of the language table with the texts of the preset dialogs.
constexpr std::uint32_t kSection = 4;

/// The titles of a dialog: as it is without a language, and the text that is looked up with one.
struct Titles {
    const char16_t* fixed;
    const char* lookedUp;
};

constexpr Titles kOpenTitles = {u"Load Preset", "Open Preset"};
constexpr Titles kSaveTitles = {u"Save Preset", "Save Preset As"};

void CopyName(const char* name, char (&field)[PresetData::kNameBytes])
{
    const std::size_t length = name ? strnlen(name, sizeof field - 1) : 0;
    std::copy_n(name, length, field);
    field[length] = '\0';
}

/// The filter of the files that `extension` belongs to: the label, the pattern, and an empty text.
std::u16string FilterFor(const char16_t* label, const char16_t* extension)
{
    const std::u16string pattern = std::u16string(u"*.") + extension;
    std::u16string filter = std::u16string(label) + u" (" + pattern + u")";
    filter += u'\0';
    filter += pattern;
    filter += u'\0';
    return filter; // its own end mark is the empty text
}

/// A message that is put together in a room of fixed size; what goes beyond it is cut.
class Message {
public:
    void Add(std::u16string_view text)
    {
        const std::size_t length = std::min(text.size(), kTextCapacity - 1 - m_length);
        std::copy_n(text.data(), length, m_text + m_length);
        m_length += length;
    }

    /// Adds narrow text in the system's encoding.
    void Add(const char* name)
    {
        const LVUnicodeString wide = LVString(name).ToUnicode();
        Add({wide.GetBuffer(), wide.GetLength()});
    }

    const char16_t* Text() const { return m_text; }

private:
    char16_t m_text[kTextCapacity] = {};
    std::size_t m_length = 0;
};

/// The result of `work`, which has failed where it throws.
template <class Work>
std::int32_t ResultOf(Work work)
try {
    return work();
} catch (...) {
    return kFailed;
}

void Warn(const char16_t* text, const char16_t* title)
{
    platform::ShowMessage(platform::ForegroundWindow(), text, title, platform::MessageKind::Exclamation);
}

void WarnOfOtherEffect(const PresetData& preset, IVideoEffect& effect)
{
    Message message;
    message.Add(u"Error trying to open a ");
    message.Add(preset.EffectName);
    message.Add(u" preset. This can only open ");
    message.Add(effect.GetName());
    message.Add(u" presets. Please try again.");
    Warn(message.Text(), u"Preset open warning");
}

} // namespace

bool CShellDialog::AskForFile(FileDialogKind kind, void* owner, char16_t* path, std::size_t capacity,
                              const char16_t* title, const char16_t* filter, const char16_t* defaultExtension,
                              std::uint32_t flags) const
{
    return platform::AskForFile({kind, owner, path, capacity, title, filter, defaultExtension, flags});
}

std::int32_t CPresetSaver::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (!out)
        return E_FAIL;
    *out = nullptr;
    if (!interfaceId)
        return E_FAIL;
    if (!IsSameId(interfaceId, IUnknown::id) && !IsSameId(interfaceId, IPresetSaver::id))
        return E_NOINTERFACE;
    *out = static_cast<IPresetSaver*>(this);
    AddRef();
    return S_OK;
}

std::uint32_t CPresetSaver::AddRef()
{
    return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint32_t CPresetSaver::Release()
{
    const std::uint32_t left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        Destroy(KELMORA_DESTROY_FREE);
    return left;
}

void* CPresetSaver::Destroy(std::uint32_t flags)
{
    if (flags & KELMORA_DESTROY_FREE) {
        delete this;
        return nullptr;
    }
    this->~CPresetSaver();
    return this;
}

std::int32_t CPresetSaver::LoadPreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                      PresetData* preset, const char* languageCode)
try {
    const Call call = Begin(parent, library, effectId, preset, languageCode);
    HeldEffect effect;
    std::int32_t result = ResultOf([&] { return Load(call, effect); });
    if (result != kDone && !effect)
        result = kFailed;
    if (result == kFailed)
        Warn(u"Sorry, can't open the preset specified.\n"
             u"Possible reason: access denied or file is corrupted.",
             u"Preset load error");
    else if (result == kOtherEffect)
        WarnOfOtherEffect(*preset, *effect);
    return result;
} catch (...) {
    return kFailed;
}

std::int32_t CPresetSaver::SavePreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                      PresetData* preset, const char* languageCode)
try {
    const Call call = Begin(parent, library, effectId, preset, languageCode);
    const std::int32_t result = ResultOf([&] { return Save(call); });
    if (result == kFailed)
        Warn(u"Sorry, can't save preset.\nPossible reason: access denied or disk is full.",
             u"Preset save error");
    return result;
} catch (...) {
    return kFailed;
}

CPresetSaver::Call CPresetSaver::Begin(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                       PresetData* preset, const char* languageCode)
{
    if (languageCode)
        m_translation.SetContext(library, languageCode);
    return {parent, library, effectId, preset, languageCode != nullptr};
}

/// Asks for a file of the effect; `path` holds no more than an end mark at first.
bool CPresetSaver::AskForFile(FileDialogKind kind, const Call& call, char16_t* path, std::size_t capacity)
{
    char16_t extension[kPresetExtensionCapacity];
    MakePresetExtension(call.library ? call.library->GetName() : nullptr, call.effectId, extension);
    const bool opens = kind == FileDialogKind::Open;
    const Titles& titles = opens ? kOpenTitles : kSaveTitles;
    std::u16string title = titles.fixed;
    const char16_t* label = u"Preset Files";
    if (call.translated) {
        // A copy: the next lookup overwrites the text.
        title = m_translation.Lookup(kSection, titles.lookedUp, titles.lookedUp, nullptr);
        label = m_translation.Lookup(kSection, "Preset Files", "Preset Files", nullptr);
    }
    const std::u16string filter = FilterFor(label, extension);
    const std::uint32_t flags = opens
        ? platform::OFN_EXPLORER | platform::OFN_FILEMUSTEXIST | platform::OFN_PATHMUSTEXIST
        : platform::OFN_OVERWRITEPROMPT;
    path[0] = u'\0';
    return CShellDialog().AskForFile(kind, call.parent, path, capacity, title.c_str(), filter.c_str(),
                                     extension, flags);
}

std::int32_t CPresetSaver::Load(const Call& call, HeldEffect& effect)
{
    char16_t path[kTextCapacity];
    if (!call.preset)
        return kFailed;
    if (!AskForFile(FileDialogKind::Open, call, path, kTextCapacity))
        return kDone;
    if (!path[0])
        return kFailed;
    effect = NameEffect(call);
    if (!IsPresetPath(path) || !LoadPresetFile(path, call.preset))
        return kFailed;
    return PresetFits(call.preset, call.library, call.effectId) ? kDone : kOtherEffect;
}

std::int32_t CPresetSaver::Save(const Call& call)
{
    char16_t path[kTextCapacity];
    if (!call.preset)
        return kFailed;
    if (!AskForFile(FileDialogKind::Save, call, path, kTextCapacity))
        return kDone;
    if (!path[0])
        return kFailed;
    NameEffect(call);
    return IsPresetPath(path) && SavePresetFile(path, *call.preset) ? kDone : kFailed;
}

/// Writes the names of library and effect into the preset; gives the effect, null where there is none.
CPresetSaver::HeldEffect CPresetSaver::NameEffect(const Call& call)
{
    HeldEffect effect(call.library ? call.library->CreateEffect(call.effectId) : nullptr);
    if (effect) {
        CopyName(call.library->GetName(), call.preset->LibraryName);
        CopyName(effect->GetName(), call.preset->EffectName);
    }
    return effect;
}

} // namespace kelmora
