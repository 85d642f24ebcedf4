// The file's own operator new for those who ask it not to throw. The standard library's throws inside and catches,
// and where malloc refuses even an exception's memory its reserve is behind a lock that itself wants memory: then
// throwing never ends. Blocks go back through operator delete, which is free.

#include <cstdlib>
#include <new>

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return std::malloc(bytes > 0 ? bytes : 1);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept
{
    return std::malloc(bytes > 0 ? bytes : 1);
}
