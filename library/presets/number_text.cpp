#include "library/presets/number_text.h"

#include "library/ascii.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace kelmora {
namespace {

/// Takes blanks and a sign off the front; gives whether it was a minus.
bool TakeSign(std::string_view& text)
{
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    const bool minus = !text.empty() && text.front() == '-';
    if (minus || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    return minus;
}

bool BeginsWithNumber(std::string_view text)
{
    if (!text.empty() && text.front() == '.')
        text.remove_prefix(1);
    return !text.empty() && IsDigit(text.front());
}

/// Whether a number beyond the range of double, in decimal digits, is too large rather than too small: whether
/// its first digit that counts stands before the point, once the exponent has moved it.
bool IsHuge(std::string_view number)
{
    const std::size_t end = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), end);
    const std::size_t first = number.find_first_of("123456789");
    if (first >= end)
        return false; // nothing but zeros
    std::int64_t place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    if (end < number.size())
        place += ReadInteger(number.substr(end + 1));
    return place > 0;
}

double ReadDouble(std::string_view text)
{
    const bool minus = TakeSign(text);
    if (!BeginsWithNumber(text))
        return 0.0;
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        const std::string_view taken(text.data(), static_cast<std::size_t>(end - text.data()));
        number = IsHuge(taken) ? std::numeric_limits<double>::max() : 0.0;
    }
    return minus ? -number : number;
}

} // namespace

std::int32_t ReadInteger(std::string_view text)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const bool minus = TakeSign(text);
    std::int64_t number = 0;
    for (; !text.empty() && IsDigit(text.front()) && number <= Limits::max(); text.remove_prefix(1))
        number = number * 10 + (text.front() - '0');
    number = minus ? -number : number;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

float ReadLevel(std::string_view text)
{
    constexpr auto most = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(ReadDouble(text), -most, most));
}

void WriteLevel(float level, char (&text)[kLevelTextCapacity])
{
    constexpr int decimals = 6;
    const auto result = std::to_chars(text, text + kLevelTextCapacity - 1, static_cast<double>(level),
                                      std::chars_format::fixed, decimals);
    *result.ptr = '\0';
}

} // namespace kelmora
