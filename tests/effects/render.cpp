#include "tests/effects/render.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/golden/effect_presets.h"
#include "tests/reference/active_camera.h"
#include "tests/reference/air_brush.h"
#include "tests/reference/color_melt.h"
#include "tests/reference/confetti.h"
#include "tests/reference/crop_borders.h"
#include "tests/reference/detail_enhancer.h"
#include "tests/reference/paper_collage.h"
#include "tests/reference/pixelator.h"
#include "tests/reference/pizza_boxes.h"
#include "tests/reference/smear.h"
#include "tests/reference/water_color.h"

namespace kelmora {
namespace {

constexpr double kUnit = 1.0 / (1 << 24);

double LargestMagnitude(const GuardedPicture& picture)
{
    double largest = 1.0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                largest = std::max(largest, std::fabs(static_cast<double>(picture.Float(x, y, c))));
    return largest;
}

/// Where the colours of a Paper Collage stand among its knobs.
std::size_t FirstColour(EffectClass which)
{
    return which == EffectClass::EmbossedPaperBlend ? 3
        : which == EffectClass::WrapPaperCollage    ? 4
                                                    : std::size_t{100};
}

ParamKind SceneKindOf(EffectClass which, std::size_t knob)
{
    const bool layers = which == EffectClass::Layers, wrapped = which == EffectClass::WrapPizzaBoxes;
    if ((layers && (knob == 4 || knob == 10)) || (wrapped && (knob == 2 || knob == 7)))
        return ParamChoice;
    const bool checks = layers ? knob >= 5 && knob <= 7
        : wrapped              ? knob == 3 || knob == 4
                               : knob >= (which == EffectClass::BlowingLeaves ? 6u : 3u);
    return checks ? ParamCheck : ParamFloat;
}

ParamKind KindOf(EffectClass which, std::size_t knob)
{
    if (IsScene(which))
        return SceneKindOf(which, knob);
    if (knob - FirstColour(which) < 2)
        return ParamColor;
    if ((which == EffectClass::Smear && knob == 4) || (which == EffectClass::BorderCrop && knob == 3))
        return ParamChoice;
    return which == EffectClass::Activecamera && knob == 8 ? ParamCheck : ParamFloat;
}

/// A number that is no level: "Blended" for Smear, "Overlay" for Crop Borders, 0 for scenes.
float OwnNumber(EffectClass which, std::size_t knob)
{
    switch (KindOf(which, knob)) {
    case ParamColor:
        return knob == FirstColour(which) ? 0x44FEFE : 0x400080;
    case ParamChoice:
        return which == EffectClass::Smear ? 3.0f : IsScene(which) ? 0.0f : 1.0f;
    default:
        return 1.0f;
    }
}

/// One level for each knob, as Levels has them.
std::vector<float> Filled(EffectClass which, const std::vector<float>& levels)
{
    std::vector<float> filled = levels;
    for (std::size_t i = levels.size(); i < KnobCount(which); ++i)
        filled.push_back(KindOf(which, i) == ParamFloat ? levels[i % levels.size()] : OwnNumber(which, i));
    return filled;
}

ParamValue KnobOf(ParamKind kind, float level)
{
    switch (kind) {
    case ParamColor:
        return ColorKnob(static_cast<std::uint32_t>(level));
    case ParamChoice:
        return ChoiceKnob(static_cast<std::uint32_t>(level));
    case ParamCheck:
        return CheckKnob(level != 0.0f);
    default:
        return LevelKnob(level);
    }
}

/// What the inner effect reads.
std::vector<float> InnerLevels(EffectClass which, const std::vector<float>& levels)
{
    const std::vector<float> filled = Filled(which, levels);
    const EffectRow* const row = EffectRowOf(KeyOf(which));
    return which == InnerOf(which) || !row ? filled : InnerKnobs(*row, filled);
}

reference::WaterColorKnobs WaterColorKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5)};
}

reference::ColorMeltKnobs ColorMeltKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5)};
}

