// Plain loops, compiled once per instruction set.

#include "bench/plain_loops.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

template <class T>
void Fill(T* __restrict dst, int pixels, const T* __restrict colour)
{
    for (int i = 0; i < pixels; ++i)
        for (int c = 0; c < 4; ++c)
            dst[4 * i + c] = colour[c];
}

template <class T>
void CopyAlpha(const T* __restrict src, T* __restrict dst, int pixels)
{
    for (int i = 0; i < pixels; ++i)
        dst[4 * i + 3] = src[4 * i + 3];
}

template <class T>
void ExtractAlpha(const T* __restrict src, T* __restrict dst, int pixels)
{
    for (int i = 0; i < pixels; ++i)
        dst[i] = src[4 * i + 3];
}

template <class T>
void Reverse(const T* __restrict src, T* __restrict dst, int pixels)
{
    for (int i = 0; i < pixels; ++i)
        for (int c = 0; c < 4; ++c)
            dst[4 * i + c] = src[4 * i + 3 - c];
}

void ToFloats(const uint8_t* __restrict src, float* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; ++i)
        dst[i] = (float)src[i] * 0.003921569f;
}

void ToBytes(const float* __restrict src, uint8_t* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        const float value = src[i] > 0.0f ? src[i] < 1.0f ? src[i] : 1.0f : 0.0f;
        dst[i] = (uint8_t)(int)(value * 255.0f + 0.5f);
    }
}

void WeightedBytes(const uint8_t* __restrict a, const uint8_t* __restrict b, uint8_t* __restrict dst,
                   int pixels, int wa, int wb)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        const int value = (a[i] * wa + b[i] * wb) / 255;
        dst[i] = (uint8_t)(value < 255 ? value : 255);
    }
}

void WeightedFloats(const float* __restrict a, const float* __restrict b, float* __restrict dst, int pixels,
                    float wa, float wb)
{
    for (int i = 0; i < 4 * pixels; ++i)
        dst[i] = a[i] * wa + b[i] * wb;
}

int Product(int a, int b)
{
    const int p = a * b;
    return (p + (p >> 8) + 1) >> 8;
}

void MixBytes(const uint8_t* __restrict a, uint8_t* __restrict b, int pixels, int wa, int wb)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        const int value = Product(a[i], wa) + Product(b[i], wb);
        b[i] = (uint8_t)(value < 255 ? value : 255);
    }
}

void MixFloats(const float* __restrict a, float* __restrict b, int pixels, float wa, float wb)
{
    for (int i = 0; i < 4 * pixels; ++i)
        b[i] = a[i] * wa + b[i] * wb;
}

void AverageBytes(const uint8_t* __restrict a, uint8_t* __restrict b, int pixels)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        const int sum = a[i] + b[i];
        b[i] = (uint8_t)((sum + (sum >> 1 & 1)) >> 1);
    }
}

void AddFloats(const float* __restrict a, float* __restrict b, int pixels)
{
    for (int i = 0; i < 4 * pixels; ++i)
        b[i] += a[i];
}

void ScaleBytes(uint8_t* __restrict picture, int pixels, const uint8_t* __restrict scale)
{
    for (int i = 0; i < pixels; ++i)
        for (int c = 0; c < 4; ++c)
            picture[4 * i + c] = (uint8_t)Product(picture[4 * i + c], scale[c]);
}

void PremultiplyBytes(const uint8_t* __restrict src, uint8_t* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4) {
        for (int c = 0; c < 3; ++c)
            dst[i + c] = (uint8_t)Product(src[i + c], src[i + 3]);
        dst[i + 3] = src[i + 3];
    }
}

void PremultiplyFloats(const float* __restrict src, float* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4)
        for (int c = 0; c < 3; ++c)
            dst[i + c] = src[i + c] * src[i + 3];
}

void OverBytes(const uint8_t* __restrict a, const uint8_t* __restrict b, uint8_t* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4) {
        const int a1 = a[i + 3], a2 = b[i + 3];
        for (int c = 0; c < 3; ++c)
            dst[i + c] = (uint8_t)(Product(a[i + c], a1) + Product(Product(b[i + c], a2), 255 - a1));
        dst[i + 3] = (uint8_t)(a1 + Product(a2, 255 - a1));
    }
}

void OverFloats(const float* __restrict a, const float* __restrict b, float* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4) {
        const float a1 = a[i + 3], a2 = b[i + 3];
        for (int c = 0; c < 3; ++c)
            dst[i + c] = a[i + c] * a1 + b[i + c] * a2 * (1.0f - a1);
        dst[i + 3] = a1 + a2 * (1.0f - a1);
    }
}

void OverPremultipliedBytes(const uint8_t* __restrict a, const uint8_t* __restrict b, uint8_t* __restrict dst,
                            int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4)
        for (int c = 0; c < 4; ++c) {
            const int value = a[i + c] + Product(b[i + c], 255 - a[i + 3]);
            dst[i + c] = (uint8_t)(value < 255 ? value : 255);
        }
}

void OverPremultipliedFloats(const float* __restrict a, const float* __restrict b, float* __restrict dst,
                             int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4)
        for (int c = 0; c < 4; ++c)
            dst[i + c] = a[i + c] + b[i + c] * (1.0f - a[i + 3]);
}

