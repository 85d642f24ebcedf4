#include "library/presets/preset_saver.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "contract/multi_lingual.h"
#include "library/library_object.h"
#include "library/presets/preset_file.h"
#include "platform/text.h"
#include "tests/library/seams.h"
#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"
#include "tests/support/failing_new.h"

namespace kelmora {
namespace {

using namespace std::string_literals;
using platform::FileDialogKind;
using platform::MessageKind;

constexpr char16_t kLoadError[] = u"Sorry, can't open the preset specified.\n"
                                  u"Possible reason: access denied or file is corrupted.";
constexpr char16_t kSaveError[] =
    u"Sorry, can't save preset.\nPossible reason: access denied or disk is full.";

// As the system's headers have them: OFN_EXPLORER, OFN_FILEMUSTEXIST, OFN_PATHMUSTEXIST; OFN_OVERWRITEPROMPT.
constexpr std::uint32_t kOpenFlags = 0x80000 | 0x1000 | 0x800;
constexpr std::uint32_t kSaveFlags = 0x2;

/// A library of another maker: any name, one effect or none, texts or none.
class OtherLibrary final : public IEffectLibrary, public IMultiLingual {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        ++questions;
        const bool has = offersTexts && *interfaceId == IMultiLingual::id;
        *out = has ? static_cast<IMultiLingual*>(this) : nullptr;
        references += has ? 1 : 0;
        return has ? S_OK : E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t KELMORA_CALL Release() override { return static_cast<std::uint32_t>(--references); }
    const char* KELMORA_CALL GetName() override { return name; }
    IVideoEffect* KELMORA_CALL CreateEffect(std::int32_t) override
    {
        if (throws)
            throw std::bad_alloc();
        if (effect)
            effect->AddRef();
        return effect;
    }
    void KELMORA_CALL ShowHelp(void*, std::uint32_t) override {}
    void* KELMORA_CALL LibraryReserved() override { return nullptr; }
    IFrameProcessor* KELMORA_CALL CreateFrameProcessor() override { return nullptr; }
    IPresetSaver* KELMORA_CALL CreatePresetSaver() override { return nullptr; }
    std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t,
                                         std::uintptr_t, std::uintptr_t, std::uintptr_t) override
    {
        return 0;
    }
    std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section, const char* key,
                                       char16_t* buffer, std::uint32_t capacity) override
    {
        asked.push_back(languageCode + ":"s + std::to_string(section) + ":" + key);
        std::u16string text = u"<";
        text.append(key, key + std::strlen(key)).append(u">").append(padding, u'x');
        text.resize(std::min<std::size_t>(text.size(), capacity - 1));
        buffer[text.copy(buffer, text.size())] = u'\0';
        return static_cast<std::uint32_t>(text.size());
    }

    const char* name = "Another Library";
    IVideoEffect* effect = nullptr; ///< of every number
    bool throws = false;
    bool offersTexts = false;
    std::size_t padding = 0;
    int references = 1;
    int questions = 0;
    std::vector<std::string> asked;
};

struct PresetSaver : testing::Test {
    PresetSaver()
    {
        ShownDialogs().clear();
        ShownMessages().clear();
        NextDialogAnswer() = {};
    }

    ~PresetSaver() override
    {
        NextDialogAnswer() = {};
        EXPECT_EQ(saver->Release(), 0u);
        EXPECT_EQ(library->Release(), 0u);
    }

    /// The path of `name` in the test's folder, as a dialog gives it.
    std::u16string PathOf(const std::filesystem::path& name) const
    {
        return (folder.Path() / name).u16string();
    }

    void UserChooses(const std::filesystem::path& name) { NextDialogAnswer() = {true, PathOf(name)}; }

    void Write(const char* name, const std::string& text) const
    {
        TestFolder::Write(folder.Path() / name, text);
    }

    std::int32_t Load(std::int32_t effect, const char* languageCode = nullptr)
    {
        return saver->LoadPreset(nullptr, library, effect, &preset, languageCode);
    }

    std::int32_t Save(std::int32_t effect, const char* languageCode = nullptr)
    {
        return saver->SavePreset(nullptr, library, effect, &preset, languageCode);
    }

