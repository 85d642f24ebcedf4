#include "tests/host/fake_library/fake_effect.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "tests/host/fake_library/fake_render.h"
#include "tests/host/fake_library/fault.h"

namespace kelmora::fake {
namespace {

struct Row {
    const char* name;
    ParamKind kind;
    std::uint32_t standard;
    std::uint32_t inPreset[2];
};

constexpr std::array kKnobs = {
    Row{"Level", ParamFloat, FloatWord(0.25f), {FloatWord(0.39f), FloatWord(1.0f)}},
    Row{"Mode", ParamChoice, 1, {0, 1}},
    Row{"Tint", ParamColor, 0x0080FF, {0xFFFFFF, 0}},
    Row{"Negative", ParamCheck, 0, {1, 0}},
    Row{"Middle", ParamPoint, FloatWord(0.5f), {FloatWord(0.25f), FloatWord(0.75f)}},
};
constexpr std::array<const char*, 2> kPresets = {"Half Light", "Night"};

void CopyName(char* to, std::size_t size, const char* name)
{
    std::strncpy(to, name, size - 1);
}

/// Writes the fields of a knob, and what the broken rule adds to them.
void Describe(const Row& knob, ParamInfo& info)
{
    info.value = knob.standard;
    info.valueY = 0;
    info.kind = knob.kind;
    if (knob.kind == ParamFloat) {
        info.scale.min = 0.0f;
        info.scale.max = 100.0f;
        info.scale.hostFlag = 1;
        info.scale.angular = 0;
        if (Breaks("default-out-of-range"))
            info.value = FloatWord(1.5f);
        if (Breaks("scale-upside-down"))
            std::swap(info.scale.min, info.scale.max);
    }
    if (knob.kind == ParamChoice) {
        info.choice.choiceCount = 2;
        CopyName(info.choice.choiceNames[0], 20, "Left");
        CopyName(info.choice.choiceNames[1], 20, "Right Side");
        if (Breaks("choice-name-without-end"))
            std::memset(info.choice.choiceNames[1], 'x', 20);
    }
    CopyName(info.name, sizeof info.name, knob.name);
    info.rect = {0, 10, 198, 30};
    info.shown = Breaks("hidden-knob") ? 0 : 1;

    if (Breaks("unknown-kind"))
        info.kind = 9;
    if (Breaks("name-without-end"))
        std::memset(info.name, 'x', sizeof info.name);
    if (Breaks("writes-reserved-bytes"))
        info.reserved[1] = 7;
    if (Breaks("writes-past-record"))
        std::memset(&info + 1, 1, 1);
    if (Breaks("writes-other-view") && knob.kind == ParamFloat)
        info.choice.choiceNames[5][0] = 'x';
}

} // namespace

std::atomic<std::int32_t> effectsThatCount = 0;

FakeEffect::FakeEffect(bool isBlend) : m_isBlend(isBlend), m_tips(*this)
{
    if (Breaks("effects-keep-file"))
        ++effectsThatCount;
}

FakeEffect::~FakeEffect()
{
    if (Breaks("effects-keep-file"))
        --effectsThatCount;
}

std::int32_t FakeEffect::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (out == nullptr) {
        if (Breaks("crashes-without-place"))
            Crash();
        return Breaks("shrugs-without-place") ? S_OK : E_FAIL;
    }
    const auto isAsked = [interfaceId](const InterfaceId& own) {
        return Breaks("compares-half-the-id") ? interfaceId->data1 == own.data1 : *interfaceId == own;
    };
    if (!Breaks("refusal-leaves-pointer"))
        *out = nullptr;
    if (isAsked(IParamToolTip::id)) {
        *out = static_cast<IParamToolTip*>(&m_tips);
        m_tips.AddRef();
        return S_OK;
    }
    if (isAsked(IUnknown::id) || isAsked(IVideoEffect::id) || Breaks("accepts-any-interface")) {
        *out = static_cast<IVideoEffect*>(this);
        if (!Breaks("query-forgets-to-count"))
            AddRef();
        return S_OK;
    }
    return E_NOINTERFACE;
}