reference::PaperCollageKnobs PaperCollageKnobs(const std::vector<float>& k)
{
    const auto colour = [&](std::size_t i) { return static_cast<std::uint32_t>(k.at(i)); };
    return {k.at(0), k.at(1), k.at(2), colour(3), colour(4), k.at(5), k.at(6), k.at(7), k.at(8), k.at(9)};
}

reference::SmearKnobs SmearKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), k.at(3), static_cast<std::uint32_t>(k.at(4))};
}

reference::ActiveCameraKnobs ActiveCameraKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5), k.at(6), k.at(7), k.at(8) != 0.0f};
}

reference::CropBordersKnobs CropBordersKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), static_cast<std::uint32_t>(k.at(3))};
}

reference::PixelatorKnobs PixelatorKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4)};
}

reference::ConfettiKnobs ConfettiKnobs(const std::vector<float>& k)
{
    return {k.at(0), k.at(1), k.at(2), k.at(3), k.at(4), k.at(5), k.at(6) != 0.0f, k.at(7) != 0.0f};
}

reference::PizzaBoxesKnobs PizzaBoxesKnobs(const std::vector<float>& k)
{
    const auto number = [&](std::size_t i) { return static_cast<std::uint32_t>(k.at(i)); };
    const auto check = [&](std::size_t i) { return k.at(i) != 0.0f; };
    return {k.at(0),  k.at(1),  k.at(2), k.at(3), number(4), check(5),
            check(6), check(7), k.at(8), k.at(9), number(10)};
}

reference::CameraMoment CameraMoment(const Moment& moment)
{
    return {moment.time, moment.pixelAspect.value_or(moment.halfHeight ? 2.0 : 1.0)};
}

/// `picture` over the top left of `before`, which is as large or larger.
GuardedPicture Over(const GuardedPicture& picture, const GuardedPicture& before)
{
    GuardedPicture over = before;
    for (std::int32_t y = 0; y < picture.Height(); ++y)
        std::memcpy(over.Row(y), picture.Row(y),
                    static_cast<std::size_t>(picture.Width() * picture.PixelBytes()));
    return over;
}

/// What a scene without a glow shows without the faces that each of its blocks is for, without those of all blocks from
/// each one on, and without any. `left` begins with the output as it stood.
void AddScenesLeft(EffectClass which, const std::vector<float>& k, const VideoFrame& in,
                   const VideoFrame& second, std::vector<GuardedPicture>& left)
{
    const auto draw = [&](const reference::TransitionMoment& moment) {
        left.push_back(GuardedPicture(left.front()));
        const VideoFrame drawn = left.back().Frame();
        InnerOf(which) == EffectClass::Layers
            ? reference::PizzaBoxes(in, &second, drawn, PizzaBoxesKnobs(k), moment, false)
            : reference::Confetti(in, &second, drawn, ConfettiKnobs(k), moment);
    };
    draw({0.4, -1, -1, false});
    draw({0.4});
    const GuardedPicture whole = left.back();
    for (int block = 0;; ++block) {
        draw({0.4, -1, block});
        draw({0.4, block, -1});
        if (Equal(left.back(), whole))
            break;
    }
}

} // namespace

std::size_t KnobCount(EffectClass which)
{
    switch (which) {
    case EffectClass::WrapDetailEnhancer:
        return 1;
    case EffectClass::Airbrush:
    case EffectClass::WrapAirbrush:
    case EffectClass::UnsharpMask:
        return 2;
    case EffectClass::WrapSmear:
        return 3;
    case EffectClass::WrapColorMelt:
    case EffectClass::BorderCrop:
    case EffectClass::WrapConfetti:
        return 4;
    case EffectClass::WrapWaterColor:
    case EffectClass::Smear:
    case EffectClass::FacePixelator:
        return 5;
    case EffectClass::WaterColor:
    case EffectClass::Colormelt:
    case EffectClass::WrapActiveCamera:
        return 6;
    case EffectClass::WrapPaperCollage:
        return 7;
    case EffectClass::BlowingLeaves:
    case EffectClass::WrapPizzaBoxes:
        return 8;
    case EffectClass::Activecamera:
        return 9;
    case EffectClass::EmbossedPaperBlend:
        return 10;
    case EffectClass::Layers:
        return 11;
    }
    return 0;
}

