#include "image/primitives/convert_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(ConvertKernels, kConvertKernels, ConvertKernelsFor)