    const TestFolder folder;
    CKelmora* const library = new CKelmora;
    IPresetSaver* const saver = library->CreatePresetSaver();
    PresetData preset = {};
};

void ExpectOneMessage(const std::u16string& text, const std::u16string& title)
{
    ASSERT_EQ(ShownMessages().size(), 1u);
    const ShownMessage& message = ShownMessages().front();
    EXPECT_EQ(message.owner, TheForegroundWindow());
    EXPECT_EQ(message.text, text);
    EXPECT_EQ(message.title, title);
    EXPECT_EQ(message.kind, MessageKind::Exclamation);
}

/// A file of a preset of "Air Brush": two levels.
std::string AirBrushFile(const std::string& libraryName = "Larkvee Kelmora",
                         const std::string& effectName = "Air Brush")
{
    return "<Preset Name=\"Mine\" LibraryName=\"" + libraryName + "\" EffectName=\"" + effectName
        + "\"><parameter type=\"2\" value=\"0.25\" /><parameter type=\"2\" value=\"0.5\" /></Preset>";
}

std::u16string OtherEffectMessage(const std::u16string& ofFile, const std::u16string& ofEffect)
{
    return u"Error trying to open a " + ofFile + u" preset. This can only open " + ofEffect
        + u" presets. Please try again.";
}

TEST_F(PresetSaver, QueryInterface_RootAndSaver_GiveTheSaverCounted)
{
    for (const InterfaceId& id : {IUnknown::id, IPresetSaver::id}) {
        void* found = nullptr;
        EXPECT_EQ(saver->QueryInterface(&id, &found), S_OK);
        EXPECT_EQ(found, saver);
        EXPECT_EQ(saver->Release(), 1u);
    }
}

