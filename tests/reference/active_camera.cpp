#include "tests/reference/active_camera.h"

#include <algorithm>
#include <cmath>

#include "tests/reference/air_brush.h"
#include "tests/reference/blends.h"
#include "tests/reference/plain_transform.h"
#include "tests/reference/rounding.h"
#include "tests/reference/warp.h"

namespace kelmora::reference {
namespace {

/// The interval of the walk that a time falls into.
struct Interval {
    double before = 0, start = 0, end = 0;
    bool resting = true;
};

struct AxisSeeds {
    std::uint32_t timing, value;
};

Interval Walked(double r, double hold, double t, std::uint32_t timingSeed)
{
    CameraRandom random;
    random.Seed(r, 12345.0, timingSeed);
    const double unit = RoundedToFloat(std::pow(3.9, 1 - r) - 0.9);
    const auto step = [&] { return std::pow(2.0, static_cast<double>(random.Draw(1.0))) * unit; };
    Interval now;
    now.end = RoundedToFloat(step());
    while (t > now.end) {
        now.resting = !now.resting;
        const double length = step() * (now.resting ? hold : 1 - hold);
        now.before = now.start;
        now.start = now.end;
        now.end = RoundedToFloat(now.end + length);
    }
    return now;
}

/// The jitter on top, -jitter to jitter.
double Wobble(const Interval& now, double jitter, double t, std::uint32_t valueSeed)
{
    const int n = TowardZero(RoundedToFloat(jitter * jitter * 10.0)) + 2;
    const double seg = RoundedToFloat((now.end - now.start) / n);
    CameraRandom random;
    random.Seed(now.start, 532.0, valueSeed);
    double a = 0, b = static_cast<double>(random.Draw(0.5)), s = now.start;
    double e = RoundedToFloat(now.start + seg);
    for (int c = 2; t > e; ++c) {
        a = b;
        b = c >= n ? 0.0 : static_cast<double>(random.Draw(0.5));
        s = e;
        e = RoundedToFloat(e + seg);
    }
    const double f = seg == 0 ? 0 : RoundedToFloat((t - s) / seg);
    return RoundedToFloat(f * b + (1 - f) * a) * jitter;
}

double ValueAtKnot(double knot, std::uint32_t valueSeed)
{
    CameraRandom random;
    random.Seed(knot, 641.0, valueSeed);
    return static_cast<double>(random.Draw(1.0));
}

} // namespace

void CameraRandom::Seed(double a, double b, std::uint32_t seed)
{
    m_state = static_cast<std::uint32_t>(static_cast<std::int64_t>(a * b)) + seed;
}

std::uint32_t CameraRandom::Next()
{
    m_state = m_state * 214013u + 2531011u;
    return (m_state >> 16) & 0x7FFF;
}

float CameraRandom::Draw(double scale)
{
    const std::uint32_t bits = Next() & 511;
    return static_cast<float>((bits * 0.00390625 - 1.0) * scale);
}

float CameraNoise(float rate, float hold, float jitter, double time, std::uint32_t timingSeed,
                  std::uint32_t valueSeed)
{
    const double t = std::isfinite(time) ? std::max(RoundedToFloat(time), 0.0) : 0.0;
    const double r = static_cast<double>(rate) < 0.0001 ? 0.0 : static_cast<double>(rate);
    const Interval now = Walked(r, static_cast<double>(hold), t, timingSeed);
    double wobble = Wobble(now, static_cast<double>(jitter), t, valueSeed);

    const double len = now.end - now.start;
    const double u = len == 0 ? 0 : RoundedToFloat((t - now.start) / len);
    const double turn = RoundedToFloat((u * 2 - 1) * 1.570796012878418);
    const double ease = RoundedToFloat((std::sin(turn) + 1) / 2);
    if (now.resting)
        wobble /= 2;
    const double from = ValueAtKnot(now.resting ? now.start : now.before, valueSeed);
    const double to = ValueAtKnot(now.resting ? now.start : now.end, valueSeed);
    return static_cast<float>(from * RoundedToFloat(1 - ease) + to * ease + wobble);
}

void CameraTransform(const ActiveCameraKnobs& knobs, int width, int height, const CameraMoment& moment,
                     float (&matrix)[3][3])
{
    const auto noise = [&](float amount, AxisSeeds seeds) {
        if (!(amount > 0))
            return 0.0;
        const std::uint32_t timing = knobs.synchronize ? 444 : seeds.timing;
        return static_cast<double>(
            CameraNoise(knobs.rate, knobs.hold, knobs.jitter, moment.time, timing, seeds.value));
    };
    const double h = static_cast<double>(knobs.horizontal), v = static_cast<double>(knobs.vertical),
                 r = static_cast<double>(knobs.rotation), aspect = moment.aspect;
    const double x = h * 0.25 * noise(knobs.horizontal, {444, 111}) * width;
    const double y = v * 0.25 * noise(knobs.vertical, {555, 222}) * height;
    const double rot = r * 0.25 * noise(knobs.rotation, {666, 333});
    const auto zoom = static_cast<float>(static_cast<double>(knobs.crop) * 0.67 + 1);
    const auto halfWidth = static_cast<float>(width / 2.0), halfHeight = static_cast<float>(height / 2.0);
    PlainTransform t;
    t.Translate(-halfWidth, -halfHeight);
    t.Scale(1, static_cast<float>(aspect));
    t.Rotate(static_cast<float>(rot));
    t.Scale(1, static_cast<float>(1 / aspect));
    t.Scale(zoom, zoom);
    t.Translate(halfWidth, halfHeight);
    t.Translate(static_cast<float>(x), static_cast<float>(y));
    std::copy(&t.m[0][0], &t.m[0][0] + 9, &matrix[0][0]);
}

void ActiveCamera(const VideoFrame& picture, const VideoFrame& output, const ActiveCameraKnobs& knobs,
                  const CameraMoment& moment)
{
    const Rows in(picture), out(output);
    const int width = std::min(in.width, out.width), height = std::min(in.height, out.height);
    const Picture src = ReadRows(in);
    const auto seen = [&](double time) {
        float matrix[3][3];
        CameraTransform(knobs, width, height, {time, moment.aspect}, matrix);
        Picture view(width, height, in.format);
        WarpAffine(src, view, matrix);
        return view;
    };
    Picture now = seen(moment.time);
    if (knobs.blur > 0) {
        const double blur = static_cast<double>(knobs.blur);
        Picture earlier = seen(moment.time - blur * 0.25);
        const int weight = TowardZero(blur * 128);
        Mix(now, earlier, 255 - weight, weight);
        now = earlier;
    }
    WriteRows(now, out);
}

} // namespace kelmora::reference
