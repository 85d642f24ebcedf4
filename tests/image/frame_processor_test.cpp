#include "image/frame_processor.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "contract/kelmora.h"
#include "tests/image/buffers.h"
#include "tests/reference/blends.h"
#include "tests/reference/copies.h"
#include "tests/reference/picture.h"
#include "tests/reference/resize.h"
#include "tests/reference/ycbcr.h"
#include "tests/support/failing_heap.h"
#include "tests/support/float_state.h"
#include "tests/support/flush_record.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

using reference::Picture;

/// Of floats against the plain versions' doubles.
constexpr double kRounding = 3e-7;

struct Toolbox : testing::Test {
    ~Toolbox() override { EXPECT_EQ(processor->Release(), 0u); }

    FrameProcessor* const processor = new FrameProcessor;
};

/// The ways in which pictures lie in memory.
constexpr PictureLayout kLayouts[] = {
    {},
    {.slack = 1, .shift = 3},
    {.slack = 20, .upward = true, .bottomUp = true},
    {.guard = Guard::PageEnd},
    {.guard = Guard::PageStart, .upward = true},
    {.guard = Guard::PictureEnd, .slack = 8},
    {.guard = Guard::PictureStart, .slack = 4, .upward = true},
};

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed)
{
    GuardedPicture picture(width, height, format);
    picture.FillNoise(seed);
    return picture;
}

/// An operation with some arguments: it writes `out` alone, `a` and `b` are sources.
struct Operation {
    const char* name;
    bool (*run)(IFrameProcessor& processor, const VideoFrame* a, const VideoFrame* b, VideoFrame* out);
    bool readsSource = true;
    bool readsSecond = false;
};

constexpr std::int32_t kOrder[4] = {2, 3, 0, 1};
constexpr FrameRect kCorner = {0, 0, 2, 1};

using Box = IFrameProcessor&;
using In = const VideoFrame*;
using Out = VideoFrame*;

constexpr Operation kOperations[] = {
    {"Copy", [](Box box, In a, In, Out out) { return box.Copy(a, out); }},
    {"Resize, nearest", [](Box box, In a, In, Out out) { return box.Resize(a, out, 0); }},
    {"Resize, linear", [](Box box, In a, In, Out out) { return box.Resize(a, out, 1); }},
    {"Resize, cubic", [](Box box, In a, In, Out out) { return box.Resize(a, out, 2); }},
    {"ReverseChannels", [](Box box, In a, In, Out out) { return box.ReverseChannels(a, out); }},
    {"YCbCr422ToBGRA", [](Box box, In a, In, Out out) { return box.YCbCr422ToBGRA(a, out, 200, 1); }},
    {"BGRAToYCbCr422", [](Box box, In a, In, Out out) { return box.BGRAToYCbCr422(a, out, 1); }},
    {"SetChannel", [](Box box, In, In, Out out) { return box.SetChannel(out, 1, 77); }, false},
    {"AlphaOver", [](Box box, In a, In b, Out out) { return box.AlphaOver(out, a, b, false); }, true, true},
    {"AlphaOver, premultiplied", [](Box box, In a, In b, Out out) { return box.AlphaOver(out, a, b, true); },
     true, true},
    {"PermuteChannels", [](Box box, In, In, Out out) { return box.PermuteChannels(out, kOrder); }, false},
    {"Premultiply", [](Box box, In, In, Out out) { return box.Premultiply(out); }, false},
    {"YCbCrToARGB", [](Box box, In a, In, Out out) { return box.YCbCrToARGB(a, out); }},
    {"ARGBToYCbCr", [](Box box, In a, In, Out out) { return box.ARGBToYCbCr(a, out); }},
    {"FlipVertical", [](Box box, In, In, Out out) { return box.FlipVertical(out); }, false},
    {"FlipVerticalTo", [](Box box, In a, In, Out out) { return box.FlipVerticalTo(a, out); }},
    {"ResizeRegion", [](Box box, In a, In, Out out) { return box.ResizeRegion(a, &kCorner, out, 1); }},
};

/// Composites step by whole pixels from row to row, so that they are not for every stride.
bool Serves(const Operation& operation, const PictureLayout& layout)
{
    return !operation.readsSecond || layout.slack % 4 == 0;
}

/// The flips are content with every record.
bool IsFlip(const Operation& operation)
{
    return std::strncmp(operation.name, "Flip", 4) == 0;
}

// --- identity and lifetime ------------------------------------------------------------------------------

TEST_F(Toolbox, QueryInterface_RootAndProcessor_GiveTheObjectCounted)
{
    for (const InterfaceId& id : {IUnknown::id, IFrameProcessor::id}) {
        void* found = nullptr;
        EXPECT_EQ(processor->QueryInterface(&id, &found), S_OK);
        EXPECT_EQ(found, static_cast<IFrameProcessor*>(processor));
        EXPECT_EQ(processor->Release(), 1u);
    }
}

TEST_F(Toolbox, QueryInterface_AnIdAtAnyAddress_IsRead)
{
    alignas(8) std::uint8_t raw[24] = {};
    std::memcpy(raw + 1, &IFrameProcessor::id, sizeof(InterfaceId));
    void* found = nullptr;
    EXPECT_EQ(processor->QueryInterface(reinterpret_cast<const InterfaceId*>(raw + 1), &found), S_OK);
    EXPECT_EQ(found, static_cast<IFrameProcessor*>(processor));
    EXPECT_EQ(processor->Release(), 1u);
}

TEST_F(Toolbox, QueryInterface_OtherInterfaces_StoreNullAndCountNothing)
{
    InterfaceId nearly = IFrameProcessor::id;
    nearly.data4[7] ^= 1;
    for (const InterfaceId& id : {nearly, IVideoEffect::id, IEffectLibrary::id, IPresetSaver::id}) {
        void* found = processor;
        EXPECT_EQ(processor->QueryInterface(&id, &found), E_NOINTERFACE);
        EXPECT_EQ(found, nullptr);
    }
    EXPECT_EQ(processor->AddRef(), 2u);
    EXPECT_EQ(processor->Release(), 1u);
}

TEST_F(Toolbox, QueryInterface_NullPointers_AreRefused)
{
    EXPECT_EQ(processor->QueryInterface(&IFrameProcessor::id, nullptr), E_FAIL);
    EXPECT_EQ(processor->QueryInterface(nullptr, nullptr), E_FAIL);
    void* found = processor;
    EXPECT_EQ(processor->QueryInterface(nullptr, &found), E_FAIL);
    EXPECT_EQ(found, nullptr);
}

