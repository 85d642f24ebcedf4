#include "host/pictures/picture_file.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

/// Red, green over blue, white: every alpha another.
const Picture kFour{2, 2, {255, 0, 0, 255, 0, 255, 0, 128, 0, 0, 255, 1, 255, 255, 255, 0}};

std::string RefusalOf(const std::string& path)
{
    try {
        ReadPicture(path);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Failed);
        return failure.what();
    }
    ADD_FAILURE() << path << " is read";
    return {};
}

std::string Word(std::uint32_t value, unsigned bytes)
{
    std::string text;
    for (unsigned i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * i & 0xFFu);
    return text;
}

TEST(WritePicture, Png_ComesBackWithItsAlpha)
{
    const TestFolder folder;
    const std::string path = Utf8(folder.Path() / "four.png");
    WritePicture(path, kFour, Overwrite::No);
    EXPECT_EQ(ReadPicture(path), kFour);
}

TEST(WritePicture, EndingInCapitals_Counts)
{
    const TestFolder folder;
    const std::string path = Utf8(folder.Path() / "FOUR.PNG");
    WritePicture(path, kFour, Overwrite::No);
    EXPECT_EQ(ReadPicture(path), kFour);
}

TEST(WritePicture, Jpeg_ComesBackNearlyAndOpaque)
{
    const TestFolder folder;
    Picture grey{16, 16, {}};
    for (int i = 0; i < 256; ++i)
        grey.rgba.insert(grey.rgba.end(), {120, 120, 120, 7});
    for (const char* const name : {"grey.jpg", "grey.jpeg"}) {
        const std::string path = Utf8(folder.Path() / name);
        WritePicture(path, grey, Overwrite::No, 90);
        const Picture back = ReadPicture(path);
        ASSERT_EQ(back.rgba.size(), grey.rgba.size());
        for (std::size_t i = 0; i < back.rgba.size(); ++i) {
            if (i % 4 == 3)
                EXPECT_EQ(back.rgba[i], 255);
            else
                EXPECT_LE(std::abs(back.rgba[i] - 120), 2) << i;
        }
    }
}

TEST(WritePicture, JpegQuality_ChangesTheSize)
{
    const TestFolder folder;
    Picture noise{64, 64, {}};
    std::uint32_t state = 1;
    for (int i = 0; i < 64 * 64 * 4; ++i) {
        state = state * 1664525u + 1013904223u;
        noise.rgba.push_back(static_cast<std::uint8_t>(state >> 24));
    }
    WritePicture(Utf8(folder.Path() / "low.jpg"), noise, Overwrite::No, 10);
    WritePicture(Utf8(folder.Path() / "high.jpg"), noise, Overwrite::No, 95);
    EXPECT_LT(std::filesystem::file_size(folder.Path() / "low.jpg") * 2,
              std::filesystem::file_size(folder.Path() / "high.jpg"));
}

TEST(WritePicture, OtherEnding_IsRefusedAsUsage)
{
    for (const char* const name : {"out.gif", "out", "out.png.txt", "png"}) {
        try {
            WritePicture(name, kFour, Overwrite::No);
            ADD_FAILURE() << name;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), ExitCode::Usage) << name;
        }
    }
}

TEST(WritePicture, ExistingFile_StaysWithoutLeave)
{
    const TestFolder folder;
    const auto path = folder.Path() / "old.png";
    TestFolder::Write(path, "old");
    EXPECT_THROW(WritePicture(Utf8(path), kFour, Overwrite::No), Failure);
    EXPECT_EQ(std::filesystem::file_size(path), 3u);
    WritePicture(Utf8(path), kFour, Overwrite::Yes);
    EXPECT_EQ(ReadPicture(Utf8(path)), kFour);
}

TEST(ReadPicture, Bmp_BottomRowFirstInTheFile)
{
    const TestFolder folder;
    // One column of two pixels, 24 bits, each row filled up to 4 bytes: green below, red above.
    const std::string rows = std::string("\x00\xFF\x00\x00", 4) + std::string("\x00\x00\xFF\x00", 4);
    const std::string header = Word(40, 4) + Word(1, 4) + Word(2, 4) + Word(1, 2) + Word(24, 2) + Word(0, 4)
        + Word(8, 4) + Word(2835, 4) + Word(2835, 4) + Word(0, 4) + Word(0, 4);
    TestFolder::Write(folder.Path() / "two.bmp",
                      "BM" + Word(14 + 40 + 8, 4) + Word(0, 4) + Word(54, 4) + header + rows);
    EXPECT_EQ(ReadPicture(Utf8(folder.Path() / "two.bmp")),
              (Picture{1, 2, {255, 0, 0, 255, 0, 255, 0, 255}}));
}

