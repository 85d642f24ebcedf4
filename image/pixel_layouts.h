#pragma once

#include <cstdint>

#include "contract/video_frame.h"

namespace kelmora {

// The four picture formats as types: the element of a channel and the places of the channels. A pixel
// routine is a template over one of these, so it is written once.

struct Bgra8 {
    using Channel = std::uint8_t;
    static constexpr int b = 0, g = 1, r = 2, a = 3;
};

struct Argb8 {
    using Channel = std::uint8_t;
    static constexpr int a = 0, r = 1, g = 2, b = 3;
};

struct Bgra32F {
    using Channel = float;
    static constexpr int b = 0, g = 1, r = 2, a = 3;
};

struct Argb32F {
    using Channel = float;
    static constexpr int a = 0, r = 1, g = 2, b = 3;
};

/// Calls `work` with the layout of `format`. False, nothing called, for a format that is no picture.
template <class Work>
bool WithLayout(std::uint32_t format, Work&& work)
{
    switch (format) {
    case PF_BGRA8:
        work(Bgra8{});
        return true;
    case PF_ARGB8:
        work(Argb8{});
        return true;
    case PF_BGRA32F:
        work(Bgra32F{});
        return true;
    case PF_ARGB32F:
        work(Argb32F{});
        return true;
    default:
        return false;
    }
}

} // namespace kelmora
