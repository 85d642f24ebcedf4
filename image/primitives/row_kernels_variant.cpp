// Rows of arithmetic, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd_bytes.h"
#include "image/primitives/row_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- twist ----------------------------------------------------------------------------------------------

/// Single precision, every product and sum rounded, from left to right.
KELMORA_INLINE F32 TwistValue(F32 c0, F32 c1, F32 c2, const float* row)
{
    return c0 * row[0] + c1 * row[1] + c2 * row[2] + row[3];
}

/// Not-a-number gives 0.
KELMORA_INLINE U32 ToByte(F32 v)
{
    return (U32)Round(Least(Most(v, F32{}), F32{} + 255.0f));
}

KELMORA_INLINE U32 TwistPixels(U32 src, U32 dst, const float (*twist)[4])
{
    const F32 c0 = ToFloat((I32)(src & 0xFFu));
    const F32 c1 = ToFloat((I32)((src >> 8) & 0xFFu));
    const F32 c2 = ToFloat((I32)((src >> 16) & 0xFFu));
    return ToByte(TwistValue(c0, c1, c2, twist[0])) | ToByte(TwistValue(c0, c1, c2, twist[1])) << 8
        | ToByte(TwistValue(c0, c1, c2, twist[2])) << 16 | (dst & 0xFF000000u);
}

/// Stores could change the twist for all that the compiler knows.
struct OwnTwist {
    float rows[3][4];

    KELMORA_METHOD explicit OwnTwist(const float (*twist)[4]) { __builtin_memcpy(rows, twist, sizeof rows); }
};

void TwistBytes(const TwistRow& row)
{
    const OwnTwist twist(row.twist);
    const auto* src = static_cast<const uint8_t*>(row.src);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.width) * 4 - 1;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(dst + at, TwistPixels(Load<U32>(src + at), Load<U32>(dst + at), twist.rows));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(dst + at,
                  TwistPixels(LoadPart<U32>(src + at, rest), LoadPart<U32>(dst + at, rest), twist.rows),
                  rest);
}

/// kPixels pixels: four vectors of interleaved channels, of which the fourth comes out as it went in.
KELMORA_INLINE void TwistPixels(F32 (&v)[4], const float (*twist)[4])
{
    SplitChannels(v);
    const F32 c0 = v[0], c1 = v[1], c2 = v[2];
    for (int r = 0; r < 3; ++r)
        v[r] = TwistValue(c0, c1, c2, twist[r]);
    SplitChannels(v); // the transposition undoes itself
}

template <bool inPlace>
KELMORA_INLINE void TwistFloats(const uint8_t* src, uint8_t* dst, ptrdiff_t bytes, const float (*twist)[4])
{
    U32 fourth = {};
    for (int i = 3; i < kPixels; i += 4)
        fourth[i] = 0xFFFFFFFFu;
    constexpr int strip = 4 * kVectorBytes;
    ptrdiff_t at = 0;
    for (; at + strip <= bytes; at += strip) {
        F32 v[4];
        for (int i = 0; i < 4; ++i)
            v[i] = Load<F32>(src + at + i * kVectorBytes);
        TwistPixels(v, twist);
        for (int i = 0; i < 4; ++i) {
            uint8_t* to = dst + at + i * kVectorBytes;
            if constexpr (inPlace)
                Store(to, v[i]);
            else
                Store(to, ((U32)v[i] & ~fourth) | (Load<U32>(to) & fourth));
        }
    }
    if (at < bytes) {
        const auto rest = static_cast<size_t>(bytes - at);
        F32 v[4] = {}, old[4] = {};
        __builtin_memcpy(v, src + at, rest);
        __builtin_memcpy(old, dst + at, rest);
        TwistPixels(v, twist);
        for (int i = 0; i < 4; ++i)
            old[i] = (F32)(((U32)v[i] & ~fourth) | ((U32)old[i] & fourth));
        __builtin_memcpy(dst + at, old, rest);
    }
}

