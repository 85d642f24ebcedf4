#include "image/primitives/tent_kernels.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(TentKernels, kTentKernels, TentKernelsFor)
