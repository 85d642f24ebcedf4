#pragma once

#include "effects/common/table_effect.h"
#include "effects/fixing/pixelator_face.h"

namespace kelmora {

/// Hides a face behind coarse blocks, in an ellipse with a soft edge. It has no number, so no host gets one yet.
///
/// Render gives true, with the steps that there was memory for: without a soft edge, or the picture as it is. True
/// and nothing written for formats that are no picture formats or differ between picture and output, and for
/// pictures without pixels. False, and nothing written, without a RenderInfo.
class CFacePixelator final : public ToolTipEffect<kPixelator, kPixelatorToolTips> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