TEST(ReadPicture, Tga_HasItsAlpha)
{
    const TestFolder folder;
    // Plain colours, 2 x 1, 32 bits, top row first (bit 5), 8 bits of alpha: blue, green, red, alpha.
    const std::string header =
        std::string("\0\0\x02\0\0\0\0\0", 8) + Word(0, 4) + Word(2, 2) + Word(1, 2) + "\x20\x28";
    TestFolder::Write(folder.Path() / "two.tga", header + "\x01\x02\x03\x04\x05\x06\x07\x08");
    EXPECT_EQ(ReadPicture(Utf8(folder.Path() / "two.tga")), (Picture{2, 1, {3, 2, 1, 4, 7, 6, 5, 8}}));
}

TEST(ReadPicture, MissingFile_IsNamed)
{
    EXPECT_TRUE(RefusalOf("no/such/picture.png").starts_with("cannot read no/such/picture.png: "));
}

TEST(ReadPicture, Folder_IsNoPicture)
{
    const TestFolder folder;
    RefusalOf(Utf8(folder.Path()));
}

TEST(ReadPicture, NoPicture_IsRefused)
{
    const TestFolder folder;
    TestFolder::Write(folder.Path() / "text.png", "this is no picture at all, whatever its name says");
    TestFolder::Write(folder.Path() / "empty.png", "");
    EXPECT_NE(
        RefusalOf(Utf8(folder.Path() / "text.png")).find("it is no whole PNG, JPEG, BMP or TGA picture"),
        std::string::npos);
    RefusalOf(Utf8(folder.Path() / "empty.png"));
}

TEST(ReadPicture, PngCutShort_IsRefused)
{
    const TestFolder folder;
    const auto path = folder.Path() / "cut.png";
    WritePicture(Utf8(path), kFour, Overwrite::No);
    for (const std::uintmax_t bytes : {8u, 20u, 40u, 50u}) {
        ASSERT_LT(bytes, std::filesystem::file_size(path) - 12);
        const auto copy = folder.Path() / ("cut" + std::to_string(bytes) + ".png");
        std::filesystem::copy_file(path, copy);
        std::filesystem::resize_file(copy, bytes);
        RefusalOf(Utf8(copy));
    }
}

std::string SizeRefusal(const std::string& path, std::int64_t width, std::int64_t height)
{
    try {
        CheckPictureSize(path, width, height);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Failed);
        return failure.what();
    }
    return "fits";
}

TEST(CheckPictureSize, JpegSide_HasSixteenBits)
{
    EXPECT_EQ(SizeRefusal("a.jpg", 65535, 1), "fits");
    EXPECT_EQ(SizeRefusal("a.jpg", 1, 65535), "fits");
    EXPECT_EQ(SizeRefusal("a.jpg", 65536, 1),
              "cannot write a.jpg: 65536 x 1 pixels are too many for such a file");
    EXPECT_NE(SizeRefusal("a.jpeg", 1, 65536), "fits");
}

TEST(CheckPictureSize, Png_HasAnArea)
{
    // 225 million pixels of four bytes.
    EXPECT_EQ(SizeRefusal("a.png", 225'000'000, 1), "fits");
    EXPECT_EQ(SizeRefusal("a.png", 15'000, 15'000), "fits");
    EXPECT_NE(SizeRefusal("a.png", 225'000'001, 1), "fits");
    EXPECT_NE(SizeRefusal("a.png", 15'000, 15'001), "fits");
    EXPECT_NE(SizeRefusal("a.png", 1'000'000'000'000, 1'000'000'000'000), "fits");
}

TEST(WritePicture, JpegWiderThanItsFileCanSay_IsRefused)
{
    const TestFolder folder;
    const std::string path = Utf8(folder.Path() / "wide.jpg");
    Picture wide{65536, 1, {}};
    wide.rgba.resize(65536 * Picture::kPixelBytes);
    EXPECT_THROW(WritePicture(path, wide, Overwrite::No), Failure);
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "wide.jpg"));
}

} // namespace
} // namespace kelmora::host
