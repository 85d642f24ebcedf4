#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tests/effects/pictures_as_plain.h"

namespace kelmora {

// What the tests of the transitions in space share.

inline GuardedPicture Noisy(std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t seed,
                            const PictureLayout& layout = {})
{
    GuardedPicture picture(width, height, format, layout);
    picture.FillNoise(seed);
    return picture;
}

/// Renders over `before`, which is not changed; `second` may be null.
inline GuardedPicture RenderedOver(const GuardedPicture& before, EffectClass which,
                                   const std::vector<float>& levels, const GuardedPicture& in,
                                   const GuardedPicture* second, double progress)
{
    GuardedPicture out = before;
    Moment moment;
    moment.second = second;
    moment.progress = progress;
    RenderFresh(which, levels, moment, in, out);
    return out;
}

/// Over noise, in the first picture's size.
inline GuardedPicture Rendered(EffectClass which, const std::vector<float>& levels, const GuardedPicture& in,
                               const GuardedPicture& second, double progress)
{
    return RenderedOver(Noisy(in.Width(), in.Height(), in.Format(), 99), which, levels, in, &second,
                        progress);
}

/// A picture's pixel as it lies in memory.
inline std::vector<std::uint8_t> PixelAt(const GuardedPicture& picture, int x, int y)
{
    const std::uint8_t* const pixel = picture.Row(y) + x * picture.PixelBytes();
    return {pixel, pixel + picture.PixelBytes()};
}

/// A host that never asks for memory, so that a test can refuse all that is asked for during a render.
class QuietHost final : public IVideoHost {
public:
    explicit QuietHost(std::vector<ParamValue> knobs) : m_knobs(std::move(knobs)) {}

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId*, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    std::uint32_t KELMORA_CALL AddRef() override { return 2; }
    std::uint32_t KELMORA_CALL Release() override { return 1; }
    bool KELMORA_CALL GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind) override
    {
        if (knob >= m_knobs.size())
            return false;
        *out = m_knobs[knob];
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

private:
    std::vector<ParamValue> m_knobs;
};

} // namespace kelmora
