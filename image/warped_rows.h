#pragma once

#include <cstdint>
#include <optional>

#include "image/frame_buffer.h"
#include "image/picture_check.h"
#include "image/primitives/separable_warp.h"
#include "image/transform_2d.h"

namespace kelmora {

/// Rows of a picture as ImageOps::WarpAffine would lay it on transparent black, for effects that only mix them into
/// another picture. Serves moves without rotation, of formats 0, 1, 3 and 4.
class WarpedRows {
public:
    /// The top left `size` pixels of `picture`, through `move`. The picture must stay where it is.
    WarpedRows(const FrameBuffer& picture, Size size, const Transform2D& move);

    /// Whether this kind of picture and move is served.
    bool AreServed() const { return m_served; }

    /// Working space that Begin takes for rows of `width` pixels, bytes or floats.
    static std::int64_t WorkBytes(int width, bool floats) { return SeparableWarp::WorkBytes(width, floats); }

    /// To be called once, before Row. `work` is aligned to 64 and stays until the last row.
    void Begin(void* work);

    /// Writes row `y`, of `size`'s width.
    void Row(int y, void* dst);

private:
    Size m_size;
    AffineMap m_map = {};
    WarpImage m_image = {};
    bool m_floats;
    bool m_served = false;
    std::optional<SeparableWarp> m_warp;
};

} // namespace kelmora
