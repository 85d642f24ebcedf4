#pragma once

#include <cstdint>

#include "contract/unknown.h"

namespace kelmora {

/// Texts in the user's language. Offered by the library object while a language table is loaded.
struct IMultiLingual : IUnknown {
    static constexpr InterfaceId id = {
        0xF6E85D4E, 0xDC38, 0x476C, {0xAC, 0x59, 0xEB, 0x50, 0x0B, 0xA9, 0x3C, 0xDC}};

    /// Seven words, passed on to the language companion as they come. They may be addresses, so they are
    /// as wide as one.
    virtual std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                                 std::uintptr_t d, std::uintptr_t e, std::uintptr_t f,
                                                 std::uintptr_t g) = 0;

    /// Stores the text of `key` in `section` of the table for `languageCode` in `buffer`, which has room
    /// for `capacity` 16-bit characters. Gives the number stored, 0 when there is no such text.
    virtual std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section,
                                               const char* key, char16_t* buffer, std::uint32_t capacity) = 0;

protected:
    ~IMultiLingual() = default;
};

} // namespace kelmora
