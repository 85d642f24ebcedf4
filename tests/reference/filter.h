#pragma once

#include <cstdint>
#include <vector>

#include "tests/reference/picture.h"

namespace kelmora::reference {

/// How a byte filter's sum becomes a byte.
///   divisor 1             saturation
///   a power of two        to nearest, ties to even, then saturation
///   any other divisor     times the double 1 / divisor; 255 and more give 255, 0.5 and less give 0, the
///                         rest goes to nearest, ties to even
int ByteFromSum(std::int64_t sum, int divisor);

/// How the loops for alpha-first bytes do it: division toward zero, none by 0, then saturation.
int ByteFromSumTruncating(std::int64_t sum, int divisor);

/// The direction of a kernel.
enum class Axis { Row, Column };

/// One value of a convolution, not finished: sum over j of kernel[j] * src(x + anchor - j, y), or along y.
/// Integer kernels serve bytes, float kernels floats, and sums of these are made in double.
std::int64_t SumAt(const Picture& src, Axis axis, int x, int y, int c, const std::vector<int>& kernel,
                   int anchor);
double SumAt(const Picture& src, Axis axis, int x, int y, int c, const std::vector<float>& kernel,
             int anchor);

/// A filter over whole pictures: which part of them, and how it finishes.
template <class Tap>
struct FilterStep {
    Axis axis = Axis::Row;
    std::vector<Tap> kernel;
    int anchor = 0;
    int margin = 0; ///< across the kernel
    int divisor = 1;
    bool withAlpha = true;
    bool forward = false; ///< the alpha-first loops: taps forward, bytes toward zero, alpha copied
};

/// False, and nothing written, where no pixel is left to filter.
bool Filter(const Picture& src, Picture& dst, const FilterStep<int>& step);
bool Filter(const Picture& src, Picture& dst, const FilterStep<float>& step);

/// `src`, or its middle when it has the size of `dst` or is the same memory, placed at the margins in `dst`
/// and its edge pixels extended to every side. False, and nothing written, when no middle is left or it
/// does not fit.
bool ExtendBorder(const Picture& src, Picture& dst, int marginX, int marginY, bool sameMemory);

} // namespace kelmora::reference
