#pragma once

#include "tests/contract/probe/probe.h"

namespace kelmora {

/// Runs KelmoraProbeWalk or KelmoraProbeVisit with a stack pointer that is `residue` (0, 4, 8, 12) past a multiple of 16 at the
/// call. Only on 32-bit x86, where hosts promise no more than 4; elsewhere `residue` has no effect.
void WalkAligned(kelmora_probe::Walk* walk, unsigned residue);
void VisitAligned(kelmora_probe::Visit* visit, unsigned residue);

} // namespace kelmora
