#include <array>
#include <random>
#include <string>
#include <vector>

#include "contract/kelmora.h"
#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"

namespace kelmora::host {
namespace {

struct NamedId {
    const char* name;
    InterfaceId id;
};

constexpr std::array kInterfaces = {
    NamedId{"IUnknown", IUnknown::id},
    NamedId{"IVideoEffect", IVideoEffect::id},
    NamedId{"IVideoHost", IVideoHost::id},
    NamedId{"IParamToolTip", IParamToolTip::id},
    NamedId{"IMemoryProvider", IMemoryProvider::id},
    NamedId{"IFrameProcessor", IFrameProcessor::id},
    NamedId{"IPresetSaver", IPresetSaver::id},
    NamedId{"IEffectLibrary", IEffectLibrary::id},
    NamedId{"IMultiLingual", IMultiLingual::id},
};

/// Asks `object` for an interface, with something in the place of the answer. Null when it was refused; a
/// finding when the answer contradicts itself.
Held<IUnknown> Ask(CheckRun& run, IUnknown& object, const NamedId& wanted)
{
    int marker = 0;
    void* out = &marker;
    const std::int32_t code = object.QueryInterface(&wanted.id, &out);
    const bool isGiven = code == S_OK;
    run.Expect(isGiven || code == E_NOINTERFACE,
               std::string("the answer for ") + wanted.name + " should be S_OK or E_NOINTERFACE");
    run.Expect(out != &marker, std::string("the answer for ") + wanted.name + " should be stored");
    if (out == &marker)
        return nullptr;
    run.Expect(isGiven == (out != nullptr),
               std::string("the code and the pointer for ") + wanted.name + " should agree");
    return Held<IUnknown>(isGiven ? static_cast<IUnknown*>(out) : nullptr);
}

/// What the object counts now, seen from outside.
std::uint32_t Count(IUnknown& object)
{
    object.AddRef();
    return object.Release();
}

/// One kind of object that the library makes: its own interface and how to make one.
struct Kind {
    std::string name;
    NamedId own;
    std::function<IUnknown*()> make;
};

/// Calls `look` for a new object of each kind. Kinds that the library does not make are left out.
void ForEachObject(CheckRun& run, const std::function<void(const Kind& kind, IUnknown* object)>& look)
{
    const LibraryFile file(run.File());
    const Held<IEffectLibrary> library = file.MakeLibrary();
    std::vector<Kind> kinds = {
        {"library", {"IEffectLibrary", IEffectLibrary::id}, [&file] { return file.MakeLibrary().release(); }},
        {"frame processor",
         {"IFrameProcessor", IFrameProcessor::id},
         [&library] { return library->CreateFrameProcessor(); }},
        {"preset saver",
         {"IPresetSaver", IPresetSaver::id},
         [&library] { return library->CreatePresetSaver(); }},
    };
    for (const std::int32_t number : EffectNumbers(*library)) {
        kinds.push_back({"effect " + std::to_string(number),
                         {"IVideoEffect", IVideoEffect::id},
                         [&library, number] { return library->CreateEffect(number); }});
    }
    for (const Kind& kind : kinds) {
        run.At(kind.name);
        if (IUnknown* const object = kind.make())
            look(kind, object);
    }
}

void LookAtViews(CheckRun& run, const Kind& kind, IUnknown& object)
{
    const Held<IUnknown> identity = Ask(run, object, kInterfaces[0]);
    if (!run.Expect(identity != nullptr, "the object should be an IUnknown"))
        return;
    run.Expect(Ask(run, object, kind.own) != nullptr,
               std::string("the object should be an ") + kind.own.name);
    for (const NamedId& wanted : kInterfaces) {
        const Held<IUnknown> view = Ask(run, object, wanted);
        const Held<IUnknown> again = Ask(run, object, wanted);
        run.Expect(view == again, std::string("two answers for ") + wanted.name + " should be the same");
        if (view == nullptr)
            continue;
        run.Expect(Ask(run, *view, kInterfaces[0]) == identity,
                   std::string("the IUnknown of the view as ") + wanted.name + " should be the object's");
        run.Expect(Ask(run, *view, wanted) == view, std::string(wanted.name) + " should give itself");
    }
}

void LookAtRefusals(CheckRun& run, IUnknown& object)
{
    std::mt19937 engine(run.Seed());
    for (int i = 0; i < 50; ++i) {
        NamedId unknown = {"a random id", {}};
        unknown.id.data1 = static_cast<std::uint32_t>(engine());
        unknown.id.data2 = static_cast<std::uint16_t>(engine());
        run.Expect(Ask(run, object, unknown) == nullptr, "an unknown interface should be refused");
    }
    for (const NamedId& known : kInterfaces) {
        // All 16 bytes count: one bit of the last one makes another interface.
        NamedId other = {"an id with one bit changed", known.id};
        other.id.data4[7] ^= 1;
        run.Expect(Ask(run, object, other) == nullptr, "an interface with one bit changed should be refused");
    }
    for (const NamedId& known : kInterfaces)
        run.Expect(object.QueryInterface(&known.id, nullptr) == E_FAIL,
                   "without a place the answer should be E_FAIL");
}

void AskedTwiceIsSame(CheckRun& run)
{
    ForEachObject(run, [&run](const Kind& kind, IUnknown* made) {
        const Held<IUnknown> object(made);
        LookAtViews(run, kind, *object);
        LookAtRefusals(run, *object);
    });
}

void LookAtCounts(CheckRun& run, IUnknown* object)
{
    run.Expect(Count(*object) == 1, "a new object should have a count of 1");
    run.Expect(object->AddRef() == 2, "AddRef should give 2 the first time");
    run.Expect(object->AddRef() == 3, "AddRef should give 3 the second time");
    run.Expect(object->Release() == 2, "Release should give 2 after that");
    run.Expect(object->Release() == 1, "Release should give 1 after that");
    for (const NamedId& wanted : kInterfaces) {
        const std::uint32_t before = Count(*object);
        const Held<IUnknown> view = Ask(run, *object, wanted);
        const std::uint32_t added = view != nullptr ? 1 : 0;
        run.Expect(Count(*object) == before + added,
                   std::string("the answer for ") + wanted.name
                       + " should count one if it is given, else none");
        if (view != nullptr) {
            view->AddRef();
            run.Expect(Count(*object) == before + 2,
                       std::string(wanted.name) + " should count on the same counter");
            view->Release();
        }
        static_cast<void>(object->QueryInterface(&wanted.id, nullptr));
        run.Expect(Count(*object) == before + added, "an answer without a place should count nothing");
    }
}

void CountsBalance(CheckRun& run)
{
    ForEachObject(run, [&run](const Kind&, IUnknown* object) {
        LookAtCounts(run, object);
        run.Expect(object->Release() == 0, "the last Release should give 0");
    });
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        Held<IVideoEffect> effect = MakeEffect(library, face.number);
        constexpr std::int32_t kSide = 16;
        RenderCase(run, *effect, CaseFor(face, kSide, kSide, PF_BGRA8));
        run.Expect(Count(*effect) == 1, "a render should leave the count");
        run.Expect(effect.release()->Release() == 0, "the last Release after a render should give 0");
    });
}

constexpr std::array kChecks = {
    Check{"interface-asked-twice-is-same",
          "Every object gives one view per interface and refuses all others.", AskedTwiceIsSame},
    Check{"reference-counts-balance", "Every view of an object counts on the object's one counter.",
          CountsBalance},
};

} // namespace

constinit const std::span<const Check> kObjectChecks = kChecks;

} // namespace kelmora::host
