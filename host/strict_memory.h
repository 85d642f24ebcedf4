#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "contract/memory_provider.h"
#include "host/rule_book.h"

namespace kelmora::host {

/// How a StrictMemory gives memory.
struct MemoryHabits {
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t refuseOnly = kNever; ///< number of the one request to refuse, from 0
    std::uint64_t refuseFrom = kNever; ///< number of the first of all requests to refuse, from 0
    std::uint8_t fill = 0xA5;          ///< every byte of new memory
    std::int32_t slack = 0;            ///< bytes between the rows of a picture
    std::uint32_t shift = 0;           ///< bytes off 32-byte alignment, 0 to 31
    bool answersBackwards = false;     ///< says false with memory and true without: only the pointer counts
};

/// A host's allocator that watches over what it gave: every block comes back once, by the function that
/// belongs to it, with the bytes around it as they were.
class StrictMemory final : public IMemoryProvider {
public:
    explicit StrictMemory(const MemoryHabits& habits, Strictness strictness = Strictness::Strict)
        : m_habits(habits), m_rules(strictness)
    {
    }
    StrictMemory(const StrictMemory&) = delete;
    StrictMemory& operator=(const StrictMemory&) = delete;
    ~StrictMemory() = default;

    /// Requests so far, granted or not.
    std::uint64_t Asked() const { return m_asked; }

    /// How many of them were refused by habit.
    std::uint64_t Refused() const { return m_refused; }

    /// Blocks that are out.
    std::size_t OpenBlocks() const { return m_blocks.size(); }

    /// The count: 1 is the owner's.
    std::uint32_t References() const { return m_references; }

    /// Ends a render: blocks and references that are still out break a rule.
    void EndRender();

    const std::vector<std::string>& BrokenRules() const { return m_rules.All(); }

    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* interfaceId, void** out) override;
    std::uint32_t KELMORA_CALL AddRef() override;
    std::uint32_t KELMORA_CALL Release() override;
    bool KELMORA_CALL Alloc(void** out, std::uint32_t bytes) override;
    void KELMORA_CALL Free(void* memory) override;
    bool KELMORA_CALL AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                                 std::int32_t* stride) override;
    void KELMORA_CALL FreeImage(void* memory) override;

private:
    struct Block {
        std::unique_ptr<std::uint8_t[]> memory;
        std::uint8_t* start;
        std::size_t bytes;    ///< of the caller's; a moat lies before and behind them
        std::size_t rowBytes; ///< images: what the caller may write of a row
        std::size_t stride;   ///< images: bytes from row to row
        bool isImage;
    };

    bool Refuses();
    void* Give(std::uint64_t rowBytes, std::uint64_t stride, std::uint64_t rows, bool isImage) noexcept;
    void TakeBack(void* memory, bool isImage);
    static bool IsMoatIntact(const Block& block);

    MemoryHabits m_habits;
    RuleBook m_rules;
    std::vector<Block> m_blocks;
    std::uint64_t m_asked = 0;
    std::uint64_t m_refused = 0;
    std::uint32_t m_references = 1;
};

} // namespace kelmora::host
