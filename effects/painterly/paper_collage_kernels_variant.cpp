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

// --- sheets -------------------------------------------------------------------------------------------

/// Byte 2 of kVectorBytes pixels, in their order.
KELMORA_INLINE U8 RedBytes(const uint8_t* pixels)
{
    I32 red[4];
    for (int i = 0; i < 4; ++i)
        red[i] = (I32)((Load<U32>(pixels + i * kVectorBytes) >> 16) & 0xFFu);
    return (U8)FromLaneOrder((U32)Pack(Pack(red[0], red[1]), Pack(red[2], red[3])));
}

void Cut(const uint8_t* __restrict grey, uint8_t* __restrict sheets, int width,
         const uint8_t* __restrict limits, int count)
{
    ptrdiff_t x = 0;
    for (; x + kVectorBytes <= width; x += kVectorBytes) {
        const U8 red = RedBytes(grey + 4 * x);
        U8 sheet = {};
        for (int i = 0; i < count; ++i)
            sheet -= (U8)(red > U8{} + limits[i]);
        Store(sheets + x, sheet);
    }
    for (; x < width; ++x) {
        int sheet = 0;
        for (int i = 0; i < count; ++i)
            sheet += grey[4 * x + 2] > limits[i];
        sheets[x] = static_cast<uint8_t>(sheet);
    }
}

typedef uint8_t PixelBytes __attribute__((vector_size(kPixels), may_alias)); ///< a byte per pixel

/// Whether a vector's pixels are all on one sheet.
KELMORA_INLINE bool IsOnSheet(const uint8_t* sheets, uint8_t sheet)
{
    const auto same = PixelBytes{} + sheet;
    return __builtin_memcmp(sheets, &same, sizeof same) == 0;
}

/// Sums of a stretch's colours: neighbours are mostly on the same sheet, so that they are added side by side.
class StretchSums {
public:
    static constexpr int kMostPixels = 256 * kPixels; ///< so many do not overflow a word of their element

    /// The vectors from x on of which all pixels are on the sheet of the first. Gives the next one, at most `end`.
    KELMORA_METHOD ptrdiff_t AddRun(const uint8_t* pixels, const uint8_t* sheets, ptrdiff_t x, ptrdiff_t end)
    {
        const uint8_t sheet = sheets[x];
        const ptrdiff_t first = x;
        U32 ends = m_ends[sheet], middles = m_middles[sheet];
        for (; x + kPixels <= end && IsOnSheet(sheets + x, sheet); x += kPixels) {
            const U32 v = Load<U32>(pixels + 4 * x);
            ends += v & 0x00FF00FFu;
            middles += (v >> 8) & 0xFFu;
        }
        m_ends[sheet] = ends;
        m_middles[sheet] = middles;
        m_counts[sheet] += static_cast<uint32_t>(x - first);
        return x;
    }

    KELMORA_METHOD void AddPixel(const uint8_t* pixel, int sheet)
    {
        m_singles[sheet] +=
            pixel[0] | static_cast<uint64_t>(pixel[1]) << 21 | static_cast<uint64_t>(pixel[2]) << 42;
        ++m_counts[sheet];
    }

    KELMORA_METHOD void AddTo(PaperSums (&sums)[PaperKernels::kMostSheets]) const
    {
        constexpr uint64_t mask = (1u << 21) - 1;
        for (int i = 0; i < PaperKernels::kMostSheets; ++i) {
            if (m_counts[i] == 0)
                continue;
            sums[i].count += m_counts[i];
            sums[i].b += static_cast<int64_t>(m_singles[i] & mask) + Total(m_ends[i] & 0xFFFFu);
            sums[i].g += static_cast<int64_t>(m_singles[i] >> 21 & mask) + Total(m_middles[i]);
            sums[i].r += static_cast<int64_t>(m_singles[i] >> 42) + Total(m_ends[i] >> 16);
        }
    }

private:
    KELMORA_METHOD static int64_t Total(U32 v)
    {
        int64_t total = 0;
        for (int i = 0; i < kPixels; ++i)
            total += v[i];
        return total;
    }

    U32 m_ends[PaperKernels::kMostSheets] = {};         ///< blue in the low words, red in the high ones
    U32 m_middles[PaperKernels::kMostSheets] = {};      ///< green
    uint64_t m_singles[PaperKernels::kMostSheets] = {}; ///< pixels one by one, 21 bits for each colour
    uint32_t m_counts[PaperKernels::kMostSheets] = {};
};

