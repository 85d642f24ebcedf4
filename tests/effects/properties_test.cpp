// What holds for every effect alike.

#include <array>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/pictures_as_plain.h"

namespace kelmora {
namespace {

const std::vector<float> kSome = {0.6f, 0.4f};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

class EveryEffect : public testing::TestWithParam<EffectClass> {
protected:
    EffectClass Inner() const { return InnerOf(GetParam()); }

    /// What comes of pictures that cannot be worked with: Water Color and Crop Borders say that they have failed.
    bool ResultOfNoWork() const
    {
        return Inner() != EffectClass::WaterColor && Inner() != EffectClass::BorderCrop;
    }

    /// Whether pictures that cannot be worked with leave the output as it is. Active Camera and the scenes run
    /// their steps on anything, and a step that does not serve a format does nothing: their own tests say what is
    /// left.
    bool LooksAtFormats() const { return Inner() != EffectClass::Activecamera && !IsScene(GetParam()); }

    /// Pixelator's centre stands where the user sees it, so it asks which way the rows run.
    bool LooksAtRowOrder() const { return Inner() == EffectClass::FacePixelator; }

    /// A render with a record that is changed beforehand. The second picture is Incoming's.
    template <class Change>
    bool RenderChanged(const GuardedPicture& in, const GuardedPicture& out, const Change& change) const
    {
        const GuardedPicture incoming = Incoming(in);
        FakeHost host(Levels(GetParam(), kSome));
        VideoFrame first = in.Frame(), second = incoming.Frame(), output = out.Frame();
        change(first, second, output);
        RenderInfo info = MakeInfo(AtProgress(0.4));
        return NewEffect(GetParam())->Render(&host, &first, &second, &output, &info);
    }
};

GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed,
                     const PictureLayout& layout = {})
{
    GuardedPicture picture(width, height, format, layout);
    picture.FillNoise(seed);
    return picture;
}

// --- memory ---------------------------------------------------------------------------------------------

TEST_P(EveryEffect, Render_WhateverScratchMemoryHeld_GivesTheSamePixels)
{
    std::mt19937 random(11);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 60; ++i) {
            const auto width = static_cast<std::int32_t>(i < 30 ? random() % 9 + 1 : random() % 80 + 1);
            const auto height = static_cast<std::int32_t>(i < 30 ? random() % 9 + 1 : random() % 60 + 1);
            const std::vector<float> levels = {i % 3 == 0 ? 8.0f : 0.6f, 0.4f};
            const GuardedPicture in = Noisy(width, height, format, static_cast<std::uint32_t>(random()));
            GuardedPicture expected = Noisy(width, height, format, 1);
            const GuardedPicture before = expected;
            RenderFresh(GetParam(), levels, in, expected); // memory of the library's own
            for (const std::uint32_t fill : {0x00000000u, 0xA5A5A5A5u, 0x7FA5A5A5u}) {
                MemoryHabits habits;
                habits.fill = fill;
                habits.misalign = static_cast<std::int32_t>(random() % 16) * 4;
                habits.slack = static_cast<std::int32_t>(random() % 3) * BytesOfPixel(format);
                habits.guard = random() % 3 == 0 ? Guard::PageEnd : Guard::Moat;
                FakeMemoryProvider memory(habits);
                FakeHost host(Levels(GetParam(), levels));
                host.SetMemory(&memory);
                GuardedPicture out = before;
                EXPECT_EQ(Render(*NewEffect(GetParam()), host, in, out),
                          Succeeds(GetParam(), levels, width, height));
                EXPECT_TRUE(Equal(out, expected)) << width << " x " << height << " " << FormatName(format);
            }
        }
}

