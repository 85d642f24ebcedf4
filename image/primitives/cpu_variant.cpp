#include "image/primitives/cpu_variant.h"

#include <atomic>

namespace kelmora {
namespace {

// -1: not chosen yet. Choosing twice gives the same answer, so no lock is needed.
constinit std::atomic<int> g_variant{-1};

CpuVariant Newest()
{
    if (IsAvailable(CpuVariant::Avx512))
        return CpuVariant::Avx512;
    if (IsAvailable(CpuVariant::Avx2))
        return CpuVariant::Avx2;
    return CpuVariant::Baseline;
}

} // namespace

bool IsAvailable(CpuVariant variant)
{
#ifdef KELMORA_HAVE_AVX_VARIANTS
    switch (variant) {
    case CpuVariant::Avx512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
            && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    case CpuVariant::Avx2:
        return __builtin_cpu_supports("avx2");
    case CpuVariant::Baseline:
        break;
    }
#endif
    return variant == CpuVariant::Baseline;
}

CpuVariant CurrentVariant()
{
    int variant = g_variant.load(std::memory_order_relaxed);
    if (variant < 0) {
        variant = static_cast<int>(Newest());
        g_variant.store(variant, std::memory_order_relaxed);
    }
    return static_cast<CpuVariant>(variant);
}

bool UseVariant(CpuVariant variant)
{
    if (!IsAvailable(variant))
        return false;
    g_variant.store(static_cast<int>(variant), std::memory_order_relaxed);
    return true;
}

} // namespace kelmora
