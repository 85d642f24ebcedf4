#pragma once

#include "effects/common/table_effect.h"
#include "effects/painterly/water_color_face.h"

namespace kelmora {

/// Daubs of flat colour: hue, saturation, brightness and contrast, then a wide median that melts detail into
/// patches with crisp borders, a sharpening that bites those borders, and a blend with the picture. It paints
/// in bytes, whatever the pictures hold; alpha is the picture's.
///
/// Render is false, with the output as it was, when there is no memory, and when the pictures are none of the
/// four picture formats or differ in format.
class CWaterColor final : public TableEffect<kWaterColor> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
