// Hue, saturation and value, compiled once per instruction set: see detail/simd.h for what that forbids.

#include "image/primitives/detail/byte_levels.h"
#include "image/primitives/detail/hsv_bytes.h"
#include "image/primitives/detail/simd_strips.h"
#include "image/primitives/hsv_kernels.h"

namespace kelmora::KELMORA_VARIANT {
namespace {

// --- colours of bytes -----------------------------------------------------------------------------------

struct ColourBits {
    static constexpr int b = 0, g = 8, r = 16;
};

struct ColoursToHsv {
    KELMORA_INLINE U32 Of(U32 pixels)
    {
        const HsvBytes hsv = ToHsvBytes(Channel(pixels, ColourBits::b), Channel(pixels, ColourBits::g),
                                        Channel(pixels, ColourBits::r));
        return (U32)Truncate(hsv.hue) | (U32)Truncate(hsv.saturation) << 8 | (U32)Truncate(hsv.value) << 16;
    }
};

struct ColoursToRgb {
    KELMORA_INLINE U32 Of(U32 pixels)
    {
        return FromHsvBytes<ColourBits>({Channel(pixels, 0), Channel(pixels, 8), Channel(pixels, 16)});
    }
};

template <class Op>
KELMORA_INLINE U32 MapColours(U32 src, U32 dst)
{
    return Op::Of(src) | (dst & 0xFF000000u);
}

template <class Op>
void MapColourRow(const void* src, void* dst, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(pixels) * 4 - 1;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(to + at, MapColours<Op>(Load<U32>(from + at), Load<U32>(to + at)));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(to + at, MapColours<Op>(LoadPart<U32>(from + at, rest), LoadPart<U32>(to + at, rest)),
                  rest);
}

// --- levels, in double ----------------------------------------------------------------------------------

struct HueAndSaturation {
    F64 hue, saturation;
};

/// Of pixels that are no greys; `after` and `before` are the colours next to the strongest one, which stands at `place`
/// sixths of a turn.
KELMORA_INLINE HueAndSaturation HueAndSaturationOf(F64 most, F64 least, F64 after, F64 before, F64 place)
{
    const F64 range = most - least;
    const F64 d = 1.0 / range;
    const F64 degrees = ((most - before) * d + place - (most - after) * d) * 60.0;
    return {(degrees < 0.0 ? degrees + 360.0 : degrees) / 360.0, range / most};
}

/// Three planes: blue, green, red become hue, saturation, value.
KELMORA_INLINE void ToHsv(F32& first, F32& second, F32& third)
{
    const F32 zero = {}, b = first, g = second, r = third;
    // In this order a channel that is not a number counts only if it is blue.
    const F32 most = Most(r, Most(g, b)), least = Least(r, Least(g, b));
    const auto coloured = (most > zero) & (least < most);
    const auto isBlue = most == b, isGreen = most == g;

    // Greys go through as something that can be divided by.
    const WideFloats m = Widen(coloured ? most : zero + 1.0f), l = Widen(coloured ? least : zero);
    const WideFloats after = Widen(isBlue ? g : isGreen ? r : b);
    const WideFloats before = Widen(isBlue ? r : isGreen ? b : g);
    const WideFloats place = Widen(isBlue ? zero : isGreen ? zero + 2.0f : zero + 4.0f);
    const auto low = HueAndSaturationOf(m.low, l.low, after.low, before.low, place.low);
    const auto high = HueAndSaturationOf(m.high, l.high, after.high, before.high, place.high);
    first = coloured ? Narrow({low.hue, high.hue}) : zero;
    second = coloured ? Narrow({low.saturation, high.saturation}) : zero;
    third = most;
}

/// The colours after and before the strongest one.
struct Neighbours {
    F64 after, before;
};

/// `place` is that of the strongest colour in sixths of a turn. The hue in double has room for its sixfold and for what
/// is left beside the place, so neither is rounded.
KELMORA_INLINE Neighbours NeighboursOf(F64 hue, F64 place, F64 saturation, F64 value)
{
    const F64 low = (1.0 - saturation) * value;
    const F64 t = (hue * 6.0 - place) * (value - low);
    const auto leansBack = t < 0.0;
    const F64 middle = (leansBack ? -t : t) + low;
    return {leansBack ? low : middle, leansBack ? middle : low};
}

/// The floats next to 1/6 and 5/6, the first above and the second below.
constexpr float kSixth = 0.16666667f, kFiveSixths = 0.83333331f;
static_assert(6.0 * static_cast<double>(kSixth) > 1.0 && 6.0 * static_cast<double>(kFiveSixths) < 5.0);

/// Three planes: hue, saturation, value become blue, green, red.
KELMORA_INLINE void ToRgb(F32& first, F32& second, F32& third)
{
    const F32 zero = {}, value = third;
    // The last sixth counts from below blue; the difference is exact.
    const F32 hue = first > zero + kFiveSixths ? first - 1.0f : first;
    const auto isBlue = hue < zero + kSixth, isRed = hue >= zero + 0.5f;
    const auto coloured = (hue > zero - kSixth) & (hue <= zero + kFiveSixths) & (second > zero);

    const WideFloats h = Widen(hue), s = Widen(second), v = Widen(value);
    const WideFloats place = Widen(isBlue ? zero : isRed ? zero + 4.0f : zero + 2.0f);
    const auto low = NeighboursOf(h.low, place.low, s.low, v.low);
    const auto high = NeighboursOf(h.high, place.high, s.high, v.high);
    const F32 after = Narrow({low.after, high.after}), before = Narrow({low.before, high.before});
    first = coloured ? (isBlue ? value : isRed ? after : before) : value;
    second = coloured ? (isBlue ? after : isRed ? before : value) : value;
    third = coloured ? (isBlue ? before : isRed ? value : after) : value;
}

/// The places of the channels.
struct BgraPlanes {
    static constexpr int b = 0, g = 1, r = 2, a = 3;
};

struct ArgbPlanes {
    static constexpr int a = 0, r = 1, g = 2, b = 3;
};

template <class P>
struct PlanesToHsv {
    static constexpr int alphaFrom = P::a, alphaTo = 3;

