#include "effects/common/knob_reader.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"

namespace kelmora {
namespace {

TEST(KnobReader, EachKind_IsAskedForAsItself)
{
    FakeHost host{LevelKnob(0.25f), ChoiceKnob(3), ColorKnob(0x00112233), CheckKnob(true),
                  PointKnob(0.5f, 0.75f)};
    KnobReader read(host);
    EXPECT_EQ(read.Level(0), 0.25f);
    EXPECT_EQ(read.Choice(1), 3u);
    EXPECT_EQ(read.Colour(2), 0x00112233u);
    EXPECT_TRUE(read.Check(3));
    float x = 0, y = 0;
    read.Point(4, x, y);
    EXPECT_EQ(x, 0.5f);
    EXPECT_EQ(y, 0.75f);
    EXPECT_EQ(host.Reads(),
              (std::vector<KnobRead>{
                  {0, ParamFloat}, {1, ParamChoice}, {2, ParamColor}, {3, ParamCheck}, {4, ParamPoint}}));
}

TEST(KnobReader, Check_ReadsTheLowByteAlone)
{
    FakeHost host{{0x100, 0, ParamCheck}, {0xFFFFFF00, 0, ParamCheck}, {0x180, 0, ParamCheck}};
    KnobReader read(host);
    EXPECT_FALSE(read.Check(0));
    EXPECT_FALSE(read.Check(1));
    EXPECT_TRUE(read.Check(2));
}

TEST(KnobReader, RefusedKnob_ReadsAsTheOneBefore)
{
    FakeHost host{LevelKnob(0.25f), LevelKnob(0.5f)};
    host.RefuseKnob(1);
    KnobReader read(host);
    EXPECT_EQ(read.Level(0), 0.25f);
    EXPECT_EQ(read.Level(1), 0.25f);
}

TEST(KnobReader, RefusedFirstKnob_ReadsAsZero)
{
    FakeHost host;
    host.RefuseAllKnobs();
    KnobReader read(host);
    EXPECT_EQ(read.Level(0), 0.0f);
    float x = 1, y = 1;
    read.Point(1, x, y);
    EXPECT_EQ(x, 0.0f);
    EXPECT_EQ(y, 0.0f);
}

TEST(KnobReader, AnswerOfAnotherKind_IsReadAllTheSame)
{
    FakeHost host{LevelKnob(0.25f)};
    host.AnswerWithKind(77);
    EXPECT_EQ(KnobReader(host).Level(0), 0.25f);
}

} // namespace
} // namespace kelmora
