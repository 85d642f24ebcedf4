#pragma once

#include "image/primitives/cpu_variant.h"

namespace kelmora {

inline constexpr CpuVariant kAllVariants[] = {CpuVariant::Baseline, CpuVariant::Avx2, CpuVariant::Avx512};

/// Brings the variant in use back at the end of a test.
class KeptVariant {
public:
    KeptVariant() : m_variant(CurrentVariant()) {}
    ~KeptVariant() { UseVariant(m_variant); }
    KeptVariant(const KeptVariant&) = delete;
    KeptVariant& operator=(const KeptVariant&) = delete;

private:
    CpuVariant m_variant;
};

/// Calls check() with each variant that this machine runs.
template <class Check>
void ForEachVariant(Check&& check)
{
    const KeptVariant kept;
    for (const CpuVariant variant : kAllVariants)
        if (UseVariant(variant))
            check();
}

} // namespace kelmora
