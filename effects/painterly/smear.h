#pragma once

#include "effects/common/table_effect.h"
#include "effects/painterly/smear_face.h"

namespace kelmora {

/// A transition: the first picture is pulled out along a direction into a long streak, the second comes in
/// streaked from the other side and settles, and the two dissolve into each other in between.
///
/// Render is false without a RenderInfo and true otherwise. Of a picture whose streak there is no memory for
/// nothing is seen: what it would show stays as it was in the output. With a format that is no picture format, or
/// with formats that differ between first picture and output, the output stays as it is; a second picture that is
/// missing or of another format counts as transparent.
class CSmear final : public TableEffect<kSmear> {
protected:
    bool RenderFrame(const RenderCall& call) override;
};

} // namespace kelmora
