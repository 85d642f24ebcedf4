#pragma once

#include "effects/scene3d/base_effect.h"
#include "effects/scene3d/pizza_boxes_face.h"

namespace kelmora {

/// The frame is cut into slices, each a box with the first picture on its front and the second one on its back, and
/// the boxes turn over on the spot, one after the other or together. They can go away and come back, sway, move
/// apart, and glow while they turn.
class D3DLayers final : public BaseEffect<kPizzaBoxes> {
protected:
    bool RenderTransition(const TransitionFrame& frame) override;
};

} // namespace kelmora
