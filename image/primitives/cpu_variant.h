#pragma once

namespace kelmora {

/// The instruction sets that some loops are built for. Every variant gives the same pixels, bit for bit.
enum class CpuVariant {
    Baseline, ///< SSE2 on x86, plain code elsewhere: what the library needs at least
    Avx2,
    Avx512, ///< the F, BW, DQ and VL groups
};

/// Whether the library holds code for `variant` and this processor runs it.
bool IsAvailable(CpuVariant variant);

/// The variant in use: the newest that is available, unless a test asked for another.
CpuVariant CurrentVariant();

/// Makes renders that start from now on use `variant`, for tests that compare variants. False, and nothing
/// changed, when it is not available.
bool UseVariant(CpuVariant variant);

} // namespace kelmora
