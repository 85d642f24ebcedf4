#include "library/dll_dependent_object.h"

#include <atomic>

namespace kelmora {
namespace {

constinit std::atomic<std::int32_t> liveObjectCount{0};

} // namespace

DLLDependentObject::DLLDependentObject()
{
    liveObjectCount.fetch_add(1, std::memory_order_relaxed);
}

// What an object did comes before the count that lets the host free the file.
DLLDependentObject::~DLLDependentObject()
{
    liveObjectCount.fetch_sub(1, std::memory_order_release);
}

std::int32_t DLLDependentObject::LiveObjectCount()
{
    return liveObjectCount.load(std::memory_order_acquire);
}

} // namespace kelmora
