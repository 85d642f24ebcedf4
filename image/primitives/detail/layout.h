#pragma once

namespace kelmora::px {

// What the last part of a primitive's name says, as a type.

/// A pixel of `channels` values, of which a primitive touches the first `touched`.
template <int channels_, int touched_>
struct Layout {
    static constexpr int channels = channels_;
    static constexpr int touched = touched_;
    static constexpr bool whole = touched == channels;
};

using C1 = Layout<1, 1>;
using C4 = Layout<4, 4>;
using A3 = Layout<4, 3>; // the fourth value may belong to somebody else: neither read nor written

} // namespace kelmora::px
