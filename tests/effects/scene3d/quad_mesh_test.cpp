#include "effects/scene3d/quad_mesh.h"

#include <array>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/scene3d/near.h"
#include "tests/support/failing_heap.h"

namespace kelmora {
namespace {

constexpr std::array<Vector3, 4> kFrame = {{{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}}};

QuadGrid GridOf(int width, int height, int columns, int rows)
{
    QuadGrid grid = {};
    grid.width = width;
    grid.height = height;
    grid.area = kFrame;
    grid.columns = columns;
    grid.rows = rows;
    return grid;
}

QuadMesh Create(const QuadGrid& grid)
{
    return QuadMeshCreator().CreateGrid(grid);
}

QuadFace FaceAt(const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d)
{
    QuadFace face;
    face.SetCorners(a, b, c, d);
    return face;
}

void ExpectCorners(const QuadFace& face, const std::array<Vector3, 4>& expected)
{
    ASSERT_EQ(face.corners.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i)
        ExpectNear(face.corners[i], expected[i]);
}

void ExpectRect(const TextureRect& actual, const TextureRect& expected)
{
    EXPECT_NEAR(actual.u0, expected.u0, kRounding);
    EXPECT_NEAR(actual.v0, expected.v0, kRounding);
    EXPECT_NEAR(actual.u1, expected.u1, kRounding);
    EXPECT_NEAR(actual.v1, expected.v1, kRounding);
}

// --- meshes -------------------------------------------------------------------------------------------

TEST(QuadMesh, AddFace_TakesACopy)
{
    QuadMesh mesh;
    EXPECT_EQ(mesh.GetFaceCount(), 0u);
    QuadFace face = FaceAt({1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0});
    mesh.AddFace(face);
    face.corners.clear();
    EXPECT_EQ(mesh.GetFaceCount(), 1u);
    EXPECT_EQ(mesh.GetFace(0).corners.size(), 4u);
}

TEST(QuadMesh, ACopy_SharesTexturesButNotFaces)
{
    const FrameBuffer texture;
    QuadMesh mesh;
    mesh.AddFace(QuadFace());
    mesh.GetFace(0).SetFrontTexture(&texture);
    QuadMesh copy = mesh;
    copy.TransformInPlace(Matrix4::Translation(1, 0, 0));
    EXPECT_EQ(copy.GetFace(0).frontTexture, &texture);
    EXPECT_EQ(mesh.GetFace(0).GetCenter(), Vector3{});
    EXPECT_EQ(copy.GetFace(0).GetCenter(), (Vector3{1, 0, 0}));
}

TEST(QuadMesh, GetCenter_IsTheMeanOfTheCenters)
{
    QuadMesh mesh;
    EXPECT_EQ(mesh.GetCenter(), Vector3{});
    mesh.AddFace(FaceAt({0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}));
    mesh.AddFace(FaceAt({4, 0, 8}, {4, 0, 8}, {4, 0, 8}, {4, 0, 8}));
    EXPECT_EQ(mesh.GetCenter(), (Vector3{2.5, 0.5, 4.0}));
}

TEST(QuadMesh, TransformInPlaceAndFlipBackRects_ReachEveryFace)
{
    QuadMesh mesh;
    for (int i = 0; i < 3; ++i)
        mesh.AddFace(QuadFace());
    for (std::size_t i = 0; i < 3; ++i)
        mesh.GetFace(i).SetBackRect(0.0, 0.0, 0.25, 0.5);
    mesh.TransformInPlace(Matrix4::Translation(0, 2, 0));
    mesh.FlipBackRects(true);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(mesh.GetFace(i).GetCenter(), (Vector3{0, 2, 0}));
        EXPECT_EQ(mesh.GetFace(i).backRect, (TextureRect{0.75, 0.0, 1.0, 0.5}));
    }
    mesh.FlipBackRects(false);
    EXPECT_EQ(mesh.GetFace(2).backRect, (TextureRect{0.75, 0.5, 1.0, 1.0}));
}

// --- grids --------------------------------------------------------------------------------------------

TEST(CreateGrid, OnePiece_IsTheWholeAreaExactly)
{
    const QuadMesh mesh = Create(GridOf(640, 480, 1, 1));
    ASSERT_EQ(mesh.GetFaceCount(), 1u);
    EXPECT_EQ(mesh.GetFace(0).frontRect, (TextureRect{0, 0, 1, 1}));
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(mesh.GetFace(0).corners[i], kFrame[i]);
}

TEST(CreateGrid, Columns_EndOnWholePixelsAndShareThem)
{
    const QuadMesh mesh = Create(GridOf(5, 3, 2, 1)); // 2.5 pixels each: 0 to 3, and 3 to the last one, 4
    ASSERT_EQ(mesh.GetFaceCount(), 2u);
    EXPECT_EQ(mesh.GetFace(0).frontRect, (TextureRect{0, 0, 0.75, 1}));
    EXPECT_EQ(mesh.GetFace(1).frontRect, (TextureRect{0.75, 0, 1, 1}));
    ExpectCorners(mesh.GetFace(0), {{{-1, 1, 0}, {0.5, 1, 0}, {0.5, -1, 0}, {-1, -1, 0}}});
    ExpectCorners(mesh.GetFace(1), {{{0.5, 1, 0}, {1, 1, 0}, {1, -1, 0}, {0.5, -1, 0}}});
}

TEST(CreateGrid, Rows_EndOnWholePixelsAndShareThem)
{
    const QuadMesh mesh = Create(GridOf(3, 5, 1, 2));
    ASSERT_EQ(mesh.GetFaceCount(), 2u);
    EXPECT_EQ(mesh.GetFace(0).frontRect, (TextureRect{0, 0, 1, 0.75}));
    EXPECT_EQ(mesh.GetFace(1).frontRect, (TextureRect{0, 0.75, 1, 1}));
    ExpectCorners(mesh.GetFace(1), {{{-1, -0.5, 0}, {1, -0.5, 0}, {1, -1, 0}, {-1, -1, 0}}});
}

TEST(CreateGrid, Pieces_RunRowByRow)
{
    const QuadMesh mesh = Create(GridOf(7, 4, 3, 2)); // across 0 to 2 to 5 to 6, down 0 to 2 to 3
    ASSERT_EQ(mesh.GetFaceCount(), 6u);
    const double third = 1.0 / 3.0, most = 5.0 / 6.0;
    const TextureRect expected[6] = {
        {0, 0, third, third * 2}, {third, 0, most, third * 2}, {most, 0, 1, third * 2},
        {0, third * 2, third, 1}, {third, third * 2, most, 1}, {most, third * 2, 1, 1},
    };
    for (std::size_t i = 0; i < 6; ++i)
        ExpectRect(mesh.GetFace(i).frontRect, expected[i]);
}

TEST(CreateGrid, Serpentine_RunsOddRowsBackward)
{
    QuadGrid grid = GridOf(7, 6, 3, 3);
    grid.serpentine = true;
    const QuadMesh mesh = Create(grid);
    ASSERT_EQ(mesh.GetFaceCount(), 9u);
    const double starts[9] = {0, 1.0 / 3.0, 5.0 / 6.0, 5.0 / 6.0, 1.0 / 3.0, 0, 0, 1.0 / 3.0, 5.0 / 6.0};
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(mesh.GetFace(i).frontRect.u0, starts[i], kRounding) << i;
    // The last column of a row that runs backward still ends at the last pixel.
    EXPECT_EQ(mesh.GetFace(3).frontRect.u1, 1.0);
}

TEST(CreateGrid, Backs_ShowThePartThatTheOrientationWants)
{
    QuadGrid grid = GridOf(5, 5, 2, 2);
    EXPECT_EQ(Create(grid).GetFace(0).backRect, (TextureRect{0.25, 0, 1, 0.75}));
    EXPECT_EQ(Create(grid).GetFace(1).backRect, (TextureRect{0, 0, 0.25, 0.75}));
    grid.orientation = 1;
    EXPECT_EQ(Create(grid).GetFace(0).backRect, (TextureRect{0, 0.25, 0.75, 1}));
    EXPECT_EQ(Create(grid).GetFace(2).backRect, (TextureRect{0, 0, 0.75, 0.25}));
    grid.orientation = 2;
    EXPECT_EQ(Create(grid).GetFace(1).backRect, (TextureRect{0.75, 0, 1, 0.75}));
}

TEST(CreateGrid, Pieces_BearTexturesAndOrientation)
{
    const FrameBuffer front, back;
    QuadGrid grid = GridOf(5, 5, 2, 1);
    grid.frontTexture = &front;
    grid.backTexture = &back;
    grid.orientation = 7;
    const QuadMesh mesh = Create(grid);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(mesh.GetFace(i).frontTexture, &front);
        EXPECT_EQ(mesh.GetFace(i).backTexture, &back);
        EXPECT_EQ(mesh.GetFace(i).backOrientation, 7);
    }
}