void Add(const uint8_t* pixels, const uint8_t* sheets, int width,
         PaperSums (&sums)[PaperKernels::kMostSheets])
{
    for (ptrdiff_t x = 0; x < width;) {
        StretchSums stretch;
        const ptrdiff_t end = width - x < StretchSums::kMostPixels ? width : x + StretchSums::kMostPixels;
        while (x + kPixels <= end) {
            if (IsOnSheet(sheets + x, sheets[x])) {
                x = stretch.AddRun(pixels, sheets, x, end);
                continue;
            }
            for (const ptrdiff_t next = x + kPixels; x < next; ++x)
                stretch.AddPixel(pixels + 4 * x, sheets[x]);
        }
        for (; x < end; ++x)
            stretch.AddPixel(pixels + 4 * x, sheets[x]);
        stretch.AddTo(sums);
    }
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

KELMORA_INLINE U8 SoftenBytes(const uint8_t* above, const uint8_t* middle, const uint8_t* below)
{
    I16 low = {}, high = {};
    for (ptrdiff_t i = -1; i <= 1; ++i) {
        const U8 a = Load<U8>(above + i), b = Load<U8>(middle + i), c = Load<U8>(below + i);
        low += WidenLow(a) + WidenLow(b) + WidenLow(c);
        high += WidenHigh(a) + WidenHigh(b) + WidenHigh(c);
    }
    return Pack(SoftenWords(low), SoftenWords(high));
}

void Soften(const uint8_t* above, const uint8_t* middle, const uint8_t* below, uint8_t* soft, int width)
{
    ptrdiff_t x = 0;
    for (; x + kVectorBytes <= width; x += kVectorBytes)
        Store(soft + x, SoftenBytes(above + x, middle + x, below + x));
    for (; x < width; ++x) {
        int sum = 0;
        for (ptrdiff_t i = x - 1; i <= x + 1; ++i)
            sum += above[i] + middle[i] + below[i];
        soft[x] = static_cast<uint8_t>(((sum + 5) * 455) >> 12);
    }
}

// --- shadows ------------------------------------------------------------------------------------------

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

KELMORA_INLINE bool IsZero(U8 v)
{
#if defined(__AVX512BW__)
    return _mm512_test_epi8_mask((__m512i)v, (__m512i)v) == 0;
#elif defined(__AVX2__)
    return _mm256_testz_si256((__m256i)v, (__m256i)v);
#else
    typedef uint64_t Halves __attribute__((vector_size(16), may_alias));
    const Halves halves = (Halves)v;
    return (halves[0] | halves[1]) == 0;
#endif
}

/// kVectorBytes pixels, where their sheets are lower and the softened mask is not 0.
KELMORA_INLINE void ShadeStretch(uint8_t* pixels, U8 lower, const uint8_t* above, const uint8_t* middle,
                                 const uint8_t* below, U32 shadow)
{
    U8 any = {};
    for (ptrdiff_t i = -1; i <= 1; ++i)
        any |= Load<U8>(above + i) | Load<U8>(middle + i) | Load<U8>(below + i);
    if (IsZero(any))
        return;
    const U8 alpha = SoftenBytes(above, middle, below) & lower;
    uint8_t alphas[kVectorBytes];
    Store(alphas, alpha);
    for (int i = 0; i < 4; ++i) {
        const PixelBytes part = Load<PixelBytes>(alphas + i * kPixels);
        if (!IsZero(part)) // shadows are narrow
            Store(pixels + i * kVectorBytes, Shade(Load<U32>(pixels + i * kVectorBytes), shadow, part));
    }
}

void ShadeRow(const PaperShade& row)
{
    const U32 shadow = U32{} + row.shadow;
    const U8 sheet = U8{} + static_cast<uint8_t>(row.sheet);
    ptrdiff_t x = 0;
    for (; x + kVectorBytes <= row.width; x += kVectorBytes) {
        const U8 lower = (U8)(Load<U8>(row.sheets + x) < sheet);
        if (!IsZero(lower))
            ShadeStretch(row.pixels + 4 * x, lower, row.above + x, row.middle + x, row.below + x, shadow);
    }
    if (const int rest = static_cast<int>(row.width - x); rest > 0) {
        uint8_t pixels[4 * kVectorBytes] = {}, masks[3][kVectorBytes + 2] = {};
        const size_t bytes = 4 * static_cast<size_t>(rest), withEnds = static_cast<size_t>(rest) + 2;
        __builtin_memcpy(pixels, row.pixels + 4 * x, bytes);
        __builtin_memcpy(masks[0], row.above + x - 1, withEnds);
        __builtin_memcpy(masks[1], row.middle + x - 1, withEnds);
        __builtin_memcpy(masks[2], row.below + x - 1, withEnds);
        const U8 lower = (U8)(LoadPart<U8>(row.sheets + x, rest) < sheet);
        ShadeStretch(pixels, lower, masks[0] + 1, masks[1] + 1, masks[2] + 1, shadow);
        __builtin_memcpy(row.pixels + 4 * x, pixels, bytes);
    }
}

// --- colours ------------------------------------------------------------------------------------------

#if defined(__AVX512BW__)

KELMORA_INLINE U32 Pick(const uint32_t (&colours)[PaperKernels::kMostSheets], PixelBytes sheets)
{
    const __m512i table =
        _mm512_castsi256_si512(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(colours)));
    return (U32)_mm512_permutexvar_epi32(_mm512_cvtepu8_epi32((__m128i)sheets), table);
}

#elif defined(__AVX2__)

KELMORA_INLINE U32 Pick(const uint32_t (&colours)[PaperKernels::kMostSheets], PixelBytes sheets)
{
    const __m256i table = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(colours));
    const __m256i places = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&sheets)));
    return (U32)_mm256_permutevar8x32_epi32(table, places);
}

#else

KELMORA_INLINE U32 Pick(const uint32_t (&colours)[PaperKernels::kMostSheets], PixelBytes sheets)
{
    return U32{colours[sheets[0]], colours[sheets[1]], colours[sheets[2]], colours[sheets[3]]};
}

#endif

void ColourRow(const uint8_t* sheets, uint8_t* pixels, int width,
               const uint32_t (&colours)[PaperKernels::kMostSheets])
{
    ptrdiff_t x = 0;
    for (; x + kPixels <= width; x += kPixels)
        Store(pixels + 4 * x, Pick(colours, Load<PixelBytes>(sheets + x)));
    for (; x < width; ++x)
        __builtin_memcpy(pixels + 4 * x, colours + sheets[x], 4);
}

} // namespace

extern const PaperKernels kPaperKernels;
const PaperKernels kPaperKernels = {Greys, Cut, Add, Mask, Soften, ShadeRow, ColourRow};

} // namespace kelmora::KELMORA_VARIANT
