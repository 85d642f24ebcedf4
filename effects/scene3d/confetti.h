#pragma once

#include "effects/scene3d/base_effect.h"
#include "effects/scene3d/confetti_face.h"

namespace kelmora {

/// The first picture is cut into pieces that a wind blows away, each spinning on a straight path of its own, and the
/// second one lies still underneath. How bright a piece is in both pictures decides how it tumbles: there is no
/// random number, so a frame is the same whenever it is asked for.
class D3DBlowingLeaves final : public BaseEffect<kConfetti> {
protected:
    bool RenderTransition(const TransitionFrame& frame) override;
};

} // namespace kelmora
