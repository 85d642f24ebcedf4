// libvips at the work of ours.

#include <array>
#include <cstring>
#include <memory>

#include "bench/operations.h"
#include "bench/vips.h"
#include "image/tent_kernel.h"

namespace kelmora::bench::vips {
namespace {

constexpr const char* kVips = "libvips";

/// What results are made of.
struct Inputs {
    Image first, second;
    int width, height;

    explicit Inputs(const Setting& setting)
        : first(ImageOf(setting.first)), second(ImageOf(setting.second)), width(setting.Width()),
          height(setting.Height())
    {
    }

    VipsBandFormat Format() const { return first->BandFmt; }
    bool HaveFloats() const { return Format() == VIPS_FORMAT_FLOAT; }
};

Work WorkOf(const std::shared_ptr<Pipeline>& pipeline, const Setting& setting)
{
    return {[=] { pipeline->Run(); }, [=, &output = setting.output] { pipeline->Show(output); }};
}

Case Prepared(const std::string& name, Prepare prepare, Likeness likeness)
{
    Case work;
    work.name = name;
    work.maker = kVips;
    work.prepare = std::move(prepare);
    work.likeness = likeness;
    return work;
}

/// A case whose result `make` gives for Inputs.
template <class Make>
Case Theirs(const std::string& name, Make make, Likeness likeness = kSame, Tile tile = kHinted)
{
    return Prepared(
        name,
        [=](const Setting& setting) {
            return WorkOf(std::make_shared<Pipeline>(make(Inputs(setting)), tile), setting);
        },
        likeness);
}

/// Of no interest at other sizes.
Case Slow(Case work)
{
    work.sizes = Sizes::FullHd;
    return work;
}

std::shared_ptr<PageMemory> ThreeChannelsOf(const Picture& picture)
{
    const std::size_t value = SizeOf(FormatOf(picture)), pixels = picture.Memory().size() / (4 * value);
    auto packed = std::make_shared<PageMemory>(3 * value * pixels);
    for (std::size_t i = 0; i < pixels; ++i)
        std::memcpy(packed->data() + 3 * value * i, picture.Bytes() + 4 * value * i, 3 * value);
    return packed;
}

/// One from three channels to three, whose result `make` gives for an image.
template <class Make>
Case OnThreeChannels(const std::string& name, Make make, Likeness likeness, Tile tile = kHinted)
{
    return Prepared(
        name,
        [=](const Setting& setting) {
            const auto packed = ThreeChannelsOf(setting.first);
            const Image image =
                ImageOf(packed->data(), setting.Width(), setting.Height(), 3, FormatOf(setting.first));
            Work ready = WorkOf(std::make_shared<Pipeline>(make(image), tile), setting);
            ready.run = [packed, run = ready.run] { run(); };
            return ready;
        },
        likeness);
}

/// A result in the format of what it came from. Of bytes, what lies between two levels becomes the lower.
Image In(VipsBandFormat format, Image result)
{
    return result->BandFmt == format ? std::move(result) : Made(vips_cast, result, format);
}

void RegisterCopies()
{
    RegisterBoth(Theirs("Copy", [](const Inputs& in) { return Made(vips_copy, in.first); }));
    RegisterBytes(Theirs("Reverse channels", [](const Inputs& in) {
        const Image words = Made(vips_copy, in.first, "bands", 1, "format", VIPS_FORMAT_UINT);
        return Made(vips_byteswap, words);
    }));
    RegisterBoth(
        Theirs("Extract alpha", [](const Inputs& in) { return Made(vips_extract_band, in.first, 3); }));
    RegisterBytes(
        Theirs("Flip", [](const Inputs& in) { return Made(vips_flip, in.first, VIPS_DIRECTION_VERTICAL); }));
    RegisterBytes(Theirs("Pad by 50", [](const Inputs& in) {
        return Made(vips_embed, in.first, kPad, kPad, in.width + 2 * kPad, in.height + 2 * kPad, "extend",
                    VIPS_EXTEND_COPY);
    }));
    RegisterBytes(Theirs("Convert to floats",
                         [](const Inputs& in) { return Made(vips_linear1, in.first, 1 / 255.0, 0.0); },
                         {-1, ""}));
    RegisterFloats(Theirs(
        "Convert to bytes",
        [](const Inputs& in) { return In(VIPS_FORMAT_UCHAR, Made(vips_linear1, in.first, 255.0, 0.5)); },
        {-1, ""}));
}

/// One that draws into the output itself.
template <class Draw>
Case Drawn(const char* name, int bands, Draw draw)
{
    return Prepared(
        name,
        [=](const Setting& setting) {
            const std::shared_ptr<VipsImage> image = ImageOf(setting.output, bands);
            return Work{[=]() mutable { draw(image.get()); }};
        },
        kSame);
}

void RegisterDrawings()
{
    RegisterBoth(Drawn("Fill", 4, [](VipsImage* image) {
        const double unit = image->BandFmt == VIPS_FORMAT_FLOAT ? 1 / 255.0 : 1;
        double ink[4];
        for (unsigned c = 0; c < 4; ++c)
            ink[c] = (kFill >> 8 * c & 255) * unit;
        Require(vips_draw_rect(image, ink, 4, 0, 0, image->Xsize, image->Ysize, "fill", TRUE, nullptr) == 0);
    }));
    RegisterBytes(Drawn("Flood fill of a plane", 1, [value = 0.0](VipsImage* image) mutable {
        value = 255 - value; // there is always something to fill
        Require(vips_draw_flood(image, &value, 1, 5, 5, "equal", TRUE, nullptr) == 0);
    }));
}

void RegisterBlends()
{
    RegisterBoth(Theirs("Weighted sum",
                        [](const Inputs& in) {
                            const double half = in.HaveFloats() ? 0 : 0.5;
                            const Image first = Made(vips_linear1, in.first, kFirstShare, half),
                                        second = Made(vips_linear1, in.second, kSecondShare, 0.0);
                            return In(in.Format(), MadeOfTwo(vips_add, first, second));
                        },
                        {kSame.most, "bytes: by way of floats"}));
    const Likeness truncated = {1.0, "bytes: by way of floats, truncated"};
    const auto premultiplied = [](const Image& image) {
        return Made(vips_premultiply, image, "max_alpha", image->BandFmt == VIPS_FORMAT_FLOAT ? 1.0 : 255.0);
    };
    RegisterBoth(Theirs(
        "Premultiply", [=](const Inputs& in) { return In(in.Format(), premultiplied(in.first)); },
        truncated));
    const auto over = [](const Image& a, const Image& b) {
        return MadeOfTwo(vips_composite2, b, a, VIPS_BLEND_MODE_OVER, "premultiplied", TRUE,
                         "compositing_space", a->Type);
    };
    RegisterBoth(Theirs(
        "Over, premultiplied", [=](const Inputs& in) { return In(in.Format(), over(in.first, in.second)); },
        truncated, kStrip));
    RegisterBoth(Theirs(
        "Over, straight",
        [=](const Inputs& in) {
            return In(in.Format(), over(premultiplied(in.first), premultiplied(in.second)));
        },
        truncated, kStrip));
}

void RegisterColours()
{
    std::array<double, 9> rows;
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = static_cast<double>(kTwist[i / 3][i % 3]);
    RegisterBoth(OnThreeChannels("Colour twist",
                                 [=](const Image& image) {
                                     const Image matrix(
                                         vips_image_new_matrix_from_array(3, 3, rows.data(), 9));
                                     return In(image->BandFmt, Made(vips_recomb, image, matrix.get()));
                                 },
                                 {kSame.most, "three channels; bytes by way of floats, truncated"}));
    // Their hue begins elsewhere: not the same picture, but the same work.
    const Likeness hue = {-1, "three channels"};
    RegisterBytes(OnThreeChannels(
        "RGB to HSV",
        [](const Image& image) { return Made(vips_colourspace, image, VIPS_INTERPRETATION_HSV); }, hue));
    RegisterBytes(OnThreeChannels(
        "HSV to RGB",
        [](const Image& image) {
            const Image hsv = Made(vips_copy, image, "interpretation", VIPS_INTERPRETATION_HSV);
            return Made(vips_colourspace, hsv, VIPS_INTERPRETATION_sRGB);
        },
        hue));
}

/// A mask for convolutions, its sum or divisor `scale`.
Image MaskOf(int width, const std::vector<double>& values, double scale)
{
    const auto count = static_cast<int>(values.size());
    Image mask(vips_image_new_matrix_from_array(width, count / width, values.data(), count));
    Require(mask != nullptr);
    vips_image_set_double(mask.get(), "scale", scale);
    return mask;
}

std::vector<double> TentOf(int taps, double* sum)
{
    std::vector<int> kernel(static_cast<std::size_t>(taps));
    *sum = MakeTentKernelI(kernel.data(), taps);
    return {kernel.begin(), kernel.end()};
}

VipsPrecision PrecisionFor(const Inputs& in)
{
    return in.HaveFloats() ? VIPS_PRECISION_FLOAT : VIPS_PRECISION_INTEGER;
}

void RegisterNeighbourhoods()
{
    RegisterBytes(OnThreeChannels(
        "Sharpen 3x3",
        [](const Image& image) {
            std::vector<double> values(9, kSharpenAround);
            values[4] = kSharpenCentre;
            const Image mask = MaskOf(3, values, 8);
            return Made(vips_conv, image, mask.get(), "precision", VIPS_PRECISION_INTEGER);
        },
        {kSame.most, "three channels"}, kStrip));
    const Likeness coarse = {kSame.most, "weights of 6 bits"};
    const auto box = [](const Setting& setting) {
        const Image plane = ImageOf(setting.first, 1), mask = MaskOf(5, std::vector<double>(25, 1.0), 25);
        Image result = Made(vips_conv, plane, mask.get(), "precision", VIPS_PRECISION_INTEGER);
        return WorkOf(std::make_shared<Pipeline>(std::move(result), kStrip), setting);
    };
    RegisterBytes(Prepared("Box 5x5 of a plane", box, coarse));
    const auto filtered = [](const Inputs& in, bool isColumn) {
        double sum = 0;
        const std::vector<double> tent = TentOf(kRowTaps, &sum);
        const Image mask = MaskOf(isColumn ? 1 : kRowTaps, tent, sum);
        return Made(vips_conv, in.first, mask.get(), "precision", PrecisionFor(in));
    };
    const auto row = [=](const Inputs& in) { return filtered(in, false); };
    const auto column = [=](const Inputs& in) { return filtered(in, true); };
    RegisterBytes(Theirs("Row filter, 21 taps", row, coarse, kStrip));
    RegisterBytes(Theirs("Column filter, 21 taps", column, coarse, kSquare));
    RegisterFloats(Slow(Theirs("Row filter, 21 taps", row, kSame, kStrip)));
    RegisterFloats(Slow(Theirs("Column filter, 21 taps", column)));
}

/// Bytes have a quick convolution. In floats a stack of boxes, which makes the tent approximately, is quicker.
void RegisterTents()
{
    for (const int taps : kTentTaps) {
        const std::string name = "Tent, " + std::to_string(taps) + " taps";
        const auto mask = [taps] {
            double sum = 0;
            const std::vector<double> tent = TentOf(taps, &sum);
            return MaskOf(taps, tent, sum);
        };
        RegisterBytes(Slow(Theirs(
            name,
            [=](const Inputs& in) {
                return Made(vips_convsep, in.first, mask().get(), "precision", VIPS_PRECISION_INTEGER);
            },
            {kSame.most, "two passes, weights of 6 bits, bytes rounded in between"}, kSquare)));
        RegisterFloats(
            Slow(Theirs(name, [=](const Inputs& in) { return Made(vips_convasep, in.first, mask().get()); },
                        {kSame.most, "a stack of boxes"})));
    }
}

void RegisterMedians()
{
    for (const int side : kMedianSides)
        RegisterBytes(
            Slow(OnThreeChannels("Median " + std::to_string(side) + "x" + std::to_string(side),
                                 [side](const Image& image) { return Made(vips_median, image, side); },
                                 {kSame.most, "three channels"})));
}

/// `rows` are those of an affine map from the image's indices to the result's.
Image Transformed(const Image& image, const AffineRows& rows, const char* interpolation, const Inputs& in)
{
    const std::unique_ptr<VipsInterpolate, Unref> interpolate(vips_interpolate_new(interpolation));
    const int whole[] = {0, 0, in.width, in.height};
    const std::unique_ptr<VipsArrayInt, Unref> area(vips_array_int_new(whole, 4));
    return Made(vips_affine, image, rows[0][0], rows[0][1], rows[1][0], rows[1][1], "odx", rows[0][2], "ody",
                rows[1][2], "oarea", area.get(), "interpolate", interpolate.get(), "premultiplied", TRUE,
                "extend", VIPS_EXTEND_COPY);
}

/// As vips_resize enlarges, save that its pixels would lie half a pixel aside. It takes a cubic where Lanczos is asked
/// for, so there is nothing to compare with ours.
Image Resized(const Inputs& in, const char* interpolation)
{
    const Part part = ResizedPart(in.width, in.height);
    const double across = static_cast<double>(in.width) / part.width,
                 down = static_cast<double>(in.height) / part.height;
    return Transformed(Made(vips_crop, in.first, part.left, part.top, part.width, part.height),
                       {{{across, 0, (across - 1) / 2}, {0, down, (down - 1) / 2}}}, interpolation, in);
}

void RegisterGeometry()
{
    for (const Move& move : kMoves)
        RegisterBoth(Theirs(move.name, [&move](const Inputs& in) {
            return Transformed(in.first, RowsOf(move, in.height), "bilinear", in);
        }));
    RegisterBoth(Theirs(kInterpolations[0].name, [](const Inputs& in) { return Resized(in, "bilinear"); }));
    RegisterBoth(Theirs(kInterpolations[1].name, [](const Inputs& in) { return Resized(in, "bicubic"); },
                        {kSame.most, "positions to 1/64 of a pixel"}));
}

const bool g_registered = [] {
    if (!Open())
        return false;
    RegisterMaker(kVips, vips_version_string());
    RegisterCopies();
    RegisterDrawings();
    RegisterBlends();
    RegisterColours();
    RegisterNeighbourhoods();
    RegisterTents();
    RegisterMedians();
    RegisterGeometry();
    return true;
}();

} // namespace
} // namespace kelmora::bench::vips
