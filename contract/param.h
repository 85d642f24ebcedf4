#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace kelmora {

/// What a knob holds, and how the words of its value are read.
enum ParamKind : std::uint32_t {
    ParamPoint = 0,  ///< value: float x, valueY: float y
    ParamChoice = 1, ///< value: index into the names of the choices
    ParamFloat = 2,  ///< value: float, normalised 0 to 1 whatever scale is shown
    ParamColor = 3,  ///< value: 0x00BBGGRR, red in the low byte
    ParamCheck = 4,  ///< value: the low byte alone, non-zero is on
};

/// A knob's value in flight. The words mean what `kind` says.
struct ParamValue {
    std::uint32_t value;
    std::uint32_t valueY;
    std::uint32_t kind;
};

static_assert(sizeof(ParamValue) == 12);
static_assert(offsetof(ParamValue, valueY) == 4 && offsetof(ParamValue, kind) == 8);

/// A knob's place in the host's panel, in panel pixels.
struct ParamRect {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;

    constexpr bool operator==(const ParamRect&) const = default;
};

/// Kind ParamChoice: the names of the choices.
struct ParamChoices {
    std::int32_t choiceCount;
    char choiceNames[10][20]; ///< zero-ended ASCII
};

/// Kind ParamFloat: how the knob is shown. The value itself stays normalised.
struct ParamScale {
    float min;              ///< lower end of the scale shown to the user
    float max;              ///< upper end
    std::uint32_t hostFlag; ///< 1 or 0 per knob, set by the effect and read by the host alone
    std::uint8_t angular;   ///< 1: a compass angle, 0 to 360
};

/// The description of one knob. The caller hands in a zero-filled record; the effect writes the fields
/// that the knob has and leaves the others.
struct ParamInfo {
    std::uint32_t value;  ///< default value, as in ParamValue
    std::uint32_t valueY; ///< its second word
    std::uint32_t kind;   ///< a ParamKind; says which of the next two holds
    union {
        ParamChoices choice;
        ParamScale scale;
    };
    char name[40]; ///< zero-ended ASCII display name
    ParamRect rect;
    std::uint8_t shown; ///< 1 on every knob
    std::uint8_t reserved[3];
};

static_assert(sizeof(ParamInfo) == 276);
static_assert(offsetof(ParamInfo, value) == 0 && offsetof(ParamInfo, valueY) == 4);
static_assert(offsetof(ParamInfo, kind) == 8);
static_assert(offsetof(ParamInfo, choice) == 12 && offsetof(ParamInfo, scale) == 12);
static_assert(offsetof(ParamChoices, choiceNames) == 4 && sizeof(ParamChoices) == 204);
static_assert(offsetof(ParamScale, max) == 4 && offsetof(ParamScale, hostFlag) == 8);
static_assert(offsetof(ParamScale, angular) == 12);
static_assert(offsetof(ParamInfo, name) == 216 && offsetof(ParamInfo, rect) == 256);
static_assert(offsetof(ParamInfo, shown) == 272);

/// The word that carries a float level.
constexpr std::uint32_t FloatWord(float level)
{
    return std::bit_cast<std::uint32_t>(level);
}

/// The float that a word carries.
constexpr float WordFloat(std::uint32_t word)
{
    return std::bit_cast<float>(word);
}

} // namespace kelmora
