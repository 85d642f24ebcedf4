// Numbers of any bits in a scene: faces, grids, boxes, leaves, views, lights and the order of drawing. No fault, and
// what has a plain rule keeps to it.

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <vector>

#include "effects/scene3d/box_motion.h"
#include "effects/scene3d/confetti_flight.h"
#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/dream_glow.h"
#include "effects/scene3d/face_light.h"
#include "effects/scene3d/leaf.h"
#include "effects/scene3d/light.h"
#include "effects/scene3d/quad_mesh.h"
#include "effects/scene3d/scene3d.h"
#include "fuzz/input.h"
#include "image/primitives/cpu_variant.h"

namespace kelmora::fuzz {
namespace {

/// A coordinate: in sight most often.
double Place(Input& input)
{
    return input.OneIn(4) ? input.Number<double>(3.0) : input.Take<std::int16_t>() / 16384.0;
}

Vector3 Point(Input& input)
{
    const double x = Place(input), y = Place(input);
    return {x, y, input.OneIn(2) ? Place(input) : 0.0};
}

/// An edge of a part of a texture: any but those that ask for a picture that can be had and takes seconds to fill.
double Edge(Input& input)
{
    constexpr double most = 16.0, tooMany = 1e9;
    const double edge = Place(input);
    return std::fabs(edge) > most && std::fabs(edge) < tooMany ? most : edge;
}

TextureRect Part(Input& input)
{
    if (!input.OneIn(2))
        return {};
    const double u0 = Edge(input), v0 = Edge(input), u1 = Edge(input), v1 = Edge(input);
    return {u0, v0, u1, v1};
}

Matrix4 Move(Input& input)
{
    const Vector3 by = Point(input);
    switch (input.Below(7)) {
    case 0:
        return Matrix4::Translation(by);
    case 1:
        return Matrix4::Scaling(by.x, by.y, by.z);
    case 2:
        return Matrix4::RotationX(2.0 * by.x);
    case 3:
        return Matrix4::RotationY(2.0 * by.x);
    case 4:
        return Matrix4::RotationZ(2.0 * by.x);
    case 5:
        return Matrix4::Perspective(2.0 + by.x);
    default: {
        Matrix4 any;
        for (auto& row : any.m)
            for (double& value : row)
                value = Place(input);
        return any;
    }
    }
}

Matrix4 Moves(Input& input)
{
    Matrix4 all = Matrix4::Identity();
    for (int left = input.Below(4); left > 0; --left)
        all = all.Then(Move(input));
    return all;
}

/// What the faces show, and what they are drawn on.
struct Stage {
    explicit Stage(Input& input)
        : front(input), back(input.OneIn(4) ? Picture(input) : Picture(input, front)),
          output(input.OneIn(4) ? Picture(input) : Picture(input, front))
    {
        frontTexture.AttachFrame(&front.Record());
        backTexture.AttachFrame(&back.Record());
        scene.SetAllocator(&allocator);
        scene.SetCanvas(&output.Record());
    }

