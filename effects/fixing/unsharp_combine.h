#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "effects/fixing/unsharp_kernels.h"

namespace kelmora {

/// Sharpens rows: colour = picture * (amount + 1) - blurred * amount, clamped to 0..255 or 0..1. Bytes go by
/// whole numbers: amount counts in ten-thousandths, and each of the two products is truncated.
class UnsharpCombine {
public:
    /// `format`: a picture format.
    UnsharpCombine(std::uint32_t format, float amount);

    /// One row; see UnsharpRow. Alpha comes from `alpha`.
    void operator()(const void* picture, const void* blurred, const void* alpha, void* result,
                    int width) const;

    /// What byte `v` is multiplied to: (scaled * v) / 10000 toward zero.
    static int Scaled(int scaled, int v) { return scaled * v / 10000; }

private:
    void CombineByTable(const UnsharpRow<ByteGain>& row) const;

    const UnsharpKernels& m_kernels;
    bool m_floats;
    int m_alphaIndex;
    float m_amount;
    std::optional<ByteGain> m_gain;             ///< where one multiplication gives all 256 products
    std::array<std::int32_t, 256> m_table = {}; ///< elsewhere
};

/// The multiplication that gives (scaled * v) / 10000 for every byte v, if there is one.
std::optional<ByteGain> FindByteGain(int scaled);

} // namespace kelmora
