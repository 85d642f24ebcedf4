#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <utility>

namespace kelmora {
namespace {

// An address that no program has.
void* Garbage()
{
    return reinterpret_cast<void*>(std::uintptr_t{0x10});
}

} // namespace

void PrintTo(const KnobRead& read, std::ostream* out)
{
    *out << "knob " << read.knob << " kind " << static_cast<std::uint32_t>(read.kind);
}

FakeHost::~FakeHost()
{
    EXPECT_EQ(m_references, 1u) << "references to the host are left";
}

void FakeHost::SetKnob(std::size_t knob, const ParamValue& value)
{
    if (knob >= m_knobs.size())
        m_knobs.resize(knob + 1);
    m_knobs[knob] = value;
}

void FakeHost::SetMemory(FakeMemoryProvider* memory)
{
    m_memory = memory;
    m_providerAnswer = memory ? ProviderAnswer::Give : ProviderAnswer::Refuse;
}

void FakeHost::BeginRender()
{
    m_isOver = false;
    m_reads.clear();
    m_queries.clear();
    m_otherCalls.clear();
}

void FakeHost::EndRender()
{
    EXPECT_EQ(m_references, 1u) << "references to the host are left after the render";
    m_isOver = true;
}

void FakeHost::Expect(const char* call)
{
    if (m_isOver)
        ADD_FAILURE() << call << " after the end of the render";
}

void FakeHost::NoteReserved(const std::string& call)
{
    m_otherCalls.push_back(call);
    if (!m_acceptsReserved)
        ADD_FAILURE() << "a kept place was called: " << call;
}

std::int32_t FakeHost::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    Expect("QueryInterface");
    if (!interfaceId || !out) {
        ADD_FAILURE() << "QueryInterface with a null argument";
        return E_FAIL;
    }
    m_queries.push_back(*interfaceId);
    *out = nullptr;
    if (*interfaceId == IUnknown::id || *interfaceId == IVideoHost::id) {
        ++m_references;
        *out = static_cast<IVideoHost*>(this);
        return S_OK;
    }
    if (*interfaceId != IMemoryProvider::id)
        return E_NOINTERFACE;
    switch (m_providerAnswer) {
    case ProviderAnswer::Give:
        return m_memory ? m_memory->QueryInterface(interfaceId, out) : E_NOINTERFACE;
    case ProviderAnswer::SayYesGiveNothing:
        return S_OK;
    case ProviderAnswer::SayNoLeaveGarbage:
        *out = Garbage();
        return E_NOINTERFACE;
    case ProviderAnswer::Refuse:
        break;
    }
    return E_NOINTERFACE;
}

std::uint32_t FakeHost::AddRef()
{
    Expect("AddRef");
    return ++m_references;
}

std::uint32_t FakeHost::Release()
{
    Expect("Release");
    if (m_references <= 1) {
        ADD_FAILURE() << "the host was released more often than it was counted";
        return 0;
    }
    return --m_references;
}

bool FakeHost::GetParamValue(std::uint32_t knob, ParamValue* out, ParamKind kind)
{
    Expect("GetParamValue");
    m_reads.push_back({knob, kind});
    if (m_onKnob)
        m_onKnob(knob);
    if (!out) {
        ADD_FAILURE() << "GetParamValue for knob " << knob << " with nowhere to put the value";
        return false;
    }
    if (m_refusesAll || m_refused.count(knob) != 0)
        return false;
    if (knob >= m_knobs.size()) {
        ADD_FAILURE() << "the effect asks for knob " << knob << " of " << m_knobs.size();
        return false;
    }
    const ParamValue& value = m_knobs[knob];
    if (!m_acceptsAnyKind && kind != value.kind)
        ADD_FAILURE() << "knob " << knob << " is of kind " << value.kind << " and was asked for as kind "
                      << static_cast<std::uint32_t>(kind);
    out->value = value.value;
    out->valueY = value.valueY;
    out->kind = m_answeredKind.value_or(kind);
    return true;
}

bool FakeHost::HostReserved4(std::uint32_t first, std::uint32_t second, std::uint8_t third)
{
    Expect("HostReserved4");
    std::ostringstream call;
    call << "HostReserved4(" << first << ", " << second << ", " << static_cast<int>(third) << ")";
    NoteReserved(call.str());
    return true;
}

std::uint32_t FakeHost::HostReserved5(std::uint32_t first, std::uint32_t second)
{
    Expect("HostReserved5");
    std::ostringstream call;
    call << "HostReserved5(" << first << ", " << second << ")";
    NoteReserved(call.str());
    return 0x12345678u;
}

bool FakeHost::HostReserved6(std::uint32_t first, std::uint32_t second)
{
    Expect("HostReserved6");
    std::ostringstream call;
    call << "HostReserved6(" << first << ", " << second << ")";
    NoteReserved(call.str());
    return true;
}

void FakeHost::HostReserved7(std::uint32_t first, std::uint32_t second)
{
    Expect("HostReserved7");
    std::ostringstream call;
    call << "HostReserved7(" << first << ", " << second << ")";
    NoteReserved(call.str());
}

HostInfo* FakeHost::GetHostInfo(HostInfo* result)
{
    Expect("GetHostInfo");
    m_otherCalls.push_back("GetHostInfo()");
    if (!result) {
        ADD_FAILURE() << "GetHostInfo with nowhere to put the answer";
        return nullptr;
    }
    *result = m_info;
    return result;
}

} // namespace kelmora
