#include "effects/scene3d/scene3d.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_host.h"
#include "tests/support/guarded_picture.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

constexpr std::uint32_t kCode = 0x80000002; // linear, smooth edges
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

FrameBuffer ViewOf(const GuardedPicture& picture)
{
    FrameBuffer view;
    const VideoFrame frame = picture.Frame();
    view.AttachFrame(&frame);
    return view;
}

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed = 1)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

/// A light of one brightness.
class EvenLight : public Light3D {
public:
    explicit EvenLight(double level) : m_level(level) {}

    double Intensity(const Vector3& normal, const Vector3& position, bool twoSided) const override
    {
        lastNormal = normal;
        lastPosition = position;
        lastTwoSided = twoSided;
        return m_level;
    }

    mutable Vector3 lastNormal, lastPosition;
    mutable bool lastTwoSided = false;

private:
    double m_level;
};

/// Does what it is told to each picture, and notes its end.
class TestFilter : public PREffect {
public:
    TestFilter(std::function<void(FrameBuffer&)> action, int* ended = nullptr)
        : m_action(std::move(action)), m_ended(ended)
    {
    }
    ~TestFilter() override
    {
        if (m_ended)
            ++*m_ended;
    }

    void Apply(FrameBuffer* picture) override { m_action(*picture); }

private:
    std::function<void(FrameBuffer&)> m_action;
    int* m_ended;
};

/// A scene on a canvas of noise, with a face to draw.
struct Stage {
    explicit Stage(std::int32_t width = 9, std::int32_t height = 9, std::uint32_t format = PF_BGRA8)
        : out(Noisy(width, height, format, 2)), before(out), picture(Noisy(width, height, format, 3)),
          front(ViewOf(picture))
    {
        const VideoFrame frame = out.Frame();
        scene.SetCanvas(&frame);
        scene.SetAllocator(&memory);
    }

    /// The whole frame with `front` on both sides.
    QuadFace WholeFace() const
    {
        return {{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, &front, nullptr, kTurnsSideways, {}, {}};
    }

    bool Untouched() const { return static_cast<bool>(Equal(out, before)); }

    MemoryAllocator memory;
    Scene3D scene;
    GuardedPicture out, before, picture;
    FrameBuffer front;
};

// --- numbers ---------------------------------------------------------------------------------------------

TEST(MakeInterpolationCode, Modes_GiveTheWarpsCodes)
{
    EXPECT_EQ(MakeInterpolationCode(0, 0), 1u);
    EXPECT_EQ(MakeInterpolationCode(1, 0), 2u);
    EXPECT_EQ(MakeInterpolationCode(2, 0), 4u);
    for (const int mode : {-1, 3, 4, 1000})
        EXPECT_EQ(MakeInterpolationCode(mode, 0), 0u) << mode;
}

TEST(MakeInterpolationCode, SmoothEdgesAboveZero_SetTheTopBit)
{
    EXPECT_EQ(MakeInterpolationCode(0, 1), 0x80000001u);
    EXPECT_EQ(MakeInterpolationCode(1, 1), 0x80000002u);
    EXPECT_EQ(MakeInterpolationCode(2, 7), 0x80000004u);
    EXPECT_EQ(MakeInterpolationCode(3, 1), 0x80000000u);
    EXPECT_EQ(MakeInterpolationCode(1, -1), 2u);
}

TEST(SnapToPixel, NextToAWholeNumber_BecomesIt)
{
    for (const double whole : {1.0, 2.0, 17.0, 1919.0}) {
        EXPECT_EQ(SnapToPixel(whole), whole);
        EXPECT_EQ(SnapToPixel(whole + 9e-6), whole);
        EXPECT_EQ(SnapToPixel(whole - 9e-6), whole);
        EXPECT_EQ(SnapToPixel(whole + 1.1e-5), whole + 1.1e-5);
        EXPECT_EQ(SnapToPixel(whole - 1.1e-5), whole - 1.1e-5);
    }
    EXPECT_EQ(SnapToPixel(0.5), 0.5);
    EXPECT_EQ(SnapToPixel(7.25), 7.25);
}

TEST(SnapToPixel, NextToZero_BecomesZero)
{
    for (const double v :
         {0.0, -0.0, 9e-6, -9e-6, 1e-300, -1e-300, 9.999999747378752e-06, -9.999999747378752e-06})
        EXPECT_EQ(SnapToPixel(v), 0.0) << v;
    EXPECT_EQ(SnapToPixel(1.1e-5), 1.1e-5);
    EXPECT_EQ(SnapToPixel(-1.1e-5), -1.1e-5);
}

TEST(SnapToPixel, Kept_NegativeNumbers_MoveToZeroAlone)
{
    for (const double v : {-1.0 + 1e-9, -1.0 - 1e-9, -2.0 + 5e-6, -17.0 - 5e-6, -0.5})
        EXPECT_EQ(SnapToPixel(v), v) << v;
}

TEST(SnapToPixel, EnormousNumbers_StayWhatTheyAre)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double v : {1e9, 1e18, 1e300, -1e9, -1e300, infinity, -infinity})
        EXPECT_EQ(SnapToPixel(v), v);
    EXPECT_FALSE(SnapToPixel(kNaN) > 0 || SnapToPixel(kNaN) < 0);
}