TEST_F(Toolbox, Release_FromManyThreads_LosesNoCount)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this] {
            for (int round = 0; round < 1000; ++round) {
                processor->AddRef();
                processor->Release();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(processor->AddRef(), 2u);
    EXPECT_EQ(processor->Release(), 1u);
}

/// Makes the object allocate its conversion picture.
void Convert(IFrameProcessor& processor)
{
    const GuardedPicture packed(4, 4, 2, PF_Packed8), bgra(4, 4, PF_BGRA8);
    const VideoFrame src = packed.Frame();
    VideoFrame dst = bgra.Frame();
    EXPECT_TRUE(processor.YCbCr422ToBGRA(&src, &dst, 255, 0));
}

TEST(FrameProcessorLife, Destroy_WithoutTheFlag_LeavesTheMemory)
{
    alignas(FrameProcessor) unsigned char memory[sizeof(FrameProcessor)];
    IFrameProcessor* const processor = new (memory) FrameProcessor;
    Convert(*processor); // the sanitizers' lane sees it when that is not given back
    EXPECT_EQ(processor->Destroy(0), static_cast<void*>(memory));
}

TEST(FrameProcessorLife, Destroy_WithTheFlag_FreesTheObject)
{
    IFrameProcessor* const processor = new FrameProcessor;
    Convert(*processor);
    EXPECT_EQ(processor->Destroy(KELMORA_DESTROY_FREE | 2), nullptr);
}

TEST_F(Toolbox, Layout_CountStandsBehindTheTable)
{
    std::uint32_t references = 0;
    processor->AddRef();
    std::memcpy(&references, reinterpret_cast<const char*>(processor) + sizeof(void*), sizeof references);
    EXPECT_EQ(references, 2u);
    processor->Release();
    EXPECT_EQ(sizeof(FrameProcessor), 2 * sizeof(void*) + sizeof(FrameBuffer));
}

// --- rules of all operations ----------------------------------------------------------------------------

TEST_F(Toolbox, NullRecords_AreFalse)
{
    GuardedPicture source(3, 3, PF_ARGB32F), result(3, 3, PF_ARGB32F);
    result.Freeze();
    const VideoFrame a = source.Frame();
    VideoFrame out = result.Frame();
    for (const Operation& operation : kOperations) {
        EXPECT_FALSE(operation.run(*processor, &a, &a, nullptr)) << operation.name;
        EXPECT_FALSE(operation.run(*processor, nullptr, nullptr, nullptr)) << operation.name;
        EXPECT_FALSE(operation.readsSource && operation.run(*processor, nullptr, &a, &out)) << operation.name;
        EXPECT_FALSE(operation.readsSecond && operation.run(*processor, &a, nullptr, &out)) << operation.name;
    }
    EXPECT_FALSE(processor->ResizeRegion(&a, nullptr, &out, 1));
    result.Check();
}

TEST_F(Toolbox, RecordsWithoutPixelsOrSize_AreFalseSaveForTheFlips)
{
    for (const std::uint32_t format : kPictureFormats)
        for (int kind = 0; kind < 5; ++kind) {
            GuardedPicture picture(3, 3, format);
            picture.FillNoise(1);
            picture.Freeze();
            const VideoFrame good = picture.Frame();
            VideoFrame bad = good;
            switch (kind) {
            case 0:
                bad.data = nullptr;
                break;
            case 1:
                bad.width = 0;
                break;
            case 2:
                bad.height = -3;
                break;
            case 3:
                bad.stride = INT_MIN;
                break;
            default:
                bad.width = bad.pixelBytes = -4; // whose product is positive
                break;
            }
            for (const Operation& operation : kOperations) {
                VideoFrame out = bad;
                EXPECT_EQ(operation.run(*processor, &good, &good, &out), IsFlip(operation))
                    << operation.name << " into kind " << kind;
                if (!operation.readsSource)
                    continue;
                out = good;
                EXPECT_EQ(operation.run(*processor, &bad, &good, &out), IsFlip(operation))
                    << operation.name << " from kind " << kind;
            }
            picture.Check();
        }
}

TEST_F(Toolbox, EveryOperationOnOddSizes_StaysInThePicturesAndLeavesTheSources)
{
    for (const std::uint32_t format : kServedFormats)
        for (int size = 1; size <= 9; ++size)
            for (const PictureLayout& layout : kLayouts)
                for (const int more : {-2, 0, 1}) {
                    if (size + more < 1)
                        continue;
                    GuardedPicture first(size, 10 - size, format, layout);
                    GuardedPicture second(size, 10 - size, format, layout);
                    GuardedPicture result(size + more, std::max(10 - size - more, 1), format, layout);
                    for (GuardedPicture* picture : {&first, &second, &result})
                        picture->FillNoise(static_cast<std::uint32_t>(size));
                    first.Freeze();
                    second.Freeze();
                    const VideoFrame a = first.Frame(), b = second.Frame();
                    VideoFrame out = result.Frame();
                    for (const Operation& operation : kOperations) {
                        if (!Serves(operation, layout))
                            continue;
                        operation.run(*processor, &a, &b, &out);
                        ASSERT_TRUE(result.Intact()) << operation.name;
                    }
                    ASSERT_TRUE(first.Intact());
                    ASSERT_TRUE(second.Intact());
                }
}

TEST_F(Toolbox, EveryOperationOnPicturesThatDoNotFitTogether_StaysInThem)
{
    struct {
        int pixelBytes;
        std::uint32_t format;
    } const kinds[] = {{1, PF_Mask8},   {2, PF_Packed8}, {3, PF_BGRA8},    {4, PF_BGRA8},
                       {4, PF_ARGB32F}, {16, PF_ARGB8},  {16, PF_ARGB32F}, {1, PF_BGRA32F}};
    for (const auto& from : kinds)
        for (const auto& to : kinds)
            for (const PictureLayout& layout : kLayouts) {
                GuardedPicture source(5, 3, from.pixelBytes, from.format, layout);
                GuardedPicture result(4, 4, to.pixelBytes, to.format, layout);
                source.FillBytes(9);
                result.FillBytes(7);
                source.Freeze();
                const VideoFrame a = source.Frame();
                VideoFrame out = result.Frame();
                for (const Operation& operation : kOperations) {
                    if (!Serves(operation, layout))
                        continue;
                    operation.run(*processor, &a, &a, &out);
                    ASSERT_TRUE(result.Intact()) << operation.name;
                }
                ASSERT_TRUE(source.Intact());
            }
}

TEST_F(Toolbox, Records_AreReadInTheirFieldsAndNotWritten)
{
    const GuardedPicture source(4, 4, PF_ARGB32F);
    GuardedPicture result(4, 4, PF_ARGB32F);
    VideoFrame frame = source.Frame();
    frame.reserved[0] = frame.reserved[1] = 0xEEEEEEEE;
    FlushRecord<VideoFrame> a(frame);
    frame = result.Frame();
    frame.reserved[0] = frame.reserved[1] = 0xEEEEEEEE;
    FlushRecord<VideoFrame> out(frame);
    a.Freeze();
    out.Freeze();
    for (const Operation& operation : kOperations)
        operation.run(*processor, a.Get(), a.Get(), out.Get());
    result.Check();
}

TEST_F(Toolbox, ArithmeticOfTheHost_ChangesNoPictureAndStays)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const Operation& operation : kOperations) {
            const GuardedPicture a = Noisy(9, 7, format, 1), b = Noisy(9, 7, format, 2),
                                 before = Noisy(20, 15, format, 3);
            const VideoFrame first = a.Frame(), second = b.Frame();
            GuardedPicture expected = before;
            VideoFrame usual = expected.Frame();
            const bool succeeds = operation.run(*processor, &first, &second, &usual);
            for (const FloatHabit& habit : kFloatHabits) {
                SCOPED_TRACE(std::string(operation.name) + ", " + habit.name);
                GuardedPicture result = before;
                VideoFrame out = result.Frame();
                bool succeeded = false;
                EXPECT_EQ(AfterWorkIn(habit.state,
                                      [&] { succeeded = operation.run(*processor, &first, &second, &out); }),
                          habit.state);
                EXPECT_EQ(succeeded, succeeds);
                EXPECT_TRUE(Equal(result, expected));
            }
        }
}

// --- memory ---------------------------------------------------------------------------------------------

TEST_F(Toolbox, RefusedMemory_IsFalseAndWritesNothingAndIsAskedForAgain)
{
    std::uint64_t refusals = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (const Operation& operation : kOperations)
            for (const bool inPlace : {false, true})
                for (const bool fromThenOn : {false, true})
                    for (std::uint64_t n = 0, refused = 1; refused != 0; ++n) {
                        SCOPED_TRACE(std::string(operation.name) + ", block " + std::to_string(n));
                        ASSERT_LT(n, 100u);
                        const GuardedPicture a = Noisy(9, 7, format, 1), b = Noisy(9, 7, format, 2);
                        GuardedPicture result = Noisy(9, 7, format, 3), expected = result;
                        const GuardedPicture before = result;
                        VideoFrame out = result.Frame(), whole = expected.Frame();
                        const VideoFrame apart = a.Frame(), second = b.Frame();
                        const bool succeeds =
                            operation.run(*processor, inPlace ? &whole : &apart, &second, &whole);

                        FrameProcessor* const fresh = new FrameProcessor;
                        bool succeeded = false;
                        {
                            const FailingHeap scope(fromThenOn ? FailingHeap::kNever : n,
                                                    fromThenOn ? n : FailingHeap::kNever);
                            succeeded = operation.run(*fresh, inPlace ? &out : &apart, &second, &out);
                            refused = scope.Refused();
                        }
                        refusals += refused;
                        // A single picture that is refused is asked for again, when all that is kept is freed.
                        const bool isMadeGood = !fromThenOn && succeeded;
                        EXPECT_EQ(succeeded, succeeds && (refused == 0 || isMadeGood));
                        EXPECT_TRUE(Equal(result, succeeded ? expected : before));
                        if (!succeeded && succeeds) {
                            EXPECT_TRUE(operation.run(*fresh, inPlace ? &out : &apart, &second, &out));
                            EXPECT_TRUE(Equal(result, expected));
                        }
                        EXPECT_EQ(fresh->Release(), 0u);
                    }
    EXPECT_GT(refusals, 0u);
}