std::vector<ParamValue> Levels(EffectClass which, const std::vector<float>& levels)
{
    const std::vector<float> filled = Filled(which, levels);
    std::vector<ParamValue> knobs;
    for (std::size_t i = 0; i < KnobCount(which); ++i)
        knobs.push_back(KnobOf(KindOf(which, i), filled[i]));
    if (which == EffectClass::FacePixelator) { // its first two are one knob
        knobs.erase(knobs.begin());
        knobs.front() = PointKnob(filled[0], filled[1]);
    }
    return knobs;
}

GuardedPicture Incoming(const GuardedPicture& in)
{
    GuardedPicture second = in;
    const auto pixel = static_cast<std::size_t>(in.PixelBytes());
    for (int y = 0; y < in.Height(); ++y)
        for (int x = 0; x < in.Width(); ++x)
            std::memcpy(second.Row(y) + pixel * static_cast<std::size_t>(x),
                        in.Row(y) + pixel * static_cast<std::size_t>(in.Width() - 1 - x), pixel);
    return second;
}

bool Render(IVideoEffect& effect, FakeHost& host, const Moment& moment, const GuardedPicture& in,
            GuardedPicture& out)
{
    InfoFields fields = moment.halfHeight ? FieldAtProgress(moment.progress) : AtProgress(moment.progress);
    fields.time = moment.time;
    if (moment.pixelAspect) {
        fields.flags |= RenderHasAspect;
        fields.pixelAspect = *moment.pixelAspect;
    }
    const FlushInfo info(fields);
    VideoFrame first = in.Frame(), second = moment.second ? moment.second->Frame() : VideoFrame{},
               output = out.Frame();
    const VideoFrame firstBefore = first, secondBefore = second, outputBefore = output;
    host.BeginRender();
    const bool result = effect.Render(&host, &first, moment.second ? &second : nullptr, &output, info.Get());
    host.EndRender();
    EXPECT_EQ(std::memcmp(&first, &firstBefore, sizeof first), 0) << "the picture's record has changed";
    EXPECT_EQ(std::memcmp(&second, &secondBefore, sizeof second), 0) << "the second's record has changed";
    EXPECT_EQ(std::memcmp(&output, &outputBefore, sizeof output), 0) << "the output's record has changed";
    return result;
}

bool Render(IVideoEffect& effect, FakeHost& host, const GuardedPicture& in, GuardedPicture& out,
            bool halfHeight)
{
    const GuardedPicture second = Incoming(in);
    Moment moment;
    moment.second = &second;
    moment.halfHeight = halfHeight;
    return Render(effect, host, moment, in, out);
}

bool Succeeds(EffectClass which, const std::vector<float>& levels, std::int32_t width, std::int32_t height)
{
    if (which != EffectClass::BorderCrop)
        return true;
    const reference::CropBordersKnobs knobs = CropBordersKnobs(Filled(which, levels));
    const reference::CropNumbers crop = reference::CropOf(knobs, width, height);
    const bool zooms = knobs.style == 0 || knobs.style == 1, softens = knobs.style == 1 || knobs.style == 3;
    return knobs.style < 4 && (!zooms || crop.IsInside(width, height))
        && (knobs.style == 0 || (2 * crop.left < width && 2 * crop.top < height))
        && (!softens || std::min(width, height) > 2);
}

void RenderFresh(EffectClass which, const std::vector<float>& levels, const Moment& moment,
                 const GuardedPicture& in, GuardedPicture& out)
{
    FakeHost host(Levels(which, levels));
    const HeldEffect effect = NewEffect(which);
    EXPECT_EQ(
        Render(*effect, host, moment, in, out),
        Succeeds(which, levels, std::min(in.Width(), out.Width()), std::min(in.Height(), out.Height())));
}

