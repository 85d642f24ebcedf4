#pragma once

#include <cstddef>
#include <span>

#include "effects/scene3d/lists.h"
#include "effects/scene3d/quad_mesh.h"

namespace kelmora {

using FaceOrder = GrowingList<std::size_t>;

/// The places of the keys from the smallest key to the largest; equal keys keep their order. A key that is no
/// number keeps its place, and no other passes it. Empty without memory.
FaceOrder OrderByKey(std::span<const double> keys);

/// The numbers of the faces from the farthest to the nearest, by the z of their centers as they stand, without
/// any view. Faces of one depth keep their order. Empty without memory.
FaceOrder SortFacesByDepth(const QuadMesh& mesh);

} // namespace kelmora
