#include "effects/scene3d/confetti_flight.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/common/precision.h"
#include "effects/scene3d/depth_sort.h"
#include "image/exact_math.h"

namespace kelmora::confetti {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kLastStart = Single(0.9);

/// Half the diagonal of the area whose top left corner is the first corner of the mesh.
double ReachOf(const QuadMesh& mesh)
{
    const Vector3& corner = mesh.GetFace(0).corners[0];
    return std::sqrt(corner.x * corner.x + corner.y * corner.y);
}

/// Where the wind springs from: on the circle through the frame's corners, a little behind the picture.
Vector3 SpringOf(const Wind& wind, double reach)
{
    const SineCosine direction = ExactTurn(wind.direction);
    return {direction.cosine * reach, direction.sine * reach, -Single(0.1)};
}

using Distances = GrowingList<double>;

/// Of all faces, or of none without memory.
Distances DistancesFrom(const Vector3& spring, const QuadMesh& mesh)
{
    Distances distances;
    for (std::size_t i = 0; i < mesh.GetFaceCount(); ++i)
        if (!distances.push_back(Subtract(mesh.GetFace(i).GetCenter(), spring).Length()))
            return {};
    return distances;
}

/// The order in which pieces leave: the nearest first, or the farthest.
FaceOrder LeavingOrder(Distances distances, bool vacuum)
{
    if (vacuum)
        for (double& distance : distances)
            distance = -distance;
    return OrderByKey(distances);
}

/// Where a piece is among all.
struct Place {
    std::size_t turn;  ///< 0 for the first to leave
    std::size_t count; ///< of all pieces
    double farness;    ///< 0 for the piece nearest to the wind, 1 for the farthest
};

double CarryOf(const Place& place, const Wind& wind, double reach)
{
    const double share =
        wind.vacuum ? place.farness * Single(0.8) + Single(0.2) : 1.0 - place.farness * Single(0.8);
    return 2.0 * reach * share * wind.power;
}

/// The sine of its turn is all that makes the times of pieces uneven: the same knobs give the same flight.
double StartOf(const Place& place, const Wind& wind)
{
    const double turn = static_cast<double>(place.turn);
    const double uneven = ExactTurn(turn).sine / static_cast<double>(place.count);
    const double start = std::clamp(place.farness * kLastStart + uneven, 0.0, kLastStart);
    return wind.vacuum ? kLastStart - start : start;
}

Leave3D LeaveFor(const QuadFace& face, const Place& place, const Wind& wind, const Vector3& spring,
                 double reach)
{
    const Vector3 center = face.GetCenter();
    const Vector3 away = Normalized(Subtract(center, spring));
    const Vector3 target = Add(center, Scale(away, CarryOf(place, wind, reach)));
    const double angle = 2.0 * ((1.0 - place.farness) + Single(0.1)) * kPi * wind.flutter;
    return {face, target, angle, 0.0, StartOf(place, wind), 1.0, 0.0, 0.0};
}

} // namespace

double GetBrightnessTumble(double first, double second)
{
    const double tumble = ExactTurn((first * second + first + second) * kPi * 2.0).sine;
    if (std::fabs(tumble) < Single(0.1))
        return ExactTurn((first * second - first + second) * kPi * 2.0).cosine;
    return tumble;
}

LeaveSystem CreateLeaveSystem(const QuadMesh& mesh, const Wind& wind)
{
    LeaveSystem system;
    const std::size_t count = mesh.GetFaceCount();
    if (count == 0 || mesh.GetFace(0).corners.empty())
        return system;
    const double reach = ReachOf(mesh);
    const Vector3 spring = SpringOf(wind, reach);
    const Distances distances = DistancesFrom(spring, mesh);
    if (distances.empty() || !system.leaves.reserve(count))
        return system;
    const auto [nearest, farthest] = std::minmax_element(distances.begin(), distances.end());
    const double range = *farthest - *nearest;
    std::size_t turn = 0;
    for (const std::size_t i : LeavingOrder(distances, wind.vacuum)) {
        const Place place = {turn++, count, range > 0.0 ? (distances[i] - *nearest) / range : 0.0};
        system.AddLeave(LeaveFor(mesh.GetFace(i), place, wind, spring, reach));
    }
    return system;
}

Matrix4 GetCameraMatrix(double t, double amount, double x, double y)
{
    const double swing = ExactTurn(t * kPi).sine;
    const double s = swing * kPi * Single(0.33) * amount * 0.5;
    const double across = (2.0 * x - 1.0) * s;
    return Matrix4::RotationZ(across * 0.2)
        .Then(Matrix4::RotationX((2.0 * y - 1.0) * s))
        .Then(Matrix4::RotationY(across))
        .Then(Matrix4::Translation(0.0, 0.0, swing * (-5.0 * amount)));
}

} // namespace kelmora::confetti
