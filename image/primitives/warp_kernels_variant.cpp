// The warps' loops, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/simd.h"
#include "image/primitives/warp_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

constexpr int kBlock = WarpKernels::kBlock;

// --- positions ------------------------------------------------------------------------------------------

typedef int64_t I64 __attribute__((vector_size(kVectorBytes), may_alias));

constexpr int kDoubles = kVectorBytes / 8;

constexpr double kSteps[8] = {0, 1, 2, 3, 4, 5, 6, 7};

KELMORA_INLINE F64 Columns(int first)
{
    return Load<F64>(kSteps) + static_cast<double>(first);
}

KELMORA_INLINE F64 Cut(F64 value, double low, double high)
{
    const F64 lowest = F64{} + low, highest = F64{} + high;
    value = value > lowest ? value : lowest; // what is no number becomes the lowest, too
    return value < highest ? value : highest;
}

/// Positions of as many pixels as F64 has elements, from column `first` on, times `scale`, a power of two, which
/// the results are rounded like those times 1.
class AffineLine {
public:
    static constexpr bool kCuts = false; ///< positions to the bounds

    KELMORA_METHOD AffineLine(const AffineRow& row, double scale)
        : m_x{row.x[0] * scale, row.x[1] * scale}, m_y{row.y[0] * scale, row.y[1] * scale}
    {
    }

    /// All bits per element that lies inside.
    KELMORA_METHOD I64 At(int first, F64& x, F64& y) const
    {
        const F64 column = Columns(first);
        x = column * m_x[0] + m_x[1];
        y = column * m_y[0] + m_y[1];
        return I64{} - 1;
    }

private:
    double m_x[2], m_y[2];
};

class PerspectiveLine {
public:
    static constexpr bool kCuts = false;

    KELMORA_METHOD PerspectiveLine(const PerspectiveRow& row, double scale)
        : m_u{row.u[0] * scale, row.u[1] * scale}, m_v{row.v[0] * scale, row.v[1] * scale}, m_w{row.w[0],
                                                                                                row.w[1]},
          m_left((row.src.bounds.left - kWarpSlack) * scale),
          m_right((row.src.bounds.right + kWarpSlack) * scale),
          m_top((row.src.bounds.top - kWarpSlack) * scale),
          m_bottom((row.src.bounds.bottom + kWarpSlack) * scale)
    {
    }

    KELMORA_METHOD I64 At(int first, F64& x, F64& y) const
    {
        const F64 column = Columns(first);
        const F64 q = 1.0 / (column * m_w[0] + m_w[1]);
        x = (column * m_u[0] + m_u[1]) * q;
        y = (column * m_v[0] + m_v[1]) * q;
        return (x >= F64{} + m_left) & (x <= F64{} + m_right) & (y >= F64{} + m_top)
            & (y <= F64{} + m_bottom);
    }

private:
    double m_u[2], m_v[2], m_w[2];
    double m_left, m_right, m_top, m_bottom;
};

/// Which pixels of a block lie inside: a bit each.
KELMORA_INLINE unsigned BitsOf(I64 mask)
{
#if defined(__AVX512BW__)
    return static_cast<unsigned>(_mm512_movepi64_mask((__m512i)mask));
#else
    unsigned bits = 0;
    for (int k = 0; k < kDoubles; ++k)
        bits |= mask[k] ? 1u << k : 0u;
    return bits;
#endif
}

KELMORA_INLINE F64 SquareRoot(F64 v)
{
#if defined(KELMORA_VEC)
    typedef KELMORA_BY_WIDTH(__m128d, __m256d, __m512d) Vector;
    return (F64)KELMORA_BY_WIDTH(_mm_sqrt_pd, _mm256_sqrt_pd, _mm512_sqrt_pd)((Vector)v);
#else
    for (int k = 0; k < kDoubles; ++k)
        v[k] = __builtin_sqrt(v[k]);
    return v;
#endif
}

/// Where the points of a quadrangle's edges come from that are nearest to the pixels of a ring, and what these points
/// weigh: their shares.
class RingLine {
public:
    static constexpr bool kCuts = true;

    KELMORA_METHOD RingLine(const WarpRing& ring, double scale) : m_ring(ring), m_scale(scale) {}

    /// All bits per element that has a share.
    KELMORA_METHOD I64 At(int first, F64& x, F64& y)
    {
        const F64 pixelX = Load<F64>(m_ring.x + first), pixelY = Load<F64>(m_ring.y + first);
        F64 borderX, borderY;
        const F64 share = 1.0 - DistanceOf(pixelX, pixelY, borderX, borderY);
        Store(m_shares + (first & (kBlock - 1)), share);

        const double(*const map)[3] = m_ring.map;
        const auto form = [&](int i) { return borderX * map[i][0] + (map[i][1] * borderY + map[i][2]); };
        const F64 q = 1.0 / form(2);
        const F64 atX = form(0) * q, atY = form(1) * q;
        const I64 has = (Columns(first) < F64{} + m_ring.count) & (OutsideBy(pixelX, pixelY) <= F64{} + 1.001)
            & (share > F64{}) & IsFinite(atX) & IsFinite(atY);
        const WarpBounds& b = m_ring.src.bounds;
        x = Clamped(has ? atX : F64{} + b.left, b.left, b.right) * m_scale;
        y = Clamped(has ? atY : F64{} + b.top, b.top, b.bottom) * m_scale;
        return has;
    }

    KELMORA_METHOD double Share(int i) const { return m_shares[i]; }