TEST(Scene3D, ToScreen_TheFrame_IsThePicturesOutermostPixels)
{
    const Stage stage(9, 5);
    const auto expect = [&](double x, double y, double column, double row) {
        const ScreenPoint at = stage.scene.ToScreen(x, y);
        EXPECT_EQ(at.x, column) << x << ", " << y;
        EXPECT_EQ(at.y, row) << x << ", " << y;
    };
    expect(-1, 1, 0, 0);
    expect(1, 1, 8, 0);
    expect(1, -1, 8, 4);
    expect(-1, -1, 0, 4);
    expect(0, 0, 4, 2);
    expect(0.25, 0.5, 5, 1);
    expect(3, -3, 16, 8);
}

TEST(Scene3D, ToScreen_WithoutACanvas_IsTheOrigin)
{
    const ScreenPoint at = Scene3D().ToScreen(0.3, 0.4);
    EXPECT_EQ(at.x, 0.0);
    EXPECT_EQ(at.y, 0.0);
}

TEST(Scene3D, FrameCorners_AreThoseOfTheSquareOrNone)
{
    const Stage stage(30, 5);
    EXPECT_EQ(stage.scene.GetFrameCornerTopLeft(), (Vector3{-1, 1, 0}));
    EXPECT_EQ(stage.scene.GetFrameCornerTopRight(), (Vector3{1, 1, 0}));
    EXPECT_EQ(stage.scene.GetFrameCornerBottomLeft(), (Vector3{-1, -1, 0}));
    EXPECT_EQ(stage.scene.GetFrameCornerBottomRight(), (Vector3{1, -1, 0}));
    Scene3D scene;
    EXPECT_EQ(scene.GetFrameCornerTopLeft(), Vector3{});
    scene.SetCanvas(nullptr);
    EXPECT_EQ(scene.GetFrameCornerTopRight(), Vector3{});
    EXPECT_EQ(scene.GetFrameCornerBottomLeft(), Vector3{});
    EXPECT_EQ(scene.GetFrameCornerBottomRight(), Vector3{});
}

// --- set-up -------------------------------------------------------------------------------------------------

TEST(Scene3D, Flags_AreTestedByMask)
{
    Scene3D scene;
    EXPECT_FALSE(scene.HasFlag(0xFFFFFFFF));
    scene.SetFlags(0x41);
    EXPECT_TRUE(scene.HasFlag(Scene3D::kTwoSided));
    EXPECT_TRUE(scene.HasFlag(1));
    EXPECT_FALSE(scene.HasFlag(2));
}

TEST(Scene3D, SetCanvas_KeepsOneObject)
{
    const GuardedPicture small(4, 3, PF_BGRA8), large(8, 6, PF_BGRA8);
    VideoFrame frame = small.Frame();
    Scene3D scene;
    EXPECT_EQ(scene.GetCanvas(), nullptr);
    scene.SetCanvas(&frame);
    const SceneCanvas* const canvas = scene.GetCanvas();
    frame = large.Frame();
    scene.SetCanvas(&frame);
    EXPECT_EQ(scene.GetCanvas(), canvas);
    EXPECT_EQ(canvas->canvasWidth, 8);
}

TEST(Scene3D, LightLevel_WithoutLights_IsFull)
{
    EXPECT_EQ(Scene3D().LightLevel({0, 0, 1}, {}, false), 1.0);
    EXPECT_EQ(Scene3D().LightLevel({1, 0, 0}, {}, true), 1.0);
}

