#include "host/strict_host.h"

#include <gtest/gtest.h>

#include "contract/memory_provider.h"
#include "contract/video_effect.h"
#include "host/strict_memory.h"

namespace kelmora::host {
namespace {

using Rules = std::vector<std::string>;

std::vector<ParamValue> TwoKnobs()
{
    return {{FloatWord(0.5f), 7, ParamFloat}, {3, 0, ParamChoice}};
}

TEST(StrictHost, GetParamValue_KnownKnob_FillsAllThreeWords)
{
    StrictHost host(TwoKnobs());
    ParamValue value = {1, 2, 3};
    EXPECT_TRUE(host.GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(value.value, FloatWord(0.5f));
    EXPECT_EQ(value.valueY, 7u);
    EXPECT_EQ(value.kind, static_cast<std::uint32_t>(ParamFloat));
    EXPECT_EQ(host.KnobsAsked(), 1u);
    EXPECT_TRUE(host.BrokenRules().empty());
}

TEST(StrictHost, GetParamValue_OtherKind_IsAnsweredAndNoted)
{
    StrictHost host(TwoKnobs());
    ParamValue value = {};
    EXPECT_TRUE(host.GetParamValue(1, &value, ParamFloat));
    EXPECT_EQ(value.value, 3u);
    EXPECT_EQ(host.BrokenRules(), Rules{"a knob was asked for with another kind than it is described with"});
}

TEST(StrictHost, GetParamValue_UnknownKnobOrNoPlace_IsFalseAndNoted)
{
    StrictHost host(TwoKnobs());
    ParamValue value = {9, 9, 9};
    EXPECT_FALSE(host.GetParamValue(2, &value, ParamFloat));
    EXPECT_EQ(value.value, 9u);
    EXPECT_FALSE(host.GetParamValue(0, nullptr, ParamFloat));
    EXPECT_EQ(host.BrokenRules(),
              (Rules{"a knob was asked for that the effect does not describe",
                     "a knob was asked for without a place for the answer"}));
}

TEST(StrictHost, Plain_NotesNothing)
{
    StrictHost host(TwoKnobs(), Strictness::Plain);
    host.GetParamValue(9, nullptr, ParamFloat);
    host.HostReserved7(0, 0);
    host.EndRender();
    EXPECT_TRUE(host.BrokenRules().empty());
}

TEST(StrictHost, ReservedPlaces_AreNoted)
{
    StrictHost host({});
    EXPECT_FALSE(host.HostReserved4(1, 2, 3));
    EXPECT_EQ(host.HostReserved5(1, 2), 0u);
    EXPECT_FALSE(host.HostReserved6(1, 2));
    host.HostReserved7(1, 2);
    EXPECT_EQ(host.BrokenRules(),
              (Rules{"a place kept in the table was called: HostReserved4",
                     "a place kept in the table was called: HostReserved5",
                     "a place kept in the table was called: HostReserved6",
                     "a place kept in the table was called: HostReserved7"}));
}

TEST(StrictHost, CallAfterTheRender_IsNoted)
{
    StrictHost host(TwoKnobs());
    host.EndRender();
    ParamValue value = {};
    host.GetParamValue(0, &value, ParamFloat);
    EXPECT_EQ(host.BrokenRules(), Rules{"the host was called after the render: GetParamValue"});
}

TEST(StrictHost, CallFromAnotherThread_IsNoted)
{
    StrictHost host(TwoKnobs());
    std::thread([&host] { host.AddRef(); }).join();
    EXPECT_EQ(host.BrokenRules(), Rules{"the host was called from another thread: AddRef"});
}

TEST(StrictHost, References_AreCountedAndMissed)
{
    StrictHost host({});
    EXPECT_EQ(host.AddRef(), 2u);
    EXPECT_EQ(host.Release(), 1u);
    EXPECT_EQ(host.Release(), 1u);
    EXPECT_EQ(host.BrokenRules(), Rules{"the host was released once too often"});
    host.AddRef();
    host.EndRender();
    EXPECT_EQ(host.BrokenRules().back(), "a reference to the host was not given back");
}

TEST(StrictHost, QueryInterface_OwnIds_GiveTheHostCounted)
{
    StrictHost host({});
    for (const InterfaceId& id : {IUnknown::id, IVideoHost::id}) {
        void* view = nullptr;
        EXPECT_EQ(host.QueryInterface(&id, &view), S_OK);
        EXPECT_EQ(view, static_cast<IVideoHost*>(&host));
        EXPECT_EQ(host.References(), 2u);
        host.Release();
    }
    void* view = &host;
    EXPECT_EQ(host.QueryInterface(&IVideoEffect::id, &view), E_NOINTERFACE);
    EXPECT_EQ(view, nullptr);
}

TEST(StrictHost, QueryInterface_MemoryProvider_IsTheOneOffered)
{
    StrictMemory memory({});
    StrictHost host({}, Strictness::Strict, &memory);
    void* view = nullptr;
    EXPECT_EQ(host.QueryInterface(&IMemoryProvider::id, &view), S_OK);
    EXPECT_EQ(view, static_cast<IMemoryProvider*>(&memory));
    EXPECT_EQ(memory.References(), 2u);
    EXPECT_EQ(host.MemoryAsked(), 1u);

    StrictHost without({});
    view = &memory;
    EXPECT_EQ(without.QueryInterface(&IMemoryProvider::id, &view), E_NOINTERFACE);
    EXPECT_EQ(view, nullptr);
    EXPECT_EQ(without.MemoryAsked(), 1u);
}

TEST(StrictHost, GetHostInfo_Record_IsFilledAndGivenBack)
{
    StrictHost host({});
    HostInfo info = {nullptr, {1, 2, 3}};
    EXPECT_EQ(host.GetHostInfo(&info), &info);
    EXPECT_STREQ(info.hostName, "kelmora");
    EXPECT_EQ(info.words[2], 0u);
}

} // namespace
} // namespace kelmora::host