TEST_P(EveryEffect, Render_ASecondPictureOfAnySizeOverAnyScratch_GivesTheSamePixels)
{
    std::mt19937 random(12);
    for (const std::uint32_t format : kPictureFormats)
        for (int i = 0; i < 30; ++i) {
            const TransitionSizes sizes = RandomSizes(random, 50, 50);
            const GuardedPicture in = Noisy(sizes.width, sizes.height, format, 1);
            const GuardedPicture second = Noisy(sizes.secondWidth, sizes.secondHeight, format, 2);
            const GuardedPicture before = Noisy(sizes.outWidth, sizes.outHeight, format, 3);
            Moment moment;
            moment.second = &second;
            moment.progress = i % 3 == 0 ? 0.9 : 0.5;
            GuardedPicture expected = before;
            RenderFresh(GetParam(), kSome, moment, in, expected);
            if (!IsScene(GetParam())) {
                EXPECT_TRUE(SameOutside(expected, before, std::min(sizes.width, sizes.outWidth),
                                        std::min(sizes.height, sizes.outHeight)));
            }
            for (const std::uint32_t fill : {0x00000000u, 0xA5A5A5A5u, 0x7FA5A5A5u}) {
                MemoryHabits habits;
                habits.fill = fill;
                FakeMemoryProvider memory(habits);
                FakeHost host(Levels(GetParam(), kSome));
                host.SetMemory(&memory);
                GuardedPicture out = before;
                EXPECT_EQ(Render(*NewEffect(GetParam()), host, moment, in, out),
                          Succeeds(GetParam(), kSome, std::min(sizes.width, sizes.outWidth),
                                   std::min(sizes.height, sizes.outHeight)));
                EXPECT_TRUE(Equal(out, expected)) << FormatName(format);
            }
        }
}

TEST_P(EveryEffect, Render_LongAndNarrowPictures_StayInsideTheMemory)
{
    constexpr std::int32_t sizes[][2] = {{1, 5000}, {5000, 1}, {3, 2000}};
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB32F})
        for (const auto& [width, height] : sizes) {
            const GuardedPicture in = Noisy(width, height, format, 1);
            GuardedPicture out = Noisy(width, height, format, 2);
            RenderFresh(GetParam(), {0.1f, 0.4f}, in, out);
            out.Check();
        }
}

TEST_P(EveryEffect, Render_ProvidersWithBadHabits_GiveTheSamePixels)
{
    const GuardedPicture in = Noisy(50, 40, PF_BGRA8, 1);
    GuardedPicture expected(50, 40, PF_BGRA8);
    RenderFresh(GetParam(), kSome, in, expected);
    for (const ProviderAnswer answer :
         {ProviderAnswer::SayYesGiveNothing, ProviderAnswer::SayNoLeaveGarbage, ProviderAnswer::Refuse}) {
        FakeHost host(Levels(GetParam(), kSome));
        host.SetProviderAnswer(answer);
        GuardedPicture out(50, 40, PF_BGRA8);
        EXPECT_TRUE(Render(*NewEffect(GetParam()), host, in, out));
        EXPECT_TRUE(Equal(out, expected));
    }
}

// --- arguments ------------------------------------------------------------------------------------------

TEST_P(EveryEffect, Render_NullHostPictureOutputOrPixels_IsRefused)
{
    const GuardedPicture in = Noisy(20, 20, PF_BGRA8, 1);
    GuardedPicture out = Noisy(20, 20, PF_BGRA8, 2);
    const GuardedPicture before = out;
    FakeHost host(Levels(GetParam(), kSome));
    const HeldEffect effect = NewEffect(GetParam());
    RenderInfo info = MakeInfo({});
    VideoFrame first = in.Frame(), second = in.Frame(), output = out.Frame(), empty = in.Frame();
    empty.data = nullptr;
    EXPECT_FALSE(effect->Render(nullptr, &first, &second, &output, &info));
    EXPECT_FALSE(effect->Render(&host, nullptr, &second, &output, &info));
    EXPECT_FALSE(effect->Render(&host, &empty, &second, &output, &info));
    EXPECT_FALSE(effect->Render(&host, &first, &second, nullptr, &info));
    EXPECT_FALSE(effect->Render(&host, &first, &second, &empty, &info));
    EXPECT_TRUE(Equal(out, before));
    EXPECT_TRUE(host.Reads().empty());
    if (!IsTransition(GetParam())) {
        EXPECT_TRUE(effect->Render(&host, &first, &empty, &output, &info)) << "the second plays no part";
        EXPECT_TRUE(effect->Render(&host, &first, nullptr, &output, &info));
    }
}

