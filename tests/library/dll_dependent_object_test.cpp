#include "library/dll_dependent_object.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

class Dependent final : public DLLDependentObject {
public:
    void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t /*flags*/) override { return this; }
};

TEST(DLLDependentObject, LiveObjectCount_FollowsConstructionAndDestruction)
{
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 0);
    {
        const Dependent first;
        EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 1);
        const Dependent second;
        EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 2);
    }
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 0);
}

TEST(DLLDependentObject, LiveObjectCount_ManyThreads_LosesNone)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 10000; ++round)
                const Dependent object;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 0);
}

TEST(DLLDependentObject, Layout_IsATableAndNothingElse)
{
    EXPECT_EQ(sizeof(Dependent), sizeof(void*));
}

} // namespace
} // namespace kelmora
