// Rows of byte operations, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/simd_bytes.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

/// Calls map(pixels) for the vectors of a row and stores what it gives.
template <class Map>
KELMORA_INLINE void MapRow(const uint8_t* src, uint8_t* dst, ptrdiff_t bytes, Map map)
{
    ForVectors(
        bytes, [=](ptrdiff_t at) { Store(dst + at, map(Load<U32>(src + at))); },
        [=](ptrdiff_t at, int count) { StorePart(dst + at, map(LoadPart<U32>(src + at, count)), count); });
}

// --- products -------------------------------------------------------------------------------------------

void PremultiplyRow(const uint8_t* src, uint8_t* dst, int pixels)
{
    MapRow(
        src, dst, static_cast<ptrdiff_t>(pixels) * 4, [](U32 v) __attribute__((always_inline)) {
            // Alpha goes by 255, that is unchanged.
            const U16 alpha = InBothWords(v >> 24);
            return Whole(Scaled(Halves(v | 0xFF000000u), alpha, alpha));
        });
}

void ScaleBytes(const ScaleRow& row)
{
    uint32_t constants;
    __builtin_memcpy(&constants, row.constants, sizeof constants);
    const ByteHalves by = Halves(U32{} + constants);
    MapRow(
        row.values, row.values, row.count, [=](U32 v) __attribute__((always_inline)) {
            return Whole(Scaled(Halves(v), by.even, by.odd));
        });
}

KELMORA_INLINE U8 AverageToEven(U8 a, U8 b)
{
    const U8 up = Average(a, b);
    return up - ((a ^ b) & up & 1);
}

void AverageRow(const uint8_t* src, uint8_t* dst, int count)
{
    ForVectors(
        count, [=](ptrdiff_t at) { Store(dst + at, AverageToEven(Load<U8>(src + at), Load<U8>(dst + at))); },
        [=](ptrdiff_t at, int rest) {
            StorePart(dst + at, AverageToEven(LoadPart<U8>(src + at, rest), LoadPart<U8>(dst + at, rest)),
                      rest);
        });
}

// --- channels -------------------------------------------------------------------------------------------

void ReverseRow(const uint8_t* src, uint8_t* dst, int pixels)
{
    MapRow(
        src, dst, static_cast<ptrdiff_t>(pixels) * 4,
        [](U32 v) __attribute__((always_inline)) { return Reversed(v); });
}

/// Calls whole(at) for vectors of pixels, by their first bytes, and one(x) for the pixels that are left: the last one
/// among them, of which only the first byte counts.
template <class Whole, class One>
KELMORA_INLINE void ForChannel(int pixels, Whole whole, One one)
{
    int x = 0;
    for (; x + kPixels < pixels; x += kPixels)
        whole(static_cast<ptrdiff_t>(x) * 4);
    for (; x < pixels; ++x)
        one(static_cast<ptrdiff_t>(x) * 4);
}

KELMORA_INLINE void StoreFirstBytes(uint8_t* to, U32 v)
{
    Store(to, (Load<U32>(to) & 0xFFFFFF00u) | v);
}

void CopyChannel(const uint8_t* src, uint8_t* dst, int pixels)
{
    ForChannel(
        pixels, [=](ptrdiff_t at) { StoreFirstBytes(dst + at, Load<U32>(src + at) & 0xFFu); },
        [=](ptrdiff_t at) { dst[at] = src[at]; });
}

void SetChannel(uint8_t value, uint8_t* dst, int pixels)
{
    const U32 values = U32{} + value;
    ForChannel(
        pixels, [=](ptrdiff_t at) { StoreFirstBytes(dst + at, values); },
        [=](ptrdiff_t at) { dst[at] = value; });
}

void ExtractChannel(const uint8_t* src, uint8_t* dst, int pixels)
{
    int x = 0;
    for (; x + kVectorBytes < pixels; x += kVectorBytes) {
        const uint8_t* const from = src + static_cast<ptrdiff_t>(x) * 4;
        const auto bytes = [=](int vector) __attribute__((always_inline))
        {
            return (I32)(Load<U32>(from + vector * kVectorBytes) & 0xFFu);
        };
        const U8 v = Pack(Pack(bytes(0), bytes(1)), Pack(bytes(2), bytes(3)));
        Store(dst + x, FromLaneOrder((U32)v));
    }
    for (; x < pixels; ++x)
        dst[x] = src[static_cast<ptrdiff_t>(x) * 4];
}

// --- boxes ----------------------------------------------------------------------------------------------

typedef uint64_t Quads __attribute__((vector_size(kVectorBytes), may_alias));

template <int... i>
KELMORA_INLINE Quads ToHalves(Quads v, Indices<i...>)
{
    return __builtin_shufflevector(v, v, (i % 2 * kLanes + i / 2)...);
}

template <int... i>
KELMORA_INLINE Quads FromHalves(Quads v, Indices<i...>)
{
    return __builtin_shufflevector(v, v, (i % kLanes * 2 + i / kLanes)...);
}

