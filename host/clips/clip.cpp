#include "host/clips/clip.h"

#include <limits>

#include "host/failure.h"

namespace kelmora::host {

void CheckFrameSize(const std::string& path, std::int64_t width, std::int64_t height)
{
    constexpr std::int64_t kMostPixels =
        std::numeric_limits<std::int32_t>::max() / 4; // bytes count in 32 bits
    if (width < 1 || height < 1 || width > kMostPixels / height) {
        throw Failure(ExitCode::Failed,
                      "cannot read " + path + ": no frame has " + std::to_string(width) + " x "
                          + std::to_string(height) + " pixels");
    }
}

} // namespace kelmora::host