    /// In 256ths, ties to even.
    KELMORA_METHOD uint32_t Weight(int i) const
    {
        // Where one unit is the last bit, an addition rounds.
        const double unit = 6755399441055744.0;
        return static_cast<uint32_t>(m_shares[i] * 256.0 + unit - unit);
    }

private:
    KELMORA_METHOD F64 OutsideBy(F64 pixelX, F64 pixelY) const
    {
        F64 most = {};
        for (int k = 0; k < 4; ++k) {
            const WarpEdge& edge = m_ring.edges[k];
            const F64 by = pixelX * edge.outwardX + pixelY * edge.outwardY + edge.outwardFrom;
            most = by > most ? by : most;
        }
        return most;
    }

    /// To the nearest point, which comes out, too: the first of those as near as rounding tells.
    KELMORA_METHOD F64 DistanceOf(F64 pixelX, F64 pixelY, F64& x, F64& y) const
    {
        const auto distanceTo = [&](F64 toX, F64 toY) {
            const F64 dx = toX - pixelX, dy = toY - pixelY;
            return SquareRoot(dx * dx + dy * dy);
        };
        x = F64{} + m_ring.edges[0].x;
        y = F64{} + m_ring.edges[0].y;
        F64 least = distanceTo(x, y);
        for (int k = 0; k < 4; ++k) {
            const WarpEdge& edge = m_ring.edges[k];
            const F64 along = (pixelX - edge.x) * edge.wayX + (pixelY - edge.y) * edge.wayY;
            const F64 t = edge.square > 0.0 ? Clamped(along / edge.square, 0.0, 1.0) : F64{};
            const F64 pointX = edge.x + t * edge.wayX, pointY = edge.y + t * edge.wayY;
            const F64 distance = distanceTo(pointX, pointY);
            const I64 isLess = distance < least;
            x = isLess ? pointX : x;
            y = isLess ? pointY : y;
            least = isLess ? distance : least;
        }
        return least;
    }

    /// Unlike Cut it lets a zero's sign be.
    KELMORA_METHOD static F64 Clamped(F64 value, double low, double high)
    {
        const F64 lowest = F64{} + low, highest = F64{} + high;
        value = value < lowest ? lowest : value;
        return highest < value ? highest : value;
    }

    KELMORA_METHOD static I64 IsFinite(F64 value)
    {
        const F64 most = F64{} + __DBL_MAX__;
        return (value <= most) & (value >= -most);
    }

    const WarpRing& m_ring;
    double m_scale;
    double m_shares[kBlock];
};

KELMORA_INLINE uint8_t* RingPixel(const WarpRing& ring, int i, int pixelBytes)
{
    return static_cast<uint8_t*>(ring.dst) + static_cast<ptrdiff_t>(ring.y[i]) * ring.dstStep
        + static_cast<ptrdiff_t>(ring.x[i]) * pixelBytes;
}

/// By the pixels of a later block that lie inside, at least one.
KELMORA_INLINE void Widen(WarpSpan& found, int first, unsigned inside)
{
    if (found.begin >= found.end)
        found.begin = first + __builtin_ctz(inside);
    found.end = first + 32 - __builtin_clz(inside);
}

/// The rows of a turned picture are no pattern that processors would see by themselves.
KELMORA_INLINE void Prefetch(const uint8_t* pixel, ptrdiff_t ahead)
{
    __builtin_prefetch(
        reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(pixel) + static_cast<uintptr_t>(ahead)));
}

// --- bytes ----------------------------------------------------------------------------------------------

/// One of so many pixels is asked for ahead.
constexpr int kPrefetchedBytes = 4;

/// a * 256 + (b - a) * weight, less 32768 so that it is a signed word.
KELMORA_INLINE I16 AcrossWords(U16 raised, I16 a, I16 b, I16 weight)
{
    return (I16)(raised + ((U16)b - (U16)a) * (U16)weight) ^ static_cast<int16_t>(-32768);
}

#if defined(__AVX512BW__)

/// Sixteen values in 256ths of a pixel.
struct FixedBlock {
    __m512i x, y;
};

KELMORA_INLINE __m512i CutInts(__m512i value, int low, int high)
{
    return _mm512_min_epi32(_mm512_max_epi32(value, _mm512_set1_epi32(low)), _mm512_set1_epi32(high));
}

template <class Line>
KELMORA_INLINE unsigned PlaceBlock(Line& line, const WarpBounds& bounds, int first, FixedBlock& at)
{
    F64 x[2], y[2];
    const unsigned low = BitsOf(line.At(first, x[0], y[0]));
    const unsigned high = BitsOf(line.At(first + 8, x[1], y[1]));
    const auto rounded = [](const F64(&v)[2]) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtpd_epi32((__m512d)v[0])),
                                  _mm512_cvtpd_epi32((__m512d)v[1]), 1);
    };
    at.x = CutInts(rounded(x), bounds.left * 256, bounds.right * 256);
    at.y = CutInts(rounded(y), bounds.top * 256, bounds.bottom * 256);
    return low | high << 8;
}

/// The four pixels around each of sixteen positions.
struct Corners {
    __m512i upperLeft, upperRight, lowerLeft, lowerRight;
};

/// Eight pixels, each with the one to its right.
KELMORA_INLINE __m512i LoadPairs(const uint8_t* from, const int32_t* offsets)
{
    const auto two = [&](int i) {
        const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + offsets[i]));
        return _mm_castps_si128(
            _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(from + offsets[i + 1])));
    };
    const __m256i low = _mm256_inserti128_si256(_mm256_castsi128_si256(two(0)), two(2), 1);
    const __m256i high = _mm256_inserti128_si256(_mm256_castsi128_si256(two(4)), two(6), 1);
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

