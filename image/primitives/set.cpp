#include "image/primitives/set.h"

#include <cstring>

#include "image/primitives/byte_kernels.h"
#include "image/primitives/detail/layout.h"
#include "image/primitives/detail/loose_float.h"
#include "image/primitives/detail/region.h"

namespace kelmora {
namespace {

using namespace px;

template <class L, class T, class Value>
PxStatus Set(const Value* values, T* pixels, int step, int width, int height)
{
    if (!values)
        return pxNullPointer;
    if (const PxStatus status = CheckRegions<L, L>(pixels, step, pixels, step, width, height))
        return status;
    Value pixel[L::channels];
    for (int c = 0; c < L::channels; ++c)
        pixel[c] = values[c];
    T* first = pixels;
    for (int x = 0; x < width; ++x, first += L::channels)
        for (int c = 0; c < L::channels; ++c)
            first[c] = pixel[c];
    const std::size_t rowBytes = static_cast<std::size_t>(width) * L::channels * sizeof(T);
    for (int y = 1; y < height; ++y)
        std::memcpy(Row(pixels, step, y), pixels, rowBytes);
    return pxOk;
}

template <class T, class Value>
PxStatus SetChannel(Value value, T* pixels, int step, int width, int height)
{
    if (const PxStatus status = CheckRegions<C4, C4>(pixels, step, pixels, step, width, height))
        return status;
    if constexpr (sizeof(T) == 1) {
        const auto set = ByteKernelsFor(CurrentVariant()).setChannel;
        for (int y = 0; y < height; ++y)
            set(value, Row(pixels, step, y), width);
        return pxOk;
    }
    for (int y = 0; y < height; ++y) {
        T* row = Row(pixels, step, y);
        for (int x = 0; x < width; ++x, row += 4)
            *row = value;
    }
    return pxOk;
}

} // namespace

using u8 = std::uint8_t;

// clang-format off
PxStatus pxSet_8u_C1 (u8 value, u8* p, int step, int w, int h)               { return Set<C1>(&value, p, step, w, h); }
PxStatus pxSet_8u_C4 (const u8 values[4], u8* p, int step, int w, int h)     { return Set<C4>(values, p, step, w, h); }
PxStatus pxSet_32f_C1(float value, float* p, int step, int w, int h)         { return Set<C1>(&value, Loose(p), step, w, h); }
PxStatus pxSet_32f_C4(const float values[4], float* p, int step, int w, int h) { return Set<C4>(values, Loose(p), step, w, h); }

PxStatus pxSetChannel_8u_C4 (u8 value, u8* p, int step, int w, int h)        { return SetChannel(value, p, step, w, h); }
PxStatus pxSetChannel_32f_C4(float value, float* p, int step, int w, int h)  { return SetChannel(value, Loose(p), step, w, h); }
// clang-format on

} // namespace kelmora
