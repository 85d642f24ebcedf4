#include "image/primitives/row_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(RowKernels, kRowKernels, RowKernelsFor)
