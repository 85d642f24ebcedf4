#pragma once

#include <cstdint>

#include "contract/video_host.h"

namespace kelmora {

/// Asks the host for knob values, each by its number in the effect's own list.
///
/// One record serves all questions: a host that refuses a knob leaves it, so the knob reads as the one that
/// was read before it, and the first one as 0.
class KnobReader {
public:
    explicit KnobReader(IVideoHost& host) : m_host(host) {}

    float Level(std::uint32_t knob) { return WordFloat(Ask(knob, ParamFloat).value); }
    std::uint32_t Choice(std::uint32_t knob) { return Ask(knob, ParamChoice).value; }
    std::uint32_t Colour(std::uint32_t knob) { return Ask(knob, ParamColor).value; }
    bool Check(std::uint32_t knob) { return (Ask(knob, ParamCheck).value & 0xFF) != 0; }

    void Point(std::uint32_t knob, float& x, float& y)
    {
        const ParamValue& value = Ask(knob, ParamPoint);
        x = WordFloat(value.value);
        y = WordFloat(value.valueY);
    }

private:
    const ParamValue& Ask(std::uint32_t knob, ParamKind kind)
    {
        m_host.GetParamValue(knob, &m_value, kind);
        return m_value;
    }

    IVideoHost& m_host;
    ParamValue m_value = {};
};

} // namespace kelmora
