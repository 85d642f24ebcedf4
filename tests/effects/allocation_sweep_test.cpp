// Memory that runs out: each block that a render asks for is refused alone, and with all that follow, until a render
// asks for no more. Blocks of the host's, of operator new, and of the heap.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/effects/render.h"
#include "tests/effects/scene3d/transitions.h"
#include "tests/support/failing_heap.h"
#include "tests/support/failing_new.h"
#include "tests/support/pictures.h"

namespace kelmora {
namespace {

/// Whose memory is refused, while the other kinds are at hand.
enum class Memory { Host, OperatorNew, Heap };

struct Refusal {
    Memory memory = Memory::Host;
    bool fromThenOn = false;
    std::uint64_t number = 0;

    std::uint64_t Only() const { return fromThenOn ? FailingNew::kNever : number; }
    std::uint64_t From() const { return fromThenOn ? number : FailingNew::kNever; }
};

std::string Name(const Refusal& refusal)
{
    const char* const names[] = {"the host's block ", "operator new ", "the heap's block "};
    return names[static_cast<int>(refusal.memory)] + std::to_string(refusal.number)
        + (refusal.fromThenOn ? " and all that follow" : "");
}

struct FrameSize {
    std::int32_t width, height, outWidth, outHeight;
    bool halfHeight = false;
    bool inPlace = false; ///< the output is the first picture itself
};
constexpr FrameSize kFrames[] = {
    {1, 1, 1, 1},
    {2, 3, 4, 5},
    {4, 60, 4, 60},
    {33, 17, 36, 18},
    {96, 54, 96, 54},
    {96, 27, 97, 27, true},
    {33, 19, 33, 19, false, true},
};

struct KnobSet {
    std::vector<float> levels;
    bool isLeftKnown = true; ///< whether LeftWithoutMemory knows what remains
};

/// Every style and background that takes memory in a way of its own.
std::vector<KnobSet> KnobSetsOf(EffectClass which)
{
    switch (which) {
    case EffectClass::BorderCrop:
        return {{{0.6f, 0.4f, 0.6f, 0}},
                {{0.6f, 0.4f, 0.6f, 1}},
                {{0.6f, 0.4f, 0.6f, 2}},
                {{0.6f, 0.4f, 0.6f, 3}}};
    case EffectClass::Smear:
        return {{{0.6f, 0.4f, 0.6f, 0.4f, 0}},
                {{0.6f, 0.4f, 0.6f, 0.4f, 1}},
                {{0.6f, 0.4f, 0.6f, 0.4f, 2}},
                {{0.6f, 0.4f, 0.6f, 0.4f, 3}}};
    case EffectClass::BlowingLeaves: // 3 by 2 pieces
        return {{{0.5f, 0.11f, 0.06f, 0.3f, 0.1f, 0.5f, 0, 0}}};
    case EffectClass::WrapConfetti:
        return {{{0.11f, 0.06f, 0.1f, 0}}};
    case EffectClass::Layers: // two boxes, without a glow and with one
        return {{{0.12f, 0.3f, 0.2f, 0, 0, 0, 0, 0, 0, 0, 2}},
                {{0.12f, 0.3f, 0.2f, 0, 1, 0, 0, 0, 0.6f, 0.7f, 0}, false}};
    case EffectClass::WrapPizzaBoxes:
        return {{{0.12f, 0.2f, 0, 0, 0, 0, 0, 2}}, {{0.12f, 0.2f, 1, 0, 0, 0.6f, 0.7f, 0}, false}};
    default:
        return {{{0.6f, 0.4f}}};
    }
}

/// Two formats do for all but the first set of knobs.
bool IsSwept(bool isFirstSet, std::uint32_t format)
{
    return isFirstSet || format == PF_BGRA8 || format == PF_ARGB32F;
}

/// What Render says when memory was refused. What succeeds all the same says nothing of it.
bool ResultWithoutMemory(EffectClass which)
{
    return InnerOf(which) != EffectClass::WaterColor && InnerOf(which) != EffectClass::BorderCrop;
}

/// One frame, and what may come of it.
class Sweep {
public:
    Sweep(EffectClass which, const KnobSet& knobs, std::uint32_t format, const FrameSize& size)
        : m_which(which), m_knobs(knobs), m_size(size), m_in(Noisy(size.width, size.height, format, 1)),
          m_second(Incoming(m_in)),
          m_before(size.inPlace ? GuardedPicture(m_in) : Noisy(size.outWidth, size.outHeight, format, 2)),
          m_whole(m_before)
    {
        RenderFresh(which, knobs.levels, m_in, m_whole, size.halfHeight);
    }

