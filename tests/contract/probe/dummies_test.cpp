// The probe as a host: it walks every slot of objects that are made with contract/ and write down what
// reaches them.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "contract/kelmora.h"
#include "tests/contract/probe/call_aligned.h"
#include "tests/contract/probe/probe.h"

namespace kelmora {
namespace {

using kelmora_probe::Number;
using kelmora_probe::NumberBack;
using kelmora_probe::PointerBack;
using kelmora_probe::Word;

struct Received {
    std::string member;
    std::vector<Word> arguments;

    bool operator==(const Received&) const = default;
};

void PrintTo(const Received& call, std::ostream* out)
{
    *out << call.member << "(";
    for (const Word word : call.arguments)
        *out << std::hex << word << std::dec << (&word == &call.arguments.back() ? "" : ", ");
    *out << ")";
}

struct Given {
    std::string member;
    Word result;
    int stackShift;

    bool operator==(const Given&) const = default;
};

void PrintTo(const Given& call, std::ostream* out)
{
    *out << call.member << " gave " << std::hex << call.result << std::dec << ", stack off by "
         << call.stackShift;
}

// Where calls are written down.
class Recorder {
public:
    explicit Recorder(bool answer) : m_answer(answer) {}

    const std::vector<Received>& Calls() const { return m_calls; }

    // Of each member with arguments on the stack, the places modulo 16 at which they arrived.
    const std::map<std::string, std::set<std::uintptr_t>>& Residues() const { return m_residues; }

protected:
    template <class First, class... Arguments>
    void Note(const char* member, const First& first, const Arguments&... arguments)
    {
        m_calls.push_back({member, {ToWord(first), ToWord(arguments)...}});
        m_residues[member].insert(reinterpret_cast<std::uintptr_t>(&first) % 16);
        NeedAlignedStack();
    }

    void Note(const char* member)
    {
        m_calls.push_back({member, {}});
        NeedAlignedStack();
    }

    bool Answer() const { return m_answer; }

    template <class T>
    static T* BackAs(unsigned slot)
    {
        return reinterpret_cast<T*>(PointerBack(slot));
    }

private:
    template <class T>
    static Word ToWord(T* pointer)
    {
        return reinterpret_cast<Word>(pointer);
    }
    static Word ToWord(bool word) { return word ? 1 : 0; }
    static Word ToWord(std::uint8_t word) { return word; }
    static Word ToWord(std::int32_t word) { return static_cast<std::uint32_t>(word); }
    static Word ToWord(std::uint32_t word) { return word; }
    static Word ToWord(ParamKind word) { return word; }
    static Word ToWord(std::uint64_t word) { return static_cast<Word>(word); }

    // Stores a whole vector on the stack. Where the compiler believes in an alignment that the caller did
    // not keep, this faults.
    static void NeedAlignedStack()
    {
#ifdef __SSE2__
        alignas(16) float place[4];
        __asm__ volatile("movaps %%xmm0, %0" : "=m"(place));
#endif
    }

    bool m_answer;
    std::vector<Received> m_calls;
    std::map<std::string, std::set<std::uintptr_t>> m_residues;
};

template <class Interface>
class RecordingRoot : public Interface, public Recorder {
public:
    using Recorder::Recorder;

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* wanted, void** out) override
    {
        Note("QueryInterface", wanted, out);
        return E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override
    {
        Note("AddRef");
        return NumberBack(1);
    }
    std::uint32_t KELMORA_CALL Release() override
    {
        Note("Release");
        return NumberBack(2);
    }
};

class RecordingUnknown final : public RecordingRoot<IUnknown> {
public:
    using RecordingRoot::RecordingRoot;
};

class RecordingLibrary final : public RecordingRoot<IEffectLibrary> {
public:
    using RecordingRoot::RecordingRoot;