// --- Copy -----------------------------------------------------------------------------------------------

TEST_F(Toolbox, Copy_FourByteFormats_CopiesTheSmallerSizeRaw)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_Packed8, PF_Mask32F})
        for (int width = 1; width <= 9; ++width)
            for (const int more : {-1, 0, 3}) {
                if (width + more < 1)
                    continue;
                GuardedPicture source(width, 4, 4, PF_BGRA8, {.slack = 5});
                GuardedPicture result(width + more, 3, 4, PF_BGRA8);
                source.FillNoise(1);
                result.FillNoise(2);
                Picture expected = reference::Read(result);
                reference::CopyRect(reference::Read(source), 0, 0, width, 4, expected, 0, 0);
                VideoFrame src = source.Frame(), dst = result.Frame();
                src.format = format;
                src.bottomUp = 1;
                ASSERT_TRUE(processor->Copy(&src, &dst));
                ASSERT_TRUE(reference::Matches(result, expected));
                result.Check();
            }
}

TEST_F(Toolbox, Kept_CopyOfSixteenBytePixels_TakesTheFirstQuarterOfEachRow)
{
    GuardedPicture source(8, 3, PF_BGRA32F), result(8, 3, PF_ARGB32F);
    source.FillBytes(1);
    result.FillBytes(2);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    ASSERT_TRUE(processor->Copy(&src, &dst));
    for (int y = 0; y < 3; ++y)
        for (int i = 0; i < 8 * 16; ++i)
            ASSERT_EQ(result.Row(y)[i], i < 8 * 4 ? 1 : 2) << i << " of row " << y;
}

TEST_F(Toolbox, Copy_BetweenPixelSizes_CopiesFourBytesForEachPixel)
{
    struct {
        int from, to;
    } const sizes[] = {{4, 16}, {16, 4}, {16, 8}, {5, 4}};
    for (const auto& bytes : sizes) {
        GuardedPicture source(9, 3, bytes.from, PF_ARGB32F), result(8, 4, bytes.to, PF_Packed8);
        source.FillNoise(1);
        result.FillBytes(2);
        const VideoFrame src = source.Frame();
        VideoFrame dst = result.Frame();
        ASSERT_TRUE(processor->Copy(&src, &dst)) << bytes.from << " to " << bytes.to;
        for (int y = 0; y < 4; ++y)
            for (int i = 0; i < 8 * bytes.to; ++i)
                ASSERT_EQ(result.Row(y)[i], y < 3 && i < 8 * 4 ? source.Row(y)[i] : 2)
                    << bytes.from << " to " << bytes.to << ": " << i << " of row " << y;
        result.Check();
    }
}

TEST_F(Toolbox, Copy_RowsThatDoNotHoldFourBytesForEachPixel_AreFalse)
{
    struct {
        int from, to;
    } const sizes[] = {{1, 1}, {3, 3}, {1, 4}, {4, 1}, {2, 16}, {16, 3}};
    for (const auto& bytes : sizes) {
        GuardedPicture source(3, 3, bytes.from, PF_Packed8), result(3, 3, bytes.to, PF_Packed8);
        result.Freeze();
        const VideoFrame src = source.Frame();
        VideoFrame dst = result.Frame();
        EXPECT_FALSE(processor->Copy(&src, &dst)) << bytes.from << " to " << bytes.to;
        result.Check();
    }
    GuardedPicture picture(3, 3, PF_BGRA32F);
    picture.Freeze();
    VideoFrame narrow = picture.Frame(), frame = picture.Frame();
    narrow.stride = 11; // a byte less than three pixels
    EXPECT_FALSE(processor->Copy(&narrow, &frame));
    EXPECT_FALSE(processor->Copy(&frame, &narrow));
}

TEST_F(Toolbox, Copy_RowsUpward_AreTakenAsTheyLieInMemory)
{
    GuardedPicture source(3, 3, PF_BGRA8, {.upward = true}), result(3, 3, PF_BGRA8);
    source.FillNoise(1);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    ASSERT_TRUE(processor->Copy(&src, &dst));
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(std::memcmp(result.Row(y), source.Row(2 - y), 12), 0);
}

TEST_F(Toolbox, Copy_WithinOnePicture_MovesItsRows)
{
    GuardedPicture picture(6, 6, PF_BGRA8);
    picture.FillNoise(1);
    const GuardedPicture before(picture);
    VideoFrame src = picture.Frame(), dst = picture.Frame();
    src.height = dst.height = 5;
    dst.data = picture.Row(1);
    ASSERT_TRUE(processor->Copy(&src, &src));
    ASSERT_TRUE(Equal(picture, before));
    ASSERT_TRUE(processor->Copy(&src, &dst));
    for (int y = 1; y < 6; ++y)
        EXPECT_EQ(std::memcmp(picture.Row(y), before.Row(y - 1), 24), 0) << y;
}

// --- Resize ---------------------------------------------------------------------------------------------

int CodeOf(int quality)
{
    return quality == 0 ? reference::kNearest : quality == 2 ? reference::kCubic : reference::kLinear;
}

/// Bytes are rounded to nearest; nearest and linear ones are exact. Floats: sums of up to 16 taps.
double ToleranceOf(std::uint32_t format, int quality)
{
    if (IsFloatFormat(format))
        return quality == 0 ? 0.0 : 24 * std::ldexp(1.0, -24);
    return quality == 2 ? 0.502 : 0.0;
}

/// From record order to memory order and back.
Picture Turned(const Picture& picture, const PictureLayout& layout)
{
    Picture turned = picture;
    for (int y = 0; layout.upward && y < picture.height; ++y)
        reference::CopyRect(picture, 0, y, picture.width, 1, turned, 0, picture.height - 1 - y);
    return turned;
}

/// All of `source` at the size of `result`.
Picture Resized(const Picture& source, const Picture& result, int quality)
{
    Picture resized = result;
    reference::Resize(source, {0, 0, source.width, source.height}, resized,
                      static_cast<double>(result.width) / source.width,
                      static_cast<double>(result.height) / source.height, CodeOf(quality));
    return resized;
}

/// The same of pictures whose rows are taken as they lie in memory.
Picture ResizedInMemory(const Picture& source, const GuardedPicture& result, int quality)
{
    const PictureLayout& layout = result.Layout();
    return Turned(Resized(Turned(source, layout), reference::Read(result), quality), layout);
}

TEST_F(Toolbox, Resize_AnySizesAndQuality_IsThePlainResizeWhateverTheFormatSays)
{
    for (const int quality : {0, 1, 2, 3, -1, INT_MAX})
        for (int size = 1; size <= 9; ++size)
            for (const int width : {1, 4, 7, 23})
                for (const PictureLayout& layout : kLayouts) {
                    GuardedPicture source(size, 10 - size, PF_BGRA8, layout);
                    GuardedPicture result(width, 24 - width, PF_BGRA8, layout);
                    source.FillNoise(static_cast<std::uint32_t>(width));
                    const Picture expected = ResizedInMemory(reference::Read(source), result, quality);
                    VideoFrame src = source.Frame(), dst = result.Frame();
                    src.format = PF_Mask32F;
                    dst.format = 77;
                    ASSERT_TRUE(processor->Resize(&src, &dst, quality));
                    ASSERT_TRUE(reference::Matches(result, expected, 0.0, ToleranceOf(PF_BGRA8, quality)))
                        << "quality " << quality << ", " << size << " to " << width;
                    result.Check();
                }
}

TEST_F(Toolbox, Resize_SameSize_HasFactorsOfOneAndCopies)
{
    for (const int quality : {0, 1, 2})
        for (int size = 1; size <= 9; ++size) {
            GuardedPicture source(size, 10 - size, PF_ARGB8), result(size, 10 - size, PF_ARGB8);
            source.FillNoise(1);
            const VideoFrame src = source.Frame();
            VideoFrame dst = result.Frame();
            ASSERT_TRUE(processor->Resize(&src, &dst, quality));
            EXPECT_TRUE(Equal(result, source)) << quality;
        }
}

