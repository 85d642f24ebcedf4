#include "effects/painterly/edge_lift.h"

#include <algorithm>
#include <cstddef>

#include "contract/video_frame.h"
#include "effects/common/precision.h"
#include "effects/painterly/edge_lift_kernels.h"
#include "image/pixel_format.h"

namespace kelmora {

namespace baseline {
extern const EdgeLiftKernels kEdgeLiftKernels;
}
#ifdef KELMORA_HAVE_AVX_VARIANTS
namespace avx2 {
extern const EdgeLiftKernels kEdgeLiftKernels;
}
namespace avx512 {
extern const EdgeLiftKernels kEdgeLiftKernels;
}
#endif

const EdgeLiftKernels& EdgeLiftKernelsFor(CpuVariant variant)
{
#ifdef KELMORA_HAVE_AVX_VARIANTS
    switch (variant) {
    case CpuVariant::Avx512:
        return avx512::kEdgeLiftKernels;
    case CpuVariant::Avx2:
        return avx2::kEdgeLiftKernels;
    case CpuVariant::Baseline:
        break;
    }
#endif
    (void)variant;
    return baseline::kEdgeLiftKernels;
}

namespace {

/// In 256ths. Below 0, which takes an edge beyond 1, no pixel is lifted: as with 0.
float ByteShare(float edge)
{
    const double e = static_cast<double>(edge);
    return static_cast<float>(std::clamp(Truncate(245.0 - e * e * 245.0), 0, 245));
}

float FloatShare(float edge)
{
    const double e = static_cast<double>(edge);
    return static_cast<float>((1.0 - e * e) * 0.9607843160629272);
}

EdgeLiftKernels::Row RowFor(const EdgeLiftKernels& kernels, std::uint32_t format)
{
    switch (format) {
    case PF_ARGB8:
        return kernels.argb8;
    case PF_BGRA32F:
        return kernels.bgra32f;
    case PF_ARGB32F:
        return kernels.argb32f;
    default:
        return kernels.bgra8;
    }
}

template <class T>
void EdgeLift(std::uint32_t format, const T* picture, T* output, int pictureRowPixels, int outputRowPixels,
              int width, int height, float edge)
{
    const EdgeLiftRow lift(format, edge);
    for (int y = 0; y < height; ++y) {
        // Bytes and not elements: rows may start at any address.
        constexpr auto pixelBytes = static_cast<std::ptrdiff_t>(4 * sizeof(T));
        const auto* from =
            reinterpret_cast<const unsigned char*>(picture) + pixelBytes * pictureRowPixels * y;
        auto* row = reinterpret_cast<unsigned char*>(output) + pixelBytes * outputRowPixels * y;
        lift(from, row, row, width);
    }
}

} // namespace

EdgeLiftRow::EdgeLiftRow(std::uint32_t format, float edge)
    : m_lift(RowFor(EdgeLiftKernelsFor(CurrentVariant()), format)),
      m_share(IsFloat(format) ? FloatShare(edge) : ByteShare(edge))
{
}

void EdgeLiftRow::operator()(const void* picture, const void* blurred, void* result, int width) const
{
    m_lift(picture, blurred, result, width, m_share);
}

void EdgeLiftKeepAlpha_BGRA8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                             int outputRowPixels, int width, int height, float edge)
{
    EdgeLift(PF_BGRA8, picture, output, pictureRowPixels, outputRowPixels, width, height, edge);
}

void EdgeLiftKeepAlpha_ARGB8(const std::uint8_t* picture, std::uint8_t* output, int pictureRowPixels,
                             int outputRowPixels, int width, int height, float edge)
{
    EdgeLift(PF_ARGB8, picture, output, pictureRowPixels, outputRowPixels, width, height, edge);
}

void EdgeLiftKeepAlpha_BGRA32F(const float* picture, float* output, int pictureRowPixels, int outputRowPixels,
                               int width, int height, float edge)
{
    EdgeLift(PF_BGRA32F, picture, output, pictureRowPixels, outputRowPixels, width, height, edge);
}

void EdgeLiftKeepAlpha_ARGB32F(const float* picture, float* output, int pictureRowPixels, int outputRowPixels,
                               int width, int height, float edge)
{
    EdgeLift(PF_ARGB32F, picture, output, pictureRowPixels, outputRowPixels, width, height, edge);
}

} // namespace kelmora
