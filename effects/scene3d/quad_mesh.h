#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "effects/scene3d/lists.h"
#include "effects/scene3d/quad_face.h"

namespace kelmora {

/// Faces in a row, held by value. Copies share the textures; one that finds no memory is empty.
class QuadMesh {
public:
    QuadMesh() = default;
    QuadMesh(const QuadMesh&) = default;
    QuadMesh(QuadMesh&&) = default;
    QuadMesh& operator=(const QuadMesh&) = default;
    QuadMesh& operator=(QuadMesh&&) = default;
    virtual ~QuadMesh() = default;

    /// A copy goes to the end. False, and nothing added, without memory.
    bool AddFace(const QuadFace& face) { return m_faces.push_back(face); }

    /// Room for so many faces in all; without memory there is as much as before, and false.
    bool Reserve(std::size_t count) { return m_faces.reserve(count); }
    std::size_t GetFaceCount() const { return m_faces.size(); }

    /// `i` is below the count.
    const QuadFace& GetFace(std::size_t i) const { return m_faces[i]; }
    QuadFace& GetFace(std::size_t i) { return m_faces[i]; }

    /// Mirrors what each face shows on its back, left to right or top to bottom.
    void FlipBackRects(bool horizontal);

    /// The mean of the faces' centers; the zero vector for no faces.
    Vector3 GetCenter() const;

    void TransformInPlace(const Matrix4& move);

private:
    GrowingList<QuadFace> m_faces;
};

/// A parallelogram that is to be cut into faces of whole pixels.
struct QuadGrid {
    int width = 0, height = 0;                 ///< of the picture, in pixels
    std::array<Vector3, 4> area;               ///< top left, top right, bottom right (not read), bottom left
    int columns = 0, rows = 0;                 ///< 1 to kMostAcross each
    const FrameBuffer* frontTexture = nullptr; ///< not owned
    const FrameBuffer* backTexture = nullptr;  ///< may be null; not owned
    std::int32_t orientation = kTurnsSideways;
    bool serpentine = false; ///< odd rows run from right to left

    static constexpr int kMostAcross = 64; ///< knobs within their range ask for 20
};

/// Cuts areas into faces and makes boxes of faces.
class QuadMeshCreator {
public:
    virtual ~QuadMeshCreator() = default;

    /// Faces row by row from the top left. Neighbours share a column or row of pixels. Empty for fewer than 2
    /// pixels across or down, and for no or too many columns or rows, and without memory.
    QuadMesh CreateGrid(const QuadGrid& grid) const;

    /// A box for each face that has four corners, behind it: front, right, back, left, top, bottom. All six
    /// faces show what the one showed. No box at all without memory for all.
    GrowingList<QuadMesh> CreateBoxes(const QuadMesh& mesh) const;
};

} // namespace kelmora
