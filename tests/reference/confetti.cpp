#include "tests/reference/confetti.h"

#include <vector>

#include "effects/scene3d/confetti_flight.h"
#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/quad_mesh.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/rounding.h"
#include "tests/reference/scene.h"

namespace kelmora::reference {
namespace {

double Wide(float value)
{
    return static_cast<double>(value);
}

int PiecesOf(float level)
{
    return TowardZero(RoundedToFloat(Wide(level) * 19 + 1));
}

double TumbleOf(const QuadFace& face, const Picture& first, const Picture& second)
{
    if (first.width < 1 || second.width < 1)
        return 0.0;
    const SourceRect part = face.GetSourceRect(false);
    return confetti::GetBrightnessTumble(AverageBrightness(first, part) / 255.0,
                                         AverageBrightness(second, part) / 255.0);
}

LeaveSystem LeavesOf(const Picture& canvas, const Picture& first, const Picture& second,
                     const FrameBuffer& texture, const ConfettiKnobs& knobs)
{
    QuadGrid grid;
    grid.width = canvas.width;
    grid.height = canvas.height;
    grid.area = {Vector3{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}};
    grid.columns = PiecesOf(knobs.columns);
    grid.rows = PiecesOf(knobs.rows);
    grid.frontTexture = grid.backTexture = &texture;
    QuadMesh mesh = QuadMeshCreator().CreateGrid(grid);
    mesh.FlipBackRects(true);
    std::vector<double> tumbles;
    for (std::size_t i = 0; i < mesh.GetFaceCount(); ++i)
        tumbles.push_back(TumbleOf(mesh.GetFace(i), first, second));
    confetti::Wind wind;
    wind.direction = RoundedToFloat(2 * 3.1415927410125732 * Wide(knobs.direction));
    wind.power = RoundedToFloat(2 * Wide(knobs.power) + 1);
    wind.flutter = RoundedToFloat(10 * Wide(knobs.flutter));
    wind.vacuum = knobs.vacuum;
    LeaveSystem system = confetti::CreateLeaveSystem(mesh, wind);
    for (Leave3D& leave : system.leaves)
        for (std::size_t i = 0; i < mesh.GetFaceCount(); ++i)
            if (mesh.GetFace(i).corners[0] == leave.face.corners[0]
                && mesh.GetFace(i).corners[2] == leave.face.corners[2])
                leave.flutter = tumbles[i];
    return system;
}

} // namespace

void Confetti(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
              const ConfettiKnobs& knobs, const TransitionMoment& moment)
{
    Picture first = ReadOrNone(&firstPicture), second = ReadOrNone(secondPicture);
    const double progress = moment.progress == moment.progress ? moment.progress : 0.0;
    const double t = knobs.reverse ? 1 - progress : progress;
    if (knobs.reverse)
        std::swap(first, second);

    Scene scene;
    scene.canvas = ReadRows(Rows(output));
    LayBackground(scene.canvas, t <= 0 ? first : second);
    if (t > 0 && t < 1 && moment.hasFaces) {
        Textures textures;
        const FrameBuffer& texture = textures.Add(first);
        scene.move = Matrix4::Perspective(6.0);
        scene.twoSided = true;
        const double ambient = RoundedToFloat(1 - Wide(knobs.shading));
        scene.ambient = ambient >= 0 && ambient <= 1 ? ambient : 0.0;
        scene.blocksGiven = moment.blocksGiven;
        scene.blockRefused = moment.blockRefused;
        const QuadMesh faces = LeavesOf(scene.canvas, first, second, texture, knobs).GetFacesAt(t);
        for (const std::size_t i : SortFacesByDepth(faces))
            DrawFace(scene, textures, faces.GetFace(i));
    }
    WriteRows(scene.canvas, Rows(output));
}

} // namespace kelmora::reference
