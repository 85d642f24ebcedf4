// Pictures and scratch memory with unreadable pages right beside them, for every effect alike: a row, or a picture as
// a host lays it, that ends or begins where the page does. A stray byte ends the program.

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/render.h"
#include "tests/golden/effect_presets.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

constexpr Guard kPages[] = {Guard::PageEnd, Guard::PageStart, Guard::PictureEnd, Guard::PictureStart};

/// Tiny, odd, a row or column alone, and wide enough for every inner loop. Eleven, so that what alternates from frame to
/// frame falls on each of them.
constexpr std::int32_t kSizes[][2] = {{1, 1},   {2, 3},  {3, 2},   {5, 5},   {1, 7}, {40, 1},
                                      {17, 33}, {33, 9}, {31, 15}, {64, 48}, {8, 21}};

/// The knobs of one factory preset after the other.
std::vector<float> Knobs(EffectClass which, std::size_t turn)
{
    const EffectRow& row = *EffectRowOf(KeyOf(which));
    const auto presets = which == InnerOf(which) ? row.innerPresets : row.wrapperPresets;
    return ValuesOf(presets[turn % presets.size()], KnobCount(which));
}

/// The same bytes in the same order of memory, in another layout.
GuardedPicture Laid(const GuardedPicture& picture, const PictureLayout& layout)
{
    GuardedPicture laid(picture.Width(), picture.Height(), picture.Format(), layout);
    const auto rowBytes = static_cast<std::size_t>(picture.Width() * picture.PixelBytes());
    const std::int32_t last = picture.Height() - 1;
    for (std::int32_t y = 0; y <= last; ++y)
        std::memcpy(laid.Row(layout.upward != picture.Layout().upward ? last - y : y), picture.Row(y),
                    rowBytes);
    return laid;
}

/// One frame: its knobs, pictures and moment.
struct GuardedFrame {
    EffectClass which;
    std::vector<float> knobs;
    Moment moment;
    GuardedPicture in, second, before;

    GuardedFrame(EffectClass effect, std::uint32_t format, const std::int32_t (&size)[2], std::size_t turn)
        : which(effect), knobs(Knobs(effect, turn)), in(size[0], size[1], format),
          second(Grown(size[0], turn % 3 == 1, -1), Grown(size[1], turn % 3 == 1, 2), format),
          before(Grown(size[0], turn % 5 == 3, 3), Grown(size[1], turn % 5 == 3, -1), format)
    {
        constexpr double progress[] = {0.4, 0.05, 0.93, 0.0, 1.0, 0.6, 0.25};
        moment.progress = progress[turn % std::size(progress)];
        moment.time = 0.37 * static_cast<double>(turn);
        moment.halfHeight = turn % 2 != 0;
        const auto seed = static_cast<std::uint32_t>(3 * turn);
        in.FillNoise(seed);
        second.FillNoise(seed + 1);
        before.FillNoise(seed + 2);
    }

    static std::int32_t Grown(std::int32_t size, bool grows, std::int32_t by)
    {
        return grows ? std::max(size + by, 1) : size;
    }

    bool Succeeds() const
    {
        return kelmora::Succeeds(which, knobs, std::min(in.Width(), before.Width()),
                                 std::min(in.Height(), before.Height()));
    }

    /// The frame with all pictures in that layout, and scratch memory of the host's, guarded likewise, or of the
    /// library's own. The inputs may only be read.
    GuardedPicture RenderedIn(PictureLayout layout, bool hostsMemory) const
    {
        // Which way a picture's rows run is what the byte and the stride say together; the boxes go by the byte alone.
        layout.bottomUp = layout.upward && InnerOf(which) != EffectClass::Layers;
        GuardedPicture first = Laid(in, layout), next = Laid(second, layout), out = Laid(before, layout);
        first.Freeze();
        next.Freeze();
        Moment laid = moment;
        laid.second = &next;
        MemoryHabits habits;
        habits.guard = layout.guard == Guard::PageStart || layout.guard == Guard::PictureStart
            ? Guard::PictureStart
            : Guard::PictureEnd;
        FakeMemoryProvider memory(habits);
        FakeHost host(Levels(which, knobs));
        if (hostsMemory)
            host.SetMemory(&memory);
        EXPECT_EQ(Render(*NewEffect(which), host, laid, first, out), Succeeds());
        return Laid(out, {});
    }
};

class GuardPagesOf : public testing::TestWithParam<EffectClass> {};

TEST_P(GuardPagesOf, Render_PicturesAtUnreadablePages_StaysInThemAndGivesTheSamePixels)
{
    std::size_t turn = 0, renders = 0;
    for (const std::uint32_t format : kPictureFormats)
        for (const auto& size : kSizes) {
            const GuardedFrame frame(GetParam(), format, size, ++turn);
            const GuardedPicture expected = frame.RenderedIn({}, false);
            for (const Guard guard : kPages)
                for (const bool upward : {false, true}) {
                    PictureLayout layout = {.guard = guard, .upward = upward};
                    if (guard == Guard::PictureEnd || guard == Guard::PictureStart)
                        layout.slack = static_cast<std::int32_t>(turn % 3) * BytesOfPixel(format);
                    SCOPED_TRACE(std::string(FormatName(format)) + ", " + std::to_string(size[0]) + " x "
                                 + std::to_string(size[1]) + ", turn " + std::to_string(turn) + ", guard "
                                 + std::to_string(static_cast<int>(guard)) + (upward ? ", upward" : ""));
                    for (const bool hostsMemory : {false, true}) {
                        ASSERT_TRUE(Equal(frame.RenderedIn(layout, hostsMemory), expected)) << hostsMemory;
                        ++renders;
                    }
                }
        }
    EXPECT_EQ(renders, std::size(kPictureFormats) * std::size(kSizes) * std::size(kPages) * 4);
}

INSTANTIATE_TEST_SUITE_P(Effects, GuardPagesOf, testing::ValuesIn(kAllEffects),
                         [](const auto& tested) { return NameOf(tested.param); });

} // namespace
} // namespace kelmora
