#pragma once

#include <cstdint>

#include "contract/video_frame.h"

namespace kelmora::reference {

/// As the host answers for them, normalised.
struct ActiveCameraKnobs {
    float horizontal = 0, vertical = 0, rotation = 0, crop = 0, rate = 0, jitter = 0, hold = 0, blur = 0;
    bool synchronize = false;
};

/// The generator behind the walk.
class CameraRandom {
public:
    void Seed(double a, double b, std::uint32_t seed);

    /// 0 to 32767.
    std::uint32_t Next();

    /// -scale to just under +scale in 512 steps.
    float Draw(double scale);

private:
    std::uint32_t m_state = 0;
};

/// One axis of the walk at `time`, replayed from 0 knot by knot: the cost grows with the time. Knobs from 0 to 1.
float CameraNoise(float rate, float hold, float jitter, double time, std::uint32_t timingSeed,
                  std::uint32_t valueSeed);

/// What a frame needs besides the pictures.
struct CameraMoment {
    double time = 0;
    double aspect = 1; ///< of a pixel; 2 for the rows of a field
};

/// Where the camera looks, as a matrix for row vectors.
void CameraTransform(const ActiveCameraKnobs& knobs, int width, int height, const CameraMoment& moment,
                     float (&matrix)[3][3]);

/// Active Camera, step by step, into `output`'s memory. The two records are of one picture format.
void ActiveCamera(const VideoFrame& picture, const VideoFrame& output, const ActiveCameraKnobs& knobs,
                  const CameraMoment& moment);

} // namespace kelmora::reference
