#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

/// What a test tells its language companion to do, and what the companion saw. The companion finds it by the
/// address in the environment variable kCompanionRecordVariable.
struct CompanionRecord {
    static constexpr std::size_t kMostEvents = 64;
    static constexpr std::size_t kPathUnits = 2048;

    // To do
    bool giveParser = true;
    bool loadResults[2] = {true, true}; ///< of a parser's first and second load
    std::int32_t canUnload = 1;
    std::uint32_t textLength = 0; ///< characters 'k' that GetText has to give, as far as they fit

    // Seen. Events: A attached, G parser asked for, L table to load, T text, X text ex, R parser released,
    // U asked whether it can be unloaded, D detached.
    char events[kMostEvents + 1] = "";
    std::size_t eventCount = 0;
    std::size_t loadCount = 0;
    char16_t loadedPaths[2][kPathUnits] = {};
    std::uintptr_t words[7] = {}; ///< of the latest GetTextEx
    char languageCode[4] = "";    ///< of the latest GetText
    std::uint32_t section = 0;
    const char* key = nullptr;
    char16_t* buffer = nullptr;
    std::uint32_t capacity = 0;
};

inline constexpr const char* kCompanionRecordVariable = "KELMORA_TEST_COMPANION_RECORD";

/// What GetTextEx of the test companion gives.
inline constexpr std::uint32_t kCompanionTextExResult = 0x4B454C4D;

} // namespace kelmora