TEST(Scene3D, LightLevel_OfSeveralLights_IsTheirMean)
{
    const EvenLight dark(0.25), bright(1.0), half(0.5);
    Scene3D scene;
    scene.AddLight(&dark);
    EXPECT_EQ(scene.LightLevel({}, {}, false), 0.25);
    scene.AddLight(&bright);
    EXPECT_EQ(scene.LightLevel({}, {}, false), 0.625);
    scene.AddLight(&dark);
    scene.AddLight(nullptr);
    EXPECT_EQ(scene.GetLightCount(), 2u) << "each counts once, null not at all";
    scene.AddLight(&half);
    EXPECT_EQ(scene.LightLevel({1, 2, 3}, {4, 5, 6}, true), 1.75 / 3.0);
    EXPECT_EQ(half.lastNormal, (Vector3{1, 2, 3}));
    EXPECT_EQ(half.lastPosition, (Vector3{4, 5, 6}));
    EXPECT_TRUE(half.lastTwoSided);
    scene.ClearLights();
    EXPECT_EQ(scene.LightLevel({}, {}, false), 1.0);
}

TEST(Scene3D, FiltersAndTheEndOfAFrame_AreLetGo)
{
    int ended = 0;
    const EvenLight light(0.5);
    {
        Stage stage;
        for (int i = 0; i < 2; ++i)
            stage.scene.AddFilter(std::make_unique<TestFilter>([](FrameBuffer&) {}, &ended));
        stage.scene.AddLight(&light);
        stage.scene.ClearFilters();
        EXPECT_EQ(ended, 2);
        EXPECT_EQ(stage.scene.GetFilterCount(), 0u);
        stage.scene.AddFilter(std::make_unique<TestFilter>([](FrameBuffer&) {}, &ended));
        stage.scene.EndFrame();
        EXPECT_EQ(ended, 3);
        EXPECT_EQ(stage.scene.GetFilterCount(), 0u);
        EXPECT_EQ(stage.scene.GetLightCount(), 0u);
        EXPECT_EQ(stage.scene.GetAllocator(), nullptr);
        EXPECT_FALSE(stage.scene.GetCanvas()->IsValid());
        EXPECT_EQ(stage.scene.GetCanvas()->GetPixels(), nullptr);
        stage.scene.AddFilter(std::make_unique<TestFilter>([](FrameBuffer&) {}, &ended));
    }
    EXPECT_EQ(ended, 4) << "with the scene";
}

TEST(Scene3D, Backgrounds_ReachTheCanvas)
{
    Stage stage;
    stage.scene.SetBackground(stage.front, 0);
    EXPECT_TRUE(Equal(stage.out, stage.picture));
    const GuardedPicture other = Noisy(9, 9, PF_BGRA8, 7), cleared(9, 9, PF_BGRA8);
    const VideoFrame frame = other.Frame();
    stage.scene.SetBackground(&frame, 0);
    EXPECT_TRUE(Equal(stage.out, other));
    stage.scene.SetBackground(static_cast<const VideoFrame*>(nullptr), 0);
    EXPECT_TRUE(Equal(stage.out, other));
    stage.scene.FillBackground(0, true);
    EXPECT_TRUE(Equal(stage.out, cleared));
    Scene3D without;
    without.SetBackground(stage.front, 0);
    without.FillBackground(0, false);
}

// --- faces --------------------------------------------------------------------------------------------------

TEST(Scene3D, DrawFace_TheWholeFrame_IsThePictureUnchanged)
{
    for (const std::uint32_t format : kPictureFormats) {
        Stage stage(9, 7, format);
        EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
        EXPECT_TRUE(Equal(stage.out, stage.picture)) << FormatName(format);
    }
}

TEST(Scene3D, DrawFace_APartOfTheTexture_LiesAtItsCorners)
{
    // Columns 4 to 8 and rows 0 to 4 of a texture of 17 by 9 pixels go to columns 2 to 6 and rows 3 to 7.
    Stage stage;
    const GuardedPicture texture = Noisy(17, 9, PF_BGRA8, 5);
    const FrameBuffer view = ViewOf(texture);
    const QuadFace face({-0.5, 0.25, 0}, {0.5, 0.25, 0}, {0.5, -0.75, 0}, {-0.5, -0.75, 0}, &view, nullptr, 0,
                        {0.25, 0, 0.5, 0.5}, {});
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x)
            for (int c = 0; c < 4; ++c) {
                const bool inside = x >= 2 && x <= 6 && y >= 3 && y <= 7;
                ASSERT_EQ(stage.out.Byte(x, y, c),
                          inside ? texture.Byte(x + 2, y - 3, c) : stage.before.Byte(x, y, c))
                    << x << ", " << y;
            }
}

