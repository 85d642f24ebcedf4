#include "tests/endurance/plain_host.h"

#include <cstdlib>

namespace kelmora {

void PlainHost::Show(IVideoEffect& effect, std::uint32_t preset)
{
    m_effect = &effect;
    m_preset = preset;
}

void PlainHost::Provide(bool provides, std::uint64_t refuse)
{
    m_provides = provides;
    m_refuse = refuse;
    m_asked = 0;
}

std::int32_t PlainHost::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    *out = m_provides && *interfaceId == IMemoryProvider::id ? static_cast<IMemoryProvider*>(this) : nullptr;
    return *out ? S_OK : E_NOINTERFACE;
}

bool PlainHost::GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind)
{
    return m_effect->GetPresetValue(m_preset, knob, out);
}

HostInfo* PlainHost::GetHostInfo(HostInfo* result)
{
    *result = {};
    return result;
}

bool PlainHost::Alloc(void** out, std::uint32_t bytes)
{
    const bool refuses = m_asked++ == m_refuse;
    m_refused += refuses;
    *out = refuses ? nullptr : std::malloc(bytes);
    m_openBlocks += *out != nullptr;
    return *out != nullptr;
}

void PlainHost::Free(void* memory)
{
    m_openBlocks -= memory != nullptr;
    std::free(memory);
}

bool PlainHost::AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                           std::int32_t* stride)
{
    *stride = width * pixelBytes;
    return Alloc(out, static_cast<std::uint32_t>(*stride) * static_cast<std::uint32_t>(height));
}

} // namespace kelmora
