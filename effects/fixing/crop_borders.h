#pragma once

#include "effects/common/table_effect.h"
#include "effects/fixing/crop_borders_face.h"

namespace kelmora {

/// Takes a margin off every side and fills the frame again: with the rest zoomed, with the rest over the same
/// zoomed, with the rest's edge pixels, or with transparency. Hosts reach it without a wrapper, tool tips and all.
///
/// Render gives what the style's steps give: false when one of them has no memory or finds the picture too small,
/// and the output is then as the steps before left it. False, and the output untouched, without a RenderInfo, for
/// an unknown style, and for formats that are no picture formats or differ between picture and output.
class CBorderCrop final : public ToolTipEffect<kCropBorders, kCropBordersToolTips> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
