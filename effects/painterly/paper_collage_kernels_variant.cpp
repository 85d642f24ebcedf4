// The rows of Paper Collage, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "effects/painterly/paper_collage_kernels.h"
#include "image/primitives/detail/simd.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- greys --------------------------------------------------------------------------------------------

KELMORA_INLINE U32 Grey(U32 pixels)
{
    const F32 b = ToFloat((I32)(pixels & 0xFFu));
    const F32 g = ToFloat((I32)((pixels >> 8) & 0xFFu));
    const F32 r = ToFloat((I32)((pixels >> 16) & 0xFFu));
    const F32 luma = (0.298f * r + 0.586f * g + 0.113f * b) * 0.003921569f;
    const U32 grey = (U32)Truncate(luma * 255.0f);
    return grey | grey << 8 | grey << 16 | (U32)Truncate(luma) << 24;
}

void Greys(const uint8_t* pixels, uint8_t* grey, int width)
{
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(grey + at, Grey(Load<U32>(pixels + at)));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(grey + at, Grey(LoadPart<U32>(pixels + at, rest)), rest);
}

// --- masks --------------------------------------------------------------------------------------------

void Mask(const uint8_t* __restrict sheets, uint8_t* __restrict mask, int width, int sheet)
{
    const auto least = static_cast<uint8_t>(sheet);
    for (ptrdiff_t x = 0; x < width; ++x)
        mask[x] = sheets[x] >= least ? 255 : 0;
}

KELMORA_INLINE I16 SoftenWords(I16 sum)
{
    // sum * 455 >> 12 is the high word of 16 * sum * 455.
    return (I16)MulHigh((U16)((sum + static_cast<int16_t>(5)) << 4), U16{} + static_cast<uint16_t>(455));
}

template <class LoadBytes>
KELMORA_INLINE U8 SoftenBytes(const uint8_t* above, const uint8_t* middle, const uint8_t* below, ptrdiff_t x,
                              LoadBytes load)
{
    I16 low = {}, high = {};
    for (ptrdiff_t i = -1; i <= 1; ++i) {
        const U8 a = load(above, x + i), b = load(middle, x + i), c = load(below, x + i);
        low += WidenLow(a) + WidenLow(b) + WidenLow(c);
        high += WidenHigh(a) + WidenHigh(b) + WidenHigh(c);
    }
    return Pack(SoftenWords(low), SoftenWords(high));
}

void Soften(const uint8_t* above, const uint8_t* middle, const uint8_t* below, uint8_t* soft, int width)
{
    const auto one = [&](ptrdiff_t x) {
        int sum = 0;
        for (ptrdiff_t i = x - 1; i <= x + 1; ++i)
            sum += i < 0 || i >= width ? 0 : above[i] + middle[i] + below[i];
        soft[x] = static_cast<uint8_t>(((sum + 5) * 455) >> 12);
    };
    ptrdiff_t x = 0;
    if (width > 0)
        one(x++);
    for (; x + kVectorBytes + 1 <= width; x += kVectorBytes)
        Store(soft + x, SoftenBytes(above, middle, below, x, [](const uint8_t* row, ptrdiff_t at) {
                  return Load<U8>(row + at);
              }));
    for (; x < width; ++x)
        one(x);
}

// --- shadows ------------------------------------------------------------------------------------------

typedef uint8_t PixelBytes __attribute__((vector_size(kPixels), may_alias)); ///< a byte per pixel

/// A byte per pixel, in all four bytes of the pixel.
KELMORA_INLINE U32 Spread(PixelBytes bytes)
{
    const U32 wide = __builtin_convertvector(bytes, U32);
    const U32 pair = wide | wide << 8;
    return pair | pair << 16;
}

/// The product of two bytes in units of 255: (p + (p >> 8) + 1) >> 8.
KELMORA_INLINE I16 Times(I16 a, I16 b)
{
    const U16 p = (U16)a * (U16)b;
    return (I16)((p + (p >> 8) + static_cast<uint16_t>(1)) >> 8);
}

KELMORA_INLINE U32 Shade(U32 pixels, U32 shadow, PixelBytes soft)
{
    const U8 alpha = (U8)Spread(soft);
    const U8 rest = ~alpha;
    const I16 low =
        Times(WidenLow((U8)shadow), WidenLow(alpha)) + Times(WidenLow((U8)pixels), WidenLow(rest));
    const I16 high =
        Times(WidenHigh((U8)shadow), WidenHigh(alpha)) + Times(WidenHigh((U8)pixels), WidenHigh(rest));
    // Opaque stays opaque.
    return (U32)Pack(low, high) | 0xFF000000u;
}

KELMORA_INLINE PixelBytes Least(const uint8_t* sheets, const uint8_t* soft, int sheet)
{
    const auto lower = (PixelBytes)(Load<PixelBytes>(sheets) < static_cast<uint8_t>(sheet));
    return Load<PixelBytes>(soft) & lower;
}

KELMORA_INLINE bool IsZero(PixelBytes v)
{
#if defined(__AVX512BW__)
    const __m128i x = (__m128i)v;
    return _mm_testz_si128(x, x);
#else
    uint64_t bits = 0;
    __builtin_memcpy(&bits, &v, sizeof v);
    return bits == 0;
#endif
}

void ShadeRow(uint8_t* pixels, const uint8_t* sheets, const uint8_t* soft, int width, int sheet,
              uint32_t shadow)
{
    const U32 colour = U32{} + shadow;
    ptrdiff_t x = 0;
    for (; x + kPixels <= width; x += kPixels) {
        const PixelBytes alpha = Least(sheets + x, soft + x, sheet);
        if (!IsZero(alpha)) // shadows are narrow
            Store(pixels + 4 * x, Shade(Load<U32>(pixels + 4 * x), colour, alpha));
    }
    if (x < width) {
        const auto rest = static_cast<size_t>(width - x);
        uint8_t lastSheets[kPixels] = {}, lastSoft[kPixels] = {};
        __builtin_memcpy(lastSheets, sheets + x, rest);
        __builtin_memcpy(lastSoft, soft + x, rest);
        const int bytes = static_cast<int>(rest) * 4;
        StorePart(pixels + 4 * x,
                  Shade(LoadPart<U32>(pixels + 4 * x, bytes), colour, Least(lastSheets, lastSoft, sheet)),
                  bytes);
    }
}

void ColourRow(const uint8_t* __restrict sheets, uint8_t* __restrict pixels, int width,
               const uint32_t* __restrict colours)
{
    for (ptrdiff_t x = 0; x < width; ++x)
        __builtin_memcpy(pixels + 4 * x, colours + sheets[x], 4);
}

} // namespace

extern const PaperKernels kPaperKernels;
const PaperKernels kPaperKernels = {Greys, Mask, Soften, ShadeRow, ColourRow};

} // namespace kelmora::KELMORA_VARIANT