TEST_P(EveryEffect, Render_OtherFormats_WriteNothing)
{
    for (const std::uint32_t format : {2u, 5u, 6u, 7u, 8u, 0xFFFFFFFFu})
        for (const std::int32_t pixelBytes : {1, 4, 16}) {
            GuardedPicture in(12, 12, pixelBytes, PF_BGRA8), out(12, 12, pixelBytes, PF_BGRA8);
            in.FillBytes(90);
            out.FillBytes(17);
            const GuardedPicture before = out;
            const bool result =
                RenderChanged(in, out, [&](VideoFrame& first, VideoFrame& second, VideoFrame& output) {
                    first.format = second.format = output.format = format;
                });
            EXPECT_EQ(result, ResultOfNoWork());
            out.Check();
            if (LooksAtFormats()) {
                EXPECT_TRUE(Equal(out, before)) << format << " of " << pixelBytes;
            }
        }
}

TEST_P(EveryEffect, Render_PixelSizesThatDisagree_WriteNothing)
{
    for (const std::uint32_t inFormat : kPictureFormats)
        for (const std::uint32_t outFormat : kPictureFormats)
            for (const std::int32_t inBytes : {0, 1, 4, 16, -4})
                for (const std::int32_t outBytes : {0, 1, 4, 16, -4}) {
                    const std::int32_t right = BytesOfPixel(inFormat);
                    if (inBytes == right && outBytes == right)
                        continue;
                    GuardedPicture memory(12 * 16, 12, 1, PF_Mask8), out = memory;
                    out.FillBytes(17);
                    const GuardedPicture before = out;
                    const bool result = RenderChanged(
                        memory, out, [&](VideoFrame& first, VideoFrame& second, VideoFrame& output) {
                            first.width = output.width = 12;
                            first.format = inFormat;
                            first.pixelBytes = inBytes;
                            second = first;
                            output.format = outFormat;
                            output.pixelBytes = outBytes;
                        });
                    EXPECT_EQ(result, ResultOfNoWork());
                    out.Check();
                    if (LooksAtFormats()) {
                        EXPECT_TRUE(Equal(out, before)) << inBytes << " to " << outBytes;
                    }
                }
}

// Air Brush and Detail Enhancer go by the format of the picture alone; the others want both alike, and leave the output
// or clear it. A scene lays its background, here the first picture, and no face.
TEST_P(EveryEffect, Render_AnOutputOfTheOtherByteOrder_IsWrittenLikeThePictureOrNotAtAll)
{
    const bool plays = Inner() != EffectClass::Airbrush && Inner() != EffectClass::UnsharpMask;
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8}) {
        const GuardedPicture in = Noisy(30, 40, format, 3), cleared(30, 40, format);
        GuardedPicture expected = IsScene(GetParam()) ? in : cleared, out(30, 40, format);
        if (!plays)
            RenderFresh(GetParam(), kSome, in, expected);
        EXPECT_EQ(RenderChanged(in, out,
                                [&](VideoFrame&, VideoFrame&, VideoFrame& output) {
                                    output.format = format == PF_BGRA8 ? PF_ARGB8 : PF_BGRA8;
                                }),
                  !plays || ResultOfNoWork());
        EXPECT_TRUE(Equal(out, expected));
    }
}

TEST_P(EveryEffect, Render_TheRowOrderOfTheRecords_PlaysNoPart)
{
    if (LooksAtRowOrder())
        return;
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(30, 40, format, 3);
        GuardedPicture expected(30, 40, format), out(30, 40, format);
        RenderFresh(GetParam(), kSome, in, expected);
        EXPECT_TRUE(RenderChanged(in, out, [&](VideoFrame& first, VideoFrame&, VideoFrame& output) {
            first.bottomUp = 1;
            output.bottomUp = 255;
        }));
        EXPECT_TRUE(Equal(out, expected));
    }
}