/// Pair by pair: faster than the processors' own gathering, and than sorting whole pieces of rows in registers.
KELMORA_INLINE Corners GatherCorners(const WarpImage& src, __m512i column, __m512i line)
{
    const auto* from = static_cast<const uint8_t*>(src.pixels);
    const __m512i lastPair = _mm512_set1_epi32(src.bounds.right - 1);
    // The last column is the right one of the last pair.
    const __mmask16 isLast = _mm512_cmpgt_epi32_mask(column, lastPair);
    const __m512i step = _mm512_set1_epi32(static_cast<int>(src.step));
    const __m512i upper = _mm512_add_epi32(_mm512_mullo_epi32(line, step),
                                           _mm512_slli_epi32(_mm512_min_epi32(column, lastPair), 2));
    const __mmask16 hasBelow = _mm512_cmplt_epi32_mask(line, _mm512_set1_epi32(src.bounds.bottom));
    alignas(64) int32_t offsets[2][16];
    _mm512_store_si512(offsets[0], upper);
    _mm512_store_si512(offsets[1], _mm512_mask_add_epi32(upper, hasBelow, upper, step));
    for (int i = 0; i < kBlock; i += kPrefetchedBytes)
        Prefetch(from + offsets[0][i], src.ahead);

    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_or_si512(even, _mm512_set1_epi32(1));
    __m512i left[2], right[2];
    for (int i = 0; i < 2; ++i) {
        const __m512i low = LoadPairs(from, offsets[i]), high = LoadPairs(from, offsets[i] + 8);
        right[i] = _mm512_permutex2var_epi32(low, odd, high);
        left[i] = _mm512_mask_mov_epi32(_mm512_permutex2var_epi32(low, even, high), isLast, right[i]);
    }
    return {left[0], right[0], left[1], right[1]};
}

template <int pixel>
KELMORA_INLINE I32 DownSums(I16 interleaved, __m512i weights)
{
    const I32 sum = MulAddPairs(interleaved, (I16)Spread<pixel>((I32)weights));
    return (I32)((U32)(sum + (32768 * 256 + 32768)) >> 16);
}

KELMORA_INLINE U8 SampleBlock(const WarpImage& src, const FixedBlock& at)
{
    const __m512i column = _mm512_srai_epi32(at.x, 8), line = _mm512_srai_epi32(at.y, 8);
    const Corners corners = GatherCorners(src, column, line);

    const __m512i lowBytes =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12));
    const U8 right = (U8)_mm512_shuffle_epi8(at.x, lowBytes);
    const __m512i below = _mm512_and_si512(at.y, _mm512_set1_epi32(255));
    const __m512i down =
        _mm512_or_si512(_mm512_sub_epi32(_mm512_set1_epi32(256), below), _mm512_slli_epi32(below, 16));

    const U8 ul = (U8)corners.upperLeft, ur = (U8)corners.upperRight;
    const U8 ll = (U8)corners.lowerLeft, lr = (U8)corners.lowerRight;
    const I16 weightLow = WidenLow(right), weightHigh = WidenHigh(right);
    const I16 upperLow = AcrossWords(RaiseLow(ul), WidenLow(ul), WidenLow(ur), weightLow);
    const I16 upperHigh = AcrossWords(RaiseHigh(ul), WidenHigh(ul), WidenHigh(ur), weightHigh);
    const I16 lowerLow = AcrossWords(RaiseLow(ll), WidenLow(ll), WidenLow(lr), weightLow);
    const I16 lowerHigh = AcrossWords(RaiseHigh(ll), WidenHigh(ll), WidenHigh(lr), weightHigh);
    const I16 low = Pack(DownSums<0>(InterleaveLow(upperLow, lowerLow), down),
                         DownSums<1>(InterleaveHigh(upperLow, lowerLow), down));
    const I16 high = Pack(DownSums<2>(InterleaveLow(upperHigh, lowerHigh), down),
                          DownSums<3>(InterleaveHigh(upperHigh, lowerHigh), down));
    return Pack(low, high);
}

template <class Line>
KELMORA_INLINE WarpSpan ByteSpan(const WarpImage& src, Line line, WarpSpan span, void* dst)
{
    auto* to = static_cast<uint8_t*>(dst);
    WarpSpan found = {};
    for (int first = span.begin; first < span.end; first += kBlock, to += kBlock * 4) {
        FixedBlock at;
        unsigned inside = PlaceBlock(line, src.bounds, first, at);
        if (const int rest = span.end - first; rest < kBlock)
            inside &= (1u << rest) - 1;
        if (inside == 0)
            continue;
        Widen(found, first, inside);
        const U8 pixels = SampleBlock(src, at);
        if (inside == 0xFFFF)
            Store(to, pixels);
        else
            _mm512_mask_storeu_epi32(to, static_cast<__mmask16>(inside), (__m512i)pixels);
    }
    return found;
}

/// A block's pixels.
struct ByteBlock {
    uint32_t pixels[kBlock];
};

KELMORA_INLINE ByteBlock SampleSome(const WarpImage& src, const FixedBlock& at, unsigned)
{
    ByteBlock block;
    Store(block.pixels, SampleBlock(src, at));
    return block;
}

#else

