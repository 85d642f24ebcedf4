#include "image/primitives/byte_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(ByteKernels, kByteKernels, ByteKernelsFor)