TEST_F(Toolbox, Resize_HandComputedRow_ComesOut)
{
    // {0, 100} to four pixels: a third of the way each.
    GuardedPicture source(2, 2, PF_BGRA8), result(4, 2, PF_BGRA8);
    for (int y = 0; y < 2; ++y)
        source.SetColour(1, y, 100, 100, 100, 100);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    constexpr int linear[4] = {0, 33, 67, 100}, nearest[4] = {0, 0, 100, 100};
    for (const int quality : {0, 1, 9}) {
        ASSERT_TRUE(processor->Resize(&src, &dst, quality));
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(result.Byte(x, 1, 2), quality == 0 ? nearest[x] : linear[x]) << quality;
    }
}

TEST_F(Toolbox, Kept_ResizeOfSixteenBytePixels_TakesThemForBytes)
{
    GuardedPicture source(8, 4, PF_BGRA32F), quarter(8, 4, PF_BGRA8);
    source.FillNoise(1);
    for (int y = 0; y < 4; ++y)
        std::memcpy(quarter.Row(y), source.Row(y), 8 * 4);
    GuardedPicture result(5, 3, PF_BGRA32F), bytes(5, 3, PF_BGRA8);
    const GuardedPicture before(result);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    ASSERT_TRUE(processor->Resize(&src, &dst, 1));
    for (int y = 0; y < 3; ++y) {
        std::memcpy(bytes.Row(y), result.Row(y), 5 * 4);
        EXPECT_EQ(std::memcmp(result.Row(y) + 5 * 4, before.Row(y) + 5 * 4, 5 * 12), 0);
    }
    EXPECT_TRUE(reference::Matches(bytes, Resized(reference::Read(quarter), reference::Read(bytes), 1)));
}

TEST_F(Toolbox, Resize_PixelsOfLessThanFourBytes_AreFalse)
{
    GuardedPicture bytes(4, 4, PF_Mask8), whole(4, 4, PF_BGRA8), rgb(4, 4, 3, PF_BGRA8);
    for (GuardedPicture* picture : {&bytes, &whole, &rgb})
        picture->Freeze();
    VideoFrame mask = bytes.Frame(), good = whole.Frame(), three = rgb.Frame();
    EXPECT_FALSE(processor->Resize(&mask, &mask, 1));
    EXPECT_FALSE(processor->Resize(&mask, &good, 1));
    EXPECT_FALSE(processor->Resize(&good, &mask, 1));
    EXPECT_FALSE(processor->Resize(&three, &good, 1));
    good.stride = 15; // rows that overlap
    EXPECT_FALSE(processor->Resize(&good, &good, 1));
}

TEST_F(Toolbox, Resize_WithinOnePicture_IsThatOfACopy)
{
    for (const int quality : {0, 1, 2}) {
        GuardedPicture picture(12, 10, PF_BGRA8);
        picture.FillNoise(1);
        const GuardedPicture before(picture);
        VideoFrame whole = picture.Frame();
        ASSERT_TRUE(processor->Resize(&whole, &whole, quality));
        ASSERT_TRUE(Equal(picture, before)) << quality;

        // A quarter into the whole: each pixel that is written belongs to the source, too.
        VideoFrame quarter = picture.Frame();
        quarter.width = 6;
        quarter.height = 5;
        Picture corner(6, 5, PF_BGRA8);
        reference::CopyRect(reference::Read(before), 0, 0, 6, 5, corner, 0, 0);
        const Picture expected = Resized(corner, reference::Read(before), quality);
        ASSERT_TRUE(processor->Resize(&quarter, &whole, quality));
        EXPECT_TRUE(reference::Matches(picture, expected, 0.0, ToleranceOf(PF_BGRA8, quality))) << quality;
    }
}

// --- ResizeRegion ---------------------------------------------------------------------------------------

TEST_F(Toolbox, ResizeRegion_InBytePictures_IsTheResizeOfThatPart)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const PictureLayout& layout : kLayouts)
            for (const int quality : {0, 1, 2, 5})
                for (const FrameRect& region :
                     {FrameRect{0, 0, 8, 6}, FrameRect{3, 2, 6, 4}, FrameRect{8, 6, 8, 6},
                      FrameRect{2, 1, 2, 6}, FrameRect{0, 5, 8, 5}}) {
                    GuardedPicture source(9, 7, format, layout), result(20, 15, format, layout);
                    source.FillNoise(1);
                    source.Freeze();
                    const int width = region.right - region.left + 1, height = region.bottom - region.top + 1;
                    Picture part(width, height, format);
                    reference::CopyRect(reference::Read(source), region.left, region.top, width, height, part,
                                        0, 0);
                    const Picture expected = ResizedInMemory(part, result, quality);
                    const VideoFrame src = source.Frame();
                    VideoFrame dst = result.Frame();
                    ASSERT_TRUE(processor->ResizeRegion(&src, &region, &dst, quality));
                    ASSERT_TRUE(reference::Matches(result, expected, 0.0, ToleranceOf(format, quality)))
                        << quality << ": " << region.left << ", " << region.top << ", stride "
                        << source.Stride();
                    result.Check();
                }
}

TEST_F(Toolbox, ResizeRegion_FromTheLeftEdgeOfFloats_IsTheResizeOfThatPart)
{
    for (const std::uint32_t format : {PF_BGRA32F, PF_ARGB32F})
        for (const PictureLayout& layout : kLayouts)
            for (const int quality : {0, 1, 2}) {
                GuardedPicture source(9, 7, format, layout), result(13, 11, format, layout);
                source.FillNoise(1);
                source.Freeze();
                constexpr FrameRect region = {0, 2, 5, 6};
                Picture part(6, 5, format);
                reference::CopyRect(reference::Read(source), 0, 2, 6, 5, part, 0, 0);
                const Picture expected = ResizedInMemory(part, result, quality);
                const VideoFrame src = source.Frame();
                VideoFrame dst = result.Frame();
                ASSERT_TRUE(processor->ResizeRegion(&src, &region, &dst, quality));
                ASSERT_TRUE(reference::Matches(result, expected, 0.0, ToleranceOf(format, quality)))
                    << quality;
                result.Check();
            }
}

