#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "contract/video_frame.h"
#include "tests/support/guard_pages.h"

namespace kelmora {

/// What guards a picture's memory.
enum class Guard {
    Moat,       ///< heap; marked bytes before, behind and between the rows, compared by Check
    PageEnd,    ///< each row ends where an unreadable page starts: reading one byte past it faults
    PageStart,  ///< each row starts where an unreadable page ends: reading one byte before it faults
    PictureEnd, ///< rows follow each other as a host's do; the last one in memory ends at an unreadable page
    PictureStart, ///< rows follow each other as a host's do; the first one in memory starts at one
};

/// How a picture lies in memory.
struct PictureLayout {
    Guard guard = Guard::Moat;
    std::int32_t slack =
        0; ///< bytes between the rows; not for PageEnd and PageStart, which leave unreadable ones
    std::int32_t shift = 0; ///< bytes off 64-byte alignment, 0 to 63; Moat only
    bool upward = false;    ///< negative stride: row 0 is the last one in memory
    bool bottomUp = false;  ///< the record's flag; moves nothing
};

/// What random values a picture gets.
enum class Noise {
    Uniform,    ///< bytes: all values alike. Floats: 0 to 1, finer than byte levels
    Leaning,    ///< as Uniform, but every fourth value is 0 and every fourth the maximum
    ByteLevels, ///< bytes: as Uniform. Floats: the same bytes times the contract's 1/255
    Special,    ///< bytes: 0, 1, 254, 255. Floats: not-a-number, infinities, +-1e38, -0, denormal, above 1...
    Positive,   ///< floats: 0 or 2^-20 to 4, evenly over the exponents. Bytes: as Uniform
};

/// The float that means byte `level`.
constexpr float ByteLevel(std::uint8_t level)
{
    return static_cast<float>(level) * 0.003921569f;
}

/// True for the formats whose elements are floats.
constexpr bool IsFloatFormat(std::uint32_t format)
{
    return format == PF_BGRA32F || format == PF_ARGB32F || format == PF_Mask32F;
}

/// Bytes of a pixel of `format`; 0 for an unknown one.
constexpr std::int32_t BytesOfPixel(std::uint32_t format)
{
    switch (format) {
    case PF_BGRA8:
    case PF_ARGB8:
    case PF_Packed8:
    case PF_Mask32F:
        return 4;
    case PF_BGRA32F:
    case PF_ARGB32F:
        return 16;
    case PF_Mask8:
        return 1;
    default:
        return 0;
    }
}

/// The place in memory of colour `colour` (0 blue, 1 green, 2 red, 3 alpha).
constexpr std::int32_t PlaceOfColour(std::uint32_t format, std::int32_t colour)
{
    return format == PF_ARGB8 || format == PF_ARGB32F ? 3 - colour : colour;
}

/// A picture of the host whose surroundings tell when somebody strays into them.
///
/// (x, y) count from the record's row 0, whatever way the rows run in memory. Channels count in memory
/// order. Nothing is promised of the pixels of a new picture but that they are 0.
/// The guards are compared once more when the picture ends; a difference there fails the running test.
class GuardedPicture {
public:
    static constexpr std::uint8_t kMark = 0xC3; ///< the value of the guard bytes of a Moat
    static constexpr std::size_t kMoat = 64;    ///< guard bytes before and behind the rows

    GuardedPicture(std::int32_t width, std::int32_t height, std::int32_t pixelBytes, std::uint32_t format,
                   const PictureLayout& layout = {});

    /// As above, with the pixel size of `format`.
    GuardedPicture(std::int32_t width, std::int32_t height, std::uint32_t format,
                   const PictureLayout& layout = {})
        : GuardedPicture(width, height, BytesOfPixel(format), format, layout)
    {
    }

    /// A second picture of the same layout with the same pixels and guards of its own.
    GuardedPicture(const GuardedPicture& other);
    GuardedPicture(GuardedPicture&& other) noexcept;
    GuardedPicture& operator=(const GuardedPicture&) = delete;
    ~GuardedPicture();

    std::int32_t Width() const { return m_width; }
    std::int32_t Height() const { return m_height; }
    std::int32_t PixelBytes() const { return m_pixelBytes; }
    std::uint32_t Format() const { return m_format; }
    const PictureLayout& Layout() const { return m_layout; }

    /// Bytes from row to row; negative when the rows run upward.
    std::int32_t Stride() const { return m_stride; }

    /// Channels of a pixel: elements of the format's type.
    std::int32_t Channels() const { return m_pixelBytes / (IsFloatFormat(m_format) ? 4 : 1); }

