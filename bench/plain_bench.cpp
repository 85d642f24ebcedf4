// Plain loops at the work of ours.

#include <cstring>

#include "bench/operations.h"
#include "bench/plain_loops.h"
#include "image/tent_kernel.h"

namespace kelmora::bench {
namespace {

/// The pictures' values, as bytes or as floats.
template <class T>
struct Values {
    const T *first, *second;
    T* output;
    int pixels, width, height;
    const PlainLoops* loops;

    explicit Values(const Setting& setting)
        : first(setting.first.Memory().As<T>()), second(setting.second.Memory().As<T>()),
          output(setting.output.Memory().As<T>()), pixels(setting.Width() * setting.Height()),
          width(setting.Width()), height(setting.Height()), loops(&PlainLoopsFor(CurrentVariant()))
    {
    }
};

template <class T, class Run>
Case Plain(const char* name, Run run, Likeness likeness = kSame)
{
    Case work;
    work.name = name;
    work.maker = "plain loop";
    work.prepare = [run](const Setting& setting) {
        const Values<T> values(setting);
        return Work{[values, run] { run(values); }};
    };
    work.likeness = likeness;
    return work;
}

template <class T, class Run>
Case PlainInPlace(const char* name, Run run)
{
    Case work = Plain<T>(name, run);
    work.prepare = [inner = work.prepare](const Setting& setting) {
        std::memcpy(setting.output.Bytes(), setting.second.Bytes(), setting.second.Memory().size());
        return inner(setting);
    };
    return work;
}

using Bytes = Values<std::uint8_t>;
using Floats = Values<float>;

template <class Run>
void ForBytes(const char* name, Run run, Likeness likeness = kSame)
{
    RegisterBytes(Plain<std::uint8_t>(name, run, likeness));
}

template <class Run>
void ForFloats(const char* name, Run run, Likeness likeness = kSame)
{
    RegisterFloats(Plain<float>(name, run, likeness));
}

constexpr std::uint8_t kFillBytes[] = {kFill & 255, kFill >> 8 & 255, kFill >> 16 & 255, kFill >> 24};

void RegisterCopies()
{
    ForBytes("Fill", [](const Bytes& v) { v.loops->fillBytes(v.output, v.pixels, kFillBytes); });
    ForFloats("Fill", [](const Floats& v) {
        float colour[4];
        for (std::size_t c = 0; c < 4; ++c)
            colour[c] = kFillBytes[c] * 0.003921569f;
        v.loops->fillFloats(v.output, v.pixels, colour);
    });
    ForBytes("Copy alpha", [](const Bytes& v) { v.loops->copyAlphaBytes(v.first, v.output, v.pixels); });
    ForFloats("Copy alpha", [](const Floats& v) { v.loops->copyAlphaFloats(v.first, v.output, v.pixels); });
    ForBytes("Extract alpha",
             [](const Bytes& v) { v.loops->extractAlphaBytes(v.first, v.output, v.pixels); });
    ForFloats("Extract alpha",
              [](const Floats& v) { v.loops->extractAlphaFloats(v.first, v.output, v.pixels); });
    ForBytes("Reverse channels", [](const Bytes& v) { v.loops->reverseBytes(v.first, v.output, v.pixels); });
    ForFloats("Reverse channels",
              [](const Floats& v) { v.loops->reverseFloats(v.first, v.output, v.pixels); });
}

/// The result has another format, so it lies in memory of its own.
void RegisterConversions()
{
    Case work = Plain<std::uint8_t>("Convert to floats", [](const Bytes&) {}, {-1, ""});
    work.prepare = [](const Setting& setting) {
        const Bytes v(setting);
        const auto result = std::make_shared<Picture>(v.width, v.height, PF_BGRA32F);
        return Work{[=] { v.loops->toFloats(v.first, result->Floats(), v.pixels); }};
    };
    RegisterBytes(work);
    work.name = "Convert to bytes";
    work.prepare = [](const Setting& setting) {
        const Floats v(setting);
        const auto result = std::make_shared<Picture>(v.width, v.height, PF_BGRA8);
        return Work{[=] { v.loops->toBytes(v.first, result->Bytes(), v.pixels); }};
    };
    RegisterFloats(work);
}

void RegisterBlends()
{
    ForBytes("Weighted sum",
             [](const Bytes& v) { v.loops->weightedBytes(v.first, v.second, v.output, v.pixels, 76, 178); });
    ForFloats("Weighted sum", [](const Floats& v) {
        v.loops->weightedFloats(v.first, v.second, v.output, v.pixels, static_cast<float>(kFirstShare),
                                static_cast<float>(kSecondShare));
    });
    RegisterBytes(PlainInPlace<std::uint8_t>(
        "Mix in place", [](const Bytes& v) { v.loops->mixBytes(v.first, v.output, v.pixels, 76, 179); }));
    RegisterFloats(PlainInPlace<float>("Mix in place", [](const Floats& v) {
        v.loops->mixFloats(v.first, v.output, v.pixels, 76 * 0.003921569f, 179 * 0.003921569f);
    }));
    RegisterBytes(PlainInPlace<std::uint8_t>(
        "Average in place", [](const Bytes& v) { v.loops->averageBytes(v.first, v.output, v.pixels); }));
    RegisterFloats(PlainInPlace<float>(
        "Add in place", [](const Floats& v) { v.loops->addFloats(v.first, v.output, v.pixels); }));
    RegisterBytes(PlainInPlace<std::uint8_t>("Scale in place", [](const Bytes& v) {
        constexpr std::uint8_t scale[] = {230, 240, 250, 255};
        v.loops->scaleBytes(v.output, v.pixels, scale);
    }));
    ForBytes("Premultiply", [](const Bytes& v) { v.loops->premultiplyBytes(v.first, v.output, v.pixels); });
    ForFloats("Premultiply",
              [](const Floats& v) { v.loops->premultiplyFloats(v.first, v.output, v.pixels); });
    ForBytes("Over, straight",
             [](const Bytes& v) { v.loops->overBytes(v.first, v.second, v.output, v.pixels); });
    ForFloats("Over, straight",
              [](const Floats& v) { v.loops->overFloats(v.first, v.second, v.output, v.pixels); });
    ForBytes("Over, premultiplied",
             [](const Bytes& v) { v.loops->overPremultipliedBytes(v.first, v.second, v.output, v.pixels); });
    ForFloats("Over, premultiplied", [](const Floats& v) {
        v.loops->overPremultipliedFloats(v.first, v.second, v.output, v.pixels);
    });
}

void RegisterColours()
{
    constexpr float tint[] = {0x40 / 255.0f, 0x80 / 255.0f, 1.0f, 0.0f}; // blue first
    ForBytes("Colour twist",
             [](const Bytes& v) { v.loops->twistBytes(v.first, v.output, v.pixels, kTwist); });
    ForFloats("Colour twist",
              [](const Floats& v) { v.loops->twistFloats(v.first, v.output, v.pixels, kTwist); });
    ForBytes("Tint", [=](const Bytes& v) { v.loops->tintBytes(v.first, v.output, v.pixels, tint); });
    ForFloats("Tint", [=](const Floats& v) { v.loops->tintFloats(v.first, v.output, v.pixels, tint); });
    ForBytes("RGB to HSV", [](const Bytes& v) { v.loops->hsvBytes(v.first, v.output, v.pixels); }, {2, ""});
}

void RegisterNeighbourhoods()
{
    ForBytes("Sharpen 3x3", [](const Bytes& v) {
        const int step = 4 * v.width;
        for (int y = 1; y < v.height - 1; ++y)
            v.loops->sharpenRow(v.first + y * step + 4, v.output + y * step + 4, v.width - 2, step);
    });
    std::vector<float> taps(kRowTaps);
    MakeTentKernelF(taps.data(), kRowTaps);
    const auto eachRow = [taps](const auto& v, auto filter) {
        constexpr int margin = kRowTaps / 2;
        for (int y = 0; y < v.height; ++y) {
            const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(y) * v.width * 4;
            filter(v.first + row, v.output + row + 4 * margin, v.width - 2 * margin, taps.data(), kRowTaps);
        }
    };
    ForBytes("Row filter, 21 taps", [=](const Bytes& v) { eachRow(v, v.loops->filterRowBytes); });
    ForFloats("Row filter, 21 taps", [=](const Floats& v) { eachRow(v, v.loops->filterRowFloats); });
}

const bool g_registered = [] {
    RegisterCopies();
    RegisterConversions();
    RegisterBlends();
    RegisterColours();
    RegisterNeighbourhoods();
    return true;
}();

} // namespace
} // namespace kelmora::bench
