#pragma once

#include <cstdint>

#include "image/primitives/tent_kernels.h"

namespace kelmora {

/// The division of a sum of bytes by the sum of a tent's weights, to nearest or (`truncate`) toward zero, as
/// one multiplication: in double precision as the filters do it, in single precision where that is proven to
/// give the same bytes.
///
/// Exact ties are what the two may differ in: which of them come out inexact depends on the reciprocal's last
/// bit, and so on what the sums are spread by.
TentScale MakeByteScale(std::int64_t weights, bool truncate);

/// What the loops make of `sum`, one step at a time.
int ApplyScale(const TentScale& scale, std::int64_t sum);

} // namespace kelmora