TEST_F(PresetSaver, QueryInterface_OthersAndNullArguments_AreRefused)
{
    void* found = saver;
    EXPECT_EQ(saver->QueryInterface(&IEffectLibrary::id, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    found = saver;
    EXPECT_EQ(saver->QueryInterface(nullptr, &found), E_FAIL);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(saver->QueryInterface(&IUnknown::id, nullptr), E_FAIL);
    EXPECT_EQ(saver->AddRef(), 2u);
    EXPECT_EQ(saver->Release(), 1u);
}

TEST_F(PresetSaver, Destroy_EndsItWithOrWithoutItsMemory)
{
    alignas(CPresetSaver) unsigned char memory[sizeof(CPresetSaver)];
    IPresetSaver* const here = new (memory) CPresetSaver;
    EXPECT_EQ(here->Destroy(0), static_cast<void*>(memory));
    IPresetSaver* const other = new CPresetSaver;
    EXPECT_EQ(other->Destroy(KELMORA_DESTROY_FREE), nullptr);
}

TEST_F(PresetSaver, Layout_IsTheTableTheCountAndTheTranslation)
{
    std::uint32_t references = 0;
    saver->AddRef();
    std::memcpy(&references, reinterpret_cast<const char*>(saver) + sizeof(void*), sizeof references);
    EXPECT_EQ(references, 2u);
    EXPECT_EQ(saver->Release(), 1u);
    EXPECT_EQ(sizeof(CPresetSaver), 2 * sizeof(void*) + sizeof(TranslationHelper));
}

TEST_F(PresetSaver, CreatePresetSaver_OutOfMemory_GivesNull)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    IPresetSaver* another = saver;
    {
        const FailingNew none(FailingNew::kNever, 0);
        another = library->CreatePresetSaver();
    }
    EXPECT_EQ(another, nullptr);
}

TEST_F(PresetSaver, LoadPreset_OpensTheDialogForThatEffect)
{
    int window = 0;
    EXPECT_EQ(saver->LoadPreset(&window, library, EffectActiveCamera, &preset, nullptr), 0);
    ASSERT_EQ(ShownDialogs().size(), 1u);
    const ShownDialog& dialog = ShownDialogs().front();
    EXPECT_EQ(dialog.kind, FileDialogKind::Open);
    EXPECT_EQ(dialog.owner, &window);
    EXPECT_EQ(dialog.path, u"");
    EXPECT_EQ(dialog.capacity, 1024u);
    EXPECT_EQ(dialog.title, u"Load Preset");
    EXPECT_EQ(dialog.filter, u"Preset Files (*.fxpklmf)\0*.fxpklmf\0"s);
    EXPECT_EQ(dialog.extension, u"fxpklmf");
    EXPECT_EQ(dialog.flags, kOpenFlags);
}

TEST_F(PresetSaver, SavePreset_OpensTheDialogForThatEffect)
{
    int window = 0;
    EXPECT_EQ(saver->SavePreset(&window, library, Effect3DConfetti, &preset, nullptr), 0);
    ASSERT_EQ(ShownDialogs().size(), 1u);
    const ShownDialog& dialog = ShownDialogs().front();
    EXPECT_EQ(dialog.kind, FileDialogKind::Save);
    EXPECT_EQ(dialog.owner, &window);
    EXPECT_EQ(dialog.path, u"");
    EXPECT_EQ(dialog.capacity, 1024u);
    EXPECT_EQ(dialog.title, u"Save Preset");
    EXPECT_EQ(dialog.filter, u"Preset Files (*.fxpklma)\0*.fxpklma\0"s);
    EXPECT_EQ(dialog.extension, u"fxpklma");
    EXPECT_EQ(dialog.flags, kSaveFlags);
}

TEST_F(PresetSaver, Dialogs_WithoutALibraryOrWithAnUnknownOne_HaveItsExtension)
{
    OtherLibrary other;
    saver->LoadPreset(nullptr, nullptr, EffectSmear, &preset, nullptr);
    saver->SavePreset(nullptr, &other, EffectSmear, &preset, nullptr);
    other.name = nullptr;
    saver->SavePreset(nullptr, &other, EffectSmear, &preset, nullptr);
    ASSERT_EQ(ShownDialogs().size(), 3u);
    EXPECT_EQ(ShownDialogs()[0].filter, u"Preset Files (*.prs)\0*.prs\0"s);
    EXPECT_EQ(ShownDialogs()[1].filter, u"Preset Files (*.fxpunke)\0*.fxpunke\0"s);
    EXPECT_EQ(ShownDialogs()[2].extension, u"prs");
}

TEST_F(PresetSaver, Dialogs_WildEffectNumbers_HaveSomeLetterAndNoOtherFilter)
{
    for (const std::int32_t number : {0, 3, 45, 255, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        ShownDialogs().clear();
        EXPECT_EQ(Load(number), 0);
        ASSERT_EQ(ShownDialogs().size(), 1u) << number;
        const ShownDialog& dialog = ShownDialogs().front();
        EXPECT_EQ(dialog.filter,
                  u"Preset Files (*." + dialog.extension + u")\0*."s + dialog.extension + u"\0"s);
    }
}

TEST_F(PresetSaver, Kept_TitlesDifferWithALanguage)
{
    EXPECT_EQ(Load(EffectSmear, "en"), 0);
    EXPECT_EQ(Save(EffectSmear, "de"), 0);
    EXPECT_EQ(Save(EffectSmear, ""), 0);
    ASSERT_EQ(ShownDialogs().size(), 3u);
    EXPECT_EQ(ShownDialogs()[0].title, u"Open Preset");
    EXPECT_EQ(ShownDialogs()[1].title, u"Save Preset As");
    EXPECT_EQ(ShownDialogs()[2].title, u"Save Preset As");
    EXPECT_EQ(ShownDialogs()[0].filter, u"Preset Files (*.fxpklme)\0*.fxpklme\0"s);
}

TEST_F(PresetSaver, Dialogs_WithALanguage_AskTheLibraryForTheirTexts)
{
    OtherLibrary other;
    other.offersTexts = true;
    EXPECT_EQ(saver->LoadPreset(nullptr, &other, EffectSmear, &preset, "de"), 0);
    EXPECT_EQ(saver->SavePreset(nullptr, &other, EffectSmear, &preset, "fr"), 0);
    EXPECT_EQ(other.asked,
              (std::vector<std::string>{"de:4:Open Preset", "de:4:Preset Files", "fr:4:Save Preset As",
                                        "fr:4:Preset Files"}));
    ASSERT_EQ(ShownDialogs().size(), 2u);
    EXPECT_EQ(ShownDialogs()[0].title, u"<Open Preset>");
    EXPECT_EQ(ShownDialogs()[0].filter, u"<Preset Files> (*.fxpunke)\0*.fxpunke\0"s);
    EXPECT_EQ(ShownDialogs()[1].title, u"<Save Preset As>");
    EXPECT_EQ(other.references, 1);
}

TEST_F(PresetSaver, Dialogs_LongestTexts_AreShownWhole)
{
    OtherLibrary other;
    other.offersTexts = true;
    other.padding = 5000;
    EXPECT_EQ(saver->LoadPreset(nullptr, &other, EffectSmear, &preset, "de"), 0);
    ASSERT_EQ(ShownDialogs().size(), 1u);
    const std::u16string title = u"<Open Preset>" + std::u16string(2047 - 13, u'x');
    EXPECT_EQ(ShownDialogs()[0].title, title);
    const std::u16string label = u"<Preset Files>" + std::u16string(2047 - 14, u'x');
    EXPECT_EQ(ShownDialogs()[0].filter, label + u" (*.fxpunke)\0*.fxpunke\0"s);
}

TEST_F(PresetSaver, Dialogs_WithoutALanguage_DoNotTouchTheLibraryOfTheCallBefore)
{
    auto* const gone = new OtherLibrary;
    gone->offersTexts = true;
    EXPECT_EQ(saver->LoadPreset(nullptr, gone, EffectSmear, &preset, "de"), 0);
    delete gone; // a use of it is what AddressSanitizer finds
    EXPECT_EQ(Load(EffectSmear), 0);
    EXPECT_EQ(Save(EffectSmear), 0);
    EXPECT_EQ(ShownDialogs().back().title, u"Save Preset");
}

TEST_F(PresetSaver, Cancelled_IsZeroWithoutAMessageAndChangesNothing)
{
    std::memset(static_cast<void*>(&preset), 0x5A, sizeof preset);
    const PresetData before = preset;
    for (const char* const language : {static_cast<const char*>(nullptr), "de"}) {
        EXPECT_EQ(Load(EffectAirBrush, language), 0);
        EXPECT_EQ(Save(EffectAirBrush, language), 0);
    }
    EXPECT_EQ(ShownDialogs().size(), 4u);
    EXPECT_TRUE(ShownMessages().empty());
    EXPECT_EQ(std::memcmp(&preset, &before, sizeof preset), 0);
}

TEST_F(PresetSaver, NullPreset_FailsWithTheMessageAndNoDialog)
{
    NextDialogAnswer() = {true, PathOf("x.fxpklmg")};
    EXPECT_EQ(saver->LoadPreset(nullptr, library, EffectAirBrush, nullptr, "de"), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
    ShownMessages().clear();
    EXPECT_EQ(saver->SavePreset(nullptr, nullptr, 0, nullptr, nullptr), 1);
    ExpectOneMessage(kSaveError, u"Preset save error");
    EXPECT_TRUE(ShownDialogs().empty());
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "x.fxpklmg"));
}

TEST_F(PresetSaver, EmptyPath_Fails)
{
    NextDialogAnswer() = {true, u""};
    EXPECT_EQ(Load(EffectAirBrush), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
    ShownMessages().clear();
    EXPECT_EQ(Save(EffectAirBrush), 1);
    ExpectOneMessage(kSaveError, u"Preset save error");
    EXPECT_STREQ(preset.EffectName, "");
}

TEST_F(PresetSaver, SavePreset_WritesTheFileWithTheNamesOfLibraryAndEffect)
{
    std::strcpy(preset.Name, "Mine");
    std::strcpy(preset.EffectName, "whatever the host left here");
    preset.params[0] = {FloatWord(0.36842105f), 0, ParamFloat};
    preset.params[1] = {FloatWord(1.0f), 0, ParamFloat};
    preset.paramCount = 2;
    UserChooses("mine.fxpklmg");
    EXPECT_EQ(Save(EffectAirBrush), 0);
    EXPECT_TRUE(ShownMessages().empty());
    EXPECT_STREQ(preset.LibraryName, "Larkvee Kelmora");
    EXPECT_STREQ(preset.EffectName, "Air Brush");
    const std::string text = FileContent(folder.Path() / "mine.fxpklmg");
    EXPECT_EQ(text,
              "<?xml version=\"1.0\" standalone=\"no\" ?>\n"
              "<!-- Effect's Preset File -->\n"
              "<Preset Name=\"Mine\" LibraryName=\"Larkvee Kelmora\" EffectName=\"Air Brush\">\n"
              "    <parameter type=\"2\" value=\"0.368421\" />\n"
              "    <parameter type=\"2\" value=\"1.000000\" />\n"
              "</Preset>\n");
}

TEST_F(PresetSaver, SavePreset_WithoutALibraryOrSuchAnEffect_KeepsTheNamesOfTheRecord)
{
    std::strcpy(preset.LibraryName, "Library");
    std::strcpy(preset.EffectName, "Effect");
    preset.paramCount = 1;
    UserChooses("a.prs");
    EXPECT_EQ(saver->SavePreset(nullptr, nullptr, EffectAirBrush, &preset, nullptr), 0);
    UserChooses("b.fxpklmz");
    EXPECT_EQ(Save(125), 0);
    for (const char* const name : {"a.prs", "b.fxpklmz"}) {
        const std::string text = FileContent(folder.Path() / name);
        EXPECT_NE(text.find("LibraryName=\"Library\" EffectName=\"Effect\""), text.npos) << text;
    }
}

TEST_F(PresetSaver, SavePreset_WhereNoFileCanBe_FailsWithTheMessage)
{
    UserChooses(std::filesystem::path("no such folder") / "a.fxpklmg");
    EXPECT_EQ(Save(EffectAirBrush), 1);
    ExpectOneMessage(kSaveError, u"Preset save error");
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(PresetSaver, LoadPreset_BringsTheKnobsThatWereSaved)
{
    std::strcpy(preset.Name, "Mine");
    preset.params[0] = {FloatWord(0.36842105f), 0, ParamFloat};
    preset.params[1] = {FloatWord(1.0f), 0, ParamFloat};
    preset.paramCount = 2;
    UserChooses("mine.fxpklmg");
    ASSERT_EQ(Save(EffectAirBrush), 0);
    preset = {};
    EXPECT_EQ(Load(EffectAirBrush, "de"), 0);
    EXPECT_TRUE(ShownMessages().empty());
    EXPECT_STREQ(preset.Name, "Mine");
    ASSERT_EQ(preset.paramCount, 2);
    EXPECT_EQ(WordFloat(preset.params[0].value), 0.368421f);
    EXPECT_EQ(WordFloat(preset.params[1].value), 1.0f);
    EXPECT_EQ(preset.params[1].kind, ParamFloat);
}

TEST_F(PresetSaver, LoadPreset_UnreadableFiles_FailWithTheMessageAndTheNamesOfTheEffect)
{
    Write("text.fxpklmg", "no XML");
    Write("other.fxpklmg", "<Other />");
    Write("empty.fxpklmg", "<Preset Name=\"Mine\" />");
    for (const char* const name : {"missing.fxpklmg", "text.fxpklmg", "other.fxpklmg"}) {
        ShownMessages().clear();
        preset = {};
        UserChooses(name);
        EXPECT_EQ(Load(EffectAirBrush), 1) << name;
        ExpectOneMessage(kLoadError, u"Preset load error");
        EXPECT_STREQ(preset.LibraryName, "Larkvee Kelmora");
        EXPECT_STREQ(preset.EffectName, "Air Brush");
    }
    ShownMessages().clear();
    UserChooses("empty.fxpklmg");
    EXPECT_EQ(Load(EffectAirBrush), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
}

TEST_F(PresetSaver, LoadPreset_OfAnotherEffect_WarnsWithBothNames)
{
    const std::pair<std::string, const char16_t*> files[] = {
        {AirBrushFile("Larkvee Kelmora", "Water Color"), u"Water Color"},
        {AirBrushFile("Another Library", "Air Brush"), u"Air Brush"},
        {AirBrushFile("Larkvee Kelmora", "air brush"), u"air brush"},
        {AirBrushFile("Larkvee Kelmora", "%n%s%x\\n"), u"%n%s%x\\n"},
        {"<Preset EffectName=\"Air Brush\"><parameter type=\"2\" value=\"1\"/></Preset>", u"Air Brush"},
        {"<Preset LibraryName=\"Larkvee Kelmora\"><parameter type=\"2\" value=\"1\"/></Preset>", u""},
        // One parameter too few, and one of another kind.
        {"<Preset LibraryName=\"Larkvee Kelmora\" EffectName=\"Air Brush\">"
         "<parameter type=\"2\" value=\"1\"/></Preset>",
         u"Air Brush"},
        {"<Preset LibraryName=\"Larkvee Kelmora\" EffectName=\"Air Brush\">"
         "<parameter type=\"2\" value=\"1\"/><parameter type=\"4\" value=\"1\"/></Preset>",
         u"Air Brush"},
    };
    for (const auto& [text, name] : files) {
        ShownMessages().clear();
        Write("a.fxpklmg", text);
        UserChooses("a.fxpklmg");
        EXPECT_EQ(Load(EffectAirBrush), 2) << text;
        ExpectOneMessage(OtherEffectMessage(name, u"Air Brush"), u"Preset open warning");
    }
}

TEST_F(PresetSaver, LoadPreset_NamesInTheWarning_AreWidenedFromNarrowText)
{
    Write("a.fxpklmg", AirBrushFile("Larkvee Kelmora", "caf\xC3\xA9"));
    UserChooses("a.fxpklmg");
    EXPECT_EQ(Load(EffectAirBrush), 2);
    char16_t wide[16] = {};
    platform::NarrowToUtf16("caf\xC3\xA9", wide);
    ExpectOneMessage(OtherEffectMessage(wide, u"Air Brush"), u"Preset open warning");
}

/// An effect without pictures, of any name and with any number of knobs.
class NamedEffect final : public IVideoEffect {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t KELMORA_CALL Release() override { return static_cast<std::uint32_t>(--references); }
    const char* KELMORA_CALL GetName() override { return name; }
    std::uint32_t KELMORA_CALL GetHelpId() override { return 0; }
    bool KELMORA_CALL GetParamInfo(std::uint32_t, ParamInfo* info) override
    {
        info->kind = ParamFloat;
        return true;
    }
    bool KELMORA_CALL Render(IVideoHost*, VideoFrame*, VideoFrame*, VideoFrame*, RenderInfo*) override
    {
        return false;
    }
    const char* KELMORA_CALL GetPresetName(std::uint32_t) override { return nullptr; }
    bool KELMORA_CALL GetPresetValue(std::uint32_t, std::uint32_t, ParamValue*) override { return false; }

    const char* name = nullptr;
    int references = 0;
};

TEST_F(PresetSaver, LoadPreset_EffectsWithLongNamesOrNone_GetAWarningOf1023Characters)
{
    const std::string longName(3000, 'n');
    NamedEffect effect;
    OtherLibrary other;
    other.effect = &effect;
    Write("a.fxpunkg", AirBrushFile("Another Library", "Mine"));
    UserChooses("a.fxpunkg");

    EXPECT_EQ(saver->LoadPreset(nullptr, &other, EffectAirBrush, &preset, nullptr), 2);
    ExpectOneMessage(OtherEffectMessage(u"Mine", u""), u"Preset open warning");
    ShownMessages().clear();
    effect.name = longName.c_str();
    EXPECT_EQ(saver->LoadPreset(nullptr, &other, EffectAirBrush, &preset, nullptr), 2);
    ExpectOneMessage(OtherEffectMessage(u"Mine", std::u16string(3000, u'n')).substr(0, 1023),
                     u"Preset open warning");
    EXPECT_EQ(effect.references, 0);
}

TEST_F(PresetSaver, SavePreset_LongNames_AreCutTo259Bytes)
{
    const std::string longName(3000, 'n');
    NamedEffect effect;
    effect.name = longName.c_str();
    OtherLibrary other;
    other.effect = &effect;
    other.name = longName.c_str();
    UserChooses("a.fxpunkg");
    EXPECT_EQ(saver->SavePreset(nullptr, &other, EffectAirBrush, &preset, nullptr), 0);
    EXPECT_EQ(std::string(preset.LibraryName), std::string(259, 'n'));
    EXPECT_EQ(std::string(preset.EffectName), std::string(259, 'n'));
    EXPECT_EQ(effect.references, 0);
}

TEST_F(PresetSaver, LoadPreset_OfAnEffectThatCannotBeMade_FailsWithTheMessage)
{
    Write("a.fxpklmg", AirBrushFile());
    UserChooses("a.fxpklmg");
    EXPECT_EQ(Load(110), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
    EXPECT_EQ(preset.paramCount, 2); // it was read all the same
}

TEST_F(PresetSaver, LoadPreset_WithoutALibrary_TakesEveryFileWithAnEntry)
{
    Write("a.prs", "<Preset EffectName=\"Whatever\"><parameter type=\"9\" /></Preset>");
    UserChooses("a.prs");
    EXPECT_EQ(saver->LoadPreset(nullptr, nullptr, -1, &preset, nullptr), 0);
    EXPECT_TRUE(ShownMessages().empty());
    EXPECT_EQ(preset.paramCount, 1);
    Write("a.prs", "<Preset EffectName=\"Whatever\" />");
    EXPECT_EQ(saver->LoadPreset(nullptr, nullptr, -1, &preset, nullptr), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
}

TEST_F(PresetSaver, Paths_ThatNarrowTextCannotHold_Fail)
{
    // Neither UTF-8 nor a Western code page has one byte for it.
    const std::filesystem::path name(u"\u0101.fxpklmg");
    std::filesystem::create_directories(folder.Path());
    TestFolder::Write(folder.Path() / name, AirBrushFile());
    UserChooses(name);
    EXPECT_EQ(Load(EffectAirBrush), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
    ShownMessages().clear();
    preset.paramCount = 1;
    EXPECT_EQ(Save(EffectAirBrush), 1);
    ExpectOneMessage(kSaveError, u"Preset save error");
    EXPECT_EQ(FileContent(folder.Path() / name), AirBrushFile());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST_F(PresetSaver, Exceptions_OfLibraryOrDialog_BecomeTheFailure)
{
    OtherLibrary other;
    other.throws = true;
    UserChooses("a.fxpunkg");
    EXPECT_EQ(saver->LoadPreset(nullptr, &other, EffectAirBrush, &preset, nullptr), 1);
    ExpectOneMessage(kLoadError, u"Preset load error");
    ShownMessages().clear();
    NextDialogAnswer().runsOutOfMemory = true;
    EXPECT_EQ(Save(EffectAirBrush), 1);
    ExpectOneMessage(kSaveError, u"Preset save error");
}

TEST_F(PresetSaver, OutOfMemory_AtAnyCall_FailsAndLosesNothing)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    // Paths that fail before the file: what reading and writing do without memory is the file's own test.
    for (const bool saves : {false, true}) {
        UserChooses(saves ? std::filesystem::path(u"\u0101.fxpklmg") : "missing.fxpklmg");
        const auto work = [&] { return saves ? Save(EffectAirBrush, "de") : Load(EffectAirBrush, "de"); };
        std::uint64_t calls = 0;
        {
            const FailingNew count;
            work();
            calls = count.Calls();
        }
        ASSERT_GT(calls, 0u);
        for (std::uint64_t call = 0; call < 2 * calls; ++call) {
            std::int32_t result = 0;
            std::int64_t open = 0;
            {
                const FailingNew refuse(call < calls ? call : FailingNew::kNever,
                                        call < calls ? FailingNew::kNever : call - calls);
                result = work();
                ShownDialogs() = {};
                ShownMessages() = {};
                open = refuse.OpenBlocks();
            }
            EXPECT_EQ(result, 1) << call;
            EXPECT_LE(open, 0) << call;
        }
    }
}

} // namespace
} // namespace kelmora
