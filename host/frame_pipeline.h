#pragma once

#include <cstdint>
#include <functional>

#include "host/clips/clip.h"

namespace kelmora::host {

/// A frame on its way. Its memory is used again for later frames.
struct FrameSlot {
    std::int64_t number = 0; ///< 0 for the first frame read
    FrameBytes first;
    FrameBytes second; ///< empty: none
    FrameBytes output;
};

/// What is done with every frame.
class FrameWork {
public:
    FrameWork() = default;
    FrameWork(const FrameWork&) = delete;
    FrameWork& operator=(const FrameWork&) = delete;
    virtual ~FrameWork() = default;

    /// Reads the next frame; false at the end. In order, one at a time.
    virtual bool Read(FrameSlot& slot) = 0;

    /// Makes the output. Several at a time, each worker one.
    ///
    /// worker  from 0 to below the number of jobs
    virtual void Render(int worker, FrameSlot& slot) = 0;

    /// Takes the output. In the order of reading, one at a time.
    virtual void Write(const FrameSlot& slot) = 0;
};

/// Reads, renders and writes frames to the end, in `jobs` threads that hold a frame each: there are never more
/// frames in memory. What is written does not depend on `jobs`. The first exception ends the work and is
/// thrown again here; a Ctrl-C throws Failure, while an InterruptWatch lives.
///
/// report  called from this thread about ten times a second with the number of frames written
///
/// Gives the number of frames.
std::int64_t RunFrames(FrameWork& work, int jobs, const std::function<void(std::int64_t)>& report);

} // namespace kelmora::host
