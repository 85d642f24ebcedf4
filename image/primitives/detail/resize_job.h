#pragma once

// What every way of resizing works on.

#include <algorithm>
#include <cstdint>

#include "image/primitives/memory.h"
#include "image/primitives/resize.h"
#include "image/primitives/status.h"

namespace kelmora::px::resizing {

/// Working space for `count` values.
template <class T>
class Table {
public:
    explicit Table(std::int64_t count)
        : m_values(static_cast<T*>(pxMalloc(count * static_cast<std::int64_t>(sizeof(T)))))
    {
    }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;
    ~Table() { pxFree(m_values); }

    /// Null when there is no memory.
    T* Values() const { return m_values; }

private:
    T* m_values;
};

/// Where the pixels of the result lie in the region, along one axis.
struct Axis {
    int source;     ///< pixels of the region
    int size;       ///< of the result
    double factor;  ///< above 0, may be infinite
    double product; ///< the result's exact size

    int NearestOf(int i) const { return static_cast<int>(std::min(i / factor, source - 1.0)); }

    /// From 0 to the last pixel of the region, on which the last one of the result lands.
    double PositionOf(int i) const
    {
        if (!(product > 1.0))
            return 0.0;
        return std::min(static_cast<double>(i) * (source - 1.0) / (product - 1.0), source - 1.0);
    }

    /// Where the area of pixel `i` begins; the end of the one before.
    double EdgeOf(int i) const { return std::min(i / factor, static_cast<double>(source)); }
};

inline PxStatus MapAxis(int source, double factor, int mostPixels, Axis& axis)
{
    const double product = source * factor;
    // Cut before the cast: the product may be anything up to infinity.
    const int size = static_cast<int>(std::min(product + 1e-7, static_cast<double>(mostPixels)));
    if (size < 1 && product < 0.5)
        return pxResultTooSmall;
    axis = {source, std::max(size, 1), factor, product};
    return pxOk;
}

/// A resize that was found sound. The source begins with the region's first pixel.
template <class T>
struct Job {
    const T* src;
    int srcStep;
    T* dst;
    int dstStep;
    Axis x, y;
    PxRect hole = {0, 0, 0, 0}; ///< pixels of the result that nobody will look at
    bool levels = false;        ///< floats of four channels: results are cut to 0 to 1
};

} // namespace kelmora::px::resizing
