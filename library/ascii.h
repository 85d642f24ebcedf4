#pragma once

namespace kelmora {

// Characters in files and names mean the same whatever the host's locale is, unlike those of <cctype>.

/// A space, tab, line feed, vertical tab, form feed or carriage return.
constexpr bool IsBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// 0 to 9.
constexpr bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace kelmora