    /// The record that the host hands over.
    VideoFrame Frame() const;

    std::uint8_t* Row(std::int32_t y) const { return m_row0 + static_cast<std::ptrdiff_t>(m_stride) * y; }
    float* FloatRow(std::int32_t y) const { return reinterpret_cast<float*>(Row(y)); }

    std::uint8_t Byte(std::int32_t x, std::int32_t y, std::int32_t channel = 0) const;
    float Float(std::int32_t x, std::int32_t y, std::int32_t channel = 0) const;
    void SetByte(std::int32_t x, std::int32_t y, std::int32_t channel, std::uint8_t value);
    void SetFloat(std::int32_t x, std::int32_t y, std::int32_t channel, float value);

    /// Sets a pixel of four channels to a colour, in the format's own order. Floats get byte / 255.
    void SetColour(std::int32_t x, std::int32_t y, std::uint8_t blue, std::uint8_t green, std::uint8_t red,
                   std::uint8_t alpha);

    /// Sets every pixel to one colour; masks take `blue`.
    void Fill(std::uint8_t blue, std::uint8_t green, std::uint8_t red, std::uint8_t alpha);

    /// Sets every pixel of a float format to one colour; masks take `blue`.
    void FillFloat(float blue, float green, float red, float alpha);

    /// Sets every byte of the pixels.
    void FillBytes(std::uint8_t value);

    /// Repeats a 32-bit word over each row, low byte first. 0x7FA5A5A5 is a not-a-number to mark outputs.
    void FillWord(std::uint32_t word);

    /// Random pixels. The same seed gives the same colours in alpha-first and alpha-last formats, and with
    /// ByteLevels also in byte and float formats.
    void FillNoise(std::uint32_t seed, Noise noise = Noise::Uniform);

    /// From here on until Thaw, a change of the pixels is a fault (pages) or found by Check (Moat).
    void Freeze();
    void Thaw();

    /// Whether all guards are as they were; if not, says which byte moved.
    testing::AssertionResult Intact() const;

    /// Fails the running test when a guard has moved.
    void Check() const { EXPECT_TRUE(Intact()); }

private:
    std::uint8_t* MemoryRow(std::int32_t y) const; // counted from the lowest address
    std::size_t StretchOffset(std::size_t stretch) const;
    void SetReadOnly(bool readOnly);
    testing::AssertionResult PagesIntact(std::size_t rowBytes) const;
    template <class Put>
    void ForEachElement(Put put);

    std::int32_t m_width;
    std::int32_t m_height;
    std::int32_t m_pixelBytes;
    std::uint32_t m_format;
    PictureLayout m_layout;
    std::int32_t m_stride = 0;
    std::uint8_t* m_row0 = nullptr;
    std::vector<std::uint8_t> m_heap;
    std::uint8_t* m_heapRows = nullptr; // the lowest row in m_heap
    std::unique_ptr<GuardPages> m_pages;
    std::size_t m_openBytes = 0; // of each stretch of open pages
    std::size_t m_stretches = 0; // one for each row or for the whole picture
    std::vector<std::uint8_t> m_frozen;
    bool m_isFrozen = false;
};

/// The first place where two pictures differ.
struct Difference {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t channel = 0;
    std::size_t pixels = 0; ///< how many pixels differ in all
    double largest = 0.0;   ///< largest distance of two values; infinite when one is not a number
    std::string text;       ///< all of that in words
};

/// Compares two records of one size and format, bit for bit. Empty when they are equal.
/// tolerance  largest distance of two values that still counts as equal; above 0 compares values, not bits
std::optional<Difference> FirstDifference(const VideoFrame& a, const VideoFrame& b, double tolerance = 0.0);

/// For EXPECT_TRUE: the same size, format and pixels, bit for bit. Says where the first difference is.
testing::AssertionResult Equal(const VideoFrame& actual, const VideoFrame& expected);
testing::AssertionResult Equal(const GuardedPicture& actual, const GuardedPicture& expected);

/// For EXPECT_TRUE: no value farther than `tolerance` from the expected one.
testing::AssertionResult Near(const GuardedPicture& actual, const GuardedPicture& expected, double tolerance);

/// For EXPECT_TRUE: outside of the first `width` columns and `height` rows nothing has changed.
testing::AssertionResult SameOutside(const GuardedPicture& now, const GuardedPicture& before,
                                     std::int32_t width, std::int32_t height);

} // namespace kelmora
