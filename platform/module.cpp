#include "platform/module.h"

#include <utility>

namespace kelmora::platform {

Module::Module(Module&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}

Module& Module::operator=(Module&& other) noexcept
{
    if (this != &other) {
        Unload();
        m_handle = std::exchange(other.m_handle, nullptr);
    }
    return *this;
}

Module::~Module()
{
    Unload();
}

} // namespace kelmora::platform
