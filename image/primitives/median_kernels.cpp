#include "image/primitives/median_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(MedianKernels, kMedianKernels, MedianKernelsFor)
