#include "tests/host/fake_library/fake_render.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "contract/memory_provider.h"
#include "tests/host/fake_library/fault.h"

namespace kelmora::fake {
namespace {

/// A picture with its lowest row in memory first.
struct View {
    std::uint8_t* data = nullptr;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t stride = 0;
    std::int32_t pixelBytes = 0;
    std::uint32_t format = 0;
    bool bottomUp = false;

    std::uint8_t* At(std::int64_t x, std::int64_t y) const { return data + y * stride + x * pixelBytes; }
};

View ViewOf(const VideoFrame& frame)
{
    View view;
    view.data = static_cast<std::uint8_t*>(frame.data);
    view.width = frame.width;
    view.height = frame.height;
    view.stride = frame.stride;
    view.pixelBytes = frame.pixelBytes;
    view.format = frame.format;
    view.bottomUp = frame.bottomUp != 0;
    if (view.stride < 0 && view.height > 0) {
        view.data += (view.height - 1) * view.stride;
        view.stride = -view.stride;
        if (!Breaks("forgets-what-is-up"))
            view.bottomUp = !view.bottomUp;
    }
    if (Breaks("assumes-tight-rows"))
        view.stride = view.width * view.pixelBytes;
    return view;
}

bool IsFloat(std::uint32_t format)
{
    return format == PF_BGRA32F || format == PF_ARGB32F;
}

/// Whether the picture can be worked on as one of the four formats.
bool IsUsable(const View& view)
{
    const bool isByte = view.format == PF_BGRA8 || view.format == PF_ARGB8;
    const std::int32_t bytes = IsFloat(view.format) ? 16 : 4;
    if (!isByte && !IsFloat(view.format))
        return false;
    if (Breaks("trusts-format"))
        return view.width > 0 && view.height > 0;
    return view.pixelBytes == bytes && view.width > 0 && view.height > 0
        && view.stride >= view.width * view.pixelBytes;
}

/// Scratch for the rows, from the host where it offers memory.
class Scratch {
public:
    explicit Scratch(IVideoHost* host)
    {
        void* view = nullptr;
        if (!Breaks("ignores-provider") && host->QueryInterface(&IMemoryProvider::id, &view) == S_OK)
            m_provider = static_cast<IMemoryProvider*>(view);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        if (m_provider == nullptr) {
            delete[] static_cast<std::uint8_t*>(m_picture);
            return;
        }
        if (m_table != nullptr)
            m_provider->Free(m_table);
        if (m_picture != nullptr && !Breaks("forgets-memory"))
            Breaks("frees-by-other-function") ? m_provider->Free(m_picture)
                                              : m_provider->FreeImage(m_picture);
        if (!Breaks("holds-provider"))
            m_provider->Release();
    }

    /// Room for a picture and a byte table besides; whether there is.
    bool Take(std::int32_t width, std::int32_t height, std::int32_t pixelBytes)
    {
        if (m_provider == nullptr) {
            m_picture = new (std::nothrow) std::uint8_t[static_cast<std::size_t>(width) * 16];
            if (m_picture != nullptr)
                std::memset(m_picture, 0, 16);
            return m_picture != nullptr;
        }
        std::int32_t stride = 0;
        const bool isGiven = m_provider->AllocImage(&m_picture, width, height, pixelBytes, &stride);
        m_firstByte =
            Breaks("uses-new-memory") && m_picture != nullptr ? *static_cast<std::uint8_t*>(m_picture) : 0;
        if (Breaks("trusts-answer"))
            return isGiven;
        if (Breaks("trusts-memory"))
            *static_cast<volatile std::uint8_t*>(m_picture) = 1;
        if (m_picture == nullptr)
            return false;
        if (Breaks("writes-past-memory"))
            static_cast<std::uint8_t*>(m_picture)[stride * (height - 1) + width * pixelBytes] = 0;
        m_provider->Alloc(&m_table, 256);
        if (m_table == nullptr && Breaks("loses-memory-when-refused"))
            m_picture = nullptr;
        return m_table != nullptr;
    }