    const char* KELMORA_CALL GetName() override
    {
        Note("GetName");
        return BackAs<char>(3);
    }
    IVideoEffect* KELMORA_CALL CreateEffect(std::int32_t effectId) override
    {
        Note("CreateEffect", effectId);
        return BackAs<IVideoEffect>(4);
    }
    void KELMORA_CALL ShowHelp(void* parent, std::uint32_t topic) override
    {
        Note("ShowHelp", parent, topic);
    }
    void* KELMORA_CALL LibraryReserved() override
    {
        Note("LibraryReserved");
        return BackAs<void>(6);
    }
    IFrameProcessor* KELMORA_CALL CreateFrameProcessor() override
    {
        Note("CreateFrameProcessor");
        return BackAs<IFrameProcessor>(7);
    }
    IPresetSaver* KELMORA_CALL CreatePresetSaver() override
    {
        Note("CreatePresetSaver");
        return BackAs<IPresetSaver>(8);
    }
};

class RecordingEffect final : public RecordingRoot<IVideoEffect> {
public:
    using RecordingRoot::RecordingRoot;

    const char* KELMORA_CALL GetName() override
    {
        Note("GetName");
        return BackAs<char>(3);
    }
    std::uint32_t KELMORA_CALL GetHelpId() override
    {
        Note("GetHelpId");
        return NumberBack(4);
    }
    bool KELMORA_CALL GetParamInfo(std::uint32_t knob, ParamInfo* info) override
    {
        Note("GetParamInfo", knob, info);
        return Answer();
    }
    bool KELMORA_CALL Render(IVideoHost* host, VideoFrame* firstPicture, VideoFrame* secondPicture,
                             VideoFrame* output, RenderInfo* info) override
    {
        Note("Render", host, firstPicture, secondPicture, output, info);
        return Answer();
    }
    const char* KELMORA_CALL GetPresetName(std::uint32_t preset) override
    {
        Note("GetPresetName", preset);
        return BackAs<char>(7);
    }
    bool KELMORA_CALL GetPresetValue(std::uint32_t preset, std::uint32_t knob, ParamValue* out) override
    {
        Note("GetPresetValue", preset, knob, out);
        return Answer();
    }
};

class RecordingHost final : public RecordingRoot<IVideoHost> {
public:
    using RecordingRoot::RecordingRoot;

    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override
    {
        Note("GetParamValue", knob, out, kind);
        return Answer();
    }
    bool KELMORA_CALL HostReserved4(std::uint32_t first, std::uint32_t second, std::uint8_t third) override
    {
        Note("HostReserved4", first, second, third);
        return Answer();
    }
    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t first, std::uint32_t second) override
    {
        Note("HostReserved5", first, second);
        return NumberBack(5);
    }
    bool KELMORA_CALL HostReserved6(std::uint32_t first, std::uint32_t second) override
    {
        Note("HostReserved6", first, second);
        return Answer();
    }
    void KELMORA_CALL HostReserved7(std::uint32_t first, std::uint32_t second) override
    {
        Note("HostReserved7", first, second);
    }
    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override
    {
        Note("GetHostInfo");
        *result = {BackAs<char>(8), {NumberBack(8), NumberBack(9), NumberBack(10)}};
        return result;
    }
};

class RecordingToolTip final : public RecordingRoot<IParamToolTip> {
public:
    using RecordingRoot::RecordingRoot;

    const char* KELMORA_CALL GetToolTip(std::uint32_t knob) override
    {
        Note("GetToolTip", knob);
        return BackAs<char>(3);
    }
};

class RecordingMemory final : public RecordingRoot<IMemoryProvider> {
public:
    using RecordingRoot::RecordingRoot;

    bool KELMORA_CALL Alloc(void** out, std::uint32_t bytes) override
    {
        Note("Alloc", out, bytes);
        return Answer();
    }
    void KELMORA_CALL Free(void* memory) override { Note("Free", memory); }
    bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                                 std::int32_t* stride) override
    {
        Note("AllocImage", out, width, height, pixelBytes, stride);
        return Answer();
    }
    void KELMORA_CALL FreeImage(void* memory) override { Note("FreeImage", memory); }
};

class RecordingProcessor final : public RecordingRoot<IFrameProcessor> {
public:
    using RecordingRoot::RecordingRoot;

