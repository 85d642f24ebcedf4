#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "contract/video_frame.h"
#include "effects/scene3d/light.h"
#include "effects/scene3d/lists.h"
#include "effects/scene3d/matrix4.h"
#include "effects/scene3d/picture_effect.h"
#include "effects/scene3d/quad_face.h"
#include "effects/scene3d/scene_canvas.h"
#include "effects/scene3d/vector3.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// A position on the canvas: column and row numbers, with fractions.
struct ScreenPoint {
    double x = 0, y = 0;
};

/// The warp's code for a mode: 0 nearest, 1 linear, 2 cubic, any other none; `smoothEdges` above 0 smooths.
std::uint32_t MakeInterpolationCode(int mode, int smoothEdges);

/// Removes the dust of floating point: what is next to a whole number, or to 0, becomes it.
// Kept: of negative numbers only those next to 0 move.
double SnapToPixel(double v);

/// Lights, a view and the picture that faces are drawn on, one after the other, the far ones first. There is no
/// depth buffer: a face is its part of a texture, darkened by its light and laid over what is there, all four
/// channels. Textures are not in the canvas's memory. [one thread at a time]
class Scene3D {
public:
    static constexpr std::uint32_t kTwoSided = 0x40; ///< back faces are drawn and lit

    Scene3D() = default;
    Scene3D(const Scene3D&) = delete;
    Scene3D& operator=(const Scene3D&) = delete;

    // --- a frame's set-up -----------------------------------------------------------------------------

    void SetCanvas(const VideoFrame* frame);
    void SetModelMatrix(const Matrix4& model);
    void SetViewMatrix(const Matrix4& view);
    void SetFlags(std::uint32_t flags) { m_flags = flags; }
    bool HasFlag(std::uint32_t mask) const { return (m_flags & mask) != 0; }
    void SetAllocator(MemoryAllocator* allocator);

    static constexpr std::size_t kMostLights = 8, kMostFilters = 8; ///< those beyond are not added

    /// Not owned, and counted once.
    void AddLight(const Light3D* light);
    void ClearLights() { m_lights.clear(); }

    /// Run on a copy of each face's pixels, in the order in which they were added.
    void AddFilter(std::unique_ptr<PREffect> filter) { m_filters.push_back(std::move(filter)); }
    void ClearFilters() { m_filters.clear(); }

    /// Lets go of all that belongs to a frame: lights, filters, the allocator, the canvas's view.
    void EndFrame();

    // --- what is under the faces ------------------------------------------------------------------------

    void SetBackground(const FrameBuffer& picture, std::uint32_t padColour);
    void SetBackground(const VideoFrame* picture, std::uint32_t padColour);
    void FillBackground(std::uint32_t colour, bool clearAlpha);

    // --- faces ------------------------------------------------------------------------------------------

    /// The corners of the frame, the zero vector without a valid canvas.
    Vector3 GetFrameCornerTopLeft() const { return FrameCorner(-1.0, 1.0); }
    Vector3 GetFrameCornerTopRight() const { return FrameCorner(1.0, 1.0); }
    Vector3 GetFrameCornerBottomLeft() const { return FrameCorner(-1.0, -1.0); }
    Vector3 GetFrameCornerBottomRight() const { return FrameCorner(1.0, -1.0); }

    /// The mean of the lights' intensities; 1 without lights.
    double LightLevel(const Vector3& normal, const Vector3& position, bool twoSided) const;

    /// Where a point after the perspective division lies on the canvas; the origin without one.
    ScreenPoint ToScreen(double x, double y) const;

    /// Draws one face. False for a face that is not valid or not to be seen; one that cannot be prepared, or lies
    /// beyond an edge of the canvas, is left out, and true. `backOnly`: only if its back is seen.
    bool DrawFace(const QuadFace& face, std::uint32_t interpolation, bool backOnly);

    /// Whether DrawFace gets as far as the face's pixels, if it draws backs where the scene is two-sided.
    bool Shows(const QuadFace& face) const;

    const SceneCanvas* GetCanvas() const;
    MemoryAllocator* GetAllocator() const { return m_allocator; }
    std::size_t GetLightCount() const { return m_lights.size(); }
    std::size_t GetFilterCount() const { return m_filters.size(); }

private:
    /// A face on the canvas.
    struct FaceView {
        bool isBack;
        bool isBeside; ///< beyond an edge with all corners
        double light;
        double quad[4][2]; ///< in the order of drawing
    };

    /// False for a face that is not valid or not to be seen.
    bool Look(const QuadFace& face, bool backOnly, FaceView& view) const;

    Vector3 FrameCorner(double x, double y) const;
    bool TakeSpace(const FrameBuffer& texture, const SourceRect& rect, FrameBuffer& part);
    bool ShowsAsItIs(const FrameBuffer& texture, const SourceRect& rect, FrameBuffer& shown) const;
    bool MakePart(const FrameBuffer& texture, const SourceRect& rect, double light, FrameBuffer& part);

    std::optional<SceneCanvas> m_canvas; // none before the first frame
    Matrix4 m_modelMatrix = Matrix4::Identity();
    Matrix4 m_viewMatrix = Matrix4::Identity();
    Matrix4 m_combinedMatrix = Matrix4::Identity(); // first the model's, then the view's
    std::uint32_t m_flags = 0;
    FixedList<const Light3D*, kMostLights> m_lights;
    FixedList<std::unique_ptr<PREffect>, kMostFilters> m_filters;
    MemoryAllocator* m_allocator = nullptr;
    FrameBuffer m_space; // for the pixels of one face after the other; as large as the largest so far
};

} // namespace kelmora
