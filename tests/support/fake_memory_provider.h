#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <unordered_map>
#include <vector>

#include "contract/memory_provider.h"
#include "tests/support/guarded_picture.h"

namespace kelmora {

/// How a FakeMemoryProvider behaves.
struct MemoryHabits {
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t refuseOnly = kNever; ///< number of the one allocation to refuse, from 0
    std::uint64_t refuseFrom = kNever; ///< number of the first of all allocations to refuse, from 0
    bool refuseImages = false;         ///< every AllocImage, whatever its number
    bool refusePlain = false;          ///< every Alloc
    std::uint32_t fill = 0xA5A5A5A5u;  ///< new memory holds this word over and over; 0x7FA5A5A5 is a NaN
    std::int32_t misalign = 0;         ///< bytes off 64-byte alignment, 0 to 63; Moat only
    std::int32_t slack = 0;            ///< bytes between the rows of a picture; Moat only
    Guard guard = Guard::Moat;         ///< what surrounds the memory
    std::optional<std::int32_t> claimedStride = {}; ///< what AllocImage says whatever the rows are
    bool answersBackwards = false; ///< false with memory, true without: only the pointer counts
    std::size_t mostBytes = std::size_t{1} << 29; ///< larger blocks are refused
};

/// One call, as it came.
struct MemoryCall {
    enum Kind { Alloc, Free, AllocImage, FreeImage };

    Kind kind;
    std::uint64_t bytes;     ///< of the block; 0 when refused
    std::int32_t width;      ///< images only
    std::int32_t height;     ///< images only
    std::int32_t pixelBytes; ///< images only
};

/// A host's allocator that watches over what it gave. Fails the running test when a block comes back by
/// the wrong function, twice or not at all, when the surroundings of a block were written, and when a
/// reference is left.
class FakeMemoryProvider final : public IMemoryProvider {
public:
    explicit FakeMemoryProvider(const MemoryHabits& habits = {}) : m_habits(habits) {}
    ~FakeMemoryProvider();

    FakeMemoryProvider(const FakeMemoryProvider&) = delete;
    FakeMemoryProvider& operator=(const FakeMemoryProvider&) = delete;

    /// Other habits from the next call on. Calls are counted from 0 again.
    void SetHabits(const MemoryHabits& habits);

    const std::vector<MemoryCall>& Calls() const { return m_calls; }

    /// Allocations asked for, granted or not.
    std::uint64_t Asked() const { return m_asked; }

    /// How many of them were refused.
    std::uint64_t Refused() const { return m_refused; }

    std::size_t OpenBlocks() const { return m_blocks.size(); }

    /// Bytes of the open blocks now, and the most there ever were.
    std::uint64_t OpenBytes() const { return m_openBytes; }
    std::uint64_t PeakBytes() const { return m_peakBytes; }

    /// The count: 1 is the test's own.
    std::uint32_t References() const { return m_references; }

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
        GuardedPicture memory;
        bool isImage;
        std::uint64_t bytes;
    };

    void* Give(std::int32_t width, std::int32_t height, std::int32_t pixelBytes, bool isImage,
               std::int32_t* stride);
    void TakeBack(void* memory, bool isImage);

    MemoryHabits m_habits;
    std::vector<MemoryCall> m_calls;
    std::unordered_map<void*, Block> m_blocks;
    std::uint64_t m_asked = 0;
    std::uint64_t m_refused = 0;
    std::uint64_t m_openBytes = 0;
    std::uint64_t m_peakBytes = 0;
    std::uint32_t m_references = 1;
};

} // namespace kelmora
