#include "effects/scene3d/depth_sort.h"

#include <limits>
#include <numeric>
#include <random>
#include <utility>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

using Order = std::vector<std::size_t>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The order that hosts' projects were made with: neighbours swap while the second is strictly smaller, each pass
/// is one shorter, and a pass without a swap is the last.
Order BubbleSorted(std::vector<double> keys)
{
    Order order(keys.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    bool swapped = true;
    for (std::size_t limit = keys.size() - 1; swapped && limit > 0; --limit) {
        swapped = false;
        for (std::size_t i = 0; i < limit; ++i)
            if (keys[i + 1] < keys[i]) {
                std::swap(keys[i], keys[i + 1]);
                std::swap(order[i], order[i + 1]);
                swapped = true;
            }
    }
    return order;
}

Order Ordered(const std::vector<double>& keys)
{
    const FaceOrder order = OrderByKey(keys);
    return {order.begin(), order.end()};
}

Order Sorted(const QuadMesh& mesh)
{
    const FaceOrder order = SortFacesByDepth(mesh);
    return {order.begin(), order.end()};
}

QuadMesh MeshOfDepths(const std::vector<double>& depths)
{
    QuadMesh mesh;
    for (const double z : depths) {
        QuadFace face;
        face.SetCorners({0, 0, z - 1}, {0, 0, z + 1}, {0, 0, z}, {0, 0, z});
        mesh.AddFace(face);
    }
    return mesh;
}

TEST(DepthSort, OrderByKey_SmallestFirst)
{
    EXPECT_EQ(Ordered(std::vector<double>{3.0, -1.0, 2.0, 0.5}), (Order{1, 3, 2, 0}));
    EXPECT_EQ(Ordered(std::vector<double>{}), Order{});
    EXPECT_EQ(Ordered(std::vector<double>{7.0}), Order{0});
}

TEST(DepthSort, OrderByKey_EqualKeys_KeepTheirOrder)
{
    EXPECT_EQ(Ordered(std::vector<double>{1.0, 0.0, 1.0, -0.0, 1.0, 0.0}), (Order{1, 3, 5, 0, 2, 4}));
}

TEST(DepthSort, OrderByKey_WhatIsNoNumber_StandsStillAndParts)
{
    EXPECT_EQ(Ordered(std::vector<double>{3.0, 1.0, kNaN, 2.0, 0.0}), (Order{1, 0, 2, 4, 3}));
    EXPECT_EQ(Ordered(std::vector<double>{kNaN, 2.0, 1.0, kNaN, kNaN}), (Order{0, 2, 1, 3, 4}));
    EXPECT_EQ(Ordered(std::vector<double>{kNaN, kNaN}), (Order{0, 1}));
}

TEST(DepthSort, OrderByKey_AnyKeys_IsTheBubbleSort)
{
    std::mt19937 random(20);
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    const double special[] = {0.0, -0.0, kInfinity, -kInfinity, kNaN, kNaN};
    for (int round = 0; round < 20000; ++round) {
        std::vector<double> keys(1 + below(24));
        const unsigned values = 1 + below(40); // few values make equal keys
        const bool hasSpecial = below(2) == 0;
        for (double& key : keys)
            key = hasSpecial && below(4) == 0 ? special[below(6)] : below(values) - 3.5;
        ASSERT_EQ(Ordered(keys), BubbleSorted(keys)) << "round " << round;
    }
}

TEST(DepthSort, SortFacesByDepth_TheFarthestFirst)
{
    EXPECT_EQ(Sorted(MeshOfDepths({0.5, -2.0, 3.0, -1.0})), (Order{1, 3, 0, 2}));
}

TEST(DepthSort, SortFacesByDepth_FewFaces_StandAsTheyAre)
{
    EXPECT_EQ(Sorted(QuadMesh()), Order{});
    EXPECT_EQ(Sorted(MeshOfDepths({4.0})), Order{0});
}

TEST(DepthSort, SortFacesByDepth_EqualDepths_KeepTheOrderOfTheMesh)
{
    EXPECT_EQ(Sorted(MeshOfDepths({0.0, 0.0, -1.0, 0.0})), (Order{2, 0, 1, 3}));
}

} // namespace
} // namespace kelmora