/// Sixteen values in 256ths of a pixel.
struct FixedBlock {
    int32_t x[kBlock], y[kBlock];
};

/// A bit per pixel that lies inside.
template <class Line>
KELMORA_INLINE unsigned PlaceBlock(Line& line, const WarpBounds& bounds, int first, FixedBlock& at)
{
    unsigned inside = 0;
    for (int i = 0; i < kBlock; i += kDoubles) {
        F64 x, y;
        inside |= BitsOf(line.At(first + i, x, y)) << i;
        StoreRounded(at.x + i, Cut(x, bounds.left * 256.0, bounds.right * 256.0));
        StoreRounded(at.y + i, Cut(y, bounds.top * 256.0, bounds.bottom * 256.0));
    }
    return inside;
}

KELMORA_INLINE const uint8_t* PixelAt(const WarpImage& src, int column, int line)
{
    return static_cast<const uint8_t*>(src.pixels) + line * src.step + static_cast<ptrdiff_t>(column) * 4;
}

/// The pixel at a position in 256ths, of four bytes. The last column and row count as the neighbours of those
/// before them, so that all four pixels are there.
KELMORA_INLINE uint32_t SampleByte(const WarpImage& src, int x, int y)
{
    int column = x >> 8, line = y >> 8;
    column = column < src.bounds.right ? column : src.bounds.right - 1;
    line = line < src.bounds.bottom ? line : src.bounds.bottom - 1;
    const uint8_t* const pixel = PixelAt(src, column, line);
    const int right = x - column * 256, below = y - line * 256;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i upper = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixel));
    const __m128i lower = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixel + src.step));
    const __m128i wide = _mm_unpacklo_epi8(upper, zero);
    const __m128i step = _mm_mullo_epi16(_mm_sub_epi16(_mm_unpacklo_epi8(lower, zero), wide),
                                         _mm_set1_epi16(static_cast<int16_t>(below)));
    const __m128i value =
        _mm_xor_si128(_mm_add_epi16(_mm_unpacklo_epi8(zero, upper), step), _mm_set1_epi16(-32768));
    const __m128i pairs = _mm_unpacklo_epi16(value, _mm_srli_si128(value, 8));
    const __m128i sum = _mm_madd_epi16(pairs, _mm_set1_epi32((256 - right) | right << 16));
    const __m128i level = _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(32768 * 256 + 32768)), 16);
    const __m128i words = _mm_packs_epi32(level, level);
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
#else
    uint8_t to[4];
    for (int c = 0; c < 4; ++c) {
        const uint8_t* p = pixel + c;
        const int left = p[0] * (256 - below) + p[src.step] * below;
        const int other = p[4] * (256 - below) + p[src.step + 4] * below;
        to[c] = static_cast<uint8_t>((left * (256 - right) + other * right + 32768) >> 16);
    }
    uint32_t whole;
    __builtin_memcpy(&whole, to, 4);
    return whole;
#endif
}

template <class Line>
KELMORA_INLINE WarpSpan ByteSpan(const WarpImage& src, Line line, WarpSpan span, void* dst)
{
    auto* to = static_cast<uint8_t*>(dst);
    WarpSpan found = {};
    for (int first = span.begin; first < span.end; first += kBlock, to += kBlock * 4) {
        FixedBlock at;
        unsigned inside = PlaceBlock(line, src.bounds, first, at);
        const int count = span.end - first < kBlock ? span.end - first : kBlock;
        inside &= (1u << count) - 1;
        if (inside == 0)
            continue;
        Widen(found, first, inside);
        for (int i = 0; i < count; i += kPrefetchedBytes)
            Prefetch(PixelAt(src, at.x[i] >> 8, at.y[i] >> 8), src.ahead);
        for (int i = 0; i < count; ++i) {
            const uint32_t pixel = SampleByte(src, at.x[i], at.y[i]);
            if ((inside >> i & 1) != 0)
                __builtin_memcpy(to + i * 4, &pixel, 4);
        }
    }
    return found;
}

/// Those of a block's pixels whose bits are set.
struct ByteBlock {
    uint32_t pixels[kBlock];
};

KELMORA_INLINE ByteBlock SampleSome(const WarpImage& src, const FixedBlock& at, unsigned which)
{
    ByteBlock block;
    for (; which != 0; which &= which - 1) {
        const int i = __builtin_ctz(which);
        block.pixels[i] = SampleByte(src, at.x[i], at.y[i]);
    }
    return block;
}

#endif

/// weight: of the colour, in 256ths.
KELMORA_INLINE uint32_t Mixed(uint32_t under, uint32_t colour, uint32_t weight)
{
    constexpr uint32_t kEven = 0x00FF00FF, kHalves = 0x00800080;
    const auto mix = [&](uint32_t a, uint32_t b) {
        return (((a & kEven) * (256 - weight) + (b & kEven) * weight + kHalves) >> 8) & kEven;
    };
    return mix(under, colour) | mix(under >> 8, colour >> 8) << 8;
}

void RingBytes(const WarpRing& ring)
{
    RingLine line(ring, 256.0);
    for (int first = 0; first < ring.count; first += kBlock) {
        FixedBlock at;
        unsigned which = PlaceBlock(line, ring.src.bounds, first, at);
        const ByteBlock block = SampleSome(ring.src, at, which);
        for (; which != 0; which &= which - 1) {
            const int i = __builtin_ctz(which);
            uint8_t* const to = RingPixel(ring, first + i, 4);
            uint32_t pixel;
            __builtin_memcpy(&pixel, to, 4);
            pixel = Mixed(pixel, block.pixels[i], line.Weight(i));
            __builtin_memcpy(to, &pixel, 4);
        }
    }
}

