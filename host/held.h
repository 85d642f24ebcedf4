#pragma once

#include <memory>

namespace kelmora::host {

/// Gives a counted object's reference back.
struct Releaser {
    template <class Interface>
    void operator()(Interface* object) const
    {
        object->Release();
    }
};

/// Owns one reference to a counted object.
template <class Interface>
using Held = std::unique_ptr<Interface, Releaser>;

} // namespace kelmora::host
