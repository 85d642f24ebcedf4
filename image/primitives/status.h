#pragma once

#include <cstdint>

namespace kelmora {

/// What a primitive says: 0 for success. Negative: nothing was written.
enum PxStatus : std::int32_t {
    pxOk = 0,
    pxBadSize = -6,             ///< width, height or a kernel's size is below 1
    pxNullPointer = -8,         ///< a required pointer is null
    pxNoMemory = -9,            ///< no memory for working space
    pxSeedOutside = -11,        ///< the seed point lies outside the picture
    pxBadStep = -14,            ///< a step is too small for the region
    pxBadInterpolation = -22,   ///< the interpolation code is unknown
    pxBadFactor = -23,          ///< a resize factor is not positive
    pxBadMask = -33,            ///< the mask's size is not supported
    pxBadAnchor = -34,          ///< the anchor lies outside the mask
    pxZeroDivisor = -51,        ///< the divisor is 0
    pxDegenerateWarp = -56,     ///< the warp's coefficients are degenerate
    pxEmptyQuadRect = -57,      ///< the quadrangle's rectangle is empty
    pxDegenerateQuad = -58,     ///< the quadrangle is not convex or is degenerate
    pxBadChannelOrder = -60,    ///< a channel order value lies outside 0 to 3
    pxResultTooSmall = -201,    ///< the resized picture would be smaller than one pixel
    pxRegionOutsideSource = 29, ///< a warning: the region lies outside the source and nothing was done
};

} // namespace kelmora
