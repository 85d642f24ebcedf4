// Renders every effect once and prints, as JSON, the most memory that it held at a time beyond the host's pictures.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <map>
#include <new>

#include "bench/effect_cases.h"
#include "image/primitives/memory.h"
#include "library/effect_numbers.h"

namespace kelmora::bench {
namespace {

/// Blocks that are held now, and the most bytes of them there ever were.
class Meter {
public:
    /// Null when the process has no memory left.
    void* Give(std::size_t bytes)
    {
        void* const memory = ::operator new(bytes, kAlignment, std::nothrow);
        if (!memory) {
            ++m_refused;
            return nullptr;
        }
        m_blocks[memory] = bytes;
        m_now += bytes;
        m_peak = std::max(m_peak, m_now);
        return memory;
    }

    void TakeBack(void* memory)
    {
        const auto block = m_blocks.find(memory);
        if (block == m_blocks.end())
            return;
        m_now -= block->second;
        m_blocks.erase(block);
        ::operator delete(memory, kAlignment);
    }

    /// Forgets the peak; the blocks stay.
    void Begin()
    {
        m_peak = m_now;
        m_refused = 0;
    }

    std::size_t Peak() const { return m_peak; }
    std::size_t Refused() const { return m_refused; }

private:
    static constexpr std::align_val_t kAlignment{64};

    std::map<void*, std::size_t> m_blocks;
    std::size_t m_now = 0, m_peak = 0, m_refused = 0;
};

Meter& TheMeter()
{
    static Meter meter;
    return meter;
}

int StepOf(int width, int pixelBytes)
{
    return (width * pixelBytes + 31) / 32 * 32;
}

/// A host's memory, metered.
class HostMemory final : public IMemoryProvider {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        const bool isAsked = *interfaceId == IMemoryProvider::id;
        *out = isAsked ? static_cast<IMemoryProvider*>(this) : nullptr;
        return isAsked ? S_OK : E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }

    bool KELMORA_CALL Alloc(void** out, std::uint32_t bytes) override
    {
        *out = TheMeter().Give(bytes);
        return *out != nullptr;
    }
    void KELMORA_CALL Free(void* memory) override { TheMeter().TakeBack(memory); }

    bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                                 std::int32_t* stride) override
    {
        *stride = StepOf(width, pixelBytes);
        *out = TheMeter().Give(static_cast<std::size_t>(*stride) * static_cast<std::size_t>(height));
        return *out != nullptr;
    }
    void KELMORA_CALL FreeImage(void* memory) override { TheMeter().TakeBack(memory); }
};

struct Format {
    const char* name;
    std::uint32_t format;
};
constexpr Format kFormats[] = {{"bgra8", PF_BGRA8}, {"bgra32f", PF_BGRA32F}};

struct FrameSize {
    int width, height;
};
constexpr FrameSize kSizes[] = {{1920, 1080}, {3840, 2160}};

/// Whether any pixel of a picture that was all zeros has been written.
bool IsDrawn(const Picture& picture)
{
    const PageMemory& memory = picture.Memory();
    return std::any_of(memory.data(), memory.data() + memory.size(),
                       [](std::uint8_t byte) { return byte != 0; });
}

/// Prints one line; false when the effect did not render, or had to do without memory.
bool Report(const EffectCase& work, const Format& format, const FrameSize& size, const char* separator)
{
    std::size_t peak = 0;
    bool isWhole = false;
    try {
        const Picture first(size.width, size.height, format.format, work.content, 1),
            second(size.width, size.height, format.format, work.content, 2),
            output(size.width, size.height, format.format);
        VideoFrame from = first.Record(), other = second.Record(), to = output.Record();
        HostMemory memory;
        Host host(work.knobs, &memory);
        RenderInfo info = {};
        info.progress = work.progress;
        info.time = work.time;
        IVideoEffect* const effect = CreateEffectOfNumber(work.effectId);
        if (effect) {
            TheMeter().Begin();
            isWhole = effect->Render(&host, &from, &other, &to, &info) && TheMeter().Refused() == 0
                && IsDrawn(output);
            peak = TheMeter().Peak();
            effect->Release();
        }
    } catch (const std::bad_alloc&) { // no room for the host's own pictures
    }
    std::printf("%s{\"effect\": \"%s\", \"format\": \"%s\", \"width\": %d, \"height\": %d, \"peak\": %zu, "
                "\"rendered\": %s}",
                separator, work.name, format.name, size.width, size.height, peak, isWhole ? "true" : "false");
    return isWhole;
}

int ReportAll()
{
    int failures = 0;
    const char* separator = "[\n";
    for (const EffectCase& work : EffectCases())
        for (const Format& format : kFormats)
            for (const FrameSize& size : kSizes) {
                failures += !Report(work, format, size, separator);
                separator = ",\n";
            }
    std::printf("\n]\n");
    return failures == 0 ? 0 : 1;
}

} // namespace
} // namespace kelmora::bench

// --- the library's own heap, metered as well ---------------------------------------------------------------

namespace kelmora {
namespace {

void* ImageAlloc(int width, int height, int pixelBytes, int* stride)
{
    *stride = bench::StepOf(width, pixelBytes);
    return pxMalloc(std::int64_t{*stride} * height);
}

} // namespace

// Since they stand here, the linker leaves those of the archive out.
void* pxMalloc(std::int64_t bytes)
{
    return bench::TheMeter().Give(static_cast<std::size_t>(bytes));
}

void pxFree(void* memory)
{
    bench::TheMeter().TakeBack(memory);
}

BlockKeeper::BlockKeeper() = default;
BlockKeeper::~BlockKeeper() = default;

std::int64_t BlockKeeper::KeptBytes()
{
    return 0;
}

void* pxImageAlloc_1(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 1, stride);
}

void* pxImageAlloc_2(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 2, stride);
}

void* pxImageAlloc_3(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 3, stride);
}

void* pxImageAlloc_4(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 4, stride);
}

void* pxImageAlloc_16(int width, int height, int* stride)
{
    return ImageAlloc(width, height, 16, stride);
}

void pxImageFree(void* memory)
{
    pxFree(memory);
}

} // namespace kelmora

int main()
{
    return kelmora::bench::ReportAll();
}
