#pragma once

#include <cstddef>

#include "contract/render_info.h"
#include "effects/common/frame.h"
#include "effects/common/table_effect.h"
#include "effects/scene3d/scene3d.h"
#include "image/memory_allocator.h"

namespace kelmora {

/// The pictures of one frame of a 3D transition, seen as the effect needs them: an input in the output's own memory
/// was set aside.
struct TransitionFrame {
    IVideoHost& host;
    const VideoFrame& firstPicture;
    const VideoFrame* secondPicture; ///< may be null
    const VideoFrame& output;
    bool isBottomUp; ///< what the host says of the first picture
    double progress; ///< as the host gave it, save that what is no number is 0
    MemoryAllocator& allocator;
};

/// What the 3D transitions share. Each frame is complete in itself: between two of them nothing is kept but the
/// scene's canvas object. Render is true whenever the host's pictures could be looked at: what cannot be drawn
/// leaves the background.
template <const auto& face>
class BaseEffect : public TableEffect<face> {
protected:
    /// Draws one frame on `scene`, which is empty but for its allocator, and is emptied again.
    virtual bool RenderTransition(const TransitionFrame&) { return false; }

    bool RenderFrame(const RenderCall& call) final
    {
        if (!call.info)
            return false;
        MemoryAllocator allocator(&call.host);
        const double given = ReadField<double>(call.info, offsetof(RenderInfo, progress));
        const double progress = given == given ? given : 0.0;

        // The host's records are read here alone: it may rewrite them when it is asked for a knob.
        const VideoFrame outputRecord = call.output;
        const bool bottomUp = call.firstPicture.bottomUp != 0;
        FrameBuffer first, second, output, firstAside, secondAside;
        first.AttachFrame(&call.firstPicture);
        second.AttachFrame(call.secondPicture);
        output.AttachFrame(&outputRecord);
        if (!SetAside(first, output, firstAside, allocator)
            || !SetAside(second, output, secondAside, allocator))
            return true;
        VideoFrame firstPicture = {}, secondPicture = {};
        firstAside.ToVideoFrame(&firstPicture);
        secondAside.ToVideoFrame(&secondPicture);

        const FrameScope scope(scene, allocator);
        return RenderTransition(
            {call.host, firstPicture, &secondPicture, outputRecord, bottomUp, progress, allocator});
    }

    Scene3D scene;

private:
    /// The scene has an allocator during a frame, and nothing of the frame afterwards.
    class FrameScope {
    public:
        FrameScope(Scene3D& scene, MemoryAllocator& allocator) : m_scene(scene)
        {
            m_scene.SetAllocator(&allocator);
        }
        FrameScope(const FrameScope&) = delete;
        FrameScope& operator=(const FrameScope&) = delete;
        ~FrameScope() { m_scene.EndFrame(); }

    private:
        Scene3D& m_scene;
    };
};

} // namespace kelmora
