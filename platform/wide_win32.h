#pragma once

namespace kelmora::platform {

/// The same text as the system's functions take it: there both kinds of characters are UTF-16.
inline const wchar_t* Wide(const char16_t* text)
{
    return reinterpret_cast<const wchar_t*>(text);
}

} // namespace kelmora::platform
