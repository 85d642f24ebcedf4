#include "image/exact_math.h"
#include "image/image_ops.h"

namespace kelmora {
namespace {

/// rows[i][j] of the product of two matrices, summed in double.
float ProductAt(const ColorMatrix& a, const ColorMatrix& b, int row, int column)
{
    double sum = 0;
    for (int k = 0; k < 5; ++k)
        sum += static_cast<double>(a.m[row][k]) * static_cast<double>(b.m[k][column]);
    return static_cast<float>(sum);
}

} // namespace

void ImageOps::ColorMatrixCombine(const ColorMatrix& a, ColorMatrix& m, int order)
{
    const ColorMatrix left = order ? a : m;
    const ColorMatrix right = order ? m : a;
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 4; ++j)
            m.m[i][j] = ProductAt(left, right, i, j);
}

void ImageOps::ColorMatrixScale(ColorMatrix& m, float r, float g, float b, float a)
{
    ColorMatrix scale;
    const float factors[4] = {r, g, b, a};
    for (int i = 0; i < 4; ++i)
        scale.m[i][i] = factors[i];
    ColorMatrixCombine(scale, m, 0);
}

void ImageOps::ColorMatrixOffset(ColorMatrix& m, float r, float g, float b, float a)
{
    ColorMatrix offset;
    const float offsets[4] = {b, g, r, a};
    for (int i = 0; i < 4; ++i)
        offset.m[4][i] = offsets[i];
    ColorMatrixCombine(offset, m, 1);
}

void ImageOps::ColorMatrixSaturate(ColorMatrix& m, float s)
{
    constexpr double luma[3] = {0.3086, 0.6094, 0.082};
    ColorMatrix saturate;
    for (int i = 0; i < 3; ++i) {
        const double grey = luma[i] * (1.0 - static_cast<double>(s));
        for (int j = 0; j < 3; ++j)
            saturate.m[i][j] = static_cast<float>(i == j ? grey + static_cast<double>(s) : grey);
    }
    ColorMatrixCombine(saturate, m, 1);
}

void ImageOps::ColorMatrixRotate(ColorMatrix& m, float degrees, int axisA, int axisB, int order)
{
    const auto isAxis = [](int axis) { return axis >= 0 && axis < 5; };
    if (!isAxis(axisA) || !isAxis(axisB) || axisA == axisB)
        return;
    const SineCosine turn = ExactTurnDegrees(static_cast<double>(degrees));
    ColorMatrix rotation;
    rotation.m[axisB][axisB] = rotation.m[axisA][axisA] = static_cast<float>(turn.cosine);
    rotation.m[axisB][axisA] = static_cast<float>(turn.sine);
    rotation.m[axisA][axisB] = static_cast<float>(-turn.sine);
    ColorMatrixCombine(rotation, m, order);
}

void ImageOps::ColorMatrixRotateX(ColorMatrix& m, float degrees, int order)
{
    ColorMatrixRotate(m, degrees, 2, 1, order);
}

void ImageOps::ColorMatrixRotateY(ColorMatrix& m, float degrees, int order)
{
    ColorMatrixRotate(m, degrees, 0, 2, order);
}

void ImageOps::ColorMatrixRotateZ(ColorMatrix& m, float degrees, int order)
{
    ColorMatrixRotate(m, degrees, 1, 0, order);
}

void ImageOps::ColorMatrixShear(ColorMatrix& m, float a, [[maybe_unused]] float b, int order)
{
    ColorMatrix shear;
    shear.m[1][0] = a;
    ColorMatrixCombine(shear, m, order);
}

void ImageOps::ColorMatrixHue(ColorMatrix& m, float degrees)
{
    // Grey is turned onto an axis, and the plane of equal luminance is sheared flat; what lies between there
    // and back is the turn itself.
    ColorMatrix there;
    ColorMatrixRotateZ(there, 45.0f, 0);
    ColorMatrixRotateY(there, -35.0f, 1);
    float luminance[4] = {0.082f, 0.6094f, 0.3086f, 1.0f};
    ColorMatrixTransform(there, luminance);
    const float p = luminance[0] / luminance[2];
    const float q = luminance[1] / luminance[2];
    ColorMatrixShear(there, p, q, 1);

    ColorMatrix back;
    ColorMatrixShear(back, -p, -q, 0);
    ColorMatrixRotateY(back, 35.0f, 1);
    ColorMatrixRotateZ(back, -45.0f, 1);

    ColorMatrixCombine(there, m, 1);
    ColorMatrixRotateX(m, degrees, 1);
    ColorMatrixCombine(back, m, 1);
}

void ImageOps::ColorMatrixTransform(const ColorMatrix& m, float v[4])
{
    float out[4];
    for (int i = 0; i < 4; ++i) {
        double sum = static_cast<double>(m.m[4][i]);
        for (int k = 0; k < 4; ++k)
            sum += static_cast<double>(v[k]) * static_cast<double>(m.m[k][i]);
        out[i] = static_cast<float>(sum);
    }
    for (int i = 0; i < 4; ++i)
        v[i] = out[i];
}

} // namespace kelmora