TEST_F(Toolbox, Kept_RegionOfFloats_BeginsFourTimesAsFarRight)
{
    constexpr int kWidth = 16, kHeight = 4;
    for (int left = 0; left <= kWidth; ++left)
        for (int top = 0; top < kHeight; ++top) {
            GuardedPicture source(kWidth, kHeight, PF_BGRA32F, {.guard = Guard::Moat}),
                result(3, 1, PF_BGRA32F);
            source.FillNoise(1);
            const VideoFrame src = source.Frame();
            VideoFrame dst = result.Frame();
            const FrameRect region = {left, top, left + 2, top};
            // The pictures' rows follow each other without a gap.
            const int first = kWidth * top + 4 * left;
            const bool isInside = first + 3 <= kWidth * kHeight;
            ASSERT_EQ(processor->ResizeRegion(&src, &region, &dst, 0), isInside) << left << ", " << top;
            for (int x = 0; isInside && x < 3; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(result.Float(x, 0, c),
                              source.Float((first + x) % kWidth, (first + x) / kWidth, c))
                        << left << ", " << top;
        }
}

TEST_F(Toolbox, ResizeRegion_OnBytesBetweenOrBehindTheRows_IsFalse)
{
    for (const Guard guard : {Guard::Moat, Guard::PageEnd})
        for (const std::uint32_t format : kPictureFormats) {
            GuardedPicture source(8, 4, format, {.guard = guard, .slack = guard == Guard::Moat ? 16 : 0});
            GuardedPicture result(8, 4, format);
            result.FillBytes(9);
            result.Freeze();
            const VideoFrame src = source.Frame();
            VideoFrame dst = result.Frame();
            const int outside = IsFloatFormat(format) ? 1 : 4; // where pixel 4 is the first
            for (const FrameRect& region : {FrameRect{outside, 0, outside + 4, 3},
                                            {outside, 3, outside + 7, 3},
                                            {2 * outside, 0, 2 * outside, 0}})
                EXPECT_FALSE(processor->ResizeRegion(&src, &region, &dst, 1)) << region.left;
            result.Thaw();
            const FrameRect inside = {outside, 0, outside + 3, 3};
            EXPECT_TRUE(processor->ResizeRegion(&src, &inside, &dst, 1));
        }
}

TEST_F(Toolbox, ResizeRegion_ThatGoesOnInTheNextRow_TakesItsPixels)
{
    GuardedPicture source(4, 3, PF_BGRA8), result(4, 2, PF_BGRA8);
    source.FillNoise(1);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    const FrameRect region = {2, 0, 5, 1};
    ASSERT_TRUE(processor->ResizeRegion(&src, &region, &dst, 0));
    for (int y = 0; y < 2; ++y)
        EXPECT_EQ(std::memcmp(result.Row(y), source.Row(y) + 8, 16), 0) << y;
    const FrameRect last = {2, 1, 5, 2};
    EXPECT_FALSE(processor->ResizeRegion(&src, &last, &dst, 0));
}

TEST_F(Toolbox, ResizeRegion_EmptyNegativeOrOutside_IsFalse)
{
    for (const std::uint32_t format : kPictureFormats) {
        GuardedPicture source(8, 6, format), result(8, 6, format);
        result.Freeze();
        const VideoFrame src = source.Frame();
        VideoFrame dst = result.Frame();
        for (const FrameRect& region : {FrameRect{3, 0, 2, 5},
                                        {0, 3, 5, 2},
                                        {-1, 0, 3, 3},
                                        {0, -1, 3, 3},
                                        {0, 5, 7, 6},
                                        {0, 6, 7, 6},
                                        {INT_MIN, 0, INT_MAX, 0},
                                        {0, INT_MIN, 0, INT_MAX},
                                        {INT_MAX, INT_MAX, INT_MAX, INT_MAX},
                                        {INT_MAX, 0, INT_MIN, 0},
                                        {5, 2, INT_MIN, 3},
                                        {2, 5, 3, INT_MIN},
                                        {INT_MAX - 1, 0, INT_MAX, 0},
                                        {0, INT_MAX - 1, 0, INT_MAX}})
            EXPECT_FALSE(processor->ResizeRegion(&src, &region, &dst, 1))
                << region.left << ", " << region.top << " to " << region.right << ", " << region.bottom;
        result.Check();
    }
}

TEST_F(Toolbox, ResizeRegion_LargerThanTheDestination_IsCutToItsSize)
{
    GuardedPicture source(9, 7, PF_BGRA8), result(4, 3, PF_BGRA8);
    source.FillNoise(1);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    const FrameRect region = {2, 1, INT_MAX, INT_MAX};
    ASSERT_TRUE(processor->ResizeRegion(&src, &region, &dst, 1));
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(std::memcmp(result.Row(y), source.Row(y + 1) + 2 * 4, 4 * 4), 0) << y;
}

TEST_F(Toolbox, ResizeRegion_OnePixelWide_IsNearestWhateverTheQuality)
{
    GuardedPicture source(8, 4, PF_BGRA8), result(3, 4, PF_BGRA8);
    source.SetColour(5, 1, 10, 10, 10, 10);
    source.SetColour(5, 2, 20, 20, 20, 20);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    const FrameRect region = {5, 1, 5, 2};
    for (const int quality : {1, 2}) {
        ASSERT_TRUE(processor->ResizeRegion(&src, &region, &dst, quality));
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 3; ++x)
                EXPECT_EQ(result.Byte(x, y, 1), y < 2 ? 10 : 20);
    }
}

TEST_F(Toolbox, ResizeRegion_RowsUpward_CountFromTheRecordsFirst)
{
    GuardedPicture source(4, 6, PF_BGRA8, {.upward = true}), result(4, 2, PF_BGRA8, {.upward = true});
    source.FillNoise(1);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    const FrameRect region = {0, 1, 3, 2};
    ASSERT_TRUE(processor->ResizeRegion(&src, &region, &dst, 0));
    for (int y = 0; y < 2; ++y)
        EXPECT_EQ(std::memcmp(result.Row(y), source.Row(y + 1), 16), 0) << y;
}

TEST_F(Toolbox, ResizeRegion_OtherFormatsAndTooSmallPixels_AreFalse)
{
    struct {
        int pixelBytes;
        std::uint32_t format;
    } const strangers[] = {{4, PF_Packed8}, {1, PF_Mask8}, {4, PF_Mask32F}, {4, 5},
                           {4, 77},         {3, PF_BGRA8}, {4, PF_BGRA32F}, {1, PF_ARGB8}};
    for (const auto& stranger : strangers) {
        GuardedPicture source(5, 5, stranger.pixelBytes, stranger.format), result(5, 5, PF_BGRA32F);
        result.Freeze();
        const VideoFrame src = source.Frame();
        VideoFrame dst = result.Frame();
        EXPECT_FALSE(processor->ResizeRegion(&src, &kCorner, &dst, 1)) << stranger.format;
        result.Check();
    }
    GuardedPicture floats(5, 5, PF_BGRA32F), bytes(5, 5, PF_BGRA8);
    bytes.Freeze();
    const VideoFrame src = floats.Frame();
    VideoFrame dst = bytes.Frame();
    EXPECT_FALSE(processor->ResizeRegion(&src, &kCorner, &dst, 1));
}

TEST_F(Toolbox, ResizeRegion_OfItsOwnPicture_IsThatOfACopy)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_BGRA32F}) {
        GuardedPicture picture(9, 8, format);
        picture.FillNoise(1);
        Picture part(5, 4, format);
        reference::CopyRect(reference::Read(picture), 0, 3, 5, 4, part, 0, 0);
        const Picture expected = Resized(part, reference::Read(picture), 1);
        VideoFrame frame = picture.Frame();
        const FrameRect region = {0, 3, 4, 6};
        ASSERT_TRUE(processor->ResizeRegion(&frame, &region, &frame, 1));
        EXPECT_TRUE(reference::Matches(picture, expected, 0.0, ToleranceOf(format, 1)));
    }
}

// --- packed YCbCr ---------------------------------------------------------------------------------------

/// A picture of packed YCbCr; the format says nothing of that.
GuardedPicture Packed(int width, int height, const PictureLayout& layout = {})
{
    return {width, height, 2, PF_Packed8, layout};
}

std::vector<std::uint8_t> RowOf(const GuardedPicture& picture, int y)
{
    return {picture.Row(y), picture.Row(y) + picture.Width() * picture.PixelBytes()};
}

TEST_F(Toolbox, YCbCr422ToBGRA_HandComputedGreys_ComeOut)
{
    GuardedPicture packed = Packed(3, 1), bgra(3, 1, PF_BGRA8);
    constexpr std::uint8_t row[6] = {16, 128, 235, 128, 126, 128};
    std::memcpy(packed.Row(0), row, sizeof row);
    const VideoFrame src = packed.Frame();
    VideoFrame dst = bgra.Frame();
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&src, &dst, 77, 12345));
    constexpr std::uint8_t expected[12] = {0, 0, 0, 77, 254, 254, 254, 77, 128, 128, 128, 77};
    EXPECT_EQ(std::memcmp(bgra.Row(0), expected, sizeof expected), 0);
}

TEST_F(Toolbox, BGRAToYCbCr422_HandComputedWhiteAndRed_ComeOut)
{
    GuardedPicture bgra(4, 1, PF_BGRA8), packed = Packed(4, 1);
    bgra.SetColour(0, 0, 255, 255, 255, 0);
    bgra.SetColour(1, 0, 255, 255, 255, 0);
    bgra.SetColour(2, 0, 0, 0, 255, 9);
    bgra.SetColour(3, 0, 0, 0, 255, 9);
    const VideoFrame src = bgra.Frame();
    VideoFrame dst = packed.Frame();
    ASSERT_TRUE(processor->BGRAToYCbCr422(&src, &dst, 12345));
    constexpr std::uint8_t expected[8] = {235, 128, 235, 128, 82, 90, 81, 240};
    EXPECT_EQ(std::memcmp(packed.Row(0), expected, sizeof expected), 0);
}

