#pragma once

#include <cstddef>

#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/quad_mesh.h"

namespace kelmora {

inline constexpr std::size_t kSidesOfBox = 6;

/// How the boxes of one frame turn over.
struct BoxMotion {
    bool horizontal =
        true; ///< slices lie above each other and turn about the y axis; else side by side, about x
    double cohesion = 0;      ///< 0: one after the other, 1: all together
    bool rotateRight = false; ///< the other way round
    bool spread = false;      ///< boxes move apart in mid-transition
    bool alternate = false;   ///< odd boxes go the other way
    double ebb = 0;           ///< how far a box swings toward the viewer and away, in the scene's units
    bool bottomUp = false;    ///< the picture's rows run upward
};

/// How far box `index` of `count` is in its own turn when the transition is at `t`: 0 to 1.
double LocalTime(int index, int count, double t, double cohesion);

/// From rest to the place at `t`, for a box whose center rests at `center`.
Matrix4 BoxMatrix(const Vector3& center, int index, int count, double t, const BoxMotion& motion);

/// Moves box `index` of `count` to its place at `t`, 0 to 1.
void AnimateBox(QuadMesh& box, int index, int count, double t, const BoxMotion& motion);

/// Lets the back of a box show `texture`, the right way up once the box has turned over. A mesh that is no box of
/// six faces stays as it is.
void SetBackOfBox(QuadMesh& box, const FrameBuffer* texture, bool horizontal);

} // namespace kelmora
