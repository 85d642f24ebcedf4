#include "tests/support/hash.h"

#include <gtest/gtest-spi.h>

#include <cstring>

namespace kelmora {
namespace {

// "foobar" as a picture of 3 x 2 mask pixels: a published value of 64-bit FNV-1a.
constexpr std::uint64_t kDigestOfFoobar = 0x85944171F73967E8u;

GuardedPicture Foobar(const PictureLayout& layout = {})
{
    GuardedPicture picture(3, 2, PF_Mask8, layout);
    std::memcpy(picture.Row(0), "foo", 3);
    std::memcpy(picture.Row(1), "bar", 3);
    return picture;
}

TEST(Digest_OfKnownBytes, IsThePublishedValue)
{
    EXPECT_EQ(Digest(Foobar()), kDigestOfFoobar);
    EXPECT_EQ(Digest(GuardedPicture(0, 0, PF_Mask8)), 0xCBF29CE484222325u);
}

TEST(Digest_OfAnyLayout, SeesThePixelsAlone)
{
    EXPECT_EQ(Digest(Foobar({.slack = 5})), kDigestOfFoobar);
    EXPECT_EQ(Digest(Foobar({.upward = true})), kDigestOfFoobar);
    EXPECT_EQ(Digest(Foobar({.guard = Guard::PageEnd})), kDigestOfFoobar);
}

TEST(HexDigest_OfSmallNumbers, KeepsLeadingZeros)
{
    EXPECT_EQ(HexDigest(0xABCu), "0000000000000abc");
    EXPECT_EQ(HexDigest(kDigestOfFoobar), "85944171f73967e8");
}

constexpr const char kText[] = "# made by hand\n"
                               "\n"
                               "foobar Mask8 Reset To None 0.5 85944171f73967e8\r\n"
                               "foobar Mask8 Solo 1 0000000000000000\n";

TEST(GoldenManifest_Line, WithThePicturesHash_Matches)
{
    GoldenManifest manifest = GoldenManifest::FromText("sample", kText);
    ASSERT_EQ(manifest.Lines().size(), 2u);
    EXPECT_EQ(manifest.Lines()[0].preset, "Reset To None");
    EXPECT_TRUE(manifest.Matches("foobar", "Mask8", "Reset To None", 0.5, Foobar().Frame()));
    EXPECT_FALSE(manifest.AllUsed());
}

TEST(GoldenManifest_Line, WithAnotherHash_NamesAllFields)
{
    GoldenManifest manifest = GoldenManifest::FromText("sample", kText);
    EXPECT_STREQ(manifest.Matches("foobar", "Mask8", "Solo", 1.0, Foobar().Frame()).message(),
                 "sample.txt:4: picture foobar, format Mask8, preset Solo, progress 1, 3 x 2: expected "
                 "0000000000000000, got 85944171f73967e8\n  the line would read: foobar Mask8 Solo 1 "
                 "85944171f73967e8");
}

TEST(GoldenManifest_Line, ThatIsMissing_IsAFailure)
{
    GoldenManifest manifest = GoldenManifest::FromText("sample", kText);
    EXPECT_FALSE(manifest.Matches("foobar", "Mask8", "Solo", 0.5, Foobar().Frame()));
    EXPECT_FALSE(manifest.Matches("foobar", "BGRA8", "Solo", 1.0, Foobar().Frame()));
}

TEST(GoldenManifest_AllLines_Asked, AreAllUsed)
{
    GoldenManifest manifest = GoldenManifest::FromText("sample", kText);
    static_cast<void>(manifest.Matches("foobar", "Mask8", "Reset To None", 0.5, Foobar().Frame()));
    static_cast<void>(manifest.Matches("foobar", "Mask8", "Solo", 1.0, Foobar().Frame()));
    EXPECT_TRUE(manifest.AllUsed());
}

TEST(GoldenManifest_MalformedText, FailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(GoldenManifest::FromText("bad", "foobar Mask8 Solo 85944171f73967e8\n"),
                            "bad.txt:1");
    EXPECT_NONFATAL_FAILURE(GoldenManifest::FromText("bad", "foobar Mask8 Solo x 85944171f73967e8\n"),
                            "bad.txt:1");
    EXPECT_NONFATAL_FAILURE(GoldenManifest("no such manifest"), "no such manifest");
}

} // namespace
} // namespace kelmora