TEST(Scene3D, DrawFace_Matrices_MoveFirstByTheModelThenByTheView)
{
    // A quarter to the right and 1 nearer; seen from 2 away that is twice as large.
    Stage stage(17, 17);
    stage.scene.SetModelMatrix(Matrix4::Translation(0.25, 0, 1));
    stage.scene.SetViewMatrix(Matrix4::Perspective(2.0));
    const QuadFace face({-0.25, 0.25, 0}, {0.25, 0.25, 0}, {0.25, -0.25, 0}, {-0.25, -0.25, 0}, &stage.front,
                        nullptr, 0, {}, {});
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    // From x = 0 to 1, columns 8 to 16, and y = 0.5 to -0.5, rows 4 to 12. The corner pixels are the texture's.
    const auto pixel = [](const GuardedPicture& picture, int x, int y) {
        std::uint32_t word;
        std::memcpy(&word, picture.Row(y) + 4 * x, 4);
        return word;
    };
    EXPECT_EQ(pixel(stage.out, 8, 4), pixel(stage.picture, 0, 0));
    EXPECT_EQ(pixel(stage.out, 16, 4), pixel(stage.picture, 16, 0));
    EXPECT_EQ(pixel(stage.out, 16, 12), pixel(stage.picture, 16, 16));
    EXPECT_EQ(pixel(stage.out, 8, 12), pixel(stage.picture, 0, 16));
    EXPECT_EQ(pixel(stage.out, 12, 8), pixel(stage.picture, 8, 8));
    EXPECT_EQ(pixel(stage.out, 6, 8), pixel(stage.before, 6, 8));
    EXPECT_EQ(pixel(stage.out, 12, 2), pixel(stage.before, 12, 2));
}

/// Turned about the upright by half a turn: the left corners are on the right.
QuadFace TurnedAway(const Stage& stage)
{
    QuadFace face = stage.WholeFace();
    face.SetCorners({1, 1, 0}, {-1, 1, 0}, {-1, -1, 0}, {1, -1, 0});
    return face;
}

TEST(Scene3D, DrawFace_ABackFace_IsNotDrawnUnlessTwoSided)
{
    Stage stage;
    EXPECT_FALSE(stage.scene.DrawFace(TurnedAway(stage), kCode, false));
    EXPECT_TRUE(stage.Untouched());
    stage.scene.SetFlags(Scene3D::kTwoSided);
    EXPECT_TRUE(stage.scene.DrawFace(TurnedAway(stage), kCode, false));
    // Its corners are taken the other way round, so that the picture does not read mirrored.
    EXPECT_TRUE(Equal(stage.out, stage.picture));
}

TEST(Scene3D, DrawFace_ABackFaceOfAnotherOrientation_IsMirrored)
{
    Stage stage;
    QuadFace face = TurnedAway(stage);
    face.backOrientation = 7;
    stage.scene.SetFlags(Scene3D::kTwoSided);
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(stage.out.Byte(x, y, c), stage.picture.Byte(8 - x, y, c));
}

TEST(Scene3D, DrawFace_ABackFace_ShowsTheBackTextureAndItsPart)
{
    Stage stage;
    const GuardedPicture other = Noisy(9, 9, PF_BGRA8, 8);
    const FrameBuffer back = ViewOf(other);
    QuadFace face = TurnedAway(stage);
    face.SetBackTexture(&back);
    stage.scene.SetFlags(Scene3D::kTwoSided);
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    EXPECT_TRUE(Equal(stage.out, other));
    face.SetBackRect(0.5, 0, 1, 1);
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    EXPECT_EQ(stage.out.Byte(0, 0, 1), other.Byte(4, 0, 1));
    EXPECT_EQ(stage.out.Byte(8, 8, 1), other.Byte(8, 8, 1));
    EXPECT_EQ(stage.out.Byte(2, 0, 1), other.Byte(5, 0, 1));
}

TEST(Scene3D, DrawFace_BackOnly_NeedsTwoSidesAndDrawsBacksAlone)
{
    Stage stage;
    EXPECT_FALSE(stage.scene.DrawFace(stage.WholeFace(), kCode, true));
    EXPECT_FALSE(stage.scene.DrawFace(TurnedAway(stage), kCode, true));
    stage.scene.SetFlags(Scene3D::kTwoSided);
    EXPECT_FALSE(stage.scene.DrawFace(stage.WholeFace(), kCode, true));
    EXPECT_TRUE(stage.Untouched());
    EXPECT_TRUE(stage.scene.DrawFace(TurnedAway(stage), kCode, true));
    EXPECT_FALSE(stage.Untouched());
}

TEST(Scene3D, DrawFace_SeenEdgeOn_CountsAsFacing)
{
    // The face lies in the plane x = 0: its normal is at right angles to the view.
    Stage stage;
    QuadFace face = stage.WholeFace();
    face.SetCorners({0, 1, 0}, {0, 1, -1}, {0, -1, -1}, {0, -1, 0});
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    EXPECT_TRUE(stage.Untouched()) << "a line has no map";
    stage.scene.SetFlags(Scene3D::kTwoSided);
    EXPECT_FALSE(stage.scene.DrawFace(face, kCode, true)) << "it has no back";
}

