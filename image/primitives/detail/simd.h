// Vectors of bytes, words and floats, as wide as the instruction set that this is compiled for.
//
// Included only by sources that are compiled once per instruction set, which say in KELMORA_VARIANT which
// one it is. Everything stands in a namespace of that name: a function compiled for a newer processor must
// never be picked by the linker for an older one. For the same reason these sources include nothing whose
// inline functions others use as well.
//
// Arithmetic is the compiler's own (+, -, *, &, |, <<, >> on vector types). What it has no operator for
// stands below. Widening and packing work within 16-byte lanes: the two orders cancel out.

#pragma once

#if !defined(KELMORA_VARIANT)
#error "compile this once per instruction set, with KELMORA_VARIANT"
#endif

#include <stddef.h>
#include <stdint.h>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#define KELMORA_INLINE [[gnu::always_inline]] static inline
#define KELMORA_METHOD [[gnu::always_inline]] inline

namespace kelmora::KELMORA_VARIANT {

#if defined(__AVX512BW__)
inline constexpr int kVectorBytes = 64;
#elif defined(__AVX2__)
inline constexpr int kVectorBytes = 32;
#else
inline constexpr int kVectorBytes = 16;
#endif

typedef uint8_t U8 __attribute__((vector_size(kVectorBytes), may_alias));
typedef int16_t I16 __attribute__((vector_size(kVectorBytes), may_alias));
typedef uint16_t U16 __attribute__((vector_size(kVectorBytes), may_alias));
typedef int32_t I32 __attribute__((vector_size(kVectorBytes), may_alias));
typedef uint32_t U32 __attribute__((vector_size(kVectorBytes), may_alias));
typedef float F32 __attribute__((vector_size(kVectorBytes), may_alias));
typedef double F64 __attribute__((vector_size(kVectorBytes), may_alias));

inline constexpr int kPixels = kVectorBytes / 4; ///< four-byte pixels in a vector

template <bool choice, class Yes, class No>
struct Conditional {
    using type = Yes;
};

template <class Yes, class No>
struct Conditional<false, Yes, No> {
    using type = No;
};

template <class V>
KELMORA_INLINE V Load(const void* from)
{
    V v;
    __builtin_memcpy(&v, from, sizeof(V));
    return v;
}

template <class V>
KELMORA_INLINE void Store(void* to, V v)
{
    __builtin_memcpy(to, &v, sizeof(V));
}

/// The first `bytes` bytes, 0 to sizeof(V), and zeros behind them; nothing further is read.
template <class V>
KELMORA_INLINE V LoadPart(const void* from, int bytes)
{
    V v = {};
    __builtin_memcpy(&v, from, static_cast<size_t>(bytes));
    return v;
}

template <class V>
KELMORA_INLINE void StorePart(void* to, V v, int bytes)
{
    __builtin_memcpy(to, &v, static_cast<size_t>(bytes));
}

/// Rows from this length on belong to float pictures that no cache holds beside their sources.
inline constexpr ptrdiff_t kStreamedRowBytes = 1280 * 16;

KELMORA_INLINE bool CanStream(const void* row, ptrdiff_t bytes)
{
    return bytes >= kStreamedRowBytes && reinterpret_cast<uintptr_t>(row) % kVectorBytes == 0;
}

#if defined(__AVX512BW__)

#define KELMORA_BY_WIDTH(sse, avx, avx512) avx512
#define KELMORA_VEC __m512i
#define KELMORA_VECF __m512

#elif defined(__AVX2__)

#define KELMORA_BY_WIDTH(sse, avx, avx512) avx
#define KELMORA_VEC __m256i
#define KELMORA_VECF __m256

#elif defined(__SSE2__)

#define KELMORA_BY_WIDTH(sse, avx, avx512) sse
#define KELMORA_VEC __m128i
#define KELMORA_VECF __m128

#endif

#if defined(KELMORA_VEC)

/// To an aligned address past the caches: memory is not read first only to be overwritten. EndStream follows.
KELMORA_INLINE void Stream(void* to, F32 v)
{
    KELMORA_BY_WIDTH(_mm_stream_ps, _mm256_stream_ps, _mm512_stream_ps)
    (static_cast<float*>(to), (KELMORA_VECF)v);
}

/// Lets other threads see what was streamed before what is stored next.
KELMORA_INLINE void EndStream()
{
    _mm_sfence();
}

KELMORA_INLINE I16 WidenLow(U8 v)
{
    return (I16)KELMORA_BY_WIDTH(_mm_unpacklo_epi8, _mm256_unpacklo_epi8,
                                 _mm512_unpacklo_epi8)((KELMORA_VEC)v, (KELMORA_VEC)U8{});
}

KELMORA_INLINE I16 WidenHigh(U8 v)
{
    return (I16)KELMORA_BY_WIDTH(_mm_unpackhi_epi8, _mm256_unpackhi_epi8,
                                 _mm512_unpackhi_epi8)((KELMORA_VEC)v, (KELMORA_VEC)U8{});
}

/// Bytes as the high halves of words: v * 256.
KELMORA_INLINE U16 RaiseLow(U8 v)
{
    return (U16)KELMORA_BY_WIDTH(_mm_unpacklo_epi8, _mm256_unpacklo_epi8,
                                 _mm512_unpacklo_epi8)((KELMORA_VEC)U8{}, (KELMORA_VEC)v);
}

KELMORA_INLINE U16 RaiseHigh(U8 v)
{
    return (U16)KELMORA_BY_WIDTH(_mm_unpackhi_epi8, _mm256_unpackhi_epi8,
                                 _mm512_unpackhi_epi8)((KELMORA_VEC)U8{}, (KELMORA_VEC)v);
}

KELMORA_INLINE I32 WidenLow(I16 v)
{
    const I16 sign = v >> 15;
    return (I32)KELMORA_BY_WIDTH(_mm_unpacklo_epi16, _mm256_unpacklo_epi16,
                                 _mm512_unpacklo_epi16)((KELMORA_VEC)v, (KELMORA_VEC)sign);
}

KELMORA_INLINE I32 WidenHigh(I16 v)
{
    const I16 sign = v >> 15;
    return (I32)KELMORA_BY_WIDTH(_mm_unpackhi_epi16, _mm256_unpackhi_epi16,
                                 _mm512_unpackhi_epi16)((KELMORA_VEC)v, (KELMORA_VEC)sign);
}

/// Undoes WidenLow and WidenHigh, saturating.
KELMORA_INLINE I16 Pack(I32 low, I32 high)
{
    return (I16)KELMORA_BY_WIDTH(_mm_packs_epi32, _mm256_packs_epi32, _mm512_packs_epi32)((KELMORA_VEC)low,
                                                                                          (KELMORA_VEC)high);
}

/// Undoes WidenLow and WidenHigh, saturating to 0..255.
KELMORA_INLINE U8 Pack(I16 low, I16 high)
{
    return (U8)KELMORA_BY_WIDTH(_mm_packus_epi16, _mm256_packus_epi16,
                                _mm512_packus_epi16)((KELMORA_VEC)low, (KELMORA_VEC)high);
}

KELMORA_INLINE F32 ToFloat(I32 v)
{
    return (F32)KELMORA_BY_WIDTH(_mm_cvtepi32_ps, _mm256_cvtepi32_ps, _mm512_cvtepi32_ps)((KELMORA_VEC)v);
}

/// The smaller one; b where either is not a number.
KELMORA_INLINE F32 Least(F32 a, F32 b)
{
    return (F32)KELMORA_BY_WIDTH(_mm_min_ps, _mm256_min_ps, _mm512_min_ps)((KELMORA_VECF)a, (KELMORA_VECF)b);
}

/// The larger one; b where either is not a number.
KELMORA_INLINE F32 Most(F32 a, F32 b)
{
    return (F32)KELMORA_BY_WIDTH(_mm_max_ps, _mm256_max_ps, _mm512_max_ps)((KELMORA_VECF)a, (KELMORA_VECF)b);
}

/// To nearest, ties to even.
KELMORA_INLINE I32 Round(F32 v)
{
    return (I32)KELMORA_BY_WIDTH(_mm_cvtps_epi32, _mm256_cvtps_epi32, _mm512_cvtps_epi32)((KELMORA_VECF)v);
}

/// Toward zero.
KELMORA_INLINE I32 Truncate(F32 v)
{
    return (I32)KELMORA_BY_WIDTH(_mm_cvttps_epi32, _mm256_cvttps_epi32, _mm512_cvttps_epi32)((KELMORA_VECF)v);
}

/// Sums of 0 and more, exact, as doubles: two vectors, each with its half of every 16-byte lane.
struct Doubles {
    F64 low, high;
};

KELMORA_INLINE Doubles ToDouble(I32 v)
{
    // The bits of 2 to the power of 52, plus v, less 2 to the power of 52.
    const I32 top = I32{} + 0x43300000;
    const F64 two52 = F64{} + 4503599627370496.0;
    return {(F64)KELMORA_BY_WIDTH(_mm_unpacklo_epi32, _mm256_unpacklo_epi32,
                                  _mm512_unpacklo_epi32)((KELMORA_VEC)v, (KELMORA_VEC)top)
                - two52,
            (F64)KELMORA_BY_WIDTH(_mm_unpackhi_epi32, _mm256_unpackhi_epi32,
                                  _mm512_unpackhi_epi32)((KELMORA_VEC)v, (KELMORA_VEC)top)
                - two52};
}

/// To nearest, ties to even. Undoes the order of ToDouble.
KELMORA_INLINE I32 Round(Doubles v)
{
    // Where one unit is the last bit, an addition rounds; the low words are the integers.
    const F64 unit = F64{} + 6755399441055744.0;
    const KELMORA_VECF low = (KELMORA_VECF)(v.low + unit);
    const KELMORA_VECF high = (KELMORA_VECF)(v.high + unit);
    return (I32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps, _mm512_shuffle_ps)(low, high, 0x88);
}

/// The high halves of the elements as they stand. Undoes the order of ToDouble.
KELMORA_INLINE I32 HighHalves(Doubles v)
{
    return (I32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps,
                                 _mm512_shuffle_ps)((KELMORA_VECF)v.low, (KELMORA_VECF)v.high, 0xDD);
}

KELMORA_INLINE U8 Min(U8 a, U8 b)
{
    return (U8)KELMORA_BY_WIDTH(_mm_min_epu8, _mm256_min_epu8, _mm512_min_epu8)((KELMORA_VEC)a,
                                                                                (KELMORA_VEC)b);
}

/// The mean, halves up.
KELMORA_INLINE U8 Average(U8 a, U8 b)
{
    return (U8)KELMORA_BY_WIDTH(_mm_avg_epu8, _mm256_avg_epu8, _mm512_avg_epu8)((KELMORA_VEC)a,
                                                                                (KELMORA_VEC)b);
}

/// Bytes of both, one by one, within 16-byte lanes: of their first halves and of their second ones.
KELMORA_INLINE U8 InterleaveLow(U8 a, U8 b)
{
    return (U8)KELMORA_BY_WIDTH(_mm_unpacklo_epi8, _mm256_unpacklo_epi8,
                                _mm512_unpacklo_epi8)((KELMORA_VEC)a, (KELMORA_VEC)b);
}

KELMORA_INLINE U8 InterleaveHigh(U8 a, U8 b)
{
    return (U8)KELMORA_BY_WIDTH(_mm_unpackhi_epi8, _mm256_unpackhi_epi8,
                                _mm512_unpackhi_epi8)((KELMORA_VEC)a, (KELMORA_VEC)b);
}

/// Element `element` of every 16-byte lane, in all four places of the lane.
template <int element>
KELMORA_INLINE I32 Spread(I32 v)
{
#if defined(__AVX512BW__)
    return (I32)_mm512_shuffle_epi32((__m512i)v, static_cast<_MM_PERM_ENUM>(element * 0x55));
#elif defined(__AVX2__)
    return (I32)_mm256_shuffle_epi32((__m256i)v, element * 0x55);
#else
    return (I32)_mm_shuffle_epi32((__m128i)v, element * 0x55);
#endif
}

/// Words of both, one by one, within 16-byte lanes: of their first halves and of their second ones.
KELMORA_INLINE I16 InterleaveLow(I16 a, I16 b)
{
    return (I16)KELMORA_BY_WIDTH(_mm_unpacklo_epi16, _mm256_unpacklo_epi16,
                                 _mm512_unpacklo_epi16)((KELMORA_VEC)a, (KELMORA_VEC)b);
}

KELMORA_INLINE I16 InterleaveHigh(I16 a, I16 b)
{
    return (I16)KELMORA_BY_WIDTH(_mm_unpackhi_epi16, _mm256_unpackhi_epi16,
                                 _mm512_unpackhi_epi16)((KELMORA_VEC)a, (KELMORA_VEC)b);
}

KELMORA_INLINE U8 AddSaturated(U8 a, U8 b)
{
    return (U8)KELMORA_BY_WIDTH(_mm_adds_epu8, _mm256_adds_epu8, _mm512_adds_epu8)((KELMORA_VEC)a,
                                                                                   (KELMORA_VEC)b);
}

/// (a * b) >> 16 of unsigned words.
KELMORA_INLINE U16 MulHigh(U16 a, U16 b)
{
    return (U16)KELMORA_BY_WIDTH(_mm_mulhi_epu16, _mm256_mulhi_epu16, _mm512_mulhi_epu16)((KELMORA_VEC)a,
                                                                                          (KELMORA_VEC)b);
}

/// Per 32-bit element: the products of both pairs of words, added.
KELMORA_INLINE I32 MulAddPairs(I16 a, I16 b)
{
    return (I32)KELMORA_BY_WIDTH(_mm_madd_epi16, _mm256_madd_epi16, _mm512_madd_epi16)((KELMORA_VEC)a,
                                                                                       (KELMORA_VEC)b);
}

#if defined(__AVX2__)
/// Per word: the products of both pairs of bytes, unsigned by signed, added and saturated.
KELMORA_INLINE I16 MulAddBytes(U8 a, U8 b)
{
    return (I16)KELMORA_BY_WIDTH(_mm_maddubs_epi16, _mm256_maddubs_epi16,
                                 _mm512_maddubs_epi16)((KELMORA_VEC)a, (KELMORA_VEC)b);
}
#endif

/// Where a > b: all bits of the element.
KELMORA_INLINE I32 MaskGreater(I32 a, I32 b)
{
#if defined(__AVX512BW__)
    return (I32)_mm512_movm_epi32(_mm512_cmpgt_epi32_mask((__m512i)a, (__m512i)b));
#else
    return a > b;
#endif
}

/// Four or eight floats, as many as F64 has elements, as doubles.
KELMORA_INLINE F64 LoadFloatsAsDoubles(const void* from)
{
#if defined(__AVX512BW__)
    return (F64)_mm512_cvtps_pd(_mm256_loadu_ps(static_cast<const float*>(from)));
#elif defined(__AVX2__)
    return (F64)_mm256_cvtps_pd(_mm_loadu_ps(static_cast<const float*>(from)));
#else
    return (F64)_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(static_cast<const __m128i*>(from))));