TEST_P(EveryEffect, Render_SizesBelowOneAndShortStrides_WriteNothing)
{
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    const GuardedPicture in = Noisy(20, 20, PF_BGRA32F, 1);
    const GuardedPicture before = Noisy(20, 20, PF_BGRA32F, 2), cleared(20, 20, PF_BGRA32F);
    const auto render = [&](const auto& change) {
        for (const bool ofOutput : {false, true}) {
            const GuardedPicture out = before;
            EXPECT_EQ(RenderChanged(in, out,
                                    [&](VideoFrame& first, VideoFrame&, VideoFrame& output) {
                                        change(ofOutput ? output : first);
                                    }),
                      ResultOfNoWork());
            // Of a scene one of the pictures may be left.
            if (LooksAtFormats() || ofOutput || !(IsScene(GetParam()) || Equal(out, cleared))) {
                EXPECT_TRUE(Equal(out, before));
            }
        }
    };
    for (const std::int32_t size : {0, -1, -10, least}) {
        render([&](VideoFrame& frame) { frame.width = size; });
        render([&](VideoFrame& frame) { frame.height = size; });
    }
    for (const std::int32_t stride : {0, 1, 16, 319, -319})
        render([&](VideoFrame& frame) {
            frame.data = static_cast<std::uint8_t*>(frame.data) + (stride < 0 ? 19 * 320 : 0);
            frame.stride = stride;
        });
}

TEST_P(EveryEffect, Render_WildKnobs_StayInsideTheMemory)
{
    std::mt19937 random(5);
    constexpr float wild[] = {0.0f,
                              1.0f,
                              -1.0f,
                              kNaN,
                              1e30f,
                              -1e30f,
                              1e-40f,
                              std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(),
                              40.0f,
                              3e9f,
                              -0.1f};
    for (const std::uint32_t format : kPictureFormats)
        for (const float first : wild)
            for (const float second : wild) {
                PictureLayout layout;
                layout.guard = random() % 2 != 0 ? Guard::PageEnd : Guard::PageStart;
                GuardedPicture in(13, 11, format, layout), out(12, 12, format, layout);
                in.FillNoise(static_cast<std::uint32_t>(random()), Noise::Special);
                in.Freeze();
                FakeHost host(Levels(GetParam(), {first, second}));
                const bool result = Render(*NewEffect(GetParam()), host, in, out);
                // A median that no memory could serve is a failure.
                EXPECT_TRUE(result || !ResultOfNoWork());
            }
}

// --- rows -------------------------------------------------------------------------------------------------

TEST_P(EveryEffect, Render_StridesOfNoWholePixels_AreThePlainVersions)
{
    // What steps by whole pixels and what steps by the stride part ways then, and write between the rows: the
    // whole memory is compared.
    std::mt19937 random(6);
    for (const std::uint32_t format : {PF_BGRA8, PF_ARGB8})
        for (int i = 0; i < 60; ++i) {
            const auto width = static_cast<std::int32_t>(random() % 30 + 1);
            const auto height = static_cast<std::int32_t>(random() % 40 + 1);
            const auto frame = [&](std::vector<std::uint8_t>& memory, bool mayBeWhole) {
                const auto slack = static_cast<std::int32_t>(random() % 4 + (mayBeWhole ? 0 : 1));
                const std::int32_t stride = 4 * width + slack;
                memory.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
                for (std::uint8_t& byte : memory)
                    byte = static_cast<std::uint8_t>(random());
                VideoFrame record = {memory.data(), width, height, stride, 4, {}, format, 0};
                if (random() % 3 == 0) {
                    record.data = memory.data() + static_cast<std::ptrdiff_t>(stride) * (height - 1);
                    record.stride = -stride;
                }
                return record;
            };
            std::vector<std::uint8_t> inMemory, secondMemory, outMemory;
            VideoFrame first = frame(inMemory, i % 2 == 0), second = frame(secondMemory, i % 3 == 0),
                       output = frame(outMemory, i % 2 != 0);
            const std::vector<std::uint8_t> before = outMemory, inBefore = inMemory;
            const std::vector<float> levels = {0.8f, 0.5f};
            RenderPlain(GetParam(), levels, first, &second, output, {});
            const std::vector<std::uint8_t> expected = outMemory;
            outMemory = before;
            FakeHost host(Levels(GetParam(), levels));
            RenderInfo info = MakeInfo(AtProgress(0.4));
            EXPECT_EQ(NewEffect(GetParam())->Render(&host, &first, &second, &output, &info),
                      Succeeds(GetParam(), levels, std::min(first.width, output.width),
                               std::min(first.height, output.height)));
            EXPECT_EQ(outMemory, expected)
                << width << " x " << height << ", strides " << first.stride << ", " << output.stride;
            EXPECT_EQ(inMemory, inBefore);
        }
}

