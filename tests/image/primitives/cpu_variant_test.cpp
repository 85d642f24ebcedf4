#include "image/primitives/cpu_variant.h"

#include <gtest/gtest.h>

#include "tests/image/variants.h"

namespace kelmora {
namespace {

TEST(CpuVariant, Baseline_IsAlwaysAvailable)
{
    EXPECT_TRUE(IsAvailable(CpuVariant::Baseline));
}

TEST(CpuVariant, CurrentVariant_IsAvailable)
{
    EXPECT_TRUE(IsAvailable(CurrentVariant()));
}

TEST(CpuVariant, UseVariant_SwitchesToWhatIsAvailableOnly)
{
    const KeptVariant kept;
    for (const CpuVariant variant : kAllVariants) {
        const CpuVariant before = CurrentVariant();
        const bool used = UseVariant(variant);
        EXPECT_EQ(used, IsAvailable(variant));
        EXPECT_EQ(CurrentVariant(), used ? variant : before);
    }
}

TEST(CpuVariant, UnknownVariant_IsNotAvailable)
{
    const KeptVariant kept;
    const CpuVariant before = CurrentVariant();
    EXPECT_FALSE(IsAvailable(static_cast<CpuVariant>(77)));
    EXPECT_FALSE(UseVariant(static_cast<CpuVariant>(77)));
    EXPECT_EQ(CurrentVariant(), before);
}

} // namespace
} // namespace kelmora
