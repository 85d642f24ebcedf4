#pragma once

#include <cstdint>
#include <vector>

#include "host/pictures/picture.h"

namespace kelmora::host {

/// Frames of one size, one above the other in one JPEG file.
struct Film {
    std::vector<std::uint8_t> jpeg;
    std::int32_t width = 1;  ///< of a frame and of the file, pixels
    std::int32_t height = 1; ///< of a frame, pixels
    std::int32_t pitch = 1;  ///< rows from one frame to the next
    std::int32_t frames = 1;
};

/// The rows from one frame to the next: whole blocks of the file format, so that no colour runs from a frame into
/// its neighbour. What is left below a frame repeats its last row.
std::int32_t FilmPitch(std::int32_t height);

/// The picture on a light chequered ground, which shows through where it is clear. Alpha becomes 255.
Picture OverChequers(const Picture& picture);

/// A film of `frames`, at least one and all of one size. Throws Failure when a file cannot hold them.
///
/// quality  1 to 100
Film MakeFilm(const std::vector<Picture>& frames, int quality);

} // namespace kelmora::host
