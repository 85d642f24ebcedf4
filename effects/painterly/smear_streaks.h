#pragma once

#include <array>
#include <cstdint>

#include "effects/painterly/smear_plan.h"
#include "effects/painterly/smear_shift.h"
#include "effects/painterly/smear_tiles.h"
#include "image/frame_buffer.h"
#include "image/memory_allocator.h"
#include "image/picture_check.h"
#include "image/transform_2d.h"

namespace kelmora::smear {

/// A way along which a picture is drawn out: forward, or backward with a negative step.
struct Way {
    double turn; ///< radians
    Doublings doublings;
};

/// A move by `step` pixels along the angle. In rows, a positive angle leads upward.
Transform2D StepAlong(double turn, double step);

/// Rows from `top` on, as many as there are up to `rows`.
void AttachBand(FrameBuffer& band, const FrameBuffer& picture, int top, int rows);

/// Columns from `left` to before `end`, as many as there are.
void AttachColumns(FrameBuffer& part, const FrameBuffer& picture, int left, int end);

/// The picture at the top left, transparent black around it.
void Place(const FrameBuffer& picture, FrameBuffer& frame);

/// The moves of a streak, one after the other.
class Steps {
public:
    /// Of frames of `size`, of floats or bytes.
    Steps(const Way& way, Size size, bool floats);

    /// Whether all of them can be made row by row.
    bool AreServed() const { return m_areServed; }

    /// Whether the streak stays in its rows.
    bool AreLevel() const { return m_count == 0 || Last().IsLevel(); }

    int Count() const { return m_count; }
    const Shift* begin() const { return m_shifts.data(); }
    const Shift* end() const { return m_shifts.data() + m_count; }

    /// The longest one, if there is any.
    const Shift& Last() const { return *(end() - 1); }

    /// Columns of a tile to each side from which something may reach a pixel.
    std::int64_t Margin(Slant slant) const;

private:
    std::array<Shift, 30> m_shifts;
    int m_count = 0;
    bool m_areServed = true;
};

/// A picture drawn out along its rows, some rows at a time.
class LevelStreak {
public:
    static constexpr int kBandRows = 8;

    /// `steps`, which are level, must stay.
    explicit LevelStreak(const Steps& steps);

    /// For pictures of `size`; `like` is one of the kind. False when there is no memory.
    bool Allocate(const FrameBuffer& like, Size size, MemoryAllocator& allocator);

    /// The streak's rows from `top` on, up to kBandRows of them, for the caller to change; valid until the next call.
    /// Where the picture does not reach, it counts as transparent.
    FrameBuffer& Band(const FrameBuffer& picture, int top);

private:
    void Draw(FrameBuffer& frame) const;

    const Steps& m_steps;
    Size m_size;
    FrameBuffer m_memory, m_band;
};

/// A picture drawn out across its rows, a tile at a time.
class SlantedStreak {
public:
    /// Both must stay.
    SlantedStreak(const Steps& steps, const Tiles& tiles) : m_steps(steps), m_tiles(tiles) {}

    /// `like` is a picture of the kind. False when there is no memory.
    bool Allocate(const FrameBuffer& like, MemoryAllocator& allocator);

    /// Makes a tile of the picture's streak. Where the picture does not reach, it counts as transparent. It must stay.
    void Begin(const FrameBuffer& picture, const Tile& tile);

    /// What is wanted of a row of the tile, for the caller to change; valid until the next call.
    FrameBuffer& Row(int y);

private:
    RowPart PartOf(int y) const;
    std::size_t BytesOf(const RowPart& row) const;
    void Load(int y);
    void Average(const Shift& shift, int y);

    const Steps& m_steps;
    const Tiles& m_tiles;
    const FrameBuffer* m_picture = nullptr;
    Tile m_tile = {};
    FrameBuffer m_memory; ///< of which the last row is kept for the frame's second one
    FrameBuffer m_row;
};

} // namespace kelmora::smear