TEST(Scene3D, DrawFace_ADegenerateFace_CountsAsFacing)
{
    Stage stage;
    QuadFace face = stage.WholeFace();
    for (const bool point : {false, true}) {
        if (point)
            face.SetCorners({0.5, 0.5, 0}, {0.5, 0.5, 0}, {0.5, 0.5, 0}, {0.5, 0.5, 0});
        else
            face.SetCorners({-1, 0, 0}, {-0.5, 0, 0}, {0.5, 0, 0}, {1, 0, 0});
        EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
        EXPECT_TRUE(stage.Untouched());
    }
}

TEST(Scene3D, DrawFace_InvalidOrWithoutCanvas_IsFalse)
{
    Stage stage;
    QuadFace face = stage.WholeFace();
    EXPECT_FALSE(Scene3D().DrawFace(face, kCode, false));
    face.SetFrontTexture(nullptr);
    EXPECT_FALSE(stage.scene.DrawFace(face, kCode, false));
    face = stage.WholeFace();
    face.corners.clear();
    EXPECT_FALSE(stage.scene.DrawFace(face, kCode, false));
    EXPECT_TRUE(stage.Untouched());
}

TEST(Scene3D, DrawFace_ThreeCorners_AreNone)
{
    Stage stage;
    QuadFace face = stage.WholeFace();
    face.corners.resize(3);
    stage.scene.DrawFace(face, kCode, false);
    EXPECT_TRUE(stage.Untouched());
}

/// The filter sees each face that is prepared; those left out before are not.
int Prepared(Stage& stage, const QuadFace& face)
{
    int prepared = 0;
    stage.scene.AddFilter(std::make_unique<TestFilter>([&](FrameBuffer&) { ++prepared; }));
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    stage.scene.ClearFilters();
    return prepared;
}

TEST(Scene3D, DrawFace_BeyondAnEdge_IsLeftOut)
{
    for (const auto& [x, y] : {std::pair{-2.5, 0.0}, {2.5, 0.0}, {0.0, 2.5}, {0.0, -2.5}}) {
        Stage stage;
        QuadFace face = stage.WholeFace();
        face.TransformInPlace(Matrix4::Translation(x, y, 0));
        EXPECT_EQ(Prepared(stage, face), 0) << x << ", " << y;
        EXPECT_TRUE(stage.Untouched());
    }
}

TEST(Scene3D, DrawFace_BeyondACornerButNoEdge_IsPrepared)
{
    // Two corners to the left and two above: none of the edges has all four beyond it.
    Stage stage;
    QuadFace face = stage.WholeFace();
    face.SetCorners({-1.5, 3, 0}, {0.5, 5, 0}, {-1.5, 1.5, 0}, {-3, -0.5, 0});
    EXPECT_EQ(Prepared(stage, face), 1);
}

TEST(Scene3D, DrawFace_CornersAtTheCanvasWidthItself_AreNotBeyond)
{
    // Nine columns: x = 1.25 is column 9, next to the last one; y likewise.
    Stage stage;
    QuadFace face = stage.WholeFace();
    face.SetCorners({1.25, 1, 0}, {3, 1, 0}, {3, -1, 0}, {1.25, -1, 0});
    EXPECT_EQ(Prepared(stage, face), 1);
    face.SetCorners({1.2501, 1, 0}, {3, 1, 0}, {3, -1, 0}, {1.2501, -1, 0});
    EXPECT_EQ(Prepared(stage, face), 0);
    face.SetCorners({-1, -1.25, 0}, {1, -1.25, 0}, {1, -3, 0}, {-1, -3, 0});
    EXPECT_EQ(Prepared(stage, face), 1);
    face.SetCorners({-1, -1.2501, 0}, {1, -1.2501, 0}, {1, -3, 0}, {-1, -3, 0});
    EXPECT_EQ(Prepared(stage, face), 0);
    face.SetCorners({-3, 1, 0}, {-1, 1, 0}, {-1, -1, 0}, {-3, -1, 0}); // column 0
    EXPECT_EQ(Prepared(stage, face), 1);
    face.SetCorners({-3, 1, 0}, {-1.0001, 1, 0}, {-1.0001, -1, 0}, {-3, -1, 0});
    EXPECT_EQ(Prepared(stage, face), 0);
}