void RenderFresh(EffectClass which, const std::vector<float>& levels, const GuardedPicture& in,
                 GuardedPicture& out, bool halfHeight)
{
    const GuardedPicture second = Incoming(in);
    Moment moment;
    moment.second = &second;
    moment.halfHeight = halfHeight;
    RenderFresh(which, levels, moment, in, out);
}

void RenderPlain(EffectClass which, const std::vector<float>& levels, const VideoFrame& in,
                 const VideoFrame* second, const VideoFrame& out, const Moment& moment, Doubts* doubts)
{
    const double progress = moment.progress;
    const bool halfHeight = moment.halfHeight;
    const std::vector<float> k = InnerLevels(which, levels);
    switch (InnerOf(which)) {
    case EffectClass::Airbrush:
        reference::AirBrush(in, out, k.at(0), k.at(1), doubts ? &doubts->closeness : nullptr);
        break;
    case EffectClass::UnsharpMask:
        reference::DetailEnhancer(in, out, k.at(0), k.at(1), halfHeight);
        break;
    case EffectClass::WaterColor:
        reference::WaterColor(in, out, WaterColorKnobs(k), halfHeight);
        break;
    case EffectClass::Colormelt:
        reference::ColorMelt(in, second, out, ColorMeltKnobs(k), progress, doubts ? &doubts->sway : nullptr);
        break;
    case EffectClass::Smear:
        reference::Smear(in, second, out, SmearKnobs(k), {progress});
        break;
    case EffectClass::Activecamera:
        reference::ActiveCamera(in, out, ActiveCameraKnobs(k), CameraMoment(moment));
        break;
    case EffectClass::BorderCrop:
        reference::CropBorders(in, out, CropBordersKnobs(k), halfHeight);
        break;
    case EffectClass::BlowingLeaves:
        reference::Confetti(in, second, out, ConfettiKnobs(k), {progress});
        break;
    case EffectClass::Layers:
        reference::PizzaBoxes(in, second, out, PizzaBoxesKnobs(k), {progress});
        break;
    case EffectClass::FacePixelator:
        reference::Pixelator(in, out, PixelatorKnobs(k), halfHeight);
        break;
    default:
        reference::PaperCollage(in, *second, out, PaperCollageKnobs(k), progress, halfHeight);
    }
}

std::vector<GuardedPicture> LeftWithoutMemory(EffectClass which, const std::vector<float>& levels,
                                              const GuardedPicture& in, const GuardedPicture& before,
                                              bool halfHeight)
{
    const GuardedPicture second = Incoming(in);
    const VideoFrame secondFrame = second.Frame();
    const std::vector<float> k = InnerLevels(which, levels);
    std::vector<GuardedPicture> left;
    left.push_back(InnerOf(which) == EffectClass::UnsharpMask || which == EffectClass::FacePixelator
                       ? Over(in, before)
                       : before);
    if (IsScene(which))
        AddScenesLeft(which, k, in.Frame(), secondFrame, left);
    if (InnerOf(which) == EffectClass::WaterColor && in.Format() == PF_BGRA8)
        for (int medians = 0; medians <= reference::WaterColorPasses(in.Height(), halfHeight); ++medians) {
            left.push_back(before);
            reference::WaterColorUpTo(in.Frame(), left.back().Frame(), WaterColorKnobs(k), halfHeight,
                                      medians);
            if (reference::WaterColorRadius(k.at(4), in.Height(), halfHeight) < 1)
                break;
        }
    if (which == EffectClass::FacePixelator)
        for (const reference::PixelatorMemory& memory :
             {reference::PixelatorMemory{false, true}, {true, false}, {false, false}}) {
            left.push_back(before); // the ring alone, a hard edge, or both
            reference::Pixelator(in.Frame(), left.back().Frame(), PixelatorKnobs(k), halfHeight, memory);
        }
    if (InnerOf(which) == EffectClass::Colormelt) {
        left.push_back(before); // the dissolve alone
        reference::ColorMeltKnobs knobs = ColorMeltKnobs(k);
        knobs.soften = 1e9f; // a blur that no memory holds
        reference::ColorMelt(in.Frame(), &secondFrame, left.back().Frame(), knobs, 0.4);
    }
    if (InnerOf(which) == EffectClass::EmbossedPaperBlend)
        for (const bool blurred : {false, true}) {
            left.push_back(before); // the grey that the sheets would have been cut from
            reference::PaperCollageKnobs knobs = PaperCollageKnobs(k);
            if (!blurred)
                knobs.rounding = 0;
            reference::PaperCollage(in.Frame(), secondFrame, left.back().Frame(), knobs, 0.4, halfHeight,
                                    false);
        }
    if (InnerOf(which) == EffectClass::Smear)
        for (const bool first : {false, true})
            for (const bool other : {false, true}) { // all of it where only working rows were refused
                left.push_back(before);
                reference::Smear(in.Frame(), &secondFrame, left.back().Frame(), SmearKnobs(k),
                                 {0.4, first, other});
            }
    if (which == EffectClass::BorderCrop)
        for (const int steps : {1, 2, 3}) {
            left.push_back(before);
            reference::CropBordersUpTo(in.Frame(), left.back().Frame(), CropBordersKnobs(k), halfHeight,
                                       steps);
        }
    return left;
}

