#pragma once

#include <cstddef>

#include "platform/own_module.h"

namespace kelmora {

/// Room for the path of a file beside the library: a folder as long as the system gives one, and a name.
inline constexpr std::size_t kBesideCapacity = 2 * platform::kPathCapacity;

/// Makes paths. Stateless.
class PathLibrary {
public:
    virtual ~PathLibrary() = default;

    /// Stores the full path of `name`, a zero-ended file name, in the folder of the library's own file. True
    /// on success. False, and an empty path, when that folder is unknown, or the path too long.
    bool BesideModule(const char16_t* name, char16_t (&path)[kBesideCapacity]) const;

    /// The same path, made from the full path of a module. A module path without a folder gives false.
    bool Beside(const char16_t* modulePath, const char16_t* name, char16_t (&path)[kBesideCapacity]) const;
};

} // namespace kelmora