// --- floats ---------------------------------------------------------------------------------------------

typedef float Pixel __attribute__((vector_size(16), may_alias));

KELMORA_INLINE Pixel Lerp(Pixel a, Pixel b, float weight)
{
    return a * (1.0f - weight) + b * weight;
}

/// Positions of 0 and more: toward zero, and what is left.
struct Places {
    I32 whole;
    F32 rest;
};

KELMORA_INLINE Places Split(F64 low, F64 high)
{
#if defined(__AVX512BW__)
    const __m256i first = _mm512_cvttpd_epi32((__m512d)low), second = _mm512_cvttpd_epi32((__m512d)high);
    return {(I32)_mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1),
            Narrow({low - (F64)_mm512_cvtepi32_pd(first), high - (F64)_mm512_cvtepi32_pd(second)})};
#elif defined(__AVX2__)
    const __m128i first = _mm256_cvttpd_epi32((__m256d)low), second = _mm256_cvttpd_epi32((__m256d)high);
    return {(I32)_mm256_setr_m128i(first, second),
            Narrow({low - (F64)_mm256_cvtepi32_pd(first), high - (F64)_mm256_cvtepi32_pd(second)})};
#elif defined(__SSE2__)
    const __m128i first = _mm_cvttpd_epi32((__m128d)low), second = _mm_cvttpd_epi32((__m128d)high);
    return {(I32)_mm_unpacklo_epi64(first, second),
            Narrow({low - (F64)_mm_cvtepi32_pd(first), high - (F64)_mm_cvtepi32_pd(second)})};
#else
    const auto toward = [](double v) { return static_cast<int32_t>(v); };
    const I32 whole = {toward(low[0]), toward(low[1]), toward(high[0]), toward(high[1])};
    for (int k = 0; k < 2; ++k) {
        low[k] -= whole[k];
        high[k] -= whole[2 + k];
    }
    return {whole, Narrow({low, high})};
#endif
}

/// Where the four pixels around each position of a block lie, in bytes, and what those to the right and below
/// weigh.
struct FloatBlock {
    int32_t upperLeft[kBlock], upperRight[kBlock], lowerLeft[kBlock], lowerRight[kBlock];
    float right[kBlock], below[kBlock];
};

/// A bit per pixel that lies inside.
template <class Line>
KELMORA_INLINE unsigned PlaceFloats(const WarpBounds& bounds, int32_t step, Line& line, int first,
                                    FloatBlock& at)
{
    unsigned inside = 0;
    for (int i = 0; i < kBlock; i += kPixels) {
        F64 x[2], y[2];
        inside |= BitsOf(line.At(first + i, x[0], y[0])) << i;
        inside |= BitsOf(line.At(first + i + kDoubles, x[1], y[1])) << (i + kDoubles);
        for (int k = 0; k < 2 && !Line::kCuts; ++k) {
            x[k] = Cut(x[k], bounds.left, bounds.right);
            y[k] = Cut(y[k], bounds.top, bounds.bottom);
        }
        const Places column = Split(x[0], x[1]), row = Split(y[0], y[1]);
        const I32 upper = row.whole * step + column.whole * 16;
        const I32 toRight = MaskGreater(I32{} + bounds.right, column.whole) & 16;
        const I32 lower = upper + (MaskGreater(I32{} + bounds.bottom, row.whole) & step);
        Store(at.upperLeft + i, upper);
        Store(at.upperRight + i, upper + toRight);
        Store(at.lowerLeft + i, lower);
        Store(at.lowerRight + i, lower + toRight);
        Store(at.right + i, column.rest);
        Store(at.below + i, row.rest);
    }
    return inside;
}

/// As many pixels as fit in a vector, each from its place.
KELMORA_INLINE F32 LoadPixels(const uint8_t* from, const int32_t* offsets)
{
#if defined(__AVX512BW__) || defined(__AVX2__)
    const auto two = [&](int i) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256((__m128)Load<Pixel>(from + offsets[i])),
                                    (__m128)Load<Pixel>(from + offsets[i + 1]), 1);
    };
#if defined(__AVX512BW__)
    return (F32)_mm512_insertf32x8(_mm512_castps256_ps512(two(0)), two(2), 1);
#else
    return (F32)two(0);
#endif
#else
    return Load<F32>(from + offsets[0]);
#endif
}

/// As many weights as a vector has pixels, each in all four places of its pixel.
KELMORA_INLINE F32 LoadWeights(const float* from)
{
#if defined(__AVX512BW__)
    const __m512i places = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
    return (F32)_mm512_permutevar_ps(_mm512_broadcast_f32x4(_mm_loadu_ps(from)), places);
#elif defined(__AVX2__)
    return (F32)_mm256_setr_m128(_mm_broadcast_ss(from), _mm_broadcast_ss(from + 1));
#else
    return F32{} + from[0];
#endif
}

KELMORA_INLINE F32 Lerp(F32 a, F32 b, F32 weight)
{
    return a * (1.0f - weight) + b * weight;
}

/// What pixels' values are multiplied by before they are interpolated.
struct FloatLight {
    F32 factors;

    /// `light`: of a pixel.
    KELMORA_METHOD explicit FloatLight(const float* light) : factors{}
    {
        for (int i = 0; i < kPixels; ++i)
            factors[i] = light[i % 4];
    }