testing::AssertionResult AsPlain(EffectClass which, const std::vector<float>& levels, const Moment& moment,
                                 const GuardedPicture& in, const GuardedPicture& before,
                                 const GuardedPicture& now)
{
    const GuardedPicture expected = before;
    const VideoFrame second = moment.second ? moment.second->Frame() : VideoFrame{};
    Doubts doubts;
    RenderPlain(which, levels, in.Frame(), moment.second ? &second : nullptr, expected.Frame(), moment,
                &doubts);
    const EffectClass inner = InnerOf(which);
    if (!IsFloatFormat(in.Format()) || inner == EffectClass::WaterColor
        || inner == EffectClass::EmbossedPaperBlend || inner == EffectClass::Smear
        || inner == EffectClass::Activecamera)
        return Equal(now, expected);

    double largest = LargestMagnitude(in);
    if (moment.second && IsTransition(which) && IsFloatFormat(moment.second->Format()))
        largest = std::max(largest, LargestMagnitude(*moment.second));
    const double bound = 16 * kUnit * largest;
    const int width = std::min(in.Width(), now.Width()), height = std::min(in.Height(), now.Height());
    int undecided = 0;
    for (int y = 0; y < now.Height(); ++y)
        for (int x = 0; x < now.Width(); ++x)
            for (int c = 0; c < 4; ++c) {
                const float is = now.Float(x, y, c), should = expected.Float(x, y, c);
                const double distance = std::fabs(static_cast<double>(is) - static_cast<double>(should));
                if (is == should || (std::isnan(is) && std::isnan(should)) || distance <= bound)
                    continue;
                // The doubts count rows by their addresses.
                const int row = now.Stride() < 0 ? now.Height() - 1 - y : y;
                const auto at = static_cast<std::size_t>(row * width + x);
                const bool inside = x < width && row < height;
                if (inside && at < doubts.closeness.size() && std::fabs(doubts.closeness[at]) <= bound) {
                    ++undecided;
                    continue;
                }
                if (const std::size_t value = 4 * at + static_cast<std::size_t>(c);
                    inside && value < doubts.sway.size() && distance <= bound + 2 * doubts.sway[value])
                    continue;
                return testing::AssertionFailure() << "at (" << x << ", " << y << ") channel " << c << ": "
                                                   << is << ", expected " << should << " within " << bound;
            }
    if (undecided > 12)
        return testing::AssertionFailure() << undecided << " values on the edge step's own edge";
    return testing::AssertionSuccess();
}

testing::AssertionResult AsPlain(EffectClass which, const std::vector<float>& levels,
                                 const GuardedPicture& in, const GuardedPicture& before,
                                 const GuardedPicture& now, bool halfHeight)
{
    const GuardedPicture second = Incoming(in);
    Moment moment;
    moment.second = &second;
    moment.halfHeight = halfHeight;
    return AsPlain(which, levels, moment, in, before, now);
}

} // namespace kelmora
