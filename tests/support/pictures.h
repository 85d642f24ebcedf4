#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tests/support/guarded_picture.h"

namespace kelmora {

/// What can be drawn. Everything is integer arithmetic: the same bytes on every machine.
enum class Motif {
    Ramp,         ///< blue rises to the right, green downward, red along the diagonal; opaque
    ZonePlate,    ///< rings that grow finer outward, grey; opaque
    HardEdges,    ///< blocks of eight pixels in eight pure colours with a thin black cross; opaque
    SoftEdges,    ///< a light disc that fades over a quarter of the height into a coloured ground; opaque
    AlphaRamp,    ///< the ramp's colours with an alpha that rises to the right
    Checkerboard, ///< single pixels, black and white; opaque
    Moving,       ///< a disc, a bar and a slanting ground, all moved by the frame's number; opaque
};

inline constexpr Motif kAllMotifs[] = {Motif::Ramp,      Motif::ZonePlate, Motif::HardEdges,
                                       Motif::SoftEdges, Motif::AlphaRamp, Motif::Checkerboard,
                                       Motif::Moving};

/// The formats that effects work on.
inline constexpr std::uint32_t kPictureFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

/// A colour in byte levels.
struct PixelColour {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
    std::uint8_t alpha;

    constexpr bool operator==(const PixelColour&) const = default;
};

/// The colour of one pixel of `motif` in a picture of width x height. frame: 0 and up, for Moving.
PixelColour ColourAt(Motif motif, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                     std::int32_t frame = 0);

/// Draws `motif` in the picture's own format: alpha-first and alpha-last pictures get the same colours,
/// float pictures the byte levels times 1/255. Masks get the green channel.
void Draw(GuardedPicture& picture, Motif motif, std::int32_t frame = 0);

/// A new picture with `motif` drawn.
GuardedPicture MakePicture(Motif motif, std::int32_t width, std::int32_t height, std::uint32_t format,
                           const PictureLayout& layout = {}, std::int32_t frame = 0);

/// The same colours in the other channel order (BGRA8 and ARGB8, BGRA32F and ARGB32F).
GuardedPicture WithChannelsReversed(const GuardedPicture& picture);

/// The word for a motif or a format in manifests and messages: "zone-plate", "BGRA8".
std::string_view Name(Motif motif);
std::string_view FormatName(std::uint32_t format);

/// The motif of that name.
std::optional<Motif> MotifNamed(std::string_view name);

} // namespace kelmora
