#pragma once

#include <cstddef>

#include "effects/scene3d/depth_sort.h"
#include "effects/scene3d/dream_glow.h"
#include "effects/scene3d/lists.h"
#include "effects/scene3d/quad_mesh.h"
#include "effects/scene3d/scene3d.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// The parts of pictures that the faces of a frame show, each as it is when all of its picture glows, and each once
/// however many faces show it.
class GlowSlices {
public:
    explicit GlowSlices(MemoryAllocator& allocator) : m_allocator(allocator) {}

    GlowSlices(const GlowSlices&) = delete;
    GlowSlices& operator=(const GlowSlices&) = delete;

    /// Lets the faces that the scene shows, by their fronts, show parts that glow. `order` is that of drawing. False,
    /// and every face as it was, when there is no memory for all the parts.
    ///
    /// glowOf  gives the glow of a picture
    template <class GlowOf>
    bool Make(const Scene3D& scene, QuadMesh& faces, const FaceOrder& order, GlowOf&& glowOf)
    {
        if (!Find(scene, faces, order) || !Allocate())
            return false;
        for (Slice& slice : m_slices)
            Fill(slice, glowOf(*slice.picture));
        Show(faces);
        return true;
    }

    /// Gives back the part that face `i` shows, if no other one is yet to be drawn that does.
    void Drawn(std::size_t i);

private:
    struct Slice {
        const FrameBuffer* picture = nullptr;
        SourceRect part;
        FrameBuffer pixels;
        std::size_t lastFace = 0; ///< that is drawn
    };

    struct Shown {
        std::size_t face, slice;
    };

    bool Find(const Scene3D& scene, const QuadMesh& faces, const FaceOrder& order);
    bool Allocate();
    static void Fill(Slice& slice, const PRDreamGlowEffect& glow);
    void Show(QuadMesh& faces) const;

    MemoryAllocator& m_allocator;
    GrowingList<Slice> m_slices;
    GrowingList<Shown> m_shown;
};

} // namespace kelmora
