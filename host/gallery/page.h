#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/effect_face.h"
#include "host/gallery/film.h"

namespace kelmora::host {

/// One of the pictures that the effects work on.
struct PagePicture {
    std::string name;
    Film film; ///< of one frame
};

/// What a film goes along.
enum class Along { Nothing, Progress, Time };

/// An effect at work on one picture, or on the way between two.
struct PageShot {
    std::size_t picture = 0; ///< the one that it begins with, an index
    Along along = Along::Nothing;
    Film film; ///< from the beginning to the end; of one frame along nothing
};

/// One effect: its face, and for each of its presets the shots.
struct PageEffect {
    EffectFace face;
    std::vector<std::vector<PageShot>> shots;
};

struct Page {
    std::string library; ///< its name
    std::vector<PagePicture> pictures;
    std::vector<PageEffect> effects;
    double seconds = 0.0; ///< how long a film along the time is
};

/// The page as one HTML file that holds its pictures, style and script itself and asks for nothing else.
std::string PageHtml(const Page& page);

} // namespace kelmora::host
