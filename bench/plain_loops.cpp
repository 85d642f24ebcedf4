#include "bench/plain_loops.h"

#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(PlainLoops, kPlainLoops, PlainLoopsFor)
