#include "image/primitives/warp_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(WarpKernels, kWarpKernels, WarpKernelsFor)
