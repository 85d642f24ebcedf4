#include "effects/scene3d/depth_sort.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kelmora {

// The order is that of a bubble sort that swaps neighbours while the second is strictly smaller, each pass one
// shorter than the last. Without not-a-numbers that is the stable ascending order: equal keys never swap, and no
// neighbours are left out of order. With them it is no order that std::stable_sort could be given; but every
// comparison with such a key is false, so it never moves and nothing passes it: each run between two of them is
// sorted for itself. The shorter passes miss nothing there either, since after n passes the last n of each run, or
// all of it, are in place.
std::vector<std::size_t> OrderByKey(std::span<const double> keys)
{
    std::vector<std::size_t> order(keys.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto isBarrier = [&](std::size_t i) { return std::isnan(keys[i]); };
    for (auto run = order.begin(); run != order.end();) {
        const auto end = std::find_if(run, order.end(), isBarrier);
        std::stable_sort(run, end, [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
        run = std::find_if_not(end, order.end(), isBarrier);
    }
    return order;
}

std::vector<std::size_t> SortFacesByDepth(const QuadMesh& mesh)
{
    std::vector<double> depths(mesh.GetFaceCount());
    for (std::size_t i = 0; i < depths.size(); ++i)
        depths[i] = mesh.GetFace(i).GetCenter().z;
    return OrderByKey(depths);
}

} // namespace kelmora
