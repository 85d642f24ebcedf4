#include "tests/support/guarded_picture.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>

namespace kelmora {
namespace {

std::size_t RoundUp(std::size_t value, std::size_t unit)
{
    return (value + unit - 1) / unit * unit;
}

float LoadFloat(const std::uint8_t* place)
{
    float value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

void StoreFloat(std::uint8_t* place, float value)
{
    std::memcpy(place, &value, sizeof value);
}

std::uint8_t* RowOf(const VideoFrame& frame, std::int32_t y)
{
    return static_cast<std::uint8_t*>(frame.data) + static_cast<std::ptrdiff_t>(frame.stride) * y;
}

std::string Describe(const std::uint8_t* place, bool isFloat)
{
    std::ostringstream text;
    if (isFloat) {
        const float value = LoadFloat(place);
        text.precision(9);
        text << value << " (0x" << std::hex << std::bit_cast<std::uint32_t>(value) << ")";
    } else {
        text << static_cast<int>(*place);
    }
    return text.str();
}

double Distance(const std::uint8_t* a, const std::uint8_t* b, bool isFloat)
{
    if (!isFloat)
        return std::abs(static_cast<double>(*a) - static_cast<double>(*b));
    const double first = static_cast<double>(LoadFloat(a));
    const double second = static_cast<double>(LoadFloat(b));
    if (std::isnan(first) && std::isnan(second))
        return 0.0;
    if (first == second)
        return 0.0;
    const double distance = std::abs(first - second);
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

constexpr float kSpecialFloats[] = {
    0.0f,
    -0.0f,
    1.0f,
    1.0f + std::numeric_limits<float>::epsilon(),
    -1.0f,
    4.0f,
    1e-40f, // denormal
    1e38f,
    -1e38f,
    std::numeric_limits<float>::infinity(),
    -std::numeric_limits<float>::infinity(),
    std::numeric_limits<float>::quiet_NaN(),
};

// Draws one element's value after another. Each draws the same number of engine values whatever the kind,
// so that byte and float pictures of one seed stay in step.
class NoiseSource {
public:
    NoiseSource(std::uint32_t seed, Noise noise) : m_engine(seed), m_noise(noise) {}

    std::uint8_t NextByte()
    {
        const std::uint32_t bits = Draw();
        const auto uniform = static_cast<std::uint8_t>(bits >> 24);
        switch (m_noise) {
        case Noise::Leaning:
            return (bits & 3) == 0 ? std::uint8_t{0} : (bits & 3) == 1 ? std::uint8_t{255} : uniform;
        case Noise::Special: {
            constexpr std::uint8_t values[] = {0, 1, 254, 255};
            return values[bits & 3];
        }
        default:
            return uniform;
        }
    }

    float NextFloat()
    {
        if (m_noise == Noise::ByteLevels)
            return ByteLevel(NextByte());
        const std::uint32_t bits = Draw();
        const float uniform = static_cast<float>(bits >> 8) / 16777215.0f;
        switch (m_noise) {
        case Noise::Leaning:
            return (bits & 3) == 0 ? 0.0f : (bits & 3) == 1 ? 1.0f : uniform;
        case Noise::Special:
            return kSpecialFloats[bits % std::size(kSpecialFloats)];
        case Noise::Positive: {
            // 2^-20 to 4: exponents -20 to 1, the mantissa from the bits above.
            const std::uint32_t exponent = bits % 23;
            return exponent == 22
                ? 0.0f
                : std::bit_cast<float>(((107u + exponent) << 23) | ((bits >> 9) & 0x7FFFFFu));
        }
        default:
            return uniform;
        }
    }

private:
    std::uint32_t Draw() { return static_cast<std::uint32_t>(m_engine()); }

    std::mt19937 m_engine;
    Noise m_noise;
};

/// Whether unreadable pages part the rows from each other.
bool IsEachRow(Guard guard)
{
    return guard == Guard::PageEnd || guard == Guard::PageStart;
}

testing::AssertionResult Moved(const std::uint8_t* place, const std::string& where, std::int32_t row)
{
    std::ostringstream value;
    value << "0x" << std::hex << static_cast<int>(*place);
    return testing::AssertionFailure() << "guard byte " << where << " row " << row << " (in memory order) is "
                                       << value.str() << ", was 0xc3";
}

} // namespace

GuardedPicture::GuardedPicture(std::int32_t width, std::int32_t height, std::int32_t pixelBytes,
                               std::uint32_t format, const PictureLayout& layout)
    : m_width(width), m_height(height), m_pixelBytes(pixelBytes), m_format(format), m_layout(layout)
{
    const auto rowBytes =
        static_cast<std::size_t>(std::max(width, 0)) * static_cast<std::size_t>(std::max(pixelBytes, 0));
    const auto rows = static_cast<std::size_t>(std::max(height, 0));
    std::size_t step = 0;
    std::uint8_t* lowest = nullptr;
    if (layout.guard == Guard::Moat) {
        step = rowBytes + static_cast<std::size_t>(layout.slack);
        const std::size_t bytes = kMoat + rows * step + kMoat;
        m_heap.assign(bytes + 2 * kMoat, kMark);
        const auto address = reinterpret_cast<std::uintptr_t>(m_heap.data() + kMoat);
        const std::size_t align = RoundUp(address, kMoat) - address;
        m_heapRows = m_heap.data() + kMoat + align + static_cast<std::size_t>(layout.shift);
        lowest = m_heapRows;
    } else {
        const std::size_t page = PageBytes();
        const bool eachRow = IsEachRow(layout.guard);
        const std::size_t together =
            rows > 0 ? (rows - 1) * (rowBytes + static_cast<std::size_t>(layout.slack)) : 0;
        const std::size_t bytes =
            rowBytes + (eachRow ? 0 : together); // nothing is promised behind the last row
        m_openBytes = RoundUp(std::max<std::size_t>(bytes, 1), page);
        m_stretches = eachRow ? rows : std::min<std::size_t>(rows, 1);
        step = eachRow ? m_openBytes + page : rowBytes + static_cast<std::size_t>(layout.slack);
        m_pages = std::make_unique<GuardPages>(StretchOffset(std::max<std::size_t>(m_stretches, 1)));
        for (std::size_t i = 0; i < m_stretches; ++i) {
            m_pages->Open(StretchOffset(i), m_openBytes);
            // What is open beside the rows is a guard too.
            std::memset(m_pages->Base() + StretchOffset(i), kMark, m_openBytes);
        }
        std::ostringstream name;
        name << "a picture of " << width << " x " << height << " pixels, " << pixelBytes << " bytes each ("
             << (eachRow ? "stretches are rows in memory order" : "in one stretch") << ")";
        m_pages->SetName(name.str());
        lowest = m_pages->Base() + page;
        if (layout.guard == Guard::PageEnd || layout.guard == Guard::PictureEnd)
            lowest += m_openBytes - bytes;
    }
    const auto signedStep = static_cast<std::int32_t>(step);
    m_stride = layout.upward ? -signedStep : signedStep;
    m_row0 = layout.upward && rows > 0 ? lowest + (rows - 1) * step : lowest;
    FillBytes(0);
}

GuardedPicture::GuardedPicture(const GuardedPicture& other)
    : GuardedPicture(other.m_width, other.m_height, other.m_pixelBytes, other.m_format, other.m_layout)
{
    const auto rowBytes = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_pixelBytes);
    for (std::int32_t y = 0; y < m_height; ++y)
        std::memcpy(Row(y), other.Row(y), rowBytes);
}

GuardedPicture::GuardedPicture(GuardedPicture&& other) noexcept = default;

GuardedPicture::~GuardedPicture()
{
    if (m_pages || !m_heap.empty()) // else moved from
        Check();
}

std::size_t GuardedPicture::StretchOffset(std::size_t stretch) const
{
    return PageBytes() + stretch * (m_openBytes + PageBytes());
}

std::uint8_t* GuardedPicture::MemoryRow(std::int32_t y) const
{
    return m_layout.upward ? Row(m_height - 1 - y) : Row(y);
}

VideoFrame GuardedPicture::Frame() const
{
    VideoFrame frame = {};
    frame.data = m_row0;
    frame.width = m_width;
    frame.height = m_height;
    frame.stride = m_stride;
    frame.pixelBytes = m_pixelBytes;
    frame.format = m_format;
    frame.bottomUp = m_layout.bottomUp ? 1 : 0;
    return frame;
}

std::uint8_t GuardedPicture::Byte(std::int32_t x, std::int32_t y, std::int32_t channel) const
{
    return Row(y)[static_cast<std::ptrdiff_t>(x) * m_pixelBytes + channel];
}

float GuardedPicture::Float(std::int32_t x, std::int32_t y, std::int32_t channel) const
{
    return LoadFloat(Row(y) + static_cast<std::ptrdiff_t>(x) * m_pixelBytes + channel * 4);
}

void GuardedPicture::SetByte(std::int32_t x, std::int32_t y, std::int32_t channel, std::uint8_t value)
{
    Row(y)[static_cast<std::ptrdiff_t>(x) * m_pixelBytes + channel] = value;
}

void GuardedPicture::SetFloat(std::int32_t x, std::int32_t y, std::int32_t channel, float value)
{
    StoreFloat(Row(y) + static_cast<std::ptrdiff_t>(x) * m_pixelBytes + channel * 4, value);
}

void GuardedPicture::SetColour(std::int32_t x, std::int32_t y, std::uint8_t blue, std::uint8_t green,
                               std::uint8_t red, std::uint8_t alpha)
{
    const std::uint8_t colours[] = {blue, green, red, alpha};
    for (std::int32_t colour = 0; colour < Channels(); ++colour) {
        const std::int32_t place = Channels() == 4 ? PlaceOfColour(m_format, colour) : colour;
        if (IsFloatFormat(m_format))
            SetFloat(x, y, place, ByteLevel(colours[colour]));
        else
            SetByte(x, y, place, colours[colour]);
    }
}

// put(x, y, place, colour) for each element, colours in the order blue, green, red, alpha.
template <class Put>
void GuardedPicture::ForEachElement(Put put)
{
    const std::int32_t channels = Channels();
    for (std::int32_t y = 0; y < m_height; ++y)
        for (std::int32_t x = 0; x < m_width; ++x)
            for (std::int32_t colour = 0; colour < channels; ++colour)
                put(x, y, channels == 4 ? PlaceOfColour(m_format, colour) : colour, colour);
}

void GuardedPicture::Fill(std::uint8_t blue, std::uint8_t green, std::uint8_t red, std::uint8_t alpha)
{
    const std::uint8_t colours[] = {blue, green, red, alpha};
    const bool isFloat = IsFloatFormat(m_format);
    ForEachElement([&](std::int32_t x, std::int32_t y, std::int32_t place, std::int32_t colour) {
        if (isFloat)
            SetFloat(x, y, place, ByteLevel(colours[colour & 3]));
        else
            SetByte(x, y, place, colours[colour & 3]);
    });
}

void GuardedPicture::FillFloat(float blue, float green, float red, float alpha)
{
    ASSERT_TRUE(IsFloatFormat(m_format));
    const float colours[] = {blue, green, red, alpha};
    ForEachElement([&](std::int32_t x, std::int32_t y, std::int32_t place, std::int32_t colour) {
        SetFloat(x, y, place, colours[colour & 3]);
    });
}

void GuardedPicture::FillBytes(std::uint8_t value)
{
    for (std::int32_t y = 0; y < m_height; ++y)
        std::memset(Row(y), value,
                    static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_pixelBytes));
}

void GuardedPicture::FillWord(std::uint32_t word)
{
    const std::int32_t rowBytes = m_width * m_pixelBytes;
    for (std::int32_t y = 0; y < m_height; ++y)
        for (std::int32_t i = 0; i < rowBytes; ++i)
            Row(y)[i] = static_cast<std::uint8_t>(word >> (8 * (i & 3)));
}

void GuardedPicture::FillNoise(std::uint32_t seed, Noise noise)
{
    NoiseSource source(seed, noise);
    const bool isFloat = IsFloatFormat(m_format);
    ForEachElement([&](std::int32_t x, std::int32_t y, std::int32_t place, std::int32_t) {
        if (isFloat)
            SetFloat(x, y, place, source.NextFloat());
        else
            SetByte(x, y, place, source.NextByte());
    });
}

void GuardedPicture::SetReadOnly(bool readOnly)
{
    for (std::size_t i = 0; i < m_stretches; ++i)
        m_pages->SetReadOnly(StretchOffset(i), m_openBytes, readOnly);
}

void GuardedPicture::Freeze()
{
    m_isFrozen = true;
    if (m_pages)
        SetReadOnly(true);
    else
        m_frozen = m_heap;
}

void GuardedPicture::Thaw()
{
    Check();
    m_isFrozen = false;
    m_frozen.clear();
    if (m_pages)
        SetReadOnly(false);
}

testing::AssertionResult GuardedPicture::PagesIntact(std::size_t rowBytes) const
{
    const bool eachRow = IsEachRow(m_layout.guard);
    const std::uint8_t* stretch = nullptr;
    const std::uint8_t* place = nullptr;
    for (std::int32_t y = 0; y < m_height; ++y) {
        const std::uint8_t* const row = MemoryRow(y);
        if (y == 0 || eachRow)
            place = stretch = m_pages->Base() + StretchOffset(eachRow ? static_cast<std::size_t>(y) : 0);
        for (; place < row; ++place)
            if (*place != kMark)
                return Moved(place, std::to_string(row - place) + " bytes before", y);
        place = row + rowBytes;
        if (y + 1 < m_height && !eachRow)
            continue;
        for (; place < stretch + m_openBytes; ++place)
            if (*place != kMark)
                return Moved(place,
                             std::to_string(place - row - static_cast<std::ptrdiff_t>(rowBytes))
                                 + " bytes past the end of",
                             y);
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult GuardedPicture::Intact() const
{
    const auto rowBytes =
        static_cast<std::size_t>(std::max(m_width, 0)) * static_cast<std::size_t>(std::max(m_pixelBytes, 0));
    if (m_pages)
        return PagesIntact(rowBytes);

    const std::size_t step = rowBytes + static_cast<std::size_t>(m_layout.slack);
    const std::size_t rows = static_cast<std::size_t>(std::max(m_height, 0));
    for (std::size_t i = 1; i <= kMoat; ++i)
        if (m_heapRows[-static_cast<std::ptrdiff_t>(i)] != kMark)
            return Moved(m_heapRows - i, (std::to_string(i) + " bytes before"), 0);
    for (std::size_t y = 0; y < rows; ++y)
        for (std::size_t i = rowBytes; i < step; ++i)
            if (m_heapRows[y * step + i] != kMark)
                return Moved(m_heapRows + y * step + i,
                             (std::to_string(i - rowBytes) + " bytes past the end of"),
                             static_cast<std::int32_t>(y));
    for (std::size_t i = 0; i < kMoat; ++i)
        if (m_heapRows[rows * step + i] != kMark)
            return Moved(m_heapRows + rows * step + i, (std::to_string(i) + " bytes behind the slack of"),
                         m_height - 1);
    if (m_isFrozen && m_frozen != m_heap) {
        const auto place = std::mismatch(m_heap.begin(), m_heap.end(), m_frozen.begin()).first;
        const auto offset = static_cast<std::size_t>(&*place - m_heapRows);
        return testing::AssertionFailure() << "a frozen picture was written: row " << offset / step
                                           << " (in memory order), byte " << offset % step;
    }
    return testing::AssertionSuccess();
}

std::optional<Difference> FirstDifference(const VideoFrame& a, const VideoFrame& b, double tolerance)
{
    Difference difference;
    if (a.width != b.width || a.height != b.height || a.pixelBytes != b.pixelBytes || a.format != b.format) {
        std::ostringstream text;
        text << "the pictures are of two kinds: " << a.width << " x " << a.height << ", " << a.pixelBytes
             << " bytes a pixel, format " << a.format << " against " << b.width << " x " << b.height << ", "
             << b.pixelBytes << " bytes a pixel, format " << b.format;
        difference.text = text.str();
        return difference;
    }
    const bool isFloat = IsFloatFormat(a.format) && a.pixelBytes % 4 == 0;
    const std::int32_t element = isFloat ? 4 : 1;
    std::ostringstream text;
    for (std::int32_t y = 0; y < a.height; ++y) {
        const std::uint8_t* const rowA = RowOf(a, y);
        const std::uint8_t* const rowB = RowOf(b, y);
        if (std::memcmp(rowA, rowB,
                        static_cast<std::size_t>(a.width) * static_cast<std::size_t>(a.pixelBytes))
            == 0)
            continue;
        for (std::int32_t x = 0; x < a.width; ++x) {
            bool pixelDiffers = false;
            for (std::int32_t offset = 0; offset < a.pixelBytes; offset += element) {
                const std::uint8_t* const placeA =
                    rowA + static_cast<std::ptrdiff_t>(x) * a.pixelBytes + offset;
                const std::uint8_t* const placeB =
                    rowB + static_cast<std::ptrdiff_t>(x) * a.pixelBytes + offset;
                const double distance = Distance(placeA, placeB, isFloat);
                const bool differs = tolerance > 0.0
                    ? distance > tolerance
                    : std::memcmp(placeA, placeB, static_cast<std::size_t>(element)) != 0;
                if (!differs)
                    continue;
                difference.largest = std::max(difference.largest, distance);
                pixelDiffers = true;
                if (text.tellp() == 0) {
                    difference.x = x;
                    difference.y = y;
                    difference.channel = offset / element;
                    text << "first at x " << x << ", y " << y << ", channel " << difference.channel << ": "
                         << Describe(placeA, isFloat) << " against " << Describe(placeB, isFloat);
                }
            }
            difference.pixels += pixelDiffers ? 1u : 0u;
        }
    }
    if (difference.pixels == 0)
        return {};
    text << "; " << difference.pixels << " of " << static_cast<std::int64_t>(a.width) * a.height
         << " pixels differ, by at most " << difference.largest;
    difference.text = text.str();
    return difference;
}

testing::AssertionResult Equal(const VideoFrame& actual, const VideoFrame& expected)
{
    if (const auto difference = FirstDifference(actual, expected))
        return testing::AssertionFailure() << difference->text;
    return testing::AssertionSuccess();
}

testing::AssertionResult Equal(const GuardedPicture& actual, const GuardedPicture& expected)
{
    return Equal(actual.Frame(), expected.Frame());
}

testing::AssertionResult Near(const GuardedPicture& actual, const GuardedPicture& expected, double tolerance)
{
    if (const auto difference = FirstDifference(actual.Frame(), expected.Frame(), tolerance))
        return testing::AssertionFailure() << difference->text;
    return testing::AssertionSuccess();
}

testing::AssertionResult SameOutside(const GuardedPicture& now, const GuardedPicture& before,
                                     std::int32_t width, std::int32_t height)
{
    const VideoFrame whole = now.Frame();
    const VideoFrame old = before.Frame();
    if (whole.width != old.width || whole.height != old.height || whole.pixelBytes != old.pixelBytes)
        return testing::AssertionFailure() << "the pictures are of two kinds";
    for (std::int32_t y = 0; y < whole.height; ++y) {
        const std::int32_t first = y < height ? std::min(width, whole.width) * whole.pixelBytes : 0;
        for (std::int32_t i = first; i < whole.width * whole.pixelBytes; ++i)
            if (RowOf(whole, y)[i] != RowOf(old, y)[i])
                return testing::AssertionFailure()
                    << "outside of " << width << " x " << height << ", at x " << i / whole.pixelBytes
                    << ", y " << y << ", byte " << i % whole.pixelBytes
                    << " of the pixel: " << static_cast<int>(RowOf(whole, y)[i]) << ", was "
                    << static_cast<int>(RowOf(old, y)[i]);
    }
    return testing::AssertionSuccess();
}

} // namespace kelmora
