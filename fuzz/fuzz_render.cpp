// Any record, any knob, any render info, a host whose memory runs out: every effect, no fault.

#include "contract/kelmora.h"
#include "fuzz/input.h"
#include "image/primitives/cpu_variant.h"
#include "library/effect_numbers.h"

namespace kelmora::fuzz {
namespace {

class Host final : public IVideoHost, public IMemoryProvider {
public:
    explicit Host(Input& input) : m_provides(input.Below(2) != 0), m_refused(input.Take<std::uint8_t>())
    {
        for (ParamValue& value : m_values) {
            const int kind = input.Below(8);
            const float level = static_cast<float>(input.Take<std::uint8_t>()) / 255.0f;
            value.value = kind < 6 ? FloatWord(level) : input.Take<std::uint32_t>();
            // A knob far out of its range may ask for scratch pictures of gigabytes. They are to be refused here;
            // how much memory this machine has is not the question.
            m_provides = m_provides || kind >= 6;
        }
    }

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        *out =
            m_provides && *interfaceId == IMemoryProvider::id ? static_cast<IMemoryProvider*>(this) : nullptr;
        return *out ? S_OK : E_NOINTERFACE;
    }

    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }

    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override
    {
        *out = m_values[knob % kKnobs];
        out->kind = kind;
        return true;
    }

    bool KELMORA_CALL HostReserved4(std::uint32_t, std::uint32_t, std::uint8_t) override { return false; }
    std::uint32_t KELMORA_CALL HostReserved5(std::uint32_t, std::uint32_t) override { return 0; }
    bool KELMORA_CALL HostReserved6(std::uint32_t, std::uint32_t) override { return false; }
    void KELMORA_CALL HostReserved7(std::uint32_t, std::uint32_t) override {}

    HostInfo* KELMORA_CALL GetHostInfo(HostInfo* result) override
    {
        *result = {};
        return result;
    }

    bool KELMORA_CALL Alloc(void** out, std::uint32_t bytes) override
    {
        constexpr std::uint32_t most = 64u << 20;
        *out = m_calls++ == m_refused || bytes > most ? nullptr : new std::uint8_t[bytes];
        return *out != nullptr;
    }

    void KELMORA_CALL Free(void* memory) override { delete[] static_cast<std::uint8_t*>(memory); }

    bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                                 std::int32_t* stride) override
    {
        *stride = width * pixelBytes;
        return Alloc(out, static_cast<std::uint32_t>(*stride) * static_cast<std::uint32_t>(height));
    }

    void KELMORA_CALL FreeImage(void* memory) override { Free(memory); }

private:
    bool m_provides;
    int m_refused, m_calls = 0;
    static constexpr std::uint32_t kKnobs = 10; // no effect has more
    ParamValue m_values[kKnobs] = {};
};

/// The numbers for which the library makes an effect.
std::vector<std::int32_t> EffectNumbers()
{
    std::vector<std::int32_t> numbers;
    for (std::int32_t number = Effect3DConfetti; number <= EffectWaterColor; ++number) {
        if (IVideoEffect* const effect = CreateEffectOfNumber(number)) {
            effect->Release();
            numbers.push_back(number);
        }
    }
    return numbers;
}

/// A moment that a host may ask for, and now and then one that none should.
double Moment(Input& input, double last)
{
    if (input.Below(8) == 0)
        return input.Take<double>();
    return last * input.Take<std::uint8_t>() / 255.0; // both ends among them
}

RenderInfo Info(Input& input)
{
    auto info = input.Take<RenderInfo>();
    constexpr double lastSecond = 600.0;
    info.progress = Moment(input, 1.0);
    info.time = Moment(input, lastSecond);
    return info;
}

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    fuzz::Input input(data, size);
    UseVariant(static_cast<CpuVariant>(input.Below(3)));
    static const std::vector<std::int32_t> numbers = fuzz::EffectNumbers();
    IVideoEffect* const effect = CreateEffectOfNumber(
        numbers[static_cast<std::size_t>(input.Below(static_cast<int>(numbers.size())))]);
    fuzz::Host host(input);
    RenderInfo info = fuzz::Info(input);
    const int alias = input.Below(8);
    const bool alike = input.Below(2) != 0; // one size and format for all three: the usual case
    fuzz::Picture first(input);
    fuzz::Picture second = alike ? fuzz::Picture(input, first) : fuzz::Picture(input);
    fuzz::Picture output = alike ? fuzz::Picture(input, first) : fuzz::Picture(input);
    if (alias == 0)
        output.Record() = first.Record();
    else if (alias == 2)
        output.Record() = second.Record();
    else if (alias == 3)
        second.Record() = first.Record();
    effect->Render(&host, &first.Record(), alias == 1 ? nullptr : &second.Record(), &output.Record(), &info);
    effect->Release();
    return 0;
}