#endif
}

/// As many 32-bit integers as F64 has elements, to nearest, ties to even.
KELMORA_INLINE void StoreRounded(int32_t* to, F64 v)
{
#if defined(__AVX512BW__)
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_cvtpd_epi32((__m512d)v));
#elif defined(__AVX2__)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_cvtpd_epi32((__m256d)v));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_cvtpd_epi32((__m128d)v));
#endif
}

#else // no vector instructions of ours: plain code, in the same order within 16 bytes

KELMORA_INLINE void Stream(void* to, F32 v)
{
    Store(to, v);
}

KELMORA_INLINE void EndStream() {}

template <class To, class From>
KELMORA_INLINE To ConvertEach(From v)
{
    return __builtin_convertvector(v, To);
}

KELMORA_INLINE I16 WidenLow(U8 v)
{
    I16 w;
    for (int i = 0; i < 8; ++i)
        w[i] = v[i];
    return w;
}

KELMORA_INLINE I16 WidenHigh(U8 v)
{
    I16 w;
    for (int i = 0; i < 8; ++i)
        w[i] = v[8 + i];
    return w;
}

KELMORA_INLINE U16 RaiseLow(U8 v)
{
    return (U16)WidenLow(v) << 8;
}

KELMORA_INLINE U16 RaiseHigh(U8 v)
{
    return (U16)WidenHigh(v) << 8;
}

