#include "tests/contract/probe/call_aligned.h"

#ifdef __i386__

#define KELMORA_TEXT_(token) #token
#define KELMORA_TEXT(token) KELMORA_TEXT_(token)
#define KELMORA_SYMBOL(name) KELMORA_TEXT(__USER_LABEL_PREFIX__) #name

extern "C" void KelmoraCallAligned(void (*function)(void*), void* argument, unsigned residue);

// The caller's frame, a multiple of 16, the residue above it, and the argument on top: since the argument
// takes 4 bytes, 12 makes up for it.
// clang-format off
__asm__(
    ".text\n"
    ".globl " KELMORA_SYMBOL(KelmoraCallAligned) "\n"
    KELMORA_SYMBOL(KelmoraCallAligned) ":\n"
    "    pushl %ebp\n"
    "    movl %esp, %ebp\n"
    "    andl $-16, %esp\n"
    "    subl $28, %esp\n"
    "    addl 16(%ebp), %esp\n"
    "    pushl 12(%ebp)\n"
    "    call *8(%ebp)\n"
    "    movl %ebp, %esp\n"
    "    popl %ebp\n"
    "    ret\n");
// clang-format on

namespace kelmora {

void WalkAligned(kelmora_probe::Walk* walk, unsigned residue)
{
    KelmoraCallAligned([](void* argument) { KelmoraProbeWalk(static_cast<kelmora_probe::Walk*>(argument)); },
                       walk, residue);
}

void VisitAligned(kelmora_probe::Visit* visit, unsigned residue)
{
    KelmoraCallAligned(
        [](void* argument) { KelmoraProbeVisit(static_cast<kelmora_probe::Visit*>(argument)); }, visit,
        residue);
}

} // namespace kelmora

#else

namespace kelmora {

void WalkAligned(kelmora_probe::Walk* walk, unsigned)
{
    KelmoraProbeWalk(walk);
}

void VisitAligned(kelmora_probe::Visit* visit, unsigned)
{
    KelmoraProbeVisit(visit);
}

} // namespace kelmora

#endif
