#pragma once

#include <cstdint>

#include "contract/video_frame.h"

namespace kelmora {

/// The one of a set's members bgra8, argb8, bgra32f and argb32f that belongs to a picture format; for any other format
/// bgra8.
template <class Set>
constexpr const auto& ByFormat(const Set& set, std::uint32_t format)
{
    switch (format) {
    case PF_ARGB8:
        return set.argb8;
    case PF_BGRA32F:
        return set.bgra32f;
    case PF_ARGB32F:
        return set.argb32f;
    default:
        return set.bgra8;
    }
}

} // namespace kelmora
