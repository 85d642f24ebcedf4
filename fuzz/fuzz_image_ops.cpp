// Any pictures and any numbers: every image operation, no fault.

#include "fuzz/input.h"
#include "image/hsv.h"
#include "image/image_ops.h"
#include "image/pixel_format.h"
#include "image/primitives/warp.h"
#include "image/tent_filter.h"

namespace kelmora::fuzz {
namespace {

/// What the operations of one input share.
struct Call {
    Input& input;
    FrameBuffer src, dst, third;
    MemoryAllocator allocator = {};
    ImageOps ops = {};

    int Number() const { return input.Below(16) == 0 ? input.Take<std::int32_t>() : input.Below(64) - 8; }
    float Level() const
    {
        return input.Below(8) == 0 ? input.Take<float>() : static_cast<float>(input.Below(255)) / 254.0f;
    }
    /// Of 255; half and whole among the usual ones.
    int Weight() const
    {
        constexpr int usual[] = {0, 64, 127, 128, 128, 254, 255, 256};
        return input.Below(8) == 0 ? input.Take<std::int32_t>() : usual[input.Below(8)];
    }
    bool Bool() const { return input.Below(2) != 0; }
};

void CopyRect(Call& call)
{
    const int x = call.Number(), y = call.Number(), w = call.Number(), h = call.Number();
    const int dstX = call.Number(), dstY = call.Number();
    call.ops.CopyRect(call.src, x, y, w, h, call.dst, dstX, dstY);
}

void Filter(Call& call)
{
    constexpr int most = 64;
    int whole[most];
    float weights[most];
    for (int i = 0; i < most; ++i) {
        whole[i] = call.input.Take<std::int16_t>();
        weights[i] = static_cast<float>(whole[i]) / 64.0f;
    }
    const int taps = std::min(call.Number(), most);
    const int a = call.Number(), b = call.Number(), divisor = call.Number();
    const bool withAlpha = call.Bool();
    if (call.Bool()) {
        call.ops.RowFilter(call.src, call.dst, whole, taps, a, b, divisor, withAlpha);
        call.ops.RowFilter(call.src, call.dst, weights, taps, a, b, divisor, withAlpha);
    } else {
        call.ops.ColumnFilter(call.src, call.dst, whole, taps, a, b, divisor, withAlpha);
        call.ops.ColumnFilter(call.src, call.dst, weights, taps, a, b, divisor, withAlpha);
    }
}

/// Bytes of a part of the tent are those of the whole.
void TentPart(Call& call)
{
    const int rowTaps = 1 + call.input.Below(60), columnTaps = 1 + call.input.Below(60);
    TentJob job = TentJob::Blur(SizeOf(call.src), rowTaps, columnTaps);
    const std::size_t pixel = static_cast<std::size_t>(call.src.GetPixelBytes());
    std::vector<std::vector<std::uint8_t>> whole;
    const auto width = static_cast<std::size_t>(call.src.GetWidth());
    const TentResult result =
        FilterTentRows(call.src, job, call.allocator, [&](int y, const std::uint8_t* row) {
            Require(y == static_cast<int>(whole.size()));
            whole.emplace_back(row, row + width * pixel);
        });
    job.part = {call.Number(), call.Number(), {1 + call.input.Below(60), 1 + call.input.Below(60)}};
    int rows = 0;
    const TentResult ofPart =
        FilterTentRows(call.src, job, call.allocator, [&](int y, const std::uint8_t* row) {
            Require(y == job.part.y + rows++);
            const auto bytes = static_cast<std::size_t>(job.part.size.width) * pixel;
            const auto* same =
                whole[static_cast<std::size_t>(y)].data() + static_cast<std::size_t>(job.part.x) * pixel;
            Require(IsFloat(call.src.GetFormat()) || std::equal(row, row + bytes, same));
        });
    Require(ofPart == TentResult::Done ? result == TentResult::Done && rows == job.part.size.height
                                       : rows == 0);
}

void Blur(Call& call)
{
    const auto size = [&] {
        return call.input.Below(8) == 0 ? call.input.Take<float>()
                                        : static_cast<float>(call.input.Below(120));
    };
    const float xSize = size(), ySize = size();
    call.ops.Blur(call.src, call.dst, xSize, ySize, &call.allocator, call.Bool());
    if (call.Bool())
        TentPart(call);
}

void PermuteChannels(Call& call)
{
    int order[4];
    for (int& channel : order)
        channel = call.input.Below(8) == 0 ? call.Number() : call.input.Below(4);
    call.ops.PermuteChannels(call.dst, order);
}

void AdjustColor(Call& call)
{
    const float contrast = call.Level(), brightness = call.Level(), saturation = call.Level();
    const float hue = call.Level();
    call.ops.AdjustColor(call.src, call.dst, contrast, brightness, saturation, hue, &call.allocator);
}

void ResizeRect(Call& call)
{
    int edges[8];
    for (int& edge : edges)
        edge = call.Number();
    if (call.Bool()) { // rectangles that most pictures hold
        for (int i = 0; i < 2; ++i)
            edges[i] = call.input.Below(4), edges[i + 4] = call.input.Below(4);
        for (int i = 2; i < 4; ++i)
            edges[i] = edges[i - 2] + 1 + call.input.Below(20),
            edges[i + 4] = edges[i + 2] + 1 + call.input.Below(20);
    }
    const auto factor = [&] {
        return call.input.Below(8) == 0 ? call.input.Take<double>()
            : call.Bool()               ? 0.0
                                        : call.input.Below(100) / 16.0;
    };
    const double xFactor = factor(), yFactor = factor();
    call.ops.ResizeRect(call.src, call.dst, edges[0], edges[1], edges[2], edges[3], edges[4], edges[5],
                        edges[6], edges[7], call.input.Below(6) - 1, xFactor, yFactor);
}

/// Pictures for a warp must not overlap.
bool AreApart(const Call& call)
{
    return call.src.GetPixels() != call.dst.GetPixels();
}

void WarpAffine(Call& call)
{
    Transform2D move;
    const auto small = [&] { return 4.0f * call.Level() - 2.0f; };
    move.Translate(-20.0f * small(), -20.0f * small());
    if (call.Bool())
        move.Rotate(4.0f * small());
    if (call.Bool())
        move.Scale(small(), small());
    move.Translate(20.0f * small(), 20.0f * small());
    if (AreApart(call))
        call.ops.WarpAffine(call.src, call.dst, move);
}

void WarpQuad(Call& call)
{
    double quad[4][2] = {{0, 0}, {30, 0}, {30, 30}, {0, 30}};
    for (auto& corner : quad)
        for (double& value : corner)
            value = call.input.Below(16) == 0 ? call.input.Take<double>()
                                              : value + call.input.Take<std::int16_t>() / 2048.0;
    const std::uint32_t code =
        call.input.Below(16) == 0 ? call.input.Take<std::uint32_t>() : 1u << call.input.Below(3);
    if (AreApart(call))
        call.ops.WarpQuad(call.src, call.dst, quad, code | (call.Bool() ? pxSmoothEdges : 0));
}

/// Floats of any bits have no right answer here, and must have some answer.
void Matrices(Call& call)
{
    ColorMatrix a, m;
    for (auto& row : a.m)
        for (float& value : row)
            value = call.Level();
    for (int step = call.input.Below(8); step >= 0; --step) {
        const float x = call.Level(), y = call.Level(), z = call.Level(), w = call.Level();
        const int order = call.input.Below(3);
        switch (call.input.Below(9)) {
        case 0:
            call.ops.ColorMatrixCombine(a, m, order);
            break;
        case 1:
            call.ops.ColorMatrixScale(m, x, y, z, w);
            break;
        case 2:
            call.ops.ColorMatrixOffset(m, x, y, z, w);
            break;
        case 3:
            call.ops.ColorMatrixSaturate(m, x);
            break;
        case 4:
            call.ops.ColorMatrixRotate(m, 360.0f * x, call.Number(), call.Number(), order);
            break;
        case 5:
            call.ops.ColorMatrixRotateX(m, 360.0f * x, order);
            call.ops.ColorMatrixRotateY(m, 360.0f * y, order);
            call.ops.ColorMatrixRotateZ(m, 360.0f * z, order);
            break;
        case 6:
            call.ops.ColorMatrixShear(m, x, y, order);
            break;
        case 7:
            call.ops.ColorMatrixHue(m, 360.0f * x);
            break;
        default: {
            float pixel[4] = {x, y, z, w};
            call.ops.ColorMatrixTransform(m, pixel);
            break;
        }
        }
    }
    const HsvColour hsv = PixelRGBToHSV({call.Level(), call.Level(), call.Level()});
    PixelHSVToRGB(hsv);
    PixelHSVToRGB({call.Level(), call.Level(), call.Level()});
}

/// An operation, and how many bytes a pixel usually has where it goes by those alone.
struct Operation {
    void (*run)(Call&);
    int srcBytes = 0, dstBytes = 0;
};

constexpr Operation kOperations[] = {
    {[](Call& call) { call.ops.Copy(call.src, call.dst); }},
    {CopyRect},
    {[](Call& call) {
        const int from = call.input.Below(6) - 1, to = call.input.Below(6) - 1;
        call.ops.CopyChannel(call.src, call.dst, from, to);
    }},
    {[](Call& call) { call.ops.ReverseChannels(call.src, call.dst); }},
    {[](Call& call) {
        const int marginX = call.Number(), marginY = call.Number();
        call.ops.ExtendBorder(call.src, call.dst, marginX, marginY);
    }},
    {Filter},
    {Blur},
    {[](Call& call) {
        const int channel = call.input.Below(6) - 1, value = call.Number();
        call.ops.SetChannel(call.dst, channel, value);
    }},
    {[](Call& call) { call.ops.Fill(call.dst, call.input.Take<std::uint32_t>()); }},
    {PermuteChannels},
    {[](Call& call) { call.ops.Convert(call.src, call.dst); }},
    {[](Call& call) { call.ops.AlphaOver(call.src, call.third, call.dst, call.Bool()); }},
    {[](Call& call) { call.ops.Premultiply(call.src, call.dst); }},
    {[](Call& call) {
        const float a = call.Level(), b = call.Bool() ? 1.0f - a : call.Level();
        call.ops.AddWeighted(call.src, call.third, call.dst, a, b);
    }},
    {[](Call& call) {
        const int a = call.Weight(), b = call.Weight();
        call.ops.Mix(call.src, call.dst, a, b);
    }},
    {[](Call& call) { call.ops.RGBToHSV(call.src, call.dst); }},
    {[](Call& call) { call.ops.HSVToRGB(call.src, call.dst); }},
    {[](Call& call) { call.ops.Tint(call.src, call.dst, call.input.Take<std::uint32_t>()); }},
    {[](Call& call) { call.ops.ClampFloats(call.dst); }},
    {AdjustColor},
    {[](Call& call) { call.ops.ARGBToYCbCr32F(call.src, call.dst); }},
    {[](Call& call) { call.ops.YCbCrToARGB32F(call.src, call.dst); }},
    {[](Call& call) { call.ops.BGRAToRGB24(call.src, call.dst); }, 4, 3},
    {[](Call& call) { call.ops.RGB24ToBGRA(call.src, call.dst, call.Number()); }, 3, 4},
    {[](Call& call) { call.ops.RGB24ToYCbCr422(call.src, call.dst); }, 3, 2},
    {[](Call& call) { call.ops.YCbCr422ToRGB24(call.src, call.dst); }, 2, 3},
    {Matrices},
    {ResizeRect},
    {WarpAffine},
    {WarpQuad},
};

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    fuzz::Input input(data, size);
    const fuzz::Operation& operation =
        fuzz::kOperations[input.Below(static_cast<int>(std::size(fuzz::kOperations)))];
    const bool alike = operation.srcBytes == operation.dstBytes && input.Below(2) != 0;
    fuzz::Picture from(input, operation.srcBytes);
    fuzz::Picture to = alike ? fuzz::Picture(input, from) : fuzz::Picture(input, operation.dstBytes);
    fuzz::Picture besides = alike ? fuzz::Picture(input, from) : fuzz::Picture(input);
    const int inPlace = input.Below(8);
    fuzz::Call call{input, {}, {}, {}};
    call.src.AttachFrame(&from.Record());
    call.dst.AttachFrame(inPlace == 0 ? &from.Record() : &to.Record());
    call.third.AttachFrame(inPlace == 1 ? &to.Record() : &besides.Record());
    operation.run(call);
    return 0;
}