TEST_F(Toolbox, YCbCr422ToBGRA_AnyOddSize_IsThePlainConversion)
{
    for (int width = 1; width <= 9; ++width)
        for (const int height : {1, 2, 9})
            for (const PictureLayout& layout : kLayouts)
                for (const int alpha : {0, 77, 255}) {
                    GuardedPicture packed = Packed(width, height, layout);
                    GuardedPicture bgra(width, height, PF_BGRA8, layout);
                    packed.FillNoise(static_cast<std::uint32_t>(width));
                    packed.Freeze();
                    const VideoFrame src = packed.Frame();
                    VideoFrame dst = bgra.Frame();
                    ASSERT_TRUE(processor->YCbCr422ToBGRA(&src, &dst, alpha, 0));
                    for (int y = 0; y < height; ++y) {
                        const std::vector<std::uint8_t> rgb = reference::RgbRow(RowOf(packed, y), width);
                        for (int x = 0; x < width; ++x) {
                            const std::uint8_t* expected = &rgb[static_cast<std::size_t>(x) * 3];
                            ASSERT_EQ(bgra.Byte(x, y, 0), expected[2]) << width << ": " << x << ", " << y;
                            ASSERT_EQ(bgra.Byte(x, y, 1), expected[1]) << width << ": " << x << ", " << y;
                            ASSERT_EQ(bgra.Byte(x, y, 2), expected[0]) << width << ": " << x << ", " << y;
                            ASSERT_EQ(bgra.Byte(x, y, 3), alpha);
                        }
                    }
                    bgra.Check();
                }
}

TEST_F(Toolbox, BGRAToYCbCr422_AnyOddSize_IsThePlainConversion)
{
    for (int width = 1; width <= 9; ++width)
        for (const int height : {1, 2, 9})
            for (const PictureLayout& layout : kLayouts) {
                GuardedPicture bgra(width, height, PF_BGRA8, layout);
                GuardedPicture packed = Packed(width, height, layout);
                bgra.FillNoise(static_cast<std::uint32_t>(width));
                bgra.Freeze();
                const VideoFrame src = bgra.Frame();
                VideoFrame dst = packed.Frame();
                ASSERT_TRUE(processor->BGRAToYCbCr422(&src, &dst, 0));
                for (int y = 0; y < height; ++y) {
                    std::vector<std::uint8_t> rgb;
                    for (int x = 0; x < width; ++x)
                        for (const int c : {2, 1, 0})
                            rgb.push_back(bgra.Byte(x, y, c));
                    ASSERT_EQ(RowOf(packed, y), reference::YCbCrRow(rgb, width)) << width << ": row " << y;
                }
                packed.Check();
            }
}

TEST_F(Toolbox, YCbCr422ToBGRA_ThereAndBackInOneRecord_ReadsAllBeforeItWrites)
{
    GuardedPicture picture(6, 4, PF_BGRA8), apart = Packed(6, 4), result(6, 4, PF_BGRA8);
    picture.FillNoise(1);
    for (int y = 0; y < 4; ++y)
        std::memcpy(apart.Row(y), picture.Row(y), 6 * 2);
    VideoFrame itself = picture.Frame(), dst = result.Frame();
    const VideoFrame src = apart.Frame();
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&src, &dst, 255, 0));
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&itself, &itself, 255, 0));
    EXPECT_TRUE(Equal(picture, result));
}

TEST_F(Toolbox, Conversion_OfOneSize_IsAllocatedOnceAndCleared)
{
    GuardedPicture packed = Packed(5, 3), bgra(5, 3, PF_BGRA8);
    const VideoFrame src = packed.Frame();
    VideoFrame dst = bgra.Frame();
    const FrameBuffer& conversion = processor->Conversion();
    EXPECT_EQ(conversion.GetPixels(), nullptr);
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&src, &dst, 255, 0));
    EXPECT_EQ(conversion.GetWidth(), 5);
    EXPECT_EQ(conversion.GetHeight(), 3);
    EXPECT_EQ(conversion.GetPixelBytes(), 3);
    ASSERT_GT(conversion.GetStride(), 15);
    std::uint8_t* const behindRow = conversion.PixelAddress(5, 1, 0);
    ASSERT_NE(behindRow, nullptr);
    EXPECT_EQ(*behindRow, 0);
    // A new picture would be cleared, wherever it lies.
    *behindRow = 99;
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&src, &dst, 255, 0));
    ASSERT_TRUE(processor->BGRAToYCbCr422(&dst, const_cast<VideoFrame*>(&src), 0));
    EXPECT_EQ(conversion.PixelAddress(5, 1, 0), behindRow);
    EXPECT_EQ(*behindRow, 99);
}

TEST_F(Toolbox, Conversion_GrowsForLargerPicturesAndStaysForSmallerOnes)
{
    const FrameBuffer& conversion = processor->Conversion();
    struct {
        int width, height, conversionWidth, conversionHeight;
    } const steps[] = {{4, 4, 4, 4}, {8, 4, 8, 4}, {9, 7, 9, 7}, {3, 7, 9, 7},
                       {1, 1, 9, 7}, {9, 8, 9, 8}, {2, 9, 2, 9}};
    for (const bool forth : {true, false})
        for (const auto& step : steps) {
            GuardedPicture packed = Packed(step.width, step.height), bgra(step.width, step.height, PF_BGRA8);
            VideoFrame yuv = packed.Frame(), rgb = bgra.Frame();
            ASSERT_TRUE(forth ? processor->YCbCr422ToBGRA(&yuv, &rgb, 255, 0)
                              : processor->BGRAToYCbCr422(&rgb, &yuv, 0));
            if (!forth)
                continue; // the largest is there already, save for what is wide
            EXPECT_EQ(conversion.GetWidth(), step.conversionWidth) << step.width;
            EXPECT_EQ(conversion.GetHeight(), step.conversionHeight) << step.width;
        }
}

TEST_F(Toolbox, Conversion_ForPackedPictures_HasTheSizeOfTheDestination)
{
    GuardedPicture bgra(9, 2, PF_BGRA8), packed = Packed(4, 6);
    const VideoFrame src = bgra.Frame();
    VideoFrame dst = packed.Frame();
    ASSERT_TRUE(processor->BGRAToYCbCr422(&src, &dst, 0));
    EXPECT_EQ(processor->Conversion().GetWidth(), 4);
    EXPECT_EQ(processor->Conversion().GetHeight(), 6);
}

TEST_F(Toolbox, Conversion_WithALargerOneAtHand_NeverShowsAnOlderFrame)
{
    GuardedPicture oldPacked = Packed(9, 9), oldBgra(9, 9, PF_BGRA8);
    oldPacked.FillNoise(1);
    const VideoFrame oldSrc = oldPacked.Frame();
    VideoFrame oldDst = oldBgra.Frame();
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&oldSrc, &oldDst, 255, 0));

    GuardedPicture packed = Packed(3, 2), bgra(8, 8, PF_BGRA8);
    bgra.FillBytes(0x5A);
    const GuardedPicture bgraBefore(bgra);
    VideoFrame yuv = packed.Frame(), rgb = bgra.Frame();
    ASSERT_TRUE(processor->YCbCr422ToBGRA(&yuv, &rgb, 255, 0));
    EXPECT_TRUE(SameOutside(bgra, bgraBefore, 3, 2));

    GuardedPicture small(3, 2, PF_BGRA8), large = Packed(8, 8);
    large.FillBytes(0x5A);
    const GuardedPicture largeBefore(large);
    rgb = small.Frame();
    yuv = large.Frame();
    ASSERT_TRUE(processor->BGRAToYCbCr422(&rgb, &yuv, 0));
    EXPECT_TRUE(SameOutside(large, largeBefore, 3, 2));
}

TEST_F(Toolbox, Conversion_RefusedOnce_IsTriedAgain)
{
    GuardedPicture packed = Packed(4, 4), bgra(4, 4, PF_BGRA8);
    bgra.FillBytes(9);
    VideoFrame yuv = packed.Frame(), rgb = bgra.Frame();
    // More than a picture may have: 6 GiB. No row of it is looked at.
    yuv.height = INT_MAX;
    EXPECT_FALSE(processor->YCbCr422ToBGRA(&yuv, &rgb, 255, 0));
    EXPECT_FALSE(processor->BGRAToYCbCr422(&rgb, &yuv, 0));
    EXPECT_EQ(processor->Conversion().GetPixels(), nullptr);
    EXPECT_EQ(bgra.Byte(0, 0), 9);
    yuv.height = 4;
    EXPECT_TRUE(processor->YCbCr422ToBGRA(&yuv, &rgb, 255, 0));
    EXPECT_TRUE(processor->BGRAToYCbCr422(&rgb, &yuv, 0));
    EXPECT_EQ(processor->Conversion().GetHeight(), 4);
}

