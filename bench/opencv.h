#pragma once

#include <opencv2/core.hpp>

#include "bench/cases.h"

namespace kelmora::bench {

inline constexpr const char* kOpenCv = "OpenCV";

/// A picture as OpenCV sees it. The memory is the picture's.
inline cv::Mat MatOf(const Picture& picture)
{
    return cv::Mat(picture.Height(), picture.Width(), HasFloats(picture.Format()) ? CV_32FC4 : CV_8UC4,
                   picture.Bytes(), static_cast<std::size_t>(picture.Step()));
}

} // namespace kelmora::bench
