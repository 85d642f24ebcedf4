#pragma once

#include <cstddef>
#include <cstdint>

#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/lists.h"
#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/quad_face.h"
#include "effects/scene3d/quad_mesh.h"

namespace kelmora {

class Scene3D;

/// A piece on its flight: it rests until `startTime`, then goes straight and evenly to its target, spinning about
/// its own center. Times are in progress of the transition, 0 to 1.
class Leave3D {
public:
    /// Start and end are cut to 0 to 1.
    Leave3D(const QuadFace& face, const Vector3& target, double totalAngle, double shrink, double startTime,
            double endTime, double stopTime, double flutter);
    Leave3D(const Leave3D&) = default;
    Leave3D& operator=(const Leave3D&) = default;
    virtual ~Leave3D() = default;

    bool IsVisibleAt(double t) const { return stopTime == 0.0 || stopTime > t; }

    /// Whether it is on its flight at `t`, which is cut to 0 to 1: it rests before, and after it.
    bool FliesAt(double t) const;

    /// From rest to the place at `t`, which is cut to 0 to 1. The identity where it does not fly.
    Matrix4 GetMatrixAt(double t) const;
    QuadFace GetFaceAt(double t) const;

    QuadFace face;     ///< at rest
    Vector3 target;    ///< where its center flies to
    double totalAngle; ///< radians of spin over the whole flight
    double shrink;     ///< at the end it is scaled by 1 - shrink
    double startTime;
    double endTime;
    double stopTime; ///< from here on it is gone; 0 for never
    double flutter;  ///< 0 spins about the axis across the flight; else how fast it tumbles about two axes
};

/// Leaves that fly together.
class LeaveSystem {
public:
    virtual ~LeaveSystem() = default;

    /// False, and nothing added, without memory.
    bool AddLeave(const Leave3D& leave) { return leaves.push_back(leave); }

    /// The visible leaves where they are at `t`, in the order in which they were added. None without memory.
    QuadMesh GetFacesAt(double t) const;

    /// Which of these faces are drawn, from the farthest to the nearest. None without memory.
    FaceOrder GetDrawOrder(const QuadMesh& faces) const;

    /// Draws the leaves of time `t`. `interpolation` is the code of the warp.
    void Draw(Scene3D& scene, double t, std::uint32_t interpolation) const;

    GrowingList<Leave3D> leaves;
    double depthLimit =
        0.0; ///< leaves as far or farther from the plane of the frame are not drawn; 0: all are
};

} // namespace kelmora
