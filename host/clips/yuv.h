#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kelmora::host {

/// How frames of luma and two colour differences lie in memory: plane after plane, 8 bits, the top row first.
struct YuvLayout {
    int acrossShift = 0;           ///< colour planes have width >> this columns, rounded up
    int downShift = 0;             ///< and height >> this rows, rounded up
    bool hasColour = true;         ///< false: luma alone
    bool isFullRange = false;      ///< 0 to 255, not 16 to 235 and 240
    bool isHighDefinition = false; ///< the weights of BT.709, not those of BT.601

    /// Bytes of a frame.
    std::size_t FrameBytes(std::int32_t width, std::int32_t height) const;
};

/// The layout that Y4M calls by this word: "420jpeg", "420mpeg2", "420paldv", "420", "422", "444", "mono".
/// Nothing for others. Range and weights are left.
std::optional<YuvLayout> LayoutNamed(std::string_view chroma);

/// Turns a frame of this layout into blue, green, red, alpha bytes, alpha 255. A colour of the smaller planes
/// counts for every pixel that it stands for.
void FromYuv(const YuvLayout& layout, std::int32_t width, std::int32_t height, const std::uint8_t* planes,
             std::uint8_t* bgra);

/// The way back, without alpha. A colour of the smaller planes is the mean of the pixels that it stands for.
void ToYuv(const YuvLayout& layout, std::int32_t width, std::int32_t height, const std::uint8_t* bgra,
           std::uint8_t* planes);

} // namespace kelmora::host
