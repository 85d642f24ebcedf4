#include "host/strict_host.h"

#include "contract/memory_provider.h"

namespace kelmora::host {

void StrictHost::EndRender()
{
    m_isOver = true;
    if (m_references != 1)
        m_rules.Broken("a reference to the host was not given back");
}

void StrictHost::NoteCall(const char* call) noexcept
{
    try {
        if (m_isOver)
            m_rules.Broken(std::string("the host was called after the render: ") + call);
        if (std::this_thread::get_id() != m_thread)
            m_rules.Broken(std::string("the host was called from another thread: ") + call);
    } catch (...) { // out of memory: nothing can be told any more
    }
}

void StrictHost::NoteReserved(const char* call) noexcept
{
    try {
        NoteCall(call);
        m_rules.Broken(std::string("a place kept in the table was called: ") + call);
    } catch (...) { // as above
    }
}

std::int32_t StrictHost::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    NoteCall("QueryInterface");
    if (out == nullptr || interfaceId == nullptr) {
        m_rules.Broken("QueryInterface was called without an id or a place");
        return E_FAIL;
    }
    *out = nullptr;
    if (*interfaceId == IUnknown::id || *interfaceId == IVideoHost::id) {
        *out = static_cast<IVideoHost*>(this);
        AddRef();
        return S_OK;
    }
    if (*interfaceId != IMemoryProvider::id)
        return E_NOINTERFACE;
    ++m_memoryAsked;
    return m_memory != nullptr ? m_memory->QueryInterface(interfaceId, out) : E_NOINTERFACE;
}

std::uint32_t StrictHost::AddRef()
{
    NoteCall("AddRef");
    return ++m_references;
}

std::uint32_t StrictHost::Release()
{
    NoteCall("Release");
    if (m_references == 1) {
        m_rules.Broken("the host was released once too often");
        return 1;
    }
    return --m_references;
}

bool StrictHost::GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind)
{
    NoteCall("GetParamValue");
    ++m_knobsAsked;
    if (out == nullptr) {
        m_rules.Broken("a knob was asked for without a place for the answer");
        return false;
    }
    out->kind = kind;
    if (knob >= m_knobs.size()) {
        m_rules.Broken("a knob was asked for that the effect does not describe");
        return false;
    }
    if (kind != m_knobs[knob].kind)
        m_rules.Broken("a knob was asked for with another kind than it is described with");
    out->value = m_knobs[knob].value;
    out->valueY = m_knobs[knob].valueY;
    return true;
}

bool StrictHost::HostReserved4(std::uint32_t, std::uint32_t, std::uint8_t)
{
    NoteReserved("HostReserved4");
    return false;
}

std::uint32_t StrictHost::HostReserved5(std::uint32_t, std::uint32_t)
{
    NoteReserved("HostReserved5");
    return 0;
}

bool StrictHost::HostReserved6(std::uint32_t, std::uint32_t)
{
    NoteReserved("HostReserved6");
    return false;
}

void StrictHost::HostReserved7(std::uint32_t, std::uint32_t)
{
    NoteReserved("HostReserved7");
}

HostInfo* StrictHost::GetHostInfo(HostInfo* result)
{
    NoteCall("GetHostInfo");
    if (result != nullptr)
        *result = {"kelmora", {0, 0, 0}};
    return result;
}

} // namespace kelmora::host
