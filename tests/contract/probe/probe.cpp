// A host from the other side of the boundary. On 32-bit Windows this file is compiled for the Microsoft
// binary interface, without a single header of ours beside probe.h.

#include "tests/contract/probe/probe.h"

#ifdef KELMORA_PROBE_MICROSOFT

#include "tests/contract/probe/microsoft_interfaces.h"

#define PROBE_CALL __stdcall

namespace kelmora_probe {
namespace {

using Char = wchar_t;

// The upper bytes of a bool on its way carry what happened to be in the register.
Bool ToBool(int value)
{
    return 0xDEADBE00u | (value != 0 ? 1u : 0u);
}

// The same for a byte.
unsigned ToByte(unsigned value)
{
    return 0xDEADBE00u | (value & 0xFFu);
}

template <class Object>
void DestroyAndFree(Object* object)
{
    delete object;
}

template <class Object>
void DestroyAndKeep(Object* object)
{
    object->~Object();
}

HostInfo AskHostInfo(IVideoHost* host)
{
    return host->GetHostInfo();
}

const char* NameOf(const HostInfo& info)
{
    return info.name;
}

} // namespace
} // namespace kelmora_probe

#else

#include "contract/kelmora.h"

#define PROBE_CALL KELMORA_CALL

namespace kelmora_probe {

using namespace kelmora;

namespace {

using Bool = bool;
using Id = InterfaceId;
using Rect = FrameRect;
using Char = char16_t;

Bool ToBool(int value)
{
    return value != 0;
}

std::uint8_t ToByte(unsigned value)
{
    return static_cast<std::uint8_t>(value);
}

template <class Object>
void DestroyAndFree(Object* object)
{
    object->Destroy(KELMORA_DESTROY_FREE);
}

template <class Object>
void DestroyAndKeep(Object* object)
{
    object->Destroy(0);
}

HostInfo AskHostInfo(IVideoHost* host)
{
    HostInfo info = {};
    return *host->GetHostInfo(&info);
}

const char* NameOf(const HostInfo& info)
{
    return info.hostName;
}

} // namespace
} // namespace kelmora_probe

#endif

