#pragma once

#include "contract/render_info.h"
#include "contract/video_frame.h"
#include "contract/video_host.h"

namespace kelmora::fake {

/// What the effect knows besides the arguments of a render. Only broken rules make use of it.
struct Memory {
    double lastProgress = 0.0;
    bool isOtherThread = false;
};

/// The render of FakeEffect.
bool Render(bool isBlend, const Memory& memory, IVideoHost* host, const VideoFrame* first,
            const VideoFrame* second, VideoFrame* output, const RenderInfo* info);

} // namespace kelmora::fake