    bool KELMORA_CALL Copy(const VideoFrame* src, VideoFrame* dst) override
    {
        Note("Copy", src, dst);
        return Answer();
    }
    bool KELMORA_CALL Resize(const VideoFrame* src, VideoFrame* dst, std::int32_t quality) override
    {
        Note("Resize", src, dst, quality);
        return Answer();
    }
    bool KELMORA_CALL ReverseChannels(const VideoFrame* src, VideoFrame* dst) override
    {
        Note("ReverseChannels", src, dst);
        return Answer();
    }
    bool KELMORA_CALL YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, std::int32_t alpha,
                                     std::int32_t reserved) override
    {
        Note("YCbCr422ToBGRA", src, dst, alpha, reserved);
        return Answer();
    }
    bool KELMORA_CALL BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst, std::int32_t reserved) override
    {
        Note("BGRAToYCbCr422", src, dst, reserved);
        return Answer();
    }
    bool KELMORA_CALL SetChannel(VideoFrame* frame, std::int32_t channel, std::int32_t value) override
    {
        Note("SetChannel", frame, channel, value);
        return Answer();
    }
    bool KELMORA_CALL AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b,
                                bool premultiplied) override
    {
        Note("AlphaOver", out, a, b, premultiplied);
        return Answer();
    }
    bool KELMORA_CALL PermuteChannels(VideoFrame* frame, const std::int32_t* order) override
    {
        Note("PermuteChannels", frame, order);
        return Answer();
    }
    bool KELMORA_CALL Premultiply(VideoFrame* frame) override
    {
        Note("Premultiply", frame);
        return Answer();
    }
    bool KELMORA_CALL YCbCrToARGB(const VideoFrame* src, VideoFrame* dst) override
    {
        Note("YCbCrToARGB", src, dst);
        return Answer();
    }
    bool KELMORA_CALL ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst) override
    {
        Note("ARGBToYCbCr", src, dst);
        return Answer();
    }
    bool KELMORA_CALL FlipVertical(VideoFrame* frame) override
    {
        Note("FlipVertical", frame);
        return Answer();
    }
    bool KELMORA_CALL FlipVerticalTo(const VideoFrame* src, VideoFrame* dst) override
    {
        Note("FlipVerticalTo", src, dst);
        return Answer();
    }
    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) override
    {
        Note("Destroy", flags);
        return this;
    }
    bool KELMORA_CALL ResizeRegion(const VideoFrame* src, const FrameRect* region, VideoFrame* dst,
                                   std::int32_t quality) override
    {
        Note("ResizeRegion", src, region, dst, quality);
        return Answer();
    }
};

class RecordingSaver final : public RecordingRoot<IPresetSaver> {
public:
    using RecordingRoot::RecordingRoot;

    std::int32_t KELMORA_CALL LoadPreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                         PresetData* preset, const char* languageCode) override
    {
        Note("LoadPreset", parent, library, effectId, preset, languageCode);
        return static_cast<std::int32_t>(NumberBack(3));
    }
    std::int32_t KELMORA_CALL SavePreset(void* parent, IEffectLibrary* library, std::int32_t effectId,
                                         PresetData* preset, const char* languageCode) override
    {
        Note("SavePreset", parent, library, effectId, preset, languageCode);
        return static_cast<std::int32_t>(NumberBack(4));
    }
    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) override
    {
        Note("Destroy", flags);
        return this;
    }
};

class RecordingLanguage final : public RecordingRoot<IMultiLingual> {
public:
    using RecordingRoot::RecordingRoot;

    std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                         std::uintptr_t d, std::uintptr_t e, std::uintptr_t f,
                                         std::uintptr_t g) override
    {
        Note("GetTextEx", a, b, c, d, e, f, g);
        return NumberBack(3);
    }
    std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section, const char* key,
                                       char16_t* buffer, std::uint32_t capacity) override
    {
        Note("GetText", languageCode, section, key, buffer, capacity);
        return NumberBack(4);
    }
};

// The pointer that the probe made up for argument `argument` of slot `slot`.
Word P(unsigned slot, unsigned argument)
{
    return kelmora_probe::Pointer(slot, argument);
}

// Likewise the number.
Word N(unsigned slot, unsigned argument)
{
    return Number(slot, argument);
}

// What a table promises: each member in the order of its slots, the arguments that must reach it, and what
// must come back of it.
class Table {
public:
    Table()
    {
        Slot("QueryInterface", 0x80004002u, P(0, 0), P(0, 1));
        Slot("AddRef", NumberBack(1));
        Slot("Release", NumberBack(2));
    }