namespace kelmora_probe {
namespace {

// The stack pointer, where callees clear their arguments themselves and could take too much or too little.
inline Word StackPointer()
{
#ifdef __i386__
    Word here;
    __asm__ volatile("movl %%esp, %0" : "=r"(here) : : "memory");
    return here;
#else
    return 0;
#endif
}

// The same after a call. Puts the stack back as it was `before`, so that a callee which took too much or too
// little is reported instead of ending the program.
inline Word StackPointerRepaired(Word before)
{
#ifdef __i386__
    Word here;
    __asm__ volatile("movl %%esp, %0\n\tmovl %1, %%esp" : "=&r"(here) : "r"(before) : "memory");
    return here;
#else
    return before;
#endif
}

inline Word ToWord(const void* pointer)
{
    return reinterpret_cast<Word>(pointer);
}

inline Word ToWord(Word word)
{
    return word;
}

#if __SIZEOF_POINTER__ > 4
inline Word ToWord(unsigned word)
{
    return word;
}
#endif

inline Word ToWord(bool word)
{
    return word ? 1u : 0u;
}

inline Word ToWord(int word)
{
    return static_cast<unsigned>(word);
}

#ifdef KELMORA_PROBE_MICROSOFT
inline Word ToWord(long word)
{
    return static_cast<unsigned>(word);
}
#endif

Call* Note(Report* report, const char* what)
{
    Call* const call = &report->calls[report->count];
    *call = Call{};
    call->what = what;
    if (report->count + 1 < static_cast<int>(sizeof report->calls / sizeof report->calls[0]))
        ++report->count;
    return call;
}

// Makes one call and writes down its result and what it did to the stack.
#define PROBE_MAKE(what, expression)                                                                         \
    do {                                                                                                     \
        const Word before = StackPointer();                                                                  \
        const auto result = (expression);                                                                    \
        const Word after = StackPointerRepaired(before);                                                     \
        Call* const note = Note(report, what);                                                               \
        note->result = ToWord(result);                                                                       \
        note->stackShift = static_cast<int>(after - before);                                                 \
    } while (false)

#define PROBE_MAKE_VOID(what, expression)                                                                    \
    do {                                                                                                     \
        const Word before = StackPointer();                                                                  \
        expression;                                                                                          \
        const Word after = StackPointerRepaired(before);                                                     \
        Call* const note = Note(report, what);                                                               \
        note->stackShift = static_cast<int>(after - before);                                                 \
    } while (false)

// Arguments made up for a slot, converted to what the slot takes.
template <class T>
struct MadeUp {
    static T Get(unsigned slot, unsigned argument) { return static_cast<T>(Number(slot, argument)); }
};
template <class T>
struct MadeUp<T*> {
    static T* Get(unsigned slot, unsigned argument) { return reinterpret_cast<T*>(Pointer(slot, argument)); }
};

template <class T>
T Arg(unsigned slot, unsigned argument)
{
    return MadeUp<T>::Get(slot, argument);
}

template <class Object>
void WalkRoot(Object* object, Report* report)
{
    PROBE_MAKE("QueryInterface", object->QueryInterface(Arg<const Id*>(0, 0), Arg<void**>(0, 1)));
    PROBE_MAKE("AddRef", object->AddRef());
    PROBE_MAKE("Release", object->Release());
}

void WalkSlots(IEffectLibrary* object, Report* report)
{
    PROBE_MAKE("GetName", object->GetName());
    PROBE_MAKE("CreateEffect", object->CreateEffect(Arg<int>(4, 0)));
    PROBE_MAKE_VOID("ShowHelp", object->ShowHelp(Arg<void*>(5, 0), Arg<unsigned>(5, 1)));
    PROBE_MAKE("LibraryReserved", object->LibraryReserved());
    PROBE_MAKE("CreateFrameProcessor", object->CreateFrameProcessor());
    PROBE_MAKE("CreatePresetSaver", object->CreatePresetSaver());
}

void WalkSlots(IVideoEffect* object, Report* report)
{
    PROBE_MAKE("GetName", object->GetName());
    PROBE_MAKE("GetHelpId", object->GetHelpId());
    PROBE_MAKE("GetParamInfo", object->GetParamInfo(Arg<unsigned>(5, 0), Arg<ParamInfo*>(5, 1)));
    PROBE_MAKE("Render",
               object->Render(Arg<IVideoHost*>(6, 0), Arg<VideoFrame*>(6, 1), Arg<VideoFrame*>(6, 2),
                              Arg<VideoFrame*>(6, 3), Arg<RenderInfo*>(6, 4)));
    PROBE_MAKE("GetPresetName", object->GetPresetName(Arg<unsigned>(7, 0)));
    PROBE_MAKE("GetPresetValue",
               object->GetPresetValue(Arg<unsigned>(8, 0), Arg<unsigned>(8, 1), Arg<ParamValue*>(8, 2)));
}

void WalkSlots(IVideoHost* object, Report* report)
{
#ifdef KELMORA_PROBE_MICROSOFT
    constexpr auto kind = 3u;
#else
    constexpr auto kind = ParamColor;
#endif
    PROBE_MAKE("GetParamValue",
               object->GetParamValue(Arg<unsigned>(3, 0), Arg<ParamValue*>(3, 1), kind) & 0xFFu);
    PROBE_MAKE("HostReserved4",
               object->HostReserved4(Arg<unsigned>(4, 0), Arg<unsigned>(4, 1), ToByte(0x99)) & 0xFFu);
    PROBE_MAKE("HostReserved5", object->HostReserved5(Arg<unsigned>(5, 0), Arg<unsigned>(5, 1)));
    PROBE_MAKE("HostReserved6", object->HostReserved6(Arg<unsigned>(6, 0), Arg<unsigned>(6, 1)) & 0xFFu);
    PROBE_MAKE_VOID("HostReserved7", object->HostReserved7(Arg<unsigned>(7, 0), Arg<unsigned>(7, 1)));
    HostInfo info = {};
    PROBE_MAKE_VOID("GetHostInfo", info = AskHostInfo(object));
    const Word words[] = {ToWord(NameOf(info)), info.words[0], info.words[1], info.words[2]};
    for (const Word word : words)
        Note(report, "GetHostInfo, word")->result = word;
}

void WalkSlots(IParamToolTip* object, Report* report)
{
    PROBE_MAKE("GetToolTip", object->GetToolTip(Arg<unsigned>(3, 0)));
}

void WalkSlots(IMemoryProvider* object, Report* report)
{
    PROBE_MAKE("Alloc", object->Alloc(Arg<void**>(3, 0), Arg<unsigned>(3, 1)) & 0xFFu);
    PROBE_MAKE_VOID("Free", object->Free(Arg<void*>(4, 0)));
    PROBE_MAKE(
        "AllocImage",
        object->AllocImage(Arg<void**>(5, 0), Arg<int>(5, 1), Arg<int>(5, 2), Arg<int>(5, 3), Arg<int*>(5, 4))
            & 0xFFu);
    PROBE_MAKE_VOID("FreeImage", object->FreeImage(Arg<void*>(6, 0)));
}

void WalkSlots(IFrameProcessor* object, Report* report)
{
    using In = const VideoFrame*;
    using Out = VideoFrame*;
    PROBE_MAKE("Copy", object->Copy(Arg<In>(3, 0), Arg<Out>(3, 1)));
    PROBE_MAKE("Resize", object->Resize(Arg<In>(4, 0), Arg<Out>(4, 1), Arg<int>(4, 2)));
    PROBE_MAKE("ReverseChannels", object->ReverseChannels(Arg<In>(5, 0), Arg<Out>(5, 1)));
    PROBE_MAKE("YCbCr422ToBGRA",
               object->YCbCr422ToBGRA(Arg<In>(6, 0), Arg<Out>(6, 1), Arg<int>(6, 2), Arg<int>(6, 3)));
    PROBE_MAKE("BGRAToYCbCr422", object->BGRAToYCbCr422(Arg<In>(7, 0), Arg<Out>(7, 1), Arg<int>(7, 2)));
    PROBE_MAKE("SetChannel", object->SetChannel(Arg<Out>(8, 0), Arg<int>(8, 1), Arg<int>(8, 2)));
    PROBE_MAKE("AlphaOver", object->AlphaOver(Arg<Out>(9, 0), Arg<In>(9, 1), Arg<In>(9, 2), ToBool(1)));
    PROBE_MAKE("AlphaOver", object->AlphaOver(Arg<Out>(9, 0), Arg<In>(9, 1), Arg<In>(9, 2), ToBool(0)));
    PROBE_MAKE("PermuteChannels", object->PermuteChannels(Arg<Out>(10, 0), Arg<const int*>(10, 1)));
    PROBE_MAKE("Premultiply", object->Premultiply(Arg<Out>(11, 0)));
    PROBE_MAKE("YCbCrToARGB", object->YCbCrToARGB(Arg<In>(12, 0), Arg<Out>(12, 1)));
    PROBE_MAKE("ARGBToYCbCr", object->ARGBToYCbCr(Arg<In>(13, 0), Arg<Out>(13, 1)));
    PROBE_MAKE("FlipVertical", object->FlipVertical(Arg<Out>(14, 0)));
    PROBE_MAKE("FlipVerticalTo", object->FlipVerticalTo(Arg<In>(15, 0), Arg<Out>(15, 1)));
    PROBE_MAKE_VOID("Destroy", DestroyAndFree(object));
    PROBE_MAKE_VOID("Destroy", DestroyAndKeep(object));
    PROBE_MAKE(
        "ResizeRegion",
        object->ResizeRegion(Arg<In>(17, 0), Arg<const Rect*>(17, 1), Arg<Out>(17, 2), Arg<int>(17, 3)));
}

void WalkSlots(IPresetSaver* object, Report* report)
{
    PROBE_MAKE("LoadPreset",
               object->LoadPreset(Arg<void*>(3, 0), Arg<IEffectLibrary*>(3, 1), Arg<int>(3, 2),
                                  Arg<PresetData*>(3, 3), Arg<const char*>(3, 4)));
    PROBE_MAKE("SavePreset",
               object->SavePreset(Arg<void*>(4, 0), Arg<IEffectLibrary*>(4, 1), Arg<int>(4, 2),
                                  Arg<PresetData*>(4, 3), Arg<const char*>(4, 4)));
    PROBE_MAKE_VOID("Destroy", DestroyAndFree(object));
    PROBE_MAKE_VOID("Destroy", DestroyAndKeep(object));
}

void WalkSlots(IMultiLingual* object, Report* report)
{
    PROBE_MAKE("GetTextEx",
               object->GetTextEx(Pointer(3, 0), Pointer(3, 1), Pointer(3, 2), Pointer(3, 3), Pointer(3, 4),
                                 Pointer(3, 5), Pointer(3, 6)));
    PROBE_MAKE("GetText",
               object->GetText(Arg<const char*>(4, 0), Arg<unsigned>(4, 1), Arg<const char*>(4, 2),
                               Arg<Char*>(4, 3), Arg<unsigned>(4, 4)));
}

template <class Object>
void WalkAll(const Walk& walk)
{
    auto* const object = static_cast<Object*>(walk.object);
    WalkRoot(object, walk.report);
    WalkSlots(object, walk.report);
}

template <class... Words>
void NoteAnswered(Report* report, const char* what, Words... words)
{
    Call* const call = Note(report, what);
    ((call->arguments[call->argumentCount++] = ToWord(words)), ...);
}

// The root's three slots, the same for both objects.
template <class Interface>
class Answering : public Interface {
public:
    void Begin(Report* report, int answer)
    {
        m_report = report;
        m_answer = answer;
    }

#ifdef KELMORA_PROBE_MICROSOFT
    long PROBE_CALL QueryInterface(const Id* wanted, void** out) override
#else
    std::int32_t PROBE_CALL QueryInterface(const Id* wanted, void** out) override
#endif
    {
        NoteAnswered(m_report, "QueryInterface", ToWord(wanted), ToWord(out));
        return static_cast<int>(0x80004002u);
    }
    unsigned PROBE_CALL AddRef() override
    {
        NoteAnswered(m_report, "AddRef");
        return NumberBack(1);
    }
    unsigned PROBE_CALL Release() override
    {
        NoteAnswered(m_report, "Release");
        return NumberBack(2);
    }

protected:
    Report* m_report = nullptr;
    int m_answer = 0;
};

class Host final : public Answering<IVideoHost> {
public:
#ifdef KELMORA_PROBE_MICROSOFT
    using Kind = unsigned;
    using Byte = unsigned;
#else
    using Kind = ParamKind;
    using Byte = std::uint8_t;
#endif
    Bool PROBE_CALL GetParamValue(unsigned knob, ParamValue* out, Kind kind) override
    {
        NoteAnswered(m_report, "GetParamValue", knob, ToWord(out), static_cast<unsigned>(kind));
        return ToBool(m_answer);
    }
    Bool PROBE_CALL HostReserved4(unsigned first, unsigned second, Byte third) override
    {
        NoteAnswered(m_report, "HostReserved4", first, second, static_cast<unsigned>(third) & 0xFFu);
        return ToBool(m_answer);
    }
    unsigned PROBE_CALL HostReserved5(unsigned first, unsigned second) override
    {
        NoteAnswered(m_report, "HostReserved5", first, second);
        return NumberBack(5);
    }
    Bool PROBE_CALL HostReserved6(unsigned first, unsigned second) override
    {
        NoteAnswered(m_report, "HostReserved6", first, second);
        return ToBool(m_answer);
    }
    void PROBE_CALL HostReserved7(unsigned first, unsigned second) override
    {
        NoteAnswered(m_report, "HostReserved7", first, second);
    }
#ifdef KELMORA_PROBE_MICROSOFT
    HostInfo PROBE_CALL GetHostInfo() override
    {
        NoteAnswered(m_report, "GetHostInfo");
        return {"The probe", { NumberBack(8), NumberBack(9), NumberBack(10) }};
    }
#else
    HostInfo* PROBE_CALL GetHostInfo(HostInfo* result) override
    {
        NoteAnswered(m_report, "GetHostInfo");
        *result = {"The probe", {NumberBack(8), NumberBack(9), NumberBack(10)}};
        return result;
    }
#endif
};

class Memory final : public Answering<IMemoryProvider> {
public:
    Bool PROBE_CALL Alloc(void** out, unsigned bytes) override
    {
        NoteAnswered(m_report, "Alloc", ToWord(out), bytes);
        return ToBool(m_answer);
    }
    void PROBE_CALL Free(void* memory) override { NoteAnswered(m_report, "Free", ToWord(memory)); }
    Bool PROBE_CALL AllocImage(void** out, int width, int height, int pixelBytes, int* stride) override
    {
        NoteAnswered(m_report, "AllocImage", ToWord(out), width, height, pixelBytes, ToWord(stride));
        return ToBool(m_answer);
    }
    void PROBE_CALL FreeImage(void* memory) override { NoteAnswered(m_report, "FreeImage", ToWord(memory)); }
};

constinit Host g_host;
constinit Memory g_memory;

bool SameId(const Id* a, const Id* b)
{
    for (int i = 0; i < 16; ++i)
        if (reinterpret_cast<const unsigned char*>(a)[i] != reinterpret_cast<const unsigned char*>(b)[i])
            return false;
    return true;
}

// Ids as a host's author writes them down: bytes in memory.
constexpr unsigned char kVideoEffectId[16] = {0xCD, 0x7F, 0xCF, 0x0B, 0xE5, 0x6B, 0x40, 0x4A,
                                              0x9A, 0x49, 0xA6, 0x8D, 0x6B, 0xF6, 0x60, 0x26};
constexpr unsigned char kEffectLibraryId[16] = {0x5F, 0x0B, 0x8D, 0x9B, 0x5A, 0x06, 0xB1, 0x46,
                                                0x88, 0x9C, 0xF0, 0x57, 0x93, 0x4C, 0xE8, 0xA4};
constexpr unsigned char kMemoryProviderId[16] = {0x81, 0x5B, 0x63, 0x9F, 0x6A, 0x50, 0xEE, 0x4D,
                                                 0x9D, 0xC7, 0x9E, 0x0B, 0xAB, 0xA2, 0xD5, 0xA2};
constexpr unsigned char kFrameProcessorId[16] = {0x11, 0x9C, 0xD1, 0xB9, 0xCC, 0x28, 0x17, 0x4C,
                                                 0x80, 0xC6, 0x23, 0x5D, 0xAD, 0x31, 0x68, 0x4A};
constexpr unsigned char kUnknownId[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

// The bytes in a record of the id's own type, which may want an alignment.
struct IdOf {
    explicit IdOf(const unsigned char (&bytes)[16])
    {
        for (int i = 0; i < 16; ++i)
            reinterpret_cast<unsigned char*>(&value)[i] = bytes[i];
    }
    Id value = {};
};

alignas(8) unsigned char g_arena[8u << 20];

// All requests are served from one stretch, front to back; it starts anew when nothing is out. Addresses
// are odd multiples of 4: no host promises more.
class VisitMemory final : public Answering<IMemoryProvider> {
public:
    void Begin(Visit* visit) { m_visit = visit; }

#ifdef KELMORA_PROBE_MICROSOFT
    long PROBE_CALL QueryInterface(const Id*, void** out) override
#else
    std::int32_t PROBE_CALL QueryInterface(const Id*, void** out) override
#endif
    {
        *out = nullptr;
        return static_cast<int>(0x80004002u);
    }
    unsigned PROBE_CALL AddRef() override
    {
        return static_cast<unsigned>(++m_visit->memoryReferences);
    }
    unsigned PROBE_CALL Release() override
    {
        return static_cast<unsigned>(--m_visit->memoryReferences);
    }

    Bool PROBE_CALL Alloc(void** out, unsigned bytes) override
    {
        return Give(out, bytes);
    }
    void PROBE_CALL Free(void*) override
    {
        TakeBack();
    }
    Bool PROBE_CALL AllocImage(void** out, int width, int height, int pixelBytes, int* stride) override
    {
        *stride = width * pixelBytes + 4;
        return Give(out, static_cast<unsigned>(*stride) * static_cast<unsigned>(height));
    }
    void PROBE_CALL FreeImage(void*) override
    {
        TakeBack();
    }

private:
    Bool Give(void** out, unsigned bytes)
    {
        const unsigned size = (bytes + 15) / 8 * 8;
        if (sizeof g_arena - m_used < size) {
            ++m_visit->blocksRefused;
            *out = nullptr;
            return ToBool(0);
        }
        *out = g_arena + m_used + 4;
        m_used += size;
        ++m_visit->blocksGiven;
        ++m_visit->blocksOpen;
        return ToBool(1);
    }

    void TakeBack()
    {
        if (--m_visit->blocksOpen == 0)
            m_used = 0;
    }

    Visit* m_visit = nullptr;
    unsigned m_used = 0;
};

constinit VisitMemory g_visitMemory;

class VisitHost final : public Answering<IVideoHost> {
public:
    void Begin(Visit* visit)
    {
        m_visit = visit;
        for (ParamValue& knob : m_knobs)
            knob = {};
    }

    static constexpr int kMostKnobs = 32;

    void SetKnob(int number, unsigned value, unsigned valueY)
    {
        m_knobs[number].value = value;
        m_knobs[number].valueY = valueY;
    }

#ifdef KELMORA_PROBE_MICROSOFT
    using Kind = unsigned;
    using Byte = unsigned;
    long PROBE_CALL QueryInterface(const Id* wanted, void** out) override
#else
    using Kind = ParamKind;
    using Byte = std::uint8_t;
    std::int32_t PROBE_CALL QueryInterface(const Id* wanted, void** out) override
#endif
    {
        const IdOf provider(kMemoryProviderId);
        if (SameId(wanted, &provider.value)) {
            g_visitMemory.AddRef();
            *out = static_cast<IMemoryProvider*>(&g_visitMemory);
            return 0;
        }
        *out = nullptr;
        return static_cast<int>(0x80004002u);
    }
    unsigned PROBE_CALL AddRef() override
    {
        return static_cast<unsigned>(++m_visit->hostReferences);
    }
    unsigned PROBE_CALL Release() override
    {
        return static_cast<unsigned>(--m_visit->hostReferences);
    }

    Bool PROBE_CALL GetParamValue(unsigned knob, ParamValue* out, Kind kind) override
    {
        ++m_visit->knobsAsked;
        if (knob >= static_cast<unsigned>(m_visit->knobs)) {
            ++m_visit->knobsOffTable;
            return ToBool(0);
        }
        out->value = m_knobs[knob].value;
        out->valueY = m_knobs[knob].valueY;
        out->kind = kind;
        return ToBool(1);
    }
    Bool PROBE_CALL HostReserved4(unsigned, unsigned, Byte) override
    {
        return ToBool(0);
    }
    unsigned PROBE_CALL HostReserved5(unsigned, unsigned) override
    {
        return 0;
    }
    Bool PROBE_CALL HostReserved6(unsigned, unsigned) override
    {
        return ToBool(0);
    }
    void PROBE_CALL HostReserved7(unsigned, unsigned) override {}
#ifdef KELMORA_PROBE_MICROSOFT
    HostInfo PROBE_CALL GetHostInfo() override
    {
        return {"The probe", { 1, 2, 3 }};
    }
#else
    HostInfo* PROBE_CALL GetHostInfo(HostInfo* result) override
    {
        *result = {"The probe", {1, 2, 3}};
        return result;
    }
#endif

private:
    Visit* m_visit = nullptr;
    ParamValue m_knobs[kMostKnobs] = {};
};

constinit VisitHost g_visitHost;

void VisitEffect(IVideoEffect* effect, Visit* visit)
{
    Report* const report = visit->report;
    const IdOf effectId(kVideoEffectId);
    const IdOf hostsOwnId(kMemoryProviderId);
    void* view = nullptr;
    PROBE_MAKE("IVideoEffect::QueryInterface", effect->QueryInterface(&effectId.value, &view));
    Note(report, "the effect's own view")->result = view == effect ? 1 : 0;
    PROBE_MAKE("IVideoEffect::Release", effect->Release());
    PROBE_MAKE("IVideoEffect::QueryInterface", effect->QueryInterface(&hostsOwnId.value, &view));
    Note(report, "a view that it has not")->result = ToWord(view);
    PROBE_MAKE("IVideoEffect::GetName", effect->GetName());
    PROBE_MAKE("IVideoEffect::GetHelpId", effect->GetHelpId());

    for (int more = 1; more != 0 && visit->knobs < VisitHost::kMostKnobs;) {
        ParamInfo info = {};
        PROBE_MAKE("IVideoEffect::GetParamInfo",
                   effect->GetParamInfo(static_cast<unsigned>(visit->knobs), &info));
        more = report->calls[report->count - 1].result != 0;
        if (more != 0)
            g_visitHost.SetKnob(visit->knobs++, info.value, info.valueY);
    }
    for (int more = 1; more != 0 && visit->presets < 40;) {
        PROBE_MAKE("IVideoEffect::GetPresetName",
                   effect->GetPresetName(static_cast<unsigned>(visit->presets)));
        more = report->calls[report->count - 1].result != 0;
        visit->presets += more;
    }
    ParamValue value = {};
    PROBE_MAKE("IVideoEffect::GetPresetValue", effect->GetPresetValue(0, 0, &value));

    PROBE_MAKE("IVideoEffect::Render",
               effect->Render(&g_visitHost, static_cast<VideoFrame*>(visit->firstPicture),
                              static_cast<VideoFrame*>(visit->secondPicture),
                              static_cast<VideoFrame*>(visit->output),
                              static_cast<RenderInfo*>(visit->info)));
    PROBE_MAKE("IVideoEffect::Release", effect->Release());
}

/// Every operation works on what the one before it made, so that the last pictures show them all.
void VisitProcessor(IFrameProcessor* processor, Visit* visit)
{
    Report* const report = visit->report;
    const IdOf processorId(kFrameProcessorId);
    const IdOf hostsOwnId(kMemoryProviderId);
    void* view = nullptr;
    PROBE_MAKE("IFrameProcessor::QueryInterface", processor->QueryInterface(&processorId.value, &view));
    Note(report, "the processor's own view")->result = view == processor ? 1 : 0;
    PROBE_MAKE("IFrameProcessor::AddRef", processor->AddRef());
    PROBE_MAKE("IFrameProcessor::Release", processor->Release());
    PROBE_MAKE("IFrameProcessor::Release", processor->Release());
    PROBE_MAKE("IFrameProcessor::QueryInterface", processor->QueryInterface(&hostsOwnId.value, &view));

    auto* const first = static_cast<VideoFrame*>(visit->firstPicture);
    auto* const large = static_cast<VideoFrame*>(visit->large);
    auto* const small = static_cast<VideoFrame*>(visit->small);
    auto* const packed = static_cast<VideoFrame*>(visit->packed);
    auto* const floats = static_cast<VideoFrame*>(visit->floats);
    constexpr int order[4] = {1, 2, 0, 3};
    constexpr Rect region = {3, 2, 20, 15};
    PROBE_MAKE("Copy", processor->Copy(first, large));
    PROBE_MAKE("Resize", processor->Resize(large, small, 2));
    PROBE_MAKE("ReverseChannels", processor->ReverseChannels(small, large));
    PROBE_MAKE("PermuteChannels", processor->PermuteChannels(large, order));
    PROBE_MAKE("SetChannel", processor->SetChannel(large, 3, 99));
    PROBE_MAKE("AlphaOver", processor->AlphaOver(small, large, first, ToBool(1)));
    PROBE_MAKE("AlphaOver", processor->AlphaOver(large, small, first, ToBool(0)));
    PROBE_MAKE("Premultiply", processor->Premultiply(large));
    PROBE_MAKE("FlipVertical", processor->FlipVertical(large));
    PROBE_MAKE("FlipVerticalTo", processor->FlipVerticalTo(large, small));
    PROBE_MAKE("ResizeRegion", processor->ResizeRegion(small, &region, large, 1));
    PROBE_MAKE("BGRAToYCbCr422", processor->BGRAToYCbCr422(large, packed, Arg<int>(7, 2)));
    PROBE_MAKE("YCbCr422ToBGRA", processor->YCbCr422ToBGRA(packed, small, 200, Arg<int>(6, 3)));
    PROBE_MAKE("YCbCrToARGB", processor->YCbCrToARGB(floats, floats));
    PROBE_MAKE("ARGBToYCbCr", processor->ARGBToYCbCr(floats, floats));
}

void VisitLibrary(Visit* visit)
{
    Report* const report = visit->report;
    g_visitHost.Begin(visit);
    g_visitMemory.Begin(visit);

    using Export = IEffectLibrary*(PROBE_CALL*)();
    const auto getEffectsLibrary = reinterpret_cast<Export>(visit->getEffectsLibrary);
    IEffectLibrary* library = nullptr;
    PROBE_MAKE("GetEffectsLibrary", library = getEffectsLibrary());
    if (!library)
        return;
    const IdOf libraryId(kEffectLibraryId);
    const IdOf unknownId(kUnknownId);
    void* view = nullptr;
    PROBE_MAKE("IEffectLibrary::QueryInterface", library->QueryInterface(&libraryId.value, &view));
    Note(report, "the library's own view")->result = view == library ? 1 : 0;
    PROBE_MAKE("IEffectLibrary::QueryInterface", library->QueryInterface(&unknownId.value, &view));
    Note(report, "the library's root")->result = view == library ? 1 : 0;
    PROBE_MAKE("IEffectLibrary::AddRef", library->AddRef());
    PROBE_MAKE("IEffectLibrary::Release", library->Release());
    PROBE_MAKE("IEffectLibrary::Release", library->Release());
    PROBE_MAKE("IEffectLibrary::Release", library->Release());
    PROBE_MAKE("IEffectLibrary::GetName", library->GetName());
    PROBE_MAKE_VOID("IEffectLibrary::LibraryReserved", library->LibraryReserved());

    IVideoEffect* effect = nullptr;
    PROBE_MAKE("IEffectLibrary::CreateEffect", effect = library->CreateEffect(visit->effectId));
    if (effect)
        VisitEffect(effect, visit);
    IVideoEffect* none = nullptr;
    PROBE_MAKE("IEffectLibrary::CreateEffect", none = library->CreateEffect(110));

    // One toolbox goes by its count, the other by its destructor's slot.
    IFrameProcessor* processor = nullptr;
    PROBE_MAKE("IEffectLibrary::CreateFrameProcessor", processor = library->CreateFrameProcessor());
    if (processor) {
        if (visit->large)
            VisitProcessor(processor, visit);
        PROBE_MAKE("IFrameProcessor, a null record",
                   processor->Copy(static_cast<VideoFrame*>(visit->firstPicture), nullptr));
        PROBE_MAKE("IFrameProcessor::Release", processor->Release());
    }
    PROBE_MAKE("IEffectLibrary::CreateFrameProcessor", processor = library->CreateFrameProcessor());
    if (processor)
        PROBE_MAKE_VOID("IFrameProcessor::Destroy", DestroyAndFree(processor));
    IPresetSaver* saver = nullptr;
    PROBE_MAKE("IEffectLibrary::CreatePresetSaver", saver = library->CreatePresetSaver());
    if (saver)
        PROBE_MAKE("IPresetSaver::Release", saver->Release());
    PROBE_MAKE("IEffectLibrary::CreatePresetSaver", saver = library->CreatePresetSaver());
    if (saver)
        PROBE_MAKE_VOID("IPresetSaver::Destroy", DestroyAndFree(saver));

    PROBE_MAKE("IEffectLibrary::Release", library->Release());
}

} // namespace
} // namespace kelmora_probe

extern "C" int KelmoraProbeIsMicrosoft()
{
#ifdef KELMORA_PROBE_MICROSOFT
    return 1;
#else
    return 0;
#endif
}

extern "C" void KelmoraProbeWalk(kelmora_probe::Walk* walk)
{
    using namespace kelmora_probe;
    switch (walk->which) {
    case WalkUnknown:
        WalkRoot(static_cast<kelmora_probe::IUnknown*>(walk->object), walk->report);
        break;
    case WalkEffectLibrary:
        WalkAll<IEffectLibrary>(*walk);
        break;
    case WalkVideoEffect:
        WalkAll<IVideoEffect>(*walk);
        break;
    case WalkVideoHost:
        WalkAll<IVideoHost>(*walk);
        break;
    case WalkParamToolTip:
        WalkAll<IParamToolTip>(*walk);
        break;
    case WalkMemoryProvider:
        WalkAll<IMemoryProvider>(*walk);
        break;
    case WalkFrameProcessor:
        WalkAll<IFrameProcessor>(*walk);
        break;
    case WalkPresetSaver:
        WalkAll<IPresetSaver>(*walk);
        break;
    case WalkMultiLingual:
        WalkAll<IMultiLingual>(*walk);
        break;
    }
}

extern "C" void* KelmoraProbeHost(kelmora_probe::Report* report, int answer)
{
    kelmora_probe::g_host.Begin(report, answer);
    return static_cast<kelmora_probe::IVideoHost*>(&kelmora_probe::g_host);
}

extern "C" void* KelmoraProbeMemory(kelmora_probe::Report* report, int answer)
{
    kelmora_probe::g_memory.Begin(report, answer);
    return static_cast<kelmora_probe::IMemoryProvider*>(&kelmora_probe::g_memory);
}

extern "C" void KelmoraProbeVisit(kelmora_probe::Visit* visit)
{
    kelmora_probe::VisitLibrary(visit);
}