    KELMORA_METHOD F32 operator()(F32 pixels) const { return pixels * factors; }
};

struct NoLight {
    KELMORA_METHOD F32 operator()(F32 pixels) const { return pixels; }
};

template <class Light>
KELMORA_INLINE F32 SampleFloats(const uint8_t* from, const FloatBlock& at, int i, const Light& lit)
{
    const auto pixels = [&](const int32_t* offsets) { return lit(LoadPixels(from, offsets + i)); };
    const F32 right = LoadWeights(at.right + i);
    const F32 upper = Lerp(pixels(at.upperLeft), pixels(at.upperRight), right);
    const F32 lower = Lerp(pixels(at.lowerLeft), pixels(at.lowerRight), right);
    return Lerp(upper, lower, LoadWeights(at.below + i));
}

/// One pixel of a block.
KELMORA_INLINE Pixel SampleFloat(const uint8_t* from, const FloatBlock& at, int i, Pixel light)
{
    const auto pixel = [&](const int32_t* offsets) { return Load<Pixel>(from + offsets[i]) * light; };
    const Pixel upper = Lerp(pixel(at.upperLeft), pixel(at.upperRight), at.right[i]);
    return Lerp(upper, Lerp(pixel(at.lowerLeft), pixel(at.lowerRight), at.right[i]), at.below[i]);
}

template <class Line, class Light>
KELMORA_INLINE WarpSpan FloatSpan(const WarpImage& src, Line line, WarpSpan span, void* dst, const Light& lit)
{
    auto* to = static_cast<uint8_t*>(dst);
    const auto* from = static_cast<const uint8_t*>(src.pixels);
    const auto step = static_cast<int32_t>(src.step);
    const WarpBounds bounds = src.bounds;
    const ptrdiff_t ahead = src.ahead;
    WarpSpan found = {};
    for (int first = span.begin; first < span.end; first += kBlock, to += kBlock * 16) {
        FloatBlock at;
        unsigned inside = PlaceFloats(bounds, step, line, first, at);
        if (const int rest = span.end - first; rest < kBlock)
            inside &= (1u << rest) - 1;
        if (inside == 0)
            continue;
        Widen(found, first, inside);
        for (int i = 0; i < kBlock; i += kLanes) {
            constexpr unsigned kAll = (1u << kLanes) - 1;
            const unsigned which = inside >> i & kAll;
            if (which == 0)
                continue;
            const F32 pixels = SampleFloats(from, at, i, lit);
            for (int k = 0; k < kLanes; k += 2)
                Prefetch(from + at.upperLeft[i + k], ahead);
            if (which == kAll)
                Store(to + i * 16, pixels);
            else
                for (int k = 0; k < kLanes; ++k)
                    if ((which >> k & 1) != 0)
                        __builtin_memcpy(to + (i + k) * 16, reinterpret_cast<const char*>(&pixels) + k * 16,
                                         16);
        }
    }
    return found;
}

void RingFloats(const WarpRing& ring)
{
    RingLine line(ring, 1.0);
    const auto* from = static_cast<const uint8_t*>(ring.src.pixels);
    const Pixel light = ring.src.light ? Load<Pixel>(ring.src.light) : Pixel{} + 1.0f;
    for (int first = 0; first < ring.count; first += kBlock) {
        FloatBlock at;
        unsigned which = PlaceFloats(ring.src.bounds, static_cast<int32_t>(ring.src.step), line, first, at);
        for (; which != 0; which &= which - 1) {
            const int i = __builtin_ctz(which);
            uint8_t* const to = RingPixel(ring, first + i, 16);
            const Pixel colour = SampleFloat(from, at, i, light), under = Load<Pixel>(to);
            const double over = line.Share(i), rest = 1.0 - over;
            Pixel mixed;
            for (int c = 0; c < 4; ++c)
                mixed[c] = static_cast<float>(static_cast<double>(under[c]) * rest
                                              + static_cast<double>(colour[c]) * over);
            Store(to, mixed);
        }
    }
}

// --- rows -----------------------------------------------------------------------------------------------

void AffineBytes(const AffineRow& row)
{
    ByteSpan(row.src, AffineLine(row, 256.0), row.span, row.dst);
}

void AffineFloats(const AffineRow& row)
{
    FloatSpan(row.src, AffineLine(row, 1.0), row.span, row.dst, NoLight{});
}

WarpSpan PerspectiveBytes(const PerspectiveRow& row)
{
    return ByteSpan(row.src, PerspectiveLine(row, 256.0), row.span, row.dst);
}

WarpSpan PerspectiveFloats(const PerspectiveRow& row)
{
    const PerspectiveLine line(row, 1.0);
    return row.src.light ? FloatSpan(row.src, line, row.span, row.dst, FloatLight(row.src.light))
                         : FloatSpan(row.src, line, row.span, row.dst, NoLight{});
}

// --- separable: across, then down -----------------------------------------------------------------------

KELMORA_INLINE void StoreAcross(uint8_t* out, U8 left, U8 right, U8 weight)
{
    Store(out, AcrossWords(RaiseLow(left), WidenLow(left), WidenLow(right), WidenLow(weight)));
    Store(out + kVectorBytes,
          AcrossWords(RaiseHigh(left), WidenHigh(left), WidenHigh(right), WidenHigh(weight)));
}

/// kPixels pixels of the row, each from its column on; columns past the last one are that one.
struct Neighbours {
    U8 left, right;
};