void TwistFloats(const TwistRow& row)
{
    const OwnTwist twist(row.twist);
    const auto* src = static_cast<const uint8_t*>(row.src);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.width) * 16 - 4;
    if (src == dst)
        TwistFloats<true>(dst, dst, bytes, twist.rows);
    else
        TwistFloats<false>(src, dst, bytes, twist.rows);
}

// --- sharpen --------------------------------------------------------------------------------------------

/// A half of the sums and the centres: x = 17 * centre - sum.
KELMORA_INLINE I16 Sharpened(I16 centre, I16 sum)
{
    const I16 x = centre * 17 - sum;
    return (x + ((x & 8) >> 3) + 3) >> 3;
}

/// `at` loads a vector at an offset in bytes from a row's pixel.
template <class At>
KELMORA_INLINE U8 SharpenPixels(const SharpenRow& row, At at)
{
    I16 low = {}, high = {};
    U8 centre = {};
    const uint8_t* const rows[3] = {row.above, row.middle, row.below};
    for (int r = 0; r < 3; ++r)
        for (int x = -4; x <= 4; x += 4) {
            const U8 v = at(rows[r], x);
            low += WidenLow(v);
            high += WidenHigh(v);
            if (r == 1 && x == 0)
                centre = v;
        }
    return Pack(Sharpened(WidenLow(centre), low), Sharpened(WidenHigh(centre), high));
}

KELMORA_INLINE U32 MergeFourth(U8 colours, U32 dst)
{
    return ((U32)colours & 0x00FFFFFFu) | (dst & 0xFF000000u);
}

void SharpenBytes(const SharpenRow& row)
{
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.width) * 4 - 1;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
        const U8 v = SharpenPixels(
            row, [at](const uint8_t* from, int x) __attribute__((always_inline)) {
                return Load<U8>(from + at + x);
            });
        Store(row.dst + at, MergeFourth(v, Load<U32>(row.dst + at)));
    }
    if (const int rest = static_cast<int>(bytes - at); rest > 0) {
        const U8 v = SharpenPixels(
            row, [ at, rest ](const uint8_t* from, int x) __attribute__((always_inline)) {
                return LoadPart<U8>(from + at + x, rest);
            });
        StorePart(row.dst + at, MergeFourth(v, LoadPart<U32>(row.dst + at, rest)), rest);
    }
}

// --- blend ----------------------------------------------------------------------------------------------

/// (first * firstWeight + second * secondWeight) / 255 of half a vector.
template <bool saturates>
KELMORA_INLINE I16 BlendWords(I16 first, I16 second, U16 firstWeight, U16 secondWeight)
{
    const U16 p = (U16)first * firstWeight;
    const U16 sum = p + (U16)second * secondWeight;
    // Toward zero, for sums up to 65279.
    const U16 quotient = (sum + 1 + (sum >> 8)) >> 8;
    if constexpr (!saturates)
        return (I16)quotient;
    const U16 over = (U16)(sum < p) | (U16)(sum > 65279);
    return (I16)((quotient | over) & 255);
}

template <bool saturates>
KELMORA_INLINE U8 BlendVector(U8 first, U8 second, U16 firstWeight, U16 secondWeight)
{
    return Pack(BlendWords<saturates>(WidenLow(first), WidenLow(second), firstWeight, secondWeight),
                BlendWords<saturates>(WidenHigh(first), WidenHigh(second), firstWeight, secondWeight));
}

template <bool saturates>
KELMORA_INLINE void BlendBytes(const BlendRow<int>& row)
{
    const U16 firstWeight = U16{} + static_cast<uint16_t>(row.firstWeight);
    const U16 secondWeight = U16{} + static_cast<uint16_t>(row.secondWeight);
    const auto* first = static_cast<const uint8_t*>(row.first);
    const auto* second = static_cast<const uint8_t*>(row.second);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const ptrdiff_t bytes = row.values;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(dst + at,
              BlendVector<saturates>(Load<U8>(first + at), Load<U8>(second + at), firstWeight, secondWeight));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(dst + at,
                  BlendVector<saturates>(LoadPart<U8>(first + at, rest), LoadPart<U8>(second + at, rest),
                                         firstWeight, secondWeight),
                  rest);
}

