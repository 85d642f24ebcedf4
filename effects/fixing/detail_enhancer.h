#pragma once

#include "effects/common/table_effect.h"
#include "effects/fixing/detail_enhancer_face.h"

namespace kelmora {

/// Unsharp mask: the picture, boosted, less a blur of itself whose radius grows with the picture's height.
/// Colours only; alpha is kept.
///
/// Without scratch memory the picture is copied and Render is true. Formats that are no pictures, or that
/// differ in size between picture and output, leave the output as it is, and Render is true as well. False
/// without a render info.
class CUnsharpMask final : public ToolTipEffect<kDetailEnhancer, kDetailEnhancerToolTips> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
