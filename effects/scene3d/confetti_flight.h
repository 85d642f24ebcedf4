#pragma once

#include "effects/scene3d/confetti_plan.h"
#include "effects/scene3d/leaf.h"
#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/quad_mesh.h"

namespace kelmora::confetti {

/// How a piece tumbles whose part of the two pictures has the mean brightnesses `first` and `second`, 0 to 1 each.
/// -1 to 1, seldom near 0.
double GetBrightnessTumble(double first, double second);

/// The flights of the faces of `mesh`, a grid at rest, from the first to leave to the last. None tumbles: that is for
/// the caller to see to. No flight without memory for all.
LeaveSystem CreateLeaveSystem(const QuadMesh& mesh, const Wind& wind);

/// A sway of the camera, widest at t = 0.5. `amount` 0 is none; x and y, 0 to 1, say where to, 0.5 being straight.
Matrix4 GetCameraMatrix(double t, double amount, double x, double y);

} // namespace kelmora::confetti