void BlendBytes(const BlendRow<int>& row)
{
    if (row.saturates)
        BlendBytes<true>(row);
    else
        BlendBytes<false>(row);
}

template <bool saturates>
KELMORA_INLINE F64 BlendDoubles(F64 first, F64 second, double firstWeight, double secondWeight)
{
    const F64 v = first * firstWeight + second * secondWeight;
    if constexpr (saturates)
        return v > 1.0 ? F64{} + 1.0 : v;
    return v;
}

template <bool saturates>
KELMORA_INLINE void BlendFloats(const BlendRow<double>& row)
{
    const double firstWeight = row.firstWeight, secondWeight = row.secondWeight;
    const auto* first = static_cast<const uint8_t*>(row.first);
    const auto* second = static_cast<const uint8_t*>(row.second);
    auto* dst = static_cast<uint8_t*>(row.dst);
    constexpr int half = kVectorBytes / 2;
    const auto blend = [=](const uint8_t* a, const uint8_t* b) __attribute__((always_inline))
    {
        return BlendDoubles<saturates>(LoadFloatsAsDoubles(a), LoadFloatsAsDoubles(b), firstWeight,
                                       secondWeight);
    };
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.values) * 4;
    ptrdiff_t at = 0;
    for (; at + half <= bytes; at += half)
        StoreAsFloats(dst + at, blend(first + at, second + at));
    if (const int rest = static_cast<int>(bytes - at); rest > 0) {
        const F32 a = LoadPart<F32>(first + at, rest), b = LoadPart<F32>(second + at, rest);
        uint8_t from[2][kVectorBytes], to[half];
        Store(from[0], a);
        Store(from[1], b);
        StoreAsFloats(to, blend(from[0], from[1]));
        __builtin_memcpy(dst + at, to, static_cast<size_t>(rest));
    }
}

void BlendFloats(const BlendRow<double>& row)
{
    if (row.saturates)
        BlendFloats<true>(row);
    else
        BlendFloats<false>(row);
}

// --- mix ------------------------------------------------------------------------------------------------

KELMORA_INLINE U16 MulScaled(I16 value, U16 weight)
{
    const U16 product = (U16)value * weight;
    return (product + (product >> 8) + 1) >> 8;
}

KELMORA_INLINE U8 MulScaled(U8 v, U16 weight)
{
    return Pack((I16)MulScaled(WidenLow(v), weight), (I16)MulScaled(WidenHigh(v), weight));
}

KELMORA_INLINE U8 MixVector(U8 first, U8 second, U16 firstWeight, U16 secondWeight)
{
    return AddSaturated(MulScaled(first, firstWeight), MulScaled(second, secondWeight));
}

void MixBytes(const MixRow<int>& row)
{
    const auto* first = static_cast<const uint8_t*>(row.first);
    const auto* second = static_cast<const uint8_t*>(row.second);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const U16 a = U16{} + static_cast<uint16_t>(row.firstWeight);
    const U16 b = U16{} + static_cast<uint16_t>(row.secondWeight);
    ForVectors(
        row.values,
        [=](ptrdiff_t at) { Store(dst + at, MixVector(Load<U8>(first + at), Load<U8>(second + at), a, b)); },
        [=](ptrdiff_t at, int count) {
            StorePart(dst + at,
                      MixVector(LoadPart<U8>(first + at, count), LoadPart<U8>(second + at, count), a, b),
                      count);
        });
}

void MixFloats(const MixRow<float>& row)
{
    const auto* first = static_cast<const uint8_t*>(row.first);
    const auto* second = static_cast<const uint8_t*>(row.second);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const float a = row.firstWeight, b = row.secondWeight;
    ForVectors(
        static_cast<ptrdiff_t>(row.values) * 4,
        [=](ptrdiff_t at) { Store(dst + at, Load<F32>(first + at) * a + Load<F32>(second + at) * b); },
        [=](ptrdiff_t at, int count) {
            StorePart(dst + at, LoadPart<F32>(first + at, count) * a + LoadPart<F32>(second + at, count) * b,
                      count);
        });
}

