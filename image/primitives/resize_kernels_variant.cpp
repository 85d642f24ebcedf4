// The resizes' loops, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd.h"
#include "image/primitives/resize_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// Two taps have exact sums. Across they are 22 bits, too wide for the words that are multiplied fast: they are kept
// as high and low parts.
constexpr int kLowBits = 11;
constexpr int kLowMask = (1 << kLowBits) - 1;

// --- across ---------------------------------------------------------------------------------------------

#if defined(__AVX512BW__) || !defined(__SSE2__)

/// Taps 0 to taps - 1 of kPixels pixels.
template <int taps>
KELMORA_INLINE void PickTaps(const uint8_t* row, const int32_t* first, U8 (&picked)[taps])
{
#if defined(__AVX512BW__)
    // All of them lie in two vectors unless the picture is shrunk to half and less.
    const int base = first[0];
    if (first[kPixels - 1] - base + taps <= 2 * kPixels) {
        const uint8_t* from = row + static_cast<ptrdiff_t>(base) * 4;
        const __m512i low = _mm512_loadu_si512(from), high = _mm512_loadu_si512(from + 64);
        __m512i index = _mm512_sub_epi32(_mm512_loadu_si512(first), _mm512_set1_epi32(base));
        for (int k = 0; k < taps; ++k) {
            picked[k] = (U8)_mm512_permutex2var_epi32(low, index, high);
            index = _mm512_add_epi32(index, _mm512_set1_epi32(1));
        }
        return;
    }
#endif
    uint32_t pixels[taps][kPixels];
    for (int i = 0; i < kPixels; ++i) {
        const uint8_t* from = row + static_cast<ptrdiff_t>(first[i]) * 4;
        for (int k = 0; k < taps; ++k)
            __builtin_memcpy(&pixels[k][i], from + k * 4, 4);
    }
    for (int k = 0; k < taps; ++k)
        picked[k] = Load<U8>(pixels[k]);
}

/// Bytes of both, one by one, as words.
struct BytePairs {
    I16 pixels[4]; ///< of pixel i of every 16-byte lane
};

KELMORA_INLINE BytePairs PairUp(U8 a, U8 b)
{
    const U8 low = InterleaveLow(a, b), high = InterleaveHigh(a, b);
    return {{WidenLow(low), WidenHigh(low), WidenLow(high), WidenHigh(high)}};
}

/// As two vectors of words with the high parts and two with the low ones.
KELMORA_INLINE void StoreSplit(float* out, const I32 (&sums)[4])
{
    for (int i = 0; i < 4; i += 2, out += kPixels) {
        Store(out, Pack(sums[i] >> kLowBits, sums[i + 1] >> kLowBits));
        Store(out + 2 * kPixels, Pack(sums[i] & kLowMask, sums[i + 1] & kLowMask));
    }
}

template <int taps>
KELMORA_INLINE void AcrossRow(const ResizeAcross& across)
{
    float* out = across.out;
    for (int x = 0; x < across.count; x += kPixels, out += 4 * kPixels) {
        U8 picked[taps];
        __builtin_prefetch(across.ahead + static_cast<ptrdiff_t>(across.first[x]) * 4);
        PickTaps<taps>(across.row, across.first + x, picked);
        I32 sums[4] = {};
        for (int k = 0; k < taps; k += 2) {
            const BytePairs pairs = PairUp(picked[k], picked[k + 1]);
            const I32 weights = Load<I32>(across.weights + k / 2 * static_cast<ptrdiff_t>(across.stride) + x);
            sums[0] += MulAddPairs(pairs.pixels[0], (I16)Spread<0>(weights));
            sums[1] += MulAddPairs(pairs.pixels[1], (I16)Spread<1>(weights));
            sums[2] += MulAddPairs(pairs.pixels[2], (I16)Spread<2>(weights));
            sums[3] += MulAddPairs(pairs.pixels[3], (I16)Spread<3>(weights));
        }
        if constexpr (taps == 2)
            StoreSplit(out, sums);
        else
            for (int i = 0; i < 4; ++i)
                Store(out + i * kPixels, ToFloat(sums[i]));
    }
}

#else