TEST(CreateGrid, TheThirdCorner_IsNotRead)
{
    QuadGrid grid = GridOf(5, 5, 2, 2);
    grid.area = {{{0, 0, 0}, {4, 0, 0}, {100, 200, 300}, {1, -4, 0}}}; // slanted
    const QuadMesh mesh = Create(grid);
    ExpectCorners(mesh.GetFace(3), {{{3.75, -3, 0}, {4.75, -3, 0}, {5, -4, 0}, {4, -4, 0}}});
}

TEST(CreateGrid, WithoutPixelsOrPieces_IsEmpty)
{
    EXPECT_EQ(Create(GridOf(1, 5, 1, 1)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(5, 1, 1, 1)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(5, 0, 1, 1)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(-3, 5, 1, 1)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(5, 5, 0, 1)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(5, 5, 1, 0)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(2, 2, 1, 1)).GetFaceCount(), 1u);
}

TEST(CreateGrid, MorePiecesThanAnyKnobAsksFor_IsEmpty)
{
    EXPECT_EQ(Create(GridOf(200, 200, 64, 64)).GetFaceCount(), 4096u);
    EXPECT_EQ(Create(GridOf(200, 200, 65, 1)).GetFaceCount(), 0u);
    EXPECT_EQ(Create(GridOf(200, 200, 1, 2147483647)).GetFaceCount(), 0u);
}

