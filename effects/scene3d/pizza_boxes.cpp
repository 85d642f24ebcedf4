#include "effects/scene3d/pizza_boxes.h"

#include <vector>

#include "effects/common/knob_reader.h"
#include "effects/scene3d/box_motion.h"
#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/dream_glow.h"
#include "effects/scene3d/pizza_boxes_plan.h"
#include "effects/scene3d/smart_crop.h"
#include "image/image_ops.h"

namespace kelmora {
namespace {

using pizza_boxes::Glow;
using pizza_boxes::Knobs;

constexpr std::uint32_t kBlack = 0;
constexpr double kAmbient = 0.5;
constexpr double kViewingDistance = 5.0;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.slices = read.Level(0);
    knobs.cohesion = read.Level(1);
    knobs.depth = read.Level(2);
    knobs.ebb = read.Level(3);
    knobs.orientation = read.Choice(4);
    knobs.rotateRight = read.Check(5);
    knobs.spread = read.Check(6);
    knobs.alternate = read.Check(7);
    knobs.fog = read.Level(8);
    knobs.shine = read.Level(9);
    knobs.background = read.Choice(10);
    return knobs;
}

/// What the boxes show.
struct Textures {
    FrameBuffer front, back;
};

bool AllocateTexture(FrameBuffer& scratch, const FrameBuffer& picture, std::uint32_t format,
                     MemoryAllocator& allocator)
{
    return scratch.Allocate(picture.GetWidth(), picture.GetHeight(), picture.GetPixelBytes(), &allocator,
                            format, false);
}

void ApplyGlow(FrameBuffer& texture, const FrameBuffer& picture, const Glow& glow, MemoryAllocator& allocator)
{
    PRDreamGlowEffect effect(glow.Radius(picture.GetHeight()), static_cast<float>(glow.shine),
                             static_cast<float>(glow.fog), allocator);
    effect.Apply(&texture);
}

/// Copies of both pictures that glow. False when there is no memory for them.
bool MakeGlowing(Textures& textures, const FrameBuffer& first, const FrameBuffer& second, const Glow& glow,
                 MemoryAllocator& allocator)
{
    if (!AllocateTexture(textures.front, first, first.GetFormat(), allocator)
        || !AllocateTexture(textures.back, second, first.GetFormat(), allocator))
        return false;
    ImageOps ops;
    for (FrameBuffer* texture : {&textures.front, &textures.back})
        ops.Fill(*texture, 0); // what cannot be copied is not shown either
    ops.Copy(first, textures.front);
    ops.Copy(second, textures.back);
    ApplyGlow(textures.front, first, glow, allocator);
    ApplyGlow(textures.back, second, glow, allocator);
    return true;
}

void LayBackground(Scene3D& scene, const Knobs& knobs, const TransitionFrame& frame)
{
    switch (knobs.background) {
    case pizza_boxes::FirstPicture:
        scene.SetBackground(&frame.firstPicture, kBlack);
        break;
    case pizza_boxes::SecondPicture:
        scene.SetBackground(frame.secondPicture, kBlack);
        break;
    case pizza_boxes::Transparent:
        scene.FillBackground(kBlack, true);
        break;
    default:
        break;
    }
}

QuadMesh SlicesOf(const Scene3D& scene, const FrameBuffer& front, const FrameBuffer& back, const Knobs& knobs)
{
    const bool horizontal = pizza_boxes::IsHorizontal(knobs.orientation);
    const int slices = pizza_boxes::SlicesFor(knobs.slices);
    const QuadMeshCreator creator;
    return creator.CreateGrid({
        .width = scene.GetCanvas()->canvasWidth,
        .height = scene.GetCanvas()->canvasHeight,
        .area = {scene.GetFrameCornerTopLeft(), scene.GetFrameCornerTopRight(),
                 scene.GetFrameCornerBottomRight(), scene.GetFrameCornerBottomLeft()},
        .columns = horizontal ? 1 : slices,
        .rows = horizontal ? slices : 1,
        .frontTexture = &front,
        .backTexture = &back,
        .orientation = horizontal ? kTurnsSideways : kTurnsOver,
        .serpentine = true,
    });
}

/// The faces of all boxes at `t`.
QuadMesh BoxesAt(double t, const QuadMesh& slices, const FrameBuffer& back, const BoxMotion& motion)
{
    const QuadMeshCreator creator;
    std::vector<QuadMesh> boxes = creator.CreateBoxes(slices);
    QuadMesh all;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        QuadMesh& box = boxes[i];
        SetBackOfBox(box, &back, motion.horizontal);
        AnimateBox(box, static_cast<int>(i), static_cast<int>(boxes.size()), t, motion);
        for (std::size_t k = 0; k < box.GetFaceCount(); ++k)
            all.AddFace(box.GetFace(k));
    }
    return all;
}

} // namespace

bool D3DLayers::RenderTransition(const TransitionFrame& frame)
{
    const Knobs knobs = ReadKnobs(frame.host);
    const CSmartCrop crop(&frame.host, &frame.firstPicture, frame.secondPicture, &frame.progress, 1, 1);
    const VideoFrame firstPicture = crop.GetFirstPicture(), secondPicture = crop.GetSecondPicture();
    FrameBuffer first, second;
    first.AttachFrame(&firstPicture);
    second.AttachFrame(&secondPicture);

    LinearLight light;
    light.SetAmbient(kAmbient);
    scene.SetCanvas(&frame.output);
    scene.AddLight(&light);
    scene.SetViewMatrix(Matrix4::Perspective(kViewingDistance));

    const double t = frame.progress;
    if (t < 0.0 || t >= 1.0) {
        scene.SetBackground(t < 0.0 ? &frame.firstPicture : frame.secondPicture, kBlack);
        return true;
    }
    LayBackground(scene, knobs, frame);

    Textures glowing;
    const bool glows = pizza_boxes::HasGlow(knobs)
        && MakeGlowing(glowing, first, second, pizza_boxes::GlowAt(t, knobs), frame.allocator);
    const FrameBuffer& front = glows ? glowing.front : first;
    const FrameBuffer& back = glows ? glowing.back : second;

    const QuadMesh slices = SlicesOf(scene, front, back, knobs);
    scene.SetModelMatrix(pizza_boxes::StackMatrix(t, knobs.depth));
    const BoxMotion motion = pizza_boxes::MotionFor(knobs, frame.isBottomUp);
    const QuadMesh faces = BoxesAt(t, slices, back, motion);
    for (const std::size_t i : SortFacesByDepth(faces))
        scene.DrawFace(faces.GetFace(i), MakeInterpolationCode(1, 1), false);
    return true;
}

} // namespace kelmora
