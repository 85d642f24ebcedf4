#include "effects/scene3d/box_motion.h"

#include <algorithm>
#include <numbers>

#include "image/exact_math.h"

namespace kelmora {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kBack = 2;

bool IsOther(int index, const BoxMotion& motion)
{
    return motion.alternate && index % 2 == 1;
}

double AngleFor(int index, double local, const BoxMotion& motion)
{
    double angle = local * kPi;
    if (IsOther(index, motion))
        angle = -angle;
    if (motion.rotateRight)
        angle = -angle;
    // A picture stored upside down would turn about x the wrong way; about y both look the same.
    if (!motion.horizontal && motion.bottomUp)
        angle = -angle;
    return angle;
}

/// Away from the middle of the frame, by the box's own distance from it when the transition is half through.
Vector3 SpreadAt(const Vector3& center, double t, bool horizontal)
{
    const double share = ExactTurn(t * kPi).sine;
    return Scale(horizontal ? Vector3{0.0, center.y, 0.0} : Vector3{center.x, 0.0, 0.0}, share);
}

} // namespace

double LocalTime(int index, int count, double t, double cohesion)
{
    const double together = std::clamp(cohesion, 0.0, 1.0); // beyond, a slot may have no length at all
    const double slot = 1.0 / ((1.0 - together) * count + together);
    const double begin = index * ((1.0 - together) * slot);
    if (t <= begin)
        return 0.0;
    return begin < t && begin + slot > t ? (t - begin) / slot : 1.0;
}

Matrix4 BoxMatrix(const Vector3& center, int index, int count, double t, const BoxMotion& motion)
{
    const double local = LocalTime(index, count, t, motion.cohesion);
    const double angle = AngleFor(index, local, motion);
    Matrix4 move = Matrix4::Translation(Scale(center, -1.0))
                       .Then(motion.horizontal ? Matrix4::RotationY(angle) : Matrix4::RotationX(angle))
                       .Then(Matrix4::Translation(center));
    if (motion.spread)
        move = move.Then(Matrix4::Translation(SpreadAt(center, t, motion.horizontal)));
    if (motion.ebb != 0.0) {
        const double reach = IsOther(index, motion) ? -motion.ebb : motion.ebb;
        move = move.Then(Matrix4::Translation(0.0, 0.0, ExactTurn(local * kPi * 2.0).sine * reach));
    }
    return move;
}

void AnimateBox(QuadMesh& box, int index, int count, double t, const BoxMotion& motion)
{
    box.TransformInPlace(BoxMatrix(box.GetCenter(), index, count, t, motion));
}

void SetBackOfBox(QuadMesh& box, const FrameBuffer* texture, bool horizontal)
{
    if (box.GetFaceCount() != kSidesOfBox)
        return;
    QuadFace& back = box.GetFace(kBack);
    back.SetFrontTexture(texture);
    // A turn about x brings the back up head down; about y it comes out right.
    if (const QuadFace::Corners c = back.GetCorners(); !horizontal && c.size() == 4)
        back.SetCorners(c[2], c[3], c[0], c[1]);
}

} // namespace kelmora
