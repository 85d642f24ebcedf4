#include "effects/scene3d/leaf.h"

#include <algorithm>
#include <cmath>

#include "effects/scene3d/scene3d.h"
#include "image/exact_math.h"

namespace kelmora {
namespace {

/// A turn of `angle` about the axis in the frame's plane that is at right angles to the flight.
Matrix4 SpinAcross(const Vector3& flight, double angle)
{
    // No part of a direction is longer than 1; beyond, there would be no angle.
    const double bearing = ExactArcCosine(std::clamp(flight.x, -1.0, 1.0));
    const double b = flight.y >= 0.0 ? -bearing : bearing;
    return Matrix4::RotationZ(-b).Then(Matrix4::RotationY(angle)).Then(Matrix4::RotationZ(b));
}

Matrix4 Tumble(double angle, double flutter)
{
    const double aboutX = -(angle * flutter * (0.5 - flutter) * 0.5);
    return Matrix4::RotationY(angle * flutter).Then(Matrix4::RotationX(aboutX));
}

} // namespace

Leave3D::Leave3D(const QuadFace& piece, const Vector3& goal, double spin, double smaller, double start,
                 double end, double stop, double tumble)
    : face(piece), target(goal), totalAngle(spin), shrink(smaller), startTime(std::clamp(start, 0.0, 1.0)),
      endTime(std::clamp(end, 0.0, 1.0)), stopTime(stop), flutter(tumble)
{
}

bool Leave3D::FliesAt(double t) const
{
    const double now = std::clamp(t, 0.0, 1.0);
    return startTime <= now && now < endTime && (stopTime == 0.0 || (stopTime > 0.0 && now < stopTime));
}

Matrix4 Leave3D::GetMatrixAt(double t) const
{
    if (!FliesAt(t))
        return Matrix4::Identity();
    const double now = std::clamp(t, 0.0, 1.0);
    const Vector3 center = face.GetCenter();
    const Vector3 way = Subtract(target, center);
    const Vector3 flight = Normalized(way);
    const double p = (now - startTime) / (endTime - startTime);
    const double angle = p * totalAngle * (flight.x >= 0.0 ? 1.0 : -1.0);
    const double size = 1.0 - shrink * p;
    return Matrix4::Translation(Scale(center, -1.0))
        .Then(Matrix4::Scaling(size, size, size))
        .Then(flutter == 0.0 ? SpinAcross(flight, angle) : Tumble(angle, flutter))
        .Then(Matrix4::Translation(center))
        .Then(Matrix4::Translation(Scale(way, p)));
}

QuadFace Leave3D::GetFaceAt(double t) const
{
    QuadFace moved = face;
    moved.TransformInPlace(GetMatrixAt(t));
    return moved;
}

QuadMesh LeaveSystem::GetFacesAt(double t) const
{
    QuadMesh faces;
    if (!faces.Reserve(leaves.size()))
        return faces;
    for (const Leave3D& leave : leaves)
        if (leave.IsVisibleAt(t))
            faces.AddFace(leave.GetFaceAt(t));
    return faces;
}

FaceOrder LeaveSystem::GetDrawOrder(const QuadMesh& faces) const
{
    FaceOrder order = SortFacesByDepth(faces);
    const auto isBeyond = [&](std::size_t i) {
        const double z = faces.GetFace(i).GetCenter().z;
        return !(z > -depthLimit && z < depthLimit);
    };
    if (depthLimit != 0.0)
        order.truncate(
            static_cast<std::size_t>(std::remove_if(order.begin(), order.end(), isBeyond) - order.begin()));
    return order;
}

void LeaveSystem::Draw(Scene3D& scene, double t, std::uint32_t interpolation) const
{
    const QuadMesh faces = GetFacesAt(t);
    for (const std::size_t i : GetDrawOrder(faces))
        scene.DrawFace(faces.GetFace(i), interpolation, false);
}

} // namespace kelmora