KELMORA_INLINE I32 WidenLow(I16 v)
{
    return I32{v[0], v[1], v[2], v[3]};
}

KELMORA_INLINE I32 WidenHigh(I16 v)
{
    return I32{v[4], v[5], v[6], v[7]};
}

KELMORA_INLINE I16 Pack(I32 low, I32 high)
{
    I16 w;
    for (int i = 0; i < 8; ++i) {
        const int32_t e = i < 4 ? low[i] : high[i - 4];
        w[i] = static_cast<int16_t>(e < -32768 ? -32768 : e > 32767 ? 32767 : e);
    }
    return w;
}

KELMORA_INLINE U8 Pack(I16 low, I16 high)
{
    U8 w;
    for (int i = 0; i < 16; ++i) {
        const int e = i < 8 ? low[i] : high[i - 8];
        w[i] = static_cast<uint8_t>(e < 0 ? 0 : e > 255 ? 255 : e);
    }
    return w;
}

KELMORA_INLINE F32 ToFloat(I32 v)
{
    return ConvertEach<F32>(v);
}

KELMORA_INLINE I32 Truncate(F32 v)
{
    return ConvertEach<I32>(v);
}

KELMORA_INLINE F32 Least(F32 a, F32 b)
{
    return a < b ? a : b;
}