TEST_F(Toolbox, YCbCr422_TooSmallPixels_AreFalse)
{
    GuardedPicture plane(4, 4, PF_Mask8), packed = Packed(4, 4), rgb24(4, 4, 3, PF_BGRA8),
                                          bgra(4, 4, PF_BGRA8);
    for (GuardedPicture* picture : {&plane, &packed, &rgb24, &bgra})
        picture->Freeze();
    VideoFrame one = plane.Frame(), two = packed.Frame(), three = rgb24.Frame(), four = bgra.Frame();
    EXPECT_FALSE(processor->YCbCr422ToBGRA(&one, &four, 255, 0));
    EXPECT_FALSE(processor->YCbCr422ToBGRA(&two, &three, 255, 0));
    EXPECT_FALSE(processor->BGRAToYCbCr422(&three, &two, 0));
    EXPECT_FALSE(processor->BGRAToYCbCr422(&four, &one, 0));
}

// --- what ImageOps does ---------------------------------------------------------------------------------

/// check(format, layout) for the picture formats and all layouts.
template <class Check>
void ForPictures(Check&& check)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const PictureLayout& layout : kLayouts)
            check(format, layout);
}

TEST_F(Toolbox, ReverseChannels_EveryPictureFormat_TurnsThePixelsRoundInPlaceAndNot)
{
    ForPictures([this](std::uint32_t format, const PictureLayout& layout) {
        GuardedPicture source(7, 5, format, layout), result(7, 5, format, layout);
        source.FillNoise(1);
        const Picture expected = reference::ReversedChannels(reference::Read(source));
        VideoFrame src = source.Frame(), dst = result.Frame();
        ASSERT_TRUE(processor->ReverseChannels(&src, &dst));
        ASSERT_TRUE(reference::Matches(result, expected));
        ASSERT_TRUE(processor->ReverseChannels(&src, &src));
        ASSERT_TRUE(reference::Matches(source, expected));
    });
    GuardedPicture mask(4, 4, PF_Mask32F);
    VideoFrame frame = mask.Frame();
    EXPECT_FALSE(processor->ReverseChannels(&frame, &frame));
}

TEST_F(Toolbox, SetChannel_EveryPictureFormat_SetsThatChannelAlone)
{
    ForPictures([this](std::uint32_t format, const PictureLayout& layout) {
        for (int channel = 0; channel < 4; ++channel) {
            GuardedPicture picture(7, 5, format, layout);
            picture.FillNoise(1);
            Picture expected = reference::Read(picture);
            ASSERT_TRUE(reference::SetChannel(expected, channel, 200));
            VideoFrame frame = picture.Frame();
            ASSERT_TRUE(processor->SetChannel(&frame, channel, 200));
            ASSERT_TRUE(reference::Matches(picture, expected));
            picture.Check();
        }
        GuardedPicture picture(7, 5, format, layout);
        picture.Freeze();
        VideoFrame frame = picture.Frame();
        for (const int channel : {-1, 4, INT_MIN, INT_MAX})
            EXPECT_FALSE(processor->SetChannel(&frame, channel, 200));
    });
}

TEST_F(Toolbox, AlphaOver_EveryPictureFormat_CompositesIntoTheFirstArgument)
{
    for (const bool premultiplied : {false, true})
        ForPictures([&](std::uint32_t format, PictureLayout layout) {
            layout.slack *= 4; // composites step by whole pixels from row to row
            GuardedPicture out(7, 5, format, layout), a(9, 5, format, layout), b(8, 5, format, layout);
            a.FillNoise(1);
            b.FillNoise(2);
            a.Freeze();
            b.Freeze();
            Picture expected = reference::Read(out);
            reference::AlphaOver(reference::Read(a), reference::Read(b), expected, premultiplied);
            VideoFrame result = out.Frame();
            const VideoFrame upper = a.Frame(), lower = b.Frame();
            ASSERT_TRUE(processor->AlphaOver(&result, &upper, &lower, premultiplied));
            ASSERT_TRUE(reference::Matches(out, expected, kRounding));
            out.Check();
            a.Check();
            b.Check();
        });
}

TEST_F(Toolbox, AlphaOver_HalfTransparentGrey_ComesOutByHand)
{
    // 0.25 * 0.5 + 0.75 * 0.5; premultiplied 0.25 + 0.75 * 0.5.
    GuardedPicture a(1, 1, PF_ARGB32F), b(1, 1, PF_ARGB32F), out(1, 1, PF_ARGB32F);
    a.FillFloat(0.25f, 0.25f, 0.25f, 0.5f);
    b.FillFloat(0.75f, 0.75f, 0.75f, 1.0f);
    const VideoFrame upper = a.Frame(), lower = b.Frame();
    VideoFrame result = out.Frame();
    ASSERT_TRUE(processor->AlphaOver(&result, &upper, &lower, false));
    EXPECT_EQ(out.Float(0, 0, 0), 1.0f);
    EXPECT_EQ(out.Float(0, 0, 1), 0.5f);
    ASSERT_TRUE(processor->AlphaOver(&result, &upper, &lower, true));
    EXPECT_EQ(out.Float(0, 0, 0), 1.0f);
    EXPECT_EQ(out.Float(0, 0, 1), 0.625f);
}

TEST_F(Toolbox, PermuteChannels_BytePictures_TakeTheOldChannels)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (const auto& order : {std::array{2, 3, 0, 1}, {0, 0, 0, 3}, {3, 1, 2, 0}}) {
            GuardedPicture picture(7, 5, format);
            picture.FillNoise(1);
            const int places[4] = {order[0], order[1], order[2], order[3]};
            const Picture expected = reference::SwappedChannels(reference::Read(picture), places);
            VideoFrame frame = picture.Frame();
            ASSERT_TRUE(processor->PermuteChannels(&frame, order.data()));
            ASSERT_TRUE(reference::Matches(picture, expected));
        }
}

TEST_F(Toolbox, PermuteChannels_OtherFormatsAndOrders_AreFalse)
{
    GuardedPicture floats(3, 3, PF_BGRA32F), bytes(3, 3, PF_BGRA8);
    floats.Freeze();
    bytes.Freeze();
    VideoFrame wide = floats.Frame(), frame = bytes.Frame();
    EXPECT_FALSE(processor->PermuteChannels(&wide, kOrder));
    EXPECT_FALSE(processor->PermuteChannels(&frame, nullptr));
    constexpr std::int32_t bad[4] = {0, 1, 2, 4};
    EXPECT_FALSE(processor->PermuteChannels(&frame, bad));
}

TEST_F(Toolbox, Premultiply_EveryPictureFormat_MultipliesInPlace)
{
    ForPictures([this](std::uint32_t format, const PictureLayout& layout) {
        GuardedPicture picture(7, 5, format, layout);
        picture.FillNoise(1);
        Picture expected = reference::Read(picture);
        ASSERT_TRUE(reference::Premultiply(reference::Read(picture), expected));
        VideoFrame frame = picture.Frame();
        ASSERT_TRUE(processor->Premultiply(&frame));
        ASSERT_TRUE(reference::Matches(picture, expected, kRounding));
        picture.Check();
    });
    GuardedPicture mask(4, 4, PF_Mask32F);
    VideoFrame frame = mask.Frame();
    EXPECT_FALSE(processor->Premultiply(&frame));
}

void ExpectPixel(const GuardedPicture& picture, double alpha, double first, double second, double third)
{
    EXPECT_EQ(static_cast<double>(picture.Float(1, 1, 0)), alpha);
    EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, 1)), first, 1e-6);
    EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, 2)), second, 1e-6);
    EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, 3)), third, 1e-6);
}

TEST_F(Toolbox, ARGBToYCbCr_OneRecord_GoesThroughAllStagesAndBack)
{
    // Red: Y = 0.299 * 0.85882354; Cb = (-0.168736 + 0.5) * 0.8784314 + 0.0627451;
    // Cr = (0.5 + 0.5) * 0.8784314 + 0.0627451.
    GuardedPicture picture(2, 2, PF_ARGB32F);
    picture.FillFloat(0, 0, 1, 0.25f);
    VideoFrame frame = picture.Frame();
    ASSERT_TRUE(processor->ARGBToYCbCr(&frame, &frame));
    ExpectPixel(picture, 0.25, 0.25678824, 0.35373769, 0.9411765);
    ASSERT_TRUE(processor->YCbCrToARGB(&frame, &frame));
    EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, 1)), 1.0, 2e-3);
    EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, 2)), 0.0, 2e-3);
    EXPECT_NEAR(static_cast<double>(picture.Float(1, 1, 3)), 0.0, 2e-3);
}

