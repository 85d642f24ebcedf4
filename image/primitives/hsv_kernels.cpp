#include "image/primitives/hsv_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(HsvKernels, kHsvKernels, HsvKernelsFor)
