#include "effects/scene3d/confetti.h"

#include <vector>

#include "effects/common/knob_reader.h"
#include "effects/scene3d/confetti_flight.h"
#include "effects/scene3d/confetti_plan.h"
#include "effects/scene3d/face_light.h"

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

double BrightnessOf(const FrameBuffer& picture, const SourceRect& part)
{
    return AverageBrightness(picture, part.x, part.y, part.width, part.height) / 255.0;
}

/// How each piece tumbles: by its brightness in both pictures. Without one of them none does.
std::vector<double> TumblesOf(const QuadMesh& mesh, const FrameBuffer& first, const FrameBuffer& second)
{
    std::vector<double> tumbles(mesh.GetFaceCount(), 0.0);
    if (!first.GetPixels() || !second.GetPixels())
        return tumbles;
    for (std::size_t i = 0; i < tumbles.size(); ++i) {
        const SourceRect part = mesh.GetFace(i).GetSourceRect(false);
        tumbles[i] = confetti::GetBrightnessTumble(BrightnessOf(first, part), BrightnessOf(second, part));
    }
    return tumbles;
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
    const LeaveSystem system =
        confetti::CreateLeaveSystem(mesh, confetti::WindFor(knobs), TumblesOf(mesh, from, to));
    system.Draw(scene, t, MakeInterpolationCode(1, 1));
    return true;
}

} // namespace kelmora
