#include "tests/support/fake_memory_provider.h"

#include <algorithm>
#include <utility>

namespace kelmora {

FakeMemoryProvider::~FakeMemoryProvider()
{
    EXPECT_EQ(m_blocks.size(), 0u) << "blocks that never came back";
    EXPECT_EQ(m_references, 1u) << "references to the provider are left";
}

void FakeMemoryProvider::SetHabits(const MemoryHabits& habits)
{
    m_habits = habits;
    m_asked = 0;
    m_refused = 0;
}

std::int32_t FakeMemoryProvider::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (!out)
        return E_FAIL;
    if (interfaceId && (*interfaceId == IUnknown::id || *interfaceId == IMemoryProvider::id)) {
        AddRef();
        *out = static_cast<IMemoryProvider*>(this);
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

std::uint32_t FakeMemoryProvider::AddRef()
{
    return ++m_references;
}

std::uint32_t FakeMemoryProvider::Release()
{
    if (m_references <= 1) {
        ADD_FAILURE() << "the provider was released more often than it was counted";
        return 0;
    }
    return --m_references;
}

// The memory, or null. A refused block counts as a call of 0 bytes.
void* FakeMemoryProvider::Give(std::int32_t width, std::int32_t height, std::int32_t pixelBytes, bool isImage,
                               std::int32_t* stride)
{
    const std::uint64_t number = m_asked++;
    const std::uint64_t bytes = width > 0 && height > 0 && pixelBytes > 0 ? static_cast<std::uint64_t>(width)
            * static_cast<std::uint64_t>(pixelBytes) * static_cast<std::uint64_t>(height)
                                                                          : 0;
    const bool refuse = number == m_habits.refuseOnly || number >= m_habits.refuseFrom
        || (isImage ? m_habits.refuseImages : m_habits.refusePlain) || bytes == 0
        || bytes > m_habits.mostBytes;
    m_calls.push_back({isImage ? MemoryCall::AllocImage : MemoryCall::Alloc, refuse ? 0 : bytes,
                       isImage ? width : 0, isImage ? height : 0, isImage ? pixelBytes : 0});
    if (refuse) {
        ++m_refused;
        return nullptr;
    }
    PictureLayout layout = {.guard = m_habits.guard};
    if (layout.guard == Guard::Moat) {
        layout.slack = isImage ? m_habits.slack : 0;
        layout.shift = m_habits.misalign;
    }
    GuardedPicture memory(width, height, pixelBytes, PF_Mask8, layout);
    memory.FillWord(m_habits.fill);
    void* const start = memory.Row(0);
    if (stride)
        *stride = m_habits.claimedStride.value_or(memory.Stride());
    m_blocks.emplace(start, Block{std::move(memory), isImage, bytes});
    m_openBytes += bytes;
    m_peakBytes = std::max(m_peakBytes, m_openBytes);
    return start;
}

void FakeMemoryProvider::TakeBack(void* memory, bool isImage)
{
    const auto block = m_blocks.find(memory);
    const bool isKnown = block != m_blocks.end();
    const MemoryCall::Kind kind = isImage ? MemoryCall::FreeImage : MemoryCall::Free;
    m_calls.push_back({kind, isKnown ? block->second.bytes : 0, 0, 0, 0});
    if (!isKnown) {
        ADD_FAILURE() << "memory came back that the provider did not give, or gave no longer: " << memory;
        return;
    }
    EXPECT_EQ(block->second.isImage, isImage) << "memory came back by the wrong function";
    m_openBytes -= block->second.bytes;
    m_blocks.erase(block); // looks at the guards
}

bool FakeMemoryProvider::Alloc(void** out, std::uint32_t bytes)
{
    if (!out) {
        ADD_FAILURE() << "Alloc with nowhere to put the address";
        return false;
    }
    const auto size = static_cast<std::int32_t>(std::min<std::uint32_t>(bytes, 0x7FFFFFFFu));
    *out = Give(size, 1, 1, false, nullptr);
    return (*out != nullptr) != m_habits.answersBackwards;
}

void FakeMemoryProvider::Free(void* memory)
{
    TakeBack(memory, false);
}

bool FakeMemoryProvider::AllocImage(void** out, std::int32_t width, std::int32_t height,
                                    std::int32_t pixelBytes, std::int32_t* stride)
{
    if (!out || !stride) {
        ADD_FAILURE() << "AllocImage with nowhere to put the address or the stride";
        return false;
    }
    EXPECT_TRUE(width > 0 && height > 0 && pixelBytes > 0)
        << "AllocImage for " << width << " x " << height << " pixels of " << pixelBytes << " bytes";
    *out = Give(width, height, pixelBytes, true, stride);
    return (*out != nullptr) != m_habits.answersBackwards;
}

void FakeMemoryProvider::FreeImage(void* memory)
{
    TakeBack(memory, true);
}

} // namespace kelmora
