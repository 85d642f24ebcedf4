#pragma once

#include <stdint.h>

#include "image/primitives/cpu_variant.h"

namespace kelmora {

/// The shortest loops that do an operation's work, as one would write them who trusts the compiler. They are compiled
/// for the same instruction sets as ours, so that what is left between the two is how they are written. `pixels` and
/// `count` are numbers of pixels; pictures have no slack between rows, and none is another one.
struct PlainLoops {
    void (*fillBytes)(uint8_t* dst, int pixels, const uint8_t* colour);
    void (*fillFloats)(float* dst, int pixels, const float* colour);
    void (*copyAlphaBytes)(const uint8_t* src, uint8_t* dst, int pixels);
    void (*copyAlphaFloats)(const float* src, float* dst, int pixels);
    void (*extractAlphaBytes)(const uint8_t* src, uint8_t* dst, int pixels);
    void (*extractAlphaFloats)(const float* src, float* dst, int pixels);
    void (*reverseBytes)(const uint8_t* src, uint8_t* dst, int pixels);
    void (*reverseFloats)(const float* src, float* dst, int pixels);
    void (*toFloats)(const uint8_t* src, float* dst, int pixels);
    void (*toBytes)(const float* src, uint8_t* dst, int pixels);
    void (*weightedBytes)(const uint8_t* a, const uint8_t* b, uint8_t* dst, int pixels, int wa, int wb);
    void (*weightedFloats)(const float* a, const float* b, float* dst, int pixels, float wa, float wb);
    void (*mixBytes)(const uint8_t* a, uint8_t* b, int pixels, int wa, int wb);
    void (*mixFloats)(const float* a, float* b, int pixels, float wa, float wb);
    void (*averageBytes)(const uint8_t* a, uint8_t* b, int pixels);
    void (*addFloats)(const float* a, float* b, int pixels);
    void (*scaleBytes)(uint8_t* picture, int pixels, const uint8_t* scale);
    void (*premultiplyBytes)(const uint8_t* src, uint8_t* dst, int pixels);
    void (*premultiplyFloats)(const float* src, float* dst, int pixels);
    void (*overBytes)(const uint8_t* a, const uint8_t* b, uint8_t* dst, int pixels);
    void (*overFloats)(const float* a, const float* b, float* dst, int pixels);
    void (*overPremultipliedBytes)(const uint8_t* a, const uint8_t* b, uint8_t* dst, int pixels);
    void (*overPremultipliedFloats)(const float* a, const float* b, float* dst, int pixels);
    void (*twistBytes)(const uint8_t* src, uint8_t* dst, int pixels, const float (*twist)[4]);
    void (*twistFloats)(const float* src, float* dst, int pixels, const float (*twist)[4]);
    void (*tintBytes)(const uint8_t* src, uint8_t* dst, int pixels, const float* colour);
    void (*tintFloats)(const float* src, float* dst, int pixels, const float* colour);
    void (*hsvBytes)(const uint8_t* src, uint8_t* dst, int pixels);
    void (*sharpenRow)(const uint8_t* middle, uint8_t* dst, int pixels, int step);
    void (*filterRowBytes)(const uint8_t* src, uint8_t* dst, int pixels, const float* taps, int count);
    void (*filterRowFloats)(const float* src, float* dst, int pixels, const float* taps, int count);
};

/// The loops as compiled for `variant`.
const PlainLoops& PlainLoopsFor(CpuVariant variant);

} // namespace kelmora