/// Two neighbouring pixels, words of both one by one, times their weights.
KELMORA_INLINE __m128i WeighPair(__m128i words, int32_t weights)
{
    return _mm_madd_epi16(_mm_unpacklo_epi16(words, _mm_srli_si128(words, 8)), _mm_set1_epi32(weights));
}

KELMORA_INLINE void AcrossTwo(const ResizeAcross& across)
{
    const __m128i zero = _mm_setzero_si128();
    for (int x = 0; x < across.count; ++x) {
        const uint8_t* from = across.row + static_cast<ptrdiff_t>(across.first[x]) * 4;
        const __m128i two = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
        const __m128i sum = WeighPair(_mm_unpacklo_epi8(two, zero), across.weights[x]);
        const __m128i split =
            _mm_packs_epi32(_mm_srai_epi32(sum, kLowBits), _mm_and_si128(sum, _mm_set1_epi32(kLowMask)));
        // Where this pixel's words stand in the vectors of its block: two pixels in each 16 bytes.
        const int inBlock = x % kPixels;
        float* const high = across.out + static_cast<ptrdiff_t>(x - inBlock) * 4 + inBlock % 4 / 2 * kPixels
            + inBlock / 4 * 4 + inBlock % 2 * 2;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(high), split);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(high + 2 * kPixels), _mm_unpackhi_epi64(split, split));
    }
}

/// Without permutations across lanes a pixel's taps are best taken at once: they lie side by side.
template <int taps>
KELMORA_INLINE void AcrossRow(const ResizeAcross& across)
{
    const __m128i zero = _mm_setzero_si128();
    for (int x = 0; x < across.count; ++x) {
        const uint8_t* from = across.row + static_cast<ptrdiff_t>(across.first[x]) * 4;
        const int32_t* weights = across.weights + x;
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        __m128i sum = _mm_add_epi32(WeighPair(_mm_unpacklo_epi8(four, zero), weights[0]),
                                    WeighPair(_mm_unpackhi_epi8(four, zero), weights[across.stride]));
        if constexpr (taps == 6) {
            const __m128i two = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + 16));
            sum = _mm_add_epi32(
                sum,
                WeighPair(_mm_unpacklo_epi8(two, zero), weights[2 * static_cast<ptrdiff_t>(across.stride)]));
        }
        // Where the sums of this pixel stand in the vectors of its block.
        const int inBlock = x % kPixels;
        const ptrdiff_t place =
            static_cast<ptrdiff_t>(x - inBlock) * 4 + (inBlock % 4) * kPixels + inBlock / 4 * 4;
        _mm_storeu_ps(across.out + place, _mm_cvtepi32_ps(sum));
    }
}

#endif

void Across(const ResizeAcross& across)
{
    switch (across.taps) {
    case 2:
#if defined(__AVX512BW__) || !defined(__SSE2__)
        return AcrossRow<2>(across);
#else
        return AcrossTwo(across);
#endif
    case 4:
        return AcrossRow<4>(across);
    default:
        return AcrossRow<6>(across);
    }
}

// --- down -----------------------------------------------------------------------------------------------

template <int taps>
KELMORA_INLINE U8 DownPixels(const ResizeDown& down, ptrdiff_t at)
{
    I32 rounded[4];
    for (int i = 0; i < 4; ++i) {
        const ptrdiff_t from = at + i * kPixels;
        F32 sum = Load<F32>(down.rows[0] + from) * down.weights[0];
        for (int k = 1; k < taps; ++k)
            sum += Load<F32>(down.rows[k] + from) * down.weights[k];
        rounded[i] = Round(sum);
    }
    return Pack(Pack(rounded[0], rounded[1]), Pack(rounded[2], rounded[3]));
}

/// The words' sums, of the first or the second half of each 16 bytes.
template <bool first>
KELMORA_INLINE I32 SumWords(I16 above, I16 below, I16 weights)
{
    return MulAddPairs(first ? InterleaveLow(above, below) : InterleaveHigh(above, below), weights);
}

/// (high * 2^kLowBits + low) / 2^28, to nearest, halves up: what the low sum loses cannot carry.
KELMORA_INLINE I32 JoinSums(I32 high, I32 low)
{
    constexpr int shift = 28 - kLowBits;
    return (high + (low >> kLowBits) + (1 << (shift - 1))) >> shift;
}

