// Numbers of any bits where places are worked out: moves, warps, quadrangles, resizes and the walk of the camera. No
// fault; a refusal leaves the destination as it was, and every set of instructions gives the same.

#include <cmath>

#include "effects/painterly/active_camera_plan.h"
#include "effects/painterly/camera_walk.h"
#include "fuzz/input.h"
#include "image/image_ops.h"
#include "image/primitives/cpu_variant.h"
#include "image/primitives/warp.h"

namespace kelmora::fuzz {
namespace {

bool AreSame(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

// --- moves --------------------------------------------------------------------------------------------------

/// A move as a plain matrix for row vectors.
struct PlainMove {
    float m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

    void Multiply(const Transform2D& t)
    {
        const PlainMove before = *this;
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column) {
                double sum = 0.0;
                for (int i = 0; i < 3; ++i)
                    sum += static_cast<double>(before.m[row][i]) * static_cast<double>(t.Get(i, column));
                m[row][column] = static_cast<float>(sum);
            }
    }

    void RequireEqual(const Transform2D& t) const
    {
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column)
                Require(
                    AreSame(static_cast<double>(m[row][column]), static_cast<double>(t.Get(row, column))));
    }
};

Transform2D OneMove(Input& input)
{
    Transform2D move;
    const auto x = input.Number<float>(4.0f), y = input.Number<float>(4.0f);
    switch (input.Below(4)) {
    case 0:
        move.Scale(x, y);
        break;
    case 1:
        move.Translate(10.0f * x, 10.0f * y);
        break;
    case 2:
        move.Rotate(x);
        break;
    default:
        move.Scale(x);
    }
    return move;
}

Transform2D Moves(Input& input)
{
    Transform2D all;
    PlainMove plain;
    for (int left = input.Below(6); left > 0; --left) {
        const Transform2D next = OneMove(input);
        all.Multiply(next);
        plain.Multiply(next);
        plain.RequireEqual(all);
    }
    return all;
}

// --- pictures -----------------------------------------------------------------------------------------------

/// Two pictures: one to read, and one to write to in as many copies as are compared.
template <class T>
struct Canvas {
    static constexpr int channels = 4;

    explicit Canvas(Input& input)
        : width(1 + input.Below(24)), height(1 + input.Below(12)), dstWidth(1 + input.Below(24)),
          dstHeight(1 + input.Below(12)), from(static_cast<std::size_t>(width * height * channels)),
          before(static_cast<std::size_t>(dstWidth * dstHeight * channels))
    {
        const auto noise = input.Take<std::uint32_t>();
        FillWithNoise(reinterpret_cast<std::uint8_t*>(from.data()), from.size() * sizeof(T), noise,
                      sizeof(T) == 4);
        FillWithNoise(reinterpret_cast<std::uint8_t*>(before.data()), before.size() * sizeof(T), ~noise,
                      sizeof(T) == 4);
    }

    /// A part of a picture, most often the whole.
    static PxRect PartOf(Input& input, int width, int height)
    {
        if (!input.OneIn(4))
            return {0, 0, width, height};
        if (input.OneIn(4))
            return {input.Take<int>(), input.Take<int>(), input.Take<int>(), input.Take<int>()};
        return {input.Below(30) - 4, input.Below(16) - 4, input.Below(30), input.Below(16)};
    }

    int Step() const { return width * channels * static_cast<int>(sizeof(T)); }
    int DstStep() const { return dstWidth * channels * static_cast<int>(sizeof(T)); }

