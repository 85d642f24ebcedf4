#include "effects/scene3d/depth_sort.h"

#include <algorithm>
#include <cmath>

namespace kelmora {

// The order is that of a bubble sort that swaps neighbours while the second is strictly smaller, each pass one
// shorter than the last. Without not-a-numbers that is the stable ascending order: equal keys never swap, and no
// neighbours are left out of order. With them it is no order that std::stable_sort could be given; but every
// comparison with such a key is false, so it never moves and nothing passes it: each run between two of them is
// sorted for itself. The shorter passes miss nothing there either, since after n passes the last n of each run, or
// all of it, are in place.
//
// Equal keys are told apart by their places, so that no sort is needed that keeps an order: those ask for memory.
FaceOrder OrderByKey(std::span<const double> keys)
{
    FaceOrder order;
    if (!order.reserve(keys.size()))
        return order;
    for (std::size_t i = 0; i < keys.size(); ++i)
        static_cast<void>(order.push_back(i));
    const auto isBarrier = [&](std::size_t i) { return std::isnan(keys[i]); };
    for (std::size_t* run = order.begin(); run != order.end();) {
        std::size_t* const end = std::find_if(run, order.end(), isBarrier);
        std::sort(run, end, [&](std::size_t a, std::size_t b) {
            return keys[a] < keys[b] || (keys[a] == keys[b] && a < b);
        });
        run = std::find_if_not(end, order.end(), isBarrier);
    }
    return order;
}

FaceOrder SortFacesByDepth(const QuadMesh& mesh)
{
    GrowingList<double> depths;
    for (std::size_t i = 0; i < mesh.GetFaceCount(); ++i)
        if (!depths.push_back(mesh.GetFace(i).GetCenter().z))
            return {};
    return OrderByKey(depths);
}

} // namespace kelmora
