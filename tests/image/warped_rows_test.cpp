#include "image/warped_rows.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/row_mix.h"
#include "image/scratch.h"
#include "tests/image/buffers.h"
#include "tests/image/variants.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {
namespace {

constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

Transform2D Moved(float x, float y)
{
    Transform2D move;
    move.Translate(x, y);
    return move;
}

Transform2D Zoomed(float x, float y, float dx, float dy)
{
    Transform2D move;
    move.Scale(x, y);
    move.Translate(dx, dy);
    return move;
}

/// Moves without rotation: whole and broken shifts, in and out of the picture, zooms both ways, mirrored.
std::vector<Transform2D> Moves()
{
    return {Transform2D(),
            Moved(3, 0),
            Moved(0, -2),
            Moved(2.25f, 0),
            Moved(0, 1.5f),
            Moved(-3.75f, 2.125f),
            Moved(0.0004f, 0),
            Moved(-0.0004f, 0.0004f),
            Moved(100, 0),
            Moved(0, -100),
            Zoomed(1.3f, 1.3f, -2, -3),
            Zoomed(0.6f, 0.7f, 1.5f, 2.5f),
            Zoomed(0.2f, 0.2f, 4, 4),
            Zoomed(-1, 1.1f, 16, 0)};
}

/// The rows of a whole picture, against WarpAffine on transparent black.
void CheckRows(int width, int height, std::uint32_t format, const Transform2D& move)
{
    GuardedPicture picture(width, height, format, {.slack = 12}), warped(width, height, format);
    picture.FillNoise(1);
    warped.FillBytes(0);
    const FrameBuffer source = ViewOf(picture);
    FrameBuffer warpedView = ViewOf(warped);
    ImageOps ops;
    ASSERT_TRUE(ops.WarpAffine(source, warpedView, move));

    WarpedRows rows(source, {width, height}, move);
    ASSERT_TRUE(rows.AreServed());
    MemoryAllocator allocator;
    Scratch scratch;
    ASSERT_TRUE(scratch.Allocate(allocator, WarpedRows::WorkBytes(width, IsFloat(format))));
    rows.Begin(scratch.Bytes());
    GuardedPicture row(width, 1, format);
    for (int y = 0; y < height; ++y) {
        rows.Row(y, row.Row(0));
        EXPECT_EQ(std::memcmp(row.Row(0), warped.Row(y), static_cast<std::size_t>(row.Stride())), 0) << y;
    }
    row.Check();
}

TEST(WarpedRows, EveryMove_GivesWhatWarpAffineGives)
{
    ForEachVariant([] {
        for (const std::uint32_t format : kFormats)
            for (const int width : {1, 2, 17, 40})
                for (const Transform2D& move : Moves())
                    CheckRows(width, 9, format, move);
    });
}

TEST(WarpedRows, RotationsPlanesAndMissingPixels_AreNotServed)
{
    Transform2D turned;
    turned.Rotate(0.1f);
    const GuardedPicture picture(8, 8, PF_BGRA8), plane(8, 8, PF_Mask8);
    EXPECT_FALSE(WarpedRows(ViewOf(picture), {8, 8}, turned).AreServed());
    EXPECT_FALSE(WarpedRows(ViewOf(plane), {8, 8}, Transform2D()).AreServed());
    EXPECT_FALSE(WarpedRows(ViewOf(picture), {9, 8}, Transform2D()).AreServed());
    EXPECT_FALSE(WarpedRows(ViewOf(picture), {8, 9}, Transform2D()).AreServed());
    EXPECT_FALSE(WarpedRows(ViewOf(picture), {0, 0}, Transform2D()).AreServed());
    EXPECT_FALSE(WarpedRows(FrameBuffer(), {8, 8}, Transform2D()).AreServed());
}

TEST(RowMix, EveryFormatAndWeight_GivesWhatMixGives)
{
    ForEachVariant([] {
        for (const std::uint32_t format : kFormats)
            for (const int weight : {0, 1, 64, 127, 254, 255}) {
                GuardedPicture first(21, 1, format), second(21, 1, format);
                first.FillNoise(1);
                second.FillNoise(2);
                GuardedPicture mixed = second;
                FrameBuffer view = ViewOf(mixed);
                ASSERT_TRUE(ImageOps().Mix(ViewOf(first), view, 255 - weight, weight));
                RowMix(format, 255 - weight, weight)(first.Row(0), second.Row(0), 21);
                EXPECT_TRUE(Equal(second, mixed)) << format << ", " << weight;
            }
    });
}

} // namespace
} // namespace kelmora
