#include "tests/support/fake_host.h"

#include <gtest/gtest-spi.h>

namespace kelmora {
namespace {

TEST(FakeHost_Knobs, AreAnsweredAndWrittenDown)
{
    FakeHost host{LevelKnob(0.5f), PointKnob(0.25f, 0.75f)};
    ParamValue value = {7, 7, 7};
    EXPECT_TRUE(host.GetParamValue(1, &value, ParamPoint));
    EXPECT_EQ(WordFloat(value.value), 0.25f);
    EXPECT_EQ(WordFloat(value.valueY), 0.75f);
    EXPECT_EQ(value.kind, static_cast<std::uint32_t>(ParamPoint));
    EXPECT_TRUE(host.GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(host.Reads(), (std::vector<KnobRead>{{1, ParamPoint}, {0, ParamFloat}}));
}

TEST(FakeHost_RefusedKnob, WritesNothing)
{
    FakeHost host{LevelKnob(0.5f), LevelKnob(1.0f)};
    host.RefuseKnob(0);
    ParamValue value = {7, 8, 9};
    EXPECT_FALSE(host.GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(value.value, 7u);
    EXPECT_EQ(value.valueY, 8u);
    EXPECT_EQ(value.kind, 9u);
    EXPECT_TRUE(host.GetParamValue(1, &value, ParamFloat));
    host.RefuseAllKnobs();
    EXPECT_FALSE(host.GetParamValue(1, &value, ParamFloat));
}

TEST(FakeHost_AnswerWithKind, SaysThatKind)
{
    FakeHost host{LevelKnob(0.5f)};
    host.AnswerWithKind(77);
    ParamValue value = {};
    EXPECT_TRUE(host.GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(value.kind, 77u);
    EXPECT_EQ(WordFloat(value.value), 0.5f);
}

TEST(FakeHost_WrongQuestion, FailsTheTest)
{
    static FakeHost host{LevelKnob(0.5f)};
    static ParamValue value;
    EXPECT_NONFATAL_FAILURE(host.GetParamValue(0, &value, ParamChoice), "asked for as kind 1");
    EXPECT_NONFATAL_FAILURE(host.GetParamValue(1, &value, ParamFloat), "knob 1 of 1");
    EXPECT_NONFATAL_FAILURE(host.GetParamValue(0, nullptr, ParamFloat), "nowhere");
    EXPECT_NONFATAL_FAILURE(host.HostReserved5(1, 2), "HostReserved5(1, 2)");
    EXPECT_NONFATAL_FAILURE(host.Release(), "more often");
}

TEST(FakeHost_AfterTheRender, EveryCallFailsTheTest)
{
    static FakeHost host{LevelKnob(0.5f)};
    static ParamValue value;
    static HostInfo info;
    static void* view = nullptr;
    host.AcceptReserved();
    host.EndRender();
    EXPECT_NONFATAL_FAILURE(host.GetParamValue(0, &value, ParamFloat), "after the end");
    EXPECT_NONFATAL_FAILURE(host.QueryInterface(&IMemoryProvider::id, &view), "after the end");
    EXPECT_NONFATAL_FAILURE(host.AddRef(), "after the end");
    EXPECT_NONFATAL_FAILURE(host.Release(), "after the end");
    EXPECT_NONFATAL_FAILURE(host.GetHostInfo(&info), "after the end");
    EXPECT_NONFATAL_FAILURE(host.HostReserved4(1, 2, 3), "after the end");
    EXPECT_NONFATAL_FAILURE(host.HostReserved6(1, 2), "after the end");
    EXPECT_NONFATAL_FAILURE(host.HostReserved7(1, 2), "after the end");
    host.BeginRender();
    EXPECT_TRUE(host.GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(host.Reads().size(), 1u);
}

TEST(FakeHost_ReferenceLeft, FailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            FakeHost host;
            host.AddRef();
        },
        "references to the host");
}

TEST(FakeHost_MemoryProvider, IsOfferedAsAsked)
{
    FakeMemoryProvider memory;
    FakeHost host;
    void* view = &host;
    EXPECT_EQ(host.QueryInterface(&IMemoryProvider::id, &view), E_NOINTERFACE);
    EXPECT_EQ(view, nullptr);
    host.SetMemory(&memory);
    EXPECT_EQ(host.QueryInterface(&IMemoryProvider::id, &view), S_OK);
    EXPECT_EQ(view, static_cast<IMemoryProvider*>(&memory));
    EXPECT_EQ(memory.Release(), 1u);
    host.SetProviderAnswer(ProviderAnswer::SayYesGiveNothing);
    EXPECT_EQ(host.QueryInterface(&IMemoryProvider::id, &view), S_OK);
    EXPECT_EQ(view, nullptr);
    host.SetProviderAnswer(ProviderAnswer::SayNoLeaveGarbage);
    EXPECT_EQ(host.QueryInterface(&IMemoryProvider::id, &view), E_NOINTERFACE);
    EXPECT_NE(view, nullptr);
    EXPECT_EQ(host.Queries().size(), 4u);
    EXPECT_EQ(host.Queries()[0], IMemoryProvider::id);
}

TEST(FakeHost_OnKnob, RunsBeforeTheAnswer)
{
    FakeHost host{LevelKnob(0.5f)};
    std::vector<std::uint32_t> knobs;
    host.OnKnob([&](std::uint32_t knob) {
        knobs.push_back(knob);
        host.SetKnob(0, LevelKnob(1.0f));
    });
    ParamValue value;
    EXPECT_TRUE(host.GetParamValue(0, &value, ParamFloat));
    EXPECT_EQ(WordFloat(value.value), 1.0f);
    EXPECT_EQ(knobs, std::vector<std::uint32_t>{0});
}

} // namespace
} // namespace kelmora