std::uint32_t FakeEffect::AddRef()
{
    const std::uint32_t before = m_count++;
    return Breaks("addref-gives-old-count") ? before : before + 1;
}

std::uint32_t FakeEffect::Release()
{
    if (Breaks("counts-on-one-thread") && std::this_thread::get_id() != m_thread)
        return m_count;
    const std::uint32_t left = --m_count;
    if (left == 0) {
        if (Breaks("calls-host-at-end") && m_keptHost != nullptr)
            m_keptHost->GetParamValue(0, nullptr, ParamFloat);
        delete this;
    }
    return left;
}

const char* FakeEffect::GetName()
{
    if (Breaks("keeps-host") && m_keptHost != nullptr) {
        ParamValue value = {};
        m_keptHost->GetParamValue(0, &value, ParamFloat);
    }
    return m_isBlend ? "Fake Blend" : "Fake Filter";
}

std::uint32_t FakeEffect::GetHelpId()
{
    return 77;
}

bool FakeEffect::GetParamInfo(std::uint32_t knob, ParamInfo* info)
{
    m_walks += knob == 0 ? 1 : 0;
    const std::size_t count = Breaks("walk-differs") && m_walks % 2 == 0 ? 2 : kKnobs.size();
    if (knob >= count && info != nullptr) {
        if (Breaks("past-end-writes"))
            info->value = 1;
        const bool isTaken = Breaks("knobs-without-end") || (Breaks("gap-in-knobs") && knob == count + 3)
            || (Breaks("signed-index") && knob >= 0x80000000u);
        if (isTaken)
            Describe(kKnobs[0], *info);
        return isTaken;
    }
    if (info == nullptr)
        return false;
    Describe(kKnobs[knob], *info);
    return true;
}

bool FakeEffect::Render(IVideoHost* host, VideoFrame* firstPicture, VideoFrame* secondPicture,
                        VideoFrame* output, RenderInfo* info)
{
    if (Breaks("keeps-host") || Breaks("calls-host-at-end"))
        m_keptHost = host;
    if (Breaks("holds-host"))
        host->AddRef();
    if (Breaks("render-counts-itself"))
        AddRef();
    Memory memory;
    memory.lastProgress = m_lastProgress;
    memory.isOtherThread = std::this_thread::get_id() != m_thread;
    if (info != nullptr)
        m_lastProgress = info->progress;
    return fake::Render(m_isBlend, memory, host, firstPicture, secondPicture, output, info);
}

const char* FakeEffect::GetPresetName(std::uint32_t preset)
{
    if (Breaks("presets-without-end"))
        return kPresets[0];
    return preset < kPresets.size() ? kPresets[preset] : nullptr;
}

bool FakeEffect::GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out)
{
    if (out == nullptr && Breaks("crashes-without-value"))
        Crash();
    if (out == nullptr || preset >= kPresets.size() || knob >= kKnobs.size()) {
        if (out != nullptr && Breaks("preset-past-end-writes"))
            out->value = 0;
        return out != nullptr && Breaks("presets-without-end") && knob < kKnobs.size();
    }
    out->value = kKnobs[knob].inPreset[preset];
    out->valueY = 0;
    if (Breaks("preset-out-of-range") && kKnobs[knob].kind == ParamChoice)
        out->value = 2;
    if (Breaks("writes-preset-kind"))
        out->kind = kKnobs[knob].kind;
    return true;
}

std::int32_t FakeEffect::Tips::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (Breaks("view-with-own-identity") && out != nullptr && *interfaceId == IUnknown::id) {
        *out = static_cast<IParamToolTip*>(this);
        AddRef();
        return S_OK;
    }
    return m_effect.QueryInterface(interfaceId, out);
}

std::uint32_t FakeEffect::Tips::AddRef()
{
    return Breaks("view-counts-apart") ? ++m_ownCount : m_effect.AddRef();
}

std::uint32_t FakeEffect::Tips::Release()
{
    return Breaks("view-counts-apart") ? --m_ownCount : m_effect.Release();
}

const char* FakeEffect::Tips::GetToolTip(std::uint32_t knob)
{
    return knob < kKnobs.size() || Breaks("tips-without-end") ? "A tip" : nullptr;
}

} // namespace kelmora::fake
