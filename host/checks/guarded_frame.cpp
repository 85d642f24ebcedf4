#include "host/checks/guarded_frame.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "host/knob_value.h"
#include "host/pictures/pixel_conversion.h"

namespace kelmora::host {
namespace {

constexpr std::uint8_t kMark = 0x5C;
constexpr std::size_t kMoat = 256;
constexpr std::size_t kAlignment = 64;

bool IsFloatFormat(std::uint32_t format)
{
    return format == PF_BGRA32F || format == PF_ARGB32F || format == PF_Mask32F;
}

bool AllMarked(const std::uint8_t* from, const std::uint8_t* end)
{
    return std::all_of(from, end, [](std::uint8_t byte) { return byte == kMark; });
}

/// The values of one pixel, one after the other.
std::string PixelText(const FrameShape& shape, const std::uint8_t* pixel)
{
    const auto bytes = static_cast<std::size_t>(shape.pixelBytes);
    std::string text;
    if (!IsFloatFormat(shape.format)) {
        for (std::size_t i = 0; i < bytes; ++i)
            text += (i == 0 ? "" : " ") + std::to_string(pixel[i]);
        return text;
    }
    for (std::size_t i = 0; i + sizeof(float) <= bytes; i += sizeof(float)) {
        float level = 0.0f;
        std::memcpy(&level, pixel + i, sizeof level);
        text += (i == 0 ? "" : " ") + FloatText(level);
    }
    return text;
}

} // namespace

FrameShape ShapeOf(std::int32_t width, std::int32_t height, PixelFormat format)
{
    FrameShape shape;
    shape.width = width;
    shape.height = height;
    shape.format = format;
    shape.pixelBytes = BytesOfPixel(format);
    return shape;
}

std::string FormatText(std::uint32_t format)
{
    switch (format) {
    case PF_BGRA8:
        return "bgra8";
    case PF_ARGB8:
        return "argb8";
    case PF_BGRA32F:
        return "bgra32f";
    case PF_ARGB32F:
        return "argb32f";
    default:
        return "format " + std::to_string(format);
    }
}

GuardedFrame::GuardedFrame(const FrameShape& shape) : m_shape(shape)
{
    const std::size_t bytes = Rows() * Step();
    m_memory.assign(bytes + 2 * kMoat + 2 * kAlignment, kMark);
    const auto address = reinterpret_cast<std::uintptr_t>(m_memory.data()) + kMoat;
    const std::uintptr_t aligned = (address + kAlignment - 1) / kAlignment * kAlignment;
    m_start = m_memory.data() + kMoat + (aligned - address) + static_cast<std::size_t>(m_shape.shift);
    Fill(0);
}

std::size_t GuardedFrame::RowBytes() const
{
    return static_cast<std::size_t>(std::max(m_shape.width, 0))
        * static_cast<std::size_t>(std::max(m_shape.pixelBytes, 0));
}

std::size_t GuardedFrame::Step() const
{
    return RowBytes() + static_cast<std::size_t>(m_shape.slack);
}

std::size_t GuardedFrame::Rows() const
{
    return static_cast<std::size_t>(std::max(m_shape.height, 0));
}

VideoFrame GuardedFrame::Record()
{
    const auto step = static_cast<std::int32_t>(Step());
    VideoFrame frame = {};
    frame.data = m_shape.upward && Rows() > 0 ? Row(Rows() - 1) : m_start;
    frame.width = m_shape.width;
    frame.height = m_shape.height;
    frame.stride = m_shape.upward ? -step : step;
    frame.pixelBytes = m_shape.pixelBytes;
    frame.format = m_shape.format;
    frame.bottomUp = m_shape.bottomUp;
    return frame;
}

void GuardedFrame::FillNoise(std::uint32_t seed)
{
    // The engine's own values: what the standard library makes of them differs from one to the other.
    std::mt19937 engine(seed);
    const bool isFloat = IsFloatFormat(m_shape.format);
    for (std::size_t row = 0; row < Rows(); ++row) {
        std::size_t at = 0;
        for (; isFloat && at + sizeof(float) <= RowBytes(); at += sizeof(float)) {
            const float level = static_cast<float>(engine() >> 8) * (1.0f / 16777215.0f);
            std::memcpy(Row(row) + at, &level, sizeof level);
        }
        for (; at < RowBytes(); ++at)
            Row(row)[at] = static_cast<std::uint8_t>(engine() >> 24);
    }
}

void GuardedFrame::Fill(std::uint8_t byte)
{
    for (std::size_t row = 0; row < Rows(); ++row)
        std::fill_n(Row(row), RowBytes(), byte);
}

std::vector<std::uint8_t> GuardedFrame::Pixels() const
{
    std::vector<std::uint8_t> pixels;
    pixels.reserve(Rows() * RowBytes());
    for (std::size_t row = 0; row < Rows(); ++row)
        pixels.insert(pixels.end(), Row(row), Row(row) + RowBytes());
    return pixels;
}

bool GuardedFrame::AreGuardsIntact() const
{
    const std::uint8_t* const end = m_memory.data() + m_memory.size();
    if (!AllMarked(m_memory.data(), m_start) || !AllMarked(m_start + Rows() * Step(), end))
        return false;
    for (std::size_t row = 0; row < Rows(); ++row) {
        if (!AllMarked(Row(row) + RowBytes(), Row(row) + Step()))
            return false;
    }
    return true;
}

std::string FirstDifference(const FrameShape& shape, const std::vector<std::uint8_t>& is,
                            const std::vector<std::uint8_t>& shouldBe)
{
    if (is.size() != shouldBe.size())
        return "the sizes differ";
    const auto place = std::mismatch(is.begin(), is.end(), shouldBe.begin()).first;
    if (place == is.end())
        return {};
    const auto pixelBytes = static_cast<std::size_t>(shape.pixelBytes);
    const std::size_t pixel = static_cast<std::size_t>(place - is.begin()) / pixelBytes;
    const auto width = static_cast<std::size_t>(shape.width);
    return "pixel (" + std::to_string(pixel % width) + ", " + std::to_string(pixel / width) + ") is "
        + PixelText(shape, &is[pixel * pixelBytes]) + ", not "
        + PixelText(shape, &shouldBe[pixel * pixelBytes]);
}

} // namespace kelmora::host