TEST(Scene3D, DrawFace_ATextureWithoutPixels_IsLeftOut)
{
    Stage stage;
    const FrameBuffer none;
    QuadFace face = stage.WholeFace();
    face.SetFrontTexture(&none);
    EXPECT_EQ(Prepared(stage, face), 0);
    EXPECT_TRUE(stage.Untouched());

    face = TurnedAway(stage);
    face.SetBackTexture(&none);
    stage.scene.SetFlags(Scene3D::kTwoSided);
    EXPECT_EQ(Prepared(stage, face), 0);
    EXPECT_TRUE(stage.Untouched());
}

TEST(Scene3D, DrawFace_ABackTextureThatIsSmaller_IsTransparentWhereItEnds)
{
    for (const auto& [width, height] : {std::pair{4, 9}, std::pair{9, 4}}) {
        Stage stage;
        const GuardedPicture small = Noisy(width, height, PF_BGRA8, 8);
        const FrameBuffer back = ViewOf(small);
        QuadFace face = TurnedAway(stage);
        face.SetBackTexture(&back);
        stage.scene.SetFlags(Scene3D::kTwoSided);
        EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 9; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_EQ(stage.out.Byte(x, y, c), x < width && y < height ? small.Byte(x, y, c) : 0);
    }
}

TEST(Scene3D, DrawFace_PartsFarOutsideTheTexture_AreLeftOut)
{
    Stage stage;
    QuadFace face = stage.WholeFace();
    for (const double wild : {1e30, -1e30, kNaN, 2.0, -2.0}) {
        face.SetFrontRect(wild, wild, wild, wild);
        stage.scene.DrawFace(face, kCode, false);
        face.SetFrontRect(0, wild, 1, wild);
        stage.scene.DrawFace(face, kCode, false);
        face.SetFrontRect(wild, 0, wild, 1);
        stage.scene.DrawFace(face, kCode, false);
    }
    EXPECT_TRUE(stage.Untouched());
}

TEST(Scene3D, DrawFace_MemoryRefused_LeavesTheFaceOut)
{
    MemoryHabits habits;
    habits.refuseOnly = 1;
    FakeMemoryProvider provider(habits);
    FakeHost host;
    host.SetMemory(&provider);
    Stage stage;
    const EvenLight dark(0.0);
    {
        MemoryAllocator memory(&host);
        stage.scene.SetAllocator(&memory);
        stage.scene.AddLight(&dark);
        GuardedPicture lit(9, 9, PF_BGRA8);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 9; ++x)
                lit.SetByte(x, y, 3, stage.picture.Byte(x, y, 3));
        QuadFace part = stage.WholeFace();
        part.SetFrontRect(0, 0, 0.5, 0.5);
        EXPECT_TRUE(stage.scene.DrawFace(part, kCode, false));
        const GuardedPicture cleared(9, 9, PF_BGRA8);
        stage.scene.FillBackground(0, true);
        EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
        EXPECT_TRUE(Equal(stage.out, cleared));
        EXPECT_EQ(provider.OpenBlocks(), 0u);
        EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
        EXPECT_TRUE(Equal(stage.out, lit));
        stage.scene.EndFrame();
        EXPECT_EQ(provider.OpenBlocks(), 0u);
    }
    EXPECT_EQ(provider.Refused(), 1u);
}

TEST(Scene3D, DrawFace_WithoutMemory_DrawsNothingInAnyLight)
{
    FakeMemoryProvider provider({.refuseImages = true});
    FakeHost host;
    host.SetMemory(&provider);
    for (const double light : {0.5, 1.0})
        for (const std::uint32_t format : kPictureFormats) {
            const EvenLight even(light);
            Stage stage(17, 9, format);
            const GuardedPicture before = stage.out;
            MemoryAllocator memory(&host);
            stage.scene.SetAllocator(&memory);
            stage.scene.AddLight(&even);
            EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
            EXPECT_TRUE(Equal(stage.out, before)) << light;
            stage.scene.EndFrame();
        }
    EXPECT_EQ(provider.Refused(), 8u);
}

TEST(Scene3D, DrawFace_InFullLight_IsThePictureItself)
{
    FakeMemoryProvider provider;
    FakeHost host;
    host.SetMemory(&provider);
    for (const std::uint32_t format : kPictureFormats) {
        Stage stage(17, 9, format);
        MemoryAllocator memory(&host);
        stage.scene.SetAllocator(&memory);
        EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
        EXPECT_TRUE(Equal(stage.out, stage.picture));
        stage.scene.EndFrame();
    }
    EXPECT_EQ(provider.Calls().size(), 8u); // space for each, and back
}