KELMORA_INLINE F32 Most(F32 a, F32 b)
{
    return a > b ? a : b;
}

KELMORA_INLINE I32 Round(F32 v)
{
    I32 w;
    for (int i = 0; i < 4; ++i)
        w[i] = static_cast<int32_t>(__builtin_lrintf(v[i]));
    return w;
}

struct Doubles {
    F64 low, high;
};

KELMORA_INLINE Doubles ToDouble(I32 v)
{
    return {F64{double(v[0]), double(v[1])}, F64{double(v[2]), double(v[3])}};
}

KELMORA_INLINE I32 Round(Doubles v)
{
    const auto round = [](double d) { return static_cast<int32_t>(__builtin_lrint(d)); };
    return I32{round(v.low[0]), round(v.low[1]), round(v.high[0]), round(v.high[1])};
}

KELMORA_INLINE I32 HighHalves(Doubles v)
{
    const I32 low = (I32)v.low, high = (I32)v.high;
    return I32{low[1], low[3], high[1], high[3]};
}

KELMORA_INLINE U8 Min(U8 a, U8 b)
{
    return a < b ? a : b;
}

KELMORA_INLINE U8 Average(U8 a, U8 b)
{
    return (a | b) - ((a ^ b) >> 1);
}

KELMORA_INLINE U8 InterleaveLow(U8 a, U8 b)
{
    U8 v;
    for (int i = 0; i < 16; ++i)
        v[i] = i % 2 ? b[i / 2] : a[i / 2];
    return v;
}

