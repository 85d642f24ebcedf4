#include "effects/scene3d/glow_slices.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/failing_heap.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {
namespace {

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

std::uint8_t ByteOf(const FrameBuffer& picture, int x, int y, int c)
{
    return picture.GetPixels()[picture.GetStride() * y + 4 * x + c];
}

/// A scene of 17 by 9 pixels, two pictures of which faces show parts, and a glow that reaches far.
class GlowSlicesTest : public testing::Test {
protected:
    GlowSlicesTest() : GlowSlicesTest(MemoryHabits{}) {}

    explicit GlowSlicesTest(const MemoryHabits& habits) : m_provider(habits)
    {
        m_host.SetMemory(&m_provider);
        const VideoFrame canvas = m_out.Frame(), first = m_first.Frame(), second = m_second.Frame();
        m_scene.SetCanvas(&canvas);
        m_firstView.AttachFrame(&first);
        m_secondView.AttachFrame(&second);
    }

    /// A face over the whole canvas that shows columns 0 to 16 `u` and rows 0 to 8 `v`.
    QuadFace Showing(const FrameBuffer& picture, double u, double v) const
    {
        return {{-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, &picture, nullptr, 0, {0, 0, u, v}, {}};
    }

    static QuadFace Turned(QuadFace face)
    {
        face.TransformInPlace(Matrix4::Scaling(-1, 1, 1));
        return face;
    }

    static FaceOrder InOrder(const QuadMesh& faces)
    {
        FaceOrder order;
        for (std::size_t i = 0; i < faces.GetFaceCount(); ++i)
            EXPECT_TRUE(order.push_back(i));
        return order;
    }

    bool Make(GlowSlices& slices, MemoryAllocator& allocator, QuadMesh& faces)
    {
        return slices.Make(m_scene, faces, InOrder(faces),
                           [&](const FrameBuffer&) { return PRDreamGlowEffect(5, 0.4f, 0.5f, allocator); });
    }

    /// All but working rows.
    std::vector<std::pair<int, int>> PicturesTaken() const
    {
        std::vector<std::pair<int, int>> sizes;
        for (const MemoryCall& call : m_provider.Calls())
            if (call.kind == MemoryCall::AllocImage && call.height > 1)
                sizes.emplace_back(call.width, call.height);
        return sizes;
    }

    /// The whole first picture, glowing.
    GuardedPicture WholeGlow() const
    {
        const GuardedPicture whole = m_first;
        const VideoFrame frame = whole.Frame();
        FrameBuffer view;
        view.AttachFrame(&frame);
        MemoryAllocator memory;
        PRDreamGlowEffect(5, 0.4f, 0.5f, memory).Apply(&view);
        return whole;
    }

    GuardedPicture m_out = Noisy(17, 9, PF_BGRA8, 1);
    GuardedPicture m_first = Noisy(17, 9, PF_BGRA8, 2), m_second = Noisy(17, 9, PF_BGRA8, 3);
    FrameBuffer m_firstView, m_secondView;
    FakeMemoryProvider m_provider;
    FakeHost m_host;
    Scene3D m_scene;
};

TEST_F(GlowSlicesTest, Make_EachPartThatIsShown_IsTakenOnce)
{
    MemoryAllocator allocator(&m_host);
    GlowSlices slices(allocator);
    QuadMesh faces;
    for (const QuadFace& face : {Showing(m_firstView, 0.25, 0.5), Showing(m_firstView, 0.25, 0.5),
                                 Turned(Showing(m_firstView, 1, 1)), Showing(m_secondView, 0.25, 0.5),
                                 Showing(m_firstView, 0.5, 0.5)})
        ASSERT_TRUE(faces.AddFace(face));
    ASSERT_TRUE(Make(slices, allocator, faces));
    EXPECT_EQ(PicturesTaken(), (std::vector<std::pair<int, int>>{{5, 5}, {5, 5}, {9, 5}}));
    EXPECT_EQ(faces.GetFace(0).frontTexture, faces.GetFace(1).frontTexture);
    EXPECT_NE(faces.GetFace(0).frontTexture, faces.GetFace(3).frontTexture);
    EXPECT_EQ(faces.GetFace(2).frontTexture, &m_firstView) << "turned away";
    EXPECT_EQ(faces.GetFace(4).GetSourceRect(false), (SourceRect{0, 0, 9, 5}));
}

TEST_F(GlowSlicesTest, Make_APart_GlowsAsInTheWholePicture)
{
    MemoryAllocator allocator(&m_host);
    GlowSlices slices(allocator);
    QuadMesh faces;
    QuadFace face = Showing(m_firstView, 0.75, 1);
    face.SetFrontRect(0.25, 0.5, 0.75, 1.0); // columns 4 to 12, rows 4 to 8
    ASSERT_TRUE(faces.AddFace(face));
    ASSERT_TRUE(Make(slices, allocator, faces));
    const FrameBuffer& slice = *faces.GetFace(0).frontTexture;
    ASSERT_EQ(slice.GetWidth(), 9);
    ASSERT_EQ(slice.GetHeight(), 5);
    const GuardedPicture whole = WholeGlow();
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 9; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(ByteOf(slice, x, y, c), whole.Byte(x + 4, y + 4, c)) << x << ", " << y;
}

TEST_F(GlowSlicesTest, Make_APartThatSticksOut_IsTransparentWhereThePictureEnds)
{
    MemoryAllocator allocator(&m_host);
    GlowSlices slices(allocator);
    QuadMesh faces;
    ASSERT_TRUE(faces.AddFace(Showing(m_firstView, 18.0 / 16, 9.0 / 8))); // 19 columns, 10 rows
    ASSERT_TRUE(Make(slices, allocator, faces));
    const FrameBuffer& slice = *faces.GetFace(0).frontTexture;
    ASSERT_EQ(slice.GetWidth(), 19);
    ASSERT_EQ(slice.GetHeight(), 10);
    const GuardedPicture whole = WholeGlow();
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 19; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(ByteOf(slice, x, y, c), x < 17 && y < 9 ? whole.Byte(x, y, c) : 0);
}

TEST_F(GlowSlicesTest, Make_PartsOutsideThePicture_AreLeftAsTheyAre)
{
    MemoryAllocator allocator(&m_host);
    GlowSlices slices(allocator);
    QuadMesh faces;
    for (const double wild : {-1.0, 2.0, 1e30, -1e30}) {
        QuadFace face = Showing(m_firstView, 1, 1);
        face.SetFrontRect(wild, 0, wild, 1);
        ASSERT_TRUE(faces.AddFace(face));
        face.SetFrontRect(0, wild, 1, wild);
        ASSERT_TRUE(faces.AddFace(face));
    }
    EXPECT_TRUE(Make(slices, allocator, faces));
    EXPECT_TRUE(m_provider.Calls().empty());
    for (std::size_t i = 0; i < faces.GetFaceCount(); ++i)
        EXPECT_EQ(faces.GetFace(i).frontTexture, &m_firstView);
}

TEST_F(GlowSlicesTest, Drawn_AfterTheLastFaceOfAPart_GivesItsMemoryBack)
{
    MemoryAllocator allocator(&m_host);
    GlowSlices slices(allocator);
    QuadMesh faces;
    for (const double u : {0.25, 0.5, 0.25})
        ASSERT_TRUE(faces.AddFace(Showing(m_firstView, u, 1)));
    ASSERT_TRUE(Make(slices, allocator, faces));
    EXPECT_EQ(m_provider.OpenBlocks(), 2u);
    slices.Drawn(0);
    EXPECT_EQ(m_provider.OpenBlocks(), 2u);
    slices.Drawn(1);
    EXPECT_EQ(m_provider.OpenBlocks(), 1u);
    slices.Drawn(2);
    EXPECT_EQ(m_provider.OpenBlocks(), 0u);
}

TEST_F(GlowSlicesTest, Make_WithoutMemoryForTheLists_LeavesTheFaces)
{
    for (std::uint64_t n = 0; n < 2; ++n) {
        MemoryAllocator allocator(&m_host);
        GlowSlices slices(allocator);
        QuadMesh faces;
        ASSERT_TRUE(faces.AddFace(Showing(m_firstView, 1, 1)));
        const FaceOrder order = InOrder(faces);
        bool isMade = true;
        {
            const FailingHeap scope(n);
            isMade = slices.Make(m_scene, faces, order,
                                 [&](const FrameBuffer&) { return PRDreamGlowEffect(5, 1, 1, allocator); });
        }
        EXPECT_FALSE(isMade);
        EXPECT_EQ(faces.GetFace(0).frontTexture, &m_firstView);
        EXPECT_TRUE(m_provider.Calls().empty());
    }
}

class GlowSlicesRefusedTest : public GlowSlicesTest {
protected:
    GlowSlicesRefusedTest() : GlowSlicesTest({.refuseOnly = 1}) {}
};

TEST_F(GlowSlicesRefusedTest, Make_WithoutMemoryForOnePart_LeavesAllFaces)
{
    MemoryAllocator allocator(&m_host);
    QuadMesh faces;
    {
        GlowSlices slices(allocator);
        ASSERT_TRUE(faces.AddFace(Showing(m_firstView, 0.25, 1)));
        ASSERT_TRUE(faces.AddFace(Showing(m_firstView, 0.5, 1)));
        EXPECT_FALSE(Make(slices, allocator, faces));
        for (std::size_t i = 0; i < 2; ++i)
            EXPECT_EQ(faces.GetFace(i).frontTexture, &m_firstView);
        EXPECT_EQ(m_provider.OpenBlocks(), 0u) << "the faces that do without need what memory there is";
    }
    EXPECT_EQ(m_provider.OpenBlocks(), 0u);
}

} // namespace
} // namespace kelmora
