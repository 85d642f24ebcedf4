// pixman at the work of ours. It knows premultiplied pictures of bytes best.

#include <pixman.h>

#include "bench/operations.h"

namespace kelmora::bench {
namespace {

constexpr const char* kPixman = "pixman";

struct Unref {
    void operator()(pixman_image_t* image) const { pixman_image_unref(image); }
};
using Image = std::unique_ptr<pixman_image_t, Unref>;

Image ImageOf(const Picture& picture)
{
    const pixman_format_code_t format = HasFloats(picture.Format()) ? PIXMAN_rgba_float : PIXMAN_a8r8g8b8;
    return Image(pixman_image_create_bits(format, picture.Width(), picture.Height(),
                                          picture.Memory().As<std::uint32_t>(), picture.Step()));
}

struct Images {
    Image first, second, output;
    int width, height;

    explicit Images(const Setting& setting)
        : first(ImageOf(setting.first)), second(ImageOf(setting.second)), output(ImageOf(setting.output)),
          width(setting.Width()), height(setting.Height())
    {
    }

    void Composite(pixman_op_t op, const Image& src) const
    {
        pixman_image_composite32(op, src.get(), nullptr, output.get(), 0, 0, 0, 0, 0, 0, width, height);
    }
};

/// `aim` prepares the images, `run` is timed.
template <class Aim, class Run>
Case Theirs(const char* name, Aim aim, Run run, Likeness likeness = kSame)
{
    Case work;
    work.name = name;
    work.maker = kPixman;
    work.prepare = [=](const Setting& setting) {
        const auto images = std::make_shared<Images>(setting);
        aim(*images);
        return Work{[=] { run(*images); }};
    };
    work.likeness = likeness;
    return work;
}

/// Samples the first picture through a map from the result to it.
template <class MapOf>
Case Transformed(const char* name, MapOf mapOf)
{
    return Theirs(
        name,
        [=](Images& images) {
            pixman_f_transform map = mapOf(images.width, images.height);
            pixman_transform_t fixed;
            pixman_transform_from_pixman_f_transform(&fixed, &map);
            pixman_image_set_transform(images.first.get(), &fixed);
            pixman_image_set_filter(images.first.get(), PIXMAN_FILTER_BILINEAR, nullptr, 0);
        },
        [](const Images& images) { images.Composite(PIXMAN_OP_SRC, images.first); },
        {1.0, "positions to 1/128 of a pixel; clears what lies outside"});
}

/// From pixel indices to those of pixel centres, which are half a pixel on.
pixman_f_transform AtCentres(const pixman_f_transform& indices)
{
    pixman_f_transform before, after, map = indices;
    pixman_f_transform_init_translate(&before, -0.5, -0.5);
    pixman_f_transform_init_translate(&after, 0.5, 0.5);
    pixman_f_transform_multiply(&map, &map, &before);
    pixman_f_transform_multiply(&map, &after, &map);
    return map;
}

pixman_f_transform InverseOf(const Move& move, int height)
{
    const AffineRows rows = RowsOf(move, height);
    pixman_f_transform map = {
        {{rows[0][0], rows[0][1], rows[0][2]}, {rows[1][0], rows[1][1], rows[1][2]}, {0, 0, 1}}};
    pixman_f_transform_invert(&map, &map);
    return AtCentres(map);
}

void RegisterTransforms()
{
    for (const Move& move : kMoves)
        RegisterBytes(Transformed(move.name, [&move](int, int height) { return InverseOf(move, height); }));
    RegisterBytes(Transformed(kInterpolations[0].name, [](int width, int height) {
        const Part part = ResizedPart(width, height);
        pixman_f_transform map;
        pixman_f_transform_init_scale(&map, static_cast<double>(part.width) / width,
                                      static_cast<double>(part.height) / height);
        pixman_f_transform_translate(&map, nullptr, part.left, part.top);
        return map;
    }));
}

const bool g_registered = [] {
    RegisterMaker(kPixman, pixman_version_string());
    RegisterBytes(Theirs(
        "Copy", [](Images&) {}, [](const Images& images) { images.Composite(PIXMAN_OP_SRC, images.first); }));
    RegisterBytes(Theirs(
        "Fill", [](Images&) {},
        [](const Images& images) {
            pixman_fill(pixman_image_get_data(images.output.get()), images.width, 32, 0, 0, images.width,
                        images.height, kFill);
        }));
    RegisterBytes(Theirs(
        "Over, premultiplied", [](Images&) {},
        [](const Images& images) {
            images.Composite(PIXMAN_OP_SRC, images.second);
            images.Composite(PIXMAN_OP_OVER, images.first);
        },
        {0.75, "a copy and an over, which has two pictures only"}));
    RegisterTransforms();
    return true;
}();

} // namespace
} // namespace kelmora::bench