    KELMORA_INLINE void Change(F32 (&v)[4])
    {
        F32 b = v[P::b], g = v[P::g], r = v[P::r];
        v[3] = v[P::a];
        ToHsv(b, g, r);
        v[0] = b;
        v[1] = g;
        v[2] = r;
    }
};

template <class P>
struct PlanesToRgb {
    static constexpr int alphaFrom = 3, alphaTo = P::a;

    KELMORA_INLINE void Change(F32 (&v)[4])
    {
        F32 h = v[0], s = v[1], value = v[2];
        const F32 alpha = v[3];
        ToRgb(h, s, value);
        v[P::b] = h;
        v[P::g] = s;
        v[P::r] = value;
        v[P::a] = alpha;
    }
};

// --- rows of levels -------------------------------------------------------------------------------------

template <class Op>
KELMORA_INLINE void ChangeInterleaved(F32 (&v)[4])
{
    SplitChannels(v);
    Op::Change(v);
    SplitChannels(v); // the transposition undoes itself
}

template <class Op>
void FloatRow(const void* src, void* dst, int pixels)
{
    ChangeStrips(
        src, dst, pixels, [](F32(&v)[4]) __attribute__((always_inline)) { ChangeInterleaved<Op>(v); });
}

template <class Op>
KELMORA_INLINE U32 ChangeBytes(U32 pixels)
{
    F32 v[4];
    for (int i = 0; i < 4; ++i)
        v[i] = LevelOf((I32)((pixels >> 8 * i) & 0xFFu));
    Op::Change(v);
    U32 changed = ((pixels >> 8 * Op::alphaFrom) & 0xFFu) << 8 * Op::alphaTo;
    for (int i = 0; i < 4; ++i)
        if (i != Op::alphaTo)
            changed |= (U32)TruncatedByte(v[i]) << 8 * i;
    return changed;
}

template <class Op>
void ByteRow(const void* src, void* dst, int pixels)
{
    const auto* from = static_cast<const uint8_t*>(src);
    auto* to = static_cast<uint8_t*>(dst);
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(pixels) * 4;
    ptrdiff_t at = 0;
    for (; at + kVectorBytes <= bytes; at += kVectorBytes)
        Store(to + at, ChangeBytes<Op>(Load<U32>(from + at)));
    if (const int rest = static_cast<int>(bytes - at); rest > 0)
        StorePart(to + at, ChangeBytes<Op>(LoadPart<U32>(from + at, rest)), rest);
}

} // namespace

extern const HsvKernels kHsvKernels;
const HsvKernels kHsvKernels = {MapColourRow<ColoursToHsv>,        MapColourRow<ColoursToRgb>,
                                ByteRow<PlanesToHsv<ArgbPlanes>>,  ByteRow<PlanesToRgb<ArgbPlanes>>,
                                FloatRow<PlanesToHsv<BgraPlanes>>, FloatRow<PlanesToRgb<BgraPlanes>>,
                                FloatRow<PlanesToHsv<ArgbPlanes>>, FloatRow<PlanesToRgb<ArgbPlanes>>};

} // namespace kelmora::KELMORA_VARIANT