    template <class... Arguments>
    Table& Slot(const char* member, Word result, Arguments... arguments)
    {
        m_received.push_back({member, {static_cast<Word>(arguments)...}});
        return Extra(member, result);
    }

    // A further word that the latest call gave back.
    Table& Extra(const char* name, Word result)
    {
        m_given.push_back({name, result, 0});
        return *this;
    }

    const std::vector<Received>& ReceivedCalls() const { return m_received; }
    const std::vector<Given>& GivenResults() const { return m_given; }

private:
    std::vector<Received> m_received;
    std::vector<Given> m_given;
};

template <class Dummy, class Interface>
void ExpectWalk(kelmora_probe::Interface which, const Table& table, bool answer)
{
    std::map<std::string, std::set<std::uintptr_t>> residues;
    for (const unsigned residue : {0u, 4u, 8u, 12u}) {
        SCOPED_TRACE(testing::Message() << "stack " << residue << " bytes past a multiple of 16");
        Dummy dummy(answer);
        const auto report = std::make_unique<kelmora_probe::Report>();
        kelmora_probe::Walk walk = {which, static_cast<Interface*>(&dummy), report.get()};
        WalkAligned(&walk, residue);

        EXPECT_EQ(dummy.Calls(), table.ReceivedCalls());
        std::vector<Given> results;
        for (int i = 0; i < report->count; ++i)
            results.push_back({report->calls[i].what, report->calls[i].result, report->calls[i].stackShift});
        EXPECT_EQ(results, table.GivenResults());
        for (const auto& [member, places] : dummy.Residues())
            residues[member].insert(places.begin(), places.end());
    }
    if (KelmoraProbeIsMicrosoft()) {
        // Else the walk has not shown what an unaligned stack does.
        for (const auto& [member, places] : residues)
            EXPECT_EQ(places, (std::set<std::uintptr_t>{0, 4, 8, 12})) << member;
    }
}

class ProbeWalk : public testing::TestWithParam<bool> {
protected:
    Word Answer() const { return GetParam() ? 1 : 0; }
};

TEST_P(ProbeWalk, Unknown_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingUnknown, IUnknown>(kelmora_probe::WalkUnknown, Table(), GetParam());
}

TEST_P(ProbeWalk, EffectLibrary_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingLibrary, IEffectLibrary>(kelmora_probe::WalkEffectLibrary,
                                                 Table()
                                                     .Slot("GetName", PointerBack(3))
                                                     .Slot("CreateEffect", PointerBack(4), N(4, 0))
                                                     .Slot("ShowHelp", 0, P(5, 0), N(5, 1))
                                                     .Slot("LibraryReserved", PointerBack(6))
                                                     .Slot("CreateFrameProcessor", PointerBack(7))
                                                     .Slot("CreatePresetSaver", PointerBack(8)),
                                                 GetParam());
}

TEST_P(ProbeWalk, VideoEffect_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingEffect, IVideoEffect>(
        kelmora_probe::WalkVideoEffect,
        Table()
            .Slot("GetName", PointerBack(3))
            .Slot("GetHelpId", NumberBack(4))
            .Slot("GetParamInfo", Answer(), N(5, 0), P(5, 1))
            .Slot("Render", Answer(), P(6, 0), P(6, 1), P(6, 2), P(6, 3), P(6, 4))
            .Slot("GetPresetName", PointerBack(7), N(7, 0))
            .Slot("GetPresetValue", Answer(), N(8, 0), N(8, 1), P(8, 2)),
        GetParam());
}

TEST_P(ProbeWalk, VideoHost_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingHost, IVideoHost>(kelmora_probe::WalkVideoHost,
                                          Table()
                                              .Slot("GetParamValue", Answer(), N(3, 0), P(3, 1), 3)
                                              .Slot("HostReserved4", Answer(), N(4, 0), N(4, 1), 0x99)
                                              .Slot("HostReserved5", NumberBack(5), N(5, 0), N(5, 1))
                                              .Slot("HostReserved6", Answer(), N(6, 0), N(6, 1))
                                              .Slot("HostReserved7", 0, N(7, 0), N(7, 1))
                                              .Slot("GetHostInfo", 0)
                                              .Extra("GetHostInfo, word", PointerBack(8))
                                              .Extra("GetHostInfo, word", NumberBack(8))
                                              .Extra("GetHostInfo, word", NumberBack(9))
                                              .Extra("GetHostInfo, word", NumberBack(10)),
                                          GetParam());
}

