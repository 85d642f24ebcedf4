#include "host/names.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

const std::vector<std::string> kEffects = {"3D Confetti", "Air Brush", "Color Melt", "Smear", "Water Color"};

TEST(Slug, NameWithBlanks_IsLowerCaseWithHyphens)
{
    EXPECT_EQ(Slug("Air Brush"), "air-brush");
    EXPECT_EQ(Slug("3D Pizza Boxes"), "3d-pizza-boxes");
    EXPECT_EQ(Slug(""), "");
}

TEST(Folded, CaseBlanksAndHyphens_DoNotCount)
{
    EXPECT_EQ(Folded("Air Brush"), "airbrush");
    EXPECT_EQ(Folded("AIR-brush"), "airbrush");
    EXPECT_EQ(Folded("_air_Brush "), "airbrush");
}

TEST(EditDistance, SameText_IsZero)
{
    EXPECT_EQ(EditDistance("smear", "smear"), 0u);
    EXPECT_EQ(EditDistance("", ""), 0u);
}

TEST(EditDistance, OneSlip_IsOne)
{
    EXPECT_EQ(EditDistance("smear", "smea"), 1u);
    EXPECT_EQ(EditDistance("smear", "smeaar"), 1u);
    EXPECT_EQ(EditDistance("smear", "smeer"), 1u);
    EXPECT_EQ(EditDistance("smear", "semar"), 1u); // neighbours exchanged
}

TEST(EditDistance, OtherWords_CountEveryLetter)
{
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3u);
    EXPECT_EQ(EditDistance("", "abc"), 3u);
    EXPECT_EQ(EditDistance("abc", ""), 3u);
}

TEST(FindName, WrittenDifferently_IsFound)
{
    EXPECT_EQ(FindName(kEffects, "air-brush"), 1u);
    EXPECT_EQ(FindName(kEffects, "AIRBRUSH"), 1u);
    EXPECT_EQ(FindName(kEffects, "smear"), 3u);
    EXPECT_EQ(FindName(kEffects, "Air"), std::nullopt);
}

TEST(FindName, TwoThatFoldAlike_TheExactOneWins)
{
    EXPECT_EQ(FindName({"Soft Edge", "soft-edge"}, "soft-edge"), 1u);
    EXPECT_EQ(FindName({"Soft Edge", "soft-edge"}, "SOFTEDGE"), 0u);
}

TEST(NearestNames, Slip_IsFoundNearestFirst)
{
    EXPECT_EQ(NearestNames(kEffects, "smeer"), std::vector<std::string>{"Smear"});
    EXPECT_EQ(NearestNames({"Strong", "Strung", "String"}, "strunk"),
              (std::vector<std::string>{"Strung", "Strong", "String"}));
}

TEST(NearestNames, Beginning_IsNear)
{
    EXPECT_EQ(NearestNames(kEffects, "wat"), std::vector<std::string>{"Water Color"});
}

TEST(NearestNames, MoreThanThree_AreCut)
{
    EXPECT_EQ(NearestNames({"aaaa", "aaab", "aaac", "aaad", "aaae"}, "aaax").size(), 3u);
}

TEST(NearestNames, AnotherWord_HasNone)
{
    EXPECT_TRUE(NearestNames(kEffects, "sepia").empty());
    EXPECT_TRUE(NearestNames({}, "sepia").empty());
}

TEST(UnknownName, OneNear_IsAskedFor)
{
    EXPECT_EQ(UnknownName("effect", "smeer", kEffects, "\"kelmora list\" shows all effects"),
              "there is no effect \"smeer\"; did you mean \"Smear\"? \"kelmora list\" shows all effects");
}

TEST(UnknownName, ThreeNear_AreListed)
{
    EXPECT_EQ(UnknownName("preset", "aaax", {"aaaa", "aaab", "aaac"}, "look"),
              "there is no preset \"aaax\"; did you mean \"aaaa\", \"aaab\" or \"aaac\"? look");
}

TEST(UnknownName, NoneNear_OnlySaysWhereToLook)
{
    EXPECT_EQ(UnknownName("knob", "sepia", kEffects, "look"), "there is no knob \"sepia\"; look");
}

} // namespace
} // namespace kelmora::host
