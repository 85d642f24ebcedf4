#pragma once

#include "image/primitives/cpu_variant.h"

// KELMORA_VARIANT_TABLE(Kernels, kKernels, KernelsFor): the function that picks among the tables `kKernels`, of
// type Kernels, that a source which is compiled once per instruction set defines in that set's namespace.
#ifdef KELMORA_HAVE_AVX_VARIANTS
#define KELMORA_VARIANT_TABLE(Kernels, kKernels, KernelsFor)                                                 \
    namespace kelmora::baseline {                                                                            \
    extern const Kernels kKernels;                                                                           \
    }                                                                                                        \
    namespace kelmora::avx2 {                                                                                \
    extern const Kernels kKernels;                                                                           \
    }                                                                                                        \
    namespace kelmora::avx512 {                                                                              \
    extern const Kernels kKernels;                                                                           \
    }                                                                                                        \
    const kelmora::Kernels& kelmora::KernelsFor(CpuVariant variant)                                          \
    {                                                                                                        \
        switch (variant) {                                                                                   \
        case CpuVariant::Avx512:                                                                             \
            return avx512::kKernels;                                                                         \
        case CpuVariant::Avx2:                                                                               \
            return avx2::kKernels;                                                                           \
        case CpuVariant::Baseline:                                                                           \
            break;                                                                                           \
        }                                                                                                    \
        return baseline::kKernels;                                                                           \
    }
#else
#define KELMORA_VARIANT_TABLE(Kernels, kKernels, KernelsFor)                                                 \
    namespace kelmora::baseline {                                                                            \
    extern const Kernels kKernels;                                                                           \
    }                                                                                                        \
    const kelmora::Kernels& kelmora::KernelsFor(CpuVariant)                                                  \
    {                                                                                                        \
        return baseline::kKernels;                                                                           \
    }
#endif