KELMORA_INLINE U32 PickPixels(const uint8_t* row, const int32_t* columns, int shift, int last)
{
    uint32_t picked[kPixels];
    for (int i = 0; i < kPixels; ++i) {
        const int column = columns[i] + shift < last ? columns[i] + shift : last;
        __builtin_memcpy(&picked[i], row + static_cast<ptrdiff_t>(column) * 4, 4);
    }
    return Load<U32>(picked);
}

KELMORA_INLINE Neighbours PickNeighbours(const uint8_t* row, const int32_t* columns, int last)
{
#if defined(__AVX512BW__)
    // Both ends of the block lie within two vectors unless the picture is shrunk to half and less.
    const int first = columns[0] < columns[kPixels - 1] ? columns[0] : columns[kPixels - 1];
    const int most = columns[0] < columns[kPixels - 1] ? columns[kPixels - 1] : columns[0];
    if (most - first < 2 * kPixels - 1) {
        const auto part = [](int count) {
            return static_cast<__mmask16>(count >= 16 ? 0xFFFF : count > 0 ? (1 << count) - 1 : 0);
        };
        const uint8_t* from = row + static_cast<ptrdiff_t>(first) * 4;
        const int there = last + 1 - first;
        const __m512i low = _mm512_maskz_loadu_epi32(part(there), from);
        const __m512i high = _mm512_maskz_loadu_epi32(part(there - 16), from + 64);
        const __m512i index = _mm512_sub_epi32(_mm512_loadu_si512(columns), _mm512_set1_epi32(first));
        const __m512i next = _mm512_add_epi32(index, _mm512_set1_epi32(1));
        return {(U8)_mm512_permutex2var_epi32(low, index, high),
                (U8)_mm512_permutex2var_epi32(low, next, high)};
    }
#endif
    return {(U8)PickPixels(row, columns, 0, last), (U8)PickPixels(row, columns, 1, last)};
}

void AcrossBytes(const AcrossRow& across)
{
    const auto* row = static_cast<const uint8_t*>(across.row);
    auto* out = static_cast<uint8_t*>(across.out);
    if (across.left) {
        const auto* weights = static_cast<const uint8_t*>(across.weights);
        for (int i = 0; i < across.count; i += kPixels, out += 2 * kVectorBytes) {
            const Neighbours at = PickNeighbours(row, across.left + i, across.lastColumn);
            StoreAcross(out, at.left, at.right, Load<U8>(weights + i * 4));
        }
        return;
    }
    row += static_cast<ptrdiff_t>(across.firstLeft) * 4;
    const U8 weight = U8{} + static_cast<uint8_t>(across.shiftWeight);
    int i = 0;
    // The neighbour of the last pixel may not be there; the table's way knows that.
    for (; i + kPixels <= across.count && across.firstLeft + i + kPixels <= across.lastColumn;
         i += kPixels, out += 2 * kVectorBytes)
        StoreAcross(out, Load<U8>(row + i * 4), Load<U8>(row + i * 4 + 4), weight);
    for (; i < across.count; i += kPixels, out += 2 * kVectorBytes) {
        int32_t columns[kPixels];
        for (int k = 0; k < kPixels; ++k)
            columns[k] = i + k;
        const int last = across.lastColumn - across.firstLeft;
        StoreAcross(out, (U8)PickPixels(row, columns, 0, last), (U8)PickPixels(row, columns, 1, last),
                    weight);
    }
}

KELMORA_INLINE U8 BlendDown(const uint8_t* upper, const uint8_t* lower, I16 weights)
{
    const I32 round = I32{} + (32768 * 256 + 32768);
    I16 halves[2];
    for (int i = 0; i < 2; ++i) {
        const I16 a = Load<I16>(upper + i * kVectorBytes), b = Load<I16>(lower + i * kVectorBytes);
        const I32 low = MulAddPairs(InterleaveLow(a, b), weights) + round;
        const I32 high = MulAddPairs(InterleaveHigh(a, b), weights) + round;
        halves[i] = Pack((I32)((U32)low >> 16), (I32)((U32)high >> 16));
    }
    return Pack(halves[0], halves[1]);
}

void DownBytes(const DownRow& row)
{
    const auto* upper = static_cast<const uint8_t*>(row.upper);
    const auto* lower = static_cast<const uint8_t*>(row.lower);
    auto* dst = static_cast<uint8_t*>(row.dst);
    const I16 weights = (I16)(I32{} + ((256 - row.weight) | row.weight << 16));
    int i = 0;
    for (; i + kPixels <= row.count; i += kPixels, upper += 2 * kVectorBytes, lower += 2 * kVectorBytes)
        Store(dst + i * 4, BlendDown(upper, lower, weights));
    if (const int rest = (row.count - i) * 4; rest > 0)
        StorePart(dst + i * 4, BlendDown(upper, lower, weights), rest);
}

/// What LerpBytes weighs with.
struct LerpWeights {
    I16 second;
    U8 both; ///< of the first and of the second, one by one
};

KELMORA_INLINE U8 LerpVector(U8 a, U8 b, const LerpWeights& weights)
{
#if defined(__AVX2__)
    // Bytes less 128 keep the sums of products within signed words.
    const I16 low = MulAddBytes(weights.both, InterleaveLow(a, b) ^ 128);
    const I16 high = MulAddBytes(weights.both, InterleaveHigh(a, b) ^ 128);
    const uint16_t raise = 32768 + 128;
    return Pack((I16)(((U16)low + raise) >> 8), (I16)(((U16)high + raise) >> 8));
#else
    const U16 low = RaiseLow(a) + (U16)(WidenLow(b) - WidenLow(a)) * (U16)weights.second + 128;
    const U16 high = RaiseHigh(a) + (U16)(WidenHigh(b) - WidenHigh(a)) * (U16)weights.second + 128;
    return Pack((I16)(low >> 8), (I16)(high >> 8));
#endif
}

