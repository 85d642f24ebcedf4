#include "image/float_environment.h"

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace kelmora {

// On processors without these registers the default arithmetic is the one wanted, and hosts do not change it.

FloatEnvironment::FloatEnvironment()
{
#if defined(__i386__) || defined(__x86_64__)
    // Storing the environment masks all x87 exceptions as well; 0x037F asks for 64-bit precision.
    __asm__ volatile("fnstenv %0" : "=m"(m_x87));
    const std::uint16_t control = 0x037F;
    __asm__ volatile("fldcw %0" : : "m"(control));
#endif
#if defined(__SSE__)
    m_mxcsr = _mm_getcsr();
    _mm_setcsr(0x1F80);
#endif
}

FloatEnvironment::~FloatEnvironment()
{
#if defined(__SSE__)
    _mm_setcsr(m_mxcsr);
#endif
#if defined(__i386__) || defined(__x86_64__)
    __asm__ volatile("fldenv %0" : : "m"(m_x87));
#endif
}

} // namespace kelmora
