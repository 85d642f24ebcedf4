// Any record, any knob, any render info, a host that is odd or whose memory runs out: every effect, no fault.

#include <cmath>

#include "contract/kelmora.h"
#include "effects/fixing/pixelator.h"
#include "fuzz/input.h"
#include "image/primitives/cpu_variant.h"
#include "library/effect_numbers.h"

namespace kelmora::fuzz {
namespace {

/// How a host answers the question for its memory.
enum class Answer { No, NoButSomething, YesButNothing, Yes };

class Host final : public IVideoHost, public IMemoryProvider {
public:
    explicit Host(Input& input)
        : m_answer(static_cast<Answer>(input.Below(4))), m_refused(input.OneIn(4) ? RefusalsOf(input) : 0)
    {
        // A knob far out of its range may ask for scratch pictures of gigabytes. They are to be refused here; how
        // much memory this machine has is not the question.
        const bool wild = input.OneIn(2);
        if (wild)
            m_answer = Answer::Yes;
        m_silent = input.OneIn(32);
        m_oddKind = input.OneIn(32);
        m_oddStride = input.OneIn(16) ? input.Below(4) : 0;
        m_offset = input.OneIn(16) ? input.Below(16) : 0;
        for (ParamValue& value : m_values) {
            value.value = Word(input, wild);
            value.valueY = Word(input, wild);
        }
    }

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { Require(m_blocks == 0 && m_holders == 1); }

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override
    {
        *out = m_answer == Answer::NoButSomething ? this : nullptr;
        if (*interfaceId != IMemoryProvider::id || m_answer < Answer::YesButNothing)
            return E_NOINTERFACE;
        if (m_answer == Answer::Yes) {
            *out = static_cast<IMemoryProvider*>(this);
            AddRef();
        }
        return S_OK;
    }

    std::uint32_t KELMORA_CALL AddRef() override { return ++m_holders; }
    std::uint32_t KELMORA_CALL Release() override { return --m_holders; }

    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind) override
    {
        if (m_silent)
            return false;
        *out = m_values[knob % kKnobs];
        out->kind = m_oddKind ? knob * 7 : kind;
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
        const int call = std::min(m_calls++, kRefusals - 1);
        *out = nullptr;
        if ((m_refused >> call & 1) != 0 || bytes > most)
            return false;
        auto* const block = new std::uint8_t[bytes + kFront];
        std::memcpy(block, &m_offset, sizeof m_offset);
        *out = block + kFront - m_offset;
        ++m_blocks;
        return true;
    }

    void KELMORA_CALL Free(void* memory) override
    {
        --m_blocks;
        delete[](static_cast<std::uint8_t*>(memory) + m_offset - kFront);
    }

    bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                                 std::int32_t* stride) override
    {
        const std::int32_t row = width * pixelBytes;
        const std::int32_t answers[] = {row, row - 1, 0, -64};
        *stride = answers[m_oddStride];
        return Alloc(out, static_cast<std::uint32_t>(row) * static_cast<std::uint32_t>(height));
    }

    void KELMORA_CALL FreeImage(void* memory) override { Free(memory); }

private:
    static constexpr std::uint32_t kKnobs = 10;  // no effect has more
    static constexpr int kRefusals = 64;         // the last one counts for all that follow
    static constexpr std::ptrdiff_t kFront = 32; // before a block, so that it need not be aligned

    /// A bit for each call that is to fail: one alone, all from one on, or any.
    static std::uint64_t RefusalsOf(Input& input)
    {
        const int kind = input.Below(4);
        if (kind == 3)
            return input.Take<std::uint64_t>();
        const std::uint64_t one = std::uint64_t{1} << input.Below(kRefusals);
        return kind == 2 ? ~(one - 1) : one;
    }

    /// Of a knob: half of them in range; of the others half an edge, half any bits.
    static std::uint32_t Word(Input& input, bool wild)
    {
        constexpr float edges[] = {0.0f, -0.0f, 1.0f, -1.0f, 1.0000001f, 0.99999994f, 1e-30f, 1e30f};
        const int kind = wild ? input.Below(4) : 0;
        if (kind == 2)
            return FloatWord(edges[input.Below(static_cast<int>(std::size(edges)))]);
        if (kind == 3)
            return input.Take<std::uint32_t>();
        return FloatWord(static_cast<float>(input.Take<std::uint8_t>()) / 255.0f);
    }

    Answer m_answer;
    std::uint64_t m_refused;
    bool m_silent = false, m_oddKind = false;
    int m_oddStride = 0;
    std::int32_t m_offset = 0;
    int m_calls = 0, m_blocks = 0;
    std::uint32_t m_holders = 1;
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

/// One that the library gives, or the one that has no number.
IVideoEffect* AnyEffect(Input& input)
{
    static const std::vector<std::int32_t> numbers = EffectNumbers();
    const int choice = input.Below(static_cast<int>(numbers.size()) + 1);
    if (choice == static_cast<int>(numbers.size()))
        return new CFacePixelator;
    return CreateEffectOfNumber(numbers[static_cast<std::size_t>(choice)]);
}

/// A moment that a host may ask for, and now and then one that none should.
double Moment(Input& input, double last)
{
    if (!input.OneIn(8))
        return last * input.Take<std::uint8_t>() / 255.0; // both ends among them
    const auto moment = input.Number<double>(2.0 * last);
    // The way to the frames of a camera that has run for years is walked knot by knot.
    constexpr double longest = 1e5;
    return std::isfinite(moment) ? std::clamp(moment, -longest, longest) : moment;
}

RenderInfo Info(Input& input)
{
    auto info = input.Take<RenderInfo>();
    constexpr double lastSecond = 600.0;
    info.progress = Moment(input, 1.0);
    info.time = Moment(input, lastSecond);
    info.pixelAspect = input.OneIn(2) ? input.Number<double>(2.0) : 1.0;
    return info;
}

void RenderAnything(Input& input)
{
    UseVariant(static_cast<CpuVariant>(input.Below(3)));
    IVideoEffect* const effect = AnyEffect(input);
    Host host(input);
    RenderInfo info = Info(input);
    const int alias = input.Below(16);
    const bool alike = !input.OneIn(3); // one size and format for all three: the usual case
    Picture first(input);
    Picture second = alike ? Picture(input, first) : Picture(input);
    Picture output = alike ? Picture(input, first) : Picture(input);
    if (alias == 1)
        output.Record() = first.Record();
    else if (alias == 2)
        output.Record() = second.Record();
    else if (alias == 3)
        second.Record() = first.Record();
    const VideoFrame firstBefore = first.Record(), secondBefore = second.Record();
    effect->Render(&host, &first.Record(), alias == 4 ? nullptr : &second.Record(), &output.Record(),
                   alias == 5 ? nullptr : &info);
    Require(std::memcmp(&first.Record(), &firstBefore, sizeof firstBefore) == 0);
    Require(std::memcmp(&second.Record(), &secondBefore, sizeof secondBefore) == 0);
    Require(effect->Release() == 0);
}

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelmora::fuzz::Input input(data, size);
    kelmora::fuzz::RenderAnything(input);
    return 0;
}
