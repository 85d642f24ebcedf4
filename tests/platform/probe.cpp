// A module that knows where it is, to be loaded by the tests.

#include <cstddef>

#include "platform/own_module.h"

#ifdef _WIN32
#define PROBE_EXPORT __declspec(dllexport)
#else
#define PROBE_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

PROBE_EXPORT int ProbeAnswer();
PROBE_EXPORT std::size_t ProbeOwnModulePath(char16_t (&path)[kelmora::platform::kPathCapacity]);

int ProbeAnswer()
{
    return 42;
}

std::size_t ProbeOwnModulePath(char16_t (&path)[kelmora::platform::kPathCapacity])
{
    return kelmora::platform::OwnModulePath(path);
}
}
