#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelmora::host {

/// A picture as files hold it.
struct Picture {
    static constexpr std::size_t kPixelBytes = 4;

    std::int32_t width = 0;         ///< pixels
    std::int32_t height = 0;        ///< pixels
    std::vector<std::uint8_t> rgba; ///< red, green, blue, alpha; the top row first, no gap between rows

    bool operator==(const Picture&) const = default;
};

} // namespace kelmora::host
