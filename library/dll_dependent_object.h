#pragma once

#include <cstdint>

#include "contract/calling.h"

namespace kelmora {

/// Base of the objects that keep the library file loaded: it counts them from construction to destruction.
class DLLDependentObject {
public:
    DLLDependentObject(const DLLDependentObject&) = delete;
    DLLDependentObject& operator=(const DLLDependentObject&) = delete;

    /// The place of a deleting destructor, alone in this table. flags: KELMORA_DESTROY_FREE. Gives the
    /// address of the memory that is left, null when it was freed.
    virtual void* KELMORA_DESTRUCTOR_CALL Destroy(std::uint32_t flags) = 0;

    /// How many of them live. [any thread]
    static std::int32_t LiveObjectCount();

protected:
    DLLDependentObject();
    ~DLLDependentObject();
};

} // namespace kelmora
