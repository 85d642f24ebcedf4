#include "host/strict_memory.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "contract/interface_id.h"

namespace kelmora::host {
namespace {

constexpr std::size_t kMoat = 64;
constexpr std::uint8_t kMoatByte = 0xC3;
constexpr std::size_t kAlignment = 32;
constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30; // what a 32-bit host could give at best

bool AllMoat(const std::uint8_t* bytes, std::size_t count)
{
    return std::all_of(bytes, bytes + count, [](std::uint8_t byte) { return byte == kMoatByte; });
}

} // namespace

void StrictMemory::EndRender()
{
    if (!m_blocks.empty())
        m_rules.Broken("memory of the host was not given back");
    if (m_references != 1)
        m_rules.Broken("a reference to the memory provider was not given back");
}

std::int32_t StrictMemory::QueryInterface(const InterfaceId* interfaceId, void** out)
{
    if (out == nullptr || interfaceId == nullptr)
        return E_FAIL;
    *out = nullptr;
    if (*interfaceId != IUnknown::id && *interfaceId != IMemoryProvider::id)
        return E_NOINTERFACE;
    *out = static_cast<IMemoryProvider*>(this);
    AddRef();
    return S_OK;
}

std::uint32_t StrictMemory::AddRef()
{
    return ++m_references;
}

std::uint32_t StrictMemory::Release()
{
    if (m_references == 1) {
        m_rules.Broken("the memory provider was released once too often");
        return 1;
    }
    return --m_references;
}

bool StrictMemory::Refuses()
{
    const std::uint64_t number = m_asked++;
    const bool refuses = number == m_habits.refuseOnly || number >= m_habits.refuseFrom;
    m_refused += refuses ? 1 : 0;
    return refuses;
}

void* StrictMemory::Give(std::uint64_t rowBytes, std::uint64_t stride, std::uint64_t rows,
                         bool isImage) noexcept
{
    if (Refuses() || rows == 0 || stride > kMostBytes / rows)
        return nullptr;
    const auto bytes = static_cast<std::size_t>(stride * rows);
    const std::size_t whole = bytes + 2 * kMoat + 2 * kAlignment;
    try {
        // Room first, so that the block is known once it is out.
        m_blocks.reserve(m_blocks.size() + 1);
        std::unique_ptr<std::uint8_t[]> memory(new std::uint8_t[whole]);
        std::memset(memory.get(), kMoatByte, whole);

        const auto address = reinterpret_cast<std::uintptr_t>(memory.get()) + kMoat;
        const std::uintptr_t aligned = (address + kAlignment - 1) / kAlignment * kAlignment;
        std::uint8_t* const start = memory.get() + kMoat + (aligned - address) + m_habits.shift % kAlignment;
        const auto rowPart = static_cast<std::size_t>(rowBytes);
        const auto step = static_cast<std::size_t>(stride);
        for (std::size_t row = 0; row < bytes; row += step)
            std::memset(start + row, m_habits.fill, rowPart);
        m_blocks.push_back({std::move(memory), start, bytes, rowPart, step, isImage});
        return start;
    } catch (...) {
        return nullptr;
    }
}

bool StrictMemory::IsMoatIntact(const Block& block)
{
    if (!AllMoat(block.memory.get(), static_cast<std::size_t>(block.start - block.memory.get())))
        return false;
    for (std::size_t row = 0; row < block.bytes; row += block.stride) {
        if (!AllMoat(block.start + row + block.rowBytes, block.stride - block.rowBytes))
            return false;
    }
    return AllMoat(block.start + block.bytes, kMoat);
}

void StrictMemory::TakeBack(void* memory, bool isImage)
{
    const auto block = std::find_if(m_blocks.begin(), m_blocks.end(),
                                    [memory](const Block& one) { return one.start == memory; });
    if (block == m_blocks.end()) {
        m_rules.Broken("memory was given back that the host did not give");
        return;
    }
    if (block->isImage != isImage)
        m_rules.Broken("memory was given back by the other function");
    if (!IsMoatIntact(*block))
        m_rules.Broken("bytes around the host's memory were written");
    m_blocks.erase(block);
}

bool StrictMemory::Alloc(void** out, std::uint32_t bytes)
{
    if (out == nullptr || bytes == 0) {
        m_rules.Broken("memory was asked for without a place or a size");
        return false;
    }
    *out = Give(bytes, bytes, 1, false);
    return (*out != nullptr) != m_habits.answersBackwards;
}

void StrictMemory::Free(void* memory)
{
    TakeBack(memory, false);
}

bool StrictMemory::AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                              std::int32_t* stride)
{
    if (out == nullptr || stride == nullptr || width < 1 || height < 1 || pixelBytes < 1) {
        m_rules.Broken("memory for a picture was asked for without a place or a size");
        return false;
    }
    const std::uint64_t rowBytes = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(pixelBytes);
    const std::uint64_t step = rowBytes + static_cast<std::uint64_t>(std::max(m_habits.slack, 0));
    *out = Give(rowBytes, step, static_cast<std::uint64_t>(height), true);
    *stride = *out != nullptr ? static_cast<std::int32_t>(step) : 0;
    return (*out != nullptr) != m_habits.answersBackwards;
}

void StrictMemory::FreeImage(void* memory)
{
    TakeBack(memory, true);
}

} // namespace kelmora::host
