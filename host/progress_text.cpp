#include "host/progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace kelmora::host {
namespace {

/// "0:07", "1:02:03".
std::string Clock(double seconds)
{
    constexpr double kMost = 359999.0;
    const long all = std::lround(std::clamp(seconds, 0.0, kMost));
    std::array<char, 64> text;
    if (all >= 3600)
        std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", all / 3600, all / 60 % 60, all % 60);
    else
        std::snprintf(text.data(), text.size(), "%ld:%02ld", all / 60, all % 60);
    return text.data();
}

/// With one digit behind the point, in every locale.
std::string Tenths(double number)
{
    const long long tenths = std::llround(std::min(number, 1e9) * 10.0);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

} // namespace

std::string ProgressText(std::int64_t done, std::optional<std::int64_t> frames, double seconds)
{
    constexpr std::int64_t kWidth = 24;
    const double rate = seconds > 0.0 ? static_cast<double>(done) / seconds : 0.0;
    std::string text;
    if (frames && *frames > 0) {
        const std::int64_t part = std::min(done, *frames);
        const auto full = static_cast<std::size_t>(part * kWidth / *frames);
        text = "[" + std::string(full, '#') + std::string(kWidth - full, '.') + "] "
            + std::to_string(part * 100 / *frames) + "%  " + std::to_string(done) + "/"
            + std::to_string(*frames);
    } else {
        text = std::to_string(done);
    }
    text += " frames  " + Tenths(rate) + "/s";
    if (frames && rate > 0.0)
        text += "  " + Clock(static_cast<double>(*frames - std::min(done, *frames)) / rate) + " left";
    return text;
}

} // namespace kelmora::host