TEST_P(EveryEffect, Render_UpwardRows_GiveTheSameMemory)
{
    for (const std::uint32_t format : kPictureFormats) {
        PictureLayout upward;
        upward.upward = upward.bottomUp = true;
        const GuardedPicture down = Noisy(33, 27, format, 4);
        GuardedPicture up(33, 27, format, upward), downOut(33, 27, format), upOut(33, 27, format, upward);
        const auto rowBytes = static_cast<std::size_t>(33 * BytesOfPixel(format));
        for (int y = 0; y < 27; ++y)
            std::memcpy(up.Row(26 - y), down.Row(y), rowBytes);
        RenderFresh(GetParam(), kSome, down, downOut);
        RenderFresh(GetParam(), kSome, up, upOut);
        for (int y = 0; y < 27; ++y)
            EXPECT_EQ(std::memcmp(upOut.Row(26 - y), downOut.Row(y), rowBytes), 0) << y;
    }
}

TEST_P(EveryEffect, Render_IntoEitherPicture_GivesWhatAnotherOutputGets)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& [width, height] : {std::pair{64, 48}, {4, 50}, {7, 3}, {1, 1}}) {
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + " "
                         + FormatName(format).data());
            const GuardedPicture in = Noisy(width, height, format, 9), incoming = Incoming(in);
            // The other output holds the same beforehand: where a dissolve is short, that shows.
            GuardedPicture expected = in, both = in;
            RenderFresh(GetParam(), kSome, in, expected);
            EXPECT_EQ(RenderChanged(both, both, [](VideoFrame&, VideoFrame&, VideoFrame&) {}),
                      Succeeds(GetParam(), kSome, width, height));
            EXPECT_TRUE(Equal(both, expected));

            GuardedPicture expectedBehind = incoming, behind = incoming;
            RenderFresh(GetParam(), kSome, in, expectedBehind);
            EXPECT_EQ(
                RenderChanged(in, behind,
                              [&](VideoFrame&, VideoFrame& second, VideoFrame&) { second = behind.Frame(); }),
                Succeeds(GetParam(), kSome, width, height));
            EXPECT_TRUE(Equal(behind, expectedBehind)) << "into the second";
        }
}

TEST_P(EveryEffect, Render_OutputsThatMeetAPicture_StayInsideTheMemory)
{
    for (const std::uint32_t format : kPictureFormats)
        for (const std::int32_t rows : {0, 1, 2})
            for (const std::int32_t pixels : {0, 1, 3}) {
                GuardedPicture memory = Noisy(40, 30, format, 10);
                for (const bool meetsSecond : {false, true}) {
                    const GuardedPicture apart = memory;
                    EXPECT_TRUE(RenderChanged(
                        apart, memory, [&](VideoFrame& first, VideoFrame& second, VideoFrame& output) {
                            (meetsSecond ? second : first) = memory.Frame();
                            first.width = second.width = output.width = 37;
                            first.height = second.height = output.height = 28;
                            output.data = memory.Row(rows) + pixels * BytesOfPixel(format);
                        }));
                    memory.Check();
                }
            }
}

TEST_P(EveryEffect, Render_IntoPicturesOfAnyLabel_ShowsNothingOfScratchMemory)
{
    // The output is larger than the pictures, and in the memory of one of them.
    const auto rendered = [](std::uint32_t format, std::int32_t pixelBytes, bool meetsSecond,
                             std::uint32_t fill) {
        GuardedPicture memory(20 * pixelBytes, 20, 1, PF_Mask8);
        memory.FillNoise(3);
        const GuardedPicture apart = memory;
        VideoFrame output = memory.Frame();
        output.width = 20;
        output.pixelBytes = pixelBytes;
        output.format = format;
        VideoFrame first = output, second = output;
        first.width = first.height = second.width = second.height = 10;
        (meetsSecond ? first : second).data = apart.Row(0);
        MemoryHabits habits;
        habits.fill = fill;
        FakeMemoryProvider provider(habits);
        FakeHost host(Levels(GetParam(), kSome));
        host.SetMemory(&provider);
        RenderInfo info = MakeInfo(AtProgress(0.4));
        NewEffect(GetParam())->Render(&host, &first, &second, &output, &info);
        memory.Check();
        return memory;
    };
    for (const std::uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 9u})
        for (const std::int32_t pixelBytes : {1, 2, 3, 4, 16})
            for (const bool meetsSecond : {false, true})
                EXPECT_TRUE(Equal(rendered(format, pixelBytes, meetsSecond, 0xA5A5A5A5u),
                                  rendered(format, pixelBytes, meetsSecond, 0)))
                    << format << " of " << pixelBytes << (meetsSecond ? ", second" : ", first");
}

