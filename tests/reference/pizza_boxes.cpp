#include "tests/reference/pizza_boxes.h"

#include <cmath>
#include <numbers>

#include "effects/scene3d/box_motion.h"
#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/quad_mesh.h"
#include "image/exact_math.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/dream_glow.h"
#include "tests/reference/rounding.h"
#include "tests/reference/scene.h"

namespace kelmora::reference {
namespace {

double Wide(float value)
{
    return static_cast<double>(value);
}

double Sine(double angle)
{
    return ExactTurn(angle).sine;
}

/// Both pictures' glow at `t`.
void Glow(Picture& first, Picture& second, const PizzaBoxesKnobs& knobs, double t)
{
    const double k = Sine(t * 3.1414999961853027);
    const double fog = Wide(knobs.fog) * k, shine = Wide(knobs.shine) * k;
    for (Picture* picture : {&first, &second}) {
        const int radius = TowardZero(picture->height * fog * 0.20000000298023224);
        ApplyDreamGlow(*picture, {radius, static_cast<float>(shine), static_cast<float>(fog)});
    }
}

QuadMesh SlicesOf(const Picture& canvas, const FrameBuffer& front, const FrameBuffer& back,
                  const PizzaBoxesKnobs& knobs)
{
    const int slices = TowardZero(RoundedToFloat(9 * Wide(knobs.slices) + 1));
    const bool horizontal = knobs.orientation == 0;
    QuadGrid grid;
    grid.width = canvas.width;
    grid.height = canvas.height;
    grid.area = {Vector3{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}};
    grid.columns = horizontal ? 1 : slices;
    grid.rows = horizontal ? slices : 1;
    grid.frontTexture = &front;
    grid.backTexture = &back;
    grid.orientation = horizontal ? 0 : 1;
    grid.serpentine = true;
    return QuadMeshCreator().CreateGrid(grid);
}

BoxMotion MotionOf(const PizzaBoxesKnobs& knobs, bool bottomUp)
{
    BoxMotion motion;
    motion.horizontal = knobs.orientation == 0;
    motion.cohesion = knobs.cohesion > 0 ? RoundedToFloat(std::sqrt(Wide(knobs.cohesion))) : 0.0;
    motion.rotateRight = knobs.rotateRight;
    motion.spread = knobs.spread;
    motion.alternate = knobs.alternate;
    motion.ebb = RoundedToFloat(5 * Wide(knobs.ebb));
    motion.bottomUp = bottomUp;
    return motion;
}

QuadMesh FacesAt(double t, const QuadMesh& slices, const FrameBuffer& back, const BoxMotion& motion)
{
    QuadMesh faces;
    GrowingList<QuadMesh> boxes = QuadMeshCreator().CreateBoxes(slices);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        SetBackOfBox(boxes[i], &back, motion.horizontal);
        AnimateBox(boxes[i], static_cast<int>(i), static_cast<int>(boxes.size()), t, motion);
        for (std::size_t side = 0; side < boxes[i].GetFaceCount(); ++side)
            faces.AddFace(boxes[i].GetFace(side));
    }
    return faces;
}

} // namespace

void PizzaBoxes(const VideoFrame& firstPicture, const VideoFrame* secondPicture, const VideoFrame& output,
                const PizzaBoxesKnobs& knobs, const TransitionMoment& moment, bool glows)
{
    Picture first = ReadOrNone(&firstPicture), second = ReadOrNone(secondPicture);
    const double t = moment.progress == moment.progress ? moment.progress : 0.0;

    Scene scene;
    scene.canvas = ReadRows(Rows(output));
    if (t < 0 || t >= 1) {
        LayBackground(scene.canvas, t < 0 ? first : second);
    } else {
        if (knobs.background < 2)
            LayBackground(scene.canvas, knobs.background == 0 ? first : second);
        else if (knobs.background == 2)
            scene.canvas = Picture(scene.canvas.width, scene.canvas.height, scene.canvas.format);
        if (glows && (knobs.fog > 0 || knobs.shine > 0) && first.width > 0 && second.width > 0)
            Glow(first, second, knobs, t);
        Textures textures;
        const FrameBuffer &front = textures.Add(first), &back = textures.Add(second);
        scene.move = Matrix4::Perspective(5.0);
        if (knobs.depth > 0)
            scene.move = Matrix4::Translation(0, 0, -Sine(t * std::numbers::pi) * 5 * Wide(knobs.depth))
                             .Then(scene.move);
        scene.ambient = 0.5;
        scene.blocksGiven = moment.blocksGiven;
        scene.blockRefused = moment.blockRefused;
        const QuadMesh faces = FacesAt(t, SlicesOf(scene.canvas, front, back, knobs), back,
                                       MotionOf(knobs, firstPicture.bottomUp != 0));
        for (const std::size_t i : moment.hasFaces ? SortFacesByDepth(faces) : FaceOrder())
            DrawFace(scene, textures, faces.GetFace(i));
    }
    WriteRows(scene.canvas, Rows(output));
}

} // namespace kelmora::reference