/// v / 2, ties to even.
KELMORA_INLINE U8 HalveByte(U8 v)
{
    const U8 floor = (U8)((U16)v >> 1) & 0x7F;
    return floor + (v & floor & 1);
}

void HalveBytes(const void* src, void* dst, int values)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    ForVectors(
        values, [=](ptrdiff_t at) { Store(to + at, HalveByte(Load<U8>(from + at))); },
        [=](ptrdiff_t at, int count) {
            StorePart(to + at, HalveByte(LoadPart<U8>(from + at, count)), count);
        });
}

void HalveFloats(const void* src, void* dst, int values)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    // As a sum with 0, of which a negative zero comes out positive.
    ForVectors(
        static_cast<ptrdiff_t>(values) * 4,
        [=](ptrdiff_t at) { Store(to + at, (Load<F32>(from + at) + 0.0f) * 0.5f); },
        [=](ptrdiff_t at, int count) {
            StorePart(to + at, (LoadPart<F32>(from + at, count) + 0.0f) * 0.5f, count);
        });
}

// --- over -----------------------------------------------------------------------------------------------

KELMORA_INLINE U32 AddSaturatedBytes(U32 a, U32 b)
{
    return (U32)AddSaturated((U8)a, (U8)b);
}

struct StraightBgra {
    KELMORA_INLINE U32 Over(U32 first, U32 second)
    {
        const U32 alpha = first >> 24, below = second >> 24;
        const U32 kept = 255u - alpha;
        // Alpha itself goes by 255, that is unchanged.
        const ByteHalves top = Scaled(Halves(first), InBothWords(alpha), (U16)(alpha | 255u << 16));
        const ByteHalves ground = Scaled(Halves(second), InBothWords(below), (U16)(below | 255u << 16));
        const ByteHalves rest = Scaled(ground, InBothWords(kept), InBothWords(kept));
        return Whole({(U16)(top.even + rest.even), (U16)(top.odd + rest.odd)});
    }
};

struct StraightArgb {
    KELMORA_INLINE U32 Over(U32 first, U32 second)
    {
        const U32 alpha = first & 0xFFu;
        const U32 share = (U32)By255((U16)((U16)(second & 0xFFu) * (U16)(255u - alpha)));
        const U16 top = InBothWords(alpha), ground = InBothWords(share);
        const ByteHalves a = Halves(first | 0xFFu), b = Halves(second | 0xFFu);
        return Whole({By255(a.even * top + b.even * ground), By255(a.odd * top + b.odd * ground)});
    }
};

template <bool alphaFirst>
struct Premultiplied {
    KELMORA_INLINE U32 Over(U32 first, U32 second)
    {
        const U16 kept = InBothWords(255u - (alphaFirst ? first & 0xFFu : first >> 24));
        return AddSaturatedBytes(first, Whole(Scaled(Halves(second), kept, kept)));
    }
};

template <class Op>
void OverPixels(const OverRow& row)
{
    const auto* first = static_cast<const uint8_t*>(row.first);
    const auto* second = static_cast<const uint8_t*>(row.second);
    auto* dst = static_cast<uint8_t*>(row.dst);
    ForVectors(
        static_cast<ptrdiff_t>(row.pixels) * 4,
        [=](ptrdiff_t at) { Store(dst + at, Op::Over(Load<U32>(first + at), Load<U32>(second + at))); },
        [=](ptrdiff_t at, int count) {
            StorePart(dst + at, Op::Over(LoadPart<U32>(first + at, count), LoadPart<U32>(second + at, count)),
                      count);
        });
}

} // namespace

extern const RowKernels kRowKernels;
const RowKernels kRowKernels = {TwistBytes,
                                TwistFloats,
                                SharpenBytes,
                                BlendBytes,
                                BlendFloats,
                                MixBytes,
                                MixFloats,
                                HalveBytes,
                                HalveFloats,
                                OverPixels<StraightBgra>,
                                OverPixels<Premultiplied<false>>,
                                OverPixels<StraightArgb>,
                                OverPixels<Premultiplied<true>>};

} // namespace kelmora::KELMORA_VARIANT
