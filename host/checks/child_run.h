#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "host/checks/check.h"

namespace kelmora::host {

/// What a check may take. Far more than any needs, so that only a hang reaches it.
inline constexpr std::chrono::seconds kCheckLimit{45};

/// How a check is run in a process of its own.
struct ChildRun {
    std::string program; ///< the path of this program
    std::string file;    ///< the library file
    std::uint32_t seed = 1;
    std::chrono::milliseconds limit = kCheckLimit;
    std::vector<std::string> environment = {}; ///< "NAME=VALUE" each, added to this program's own
};

/// Runs the check named `name` in a process of its own. A process that ends without a report has crashed; the
/// details say how, and where it was.
CheckReport RunCheckInChild(const ChildRun& child, const std::string& name);

} // namespace kelmora::host