using EachQuad = MakeIndices<kVectorBytes / 8>::type;

/// (sum + bias) * factor >> (16 + shift) of the values of (2 * reach + 1) squared.
template <int reach, int bias, int factor, int shift>
struct Box {
    static constexpr int kValues = 512;

    uint16_t columns[kValues + 2 * reach] = {};

    /// The sums of `count` columns from that of `src` on; whole vectors lie in the picture.
    KELMORA_METHOD void SumColumns(const uint8_t* src, ptrdiff_t step, int count)
    {
        int i = 0;
        for (; i + kVectorBytes <= count; i += kVectorBytes) {
            I16 low = {}, high = {};
            for (int r = -reach; r <= reach; ++r) {
                const U8 v = (U8)ToHalves(Load<Quads>(src + i + r * step), EachQuad{});
                low += WidenLow(v);
                high += WidenHigh(v);
            }
            Store(columns + i, low);
            Store(columns + i + kVectorBytes / 2, high);
        }
        for (; i < count; ++i) {
            int sum = 0;
            for (int r = -reach; r <= reach; ++r)
                sum += src[i + r * step];
            columns[i] = static_cast<uint16_t>(sum);
        }
    }

    /// Half a vector of means, as words.
    KELMORA_METHOD I16 Means(int first) const
    {
        U16 sum = U16{} + static_cast<uint16_t>(bias);
        for (int c = 0; c <= 2 * reach; ++c)
            sum += Load<U16>(columns + first + c);
        return (I16)(MulHigh(sum, U16{} + static_cast<uint16_t>(factor)) >> shift);
    }

    KELMORA_METHOD Quads Vector(int first) const
    {
        return FromHalves((Quads)Pack(Means(first), Means(first + kVectorBytes / 2)), EachQuad{});
    }
};

template <class B, int reach>
KELMORA_INLINE void BoxAverage(const BoxRow& row)
{
    B box;
    for (int first = 0; first < row.width; first += B::kValues) {
        const int count = row.width - first < B::kValues ? row.width - first : B::kValues;
        box.SumColumns(row.src + first - reach, row.srcStep, count + 2 * reach);
        uint8_t* const to = row.dst + first;
        ForVectors(
            count, [&](ptrdiff_t at) { Store(to + at, box.Vector(static_cast<int>(at))); },
            [&](ptrdiff_t at, int rest) { StorePart(to + at, box.Vector(static_cast<int>(at)), rest); });
    }
}

void Box3x3(const BoxRow& row)
{
    BoxAverage<Box<1, 5, 455 << 4, 0>, 1>(row);
}

void Box5x5(const BoxRow& row)
{
    BoxAverage<Box<2, 13, 10485, 2>, 2>(row);
}

// --- tint -----------------------------------------------------------------------------------------------

/// Two words as every element.
KELMORA_INLINE I16 Words(int low, int high)
{
    return (I16)(U32{} + (static_cast<uint32_t>(low & 0xFFFF) | static_cast<uint32_t>(high) << 16));
}

/// `luma` times `scale` toward zero, in the lowest byte; what lies above it is no part of the result.
KELMORA_INLINE U32 TintLevel(const Doubles& luma, double scale)
{
    // 1.5 * 2 to the power of 20: a sum's high half ends with the units, its low half holds the fraction.
    constexpr double unit = 1572864.0;
    return (U32)HighHalves({luma.low * scale + unit, luma.high * scale + unit});
}

template <int firstColour>
KELMORA_INLINE void TintPixels(const TintRow& given)
{
    const TintRow row = given; // stores could change it for all that the compiler knows
    const I16 even = Words(row.luma[0], row.luma[2]), odd = Words(row.luma[1], row.luma[3]);
    const double* const scale = row.scale + firstColour;
    const double first = scale[0], second = scale[1], third = scale[2];
    MapRow(
        row.src, row.dst, static_cast<ptrdiff_t>(row.pixels) * 4, [=](U32 v) __attribute__((always_inline)) {
            const ByteHalves bytes = Halves(v);
            const Doubles luma =
                ToDouble(MulAddPairs((I16)bytes.even, even) + MulAddPairs((I16)bytes.odd, odd));
            const U32 colours = (TintLevel(luma, first) & 0xFFu) | (TintLevel(luma, second) & 0xFFu) << 8
                | (TintLevel(luma, third) & 0xFFu) << 16;
            return colours << (8 * firstColour);
        });
}

void TintAlphaLast(const TintRow& row)
{
    TintPixels<0>(row);
}

void TintAlphaFirst(const TintRow& row)
{
    TintPixels<1>(row);
}

// --- YCbCr 4:2:2 ----------------------------------------------------------------------------------------
//
// The weights of ycbcr.cpp are wider than words: each is a product of 2, 4 or 8 and one that fits, and a rest.

/// Of the two pixels in an element, as words side by side.
KELMORA_INLINE I16 ChannelOf(I32 light0, I32 light1, I32 chroma)
{
    return (I16)(((U32)(light0 + chroma) >> 16) | ((U32)(light1 + chroma) & 0xFFFF0000u));
}

