#pragma once

#include "effects/common/table_effect.h"
#include "effects/painterly/air_brush_face.h"

namespace kelmora {

/// A wide soft blur, of which bright detail takes what is darker and dark detail is lifted toward it: the
/// sprayed look.
///
/// Render is true also when there is no memory, when the formats are none of the four picture formats or
/// differ in size: the output stays as it is then.
class CAirbrush final : public TableEffect<kAirBrush> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
