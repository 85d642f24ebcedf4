#include <atomic>
#include <new>

#include "contract/effect_library.h"
#include "tests/host/fake_library/fake_effect.h"
#include "tests/host/fake_library/fake_processor.h"
#include "tests/host/fake_library/fault.h"

namespace kelmora::fake {
namespace {

std::atomic<std::int32_t> liveLibraries = 0;

class FakeLibrary final : public IEffectLibrary {
public:
    FakeLibrary() { ++liveLibraries; }

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        if (out == nullptr)
            return E_FAIL;
        *out = nullptr;
        if (*interfaceId != IUnknown::id && *interfaceId != IEffectLibrary::id)
            return E_NOINTERFACE;
        *out = static_cast<IEffectLibrary*>(this);
        AddRef();
        return S_OK;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return ++m_count; }
    std::uint32_t KELMORA_CALL Release() override
    {
        const std::uint32_t left = --m_count;
        if (left == 0) {
            --liveLibraries;
            delete this;
        }
        return left;
    }
    const char* KELMORA_CALL GetName() override
    {
        return Breaks("library-without-name") ? nullptr : "Fake Library";
    }
    IVideoEffect* KELMORA_CALL CreateEffect(std::int32_t effectId) override
    {
        if (Breaks("makes-no-effect"))
            return nullptr;
        const std::int32_t number = Breaks("looks-at-low-byte") ? effectId & 0xFF : effectId;
        if (number != EffectColorMelt && number != EffectAirBrush)
            return nullptr;
        return new (std::nothrow) FakeEffect(number == EffectColorMelt);
    }
    void KELMORA_CALL ShowHelp(void*, std::uint32_t) override {}
    void* KELMORA_CALL LibraryReserved() override { return nullptr; }
    IFrameProcessor* KELMORA_CALL CreateFrameProcessor() override { return new (std::nothrow) FakeProcessor; }
    IPresetSaver* KELMORA_CALL CreatePresetSaver() override { return nullptr; }

private:
    ~FakeLibrary() = default;

    std::atomic<std::uint32_t> m_count = 1;
};

} // namespace
} // namespace kelmora::fake

extern "C" {

kelmora::IEffectLibrary* KELMORA_CALL GetEffectsLibrary()
{
    using kelmora::fake::FakeLibrary;
    if (kelmora::fake::Breaks("gives-no-library"))
        return nullptr;
    static FakeLibrary* shared = nullptr;
    if (!kelmora::fake::Breaks("one-library-for-all"))
        return new (std::nothrow) FakeLibrary();
    if (shared == nullptr)
        shared = new (std::nothrow) FakeLibrary();
    else
        shared->AddRef();
    return shared;
}

std::int32_t KELMORA_CALL CanUnloadDLLNow()
{
    if (kelmora::fake::Breaks("always-unload"))
        return 1;
    if (kelmora::fake::Breaks("never-unload"))
        return 0;
    return kelmora::fake::liveLibraries == 0 && kelmora::fake::effectsThatCount == 0 ? 1 : 0;
}
}
