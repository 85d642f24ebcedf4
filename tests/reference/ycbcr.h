#pragma once

#include <cstdint>
#include <vector>

namespace kelmora::reference {

/// One row of three-byte RGB pixels from packed YCbCr 4:2:2 (Y0, Cb, Y1, Cr; a last odd pixel Y, Cb).
std::vector<std::uint8_t> RgbRow(const std::vector<std::uint8_t>& ycbcr, int width);

/// One row of packed YCbCr 4:2:2 from three-byte RGB pixels: two bytes per pixel.
std::vector<std::uint8_t> YCbCrRow(const std::vector<std::uint8_t>& rgb, int width);

} // namespace kelmora::reference
