// The resizes' loops, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd.h"
#include "image/primitives/resize_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

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

template <int taps>
KELMORA_INLINE void AcrossRow(const ResizeAcross& across)
{
    float* out = across.out;
    for (int x = 0; x < across.count; x += kPixels, out += 4 * kPixels) {
        U8 picked[taps];
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
    across.taps == 4 ? AcrossRow<4>(across) : AcrossRow<6>(across);
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

template <int taps>
KELMORA_INLINE void DownRow(const ResizeDown& given)
{
    const ResizeDown down = given; // stores could change it for all that the compiler knows
    int x = 0;
    for (; x + kPixels <= down.count; x += kPixels)
        Store(down.dst + x * 4, DownPixels<taps>(down, static_cast<ptrdiff_t>(x) * 4));
    if (x < down.count)
        StorePart(down.dst + x * 4, DownPixels<taps>(down, static_cast<ptrdiff_t>(x) * 4),
                  (down.count - x) * 4);
}

void Down(const ResizeDown& down)
{
    down.taps == 4 ? DownRow<4>(down) : DownRow<6>(down);
}

} // namespace

extern const ResizeKernels kResizeKernels;
const ResizeKernels kResizeKernels = {Across, Down};

} // namespace kelmora::KELMORA_VARIANT