    int width, height, dstWidth, dstHeight;
    std::vector<T> from, before;
};

/// Runs `draw` with every set of instructions: the same answers and the same pictures, untouched where it is a
/// refusal.
template <class T, class Draw>
void DrawEveryWay(const Canvas<T>& canvas, Draw draw)
{
    std::vector<T> first;
    PxStatus firstStatus = pxOk;
    for (const CpuVariant variant : {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512}) {
        UseVariant(variant);
        std::vector<T> picture = canvas.before;
        const PxStatus status = draw(picture.data());
        if (variant == CpuVariant::Baseline) {
            first = picture;
            firstStatus = status;
        }
        Require(status == firstStatus);
        const auto& wanted = status == pxOk ? first : canvas.before;
        Require(std::memcmp(picture.data(), wanted.data(), picture.size() * sizeof(T)) == 0);
    }
}

/// What a destination's rectangle may be: within the picture, which callers see to, or refused whatever else.
PxRect TargetOf(Input& input, int width, int height)
{
    PxRect part = {0, 0, width, height};
    if (!input.OneIn(4))
        return part;
    part.x = input.Below(width);
    part.y = input.Below(height);
    part.width = input.Below(width - part.x + 1);
    part.height = input.Below(height - part.y + 1);
    if (input.OneIn(4))
        (input.OneIn(2) ? part.x : part.y) = -1 - input.Below(100);
    return part;
}

std::uint32_t Code(Input& input)
{
    constexpr std::uint32_t codes[] = {pxLinear, pxNearest, pxCubic};
    return input.OneIn(32) ? input.Take<std::uint32_t>() : codes[input.Below(3)];
}

template <class T, class Member>
void WarpAffine(Input& input, Member member)
{
    const Canvas<T> canvas(input);
    const PxRect part = Canvas<T>::PartOf(input, canvas.width, canvas.height);
    const PxRect target = TargetOf(input, canvas.dstWidth, canvas.dstHeight);
    const auto code = static_cast<int>(Code(input));
    double map[2][3];
    if (input.OneIn(2)) {
        std::memcpy(map, Moves(input).ToCoefficients().rows, sizeof map);
    } else {
        for (auto& row : map)
            for (double& value : row)
                value = input.Number<double>(8.0);
    }
    DrawEveryWay(canvas, [&](T* to) {
        return member(canvas.from.data(), canvas.width, canvas.height, canvas.Step(), part, to,
                      canvas.DstStep(), target, map, code);
    });
}

template <class T, class Member>
void WarpQuad(Input& input, Member member)
{
    const Canvas<T> canvas(input);
    const PxRect part = Canvas<T>::PartOf(input, canvas.width, canvas.height);
    const PxRect target = TargetOf(input, canvas.dstWidth, canvas.dstHeight);
    const std::uint32_t code = Code(input) | (input.OneIn(2) ? pxSmoothEdges : 0);
    double map[3][3] = {};
    if (input.OneIn(4)) {
        for (auto& row : map)
            for (double& value : row)
                value = input.Number<double>(4.0);
    } else {
        double quad[4][2] = {{0, 0}, {20, 0}, {20, 10}, {0, 10}};
        const bool isNear = input.OneIn(2); // to a rectangle, so mostly convex
        for (auto& corner : quad)
            for (double& value : corner)
                value = isNear ? value + input.Take<std::int8_t>() / 32.0 : input.Number<double>(30.0);
        const PxStatus status = pxQuadTransform(part, quad, map);
        Require(status == pxOk || status == pxEmptyQuadRect || status == pxDegenerateQuad);
        if (status != pxOk)
            return;
    }
    DrawEveryWay(canvas, [&](T* to) {
        return member(canvas.from.data(), canvas.width, canvas.height, canvas.Step(), part, to,
                      canvas.DstStep(), target, map, code);
    });
}

template <class T, class Member>
void Resize(Input& input, Member member)
{
    const Canvas<T> canvas(input);
    const PxRect part = Canvas<T>::PartOf(input, canvas.width, canvas.height);
    constexpr int codes[] = {pxLinear, pxNearest, pxCubic, pxAverage, pxLanczos};
    const int code = input.OneIn(32) ? input.Take<int>() : codes[input.Below(5)];
    const bool fits = input.OneIn(2);
    const double xFactor =
        fits ? static_cast<double>(canvas.dstWidth) / canvas.width : input.Number<double>(4.0);
    const double yFactor =
        fits ? static_cast<double>(canvas.dstHeight) / canvas.height : input.Number<double>(4.0);
    DrawEveryWay(canvas, [&](T* to) {
        return member(canvas.from.data(), canvas.width, canvas.height, canvas.Step(), part, to,
                      canvas.DstStep(), canvas.dstWidth, canvas.dstHeight, xFactor, yFactor, code);
    });
}

/// The same on whole pictures, of any kind and of kinds that do not go together.
void WholePictures(Input& input)
{
    UseVariant(static_cast<CpuVariant>(input.Below(3)));
    Picture from(input);
    Picture to = input.OneIn(4) ? Picture(input) : Picture(input, from);
    FrameBuffer src, dst;
    src.AttachFrame(&from.Record());
    dst.AttachFrame(&to.Record());
    ImageOps ops;
    double quad[4][2];
    switch (input.Below(3)) {
    case 0:
        ops.WarpAffine(src, dst, Moves(input));
        break;
    case 1:
        for (auto& corner : quad)
            for (double& value : corner)
                value = input.Number<double>(30.0);
        ops.WarpQuad(src, dst, quad, Code(input) | (input.OneIn(2) ? pxSmoothEdges : 0));
        break;
    default:
        int edges[8];
        for (int& edge : edges)
            edge = input.OneIn(16) ? input.Take<int>() : input.Below(20) - 2;
        const auto xFactor = input.Number<double>(4.0), yFactor = input.Number<double>(4.0);
        ops.ResizeRect(src, dst, edges[0], edges[1], edges[2], edges[3], edges[4], edges[5], edges[6],
                       edges[7], input.Below(6) - 1, xFactor, yFactor);
    }
}

// --- the camera ---------------------------------------------------------------------------------------------

/// On a scale of powers of two, so that early and late moments come alike. The frames of much later ones are walked
/// to for seconds.
double CameraMoment(Input& input)
{
    constexpr double longest = 2000.0;
    if (!input.OneIn(8))
        return std::ldexp(input.Take<std::uint16_t>() / 65535.0, input.Below(9));
    const auto moment = input.Number<double>(100.0);
    return std::isfinite(moment) ? std::clamp(moment, -longest, longest) : moment;
}

float Level(Input& input)
{
    return static_cast<float>(input.Take<std::uint8_t>()) / 255.0f;
}

float Knob(Input& input)
{
    return input.OneIn(4) ? input.Number<float>(2.0f) : Level(input);
}

/// Any but those for which a curve has a million pieces.
float Jitter(Input& input)
{
    const float jitter = Knob(input);
    return std::fabs(jitter) > 10.0f ? 10.0f : jitter;
}

/// A walk from moment to moment gives what a new one gives that goes there at once.
void Camera(Input& input)
{
    // Beyond its range a hold may lead back and forth until millions of knots are passed.
    const float rate = Knob(input), hold = Level(input), jitter = Jitter(input);
    const auto timing = input.Take<std::uint32_t>(), values = input.Take<std::uint32_t>();
    CameraWalk walk(rate, hold, timing);
    float now = 0.0f;
    for (int left = input.Below(4); left >= 0; --left) {
        const float time = CameraTime(CameraMoment(input));
        Require(time >= 0.0f && std::isfinite(time));
        if (time < now)
            continue;
        now = time;
        const CameraInterval there = walk.AdvanceTo(time);
        const float noise = CameraNoise(there, jitter, values);
        const float afresh = CameraNoise(rate, hold, jitter, static_cast<double>(time), timing, values);
        Require(AreSame(static_cast<double>(noise), static_cast<double>(afresh)));
        // A camera within its knobs stays within its reach.
        if (rate >= 0.0f && rate <= 1.0f && jitter >= 0.0f && jitter <= 1.0f)
            Require(std::fabs(noise) <= 1.0f + jitter);
    }
}

void CameraPlace(Input& input)
{
    using namespace active_camera;
    const Knobs knobs = {Knob(input), Knob(input), Knob(input), Knob(input),   Knob(input),
                         Knob(input), Knob(input), Knob(input), input.OneIn(2)};
    const Axes sway = {input.Number<float>(1.0f), input.Number<float>(1.0f), input.Number<float>(1.0f)};
    const auto aspect = input.Number<double>(2.0);
    const Size size = {1 + input.Below(64), 1 + input.Below(64)};
    if (aspect != 0.0)
        CameraTransform(knobs, size, aspect, sway).ToCoefficients();
    EarlierWeight(knobs.blur);
    EarlierTime(CameraMoment(input), knobs.blur);
}

constexpr void (*kFamilies[])(Input&) = {
    [](Input& input) { WarpAffine<std::uint8_t>(input, pxWarpAffine_8u_C4); },
    [](Input& input) { WarpAffine<float>(input, pxWarpAffine_32f_C4); },
    [](Input& input) { WarpQuad<std::uint8_t>(input, pxWarpQuad_8u_C4); },
    [](Input& input) { WarpQuad<float>(input, pxWarpQuad_32f_C4); },
    [](Input& input) { Resize<std::uint8_t>(input, pxResize_8u_C4); },
    [](Input& input) { Resize<float>(input, pxResize_32f_C4); },
    WholePictures,
    Camera,
    CameraPlace,
};

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora::fuzz;
    Input input(data, size);
    kFamilies[input.Below(static_cast<int>(std::size(kFamilies)))](input);
    return 0;
}