TEST_P(ProbeWalk, ParamToolTip_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingToolTip, IParamToolTip>(
        kelmora_probe::WalkParamToolTip, Table().Slot("GetToolTip", PointerBack(3), N(3, 0)), GetParam());
}

TEST_P(ProbeWalk, MemoryProvider_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingMemory, IMemoryProvider>(
        kelmora_probe::WalkMemoryProvider,
        Table()
            .Slot("Alloc", Answer(), P(3, 0), N(3, 1))
            .Slot("Free", 0, P(4, 0))
            .Slot("AllocImage", Answer(), P(5, 0), N(5, 1), N(5, 2), N(5, 3), P(5, 4))
            .Slot("FreeImage", 0, P(6, 0)),
        GetParam());
}

TEST_P(ProbeWalk, FrameProcessor_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingProcessor, IFrameProcessor>(
        kelmora_probe::WalkFrameProcessor,
        Table()
            .Slot("Copy", Answer(), P(3, 0), P(3, 1))
            .Slot("Resize", Answer(), P(4, 0), P(4, 1), N(4, 2))
            .Slot("ReverseChannels", Answer(), P(5, 0), P(5, 1))
            .Slot("YCbCr422ToBGRA", Answer(), P(6, 0), P(6, 1), N(6, 2), N(6, 3))
            .Slot("BGRAToYCbCr422", Answer(), P(7, 0), P(7, 1), N(7, 2))
            .Slot("SetChannel", Answer(), P(8, 0), N(8, 1), N(8, 2))
            .Slot("AlphaOver", Answer(), P(9, 0), P(9, 1), P(9, 2), 1)
            .Slot("AlphaOver", Answer(), P(9, 0), P(9, 1), P(9, 2), 0)
            .Slot("PermuteChannels", Answer(), P(10, 0), P(10, 1))
            .Slot("Premultiply", Answer(), P(11, 0))
            .Slot("YCbCrToARGB", Answer(), P(12, 0), P(12, 1))
            .Slot("ARGBToYCbCr", Answer(), P(13, 0), P(13, 1))
            .Slot("FlipVertical", Answer(), P(14, 0))
            .Slot("FlipVerticalTo", Answer(), P(15, 0), P(15, 1))
            .Slot("Destroy", 0, KELMORA_DESTROY_FREE)
            .Slot("Destroy", 0, 0)
            .Slot("ResizeRegion", Answer(), P(17, 0), P(17, 1), P(17, 2), N(17, 3)),
        GetParam());
}

TEST_P(ProbeWalk, PresetSaver_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingSaver, IPresetSaver>(
        kelmora_probe::WalkPresetSaver,
        Table()
            .Slot("LoadPreset", NumberBack(3), P(3, 0), P(3, 1), N(3, 2), P(3, 3), P(3, 4))
            .Slot("SavePreset", NumberBack(4), P(4, 0), P(4, 1), N(4, 2), P(4, 3), P(4, 4))
            .Slot("Destroy", 0, KELMORA_DESTROY_FREE)
            .Slot("Destroy", 0, 0),
        GetParam());
}

TEST_P(ProbeWalk, MultiLingual_EverySlot_ReachesItsMember)
{
    ExpectWalk<RecordingLanguage, IMultiLingual>(
        kelmora_probe::WalkMultiLingual,
        Table()
            .Slot("GetTextEx", NumberBack(3), P(3, 0), P(3, 1), P(3, 2), P(3, 3), P(3, 4), P(3, 5), P(3, 6))
            .Slot("GetText", NumberBack(4), P(4, 0), N(4, 1), P(4, 2), P(4, 3), N(4, 4)),
        GetParam());
}

INSTANTIATE_TEST_SUITE_P(Answers, ProbeWalk, testing::Bool(), [](const testing::TestParamInfo<bool>& value) {
    return std::string(value.param ? "True" : "False");
});

} // namespace
} // namespace kelmora
