#include "image/primitives/float_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(FloatKernels, kFloatKernels, FloatKernelsFor)
