// The other direction: a host and an allocator of the probe's make, called through contract/.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/kelmora.h"
#include "tests/contract/probe/probe.h"

namespace kelmora {
namespace {

using kelmora_probe::NumberBack;
using kelmora_probe::Word;

// The stack pointer, where callees clear their arguments themselves.
inline std::uintptr_t StackPointer()
{
#ifdef __i386__
    std::uintptr_t here;
    __asm__ volatile("movl %%esp, %0" : "=r"(here) : : "memory");
    return here;
#else
    return 0;
#endif
}

// Makes a call and expects the stack to be as before.
template <class Function>
auto Balanced(Function function)
{
    const std::uintptr_t before = StackPointer();
    const auto result = function();
    const std::uintptr_t after = StackPointer();
    EXPECT_EQ(after, before) << "bytes left on the stack";
    return result;
}

std::string Describe(const kelmora_probe::Call& call)
{
    std::string text = std::string(call.what) + "(";
    for (int i = 0; i < call.argumentCount; ++i)
        text += (i > 0 ? ", " : "") + std::to_string(call.arguments[i]);
    return text + ")";
}

std::vector<std::string> CallsOf(const kelmora_probe::Report& report)
{
    std::vector<std::string> calls;
    for (int i = 0; i < report.count; ++i)
        calls.push_back(Describe(report.calls[i]));
    return calls;
}

std::string Digits(const void* pointer)
{
    return std::to_string(reinterpret_cast<Word>(pointer));
}

class ForeignHost : public testing::TestWithParam<bool> {
protected:
    // Too large for the stack of a test.
    const std::unique_ptr<kelmora_probe::Report> m_report = std::make_unique<kelmora_probe::Report>();
};

TEST_P(ForeignHost, EverySlotOfVideoHost_GetsItsArguments_AndIsUnderstood)
{
    auto* const host = static_cast<IVideoHost*>(KelmoraProbeHost(m_report.get(), GetParam() ? 1 : 0));
    void* view = nullptr;
    ParamValue value = {};
    HostInfo info = {};

    EXPECT_EQ(Balanced([&] { return host->QueryInterface(&IMemoryProvider::id, &view); }), E_NOINTERFACE);
    EXPECT_EQ(Balanced([&] { return host->AddRef(); }), NumberBack(1));
    EXPECT_EQ(Balanced([&] { return host->Release(); }), NumberBack(2));
    EXPECT_EQ(Balanced([&] { return host->GetParamValue(101, &value, ParamCheck); }), GetParam());
    EXPECT_EQ(Balanced([&] { return host->HostReserved4(102, 0xFFFFFFFFu, 0xFE); }), GetParam());
    EXPECT_EQ(Balanced([&] { return host->HostReserved5(103, 104); }), NumberBack(5));
    EXPECT_EQ(Balanced([&] { return host->HostReserved6(105, 106); }), GetParam());
    Balanced([&] {
        host->HostReserved7(107, 108);
        return 0;
    });
    EXPECT_EQ(Balanced([&] { return host->GetHostInfo(&info); }), &info);
    EXPECT_STREQ(info.hostName, "The probe");
    EXPECT_EQ(info.words[0], NumberBack(8));
    EXPECT_EQ(info.words[1], NumberBack(9));
    EXPECT_EQ(info.words[2], NumberBack(10));

    const std::vector<std::string> expected = {
        "QueryInterface(" + Digits(&IMemoryProvider::id) + ", " + Digits(&view) + ")",
        "AddRef()",
        "Release()",
        "GetParamValue(101, " + Digits(&value) + ", 4)",
        "HostReserved4(102, 4294967295, 254)",
        "HostReserved5(103, 104)",
        "HostReserved6(105, 106)",
        "HostReserved7(107, 108)",
        "GetHostInfo()",
    };
    EXPECT_EQ(CallsOf(*m_report), expected);
}

TEST_P(ForeignHost, EverySlotOfMemoryProvider_GetsItsArguments_AndIsUnderstood)
{
    auto* const memory =
        static_cast<IMemoryProvider*>(KelmoraProbeMemory(m_report.get(), GetParam() ? 1 : 0));
    void* block = nullptr;
    std::int32_t stride = 0;
    void* const taken = &stride;

    EXPECT_EQ(Balanced([&] { return memory->QueryInterface(&IUnknown::id, &block); }), E_NOINTERFACE);
    EXPECT_EQ(Balanced([&] { return memory->AddRef(); }), NumberBack(1));
    EXPECT_EQ(Balanced([&] { return memory->Release(); }), NumberBack(2));
    EXPECT_EQ(Balanced([&] { return memory->Alloc(&block, 0x80000001u); }), GetParam());
    Balanced([&] {
        memory->Free(taken);
        return 0;
    });
    EXPECT_EQ(Balanced([&] { return memory->AllocImage(&block, 1920, 1080, 16, &stride); }), GetParam());
    Balanced([&] {
        memory->FreeImage(taken);
        return 0;
    });

    const std::vector<std::string> expected = {
        "QueryInterface(" + Digits(&IUnknown::id) + ", " + Digits(&block) + ")",
        "AddRef()",
        "Release()",
        "Alloc(" + Digits(&block) + ", 2147483649)",
        "Free(" + Digits(taken) + ")",
        "AllocImage(" + Digits(&block) + ", 1920, 1080, 16, " + Digits(&stride) + ")",
        "FreeImage(" + Digits(taken) + ")",
    };
    EXPECT_EQ(CallsOf(*m_report), expected);
}

INSTANTIATE_TEST_SUITE_P(Answers, ForeignHost, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& value) {
                             return std::string(value.param ? "True" : "False");
                         });

} // namespace
} // namespace kelmora
