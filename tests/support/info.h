#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "contract/render_info.h"
#include "tests/support/flush_record.h"

namespace kelmora {

/// The fields of a RenderInfo that mean something.
struct InfoFields {
    double progress = 0.0;
    double time = 0.0;
    std::uint32_t flags = 0;
    std::int16_t fieldMode = 3; ///< no field picture, whatever the flags
    double pixelAspect = 1.0;
};

/// A whole frame at `progress`.
constexpr InfoFields AtProgress(double progress)
{
    return {.progress = progress};
}

/// A whole frame at clock `time`.
constexpr InfoFields AtTime(double time)
{
    return {.time = time};
}

/// A half-height field picture at `progress`.
constexpr InfoFields FieldAtProgress(double progress)
{
    return {.progress = progress, .flags = RenderFieldPicture, .fieldMode = 0};
}

/// A record on the stack. `unread` fills the bytes that nobody may read.
inline RenderInfo MakeInfo(const InfoFields& fields, std::uint8_t unread = 0xEE)
{
    RenderInfo info;
    std::memset(&info, unread, sizeof info);
    info.flags = fields.flags;
    info.progress = fields.progress;
    info.time = fields.time;
    info.pixelAspect = fields.pixelAspect;
    info.fieldMode = fields.fieldMode;
    return info;
}

/// The shortest record that a host may hand over: 54 bytes, read-only, with an unreadable page behind
/// them. It starts at an address that is 2 past a multiple of 8.
class FlushInfo {
public:
    explicit FlushInfo(const InfoFields& fields, std::uint8_t unread = 0xEE)
        : m_record(MakeInfo(fields, unread), kRenderInfoBytes)
    {
        m_record.Freeze();
    }

    RenderInfo* Get() const { return m_record.Get(); }

private:
    FlushRecord<RenderInfo> m_record;
};

} // namespace kelmora