    /// Refuses block after block until a render asks for no more. Gives how many renders had to do without one.
    std::uint64_t Run(Memory memory, bool fromThenOn)
    {
        for (Refusal refusal = {memory, fromThenOn, 0};; ++refusal.number) {
            SCOPED_TRACE(Name(refusal));
            if (!RefuseAndRecover(refusal) || testing::Test::HasFailure())
                return refusal.number;
        }
    }

    /// A host that gives no pictures but plain memory. What works picture by picture then leaves the output alone.
    void RunWithoutImages()
    {
        SCOPED_TRACE("no pictures");
        GuardedPicture out = m_before;
        if (!RenderWithout({.refuseImages = true}, out))
            return;
        EXPECT_TRUE(IsLeft(out));
        if (LeavesTheFirst(m_which)) {
            EXPECT_TRUE(Equal(out, m_left.front()));
        }
    }

    /// A host that gives pictures but no plain memory, which is for the taps of the blurs that are as long as
    /// the picture asks for.
    void RunWithoutPlainMemory()
    {
        SCOPED_TRACE("no plain memory");
        GuardedPicture out = m_before;
        const bool wasRefused = RenderWithout({.refusePlain = true}, out);
        if (!IsScene(m_which)) {
            EXPECT_EQ(wasRefused, KeepsTapsInPlainMemory(m_which));
        }
        if (wasRefused) {
            EXPECT_TRUE(IsLeft(out));
        }
    }

private:
    static bool LeavesTheFirst(EffectClass which)
    {
        const EffectClass inner = InnerOf(which);
        return inner == EffectClass::Airbrush || inner == EffectClass::Colormelt
            || inner == EffectClass::Smear || inner == EffectClass::EmbossedPaperBlend
            || inner == EffectClass::Activecamera || inner == EffectClass::UnsharpMask;
    }
    static bool KeepsTapsInPlainMemory(EffectClass which)
    {
        return InnerOf(which) == EffectClass::Airbrush || InnerOf(which) == EffectClass::Colormelt;
    }

    /// A render with such a host. Gives whether anything was refused; where nothing was, the picture is whole.
    bool RenderWithout(const MemoryHabits& habits, const GuardedPicture& out)
    {
        FakeMemoryProvider memory(habits);
        FakeHost host(Levels(m_which, m_knobs.levels));
        host.SetMemory(&memory);
        const bool result = RenderOnce(*NewEffect(m_which), host, out);
        EXPECT_EQ(memory.OpenBlocks(), 0u);
        EXPECT_EQ(result, memory.Refused() != 0 ? ResultWithoutMemory(m_which) : Succeeds());
        if (memory.Refused() == 0) {
            EXPECT_TRUE(Equal(out, m_whole));
        }
        return memory.Refused() != 0;
    }

    bool Succeeds() const { return kelmora::Succeeds(m_which, m_knobs.levels, m_size.width, m_size.height); }

    /// A render with a refusal, and one on the same object without. Gives whether anything was refused.
    bool RefuseAndRecover(const Refusal& refusal)
    {
        GuardedPicture out = m_before, again = m_before;
        const std::int64_t open = FailingHeap::OpenBlocksOfProgram();
        bool wasRefused = false, result = false, resultAgain = false;
        {
            const HeldEffect effect = NewEffect(m_which);
            wasRefused = RenderRefusing(refusal, *effect, out, result);
            QuietHost host(Levels(m_which, m_knobs.levels));
            resultAgain = RenderOnce(*effect, host, again);
        }
        EXPECT_EQ(FailingHeap::OpenBlocksOfProgram(), open) << "blocks are left";
        // The library asks its heap a second time for a picture, when it has freed what it keeps.
        const bool isMadeGood = refusal.memory == Memory::Heap && !refusal.fromThenOn && Equal(out, m_whole);
        const bool goesWithout = wasRefused && !isMadeGood;
        EXPECT_EQ(result, goesWithout ? ResultWithoutMemory(m_which) : Succeeds());
        EXPECT_TRUE(goesWithout ? IsLeft(out) : Equal(out, m_whole));
        EXPECT_EQ(resultAgain, Succeeds());
        EXPECT_TRUE(Equal(again, m_whole)) << "the next frame";
        out.Check();
        if (!IsScene(m_which)) {
            EXPECT_TRUE(SameOutside(out, m_before, m_size.width, m_size.height));
        }
        return wasRefused;
    }

    bool RenderRefusing(const Refusal& refusal, IVideoEffect& effect, const GuardedPicture& out, bool& result)
    {
        if (refusal.memory == Memory::Host) {
            FakeMemoryProvider memory({.refuseOnly = refusal.Only(), .refuseFrom = refusal.From()});
            FakeHost host(Levels(m_which, m_knobs.levels));
            host.SetMemory(&memory);
            result = RenderOnce(effect, host, out);
            EXPECT_EQ(memory.OpenBlocks(), 0u);
            return memory.Refused() != 0;
        }
        QuietHost host(Levels(m_which, m_knobs.levels));
        if (refusal.memory == Memory::OperatorNew) {
            const FailingNew scope(refusal.Only(), refusal.From());
            result = RenderOnce(effect, host, out);
            return scope.Refused() != 0;
        }
        const FailingHeap scope(refusal.Only(), refusal.From());
        result = RenderOnce(effect, host, out);
        return scope.Refused() != 0;
    }