TEST_F(Toolbox, ARGBToYCbCr_TwoRecords_KeepsTheLastStageAlone)
{
    GuardedPicture source(2, 2, PF_ARGB32F), result(2, 2, PF_ARGB32F);
    source.FillFloat(0.75f, 0.5f, 0.25f, 7.5f);
    result.FillFloat(9, 9, 9, 9);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    ASSERT_TRUE(processor->ARGBToYCbCr(&src, &dst));
    ExpectPixel(result, 9, 0.25, 0.5627451, 0.8127451);
    ASSERT_TRUE(processor->YCbCrToARGB(&src, &dst));
    ExpectPixel(result, 9, 0.25 + 1.402 * 0.75, 0.25 - 0.344 * 0.5 - 0.714 * 0.75, 0.25 + 1.772 * 0.5);
}

TEST_F(Toolbox, ARGBToYCbCr_OtherFormats_AreFalse)
{
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_Mask32F}) {
        GuardedPicture picture(3, 3, format);
        picture.Freeze();
        VideoFrame frame = picture.Frame();
        EXPECT_FALSE(processor->ARGBToYCbCr(&frame, &frame)) << format;
        EXPECT_FALSE(processor->YCbCrToARGB(&frame, &frame)) << format;
    }
}

// --- flips ----------------------------------------------------------------------------------------------

/// The formats whose rows are whole words at every width.
constexpr std::uint32_t kWordFormats[] = {PF_BGRA8, PF_ARGB8, PF_Packed8, PF_BGRA32F, PF_ARGB32F, PF_Mask32F};

TEST_F(Toolbox, FlipVertical_AnyHeight_ExchangesTopAndBottomAndLeavesTheMiddle)
{
    for (const std::uint32_t format : kWordFormats)
        for (int height = 1; height <= 9; ++height)
            for (const int width : {1, 3, 9})
                for (const PictureLayout& layout : kLayouts) {
                    GuardedPicture picture(width, height, format, layout);
                    picture.FillNoise(static_cast<std::uint32_t>(height));
                    const GuardedPicture before(picture);
                    VideoFrame frame = picture.Frame();
                    ASSERT_TRUE(processor->FlipVertical(&frame));
                    const auto bytes = static_cast<std::size_t>(width * picture.PixelBytes());
                    for (int y = 0; y < height; ++y)
                        ASSERT_EQ(std::memcmp(picture.Row(y), before.Row(height - 1 - y), bytes), 0)
                            << "format " << format << ", row " << y << " of " << height;
                    picture.Check();
                }
}

TEST_F(Toolbox, Kept_FlipOfBrokenWords_LeavesTheRestOfTheRow)
{
    // A stride of 7 has one word, one of 8 two of them, the last byte of which is not the picture's.
    for (const int slack : {0, 1}) {
        GuardedPicture picture(7, 2, PF_Mask8, {.slack = slack});
        picture.FillNoise(1);
        const GuardedPicture before(picture);
        VideoFrame frame = picture.Frame();
        ASSERT_TRUE(processor->FlipVertical(&frame));
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 7; ++x)
                EXPECT_EQ(picture.Byte(x, y), before.Byte(x, slack == 0 && x >= 4 ? y : 1 - y))
                    << x << ", " << y;
        picture.Check();
    }
}

TEST_F(Toolbox, FlipVertical_RecordsWithoutPixels_AreTrue)
{
    GuardedPicture picture(3, 3, PF_BGRA8);
    picture.FillNoise(1);
    picture.Freeze();
    for (const int size : {0, -1, INT_MIN}) {
        VideoFrame frame = picture.Frame();
        frame.width = size;
        EXPECT_TRUE(processor->FlipVertical(&frame));
        EXPECT_TRUE(processor->FlipVerticalTo(&frame, &frame));
        frame = picture.Frame();
        frame.height = size;
        EXPECT_TRUE(processor->FlipVertical(&frame));
        EXPECT_TRUE(processor->FlipVerticalTo(&frame, &frame));
    }
    VideoFrame empty = {};
    VideoFrame frame = picture.Frame();
    EXPECT_TRUE(processor->FlipVertical(&empty));
    EXPECT_TRUE(processor->FlipVerticalTo(&empty, &frame));
    EXPECT_TRUE(processor->FlipVerticalTo(&frame, &empty));
    EXPECT_FALSE(processor->FlipVertical(nullptr));
    picture.Check();
}

TEST_F(Toolbox, FlipVertical_PixelsOfNoBytes_AreTrueAndStay)
{
    // Such a record promises no byte of its rows, however far apart they are.
    GuardedPicture picture(3, 3, PF_BGRA8), result(3, 3, PF_BGRA8);
    picture.FillNoise(1);
    picture.Freeze();
    result.Freeze();
    VideoFrame frame = picture.Frame(), dst = result.Frame();
    frame.pixelBytes = 0;
    EXPECT_TRUE(processor->FlipVertical(&frame));
    EXPECT_TRUE(processor->FlipVerticalTo(&frame, &dst));
}

TEST_F(Toolbox, FlipVerticalTo_AnySizes_CopiesTheSmallerSizeUpsideDown)
{
    for (const std::uint32_t format : kServedFormats)
        for (int size = 1; size <= 9; ++size)
            for (const int more : {-2, 0, 3})
                for (const PictureLayout& layout : kLayouts) {
                    if (size + more < 1)
                        continue;
                    GuardedPicture source(size, size, format, layout);
                    GuardedPicture result(size + more, size + more, format, layout);
                    source.FillNoise(1);
                    result.FillNoise(2);
                    const GuardedPicture before(result);
                    source.Freeze();
                    const VideoFrame src = source.Frame();
                    VideoFrame dst = result.Frame();
                    ASSERT_TRUE(processor->FlipVerticalTo(&src, &dst));
                    // Rows count as they lie in memory, which is the other way round in both pictures or none.
                    const int common = std::min(size, size + more);
                    const auto bytes = static_cast<std::size_t>(common * source.PixelBytes());
                    const auto rowOf = [](const GuardedPicture& picture, int y) {
                        return picture.Row(picture.Layout().upward ? picture.Height() - 1 - y : y);
                    };
                    for (int y = 0; y < result.Height(); ++y) {
                        const std::uint8_t* const is = rowOf(result, y);
                        const std::uint8_t* const was = rowOf(before, y);
                        const bool isFlipped = y < common;
                        const std::uint8_t* const from = isFlipped ? rowOf(source, common - 1 - y) : was;
                        ASSERT_EQ(std::memcmp(is, from, bytes), 0) << size << " + " << more << ": " << y;
                        const auto rest =
                            static_cast<std::size_t>(result.Width() * result.PixelBytes()) - bytes;
                        ASSERT_EQ(std::memcmp(is + bytes, was + bytes, rest), 0);
                    }
                    result.Check();
                }
}

TEST_F(Toolbox, FlipVerticalTo_OtherPixelSizes_CopiesTheBytesOfTheShorterRow)
{
    GuardedPicture source(3, 2, PF_BGRA8), result(20, 2, PF_Mask8);
    source.FillBytes(1);
    result.FillBytes(2);
    const VideoFrame src = source.Frame();
    VideoFrame dst = result.Frame();
    ASSERT_TRUE(processor->FlipVerticalTo(&src, &dst));
    for (int x = 0; x < 20; ++x)
        EXPECT_EQ(result.Byte(x, 1), x < 12 ? 1 : 2);
}

TEST_F(Toolbox, FlipVerticalTo_ItsOwnRecord_IsTheFlipOfACopy)
{
    for (const std::uint32_t format : kServedFormats)
        for (int height = 1; height <= 9; ++height) {
            GuardedPicture picture(5, height, format, {.slack = 3}), result(5, height, format, {.slack = 3});
            picture.FillNoise(1);
            VideoFrame frame = picture.Frame(), dst = result.Frame();
            ASSERT_TRUE(processor->FlipVerticalTo(&frame, &dst));
            ASSERT_TRUE(processor->FlipVerticalTo(&frame, &frame));
            EXPECT_TRUE(Equal(picture, result));
        }
}

} // namespace
} // namespace kelmora
