#pragma once

#include "effects/common/table_effect.h"
#include "effects/painterly/color_melt_face.h"

namespace kelmora {

/// A dissolve that melts on the way: toward its middle the mix of both pictures is blurred ever wider, its
/// saturation is driven up and its value drawn to one level, and the edge step lets the sharp mix show
/// through.
///
/// Render is false without a RenderInfo and true otherwise. Without memory for the melt the plain dissolve
/// remains; without memory for that, or with formats that are no picture formats or differ in size, the output
/// stays as it is. Where the second picture is missing or smaller the dissolve is as of transparent black.
class CColormelt final : public TableEffect<kColorMelt> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
