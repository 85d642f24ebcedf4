#include <array>
#include <limits>
#include <random>
#include <utility>

#include "host/checks/check.h"
#include "host/held.h"
#include "platform/module.h"

namespace kelmora::host {
namespace {

void ExportsPresent(CheckRun& run)
{
    std::string reason;
    const platform::Module module = platform::Module::LoadFile(run.File().c_str(), &reason);
    if (!run.Expect(static_cast<bool>(module), "the file does not load: " + reason))
        return;
    for (const char* const name : {"GetEffectsLibrary", "CanUnloadDLLNow"})
        run.Expect(module.Symbol(name) != nullptr, std::string(name) + " is not exported");
}

void LibraryIsNamed(CheckRun& run)
{
    const LibraryFile file(run.File());
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const char* const name = library->GetName();
    if (name == nullptr) {
        run.Expect(false, "the library has no name");
        return;
    }
    const std::string text = name;
    run.Expect(!text.empty(), "the library's name is empty");
    run.Expect(text.size() < PresetData::kNameBytes, "the library's name does not fit into a saved preset");
}

void CountAndUnload(CheckRun& run)
{
    const LibraryFile file(run.File());
    run.Expect(file.CanUnload() == 1, "CanUnloadDLLNow should give 1 for a fresh file");
    Held<IEffectLibrary> first = file.MakeLibrary();
    run.Expect(file.CanUnload() == 0, "CanUnloadDLLNow should give 0 with a library object");
    Held<IEffectLibrary> second = file.MakeLibrary();
    run.Expect(first != second, "every GetEffectsLibrary should make an object of its own");

    const std::vector<std::int32_t> numbers = EffectNumbers(*second);
    Held<IVideoEffect> effect;
    if (!numbers.empty())
        effect = MakeEffect(*second, numbers.front());
    first.reset();
    run.Expect(file.CanUnload() == 0, "CanUnloadDLLNow should give 0 with one of two library objects left");
    run.Expect(second.release()->Release() == 0, "the last Release of a library should give 0");
    run.Expect(file.CanUnload() == 1,
               "CanUnloadDLLNow should give 1 without library objects, effects or not");
    run.Expect(effect == nullptr || effect->GetName() != nullptr,
               "an effect should outlive its library object");
}

void UnknownNumberIsNull(CheckRun& run)
{
    const LibraryFile file(run.File());
    const Held<IEffectLibrary> library = file.MakeLibrary();
    std::vector<std::int32_t> numbers = {kFirstEffect - 1,
                                         kLastEffect + 1,
                                         0,
                                         -1,
                                         kFirstEffect + 0x100,
                                         kFirstEffect + 0x10000,
                                         -kFirstEffect,
                                         std::numeric_limits<std::int32_t>::min(),
                                         std::numeric_limits<std::int32_t>::max()};
    std::mt19937 engine(run.Seed());
    for (int i = 0; i < 1000; ++i) {
        const auto number = static_cast<std::int32_t>(engine());
        if (number < kFirstEffect || number > kLastEffect)
            numbers.push_back(number);
    }
    for (const std::int32_t number : numbers) {
        const Held<IVideoEffect> effect(library->CreateEffect(number));
        run.Expect(effect == nullptr, "CreateEffect(" + std::to_string(number) + ") should give null");
    }
}

constexpr std::array kChecks = {
    Check{"exports-present", "The file exports both functions by their bare names.", ExportsPresent},
    Check{"library-has-a-name", "The library's name is there and fits into a saved preset.", LibraryIsNamed},
    Check{"library-count-and-unload", "The file may be unloaded exactly while no library object lives.",
          CountAndUnload},
    Check{"unknown-number-is-null", "Numbers of no effect give no object.", UnknownNumberIsNull},
};

} // namespace

constinit const std::span<const Check> kLibraryChecks = kChecks;

} // namespace kelmora::host