// --- one render and the next -----------------------------------------------------------------------------

TEST_P(EveryEffect, Render_TwiceAndInterleaved_GivesTheSamePixels)
{
    for (const std::uint32_t format : kPictureFormats) {
        const GuardedPicture in = Noisy(40, 30, format, 1), other = Noisy(25, 45, format, 2);
        GuardedPicture expected(40, 30, format);
        RenderFresh(GetParam(), kSome, in, expected);
        FakeHost host(Levels(GetParam(), kSome)), secondHost(Levels(GetParam(), {0.1f, 0.9f}));
        const HeldEffect effect = NewEffect(GetParam()), second = NewEffect(GetParam());
        for (int i = 0; i < 3; ++i) {
            GuardedPicture out(40, 30, format), otherOut(25, 45, format);
            EXPECT_TRUE(Render(*second, secondHost, other, otherOut));
            EXPECT_TRUE(Render(*effect, host, in, out));
            EXPECT_TRUE(Equal(out, expected));
            EXPECT_TRUE(Render(*effect, secondHost, other, otherOut));
        }
    }
}

TEST_P(EveryEffect, Render_UnreadBytesOfTheInfoAndOtherFlags_MakeNoDifference)
{
    const GuardedPicture in = Noisy(40, 60, PF_BGRA8, 1), incoming = Incoming(in);
    GuardedPicture expected(40, 60, PF_BGRA8);
    RenderFresh(GetParam(), kSome, in, expected);
    for (const std::uint32_t flags : {0u, 0xFFFFFFDFu, 0x20u}) {
        InfoFields fields;
        fields.flags = flags;
        fields.fieldMode = 3;
        fields.progress = IsTransition(GetParam()) ? 0.4 : std::numeric_limits<double>::quiet_NaN();
        fields.time = ClockOf(GetParam()) == Clock::Time ? 0.0 : 1e300;
        const FlushInfo info(fields, 0x5A);
        FakeHost host(Levels(GetParam(), kSome));
        GuardedPicture out(40, 60, PF_BGRA8);
        VideoFrame first = in.Frame(), second = incoming.Frame(), output = out.Frame();
        EXPECT_TRUE(NewEffect(GetParam())->Render(&host, &first, &second, &output, info.Get()));
        EXPECT_TRUE(Equal(out, expected)) << flags;
    }
}

TEST_P(EveryEffect, RenderInThreads_OwnObjects_GivesTheSamePixelsAsInTurn)
{
    constexpr int kThreads = 4, kRounds = 6;
    std::vector<GuardedPicture> inputs, expected, outputs;
    for (int t = 0; t < kThreads; ++t) {
        const std::uint32_t format = kPictureFormats[t];
        inputs.push_back(Noisy(64 + t, 48 - t, format, static_cast<std::uint32_t>(t)));
        expected.emplace_back(64 + t, 48 - t, format);
        outputs.emplace_back(64 + t, 48 - t, format);
        RenderFresh(GetParam(), kSome, inputs.back(), expected.back());
    }
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            const HeldEffect effect = NewEffect(GetParam());
            FakeHost host(Levels(GetParam(), kSome));
            for (int round = 0; round < kRounds; ++round)
                EXPECT_TRUE(Render(*effect, host, inputs[t], outputs[t]));
        });
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t t = 0; t < kThreads; ++t)
        EXPECT_TRUE(Equal(outputs[t], expected[t]));
}

INSTANTIATE_TEST_SUITE_P(Effects, EveryEffect, testing::ValuesIn(kAllEffects),
                         [](const auto& tested) { return NameOf(tested.param); });

} // namespace
} // namespace kelmora