    std::uint8_t FirstByte() const { return m_firstByte; }

private:
    IMemoryProvider* m_provider = nullptr;
    void* m_picture = nullptr;
    void* m_table = nullptr;
    std::uint8_t m_firstByte = 0;
};

struct Settings {
    double level = 0.0;
    bool isNegative = false;
    double progress = 0.0;
};

double Between0And1(double value)
{
    return value > 0.0 ? std::min(value, 1.0) : 0.0; // not-a-number counts as 0
}

Settings Read(IVideoHost& host, const RenderInfo& info)
{
    ParamValue value = {};
    Settings settings;
    host.GetParamValue(0, &value, Breaks("asks-with-other-kind") ? ParamChoice : ParamFloat);
    const float level = WordFloat(value.value);
    while (Breaks("hangs-on-odd-knobs") && !(level <= 1.0f)) {
        volatile int spin = 0;
        static_cast<void>(spin);
    }
    settings.level = Between0And1(static_cast<double>(level));
    host.GetParamValue(1, &value, ParamChoice);
    if (Breaks("trusts-choice")) {
        static volatile int table[2] = {0, 1};
        const volatile int* far = table + static_cast<std::ptrdiff_t>(value.value & 0x7FFFFFFFu) * 64;
        static_cast<void>(*far);
    }
    host.GetParamValue(2, &value, ParamColor);
    host.GetParamValue(3, &value, ParamCheck);
    settings.isNegative = (value.value & 0xFFu) != 0;
    host.GetParamValue(4, &value, ParamPoint);
    if (Breaks("asks-for-other-knob"))
        host.GetParamValue(5, &value, ParamFloat);
    if (Breaks("calls-kept-place"))
        host.HostReserved4(0, 0, 0);
    settings.progress = Between0And1(info.progress);
    return settings;
}

/// The channel of the first picture, lifted or turned round, or on its way to the second one. 0 to 1.
double Work(bool isBlend, const Settings& settings, double first, double second, double lift)
{
    if (isBlend)
        return first + (second - first) * settings.progress;
    const double lifted = first + (1.0 - first) * settings.level * lift;
    return settings.isNegative ? 1.0 - lifted : lifted;
}

double Channel(const View& view, std::int64_t x, std::int64_t y, std::int32_t channel)
{
    if (!IsFloat(view.format))
        return view.At(x, y)[channel] / 255.0;
    float level = 0.0f;
    std::memcpy(&level, view.At(x, y) + 4 * channel, sizeof level);
    return static_cast<double>(level);
}

void SetChannel(const View& view, std::int64_t x, std::int64_t y, std::int32_t channel, double level)
{
    if (!IsFloat(view.format)) {
        view.At(x, y)[channel] = static_cast<std::uint8_t>(Between0And1(level) * 255.0 + 0.5);
        return;
    }
    const float single = static_cast<float>(level);
    std::memcpy(view.At(x, y) + 4 * channel, &single, sizeof single);
}

/// What the broken rules do to a picture that is otherwise done.
void Spoil(const View& first, const View& output, std::int64_t width, std::int64_t height,
           const Memory& memory, const Scratch& scratch, const VideoFrame& record, const RenderInfo& info)
{
    static int frames = 0;
    const bool isOdd = (Breaks("counts-frames") && ++frames % 2 == 0)
        || (Breaks("remembers-last-frame") && memory.lastProgress > info.progress)
        || (Breaks("minds-the-thread") && memory.isOtherThread)
        || (Breaks("uses-new-memory") && scratch.FirstByte() > 0x80)
        || (Breaks("reads-reserved") && record.reserved[0] != 0)
        || (Breaks("reads-unused-info") && info.unused48 != 0)
        || (Breaks("takes-bottom-up-as-1") && record.bottomUp == 1)
        || (Breaks("any-flag-is-field") && (info.flags & RenderFieldPicture) != 0);
    if (isOdd)
        SetChannel(output, 0, 0, 1, 1.0 - Channel(output, 0, 0, 1));
    if (Breaks("writes-slack"))
        std::memset(output.At(width, 0), 0,
                    static_cast<std::size_t>(output.stride - width * output.pixelBytes));
    if (Breaks("writes-behind-picture"))
        *output.At(output.width, output.height - 1) = 0;
    if (Breaks("fills-whole-output") && output.width > width)
        SetChannel(output, width, 0, 0, 0.5);
    if (Breaks("writes-input"))
        SetChannel(first, 0, 0, 0, 1.0 - Channel(first, 0, 0, 0));
    if (Breaks("alpha-is-always-full"))
        SetChannel(output, 0, 0, output.format == PF_ARGB8 || output.format == PF_ARGB32F ? 0 : 3, 1.0);
    if (Breaks("not-a-number") && IsFloat(output.format))
        SetChannel(output, width - 1, height - 1, 1, std::numeric_limits<double>::quiet_NaN());
}

} // namespace

bool Render(bool isBlend, const Memory& memory, IVideoHost* host, const VideoFrame* first,
            const VideoFrame* second, VideoFrame* output, const RenderInfo* info)
{
    const bool isMissing =
        first == nullptr || output == nullptr || first->data == nullptr || output->data == nullptr;
    if (isMissing && Breaks("true-without-pictures"))
        return true;
    if (isMissing && Breaks("crashes-without-pictures"))
        Crash();
    if (isMissing || host == nullptr || info == nullptr)
        return false;

    Scratch scratch(host);
    const Settings settings = Read(*host, *info);
    const View a = ViewOf(*first);
    const View b = isBlend && second != nullptr ? ViewOf(*second) : a;
    const View out = ViewOf(*output);
    const bool fits = a.format == out.format && b.format == out.format;
    if (!IsUsable(a) || !IsUsable(b) || !IsUsable(out) || !fits || a.data == nullptr || b.data == nullptr)
        return true;
    if (Breaks("refuses-argb32f") && out.format == PF_ARGB32F)
        return false;
    if (Breaks("refuses-last-preset") && settings.level == 1.0)
        return false;

    std::int64_t width = std::min({a.width, b.width, out.width});
    std::int64_t height = std::min({a.height, b.height, out.height});
    if (Breaks("uses-input-size"))
        width = a.width;
    if (Breaks("crashes-on-one-pixel") && width == 1)
        Crash();
    if (!scratch.Take(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), out.pixelBytes))
        return true;
    if (Breaks("leaves-last-row"))
        --height;

    const std::int32_t alpha = out.format == PF_ARGB8 || out.format == PF_ARGB32F ? 0 : 3;
    for (std::int64_t y = 0; y < height; ++y) {
        const auto top = static_cast<double>(a.bottomUp ? height - 1 - y : y);
        const double lift = (top + 1.0) / static_cast<double>(height);
        for (std::int64_t x = 0; x < width; ++x) {
            for (std::int32_t channel = 0; channel < 4; ++channel) {
                const double was = Channel(a, x, y, channel);
                const double level = Work(isBlend, settings, was, Channel(b, x, y, channel), lift);
                SetChannel(out, x, y, channel, !isBlend && channel == alpha ? was : level);
            }
        }
    }
    Spoil(a, out, width, height, memory, scratch, *first, *info);
    if (Breaks("changes-record"))
        output->width = 1;
    return true;
}

} // namespace kelmora::fake
