#pragma once

#include <memory>
#include <utility>

#include <vips/vips.h>

#include "bench/cases.h"

namespace kelmora::bench::vips {

/// libvips on one thread. False, and a word on stderr, where it cannot be had.
bool Open();

/// What libvips' file exports under a name; null where it cannot be opened.
void* Symbol(const char* name);

// libvips' functions under their own names, so that calls read as everywhere else.
#define KELMORA_VIPS_FUNCTION(name)                                                                          \
    inline const auto name = reinterpret_cast<decltype(&::name)>(Symbol(#name))
KELMORA_VIPS_FUNCTION(g_object_unref);
KELMORA_VIPS_FUNCTION(vips_init);
KELMORA_VIPS_FUNCTION(vips_version_string);
KELMORA_VIPS_FUNCTION(vips_error_buffer);
KELMORA_VIPS_FUNCTION(vips_concurrency_set);
KELMORA_VIPS_FUNCTION(vips_cache_set_max);
KELMORA_VIPS_FUNCTION(vips_image_new_from_memory);
KELMORA_VIPS_FUNCTION(vips_image_new_matrix_from_array);
KELMORA_VIPS_FUNCTION(vips_image_set_double);
KELMORA_VIPS_FUNCTION(vips_region_new);
KELMORA_VIPS_FUNCTION(vips_region_image);
KELMORA_VIPS_FUNCTION(vips_region_prepare_to);
KELMORA_VIPS_FUNCTION(vips_get_tile_size);
KELMORA_VIPS_FUNCTION(vips_interpolate_new);
KELMORA_VIPS_FUNCTION(vips_array_int_new);
KELMORA_VIPS_FUNCTION(vips_area_unref);
KELMORA_VIPS_FUNCTION(vips_add);
KELMORA_VIPS_FUNCTION(vips_affine);
KELMORA_VIPS_FUNCTION(vips_byteswap);
KELMORA_VIPS_FUNCTION(vips_cast);
KELMORA_VIPS_FUNCTION(vips_colourspace);
KELMORA_VIPS_FUNCTION(vips_composite2);
KELMORA_VIPS_FUNCTION(vips_conv);
KELMORA_VIPS_FUNCTION(vips_convasep);
KELMORA_VIPS_FUNCTION(vips_convsep);
KELMORA_VIPS_FUNCTION(vips_copy);
KELMORA_VIPS_FUNCTION(vips_crop);
KELMORA_VIPS_FUNCTION(vips_draw_flood);
KELMORA_VIPS_FUNCTION(vips_draw_rect);
KELMORA_VIPS_FUNCTION(vips_embed);
KELMORA_VIPS_FUNCTION(vips_extract_band);
KELMORA_VIPS_FUNCTION(vips_flip);
KELMORA_VIPS_FUNCTION(vips_linear1);
KELMORA_VIPS_FUNCTION(vips_median);
KELMORA_VIPS_FUNCTION(vips_premultiply);
KELMORA_VIPS_FUNCTION(vips_recomb);
#undef KELMORA_VIPS_FUNCTION

/// Gives libvips' objects back.
struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(VipsArrayInt* array) const { vips_area_unref(reinterpret_cast<VipsArea*>(array)); }
};
using Image = std::unique_ptr<VipsImage, Unref>;

/// Throws std::runtime_error with libvips' own words where something does not hold.
void Require(bool holds);

/// An operation's image, which keeps the operands alive. The arguments are those behind the place for the result.
template <class Operation, class... Arguments>
Image Made(Operation operation, const Image& in, Arguments... arguments)
{
    VipsImage* out = nullptr;
    Require(operation(in.get(), &out, arguments..., nullptr) == 0);
    return Image(out);
}

/// The same for an operation with two images.
template <class Operation, class... Arguments>
Image MadeOfTwo(Operation operation, const Image& a, const Image& b, Arguments... arguments)
{
    VipsImage* out = nullptr;
    Require(operation(a.get(), b.get(), &out, arguments..., nullptr) == 0);
    return Image(out);
}

/// Bytes of a value: what the benchmarks use are bytes, and words of four.
std::size_t SizeOf(VipsBandFormat format);

/// The format of a picture's values.
VipsBandFormat FormatOf(const Picture& picture);

/// Memory as an image. It stays the caller's.
Image ImageOf(std::uint8_t* pixels, int width, int height, int bands, VipsBandFormat format);

/// A picture, or with one band its first bytes as a plane.
Image ImageOf(const Picture& picture, int bands = 4);

/// The parts that a result is asked for in: each case has the quickest for its operation.
struct Tile {
    int width, height; ///< in pixels; 0: as wide as the picture
};
inline constexpr Tile kHinted = {0, 0};     ///< as the result itself proposes
inline constexpr Tile kStrip = {0, 64};     ///< few rows, whole
inline constexpr Tile kSquare = {256, 256}; ///< little beyond the edges

/// A result that is computed into memory of its own, part by part, as libvips' own sinks do it, but without a thread
/// or fresh memory for each.
class Pipeline {
public:
    Pipeline(Image result, Tile tile);

    void Run();

    /// Puts the result where ours would be: a plane as it lies, of a larger picture the corner.
    void Show(const Picture& output) const;

private:
    void ShowThreeChannels(const Picture& output) const;

    Image m_result;
    std::size_t m_step;
    PageMemory m_memory;
    Image m_target;
    Tile m_tile;
};

} // namespace kelmora::bench::vips