    bool RenderOnce(IVideoEffect& effect, IVideoHost& host, const GuardedPicture& out) const
    {
        VideoFrame output = out.Frame(), first = m_size.inPlace ? output : m_in.Frame();
        VideoFrame second = m_second.Frame();
        RenderInfo info = MakeInfo(m_size.halfHeight ? FieldAtProgress(0.4) : AtProgress(0.4));
        return effect.Render(&host, &first, &second, &output, &info);
    }

    /// For EXPECT_TRUE: `out` is one of the pictures that stay when there is no memory.
    testing::AssertionResult IsLeft(const GuardedPicture& out)
    {
        if (!m_knobs.isLeftKnown)
            return testing::AssertionSuccess();
        if (m_left.empty())
            m_left = LeftWithoutMemory(m_which, m_knobs.levels, m_in, m_before, m_size.halfHeight);
        // Pixelator's mask may be blurred even so, and pieces are lit, which rounds floats.
        const bool rounds =
            IsFloatFormat(out.Format()) && (m_which == EffectClass::FacePixelator || IsScene(m_which));
        for (const GuardedPicture& left : m_left)
            if (rounds ? Near(out, left, 1e-6) : Equal(out, left))
                return testing::AssertionSuccess();
        return testing::AssertionFailure() << "a picture that no step is known to leave";
    }

    EffectClass m_which;
    KnobSet m_knobs;
    FrameSize m_size;
    GuardedPicture m_in, m_second, m_before, m_whole;
    std::vector<GuardedPicture> m_left; ///< once it is asked for
};

// No render throws: a host without memory may have none for an exception either.
class AllocationSweep : public testing::TestWithParam<EffectClass> {};

TEST_P(AllocationSweep, Render_AnyBlockRefused_LeavesTheDocumentedPictureAndRecovers)
{
    std::uint64_t refused[3] = {};
    const std::vector<KnobSet> sets = KnobSetsOf(GetParam());
    for (const KnobSet& knobs : sets)
        for (const std::uint32_t format : kPictureFormats)
            for (const FrameSize& size : kFrames) {
                if (!IsSwept(&knobs == &sets.front(), format))
                    continue;
                SCOPED_TRACE(std::string(FormatName(format)) + ", " + std::to_string(size.width) + " x "
                             + std::to_string(size.height) + (size.halfHeight ? ", field" : "")
                             + (size.inPlace ? ", in place" : "") + ", last knob "
                             + std::to_string(knobs.levels.back()));
                // Operator new takes from the heap, which is refused in every format.
                const bool refusesNew = FailingNew::Works() && format == PF_BGRA8;
                Sweep sweep(GetParam(), knobs, format, size);
                for (const Memory memory : {Memory::Host, Memory::OperatorNew, Memory::Heap})
                    for (const bool fromThenOn : {false, true})
                        if (memory != Memory::OperatorNew || refusesNew)
                            refused[static_cast<int>(memory)] += sweep.Run(memory, fromThenOn);
                ASSERT_FALSE(HasFailure());
            }
    EXPECT_GT(refused[0], 0u) << "no memory was asked for";
    EXPECT_GT(refused[2], 0u) << "no memory was asked for";
    EXPECT_EQ(refused[1], 0u) << "operator new, which throws when it is refused, even where it only tells so";
    RecordProperty("renders", std::to_string(refused[0] + refused[1] + refused[2]));
}

TEST_P(AllocationSweep, Render_OneKindOfMemoryRefused_LeavesTheDocumentedPicture)
{
    for (const KnobSet& knobs : KnobSetsOf(GetParam()))
        for (const std::uint32_t format : kPictureFormats)
            for (const FrameSize& size : kFrames) {
                SCOPED_TRACE(std::string(FormatName(format)) + ", " + std::to_string(size.width) + " x "
                             + std::to_string(size.height) + (size.inPlace ? ", in place" : "")
                             + ", last knob " + std::to_string(knobs.levels.back()));
                Sweep sweep(GetParam(), knobs, format, size);
                sweep.RunWithoutImages();
                sweep.RunWithoutPlainMemory();
                ASSERT_FALSE(HasFailure());
            }
}

INSTANTIATE_TEST_SUITE_P(Effects, AllocationSweep, testing::ValuesIn(kAllEffects),
                         [](const auto& tested) { return NameOf(tested.param); });

} // namespace
} // namespace kelmora
