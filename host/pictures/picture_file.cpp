#include "host/pictures/picture_file.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <new>

#include "host/failure.h"
#include "host/names.h"
#include "host/path_text.h"

#ifndef __clang_analyzer__ // the insides are not ours to look through
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#endif

#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_NO_STDIO
#include <stb/stb_image.h>

namespace {

/// The writer does not look whether it got memory.
[[maybe_unused]] void* OrThrow(void* memory)
{
    return memory != nullptr ? memory : throw std::bad_alloc();
}

} // namespace

#define STBIW_MALLOC(size) OrThrow(std::malloc(size))
#define STBIW_REALLOC(memory, size) OrThrow(std::realloc(memory, size))
#define STBIW_FREE(memory) std::free(memory)
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace kelmora::host {
namespace {

enum class FileKind { Png, Jpeg, Other };

constexpr std::int64_t kMostJpegSide = 65535; // 16 bits in the file
// The writer counts bytes in an int, and a buffer that grows may be twice as large as what it holds.
constexpr std::int64_t kMostPngBytes = 900'000'000;

FileKind KindOf(const std::string& path)
{
    const std::string ending = Slug(TextOf(PathOf(path).extension()));
    if (ending == ".png")
        return FileKind::Png;
    return ending == ".jpg" || ending == ".jpeg" ? FileKind::Jpeg : FileKind::Other;
}

std::vector<std::uint8_t> ReadBytes(const std::string& path)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(PathOf(path), error);
    if (error)
        throw Failure(ExitCode::Failed, "cannot read " + path + ": " + error.message());
    if (size > static_cast<std::uintmax_t>(std::numeric_limits<int>::max()))
        throw Failure(ExitCode::Failed, "cannot read " + path + ": the file is too large");
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    std::ifstream file(PathOf(path), std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file)
        throw Failure(ExitCode::Failed, "cannot read " + path);
    return bytes;
}

struct FreePixels {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

void Append(void* context, void* data, int size)
{
    auto& sink = *static_cast<std::vector<std::uint8_t>*>(context);
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    sink.insert(sink.end(), bytes, bytes + size);
}

} // namespace

Picture ReadPicture(const std::string& path)
{
    const std::vector<std::uint8_t> bytes = ReadBytes(path);
    Picture picture;
    int channels = 0;
    const std::unique_ptr<stbi_uc, FreePixels> pixels(
        stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &picture.width, &picture.height,
                              &channels, static_cast<int>(Picture::kPixelBytes)));
    if (pixels == nullptr)
        throw Failure(ExitCode::Failed,
                      "cannot read " + path + ": it is no whole PNG, JPEG, BMP or TGA picture ("
                          + stbi_failure_reason() + ")");
    const std::size_t count =
        static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    picture.rgba.assign(pixels.get(), pixels.get() + count * Picture::kPixelBytes);
    return picture;
}

void CheckPictureTarget(const std::string& path, Overwrite overwrite)
{
    if (KindOf(path) == FileKind::Other)
        throw Failure(ExitCode::Usage,
                      "cannot tell what to write to " + path + ": end the name in .png or .jpg");
    CheckTarget(path, overwrite);
}

void CheckPictureSize(const std::string& path, std::int64_t width, std::int64_t height)
{
    const bool fits = KindOf(path) == FileKind::Jpeg ? width <= kMostJpegSide && height <= kMostJpegSide
                                                     : height <= kMostPngBytes
                / static_cast<std::int64_t>(Picture::kPixelBytes) / std::max<std::int64_t>(width, 1);
    if (!fits) {
        throw Failure(ExitCode::Failed,
                      "cannot write " + path + ": " + std::to_string(width) + " x " + std::to_string(height)
                          + " pixels are too many for such a file");
    }
}

std::vector<std::uint8_t> JpegBytes(const Picture& picture, int quality)
{
    std::vector<std::uint8_t> file;
    if (picture.width > kMostJpegSide || picture.height > kMostJpegSide
        || stbi_write_jpg_to_func(Append, &file, picture.width, picture.height,
                                  static_cast<int>(Picture::kPixelBytes), picture.rgba.data(), quality)
            == 0)
        throw Failure(ExitCode::Failed, "a picture is too large for a JPEG file");
    return file;
}

void WritePicture(const std::string& path, const Picture& picture, Overwrite overwrite, int quality)
{
    CheckPictureTarget(path, overwrite);
    CheckPictureSize(path, picture.width, picture.height);
    std::vector<std::uint8_t> file;
    constexpr int kChannels = static_cast<int>(Picture::kPixelBytes);
    const int done = KindOf(path) == FileKind::Png
        ? stbi_write_png_to_func(Append, &file, picture.width, picture.height, kChannels, picture.rgba.data(),
                                 picture.width * kChannels)
        : stbi_write_jpg_to_func(Append, &file, picture.width, picture.height, kChannels, picture.rgba.data(),
                                 quality);
    if (done == 0)
        throw Failure(ExitCode::Failed,
                      "cannot write " + path + ": the picture is too large for such a file");
    WriteWhole(path, file, overwrite);
}

} // namespace kelmora::host
