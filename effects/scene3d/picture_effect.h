#pragma once

#include "image/frame_buffer.h"

namespace kelmora {

/// Something that is done to a whole picture, in place.
class PREffect {
public:
    /// Leaves a picture that it does not serve, null included, as it was. Never throws.
    virtual void Apply(FrameBuffer* picture) = 0;

    virtual ~PREffect() = default;
};

} // namespace kelmora
