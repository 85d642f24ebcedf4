#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "contract/frame_processor.h"
#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"

namespace kelmora::host {
namespace {

using Pixels = std::vector<std::uint8_t>;

/// Calls `look` with a new toolbox, skips the check when the library makes none.
void WithProcessor(CheckRun& run, const std::function<void(IFrameProcessor& processor)>& look)
{
    const LibraryFile file(run.File());
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const Held<IFrameProcessor> processor(library->CreateFrameProcessor());
    if (processor == nullptr)
        run.Skip("the library makes no frame processor");
    else
        look(*processor);
}

/// A size of 1 to 9 pixels in the ways in which pictures lie in memory.
std::vector<FrameShape> SmallShapes(PixelFormat format)
{
    std::vector<FrameShape> shapes;
    for (std::int32_t side = 1; side <= 9; ++side) {
        FrameShape shape = ShapeOf(side, 10 - side, format);
        shapes.push_back(shape);
        shape.slack = 8;
        shape.shift = 4;
        shapes.push_back(shape);
        shape.upward = true;
        shapes.push_back(shape);
    }
    return shapes;
}

/// Packed YCbCr of that shape: two bytes per pixel.
FrameShape PackedShape(FrameShape shape)
{
    shape.format = PF_Packed8;
    shape.pixelBytes = 2;
    return shape;
}

std::string Text(const FrameShape& shape)
{
    return CaseText(shape) + (shape.upward ? ", rows upward" : shape.slack != 0 ? ", rows apart" : "");
}

/// The operation's result, with a finding when it is not true or a guard has moved.
Pixels Made(CheckRun& run, bool done, const GuardedFrame& source, const GuardedFrame& result)
{
    run.Expect(done, "the answer should be true");
    run.Expect(source.AreGuardsIntact() && result.AreGuardsIntact(), "bytes around a picture were written");
    return result.Pixels();
}

// --- copies ---------------------------------------------------------------------------------------------

Pixels Flipped(const FrameShape& shape, const Pixels& pixels)
{
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{shape.width} * shape.pixelBytes;
    Pixels flipped;
    for (auto row = pixels.end(); row != pixels.begin(); row -= rowBytes)
        flipped.insert(flipped.end(), row - rowBytes, row);
    return flipped;
}

Pixels Reversed(const FrameShape& shape, Pixels pixels)
{
    for (auto pixel = pixels.begin(); pixel != pixels.end(); pixel += shape.pixelBytes)
        std::reverse(pixel, pixel + shape.pixelBytes);
    return pixels;
}

void LookAtCopies(CheckRun& run, IFrameProcessor& processor, const FrameShape& shape)
{
    GuardedFrame source(shape);
    source.FillNoise(run.Seed());
    const Pixels before = source.Pixels();
    const VideoFrame from = source.Record();
    {
        GuardedFrame result(shape);
        VideoFrame to = result.Record();
        run.At("FlipVerticalTo, " + Text(shape));
        const bool done = processor.FlipVerticalTo(&from, &to);
        ExpectSame(run, shape, Made(run, done, source, result), Flipped(shape, before),
                   "the rows should be upside down");
    }
    if (shape.pixelBytes == 4) {
        GuardedFrame result(shape);
        VideoFrame to = result.Record();
        run.At("Copy, " + Text(shape));
        const bool copied = processor.Copy(&from, &to);
        ExpectSame(run, shape, Made(run, copied, source, result), before, "the pixels should be copied");
        run.At("ReverseChannels, " + Text(shape));
        const bool reversed = processor.ReverseChannels(&from, &to);
        ExpectSame(run, shape, Made(run, reversed, source, result), Reversed(shape, before),
                   "the channels should be turned round");
    }
    ExpectSame(run, shape, source.Pixels(), before, "the source should stay");
    run.At("FlipVertical, " + Text(shape));
    VideoFrame itself = source.Record();
    const bool done = processor.FlipVertical(&itself);
    ExpectSame(run, shape, Made(run, done, source, source), Flipped(shape, before),
               "the rows should be upside down");
}

void CopiesAndFlips(CheckRun& run)
{
    WithProcessor(run, [&run](IFrameProcessor& processor) {
        for (const PixelFormat format : kPictureFormats)
            for (const FrameShape& shape : SmallShapes(format))
                LookAtCopies(run, processor, shape);
    });
}

// --- resizes --------------------------------------------------------------------------------------------

/// Each pixel twice in both directions.
Pixels Doubled(const FrameShape& shape, const Pixels& pixels)
{
    const auto width = static_cast<std::size_t>(shape.width), height = static_cast<std::size_t>(shape.height);
    Pixels doubled;
    for (std::size_t y = 0; y < 2 * height; ++y)
        for (std::size_t x = 0; x < 2 * width; ++x) {
            const std::uint8_t* const pixel = &pixels[(y / 2 * width + x / 2) * 4];
            doubled.insert(doubled.end(), pixel, pixel + 4);
        }
    return doubled;
}

void LookAtResizes(CheckRun& run, IFrameProcessor& processor, const FrameShape& shape)
{
    GuardedFrame source(shape);
    source.FillNoise(run.Seed());
    const Pixels before = source.Pixels();
    const VideoFrame from = source.Record();
    const FrameRect whole = {0, 0, shape.width - 1, shape.height - 1};
    for (const std::int32_t quality : {0, 1, 2}) {
        GuardedFrame result(shape);
        VideoFrame to = result.Record();
        run.At("Resize to its own size, quality " + std::to_string(quality) + ", " + Text(shape));
        const bool resized = processor.Resize(&from, &to, quality);
        ExpectSame(run, shape, Made(run, resized, source, result), before, "the pixels should be copied");
        run.At("ResizeRegion to its own size, quality " + std::to_string(quality) + ", " + Text(shape));
        result.Fill(0);
        const bool done = processor.ResizeRegion(&from, &whole, &to, quality);
        ExpectSame(run, shape, Made(run, done, source, result), before, "the pixels should be copied");
    }
    FrameShape doubleShape = shape;
    doubleShape.width *= 2;
    doubleShape.height *= 2;
    GuardedFrame result(doubleShape);
    VideoFrame to = result.Record();
    run.At("Resize to twice the size, " + Text(shape));
    const bool done = processor.Resize(&from, &to, 0);
    ExpectSame(run, doubleShape, Made(run, done, source, result), Doubled(shape, before),
               "the nearest pixel should be taken");

    source.Fill(0x47);
    for (const std::int32_t quality : {0, 1, 2}) {
        run.At("Resize of one colour, quality " + std::to_string(quality) + ", " + Text(shape));
        const bool even = processor.Resize(&from, &to, quality);
        const Pixels colour(result.Pixels().size(), 0x47);
        ExpectSame(run, doubleShape, Made(run, even, source, result), colour, "the colour should stay");
    }
}

void Resizes(CheckRun& run)
{
    WithProcessor(run, [&run](IFrameProcessor& processor) {
        for (const PixelFormat format : {PF_BGRA8, PF_ARGB8})
            for (const FrameShape& shape : SmallShapes(format))
                LookAtResizes(run, processor, shape);
    });
}

// --- packed YCbCr ---------------------------------------------------------------------------------------

Pixels Repeated(const std::vector<std::uint8_t>& some, std::size_t bytes)
{
    Pixels pixels(bytes);
    for (std::size_t i = 0; i < bytes; ++i)
        pixels[i] = some[i % some.size()];
    return pixels;
}

/// Fills packed pixels with a grey.
void FillGrey(GuardedFrame& packed, std::uint8_t luma)
{
    const VideoFrame record = packed.Record();
    for (std::int32_t y = 0; y < record.height; ++y) {
        auto* const row =
            static_cast<std::uint8_t*>(record.data) + static_cast<std::ptrdiff_t>(record.stride) * y;
        for (std::int32_t x = 0; x < record.width; ++x) {
            row[2 * x] = luma;
            row[2 * x + 1] = 128;
        }
    }
}

struct Grey {
    std::uint8_t luma;
    std::uint8_t level;
};

// ITU-R BT.601 in video range, rounded down: white has become 254.
constexpr std::array kGreys = {Grey{16, 0}, Grey{126, 128}, Grey{235, 254}};

void LookAtConversions(CheckRun& run, IFrameProcessor& processor, const FrameShape& shape)
{
    GuardedFrame bgra(shape);
    GuardedFrame packed(PackedShape(shape));
    VideoFrame colours = bgra.Record(), yuv = packed.Record();
    for (const Grey& grey : kGreys) {
        run.At("YCbCr422ToBGRA, " + Text(shape) + ", luma " + std::to_string(grey.luma));
        FillGrey(packed, grey.luma);
        const bool done = processor.YCbCr422ToBGRA(&yuv, &colours, 77, -1);
        const Pixels expected = Repeated({grey.level, grey.level, grey.level, 77}, bgra.Pixels().size());
        ExpectSame(run, shape, Made(run, done, packed, bgra), expected, "the grey should come out");
    }
    run.At("BGRAToYCbCr422, " + Text(shape));
    bgra.Fill(0xFF);
    const bool done = processor.BGRAToYCbCr422(&colours, &yuv, -1);
    const Pixels expected = Repeated({235, 128}, packed.Pixels().size());
    ExpectSame(run, PackedShape(shape), Made(run, done, bgra, packed), expected, "white should come out");
}

/// A conversion after that of a larger picture: beyond the source the result stays.
void LookForOlderFrames(CheckRun& run, IFrameProcessor& processor)
{
    constexpr std::int32_t kLarge = 12, kSmall = 4;
    const FrameShape large = ShapeOf(kLarge, kLarge, PF_BGRA8);
    GuardedFrame bgra(large), packed(PackedShape(large));
    packed.FillNoise(run.Seed());
    VideoFrame colours = bgra.Record(), yuv = packed.Record();
    processor.YCbCr422ToBGRA(&yuv, &colours, 255, 0);

    run.At("YCbCr422ToBGRA into a larger picture after a larger one");
    bgra.Fill(0x5A);
    VideoFrame small = yuv;
    small.width = small.height = kSmall;
    processor.YCbCr422ToBGRA(&small, &colours, 255, 0);
    const Pixels pixels = bgra.Pixels();
    bool isUntouched = true;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t pixel = i / 4;
        const bool isBeyond = pixel % kLarge >= kSmall || pixel / kLarge >= kSmall;
        isUntouched = isUntouched && (!isBeyond || pixels[i] == 0x5A);
    }
    run.Expect(isUntouched, "nothing should be written beyond the source's size");
}

void Converts(CheckRun& run)
{
    WithProcessor(run, [&run](IFrameProcessor& processor) {
        for (const FrameShape& shape : SmallShapes(PF_BGRA8))
            LookAtConversions(run, processor, shape);
        LookForOlderFrames(run, processor);
    });
}

// --- records that are missing or make no sense -----------------------------------------------------------

/// An operation on a source and a result.
struct Operation {
    const char* name;
    bool (*run)(IFrameProcessor& processor, const VideoFrame* from, VideoFrame* to);
    bool hasSource;
};

constexpr std::int32_t kOrder[4] = {1, 0, 2, 3};
constexpr FrameRect kCorner = {0, 0, 3, 2};

using Box = IFrameProcessor&;
using In = const VideoFrame*;
using Out = VideoFrame*;

constexpr std::array kOperations = {
    Operation{"Copy", [](Box box, In from, Out to) { return box.Copy(from, to); }, true},
    Operation{"Resize", [](Box box, In from, Out to) { return box.Resize(from, to, 1); }, true},
    Operation{"ReverseChannels", [](Box box, In from, Out to) { return box.ReverseChannels(from, to); },
              true},
    Operation{"YCbCr422ToBGRA", [](Box box, In from, Out to) { return box.YCbCr422ToBGRA(from, to, 255, 0); },
              true},
    Operation{"BGRAToYCbCr422", [](Box box, In from, Out to) { return box.BGRAToYCbCr422(from, to, 0); },
              true},
    Operation{"SetChannel", [](Box box, In, Out to) { return box.SetChannel(to, 0, 1); }, false},
    Operation{"AlphaOver", [](Box box, In from, Out to) { return box.AlphaOver(to, from, from, true); },
              true},
    Operation{"PermuteChannels", [](Box box, In, Out to) { return box.PermuteChannels(to, kOrder); }, false},
    Operation{"Premultiply", [](Box box, In, Out to) { return box.Premultiply(to); }, false},
    Operation{"YCbCrToARGB", [](Box box, In from, Out to) { return box.YCbCrToARGB(from, to); }, true},
    Operation{"ARGBToYCbCr", [](Box box, In from, Out to) { return box.ARGBToYCbCr(from, to); }, true},
    Operation{"FlipVertical", [](Box box, In, Out to) { return box.FlipVertical(to); }, false},
    Operation{"FlipVerticalTo", [](Box box, In from, Out to) { return box.FlipVerticalTo(from, to); }, true},
    Operation{"ResizeRegion",
              [](Box box, In from, Out to) { return box.ResizeRegion(from, &kCorner, to, 1); }, true},
};

constexpr std::int32_t kSide = 12;

void NullRecords(CheckRun& run)
{
    WithProcessor(run, [&run](IFrameProcessor& processor) {
        const FrameShape shape = ShapeOf(kSide, kSide, PF_BGRA8);
        GuardedFrame picture(shape);
        picture.FillNoise(run.Seed());
        const Pixels before = picture.Pixels();
        VideoFrame record = picture.Record();
        for (const Operation& operation : kOperations) {
            run.At(operation.name);
            run.Expect(!operation.run(processor, &record, nullptr),
                       "the answer without a result should be false");
            run.Expect(!operation.hasSource || !operation.run(processor, nullptr, &record),
                       "the answer without a source should be false");
            ExpectSame(run, shape, picture.Pixels(), before, "nothing should be written");
        }
        run.At("ResizeRegion");
        run.Expect(!processor.ResizeRegion(&record, nullptr, &record, 1),
                   "the answer without a region should be false");
    });
}

/// All operations from and into a picture whose record was spoilt.
template <class Spoil>
void SpoilEach(CheckRun& run, IFrameProcessor& processor, PixelFormat format, const std::string& how,
               Spoil spoil)
{
    for (const Operation& operation : kOperations) {
        GuardedFrame from(ShapeOf(kSide, kSide, format)), to(ShapeOf(kSide, kSide, format));
        from.FillNoise(run.Seed());
        VideoFrame good = to.Record(), bad = from.Record();
        spoil(bad);
        run.At(std::string(operation.name) + ", " + FormatText(format) + " with " + how);
        static_cast<void>(operation.run(processor, &bad, &good));
        static_cast<void>(operation.run(processor, &good, &bad));
        run.Expect(from.AreGuardsIntact() && to.AreGuardsIntact(), "bytes around a picture were written");
    }
}

void BadRecords(CheckRun& run)
{
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    WithProcessor(run, [&run](IFrameProcessor& processor) {
        for (const PixelFormat format : kPictureFormats) {
            SpoilEach(run, processor, format, "no pixels", [](VideoFrame& frame) { frame.data = nullptr; });
            for (const std::int32_t side : {0, -1, -10, kLeast}) {
                const std::string text = std::to_string(side);
                SpoilEach(run, processor, format, "width " + text,
                          [side](VideoFrame& frame) { frame.width = side; });
                SpoilEach(run, processor, format, "height " + text,
                          [side](VideoFrame& frame) { frame.height = side; });
            }
            for (const std::uint32_t other : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 99u, 0xFFFFFFFFu})
                SpoilEach(run, processor, format, "format " + std::to_string(other),
                          [other](VideoFrame& frame) { frame.format = other; });
            // Fewer bytes than the memory has: more would be a promise that is not kept.
            for (const std::int32_t bytes : {0, 1, 2, 3, 4, -1, -16, kLeast})
                SpoilEach(run, processor, format, "pixelBytes " + std::to_string(bytes),
                          [bytes](VideoFrame& frame) {
                              frame.pixelBytes = bytes < frame.pixelBytes ? bytes : frame.pixelBytes;
                          });
            for (const std::int32_t stride : {0, 1, kSide})
                SpoilEach(run, processor, format, "stride " + std::to_string(stride),
                          [stride](VideoFrame& frame) { frame.stride = stride; });
        }
    });
}

constexpr std::array kChecks = {
    Check{"processor-copies-and-flips", "The toolbox copies, flips and reverses the pixels and no byte more.",
          CopiesAndFlips},
    Check{"processor-resizes", "The toolbox resizes pictures of any size and the regions of them.", Resizes},
    Check{"processor-converts", "The toolbox converts packed YCbCr, and shows no older frame.", Converts},
    Check{"processor-null-records", "Without a record the toolbox says false and writes nothing.",
          NullRecords},
    Check{"processor-bad-records", "Records that make no sense do the toolbox no harm.", BadRecords},
};

} // namespace

constinit const std::span<const Check> kProcessorChecks = kChecks;

} // namespace kelmora::host
