#pragma once

#include <cstdint>

#include "image/levels.h"
#include "image/pixel_format.h"
#include "image/primitives/row_kernels.h"

namespace kelmora {

/// ImageOps::Mix for one row of a picture.
class RowMix {
public:
    /// format: of a picture. Weights from 0 to 255.
    RowMix(std::uint32_t format, int firstWeight, int secondWeight)
        : m_kernels(RowKernelsFor(CurrentVariant())), m_floats(IsFloat(format)), m_first(firstWeight),
          m_second(secondWeight)
    {
    }

    /// `second` becomes the mix of both rows of `width` pixels.
    void operator()(const void* first, void* second, int width) const
    {
        if (m_floats)
            m_kernels.mixFloats({first, second, second, width * 4, LevelOf(m_first), LevelOf(m_second)});
        else
            m_kernels.mixBytes({first, second, second, width * 4, m_first, m_second});
    }

private:
    const RowKernels& m_kernels;
    bool m_floats;
    int m_first, m_second;
};

} // namespace kelmora