KELMORA_INLINE U8 InterleaveHigh(U8 a, U8 b)
{
    U8 v;
    for (int i = 0; i < 16; ++i)
        v[i] = i % 2 ? b[8 + i / 2] : a[8 + i / 2];
    return v;
}

template <int element>
KELMORA_INLINE I32 Spread(I32 v)
{
    return I32{} + v[element];
}

KELMORA_INLINE I16 InterleaveLow(I16 a, I16 b)
{
    return I16{a[0], b[0], a[1], b[1], a[2], b[2], a[3], b[3]};
}

KELMORA_INLINE I16 InterleaveHigh(I16 a, I16 b)
{
    return I16{a[4], b[4], a[5], b[5], a[6], b[6], a[7], b[7]};
}

KELMORA_INLINE U8 AddSaturated(U8 a, U8 b)
{
    const U8 sum = a + b;
    return sum | (U8)(sum < a);
}

KELMORA_INLINE U16 MulHigh(U16 a, U16 b)
{
    U16 w;
    for (int i = 0; i < 8; ++i)
        w[i] = static_cast<uint16_t>((static_cast<uint32_t>(a[i]) * b[i]) >> 16);
    return w;
}

KELMORA_INLINE I32 MulAddPairs(I16 a, I16 b)
{
    I32 w;
    for (int i = 0; i < 4; ++i)
        w[i] = a[2 * i] * b[2 * i] + a[2 * i + 1] * b[2 * i + 1];
    return w;
}

