#include "effects/scene3d/pizza_boxes.h"

#include "effects/common/knob_reader.h"
#include "effects/scene3d/box_motion.h"
#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/dream_glow.h"
#include "effects/scene3d/glow_slices.h"
#include "effects/scene3d/pizza_boxes_plan.h"
#include "effects/scene3d/smart_crop.h"
#include "image/image_ops.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"

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

/// The second picture as the glow sees it: its pixels by the name of the first one's. What cannot be copied is not shown
/// either: `blank`, black and transparent, takes its place. False when there is no memory for that.
bool AttachRenamed(FrameBuffer& view, FrameBuffer& blank, const FrameBuffer& second, std::uint32_t format,
                   MemoryAllocator& allocator)
{
    if (IsPicture(second.GetFormat()) && second.GetPixelBytes() == PixelBytesOf(second.GetFormat()))
        return view.Attach(second.GetPixels(), second.GetWidth(), second.GetHeight(), second.GetStride(),
                           second.GetPixelBytes(), format, false);
    ImageOps ops;
    return blank.Allocate(second.GetWidth(), second.GetHeight(), second.GetPixelBytes(), &allocator, format,
                          false)
        && ops.Fill(blank, 0) && view.AttachBuffer(blank);
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

/// The faces of all boxes at `t`; none without memory.
QuadMesh BoxesAt(double t, const QuadMesh& slices, const FrameBuffer& back, const BoxMotion& motion)
{
    const QuadMeshCreator creator;
    GrowingList<QuadMesh> boxes = creator.CreateBoxes(slices);
    QuadMesh all;
    if (!all.Reserve(boxes.size() * kSidesOfBox))
        return all;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        QuadMesh& box = boxes[i];
        SetBackOfBox(box, &back, motion.horizontal);
        AnimateBox(box, static_cast<int>(i), static_cast<int>(boxes.size()), t, motion);
        for (std::size_t k = 0; k < box.GetFaceCount(); ++k)
            all.AddFace(box.GetFace(k));
    }
    return all;
}

void DrawBoxes(Scene3D& scene, const Knobs& knobs, const TransitionFrame& frame, const FrameBuffer& first,
               const FrameBuffer& second)
{
    // What glows has its name from the first picture. With or without a glow the rectangles are the same.
    FrameBuffer back, blank;
    const bool glows = pizza_boxes::HasGlow(knobs) && !IsEmpty(SizeOf(first)) && !IsEmpty(SizeOf(second))
        && AttachRenamed(back, blank, second, first.GetFormat(), frame.allocator);
    if (!glows)
        back.AttachBuffer(second);

    const double t = frame.progress;
    const QuadMesh slices = SlicesOf(scene, first, back, knobs);
    scene.SetModelMatrix(pizza_boxes::StackMatrix(t, knobs.depth));
    QuadMesh faces = BoxesAt(t, slices, back, pizza_boxes::MotionFor(knobs, frame.isBottomUp));
    const FaceOrder order = SortFacesByDepth(faces);

    GlowSlices glowing(frame.allocator);
    const Glow glow = pizza_boxes::GlowAt(t, knobs);
    const auto glowOf = [&](const FrameBuffer& picture) {
        return PRDreamGlowEffect(glow.Radius(picture.GetHeight()), static_cast<float>(glow.shine),
                                 static_cast<float>(glow.fog), frame.allocator);
    };
    if (glows && !glowing.Make(scene, faces, order, glowOf))
        back.AttachBuffer(second);
    for (const std::size_t i : order) {
        scene.DrawFace(faces.GetFace(i), MakeInterpolationCode(1, 1), false);
        glowing.Drawn(i);
    }
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
    DrawBoxes(scene, knobs, frame, first, second);
    return true;
}

} // namespace kelmora
