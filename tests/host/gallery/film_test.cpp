#include "host/gallery/film.h"

#include <array>
#include <fstream>

#include <gtest/gtest.h>

#include "host/failure.h"
#include "host/pictures/picture_file.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

/// A picture of one colour.
Picture Plain(std::int32_t width, std::int32_t height, const std::array<std::uint8_t, 4>& pixel)
{
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    Picture picture{width, height, std::vector<std::uint8_t>(pixels * Picture::kPixelBytes)};
    for (std::size_t i = 0; i < picture.rgba.size(); ++i)
        picture.rgba[i] = pixel[i % Picture::kPixelBytes];
    return picture;
}

/// The film as a viewer would decode it.
Picture Decoded(const Film& film)
{
    const TestFolder folder;
    const std::filesystem::path path = folder.Path() / "film.jpg";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(film.jpeg.data()),
               static_cast<std::streamsize>(film.jpeg.size()));
    return ReadPicture(Utf8(path));
}

/// The red of the leftmost pixel in a row.
int RedOf(const Picture& picture, std::int32_t row)
{
    return picture.rgba[static_cast<std::size_t>(row * picture.width) * Picture::kPixelBytes];
}

TEST(FilmPitch, Rows_FillWholeBlocks)
{
    EXPECT_EQ(FilmPitch(1), 16);
    EXPECT_EQ(FilmPitch(16), 16);
    EXPECT_EQ(FilmPitch(17), 32);
    EXPECT_EQ(FilmPitch(267), 272);
}

TEST(OverChequers, OpaquePixels_StayAsTheyAre)
{
    const Picture red = Plain(3, 2, {200, 10, 20, 255});
    EXPECT_EQ(OverChequers(red), red);
}

TEST(OverChequers, ClearPixels_ShowSquaresOfEightPixels)
{
    const Picture ground = OverChequers(Plain(17, 9, {1, 2, 3, 0}));
    const auto at = [&](int x, int y) { return int{ground.rgba[static_cast<std::size_t>(y * 17 + x) * 4]}; };
    EXPECT_EQ(at(0, 0), 255);
    EXPECT_EQ(at(7, 7), 255);
    EXPECT_EQ(at(8, 0), 204);
    EXPECT_EQ(at(16, 0), 255);
    EXPECT_EQ(at(0, 8), 204);
    EXPECT_EQ(at(8, 8), 255);
    EXPECT_EQ(ground.rgba[3], 255);
}

TEST(OverChequers, HalfClearPixels_AreMixedToTheNearest)
{
    // (100 * 51 + 255 * 204) / 255 = 224
    EXPECT_EQ(OverChequers(Plain(1, 1, {100, 100, 100, 51})), Plain(1, 1, {224, 224, 224, 255}));
}

TEST(MakeFilm, Frames_StandOneAboveTheOther)
{
    const Film film = MakeFilm({Plain(8, 20, {30, 30, 30, 255}), Plain(8, 20, {220, 220, 220, 255})}, 90);
    EXPECT_EQ(film.width, 8);
    EXPECT_EQ(film.height, 20);
    EXPECT_EQ(film.pitch, 32);
    EXPECT_EQ(film.frames, 2);
    const Picture decoded = Decoded(film);
    EXPECT_EQ(decoded.width, 8);
    EXPECT_EQ(decoded.height, 64);
    for (const std::int32_t row : {0, 19, 31}) // the last one stands between the frames
        EXPECT_NEAR(RedOf(decoded, row), 30, 2) << row;
    for (const std::int32_t row : {32, 51, 63})
        EXPECT_NEAR(RedOf(decoded, row), 220, 2) << row;
}

TEST(MakeFilm, MoreRowsThanAFileHolds_AreRefused)
{
    const std::vector<Picture> frames(4096, Plain(1, 1, {0, 0, 0, 255})); // 65536 rows
    EXPECT_THROW(MakeFilm(frames, 75), Failure);
}

} // namespace
} // namespace kelmora::host
