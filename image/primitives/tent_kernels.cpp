#include "image/primitives/tent_kernels.h"

namespace kelmora {

namespace baseline {
extern const TentKernels kTentKernels;
}
#ifdef KELMORA_HAVE_AVX_VARIANTS
namespace avx2 {
extern const TentKernels kTentKernels;
}
namespace avx512 {
extern const TentKernels kTentKernels;
}
#endif

const TentKernels& TentKernelsFor(CpuVariant variant)
{
#ifdef KELMORA_HAVE_AVX_VARIANTS
    switch (variant) {
    case CpuVariant::Avx512:
        return avx512::kTentKernels;
    case CpuVariant::Avx2:
        return avx2::kTentKernels;
    case CpuVariant::Baseline:
        break;
    }
#endif
    (void)variant;
    return baseline::kTentKernels;
}

} // namespace kelmora