// 2 pixels for 20 columns: column 14 ends at 1.5, which rounds to pixel 2 of 0 and 1.
TEST(CreateGrid, Kept_PiecesOfHalfAPixel_StickOutOfThePicture)
{
    const QuadMesh mesh = Create(GridOf(2, 2, 20, 1));
    ASSERT_EQ(mesh.GetFaceCount(), 20u);
    EXPECT_EQ(mesh.GetFace(4).frontRect, (TextureRect{0, 0, 1, 1}));
    EXPECT_EQ(mesh.GetFace(14).frontRect, (TextureRect{1, 0, 2, 1}));
    EXPECT_EQ(mesh.GetFace(19).frontRect, (TextureRect{2, 0, 1, 1}));
}

// --- boxes --------------------------------------------------------------------------------------------

QuadMesh OneFace(const QuadFace& face)
{
    QuadMesh mesh;
    mesh.AddFace(face);
    return mesh;
}

// 3 across, 4 down, 5 from corner to corner: the depth is the mean of 3 and 5.
TEST(CreateBoxes, Kept_TheDepth_IsTheMeanOfTheTopEdgeAndTheDiagonal)
{
    const auto boxes =
        QuadMeshCreator().CreateBoxes(OneFace(FaceAt({0, 4, 0}, {3, 4, 0}, {3, 0, 0}, {0, 0, 0})));
    ASSERT_EQ(boxes.size(), 1u);
    for (const Vector3& corner : boxes[0].GetFace(2).corners)
        EXPECT_EQ(corner.z, -4.0);
    EXPECT_EQ(boxes[0].GetCenter(), (Vector3{1.5, 2.0, -2.0}));
}

