// FFmpeg brings the system's GLib into the process, and libvips' file holds a GLib of its own under the same names. So
// the file is opened apart: it finds its own names first, and nobody else finds them.

#include "bench/vips.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace kelmora::bench::vips {
namespace {

void* File()
{
    static void* const file = dlopen(KELMORA_VIPS, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    return file;
}

} // namespace

void* Symbol(const char* name)
{
    return File() ? dlsym(File(), name) : nullptr;
}

bool Open()
{
    if (!File() || vips_init("kelmora_bench") != 0) {
        std::fprintf(stderr, "libvips is left out: %s\n", File() ? vips_error_buffer() : KELMORA_VIPS);
        return false;
    }
    vips_concurrency_set(1);
    vips_cache_set_max(0); // or a result that was made before is found again
    return true;
}

void Require(bool holds)
{
    if (!holds)
        throw std::runtime_error(std::string("libvips refuses: ") + vips_error_buffer());
}

std::size_t SizeOf(VipsBandFormat format)
{
    return format == VIPS_FORMAT_UCHAR ? 1 : 4;
}

Image ImageOf(std::uint8_t* pixels, int width, int height, int bands, VipsBandFormat format)
{
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height)
        * static_cast<std::size_t>(bands) * SizeOf(format);
    Image image(vips_image_new_from_memory(pixels, size, width, height, bands, format));
    Require(image != nullptr);
    // Tells that 255 or 1 is opaque, and the fourth band alpha.
    image->Type = bands == 1          ? VIPS_INTERPRETATION_B_W
        : format == VIPS_FORMAT_FLOAT ? VIPS_INTERPRETATION_scRGB
                                      : VIPS_INTERPRETATION_sRGB;
    return image;
}

VipsBandFormat FormatOf(const Picture& picture)
{
    return HasFloats(picture.Format()) ? VIPS_FORMAT_FLOAT : VIPS_FORMAT_UCHAR;
}

Image ImageOf(const Picture& picture, int bands)
{
    return ImageOf(picture.Bytes(), picture.Width(), picture.Height(), bands, FormatOf(picture));
}

Pipeline::Pipeline(Image result, Tile tile)
    : m_result(std::move(result)),
      m_step(static_cast<std::size_t>(m_result->Xsize * m_result->Bands) * SizeOf(m_result->BandFmt)),
      m_memory(m_step * static_cast<std::size_t>(m_result->Ysize)),
      m_target(
          ImageOf(m_memory.data(), m_result->Xsize, m_result->Ysize, m_result->Bands, m_result->BandFmt)),
      m_tile(tile)
{
    int lines;
    if (m_tile.height == 0)
        vips_get_tile_size(m_result.get(), &m_tile.width, &m_tile.height, &lines);
    else if (m_tile.width == 0)
        m_tile.width = m_result->Xsize;
}

void Pipeline::Run()
{
    using Region = std::unique_ptr<VipsRegion, Unref>;
    // New regions each time: old ones may hold a part that is asked for again.
    const Region from(vips_region_new(m_result.get())), to(vips_region_new(m_target.get()));
    const VipsRect whole = {0, 0, m_result->Xsize, m_result->Ysize};
    Require(vips_region_image(to.get(), &whole) == 0);
    for (int y = 0; y < whole.height; y += m_tile.height)
        for (int x = 0; x < whole.width; x += m_tile.width) {
            const VipsRect part = {x, y, std::min(m_tile.width, whole.width - x),
                                   std::min(m_tile.height, whole.height - y)};
            Require(vips_region_prepare_to(from.get(), to.get(), &part, x, y) == 0);
        }
}

void Pipeline::Show(const Picture& output) const
{
    const auto step = static_cast<std::size_t>(output.Step());
    if (m_result->Bands == 3)
        ShowThreeChannels(output);
    else if (m_step < step)
        std::memcpy(output.Bytes(), m_memory.data(), m_memory.size());
    else
        ShowCorner(m_memory.data(), m_step, output);
}

void Pipeline::ShowThreeChannels(const Picture& output) const
{
    const std::size_t value = SizeOf(m_result->BandFmt), pixels = m_memory.size() / (3 * value);
    for (std::size_t i = 0; i < pixels; ++i)
        std::memcpy(output.Bytes() + 4 * value * i, m_memory.data() + 3 * value * i, 3 * value);
}

} // namespace kelmora::bench::vips
