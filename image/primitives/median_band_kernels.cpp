#include "image/primitives/median_band_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(MedianBandKernels, kMedianBandKernels, MedianBandKernelsFor)
