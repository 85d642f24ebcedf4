#include "host/clips/still_clip.h"

#include "host/pictures/pixel_conversion.h"

namespace kelmora::host {

StillClip::StillClip(const Picture& picture, const Ratio& rate, std::int64_t frames)
    : m_frames(frames), m_pixels(ToFormat(picture, PF_BGRA8))
{
    m_format.width = picture.width;
    m_format.height = picture.height;
    m_format.rate = rate;
}

bool StillClip::Read(FrameBytes& frame)
{
    if (m_next >= m_frames)
        return false;
    frame = m_pixels;
    ++m_next;
    return true;
}

} // namespace kelmora::host