KELMORA_INLINE I32 MaskGreater(I32 a, I32 b)
{
    return a > b;
}

KELMORA_INLINE F64 LoadFloatsAsDoubles(const void* from)
{
    float f[2];
    __builtin_memcpy(f, from, sizeof f);
    return F64{f[0], f[1]};
}

KELMORA_INLINE void StoreRounded(int32_t* to, F64 v)
{
    for (int i = 0; i < 2; ++i)
        to[i] = static_cast<int32_t>(__builtin_lrint(v[i]));
}

#endif

/// The doubles, rounded to floats, to memory.
KELMORA_INLINE void StoreAsFloats(void* to, F64 v)
{
    typedef float Half __attribute__((vector_size(kVectorBytes / 2)));
    Store(to, __builtin_convertvector(v, Half));
}

// --- floats as doubles, and channels as planes ----------------------------------------------------------

/// The floats of a vector as doubles, its first half and its second.
struct WideFloats {
    F64 low, high;
};

typedef float HalfF32 __attribute__((vector_size(kVectorBytes / 2), may_alias));

#if defined(KELMORA_VEC)

KELMORA_INLINE WideFloats Widen(F32 v)
{
#if defined(__AVX512BW__)
    return {(F64)_mm512_cvtps_pd(_mm512_castps512_ps256((__m512)v)),
            (F64)_mm512_cvtps_pd(_mm512_extractf32x8_ps((__m512)v, 1))};
#elif defined(__AVX2__)
    return {(F64)_mm256_cvtps_pd(_mm256_castps256_ps128((__m256)v)),
            (F64)_mm256_cvtps_pd(_mm256_extractf128_ps((__m256)v, 1))};
#else
    return {(F64)_mm_cvtps_pd((__m128)v), (F64)_mm_cvtps_pd(_mm_movehl_ps((__m128)v, (__m128)v))};
#endif
}

KELMORA_INLINE F32 Narrow(WideFloats v)
{
#if defined(__AVX512BW__)
    return (F32)_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps((__m512d)v.low)),
                                   _mm512_cvtpd_ps((__m512d)v.high), 1);
#elif defined(__AVX2__)
    return (F32)_mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps((__m256d)v.low)),
                                     _mm256_cvtpd_ps((__m256d)v.high), 1);
#else
    return (F32)_mm_movelh_ps(_mm_cvtpd_ps((__m128d)v.low), _mm_cvtpd_ps((__m128d)v.high));
#endif
}

#else

KELMORA_INLINE WideFloats Widen(F32 v)
{
    return {F64{v[0], v[1]}, F64{v[2], v[3]}};
}

KELMORA_INLINE F32 Narrow(WideFloats v)
{
    return F32{static_cast<float>(v.low[0]), static_cast<float>(v.low[1]), static_cast<float>(v.high[0]),
               static_cast<float>(v.high[1])};
}

#endif