TEST(Scene3D, DrawFace_FloatsInHalfLight_AreHalved)
{
    const EvenLight half(0.5);
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F}) {
        Stage stage(17, 9, format);
        MemoryAllocator memory;
        stage.scene.SetAllocator(&memory);
        stage.scene.AddLight(&half);
        EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 17; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(stage.out.Float(x, y, c),
                              stage.picture.Float(x, y, c) * (c == PlaceOfColour(format, 3) ? 1.0f : 0.5f));
        stage.scene.EndFrame();
    }
}

TEST(Scene3D, DrawFace_FaceAfterFace_TakesSpaceForTheWidestAndTheHighest)
{
    FakeMemoryProvider provider;
    FakeHost host;
    host.SetMemory(&provider);
    Stage stage(17, 9);
    const EvenLight half(0.5);
    {
        MemoryAllocator memory(&host);
        stage.scene.SetAllocator(&memory);
        stage.scene.AddLight(&half);
        QuadFace face = stage.WholeFace();
        std::vector<std::pair<int, int>> taken;
        for (const auto& [u, v] :
             {std::pair{0.25, 0.5}, {0.25, 0.25}, {0.5, 0.25}, {0.25, 0.5}, {0.0, 1.0}}) {
            face.SetFrontRect(0, 0, u, v); // 16 u + 1 columns, 8 v + 1 rows
            EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
            EXPECT_LE(provider.OpenBlocks(), 1u);
        }
        for (const MemoryCall& call : provider.Calls())
            if (call.kind == MemoryCall::AllocImage)
                taken.emplace_back(call.width, call.height);
        EXPECT_EQ(taken, (std::vector<std::pair<int, int>>{{5, 5}, {9, 5}, {9, 9}}));
        stage.scene.EndFrame();
        EXPECT_EQ(provider.OpenBlocks(), 0u);
    }
}

TEST(Scene3D, Lists_HoldEightLightsAndEightFilters)
{
    const std::vector<EvenLight> lights(9, EvenLight(0.5));
    int ended = 0;
    Scene3D scene;
    for (const EvenLight& light : lights) {
        scene.AddLight(&light);
        scene.AddFilter(std::make_unique<TestFilter>([](FrameBuffer&) {}, &ended));
    }
    EXPECT_EQ(scene.GetLightCount(), 8u);
    EXPECT_EQ(scene.GetFilterCount(), 8u);
    EXPECT_EQ(ended, 1) << "the ninth";
}

TEST(Scene3D, DrawFace_Scratch_IsExactlyTheSourceRectangle)
{
    FakeMemoryProvider provider;
    FakeHost host;
    host.SetMemory(&provider);
    const EvenLight half(0.5);
    for (const std::uint32_t format : kPictureFormats) {
        Stage stage(17, 9, format);
        MemoryAllocator memory(&host);
        stage.scene.SetAllocator(&memory);
        stage.scene.AddLight(&half);
        QuadFace face = stage.WholeFace();
        face.SetFrontRect(0.25, 0, 0.5, 0.5); // columns 4 to 8, rows 0 to 4
        EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
        const MemoryCall& call = provider.Calls().back();
        EXPECT_EQ(call.kind, MemoryCall::AllocImage);
        EXPECT_EQ(call.width, 5);
        EXPECT_EQ(call.height, 5);
        EXPECT_EQ(call.pixelBytes, BytesOfPixel(format));
        stage.scene.EndFrame();
    }
}

TEST(Scene3D, DrawFace_Filters_RunInOrderBeforeTheLight)
{
    Stage stage;
    const EvenLight half(0.5);
    stage.scene.AddLight(&half);
    std::vector<int> order;
    const auto add = [&](int number, std::uint8_t value) {
        stage.scene.AddFilter(std::make_unique<TestFilter>([&order, number, value](FrameBuffer& part) {
            order.push_back(number);
            EXPECT_EQ(part.GetWidth(), 9);
            EXPECT_EQ(part.GetHeight(), 9);
            EXPECT_FALSE(part.IsBottomUp());
            for (int y = 0; y < 9; ++y)
                std::memset(part.PixelAddress(0, y, 0), value, 36);
        }));
    };
    add(1, 10);
    add(2, 201);
    EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    // 201 * 0.5 is 100.5, which goes up; alpha is not lit.
    GuardedPicture expected(9, 9, PF_BGRA8);
    expected.Fill(101, 101, 101, 201);
    EXPECT_TRUE(Equal(stage.out, expected));
    EXPECT_TRUE(Equal(stage.picture, Noisy(9, 9, PF_BGRA8, 3))) << "the texture stays";
}

