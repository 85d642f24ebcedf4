#include "effects/scene3d/face_light.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

#include "effects/common/precision.h"
#include "effects/scene3d/face_kernels.h"
#include "image/picture_check.h"
#include "image/pixel_format.h"
#include "image/primitives/detail/variant_table.h"

KELMORA_VARIANT_TABLE(FaceKernels, kFaceKernels, FaceKernelsFor)

namespace kelmora {
namespace {

using ByteCurve = std::array<std::uint8_t, 256>;

ByteCurve CurveFor(double light)
{
    ByteCurve curve;
    for (int i = 0; i < 256; ++i)
        curve[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(std::clamp(Truncate(i * light + 0.5), 0, 255));
    return curve;
}

/// Whether single precision gives the same bytes, so that the curve need not be looked up.
bool IsPlain(const ByteCurve& curve, float light)
{
    if (!(light >= 0.0f && light <= 1.0f)) // no integers come out beyond
        return false;
    for (int i = 0; i < 256; ++i) {
        const float raised = static_cast<float>(i) * light + 0.5f;
        if (static_cast<int>(raised) != curve[static_cast<std::size_t>(i)])
            return false;
    }
    return true;
}

/// `to` may be `from`, here and below.
void LightBytes(const FrameBuffer& from, FrameBuffer& to, double light)
{
    const ByteCurve curve = CurveFor(light);
    const float factor = static_cast<float>(light);
    const bool plain = IsPlain(curve, factor);
    const auto lightRow = FaceKernelsFor(CurrentVariant()).lightBytes;
    const bool alphaFirst = IsAlphaFirst(to.GetFormat());
    const std::uint32_t alphaMask = alphaFirst ? 0x000000FF : 0xFF000000;
    const int alpha = alphaFirst ? 0 : 3;
    for (int y = 0; y < to.GetHeight(); ++y) {
        const std::uint8_t* pixel = from.PixelAddress(0, y, 0);
        std::uint8_t* lit = to.PixelAddress(0, y, 0);
        if (plain) {
            lightRow(pixel, lit, to.GetWidth(), factor, alphaMask);
            continue;
        }
        for (int x = 0; x < to.GetWidth(); ++x, pixel += 4, lit += 4)
            for (int c = 0; c < 4; ++c)
                lit[c] = c == alpha ? pixel[c] : curve[pixel[c]];
    }
}

void LightFloats(const FrameBuffer& from, FrameBuffer& to, double light)
{
    const LightFactors factors(to.GetFormat(), light);
    const auto lightRow = FaceKernelsFor(CurrentVariant()).lightFloats;
    for (int y = 0; y < to.GetHeight(); ++y)
        lightRow(from.PixelAddress(0, y, 0), to.PixelAddress(0, y, 0), to.GetWidth(), factors.values);
}

void LightPacked(FrameBuffer& picture, double light)
{
    const ByteCurve curve = CurveFor(light);
    for (int y = 0; y < picture.GetHeight(); ++y) {
        std::uint8_t* const row = picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
        for (std::ptrdiff_t x = 0; x < picture.GetWidth(); ++x)
            row[x * picture.GetPixelBytes()] = curve[row[x * picture.GetPixelBytes()]];
    }
}

/// A part of a picture, `right` and `bottom` beyond its last pixel.
struct Part {
    int left, top, right, bottom;
};

int CutTo(std::int64_t value, int most)
{
    return static_cast<int>(std::clamp<std::int64_t>(value, 0, most));
}

double MeanOfBytes(const FrameBuffer& picture, const Part& part, std::int64_t area)
{
    const FaceKernels& kernels = FaceKernelsFor(CurrentVariant());
    const auto sumRow = IsAlphaFirst(picture.GetFormat()) ? kernels.sumLumaArgb : kernels.sumLumaBgra;
    std::uint32_t sum = 0; // wraps for pieces of more than 16 million pixels
    for (int y = part.top; y < part.bottom; ++y)
        sum += sumRow(picture.PixelAddress(part.left, y, 0), part.right - part.left);
    const std::int64_t mean = sum / area;
    return static_cast<double>(mean);
}

double MeanOfFirstBytes(const FrameBuffer& picture, const Part& part, std::int64_t area)
{
    std::uint32_t sum = 0;
    for (int y = part.top; y < part.bottom; ++y) {
        const std::uint8_t* const row = picture.GetPixels() + std::ptrdiff_t{picture.GetStride()} * y;
        for (std::ptrdiff_t x = part.left; x < part.right; ++x)
            sum += row[x * picture.GetPixelBytes()];
    }
    const std::int64_t mean = sum / area;
    return static_cast<double>(mean);
}

/// The part that counts; false where there is none.
bool FindPart(const FrameBuffer& picture, const SourceRect& rect, Part& part)
{
    const int bytes = picture.GetFormat() == PF_Packed8 ? 1 : PixelBytesOf(picture.GetFormat());
    if (rect.width < 1 || rect.height < 1 || picture.GetFormat() > PF_ARGB32F
        || !Holds(picture, picture.GetWidth(), std::max(bytes, picture.GetPixelBytes())))
        return false;
    part = {CutTo(rect.x, picture.GetWidth()), CutTo(rect.y, picture.GetHeight()),
            CutTo(std::int64_t{rect.x} + rect.width, picture.GetWidth()),
            CutTo(std::int64_t{rect.y} + rect.height, picture.GetHeight())};
    return true;
}

std::uint8_t ByteOf(double mean)
{
    return static_cast<std::uint8_t>(std::clamp(Truncate(mean), 0, 255));
}

std::int64_t AreaOf(const SourceRect& rect)
{
    return std::int64_t{rect.width} * rect.height;
}

std::uint8_t MeanOfBytesIn(const Brightness& wanted, const Part& part)
{
    const bool isColour = IsByteColour(wanted.picture->GetFormat());
    const auto meanOf = isColour ? MeanOfBytes : MeanOfFirstBytes;
    return ByteOf(meanOf(*wanted.picture, part, AreaOf(wanted.part)));
}

/// The means of up to kSums parts of float pictures of one format, side by side. Each sum is rounded to single precision
/// pixel by pixel.
class FloatMeans {
public:
    explicit FloatMeans(std::uint32_t format) : m_format(format) {}

    std::uint32_t Format() const { return m_format; }
    bool IsFull() const { return m_count == kMost; }

    void Add(Brightness& wanted, const Part& part)
    {
        if (part.left >= part.right)
            return; // and its mean is 0
        m_parts[m_count] = part;
        m_wanted[m_count++] = &wanted;
    }

    /// Finds the means of what was added, and starts anew.
    void Finish()
    {
        float sums[kMost] = {};
        for (int row = 0; AddRow(row, sums); ++row) {
        }
        for (std::size_t i = 0; i < m_count; ++i)
            m_wanted[i]->mean =
                ByteOf(static_cast<double>(sums[i]) * 255.0 / static_cast<double>(AreaOf(m_wanted[i]->part)));
        m_count = 0;
    }

private:
    static constexpr std::size_t kMost = FaceKernels::kSums;

    /// Row `row` of all parts that have one; false when none has.
    bool AddRow(int row, float (&sums)[kMost]) const
    {
        std::size_t with[kMost] = {}, count = 0;
        int common = std::numeric_limits<int>::max();
        for (std::size_t i = 0; i < m_count; ++i)
            if (m_parts[i].top + row < m_parts[i].bottom) {
                with[count++] = i;
                common = std::min(common, m_parts[i].right - m_parts[i].left);
            }
        if (count == 0)
            return false;
        const void* rows[kMost];
        float rowSums[kMost];
        for (std::size_t k = 0; k < kMost; ++k) { // the first one stands in for those that are missing
            rows[k] = Pixel(with[k < count ? k : 0], row, 0);
            rowSums[k] = sums[with[k < count ? k : 0]];
        }
        Sum()(rows, common, rowSums);
        for (std::size_t k = 0; k < count; ++k)
            sums[with[k]] = WithRest(with[k], row, common, rowSums[k]);
        return true;
    }

    /// `sum` and what follows the first `done` pixels of a row.
    float WithRest(std::size_t i, int row, int done, float sum) const
    {
        const int rest = m_parts[i].right - m_parts[i].left - done;
        if (rest < 1)
            return sum;
        const void* rows[kMost];
        std::fill(std::begin(rows), std::end(rows), Pixel(i, row, done));
        float sums[kMost] = {sum};
        Sum()(rows, rest, sums);
        return sums[0];
    }

    const std::uint8_t* Pixel(std::size_t i, int row, int x) const
    {
        return m_wanted[i]->picture->PixelAddress(m_parts[i].left + x, m_parts[i].top + row, 0);
    }

    FaceKernels::SumFloats Sum() const
    {
        const FaceKernels& kernels = FaceKernelsFor(CurrentVariant());
        return m_format == PF_ARGB32F ? kernels.sumFloatsArgb : kernels.sumFloatsBgra;
    }

    const std::uint32_t m_format;
    Brightness* m_wanted[kMost] = {};
    Part m_parts[kMost] = {};
    std::size_t m_count = 0;
};

} // namespace

void ApplyLight(FrameBuffer& picture, double light)
{
    const std::uint32_t format = picture.GetFormat();
    if (format == PF_Packed8 && Holds(picture, picture.GetWidth(), picture.GetPixelBytes()))
        LightPacked(picture, light);
    if (!IsPicture(format) || picture.GetPixelBytes() != PixelBytesOf(format)
        || !Holds(picture, picture.GetWidth(), PixelBytesOf(format)))
        return;
    CopyLit(picture, picture, light);
}

LightFactors::LightFactors(std::uint32_t format, double light)
{
    std::fill_n(values, 4, static_cast<float>(light));
    values[AlphaIndex(format)] = 1.0f;
}

void CopyLit(const FrameBuffer& from, FrameBuffer& to, double light)
{
    IsFloat(to.GetFormat()) ? LightFloats(from, to, light) : LightBytes(from, to, light);
}

std::uint8_t AverageBrightness(const FrameBuffer& picture, int x, int y, int width, int height)
{
    Brightness one = {&picture, {x, y, width, height}};
    FindBrightness({&one, 1});
    return one.mean;
}

void FindBrightness(std::span<Brightness> parts)
{
    FloatMeans means[] = {FloatMeans(PF_BGRA32F), FloatMeans(PF_ARGB32F)};
    for (Brightness& wanted : parts) {
        Part part = {};
        wanted.mean = 0;
        if (!FindPart(*wanted.picture, wanted.part, part))
            continue;
        if (!IsFloat(wanted.picture->GetFormat())) {
            wanted.mean = MeanOfBytesIn(wanted, part);
            continue;
        }
        FloatMeans& among = means[wanted.picture->GetFormat() == PF_ARGB32F];
        among.Add(wanted, part);
        if (among.IsFull())
            among.Finish();
    }
    for (FloatMeans& rest : means)
        rest.Finish();
}

} // namespace kelmora
