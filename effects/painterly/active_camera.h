#pragma once

#include "effects/common/table_effect.h"
#include "effects/painterly/active_camera_face.h"

namespace kelmora {

/// A locked-off shot as if it were held by hand: the picture is zoomed in a little, and shifted and turned by
/// curves of noise. Where it does not reach, the output is 0 in all channels. With blur a second sample of the
/// motion, a little earlier, is mixed in.
///
/// Render is false without a RenderInfo and true otherwise. Planes of bytes are moved as pictures are. Without memory
/// the output stays as it is, and with a format that is not served; where the formats differ it becomes 0.
class CActivecamera final : public TableEffect<kActiveCamera> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
