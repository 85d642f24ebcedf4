#include "effects/painterly/water_color.h"

#include <algorithm>
#include <cstdint>

#include "effects/common/knob_reader.h"
#include "effects/painterly/water_color_plan.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/median.h"
#include "image/primitives/neighbourhood.h"
#include "image/primitives/pad.h"

namespace kelmora {
namespace {

using water_color::Brush;
using water_color::Knobs;

/// Asks for the knobs in the order that hosts have always seen.
Knobs ReadKnobs(IVideoHost& host)
{
    KnobReader read(host);
    Knobs knobs;
    knobs.brushWidth = read.Level(4);
    knobs.contrast = read.Level(3);
    knobs.brightness = read.Level(2);
    knobs.color = read.Level(1);
    knobs.colorShift = read.Level(0);
    knobs.blend = read.Level(5);
    return knobs;
}

/// Rows that pass through the steps together, while the caches hold them.
constexpr int kStripRows = 8;

/// The `count` rows from `first` on.
void AttachRows(FrameBuffer& view, const FrameBuffer& picture, int first, int count)
{
    view.Attach(picture.PixelAddress(0, first, 0), picture.GetWidth(), count, picture.GetStride(),
                picture.GetPixelBytes(), picture.GetFormat(), false);
}

/// `from` as alpha-last bytes.
bool ToBytes(const FrameBuffer& from, FrameBuffer& bytes)
{
    ImageOps ops;
    return from.GetFormat() == PF_ARGB8 ? ops.ReverseChannels(from, bytes) : ops.Convert(from, bytes);
}

/// Alpha-last bytes as the format of `to`.
bool FromBytes(const FrameBuffer& bytes, FrameBuffer& to)
{
    ImageOps ops;
    return to.GetFormat() == PF_ARGB8 ? ops.ReverseChannels(bytes, to) : ops.Convert(bytes, to);
}

/// What is painted, in alpha-last bytes, in the middle of a picture that has room for its extended edges. Each
/// median moves it up and to the left, out of the way of what is still to be read, so that one picture does for all
/// steps. Its alpha is nothing that counts.
class Painting {
public:
    Painting(Size size, const Brush& brush) : m_size(size), m_brush(brush) {}

    /// False when there is no memory, also for a brush that no picture can be padded for.
    bool Allocate(MemoryAllocator& allocator)
    {
        if (m_brush.radiusX > water_color::kMostRadius || m_size.height > kMostRows)
            return false;
        // A pixel around the last place for the sharpening, and the medians' steps beyond it.
        m_left = 1 + m_brush.passes * m_brush.radiusX;
        m_top = 1 + m_brush.passes * (m_brush.radiusY + 1);
        return m_room.Allocate(m_left + m_size.width + std::max(m_brush.radiusX, 1),
                               m_top + m_size.height + std::max(m_brush.radiusY, 1), 4, &allocator, PF_BGRA8,
                               false);
    }

    /// The `count` rows from `first` on.
    void AttachRows(FrameBuffer& view, int first, int count) const
    {
        view.Attach(Pixel(0, first), m_size.width, count, m_room.GetStride(), 4, PF_BGRA8, false);
    }

    /// The median of every pixel's surroundings. False when there is no memory.
    bool RunMedian()
    {
        const int x = m_brush.radiusX, y = m_brush.radiusY, step = m_room.GetStride();
        if (!ExtendEdges(x, y)
            || pxMedian_8u_A3(Pixel(0, 0), step, Pixel(-x, -y - 1), step, m_size.width, m_size.height,
                              2 * x + 1, 2 * y + 1, x, y)
                != pxOk)
            return false;
        m_left -= x;
        m_top -= y + 1;
        return true;
    }

    /// Copies of its edge pixels on every side.
    bool ExtendEdges(int x, int y)
    {
        const int step = m_room.GetStride();
        return pxPadReplicate_8u_C4(Pixel(0, 0), step, m_size.width, m_size.height, Pixel(-x, -y), step,
                                    m_size.width + 2 * x, m_size.height + 2 * y, y, x)
            == pxOk;
    }

    /// The rows from `first` on, sharpened, to `rows`. The edges are extended by a pixel.
    bool SharpenRows(int first, FrameBuffer& rows) const
    {
        return pxSharpen3x3_8u_A3(Pixel(0, first), m_room.GetStride(), rows.GetPixels(), rows.GetStride(),
                                  m_size.width, rows.GetHeight())
            == pxOk;
    }

private:
    static constexpr int kMostRows = 1 << 30; ///< more would not be allocated; margins are added below that

    std::uint8_t* Pixel(int x, int y) const { return m_room.PixelAddress(m_left + x, m_top + y, 0); }

