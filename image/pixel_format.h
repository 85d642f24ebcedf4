#pragma once

#include <cstdint>

#include "contract/video_frame.h"

namespace kelmora {

/// Codes 1 and 4: alpha is the first channel in memory.
constexpr bool IsAlphaFirst(std::uint32_t format)
{
    return format == PF_ARGB8 || format == PF_ARGB32F;
}

/// The place of alpha among a pixel's four channels: 0 for the alpha-first formats, 3 for every other code.
constexpr int AlphaIndex(std::uint32_t format)
{
    return IsAlphaFirst(format) ? 0 : 3;
}

/// Codes 0 and 1: four channels of one byte.
constexpr bool IsByteColour(std::uint32_t format)
{
    return format == PF_BGRA8 || format == PF_ARGB8;
}

/// Codes 3 and 4: four channels of one float.
constexpr bool IsFloatColour(std::uint32_t format)
{
    return format == PF_BGRA32F || format == PF_ARGB32F;
}

/// Codes 3, 4 and 7: channels are floats.
constexpr bool IsFloat(std::uint32_t format)
{
    return IsFloatColour(format) || format == PF_Mask32F;
}

/// The formats that effects take as pictures.
constexpr bool IsPicture(std::uint32_t format)
{
    return IsByteColour(format) || IsFloatColour(format);
}

/// Bytes per pixel that a format's channels fill; 0 for a code that is not in use.
constexpr int PixelBytesOf(std::uint32_t format)
{
    switch (format) {
    case PF_BGRA8:
    case PF_ARGB8:
    case PF_Packed8:
    case PF_Mask32F:
        return 4;
    case PF_BGRA32F:
    case PF_ARGB32F:
        return 16;
    case PF_Mask8:
        return 1;
    default:
        return 0;
    }
}

/// The alpha-last format of the same element type.
constexpr std::uint32_t AlphaLast(std::uint32_t format)
{
    return format == PF_ARGB8 ? PF_BGRA8 : format == PF_ARGB32F ? PF_BGRA32F : format;
}

} // namespace kelmora