uint8_t RoundedByte(float value)
{
    value = value > 0.0f ? value : 0.0f;
    value = value < 255.0f ? value : 255.0f;
    return (uint8_t)(int)(value + 0.5f);
}

void TwistBytes(const uint8_t* __restrict src, uint8_t* __restrict dst, int pixels,
                const float (*__restrict twist)[4])
{
    for (int i = 0; i < 4 * pixels; i += 4)
        for (int c = 0; c < 3; ++c)
            dst[i + c] = RoundedByte(src[i] * twist[c][0] + src[i + 1] * twist[c][1]
                                     + src[i + 2] * twist[c][2] + twist[c][3]);
}

void TwistFloats(const float* __restrict src, float* __restrict dst, int pixels,
                 const float (*__restrict twist)[4])
{
    for (int i = 0; i < 4 * pixels; i += 4)
        for (int c = 0; c < 3; ++c)
            dst[i + c] =
                src[i] * twist[c][0] + src[i + 1] * twist[c][1] + src[i + 2] * twist[c][2] + twist[c][3];
}

template <class T>
float Luma(const T* pixel)
{
    return 0.113f * (float)pixel[0] + 0.586f * (float)pixel[1] + 0.298f * (float)pixel[2];
}

void TintBytes(const uint8_t* __restrict src, uint8_t* __restrict dst, int pixels,
               const float* __restrict colour)
{
    for (int i = 0; i < 4 * pixels; i += 4) {
        const float luma = Luma(src + i);
        for (int c = 0; c < 4; ++c)
            dst[i + c] = (uint8_t)(int)(luma * colour[c]);
    }
}

void TintFloats(const float* __restrict src, float* __restrict dst, int pixels,
                const float* __restrict colour)
{
    for (int i = 0; i < 4 * pixels; i += 4) {
        const float luma = Luma(src + i);
        for (int c = 0; c < 4; ++c)
            dst[i + c] = luma * colour[c];
    }
}

/// Hue begins at blue and goes by green to red.
void HsvBytes(const uint8_t* __restrict src, uint8_t* __restrict dst, int pixels)
{
    for (int i = 0; i < 4 * pixels; i += 4) {
        const int b = src[i], g = src[i + 1], r = src[i + 2];
        const int high = b > g ? b > r ? b : r : g > r ? g : r, low = b < g ? b < r ? b : r : g < r ? g : r;
        const float span = (float)(high - low), sixth = 255.0f / 6.0f;
        float hue = 0.0f;
        if (high != low)
            hue = high == b ? (float)(g - r) / span
                : high == g ? (float)(r - b) / span + 2.0f
                            : (float)(b - g) / span + 4.0f;
        hue = hue < 0.0f ? hue + 6.0f : hue;
        dst[i] = RoundedByte(hue * sixth);
        dst[i + 1] = RoundedByte(high ? 255.0f * span / (float)high : 0.0f);
        dst[i + 2] = (uint8_t)high;
    }
}

void SharpenRow(const uint8_t* __restrict middle, uint8_t* __restrict dst, int pixels, int step)
{
    for (int i = 0; i < 4 * pixels; i += 4)
        for (int c = i; c < i + 3; ++c) {
            int sum = 17 * middle[c];
            for (int y = -1; y <= 1; ++y)
                for (int x = -4; x <= 4; x += 4)
                    sum -= middle[c + y * step + x];
            sum = (sum + 4) >> 3;
            dst[c] = (uint8_t)(sum < 0 ? 0 : sum < 255 ? sum : 255);
        }
}

void FilterRowBytes(const uint8_t* __restrict src, uint8_t* __restrict dst, int pixels,
                    const float* __restrict taps, int count)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        float sum = 0.0f;
        for (int j = 0; j < count; ++j)
            sum += taps[j] * (float)src[i + 4 * j];
        dst[i] = RoundedByte(sum);
    }
}

void FilterRowFloats(const float* __restrict src, float* __restrict dst, int pixels,
                     const float* __restrict taps, int count)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        float sum = 0.0f;
        for (int j = 0; j < count; ++j)
            sum += taps[j] * src[i + 4 * j];
        dst[i] = sum;
    }
}

} // namespace

extern const PlainLoops kPlainLoops;
const PlainLoops kPlainLoops = {Fill<uint8_t>,
                                Fill<float>,
                                CopyAlpha<uint8_t>,
                                CopyAlpha<float>,
                                ExtractAlpha<uint8_t>,
                                ExtractAlpha<float>,
                                Reverse<uint8_t>,
                                Reverse<float>,
                                ToFloats,
                                ToBytes,
                                WeightedBytes,
                                WeightedFloats,
                                MixBytes,
                                MixFloats,
                                AverageBytes,
                                AddFloats,
                                ScaleBytes,
                                PremultiplyBytes,
                                PremultiplyFloats,
                                OverBytes,
                                OverFloats,
                                OverPremultipliedBytes,
                                OverPremultipliedFloats,
                                TwistBytes,
                                TwistFloats,
                                TintBytes,
                                TintFloats,
                                HsvBytes,
                                SharpenRow,
                                FilterRowBytes,
                                FilterRowFloats};

} // namespace kelmora::KELMORA_VARIANT
