#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "tests/library/companion/companion_record.h"

namespace kelmora {

/// The record of the running test, told to the companions that get loaded. A companion that stays loaded
/// writes to it up to the end of the program, so the record itself is never gone.
inline CompanionRecord& WatchCompanions()
{
    static CompanionRecord record;
    new (&record) CompanionRecord; // in place: it is too large for the stack
    char assignment[128];
    std::snprintf(assignment, sizeof assignment, "%s=%llx", kCompanionRecordVariable,
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&record)));
    static std::string kept;
    kept = assignment;
#ifdef _WIN32
    _putenv(kept.c_str());
#else
    putenv(kept.data());
#endif
    return record;
}

} // namespace kelmora
