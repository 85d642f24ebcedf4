#include "effects/fixing/unsharp_kernels.h"

#include <gtest/gtest.h>

namespace kelmora {
namespace {

TEST(UnsharpKernels, ByteGain_MultipliesTheHighByteAndShifts)
{
    EXPECT_EQ((ByteGain{0, 0, 7}(255)), 0);
    EXPECT_EQ((ByteGain{256 * 128, 0, 7}(255)), 255); // (v * 256 * 2^15 >> 16) >> 7 = v
    EXPECT_EQ((ByteGain{256 * 64, 0, 7}(255)), 127);
    EXPECT_EQ((ByteGain{256 * 64, 127, 7}(255)), 128); // the offset rounds up
}

TEST(UnsharpKernels, UnsharpKernelsFor_AnyVariant_HasBothLoops)
{
    for (const CpuVariant variant : {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512}) {
        EXPECT_NE(UnsharpKernelsFor(variant).bytes, nullptr);
        EXPECT_NE(UnsharpKernelsFor(variant).floats, nullptr);
    }
}

} // namespace
} // namespace kelmora
