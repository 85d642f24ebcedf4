#include "effects/scene3d/confetti.h"

#include "effects/common/knob_reader.h"
#include "effects/scene3d/confetti_flight.h"
#include "effects/scene3d/confetti_plan.h"
#include "effects/scene3d/face_kernels.h"
#include "effects/scene3d/face_light.h"
#include "effects/scene3d/lists.h"

namespace kelmora {
namespace {

using confetti::Knobs;

constexpr std::uint32_t kBlack = 0;
constexpr double kViewingDistance = 6.0;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.shading = read.Level(0);
    knobs.columns = read.Level(1);
    knobs.rows = read.Level(2);
    knobs.power = read.Level(3);
    knobs.direction = read.Level(4);
    knobs.flutter = read.Level(5);
    knobs.vacuum = read.Check(6);
    knobs.reverse = read.Check(7);
    return knobs;
}

/// How the pieces that fly at `t` tumble: by their brightness in both pictures. Without one of the pictures none does.
/// The pixels of pieces at rest need not be looked at.
void SetTumbles(LeaveSystem& system, double t, const FrameBuffer& first, const FrameBuffer& second)
{
    if (!first.GetPixels() || !second.GetPixels())
        return;
    constexpr std::size_t kTogether = FaceKernels::kSums / 2; // each piece has two sums
    FixedList<Leave3D*, kTogether> flying;
    FixedList<Brightness, 2 * kTogether> looks; // of each in both pictures
    const auto finish = [&] {
        FindBrightness(looks);
        for (std::size_t i = 0; i < flying.size(); ++i)
            flying[i]->flutter =
                confetti::GetBrightnessTumble(looks[2 * i].mean / 255.0, looks[2 * i + 1].mean / 255.0);
        flying.clear();
        looks.clear();
    };
    for (Leave3D& leave : system.leaves) {
        if (!leave.FliesAt(t))
            continue;
        const SourceRect part = leave.face.GetSourceRect(false);
        looks.push_back({&first, part});
        looks.push_back({&second, part});
        if (flying.push_back(&leave); flying.size() == kTogether)
            finish();
    }
    finish();
}

QuadMesh PiecesOf(const Scene3D& scene, const FrameBuffer& picture, const Knobs& knobs)
{
    const QuadMeshCreator creator;
    QuadMesh mesh = creator.CreateGrid({
        .width = scene.GetCanvas()->canvasWidth,
        .height = scene.GetCanvas()->canvasHeight,
        .area = {scene.GetFrameCornerTopLeft(), scene.GetFrameCornerTopRight(),
                 scene.GetFrameCornerBottomRight(), scene.GetFrameCornerBottomLeft()},
        .columns = confetti::PiecesFor(knobs.columns),
        .rows = confetti::PiecesFor(knobs.rows),
        .frontTexture = &picture,
        .backTexture = &picture,
        .orientation = kTurnsSideways,
    });
    // A piece shows the same part of the picture on both sides.
    mesh.FlipBackRects(true);
    return mesh;
}

} // namespace

bool D3DBlowingLeaves::RenderTransition(const TransitionFrame& frame)
{
    const Knobs knobs = ReadKnobs(frame.host);
    FrameBuffer from, to;
    from.AttachFrame(knobs.reverse ? frame.secondPicture : &frame.firstPicture);
    to.AttachFrame(knobs.reverse ? &frame.firstPicture : frame.secondPicture);

    LinearLight light;
    light.SetAmbient(confetti::AmbientFor(knobs.shading));
    scene.SetCanvas(&frame.output);
    scene.AddLight(&light);
    scene.SetViewMatrix(Matrix4::Perspective(kViewingDistance));
    scene.SetFlags(Scene3D::kTwoSided);

    const double t = knobs.reverse ? 1.0 - frame.progress : frame.progress;
    scene.SetBackground(t <= 0.0 ? from : to, kBlack);
    if (t <= 0.0 || t >= 1.0)
        return true;

    const QuadMesh mesh = PiecesOf(scene, from, knobs);
    scene.SetModelMatrix(confetti::GetCameraMatrix(t, 0.0, 0.5, 0.5));
    LeaveSystem system = confetti::CreateLeaveSystem(mesh, confetti::WindFor(knobs));
    SetTumbles(system, t, from, to);
    system.Draw(scene, t, MakeInterpolationCode(1, 1));
    return true;
}

} // namespace kelmora
