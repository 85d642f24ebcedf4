#include "image/primitives/filter_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(FilterKernels, kFilterKernels, FilterKernelsFor)
