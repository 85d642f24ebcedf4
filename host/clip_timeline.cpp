#include "host/clip_timeline.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

#include "host/knob_value.h"

namespace kelmora::host {
namespace {

std::optional<std::int64_t> FrameNumber(std::string_view text)
{
    std::int32_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < 0)
        return std::nullopt;
    return number;
}

/// From 0 at the first of `frames` to 1 at the last; a frame alone is half-way.
double ProgressAt(std::int64_t frame, std::optional<std::int64_t> frames)
{
    if (!frames || *frames < 2)
        return 0.5;
    return std::min(1.0, static_cast<double>(frame) / static_cast<double>(*frames - 1));
}

} // namespace

std::optional<FrameRange> ParseFrameRange(std::string_view text)
{
    const std::size_t dash = text.find('-');
    const auto first = FrameNumber(text.substr(0, dash));
    if (!first)
        return std::nullopt;
    if (dash == std::string_view::npos)
        return FrameRange{*first, *first + 1};
    if (dash + 1 == text.size())
        return FrameRange{*first, std::nullopt};
    const auto last = FrameNumber(text.substr(dash + 1));
    if (!last || *last < *first)
        return std::nullopt;
    return FrameRange{*first, *last + 1};
}

std::optional<Ratio> ParseRate(std::string_view text)
{
    constexpr std::int64_t kThousand = 1000;
    const std::size_t slash = text.find('/');
    Ratio rate;
    if (slash != std::string_view::npos) {
        const auto over = FrameNumber(text.substr(0, slash));
        const auto under = FrameNumber(text.substr(slash + 1));
        if (!over || !under || *under == 0)
            return std::nullopt;
        rate = {*over, *under};
    } else {
        const auto number = ParseNumber(text);
        if (!number || !(*number >= 0.0 && *number <= 1000.0))
            return std::nullopt;
        const std::int64_t thousandths = std::llround(*number * static_cast<double>(kThousand));
        const std::int64_t common = std::max<std::int64_t>(std::gcd(thousandths, kThousand), 1);
        rate = {thousandths / common, kThousand / common};
    }
    const bool isUsable = rate.over * kThousand >= rate.under && rate.over <= kThousand * rate.under;
    return isUsable ? std::optional(rate) : std::nullopt;
}

std::optional<std::int64_t> ClipTimeline::Frames() const
{
    if (blend == 0)
        return first;
    if (!second)
        return std::nullopt;
    return SecondStart() + *second;
}

Moment ClipTimeline::At(std::int64_t frame) const
{
    const auto seconds = [this](std::int64_t frames) {
        return static_cast<double>(frames) * static_cast<double>(rate.under) / static_cast<double>(rate.over);
    };
    if (blend == 0)
        return {true, false, ProgressAt(frame, first), seconds(frame)};
    const std::int64_t since = frame - SecondStart();
    return {since < blend, since >= 0, ProgressAt(std::clamp<std::int64_t>(since, 0, blend - 1), blend),
            seconds(since)};
}

} // namespace kelmora::host