/// Four vectors of four-channel pixels become one vector per channel, and back: a 4 by 4 transposition
/// within each 16-byte lane, so the pixels of a plane stand in an order of their own.
KELMORA_INLINE void SplitChannels(F32 (&v)[4])
{
#if defined(KELMORA_VEC)
    const KELMORA_VECF v0 = (KELMORA_VECF)v[0], v1 = (KELMORA_VECF)v[1];
    const KELMORA_VECF v2 = (KELMORA_VECF)v[2], v3 = (KELMORA_VECF)v[3];
    const KELMORA_VECF a = KELMORA_BY_WIDTH(_mm_unpacklo_ps, _mm256_unpacklo_ps, _mm512_unpacklo_ps)(v0, v1);
    const KELMORA_VECF b = KELMORA_BY_WIDTH(_mm_unpackhi_ps, _mm256_unpackhi_ps, _mm512_unpackhi_ps)(v0, v1);
    const KELMORA_VECF c = KELMORA_BY_WIDTH(_mm_unpacklo_ps, _mm256_unpacklo_ps, _mm512_unpacklo_ps)(v2, v3);
    const KELMORA_VECF d = KELMORA_BY_WIDTH(_mm_unpackhi_ps, _mm256_unpackhi_ps, _mm512_unpackhi_ps)(v2, v3);
    v[0] = (F32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps, _mm512_shuffle_ps)(a, c, 0x44);
    v[1] = (F32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps, _mm512_shuffle_ps)(a, c, 0xEE);
    v[2] = (F32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps, _mm512_shuffle_ps)(b, d, 0x44);
    v[3] = (F32)KELMORA_BY_WIDTH(_mm_shuffle_ps, _mm256_shuffle_ps, _mm512_shuffle_ps)(b, d, 0xEE);
#else
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < i; ++j) {
            const float kept = v[i][j];
            v[i][j] = v[j][i];
            v[j][i] = kept;
        }
#endif
}

// --- other orders of four-byte pixels -------------------------------------------------------------------

template <int... i>
struct Indices {
};

template <int n, int... i>
struct MakeIndices : MakeIndices<n - 1, n - 1, i...> {
};

template <int... i>
struct MakeIndices<0, i...> {
    using type = Indices<i...>;
};

inline constexpr int kLanes = kVectorBytes / 16;

template <int... i>
KELMORA_INLINE U32 ToLaneOrder(U32 v, Indices<i...>)
{
    return __builtin_shufflevector(v, v, (i % 4 * kLanes + i / 4)...);
}

/// Widened twice, the pixels come out as four vectors in the order that they had here.
KELMORA_INLINE U32 ToLaneOrder(U32 v)
{
    return ToLaneOrder(v, typename MakeIndices<kPixels>::type{});
}

template <int... i>
KELMORA_INLINE U32 FromLaneOrder(U32 v, Indices<i...>)
{
    return __builtin_shufflevector(v, v, (i % kLanes * 4 + i / kLanes)...);
}

/// Undoes ToLaneOrder: four vectors, packed twice, come out in the order that they had.
KELMORA_INLINE U32 FromLaneOrder(U32 v)
{
    return FromLaneOrder(v, typename MakeIndices<kPixels>::type{});
}

// --- transposition of a square of four-byte pixels ------------------------------------------------------

template <int... i>
KELMORA_INLINE U32 InterleaveLow(U32 a, U32 b, Indices<i...>)
{
    return __builtin_shufflevector(a, b, (i / 2 + (i % 2) * kPixels)...);
}

template <int... i>
KELMORA_INLINE U32 InterleaveHigh(U32 a, U32 b, Indices<i...>)
{
    return __builtin_shufflevector(a, b, (kPixels / 2 + i / 2 + (i % 2) * kPixels)...);
}

/// rows[r] element c becomes rows[c] element r: log2 rounds of a perfect shuffle.
KELMORA_INLINE void Transpose(U32 (&rows)[kPixels])
{
    using All = typename MakeIndices<kPixels>::type;
    for (int round = 1; round < kPixels; round *= 2) {
        U32 shuffled[kPixels];
        for (int i = 0; i < kPixels / 2; ++i) {
            shuffled[2 * i] = InterleaveLow(rows[i], rows[i + kPixels / 2], All{});
            shuffled[2 * i + 1] = InterleaveHigh(rows[i], rows[i + kPixels / 2], All{});
        }
        for (int i = 0; i < kPixels; ++i)
            rows[i] = shuffled[i];
    }
}

} // namespace kelmora::KELMORA_VARIANT