TEST(Scene3D, DrawFace_LightOfOneOrMore_LeavesThePixels)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const double level : {1.0, 1.5, 1e300, kNaN}) {
            Stage stage(9, 9, format);
            const EvenLight light(level);
            stage.scene.AddLight(&light);
            EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
            EXPECT_TRUE(Equal(stage.out, stage.picture)) << level;
        }
}

TEST(Scene3D, DrawFace_ADimFace_IsDarkenedInEveryFormat)
{
    for (const std::uint32_t format : kPictureFormats) {
        Stage stage(9, 9, format);
        const EvenLight light(0.3);
        stage.scene.AddLight(&light);
        EXPECT_TRUE(stage.scene.DrawFace(stage.WholeFace(), kCode, false));
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 9; ++x)
                for (int c = 0; c < 4; ++c) {
                    const bool alpha = c == PlaceOfColour(format, 3);
                    if (IsFloatFormat(format)) {
                        const float was = stage.picture.Float(x, y, c);
                        ASSERT_EQ(stage.out.Float(x, y, c), alpha ? was : was * 0.3f);
                    } else {
                        const int was = stage.picture.Byte(x, y, c);
                        ASSERT_EQ(stage.out.Byte(x, y, c), alpha ? was : static_cast<int>(was * 0.3 + 0.5));
                    }
                }
    }
}

TEST(Scene3D, DrawFace_NormalAndCenter_AreThoseOfTheProjectedFace)
{
    // A wedge: its right edge lies at z = 1, which doubles it in a view from 2 away. Projected, the corners are
    // (-1, 1, 0), (2, 2, 2), (2, -2, 2), (-1, -1, 0): leaning by 2 over 3.
    Stage stage;
    const EvenLight light(1.0);
    stage.scene.AddLight(&light);
    stage.scene.SetViewMatrix(Matrix4::Perspective(2.0));
    QuadFace face = stage.WholeFace();
    face.SetCorners({-1, 1, 0}, {1, 1, 1}, {1, -1, 1}, {-1, -1, 0});
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    // Down (0, -2, 0) cross over (3, 1, 2) is (-4, 0, 6).
    const double length = std::sqrt(52.0);
    EXPECT_NEAR(light.lastNormal.x, -4 / length, 1e-15);
    EXPECT_NEAR(light.lastNormal.y, 0, 1e-15);
    EXPECT_NEAR(light.lastNormal.z, 6 / length, 1e-15);
    EXPECT_EQ(light.lastPosition, (Vector3{0.5, 0, 1}));
    EXPECT_FALSE(light.lastTwoSided);
    stage.scene.SetFlags(Scene3D::kTwoSided);
    stage.scene.DrawFace(face, kCode, false);
    EXPECT_TRUE(light.lastTwoSided);
}

TEST(Scene3D, DrawFace_DustOfRounding_IsBrushedOff)
{
    Stage stage;
    QuadFace face = stage.WholeFace();
    face.SetCorners({-1 + 1e-9, 1 - 1e-9, 0}, {1 + 1e-9, 1 - 1e-9, 0}, {1 - 1e-9, -1 + 1e-9, 0},
                    {-1 - 1e-9, -1, 0});
    EXPECT_TRUE(stage.scene.DrawFace(face, kCode, false));
    EXPECT_TRUE(Equal(stage.out, stage.picture));
}

TEST(Scene3D, DrawFace_CornersNowhere_DrawNothing)
{
    Stage stage;
    for (const double wild : {kNaN, std::numeric_limits<double>::infinity(), 1e300, -1e300, 1e10}) {
        QuadFace face = stage.WholeFace();
        face.SetCorners({wild, 1, 0}, {1, wild, 0}, {1, -1, wild}, {-1, -1, 0});
        stage.scene.SetFlags(Scene3D::kTwoSided);
        stage.scene.SetViewMatrix(Matrix4::Perspective(5.0));
        stage.scene.DrawFace(face, kCode, false);
        stage.out.Check();
    }
}

// A face half behind the viewer: what the division mirrors is no convex quadrangle, and nothing is drawn of it.
TEST(Scene3D, DrawFace_BehindTheViewer_StaysInsideThePicture)
{
    for (const double z : {4.0, 4.999999, 5.0, 5.000001, 6.0, 20.0}) {
        Stage stage(16, 16);
        stage.scene.SetViewMatrix(Matrix4::Perspective(5.0));
        stage.scene.SetFlags(Scene3D::kTwoSided);
        QuadFace face = stage.WholeFace();
        face.SetCorners({-1, 1, 0}, {1, 1, z}, {1, -1, z}, {-1, -1, 0});
        stage.scene.DrawFace(face, kCode, false);
        stage.out.Check();
    }
}

} // namespace
} // namespace kelmora