TEST(CreateBoxes, TheSixSides_LieAroundTheSourceFace)
{
    const Vector3 a = {0, 4, 1}, b = {3, 4, 1}, c = {3, 0, 1}, d = {0, 0, 1};
    const Vector3 a2 = {0, 4, -3}, b2 = {3, 4, -3}, c2 = {3, 0, -3}, d2 = {0, 0, -3};
    const auto boxes = QuadMeshCreator().CreateBoxes(OneFace(FaceAt(a, b, c, d)));
    ASSERT_EQ(boxes.size(), 1u);
    ASSERT_EQ(boxes[0].GetFaceCount(), 6u);
    ExpectCorners(boxes[0].GetFace(0), {{a, b, c, d}});
    ExpectCorners(boxes[0].GetFace(1), {{b, b2, c2, c}});
    ExpectCorners(boxes[0].GetFace(2), {{b2, a2, d2, c2}});
    ExpectCorners(boxes[0].GetFace(3), {{a2, a, d, d2}});
    ExpectCorners(boxes[0].GetFace(4), {{a2, b2, b, a}});
    ExpectCorners(boxes[0].GetFace(5), {{d, c, c2, d2}});
}

TEST(CreateBoxes, TheSixSides_LookOutward)
{
    const auto boxes = QuadMeshCreator().CreateBoxes(Create(GridOf(5, 5, 1, 1)));
    const Vector3 outward[6] = {{0, 0, 1}, {1, 0, 0}, {0, 0, -1}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}};
    for (std::size_t i = 0; i < 6; ++i) {
        const QuadFace::Corners p = boxes[0].GetFace(i).GetCorners();
        ExpectNear(FaceNormal(p[0], p[3], p[1]), outward[i]);
    }
}

TEST(CreateBoxes, TheWholeFrame_IsDeeperThanWide)
{
    const auto boxes = QuadMeshCreator().CreateBoxes(Create(GridOf(5, 5, 1, 1)));
    EXPECT_NEAR(boxes[0].GetFace(2).corners[0].z, -(1.0 + std::sqrt(2.0)), kRounding);
}

TEST(CreateBoxes, TheSixSides_ShowWhatTheFaceShows)
{
    const FrameBuffer front, back;
    QuadFace face = FaceAt({0, 4, 0}, {3, 4, 0}, {3, 0, 0}, {0, 0, 0});
    face.SetFrontTexture(&front);
    face.SetBackTexture(&back);
    face.SetFrontRect(0.1, 0.2, 0.3, 0.4);
    face.SetBackRect(0.5, 0.6, 0.7, 0.8);
    face.backOrientation = 1;
    const auto boxes = QuadMeshCreator().CreateBoxes(OneFace(face));
    for (std::size_t i = 0; i < 6; ++i) {
        const QuadFace& side = boxes[0].GetFace(i);
        EXPECT_EQ(side.frontTexture, &front);
        EXPECT_EQ(side.backTexture, &back);
        EXPECT_EQ(side.frontRect, face.frontRect);
        EXPECT_EQ(side.backRect, face.backRect);
        EXPECT_EQ(side.backOrientation, 1);
    }
}

TEST(QuadMeshCreator, WithoutMemory_ThereAreNoFacesAndNoBoxes)
{
    const QuadMesh grid = Create(GridOf(40, 30, 3, 1));
    std::size_t faces = 1;
    {
        const FailingHeap scope(0);
        faces = Create(GridOf(40, 30, 3, 1)).GetFaceCount();
    }
    EXPECT_EQ(faces, 0u);
    std::uint64_t n = 0;
    for (bool wasRefused = true; wasRefused; ++n) {
        ASSERT_LT(n, 20u);
        const FailingHeap scope(n);
        const std::size_t boxes = QuadMeshCreator().CreateBoxes(grid).size();
        wasRefused = scope.Refused() != 0;
        if (boxes != (wasRefused ? 0 : 3)) {
            FAIL() << boxes << " boxes without block " << n;
        }
    }
    EXPECT_GE(n, 4u) << "a block for each box, and one for all";
}

TEST(CreateBoxes, FacesWithoutFourCorners_AreLeftOut)
{
    QuadFace triangle;
    triangle.corners.resize(3);
    QuadMesh mesh = OneFace(triangle);
    mesh.AddFace(FaceAt({0, 4, 0}, {3, 4, 0}, {3, 0, 0}, {0, 0, 0}));
    const auto boxes = QuadMeshCreator().CreateBoxes(mesh);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].GetFace(0).corners[0], (Vector3{0, 4, 0}));
    EXPECT_TRUE(QuadMeshCreator().CreateBoxes(QuadMesh()).empty());
}

} // namespace
} // namespace kelmora
