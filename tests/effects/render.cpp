#include "tests/effects/render.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/golden/effect_presets.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/detail_enhancer.h"

namespace kelmora {
namespace {

constexpr double kUnit = 1.0 / (1 << 24);

bool IsAirBrush(EffectClass which)
{
    return which == EffectClass::Airbrush || which == EffectClass::WrapAirbrush;
}

double LargestMagnitude(const GuardedPicture& picture)
{
    double largest = 1.0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                largest = std::max(largest, std::fabs(static_cast<double>(picture.Float(x, y, c))));
    return largest;
}

} // namespace

std::size_t KnobCount(EffectClass which)
{
    return which == EffectClass::WrapDetailEnhancer ? 1 : 2;
}

std::vector<ParamValue> Levels(EffectClass which, const std::vector<float>& levels)
{
    std::vector<ParamValue> knobs;
    for (std::size_t i = 0; i < KnobCount(which); ++i)
        knobs.push_back(LevelKnob(levels.at(i)));
    return knobs;
}

bool Render(IVideoEffect& effect, FakeHost& host, const GuardedPicture& in, GuardedPicture& out,
            bool halfHeight)
{
    InfoFields fields;
    if (halfHeight)
        fields = FieldAtProgress(0.0);
    const FlushInfo info(fields);
    VideoFrame first = in.Frame(), output = out.Frame();
    const VideoFrame firstBefore = first, outputBefore = output;
    host.BeginRender();
    const bool result = effect.Render(&host, &first, nullptr, &output, info.Get());
    host.EndRender();
    EXPECT_EQ(std::memcmp(&first, &firstBefore, sizeof first), 0) << "the picture's record has changed";
    EXPECT_EQ(std::memcmp(&output, &outputBefore, sizeof output), 0) << "the output's record has changed";
    return result;
}

void RenderFresh(EffectClass which, const std::vector<float>& levels, const GuardedPicture& in,
                 GuardedPicture& out, bool halfHeight)
{
    FakeHost host(Levels(which, levels));
    const HeldEffect effect = NewEffect(which);
    EXPECT_TRUE(Render(*effect, host, in, out, halfHeight));
}

void RenderPlain(EffectClass which, const std::vector<float>& levels, const VideoFrame& in,
                 const VideoFrame& out, bool halfHeight, std::vector<double>* closeness)
{
    if (IsAirBrush(which))
        reference::AirBrush(in, out, levels.at(0), levels.at(1), closeness);
    else if (which == EffectClass::UnsharpMask)
        reference::DetailEnhancer(in, out, levels.at(0), levels.at(1), halfHeight);
    else
        reference::DetailEnhancer(in, out, kWrapDetailEnhancerDefinition, levels.at(0), halfHeight);
}

testing::AssertionResult AsPlain(EffectClass which, const std::vector<float>& levels,
                                 const GuardedPicture& in, const GuardedPicture& before,
                                 const GuardedPicture& now, bool halfHeight)
{
    const GuardedPicture expected = before;
    std::vector<double> closeness;
    RenderPlain(which, levels, in.Frame(), expected.Frame(), halfHeight, &closeness);
    if (!IsFloatFormat(in.Format()))
        return Equal(now, expected);

    const double bound = 16 * kUnit * LargestMagnitude(in);
    const int width = std::min(in.Width(), now.Width()), height = std::min(in.Height(), now.Height());
    int undecided = 0;
    for (int y = 0; y < now.Height(); ++y)
        for (int x = 0; x < now.Width(); ++x)
            for (int c = 0; c < 4; ++c) {
                const float is = now.Float(x, y, c), should = expected.Float(x, y, c);
                if (is == should || (std::isnan(is) && std::isnan(should))
                    || std::fabs(static_cast<double>(is) - static_cast<double>(should)) <= bound)
                    continue;
                // `closeness` counts rows by their addresses.
                const int row = in.Stride() < 0 ? now.Height() - 1 - y : y;
                const auto at = static_cast<std::size_t>(row * width + x);
                if (x < width && row < height && at < closeness.size() && std::fabs(closeness[at]) <= bound) {
                    ++undecided;
                    continue;
                }
                return testing::AssertionFailure() << "at (" << x << ", " << y << ") channel " << c << ": "
                                                   << is << ", expected " << should << " within " << bound;
            }
    if (undecided > 12)
        return testing::AssertionFailure() << undecided << " values on the edge step's own edge";
    return testing::AssertionSuccess();
}

} // namespace kelmora
