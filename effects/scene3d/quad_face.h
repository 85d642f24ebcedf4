#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "effects/scene3d/lists.h"
#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/vector3.h"
#include "image/frame_buffer.h"

namespace kelmora {

/// A part of a texture; u and v are 0 at its left and top, 1 at its right and bottom.
struct TextureRect {
    double u0 = 0, v0 = 0, u1 = 1, v1 = 1;

    constexpr bool operator==(const TextureRect&) const = default;
};

/// Pixels of a texture; all zeros for none.
struct SourceRect {
    int x = 0, y = 0, width = 0, height = 0;

    constexpr bool operator==(const SourceRect&) const = default;
};

/// What is the same way round on the back of a face: values of `backOrientation`. Any other number leaves the
/// corners as they are.
inline constexpr std::int32_t kTurnsSideways = 0; ///< the back has left and right swapped
inline constexpr std::int32_t kTurnsOver = 1;     ///< the back has top and bottom swapped

/// One flat face of four corners with a texture on either side. It owns neither texture.
class QuadFace {
public:
    using Corners = FixedList<Vector3, 4>;

    /// Four zero corners, no textures.
    QuadFace() = default;
    QuadFace(const Vector3& c0, const Vector3& c1, const Vector3& c2, const Vector3& c3,
             const FrameBuffer* front, const FrameBuffer* back, std::int32_t orientation,
             const TextureRect& frontPart, const TextureRect& backPart);
    QuadFace(const QuadFace&) = default;
    QuadFace& operator=(const QuadFace&) = default;
    virtual ~QuadFace() = default;

    // --- the parts ----------------------------------------------------------------------------------

    void SetCorners(const Vector3& c0, const Vector3& c1, const Vector3& c2, const Vector3& c3);
    Corners GetCorners() const { return corners; }
    void SetFrontTexture(const FrameBuffer* texture) { frontTexture = texture; }
    void SetBackTexture(const FrameBuffer* texture) { backTexture = texture; }
    void SetFrontRect(double u0, double v0, double u1, double v1) { frontRect = {u0, v0, u1, v1}; }
    void SetBackRect(double u0, double v0, double u1, double v1) { backRect = {u0, v0, u1, v1}; }

    /// Mirrors the part of the back texture, left to right or top to bottom.
    void FlipBackRect(bool horizontal);

    // --- what is seen -------------------------------------------------------------------------------

    /// Whether there is something to draw: corners and a front texture.
    bool IsValid() const { return !corners.empty() && frontTexture; }

    /// A face without a back texture has the front one on both sides.
    const FrameBuffer* GetTexture(bool isBack) const
    {
        return isBack && backTexture ? backTexture : frontTexture;
    }

    /// The pixels that the face shows, its edges included; none for an invalid face or an empty front texture.
    /// It may stick out of the back texture.
    SourceRect GetSourceRect(bool isBack) const;

    /// The numbers of the corners in the order in which they are drawn.
    std::array<std::size_t, 4> GetCornerOrder(bool isBack) const;

    // --- where it is --------------------------------------------------------------------------------

    /// The corners after `move`; four zero vectors for a face that has not four.
    std::array<Vector3, 4> TransformedCorners(const Matrix4& move) const;

    /// A face that has not four corners stays as it is.
    void TransformInPlace(const Matrix4& move);

    /// The mean of the corners; the zero vector for none.
    Vector3 GetCenter() const;

    Corners corners = Corners(4); ///< top left, top right, bottom right, bottom left
    TextureRect frontRect;
    TextureRect backRect;
    const FrameBuffer* frontTexture = nullptr;
    const FrameBuffer* backTexture = nullptr;
    std::int32_t backOrientation = kTurnsSideways;
};

} // namespace kelmora