KELMORA_INLINE U8 DownTwo(const float* above, const float* below, I16 weights)
{
    I16 words[2];
    for (int i = 0; i < 2; ++i, above += kPixels, below += kPixels) {
        const I16 high[] = {Load<I16>(above), Load<I16>(below)};
        const I16 low[] = {Load<I16>(above + 2 * kPixels), Load<I16>(below + 2 * kPixels)};
        words[i] = Pack(
            JoinSums(SumWords<true>(high[0], high[1], weights), SumWords<true>(low[0], low[1], weights)),
            JoinSums(SumWords<false>(high[0], high[1], weights), SumWords<false>(low[0], low[1], weights)));
    }
    return Pack(words[0], words[1]);
}

void DownTwoRow(const ResizeDown& down)
{
    const float *const above = down.rows[0], *const below = down.rows[1];
    uint8_t* const dst = down.dst;
    const I16 weights = (I16)(I32{} + (down.whole[0] | down.whole[1] << 16));
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(down.count) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
        __builtin_prefetch(down.ahead + at, 1);
        Store(dst + at, DownTwo(above + at, below + at, weights));
    }
    if (at < bytes)
        StorePart(dst + at, DownTwo(above + at, below + at, weights), static_cast<int>(bytes - at));
}

template <int taps>
KELMORA_INLINE void DownRow(const ResizeDown& given)
{
    const ResizeDown down = given; // stores could change it for all that the compiler knows
    int x = 0;
    for (; x + kPixels <= down.count; x += kPixels) {
        __builtin_prefetch(down.ahead + x * 4, 1);
        Store(down.dst + x * 4, DownPixels<taps>(down, static_cast<ptrdiff_t>(x) * 4));
    }
    if (x < down.count)
        StorePart(down.dst + x * 4, DownPixels<taps>(down, static_cast<ptrdiff_t>(x) * 4),
                  (down.count - x) * 4);
}

void Down(const ResizeDown& down)
{
    switch (down.taps) {
    case 2:
        return DownTwoRow(down);
    case 4:
        return DownRow<4>(down);
    default:
        return DownRow<6>(down);
    }
}

// --- floats ---------------------------------------------------------------------------------------------

/// A pixel's doubles, or the half of them that a vector holds.
typedef double PixelPart __attribute__((vector_size(kVectorBytes < 32 ? 16 : 32), may_alias));

constexpr int kPartDoubles = sizeof(PixelPart) / 8;
constexpr int kDoubles = kVectorBytes / 8; ///< doubles in a vector
constexpr int kPairVectors = 8 / kDoubles; ///< vectors for a pixel of two rows

void Widen(const float* one, const float* other, double* to, int pixels)
{
    for (int x = 0; x < pixels; ++x, one += 4, other += 4, to += 8) {
#if defined(__AVX512BW__)
        const __m256 pair =
            _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(one)), _mm_loadu_ps(other), 1);
        _mm512_storeu_pd(to, _mm512_cvtps_pd(pair));
#else
        for (int i = 0; i < 4; i += kDoubles) {
            Store(to + i, LoadFloatsAsDoubles(one + i));
            Store(to + 4 + i, LoadFloatsAsDoubles(other + i));
        }
#endif
    }
}

/// A pixel of each of two rows.
KELMORA_INLINE void StorePair(double* one, double* other, const F64 (&pair)[kPairVectors])
{
#if defined(__AVX512BW__)
    _mm256_storeu_pd(one, _mm512_castpd512_pd256((__m512d)pair[0]));
    _mm256_storeu_pd(other, _mm512_extractf64x4_pd((__m512d)pair[0], 1));
#else
    for (int i = 0; i < kPairVectors / 2; ++i) {
        Store(one + i * kDoubles, pair[i]);
        Store(other + i * kDoubles, pair[kPairVectors / 2 + i]);
    }
#endif
}

