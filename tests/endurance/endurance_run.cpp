#include "tests/endurance/endurance_run.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <optional>
#include <thread>

#include "contract/effect_library.h"
#include "effects/fixing/pixelator.h"
#include "library/exports.h"
#include "tests/endurance/drawn_render.h"
#include "tests/support/failing_new.h"
#include "tests/support/process_figures.h"

namespace kelmora {
namespace {

constexpr std::int32_t kLeast = 16, kMost = 160;
constexpr std::uint32_t kKinds = EffectWaterColor - Effect3DConfetti + 2; ///< Pixelator is the last

/// The one further from 0.
std::int64_t Farther(std::int64_t a, std::int64_t b)
{
    return std::abs(a) > std::abs(b) ? a : b;
}

/// What a host holds in the course of a long day.
class Host {
public:
    explicit Host(std::uint64_t seed) : m_draws(seed), m_pictures(kMost)
    {
        m_first.preset = 1;
        m_first.width = 160;
        m_first.height = 120;
        m_first.format = PF_BGRA32F;
    }

    ~Host() { ReleaseAll(); }

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// One render of the long series.
    void RenderNext()
    {
        const std::uint32_t kind = m_draws.Below(kKinds);
        const bool fails = m_draws.OneIn(50);
        const std::uint64_t refuse = fails ? m_draws.Below(5) : PlainHost::kNever;
        m_host.Provide(fails || m_draws.OneIn(2), refuse);
        {
            const FailingNew heap(fails ? refuse / 2 : FailingNew::kNever);
            RenderWith(kind);
            m_refused += heap.Refused();
        }
        if (m_draws.OneIn(4))
            Release(m_effects[kind]);
        if (m_draws.OneIn(16))
            UseServices();
        if (m_draws.OneIn(64))
            ReleaseAll();
    }

    /// The digest of the same render whenever it is made: 3D Confetti's second preset, by a new object.
    std::uint64_t RenderFirst()
    {
        m_host.Provide(true);
        RenderDrawn(*Effect(0), m_first, m_host, m_pictures);
        Release(m_effects[0]);
        return m_pictures.OutputDigest();
    }

    void ReleaseAll()
    {
        for (IVideoEffect*& effect : m_effects)
            Release(effect);
        Release(m_library);
    }

    std::int64_t OpenBlocks() const { return m_host.OpenBlocks() + FailingNew::OpenBlocksOfProgram(); }
    std::uint64_t Refused() const { return m_refused + m_host.Refused(); }
    std::uint64_t Objects() const { return m_objects; }

private:
    template <class Interface>
    void Release(Interface*& object)
    {
        if (!object)
            return;
        object->Release();
        object = nullptr;
        ++m_objects;
    }

    IEffectLibrary* Library()
    {
        if (!m_library)
            m_library = GetEffectsLibrary();
        return m_library;
    }

    /// Null when memory was refused.
    IVideoEffect* Effect(std::uint32_t kind)
    {
        IVideoEffect*& effect = m_effects[kind];
        if (!effect && kind == kKinds - 1)
            effect = new (std::nothrow) CFacePixelator;
        else if (!effect && Library())
            effect = Library()->CreateEffect(Effect3DConfetti + static_cast<std::int32_t>(kind));
        return effect;
    }

    void RenderWith(std::uint32_t kind)
    {
        if (IVideoEffect* const effect = Effect(kind))
            RenderDrawn(*effect, Draw(m_draws, *effect, kLeast, kMost), m_host, m_pictures);
    }

    /// The objects that are no effects.
    void UseServices()
    {
        if (!Library())
            return;
        IPresetSaver* saver = Library()->CreatePresetSaver();
        IFrameProcessor* processor = Library()->CreateFrameProcessor();
        const VideoFrame first = m_pictures.First();
        VideoFrame output = m_pictures.Output();
        output.width = std::max(1, first.width / 2);
        if (processor)
            processor->Resize(&first, &output, static_cast<std::int32_t>(m_draws.Below(3)));
        Release(processor);
        Release(saver);
    }

    Draws m_draws;
    PlainHost m_host;
    RenderPictures m_pictures;
    DrawnRender m_first;
    IEffectLibrary* m_library = nullptr;
    std::array<IVideoEffect*, kKinds> m_effects = {};
    std::uint64_t m_refused = 0;
    std::uint64_t m_objects = 0;
};

} // namespace

EndurancePlan PlanOf(std::uint64_t renders, std::uint64_t seed)
{
    return {renders, std::min<std::uint64_t>(renders / 4, 5'000), std::max<std::uint64_t>(1, renders / 100),
            seed};
}

EnduranceReport Endure(const EndurancePlan& plan)
{
    ShareOneHeap();
    EnduranceReport report;
    Host host(plan.seed);
    std::uint64_t expected = 0;
    std::thread([&] {
        expected = host.RenderFirst();
        host.ReleaseAll();
    }).join();
    const std::int64_t openBefore = host.OpenBlocks();
    std::optional<ProcessFigures> settled;
    while (report.renders < plan.renders) {
        bool same = false;
        // A thread's end empties what the heap keeps close for it, which would count as in use.
        std::thread([&] {
            for (std::uint64_t i = 0; i < plan.every; ++i)
                host.RenderNext();
            same = host.RenderFirst() == expected;
            host.ReleaseAll();
        }).join();
        report.renders += plan.every;
        report.openBlocks = Farther(report.openBlocks, host.OpenBlocks() - openBefore);
        ++report.looks;
        const ProcessFigures now = FiguresOfThisProcess();
        if (!settled && report.renders >= plan.settled)
            settled = now;
        if (settled) {
            report.heapGrowth = Farther(report.heapGrowth, now.heapBytes - settled->heapBytes);
            report.residentGrowth =
                std::max(report.residentGrowth, now.residentBytes - settled->residentBytes);
            report.handleGrowth = Farther(report.handleGrowth, now.handles - settled->handles);
        }
        if (!same)
            report.unequal.push_back("after " + std::to_string(report.renders) + " renders");
    }
    report.refused = host.Refused();
    report.objects = host.Objects();
    return report;
}

std::string TextOf(const EnduranceReport& report)
{
    return std::to_string(report.renders) + " renders, " + std::to_string(report.objects) + " objects, "
        + std::to_string(report.refused) + " refused allocations, " + std::to_string(report.looks)
        + " looks: blocks left " + std::to_string(report.openBlocks) + ", heap "
        + std::to_string(report.heapGrowth) + " B, memory " + std::to_string(report.residentGrowth / 1024)
        + " KiB, handles " + std::to_string(report.handleGrowth) + ", first picture unequal "
        + std::to_string(report.unequal.size()) + " times";
}

} // namespace kelmora