/// Both vectors' four-byte pixels, of which the fourth byte is nothing, as three bytes each. The second vector's
/// pixels follow the first one's in each 16 bytes. A few bytes behind the last pixel may be overwritten.
KELMORA_INLINE void StoreTriples(uint8_t* dst, U32 first, U32 second);

#if defined(__AVX2__)

/// The pixels of each 16 bytes as 12 bytes at their begin.
KELMORA_INLINE KELMORA_VEC CloseUp(U32 v)
{
    const __m128i places = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
#if defined(__AVX512BW__)
    return _mm512_shuffle_epi8((__m512i)v, _mm512_broadcast_i32x4(places));
#else
    return _mm256_shuffle_epi8((__m256i)v, _mm256_broadcastsi128_si256(places));
#endif
}

#endif

#if defined(__AVX512BW__)

KELMORA_INLINE void StoreTriples(uint8_t* dst, U32 first, U32 second)
{
    const __m512i a = CloseUp(first), b = CloseUp(second);
    const __m512i begin = _mm512_setr_epi32(0, 1, 2, 16, 17, 18, 4, 5, 6, 20, 21, 22, 8, 9, 10, 24);
    const __m512i end = _mm512_setr_epi32(25, 26, 12, 13, 14, 28, 29, 30, 0, 0, 0, 0, 0, 0, 0, 0);
    _mm512_storeu_si512(dst, _mm512_permutex2var_epi32(a, begin, b));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 64),
                        _mm512_castsi512_si256(_mm512_permutex2var_epi32(a, end, b)));
}

#elif defined(__AVX2__)

KELMORA_INLINE void StoreTriples(uint8_t* dst, U32 first, U32 second)
{
    const __m256i a = CloseUp(first), b = CloseUp(second);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm256_castsi256_si128(a));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 12), _mm256_castsi256_si128(b));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 24), _mm256_extracti128_si256(a, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 36), _mm256_extracti128_si256(b, 1));
}

#else

typedef uint64_t U64 __attribute__((vector_size(kVectorBytes), may_alias));

KELMORA_INLINE void StoreTriples(uint8_t* dst, U32 first, U32 second)
{
    const U32 vectors[] = {first, second};
    for (const U32 v : vectors) {
        const U64 pixels = (U64)v;
        const U64 closed = (pixels & 0xFFFFFFu) | ((pixels >> 8) & 0xFFFFFF000000u);
        for (int i = 0; i < 2; ++i, dst += 6) {
            const uint64_t two = closed[i];
            __builtin_memcpy(dst, &two, sizeof two);
        }
    }
}

#endif

/// The pixels of one vector.
KELMORA_INLINE void PairsToRgb(U32 v, uint8_t* dst)
{
    const ByteHalves halves = Halves(v);
    const I16 light = (I16)halves.even, chroma = (I16)halves.odd;
    const I32 light0 = MulAddPairs(light, Words(19071, 0)) << 2;
    const I32 light1 = MulAddPairs(light, Words(0, 19071)) << 2;
    const I32 forRed =
        (MulAddPairs(chroma, Words(0, 26148)) << 2) + MulAddPairs(chroma, Words(0, 3)) - 14608761;
    const I32 forGreen =
        MulAddPairs(chroma, Words(-25690, -32768)) + MulAddPairs(chroma, Words(0, -20513)) + 8887730;
    const I32 forBlue =
        (MulAddPairs(chroma, Words(16523, 0)) << 3) + MulAddPairs(chroma, Words(2, 0)) - 18140365;
    // Eight reds, then eight blues in each 16 bytes; below them eight greens, then nothing.
    const U8 redBlue = Pack(ChannelOf(light0, light1, forRed), ChannelOf(light0, light1, forBlue));
    const U8 green = Pack(ChannelOf(light0, light1, forGreen), I16{});
    const I16 redGreen = (I16)InterleaveLow(redBlue, green), blue = (I16)InterleaveHigh(redBlue, green);
    StoreTriples(dst, (U32)InterleaveLow(redGreen, blue), (U32)InterleaveHigh(redGreen, blue));
}

int YCbCr422ToRgb(const uint8_t* src, uint8_t* dst, int pixels)
{
    constexpr int block = kVectorBytes / 2;
    constexpr int overwritten = 2; // pixels behind a block
    int x = 0;
    for (; x + block + overwritten <= pixels; x += block, dst += 3 * block)
        PairsToRgb(Load<U32>(src + static_cast<ptrdiff_t>(x) * 2), dst);
    return x;
}

} // namespace

extern const ByteKernels kByteKernels;
const ByteKernels kByteKernels = {PremultiplyRow, ScaleBytes,     AverageRow,     ReverseRow,
                                  CopyChannel,    ExtractChannel, SetChannel,     Box3x3,
                                  Box5x5,         TintAlphaLast,  TintAlphaFirst, YCbCr422ToRgb};

} // namespace kelmora::KELMORA_VARIANT