/// The rows share the weights, which are as many loads as the values of a row by itself.
template <int taps>
KELMORA_INLINE void AcrossFloatRows(const ResizeAcrossFloats& given)
{
    const ResizeAcrossFloats across = given; // stores could change it for all that the compiler knows
    const double* weights = across.weights;
    for (ptrdiff_t x = 0; x < across.count; ++x, weights += taps) {
        const ptrdiff_t column = across.first[x] - across.first[0];
        __builtin_prefetch(across.ahead[0] + column * 4);
        __builtin_prefetch(across.ahead[1] + column * 4);
        const double* from = across.rows + column * 8;
        F64 sums[kPairVectors];
        for (int i = 0; i < kPairVectors; ++i)
            sums[i] = Load<F64>(from + i * kDoubles) * weights[0];
        for (int k = 1; k < taps; ++k)
            for (int i = 0; i < kPairVectors; ++i)
                sums[i] += Load<F64>(from + k * 8 + i * kDoubles) * weights[k];
        StorePair(across.out[0] + x * 4, across.out[1] + x * 4, sums);
    }
}

void AcrossFloats(const ResizeAcrossFloats& across)
{
    switch (across.taps) {
    case 2:
        return AcrossFloatRows<2>(across);
    case 4:
        return AcrossFloatRows<4>(across);
    default:
        return AcrossFloatRows<6>(across);
    }
}

template <class V, int taps>
KELMORA_INLINE V DownFloatSum(const ResizeDownFloats& down, int at)
{
    V sum = Load<V>(down.rows[0] + at) * down.weights[0];
    for (int k = 1; k < taps; ++k)
        sum += Load<V>(down.rows[k] + at) * down.weights[k];
    return sum;
}

template <bool levels, class V>
KELMORA_INLINE V Level(V value)
{
    if constexpr (!levels)
        return value;
    else if constexpr (sizeof(V) == sizeof(F32)) // as one instruction each
        return Least(Most(value, F32{}), F32{} + 1.0f);
    value = value > 0.0f ? value : V{};
    return value < 1.0f ? value : V{} + 1.0f;
}

/// Values `first` to `end` - 1, whole pixels.
template <int taps, bool levels>
KELMORA_INLINE void DownFloatPixels(const ResizeDownFloats& down, int first, int end)
{
    typedef float PartFloats __attribute__((vector_size(sizeof(PixelPart) / 2), may_alias));
    for (int i = first; i < end; i += kPartDoubles)
        Store(down.dst + i,
              Level<levels>(__builtin_convertvector((DownFloatSum<PixelPart, taps>(down, i)), PartFloats)));
}

template <int taps, bool levels>
KELMORA_INLINE void DownFloatRow(const ResizeDownFloats& given)
{
    const ResizeDownFloats down = given; // likewise
    // Pixels up to a boundary that vectors can be streamed to.
    const auto before = static_cast<int>(-reinterpret_cast<uintptr_t>(down.dst) % kVectorBytes);
    const bool streams = down.streams && before % 16 == 0 && before / 4 <= down.values;
    int i = streams ? before / 4 : 0;
    DownFloatPixels<taps, levels>(down, 0, i);
    for (; i + 2 * kDoubles <= down.values; i += 2 * kDoubles) {
        const F32 sums = Level<levels>(
            Narrow({DownFloatSum<F64, taps>(down, i), DownFloatSum<F64, taps>(down, i + kDoubles)}));
        streams ? Stream(down.dst + i, sums) : Store(down.dst + i, sums);
    }
    DownFloatPixels<taps, levels>(down, i, down.values);
}

template <int taps>
KELMORA_INLINE void DownFloatRow(const ResizeDownFloats& down)
{
    down.levels ? DownFloatRow<taps, true>(down) : DownFloatRow<taps, false>(down);
}

void DownFloats(const ResizeDownFloats& down)
{
    switch (down.taps) {
    case 2:
        return DownFloatRow<2>(down);
    case 4:
        return DownFloatRow<4>(down);
    default:
        return DownFloatRow<6>(down);
    }
}

void EndStreams()
{
    EndStream();
}

} // namespace

extern const ResizeKernels kResizeKernels;
const ResizeKernels kResizeKernels = {Across, Down, Widen, AcrossFloats, DownFloats, EndStreams};

} // namespace kelmora::KELMORA_VARIANT
