#include "image/primitives/resize_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(ResizeKernels, kResizeKernels, ResizeKernelsFor)
