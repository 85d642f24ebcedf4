#include "effects/scene3d/quad_face.h"

#include <array>
#include <limits>

#include <gtest/gtest.h>

#include "contract/video_frame.h"

namespace kelmora {
namespace {

/// A view that has a size; its pixels are never read here.
class Texture {
public:
    Texture(int width, int height)
    {
        view.Attach(m_pixel.data(), width, height, 4 * width, 4, PF_BGRA8, false);
    }

    FrameBuffer view;

private:
    std::array<std::uint8_t, 4> m_pixel = {};
};

constexpr std::array<Vector3, 4> kCorners = {{{-1, 2, 0}, {3, 2, 0}, {3, 0, 4}, {-1, 0, 4}}};

QuadFace FaceAt(const std::array<Vector3, 4>& c)
{
    QuadFace face;
    face.SetCorners(c[0], c[1], c[2], c[3]);
    return face;
}

std::vector<Vector3> CornersOf(const QuadFace& face)
{
    const QuadFace::Corners corners = face.GetCorners();
    return {corners.begin(), corners.end()};
}

TEST(QuadFace, Default_HasFourZeroCornersAndWholeTextures)
{
    const QuadFace face;
    EXPECT_EQ(CornersOf(face), std::vector<Vector3>(4));
    EXPECT_EQ(face.frontRect, (TextureRect{0, 0, 1, 1}));
    EXPECT_EQ(face.backRect, (TextureRect{0, 0, 1, 1}));
    EXPECT_EQ(face.frontTexture, nullptr);
    EXPECT_EQ(face.backTexture, nullptr);
    EXPECT_EQ(face.backOrientation, 0);
}

TEST(QuadFace, FullConstructorAndCopy_KeepAllParts)
{
    const Texture front(2, 2), back(3, 3);
    const QuadFace face(kCorners[0], kCorners[1], kCorners[2], kCorners[3], &front.view, &back.view, 5,
                        {0.1, 0.2, 0.3, 0.4}, {0.5, 0.6, 0.7, 0.8});
    const QuadFace copy = face;
    EXPECT_EQ(CornersOf(copy), std::vector<Vector3>(kCorners.begin(), kCorners.end()));
    EXPECT_EQ(copy.frontTexture, &front.view);
    EXPECT_EQ(copy.backTexture, &back.view);
    EXPECT_EQ(copy.backOrientation, 5);
    EXPECT_EQ(copy.frontRect, (TextureRect{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(copy.backRect, (TextureRect{0.5, 0.6, 0.7, 0.8}));
}

TEST(QuadFace, IsValid_WantsCornersAndAFrontTexture)
{
    const Texture texture(2, 2);
    QuadFace face;
    EXPECT_FALSE(face.IsValid());
    face.SetBackTexture(&texture.view);
    EXPECT_FALSE(face.IsValid());
    face.SetFrontTexture(&texture.view);
    EXPECT_TRUE(face.IsValid());
    face.corners.clear();
    EXPECT_FALSE(face.IsValid());
}

TEST(QuadFace, GetTexture_WithoutABackTexture_IsTheFrontOne)
{
    const Texture front(2, 2), back(3, 3);
    QuadFace face;
    face.SetFrontTexture(&front.view);
    EXPECT_EQ(face.GetTexture(false), &front.view);
    EXPECT_EQ(face.GetTexture(true), &front.view);
    face.SetBackTexture(&back.view);
    EXPECT_EQ(face.GetTexture(false), &front.view);
    EXPECT_EQ(face.GetTexture(true), &back.view);
}

TEST(QuadFace, GetSourceRect_IncludesBothEdges)
{
    const Texture texture(11, 5);
    QuadFace face;
    face.SetFrontTexture(&texture.view);
    EXPECT_EQ(face.GetSourceRect(false), (SourceRect{0, 0, 11, 5}));
    face.SetFrontRect(0.25, 0.5, 0.5, 1.0); // 3.0, 2.5, 5.5, 4.5 with the half added
    EXPECT_EQ(face.GetSourceRect(false), (SourceRect{3, 2, 3, 3}));
}

TEST(QuadFace, GetSourceRect_OfTheBack_NeedsABackTexture)
{
    const Texture texture(11, 5);
    QuadFace face;
    face.SetFrontTexture(&texture.view);
    face.SetFrontRect(0.0, 0.0, 0.5, 0.5);
    face.SetBackRect(0.5, 0.5, 1.0, 1.0);
    EXPECT_EQ(face.GetSourceRect(true), (SourceRect{0, 0, 6, 3}));
    face.SetBackTexture(&texture.view);
    EXPECT_EQ(face.GetSourceRect(true), (SourceRect{5, 2, 6, 3}));
    EXPECT_EQ(face.GetSourceRect(false), (SourceRect{0, 0, 6, 3}));
}

TEST(QuadFace, Kept_GetSourceRect_OfTheBack_HasTheSizeOfTheFrontTexture)
{
    const Texture front(11, 5), back(31, 21);
    QuadFace face;
    face.SetFrontTexture(&front.view);
    face.SetBackTexture(&back.view);
    EXPECT_EQ(face.GetSourceRect(true), (SourceRect{0, 0, 11, 5}));
}

TEST(QuadFace, GetSourceRect_OfNothing_IsAllZeros)
{
    EXPECT_EQ(QuadFace().GetSourceRect(false), SourceRect{});
    const Texture flat(11, 0);
    QuadFace face;
    face.SetFrontTexture(&flat.view);
    EXPECT_EQ(face.GetSourceRect(false), SourceRect{});
}

TEST(QuadFace, GetSourceRect_OfWildCoordinates_IsDefined)
{
    const Texture texture(11, 5);
    QuadFace face;
    face.SetFrontTexture(&texture.view);
    face.SetFrontRect(-1e300, std::numeric_limits<double>::quiet_NaN(), 1e300, 1.0);
    const int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    EXPECT_EQ(face.GetSourceRect(false), (SourceRect{least, 0, most, 5}));
}

TEST(QuadFace, GetCornerOrder_OfTheFront_IsAsGiven)
{
    QuadFace face;
    for (const int orientation : {0, 1, 2, -1}) {
        face.backOrientation = orientation;
        EXPECT_EQ(face.GetCornerOrder(false), (std::array<std::size_t, 4>{0, 1, 2, 3}));
    }
}

TEST(QuadFace, GetCornerOrder_OfTheBack_FollowsTheOrientation)
{
    QuadFace face;
    EXPECT_EQ(face.GetCornerOrder(true), (std::array<std::size_t, 4>{1, 0, 3, 2}));
    face.backOrientation = 1;
    EXPECT_EQ(face.GetCornerOrder(true), (std::array<std::size_t, 4>{3, 2, 1, 0}));
    for (const int orientation : {2, -1, 1000}) {
        face.backOrientation = orientation;
        EXPECT_EQ(face.GetCornerOrder(true), (std::array<std::size_t, 4>{0, 1, 2, 3}));
    }
}

TEST(QuadFace, Transforms_MoveEachCorner)
{
    const Matrix4 move = Matrix4::Translation(1.0, 2.0, 3.0);
    QuadFace face = FaceAt(kCorners);
    const std::array<Vector3, 4> expected = {{{0, 4, 3}, {4, 4, 3}, {4, 2, 7}, {0, 2, 7}}};
    EXPECT_EQ(face.TransformedCorners(move), expected);
    EXPECT_EQ(face.GetCorners()[0], kCorners[0]);
    face.TransformInPlace(move);
    EXPECT_EQ(CornersOf(face), std::vector<Vector3>(expected.begin(), expected.end()));
}

TEST(QuadFace, Transforms_OfAFaceWithoutFourCorners_GiveZerosAndMoveNothing)
{
    const Matrix4 move = Matrix4::Translation(1.0, 2.0, 3.0);
    for (const std::size_t count : {0u, 1u, 3u}) {
        QuadFace face = FaceAt(kCorners);
        face.corners.resize(count);
        EXPECT_EQ(face.TransformedCorners(move), (std::array<Vector3, 4>{}));
        face.TransformInPlace(move);
        EXPECT_EQ(CornersOf(face), std::vector<Vector3>(kCorners.begin(), kCorners.begin() + count));
    }
}

TEST(QuadFace, GetCenter_IsTheMeanOfTheCorners)
{
    QuadFace face = FaceAt(kCorners);
    EXPECT_EQ(face.GetCenter(), (Vector3{1, 1, 2}));
    face.corners.resize(2);
    EXPECT_EQ(face.GetCenter(), (Vector3{1, 2, 0}));
    face.corners.clear();
    EXPECT_EQ(face.GetCenter(), Vector3{});
}

TEST(QuadFace, FlipBackRect_MirrorsOneAxis)
{
    QuadFace face;
    face.SetFrontRect(0.0, 0.25, 0.5, 1.0);
    face.SetBackRect(0.125, 0.25, 0.5, 0.875);
    face.FlipBackRect(true);
    EXPECT_EQ(face.backRect, (TextureRect{0.5, 0.25, 0.875, 0.875}));
    face.FlipBackRect(false);
    EXPECT_EQ(face.backRect, (TextureRect{0.5, 0.125, 0.875, 0.75}));
    EXPECT_EQ(face.frontRect, (TextureRect{0.0, 0.25, 0.5, 1.0}));
}

} // namespace
} // namespace kelmora
