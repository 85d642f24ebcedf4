#include "effects/painterly/edge_lift.h"

#include <algorithm>
#include <cstddef>

#include "contract/video_frame.h"
#include "effects/common/by_format.h"
#include "effects/common/precision.h"
#include "effects/painterly/edge_lift_kernels.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(EdgeLiftKernels, kEdgeLiftKernels, EdgeLiftKernelsFor)

namespace kelmora {
namespace {

/// In 256ths. Below 0, which takes an edge beyond 1, no pixel is lifted: as with 0.
float ByteShare(float edge)
{
    const double e = static_cast<double>(edge);
    return static_cast<float>(std::clamp(Truncate(245.0 - e * e * 245.0), 0, 245));
}

template <class T>
void EdgeLift(EdgeLiftKernels::Row lift, const T* picture, T* output, int pictureRowPixels,
              int outputRowPixels, int width, int height, float share)
{
    for (int y = 0; y < height; ++y) {
        // Bytes and not elements: rows may start at any address.
        constexpr auto pixelBytes = static_cast<std::ptrdiff_t>(4 * sizeof(T));
        const auto* from =
            reinterpret_cast<const unsigned char*>(picture) + pixelBytes * pictureRowPixels * y;
        auto* row = reinterpret_cast<unsigned char*>(output) + pixelBytes * outputRowPixels * y;
        lift(from, row, row, width, share);
    }
}

const EdgeLiftKernels& Kernels()
{
    return EdgeLiftKernelsFor(CurrentVariant());
}

} // namespace

int AllChannelsByteShare(float fogLevel)
{
    const double v = static_cast<double>(fogLevel);
    return std::clamp(Truncate((1.0 - v * v) * 245.0), 0, 245);
}

EdgeLiftRow::EdgeLiftRow(std::uint32_t format, float edge)
    : m_lift(ByFormat(Kernels().keepAlpha, format)),
      m_share(IsFloat(format) ? FloatLiftShare(static_cast<double>(edge)) : ByteShare(edge))
{
}

void EdgeLiftRow::operator()(const void* picture, const void* blurred, void* result, int width) const
{
    m_lift(picture, blurred, result, width, m_share);
}

void EdgeLiftKeepAlpha_BGRA8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                             int outputRowPixels, int width, int height, float edge)
{
    EdgeLift(Kernels().keepAlpha.bgra8, picture, output, pictureRowPixels, outputRowPixels, width, height,
             ByteShare(edge));
}

void EdgeLiftKeepAlpha_ARGB8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                             int outputRowPixels, int width, int height, float edge)
{
    EdgeLift(Kernels().keepAlpha.argb8, picture, output, pictureRowPixels, outputRowPixels, width, height,
             ByteShare(edge));
}

void EdgeLiftKeepAlpha_BGRA32F(const float* picture, float* output, int pictureRowPixels, int outputRowPixels,
                               int width, int height, float edge)
{
    EdgeLift(Kernels().keepAlpha.bgra32f, picture, output, pictureRowPixels, outputRowPixels, width, height,
             FloatLiftShare(static_cast<double>(edge)));
}

void EdgeLiftKeepAlpha_ARGB32F(const float* picture, float* output, int pictureRowPixels, int outputRowPixels,
                               int width, int height, float edge)
{
    EdgeLift(Kernels().keepAlpha.argb32f, picture, output, pictureRowPixels, outputRowPixels, width, height,
             FloatLiftShare(static_cast<double>(edge)));
}

void EdgeLiftAllChannels_BGRA8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                               int outputRowPixels, int width, int height, float fogLevel)
{
    EdgeLift(Kernels().allChannels.bgra8, picture, output, pictureRowPixels, outputRowPixels, width, height,
             static_cast<float>(AllChannelsByteShare(fogLevel)));
}

void EdgeLiftAllChannels_ARGB8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                               int outputRowPixels, int width, int height, float fogLevel)
{
    EdgeLift(Kernels().allChannels.argb8, picture, output, pictureRowPixels, outputRowPixels, width, height,
             static_cast<float>(AllChannelsByteShare(fogLevel)));
}

void EdgeLiftAllChannels_BGRA32F(const float* picture, float* output, int pictureRowPixels,
                                 int outputRowPixels, int width, int height, float share)
{
    EdgeLift(Kernels().allChannels.bgra32f, picture, output, pictureRowPixels, outputRowPixels, width, height,
             share);
}

void EdgeLiftAllChannels_ARGB32F(const float* picture, float* output, int pictureRowPixels,
                                 int outputRowPixels, int width, int height, float share)
{
    EdgeLift(Kernels().allChannels.argb32f, picture, output, pictureRowPixels, outputRowPixels, width, height,
             share);
}

} // namespace kelmora
