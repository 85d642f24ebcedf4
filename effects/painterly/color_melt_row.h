#pragma once

#include <array>
#include <cstdint>

#include "effects/painterly/color_melt_kernels.h"

namespace kelmora {

/// What a melt does to the blur of a mix.
struct Melt {
    float amount;          ///< 0 to 1
    double saturationGain; ///< what saturation is multiplied by
    double targetValue;    ///< what value is drawn to, in bytes
    float fogLevel;        ///< bytes: what the edge step takes for its edge
    float fogShare;        ///< floats: the share of the blur that it lifts to
};

/// One row of the melt: the blur's colours are driven, the edge step lets the mix show through, and the result
/// is dissolved with the mix.
class MeltRow {
public:
    /// `format`: a picture format.
    MeltRow(std::uint32_t format, const Melt& melt);
    MeltRow(const MeltRow&) = delete;
    MeltRow& operator=(const MeltRow&) = delete;

    /// width pixels. Rows may start at any address; `result` may be `blurred`.
    void operator()(const void* mix, const void* blurred, void* result, int width) const;

private:
    MeltKernels::Row m_row;
    MeltLook m_look;
    std::array<std::uint8_t, 256> m_saturations, m_values;
};

} // namespace kelmora
