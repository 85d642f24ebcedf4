#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/clips/clip.h"

namespace kelmora::host {

/// The frames from `first` on: the one behind the last is `end`, or all to the end.
struct FrameRange {
    std::int64_t first = 0;
    std::optional<std::int64_t> end;

    bool operator==(const FrameRange&) const = default;
};

/// "100-200" with both ends, "100-" to the end, "100" alone; frames count from 0. Nothing for what is none.
std::optional<FrameRange> ParseFrameRange(std::string_view text);

/// A rate as "25", "29.97" or "30000/1001"; nothing for what is none, and outside of 0.001 to 1000.
std::optional<Ratio> ParseRate(std::string_view text);

/// What a frame of the result is made of.
struct Moment {
    bool hasFirst = true;
    bool hasSecond = false;
    double progress = 0.5; ///< 0 to 1
    double seconds = 0.0;  ///< since the effect began
};

/// How an effect lies over its clips. A filter lies over the whole clip; a transition over the last `blend`
/// frames of the first clip and the first ones of the second, and what is left of both goes before and behind.
struct ClipTimeline {
    Ratio rate = kDefaultRate;
    std::optional<std::int64_t> first;  ///< frames of the first clip; a transition has to know
    std::optional<std::int64_t> second; ///< frames of the second clip
    std::int64_t blend = 0;             ///< 0: a filter

    /// The frame from which on the second clip is there.
    std::int64_t SecondStart() const { return first.value_or(0) - blend; }

    /// Frames of the result; nothing when only the end will tell.
    std::optional<std::int64_t> Frames() const;

    Moment At(std::int64_t frame) const;
};

} // namespace kelmora::host