    Picture front, back, output;
    FrameBuffer frontTexture, backTexture;
    MemoryAllocator allocator;
    LinearLight light;
    Scene3D scene;
};

QuadFace Face(Input& input, const Stage& stage)
{
    Vector3 corners[4] = {{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}};
    for (Vector3& corner : corners)
        if (input.OneIn(2))
            corner = Point(input);
    const std::int32_t orientation = input.OneIn(8) ? input.Take<std::int32_t>() : input.Below(2);
    QuadFace face(corners[0], corners[1], corners[2], corners[3], &stage.frontTexture,
                  input.OneIn(2) ? &stage.backTexture : nullptr, orientation, Part(input), Part(input));
    if (input.OneIn(32))
        face.corners.resize(static_cast<std::size_t>(input.Below(6)));
    if (input.OneIn(4))
        face.FlipBackRect(input.OneIn(2));
    return face;
}

/// The sides in whole pixels or any.
QuadMesh Grid(Input& input, Stage& stage)
{
    // More than a grid may have, too, but in one direction alone: thousands of faces take their time.
    const int many = input.Below(32);
    const VideoFrame& picture = stage.front.Record();
    QuadGrid grid = {};
    grid.width = input.OneIn(8) ? input.Take<std::int16_t>() : picture.width;
    grid.height = input.OneIn(8) ? input.Take<std::int16_t>() : picture.height;
    grid.area = {Vector3{-1, 1, 0}, Vector3{1, 1, 0}, Vector3{1, -1, 0}, Vector3{-1, -1, 0}};
    if (input.OneIn(4))
        for (Vector3& corner : grid.area)
            corner = Point(input);
    grid.columns = input.OneIn(32) ? input.Take<std::int16_t>() : input.Below(many == 30 ? 70 : 6);
    grid.rows = input.OneIn(32) ? input.Take<std::int16_t>() : input.Below(many == 31 ? 70 : 6);
    grid.frontTexture = &stage.frontTexture;
    grid.backTexture = input.OneIn(2) ? &stage.backTexture : nullptr;
    grid.orientation = input.Below(3);
    grid.serpentine = input.OneIn(2);
    const QuadMesh mesh = QuadMeshCreator().CreateGrid(grid);
    const bool isAllowed = grid.width >= 2 && grid.height >= 2 && grid.columns >= 1 && grid.rows >= 1
        && grid.columns <= QuadGrid::kMostAcross && grid.rows <= QuadGrid::kMostAcross;
    const std::size_t count = mesh.GetFaceCount();
    Require(isAllowed ? count <= static_cast<std::size_t>(grid.columns * grid.rows) : count == 0);
    return mesh;
}

/// Each of the numbers up to `count` once.
void RequireOrder(const FaceOrder& drawn, std::size_t count)
{
    std::vector<std::size_t> order(drawn.begin(), drawn.end());
    Require(order.size() == count);
    std::sort(order.begin(), order.end());
    for (std::size_t i = 0; i < count; ++i)
        Require(order[i] == i);
}

// --- what has a plain rule ----------------------------------------------------------------------------------

/// Neighbours change places while the second one is smaller.
std::vector<std::size_t> PlainOrder(const std::vector<double>& keys)
{
    std::vector<std::size_t> order(keys.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    for (std::size_t pass = 1; pass < order.size(); ++pass)
        for (std::size_t i = 0; i + 1 < order.size(); ++i)
            if (keys[order[i + 1]] < keys[order[i]])
                std::swap(order[i], order[i + 1]);
    return order;
}

void Order(Input& input)
{
    std::vector<double> keys(static_cast<std::size_t>(input.Below(40)));
    const bool few = input.OneIn(2); // many are equal then
    for (double& key : keys)
        key = few && !input.OneIn(8) ? input.Below(4) : Place(input);
    Require(std::ranges::equal(OrderByKey(keys), PlainOrder(keys)));
}

void Light(Input& input)
{
    LinearLight light;
    light.SetAmbient(input.Number<double>(1.0));
    const Vector3 normal = input.OneIn(4) ? Point(input) : Normalized(Point(input));
    const double level = light.Intensity(normal, Point(input), input.OneIn(2));
    Require(level >= 0.0 && level <= 1.0);
    const Vector3 a = Point(input), b = Point(input), c = Point(input);
    const double length = FaceNormal(a, b, c).Length();
    // No number where the points are so far out that their differences are none.
    Require(!std::isfinite(length) || length == 0.0 || std::fabs(length - 1.0) < 1e-9);
    SnapToPixel(Place(input));
    MakeInterpolationCode(input.Take<int>(), input.Below(2));
}

void PictureLight(Input& input)
{
    Picture picture(input);
    FrameBuffer buffer;
    buffer.AttachFrame(&picture.Record());
    if (input.OneIn(2))
        ApplyLight(buffer, input.Number<double>(1.0));
    const auto edge = [&] { return input.OneIn(8) ? input.Take<int>() : input.Below(20) - 4; };
    const int x = edge(), y = edge(), width = edge(), height = edge();
    AverageBrightness(buffer, x, y, width, height);
}

void BoxTimes(Input& input)
{
    const int count = 1 + (input.OneIn(8) ? input.Take<std::uint16_t>() : input.Below(10));
    const int index = (input.OneIn(8) ? input.Take<std::uint16_t>() : input.Below(10)) % count;
    const double t = input.OneIn(2) ? input.Number<double>(1.0) : input.Take<std::uint8_t>() / 255.0;
    const double cohesion = input.OneIn(4) ? input.Number<double>(1.0) : input.Take<std::uint8_t>() / 255.0;
    const double local = LocalTime(index, count, t, cohesion);
    if (t >= 0.0 && t <= 1.0 && cohesion >= 0.0 && cohesion <= 1.0)
        Require(local >= 0.0 && local <= 1.0);
}

// --- what is drawn ------------------------------------------------------------------------------------------

void SetUp(Input& input, Stage& stage)
{
    Scene3D& scene = stage.scene;
    if (input.OneIn(4))
        scene.SetBackground(input.OneIn(2) ? stage.backTexture : stage.frontTexture,
                            input.Take<std::uint32_t>());
    else if (input.OneIn(4))
        scene.FillBackground(input.Take<std::uint32_t>(), input.OneIn(2));
    stage.light.SetAmbient(input.Number<double>(1.0));
    if (!input.OneIn(4))
        scene.AddLight(&stage.light);
    scene.SetViewMatrix(input.OneIn(2) ? Moves(input) : Matrix4::Perspective(2.0));
    if (input.OneIn(4))
        scene.SetModelMatrix(Moves(input));
    scene.SetFlags(input.OneIn(8) ? input.Take<std::uint32_t>() : input.OneIn(2) ? Scene3D::kTwoSided : 0);
    if (input.OneIn(8)) {
        constexpr std::int32_t odd[] = {-1, 32767, 100, std::numeric_limits<std::int32_t>::min()};
        const std::int32_t reach = input.OneIn(4) ? odd[input.Below(4)] : input.Below(20);
        const auto wave = input.Number<float>(1.0f), haze = input.Number<float>(1.0f);
        scene.AddFilter(std::make_unique<PRDreamGlowEffect>(reach, wave, haze, stage.allocator));
    }
}

std::uint32_t Code(Input& input)
{
    return input.OneIn(16) ? input.Take<std::uint32_t>()
                           : MakeInterpolationCode(input.Below(4), input.Below(2));
}

void DrawAll(Input& input, Stage& stage, const QuadMesh& mesh)
{
    const FaceOrder order = SortFacesByDepth(mesh);
    RequireOrder(order, mesh.GetFaceCount());
    const std::uint32_t code = Code(input);
    const bool backOnly = input.OneIn(8);
    constexpr std::size_t most = 24; // faces, of a large grid
    for (std::size_t i = 0; i < std::min(order.size(), most); ++i)
        stage.scene.DrawFace(mesh.GetFace(order[i]), code, backOnly);
}

void Faces(Input& input)
{
    Stage stage(input);
    SetUp(input, stage);
    QuadMesh mesh;
    for (int left = 1 + input.Below(3); left > 0; --left)
        mesh.AddFace(Face(input, stage));
    if (input.OneIn(4))
        mesh.TransformInPlace(Moves(input));
    if (input.OneIn(4))
        mesh.FlipBackRects(input.OneIn(2));
    DrawAll(input, stage, mesh);
}

BoxMotion Motion(Input& input)
{
    BoxMotion motion;
    motion.horizontal = input.OneIn(2);
    motion.cohesion = Place(input);
    motion.rotateRight = input.OneIn(2);
    motion.spread = input.OneIn(2);
    motion.alternate = input.OneIn(2);
    motion.ebb = Place(input);
    motion.bottomUp = input.OneIn(2);
    return motion;
}

void Boxes(Input& input)
{
    Stage stage(input);
    SetUp(input, stage);
    const QuadMesh grid = Grid(input, stage);
    GrowingList<QuadMesh> boxes = QuadMeshCreator().CreateBoxes(grid);
    Require(boxes.size() <= grid.GetFaceCount());
    const BoxMotion motion = Motion(input);
    const double t = Place(input);
    constexpr std::size_t most = 6;
    boxes.truncate(most);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        AnimateBox(boxes[i], static_cast<int>(i), static_cast<int>(boxes.size()), t, motion);
        SetBackOfBox(boxes[i], &stage.backTexture, motion.horizontal);
        DrawAll(input, stage, boxes[i]);
    }
}

void Leaves(Input& input)
{
    Stage stage(input);
    SetUp(input, stage);
    LeaveSystem leaves;
    for (int left = input.Below(5); left > 0; --left) {
        const QuadFace face = Face(input, stage);
        const Vector3 target = Point(input);
        double numbers[6];
        for (double& number : numbers)
            number = Place(input);
        leaves.AddLeave(
            {face, target, numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]});
    }
    leaves.depthLimit = input.OneIn(2) ? Place(input) : 0.0;
    leaves.Draw(stage.scene, Place(input), Code(input));
}

void Confetti(Input& input)
{
    Stage stage(input);
    SetUp(input, stage);
    const QuadMesh grid = Grid(input, stage);
    confetti::Wind wind;
    wind.direction = Place(input);
    wind.power = Place(input);
    wind.flutter = Place(input);
    wind.vacuum = input.OneIn(2);
    std::vector<double> tumbles(input.OneIn(2) ? grid.GetFaceCount() : 0);
    const double one = Place(input), other = Place(input);
    for (std::size_t i = 0; i < tumbles.size(); ++i)
        tumbles[i] = i % 2 == 0 ? one : confetti::GetBrightnessTumble(one, other);
    LeaveSystem leaves = confetti::CreateLeaveSystem(grid, wind);
    Require(leaves.leaves.size() == grid.GetFaceCount());
    for (std::size_t i = 0; i < tumbles.size(); ++i)
        leaves.leaves[i].flutter = tumbles[i];
    constexpr std::size_t most = 12;
    leaves.leaves.truncate(most);
    const double amount = Place(input), x = Place(input), y = Place(input), t = Place(input);
    stage.scene.SetModelMatrix(confetti::GetCameraMatrix(t, amount, x, y));
    leaves.Draw(stage.scene, t, Code(input));
}

constexpr void (*kFamilies[])(Input&) = {Order, Light, PictureLight, BoxTimes,
                                         Faces, Boxes, Leaves,       Confetti};

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    fuzz::Input input(data, size);
    UseVariant(static_cast<CpuVariant>(input.Below(3)));
    fuzz::kFamilies[input.Below(static_cast<int>(std::size(fuzz::kFamilies)))](input);
    return 0;
}