template <bool lerps>
KELMORA_INLINE void LerpRows(const LerpRow& row)
{
    const auto second = static_cast<uint8_t>(row.weight);
    const U8 one = U8{} + static_cast<uint8_t>(256 - row.weight);
    const LerpWeights weights = {I16{} + static_cast<int16_t>(second), InterleaveLow(one, U8{} + second)};
    const auto value = [&](U8 a, U8 b) { return lerps ? LerpVector(a, b, weights) : a; };
    const U8 none = {};
    int i = 0;
    for (; i + kVectorBytes <= row.bytes; i += kVectorBytes)
        Store(row.dst + i, value(Load<U8>(row.first + i), lerps ? Load<U8>(row.second + i) : none));
    if (const int rest = row.bytes - i; rest > 0)
        StorePart(row.dst + i,
                  value(LoadPart<U8>(row.first + i, rest), lerps ? LoadPart<U8>(row.second + i, rest) : none),
                  rest);
}

void LerpBytes(const LerpRow& row)
{
    row.weight == 0 ? LerpRows<false>(row) : LerpRows<true>(row);
}

KELMORA_INLINE I32 Least(I32 value, int most)
{
    const I32 highest = I32{} + most;
    return value < highest ? value : highest;
}

/// From the columns of the table.
KELMORA_INLINE void AcrossFloatsByTable(const AcrossRow& across)
{
    const auto* row = static_cast<const uint8_t*>(across.row);
    const auto* weights = static_cast<const float*>(across.weights);
    auto* out = static_cast<uint8_t*>(across.out);
    const int last = across.lastColumn, count = across.count;
    const int32_t* const left = across.left;
    const ptrdiff_t ahead = across.ahead;
    for (int i = 0; i < count; i += kPixels) {
        int32_t first[kPixels], second[kPixels];
        const I32 column = Load<I32>(left + i);
        Store(first, Least(column, last) * 16);
        Store(second, Least(column + 1, last) * 16);
        for (int k = 0; k < kPixels; k += kLanes, out += kVectorBytes) {
            Prefetch(row + first[k], ahead);
            Store(
                out,
                Lerp(LoadPixels(row, first + k), LoadPixels(row, second + k), LoadWeights(weights + i + k)));
        }
    }
}

/// One by one.
KELMORA_INLINE void AcrossFloatsInSteps(const AcrossRow& across)
{
    const auto* row = static_cast<const uint8_t*>(across.row) + static_cast<ptrdiff_t>(across.firstLeft) * 16;
    auto* out = static_cast<uint8_t*>(across.out);
    const float second = across.shiftWeightFloat, first = 1.0f - second;
    const ptrdiff_t ahead = across.ahead;
    const int count = across.count, last = across.lastColumn - across.firstLeft;
    int i = 0;
    for (; i + kLanes <= count && i + kLanes <= last; i += kLanes, row += kVectorBytes, out += kVectorBytes) {
        Prefetch(row, ahead);
        Store(out, Load<F32>(row) * first + Load<F32>(row + 16) * second);
    }
    for (; i < count; ++i, row += 16, out += 16)
        Store(out, Load<Pixel>(row) * first + Load<Pixel>(row + (i < last ? 16 : 0)) * second);
}

void AcrossFloats(const AcrossRow& across)
{
    across.left ? AcrossFloatsByTable(across) : AcrossFloatsInSteps(across);
}

/// Some pixels' worth of two rows.
template <class V>
KELMORA_INLINE V DownOf(const DownRow& row, ptrdiff_t at)
{
    const auto load = [at](const void* from) { return Load<V>(static_cast<const uint8_t*>(from) + at); };
    return load(row.upper) * (1.0f - row.weightFloat) + load(row.lower) * row.weightFloat;
}

void DownFloats(const DownRow& row)
{
    auto* const dst = static_cast<uint8_t*>(row.dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row.count) * 16;
    const auto byPixels = [&](ptrdiff_t at, ptrdiff_t end) {
        for (; at < end; at += 16)
            Store(dst + at, DownOf<Pixel>(row, at));
        return at;
    };
    ptrdiff_t at = 0;
    const ptrdiff_t toAligned = static_cast<ptrdiff_t>(-reinterpret_cast<uintptr_t>(dst) % kVectorBytes);
    if (row.isReadLater && toAligned % 16 == 0 && CanStream(dst + toAligned, bytes - toAligned)) {
        at = byPixels(0, toAligned);
        for (; at + kVectorBytes <= bytes; at += kVectorBytes)
            Stream(dst + at, DownOf<F32>(row, at));
        EndStream();
    }
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(dst + at, DownOf<F32>(row, at));
    byPixels(at, bytes);
}

} // namespace

extern const WarpKernels kWarpKernels;
const WarpKernels kWarpKernels = {
    AffineBytes, AffineFloats, PerspectiveBytes, PerspectiveFloats, RingBytes, RingFloats,
    AcrossBytes, AcrossFloats, DownBytes,        DownFloats,        LerpBytes,
};

} // namespace kelmora::KELMORA_VARIANT
