// render_sweep [--every-preset]: each effect and the toolbox in each format, small, for programs that watch every byte of memory:
// MemorySanitizer and Valgrind. Uses nothing of the standard library that lies in a file of its own.

#include <cstdio>
#include <cstring>

#include "image/frame_processor.h"
#include "image/primitives/cpu_variant.h"
#include "tests/effects/new_effect.h"
#include "tests/endurance/drawn_render.h"

namespace kelmora {
namespace {

constexpr std::int32_t kWidth = 32, kHeight = 24;
constexpr std::uint32_t kFormats[] = {PF_BGRA8, PF_ARGB8, PF_BGRA32F, PF_ARGB32F};

// Not Clang 14's MemorySanitizer with AVX-512: it takes a permutation of two vectors to mix all that is in them, also
// the bytes behind a row that are loaded and never picked. Nor with a width that is no multiple of a vector: it looks
// at every lane that is rounded, also at those that are then dropped.
#if defined(__has_feature)
#if __has_feature(memory_sanitizer)
constexpr CpuVariant kVariants[] = {CpuVariant::Baseline, CpuVariant::Avx2};
constexpr std::int32_t kSmallerWidth = 16;
#define KELMORA_FEWER_VARIANTS 1
#endif
#endif
#ifndef KELMORA_FEWER_VARIANTS
constexpr CpuVariant kVariants[] = {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512};
constexpr std::int32_t kSmallerWidth = 19;
#endif

class Sweep {
public:
    /// All presets or the second one, which is never "Reset To None" where there are more than two.
    void RenderPresets(EffectClass which, bool all)
    {
        const HeldEffect effect = NewEffect(which);
        const std::uint32_t presets = PresetCount(*effect);
        for (std::uint32_t preset = all ? 0 : 1; preset < (all ? presets : 2); ++preset)
            for (const std::uint32_t format : kFormats)
                RenderOne(*effect, preset, format, PlainHost::kNever);
    }

    /// Every allocation of a render refused in turn, up to the first render that asks for no more.
    void RefuseEach(EffectClass which)
    {
        constexpr std::uint64_t most = 64; // scenes have a picture for each of their pieces
        const HeldEffect effect = NewEffect(which);
        std::uint64_t next = 0, refusedBefore = 0;
        do {
            refusedBefore = m_host.Refused();
            RenderOne(*effect, 1, PF_BGRA8, next++);
        } while (m_host.Refused() > refusedBefore && next < most);
    }

    /// Every operation of the toolbox, with what it left after each.
    void UseToolbox(IFrameProcessor& toolbox)
    {
        constexpr std::int32_t order[] = {2, 0, 3, 1};
        constexpr FrameRect region = {3, 2, 22, 20};
        for (const std::uint32_t format : kFormats) {
            m_pictures.Fill(Small(0, format));
            const VideoFrame first = m_pictures.First(), second = m_pictures.Second();
            VideoFrame output = m_pictures.Output();
            VideoFrame smaller = output;
            smaller.width = kSmallerWidth;
            smaller.height = 13;
            Look(toolbox.Copy(&first, &output));
            Look(toolbox.AlphaOver(&output, &first, &second, false));
            Look(toolbox.AlphaOver(&output, &second, &first, true));
            Look(toolbox.PermuteChannels(&output, order));
            Look(toolbox.Premultiply(&output));
            Look(toolbox.SetChannel(&output, 1, 77));
            Look(toolbox.FlipVertical(&output));
            Look(toolbox.ReverseChannels(&second, &output));
            Look(toolbox.FlipVerticalTo(&first, &output));
            for (std::int32_t quality = 0; quality < 3; ++quality) {
                Look(toolbox.Resize(&first, &smaller, quality));
                Look(toolbox.ResizeRegion(&second, &region, &smaller, quality));
            }
            Look(toolbox.BGRAToYCbCr422(&first, &output, 0));
            Look(toolbox.YCbCr422ToBGRA(&second, &output, 200, 0));
            Look(toolbox.ARGBToYCbCr(&first, &output));
            Look(toolbox.YCbCrToARGB(&second, &output));
        }
    }

    std::uint64_t Pictures() const { return m_pictureCount; }
    std::uint64_t Refused() const { return m_host.Refused(); }
    std::uint64_t Digest() const { return m_digest; }
    std::int64_t OpenBlocks() const { return m_host.OpenBlocks(); }

private:
    static DrawnRender Small(std::uint32_t preset, std::uint32_t format)
    {
        DrawnRender render;
        render.preset = preset;
        render.format = format;
        render.width = kWidth;
        render.height = kHeight;
        render.progress = 0.4;
        render.time = 1.5;
        return render;
    }

    void Look(bool result)
    {
        m_digest =
            (m_digest << 1 | m_digest >> 63) ^ m_pictures.OutputDigest() ^ static_cast<std::uint64_t>(result);
        ++m_pictureCount;
    }

    /// Once with the host's memory and, when nothing is refused, once with the library's own.
    void RenderOne(IVideoEffect& effect, std::uint32_t preset, std::uint32_t format, std::uint64_t refuse)
    {
        DrawnRender render = Small(preset, format);
        render.noise = m_pictureCount;
        for (const bool provides : {true, false}) {
            if (!provides && refuse != PlainHost::kNever)
                break;
            m_host.Provide(provides, refuse);
            Look(RenderDrawn(effect, render, m_host, m_pictures));
        }
    }

    PlainHost m_host;
    RenderPictures m_pictures{kWidth};
    std::uint64_t m_pictureCount = 0, m_digest = 0;
};

} // namespace
} // namespace kelmora

int main(int argc, char** argv)
{
    using namespace kelmora;
    const bool all = argc > 1 && std::strcmp(argv[1], "--every-preset") == 0;
    std::uint64_t pictures = 0;
    std::int64_t openBlocks = 0;
    for (const CpuVariant variant : kVariants) {
        if (!UseVariant(variant))
            continue;
        Sweep sweep;
        for (const EffectClass which : kAllEffects) {
            sweep.RenderPresets(which, all);
            sweep.RefuseEach(which);
        }
        IFrameProcessor* const toolbox = new FrameProcessor;
        sweep.UseToolbox(*toolbox);
        toolbox->Release();
        // Printing it depends on every byte of every picture.
        std::printf("variant %d: %llu pictures, %llu refused allocations, digest %016llx\n",
                    static_cast<int>(variant), static_cast<unsigned long long>(sweep.Pictures()),
                    static_cast<unsigned long long>(sweep.Refused()),
                    static_cast<unsigned long long>(sweep.Digest()));
        std::fflush(stdout);
        pictures += sweep.Pictures();
        openBlocks += sweep.OpenBlocks();
    }
    std::printf("%llu pictures, %lld blocks left\n", static_cast<unsigned long long>(pictures),
                static_cast<long long>(openBlocks));
    return openBlocks == 0 && pictures > 0 ? 0 : 1;
}