    const Size m_size;
    const Brush m_brush;
    int m_left = 0, m_top = 0; ///< of what is painted
    FrameBuffer m_room;
};

/// What a frame's steps pass on.
struct Work {
    const FrameBuffer& picture;
    FrameBuffer& output;
    Painting& painting;
    FrameBuffer bytes = {}; ///< a strip in alpha-last bytes, where the pictures are none
    FrameBuffer strip = {}; ///< one of the output, where that is the picture's own memory
};

bool AllocateStrips(Work& work, MemoryAllocator& allocator)
{
    const Size size = {work.output.GetWidth(), std::min(work.output.GetHeight(), kStripRows)};
    return (work.picture.GetFormat() == PF_BGRA8
            || work.bytes.Allocate(size.width, size.height, 4, &allocator, PF_BGRA8, false))
        && (!Overlap(work.picture, work.output) || AllocateLike(work.strip, work.output, size, allocator));
}

template <class Strip>
void ForStrips(const FrameBuffer& picture, Strip&& strip)
{
    for (int y = 0; y < picture.GetHeight(); y += kStripRows)
        strip(y, std::min(picture.GetHeight() - y, kStripRows));
}

/// Lays the picture's colours, adjusted, on the painting.
void AdjustColours(Work& work, const Knobs& knobs, MemoryAllocator& allocator)
{
    ImageOps ops;
    ForStrips(work.output, [&](int first, int count) {
        FrameBuffer picture, bytes, painted;
        AttachRows(picture, work.picture, first, count);
        work.painting.AttachRows(painted, first, count);
        if (work.bytes.GetPixels() && ToBytes(picture, work.bytes))
            AttachRows(bytes, work.bytes, 0, count);
        else
            bytes.AttachBuffer(picture);
        ops.AdjustColor(bytes, painted, knobs.contrast, knobs.brightness, knobs.color,
                        water_color::HueOf(knobs.colorShift), &allocator);
    });
}

/// Sharpens the painting, brings it home and blends it with the picture.
void Finish(Work& work, float blend)
{
    ImageOps ops;
    const int alpha = AlphaIndex(work.picture.GetFormat());
    ForStrips(work.output, [&](int first, int count) {
        FrameBuffer picture, output, painted, bytes;
        AttachRows(picture, work.picture, first, count);
        AttachRows(output, work.output, first, count);
        const bool inPlace = work.strip.GetPixels() != nullptr;
        AttachRows(painted, inPlace ? work.strip : output, 0, count);
        if (work.bytes.GetPixels()) {
            AttachRows(bytes, work.bytes, 0, count);
            work.painting.SharpenRows(first, bytes);
            FromBytes(bytes, painted);
        } else {
            work.painting.SharpenRows(first, painted);
        }
        if (blend < 1.0f)
            ops.AddWeighted(picture, painted, painted, 1.0f - blend, blend);
        ops.CopyChannel(picture, painted, alpha, alpha);
        if (inPlace)
            ops.Copy(painted, output);
    });
}

bool IsSameMemory(const FrameBuffer& picture, const FrameBuffer& output)
{
    return picture.GetPixels() == output.GetPixels() && picture.GetStride() == output.GetStride();
}

} // namespace

bool CWaterColor::RenderFrame(const RenderCall& call)
{
    if (!call.info)
        return false;
    MemoryAllocator allocator(&call.host);
    const Knobs knobs = ReadKnobs(call.host);

    FrameBuffer given, target, output, picture;
    given.AttachFrame(&call.firstPicture);
    target.AttachFrame(&call.output);
    const Size size = CommonSize(given, target);
    if (!AreServedAlike(given, target) || IsEmpty(size))
        return false;
    AttachCorner(output, target, size);
    if (IsSameMemory(given, output))
        picture.AttachBuffer(given);
    else if (!SetAside(given, output, picture, allocator))
        return false;

    // Alpha-last bytes take the brush from the picture's own height, the others from that of what is painted.
    const int height = picture.GetFormat() == PF_BGRA8 ? picture.GetHeight() : size.height;
    const Brush brush = water_color::BrushFor(knobs.brushWidth, height, IsHalfHeight(call.info));
    MemoryAllocator own;
    Painting painting(size, brush);
    Work work = {picture, output, painting};
    if (!painting.Allocate(own) || !AllocateStrips(work, allocator))
        return false;

    AdjustColours(work, knobs, allocator);
    for (int pass = 0; pass < brush.passes; ++pass)
        if (!painting.RunMedian())
            return false;
    painting.ExtendEdges(1, 1);
    Finish(work, knobs.blend);
    return true;
}

} // namespace kelmora
