// What the library makes for a host, with each of its allocations refused in turn: an object or null, and nothing lost.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "contract/kelmora.h"
#include "library/dll_dependent_object.h"
#include "library/library_object.h"
#include "tests/support/failing_new.h"

namespace kelmora {
namespace {

struct Factory {
    std::string name;
    std::function<IUnknown*(IEffectLibrary&)> make;
};

std::vector<Factory> Factories()
{
    std::vector<Factory> factories = {
        {"frame processor", [](IEffectLibrary& library) { return library.CreateFrameProcessor(); }},
        {"preset saver", [](IEffectLibrary& library) { return library.CreatePresetSaver(); }},
    };
    for (std::int32_t number = 100; number <= 109; ++number)
        factories.push_back({"effect " + std::to_string(number),
                             [=](IEffectLibrary& library) { return library.CreateEffect(number); }});
    return factories;
}

TEST(AllocationSweep, EveryFactory_GivesNullForEachRefusalAndThenAnObject)
{
    if (!FailingNew::Works())
        GTEST_SKIP() << "operator new belongs to the sanitizer";
    IEffectLibrary* const library = new CKelmora;
    for (const Factory& factory : Factories())
        for (const bool fromThenOn : {false, true}) {
            std::uint64_t n = 0, refused = 1;
            for (; refused != 0; ++n) {
                ASSERT_LT(n, 20u);
                bool isMade = false;
                std::uint32_t left = 0;
                const std::int64_t open = FailingNew::OpenBlocksOfProgram();
                {
                    const FailingNew scope(fromThenOn ? FailingNew::kNever : n,
                                           fromThenOn ? n : FailingNew::kNever);
                    IUnknown* const object = factory.make(*library);
                    refused = scope.Refused();
                    isMade = object != nullptr;
                    left = object ? object->Release() : 0;
                }
                EXPECT_EQ(FailingNew::OpenBlocksOfProgram(), open) << factory.name << ", " << n;
                EXPECT_EQ(isMade, refused == 0) << factory.name << ", " << n;
                EXPECT_EQ(left, 0u) << factory.name;
                EXPECT_EQ(DLLDependentObject::LiveObjectCount(), 1);
            }
            EXPECT_GT(n, 1u) << factory.name << " takes no memory";
        }
    EXPECT_EQ(library->Release(), 0u);
}

} // namespace
} // namespace kelmora
