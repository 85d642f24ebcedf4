#include <algorithm>
#include <array>

#include "host/checks/check.h"
#include "host/checks/frame_case.h"
#include "host/held.h"

namespace kelmora::host {
namespace {

std::string Place(const EffectFace& face, const FrameCase& frame)
{
    return face.name + ", " + CaseText(frame.first) + " into " + CaseText(frame.output);
}

void OddSizes(CheckRun& run)
{
    constexpr std::array<std::int32_t, 9> kSides = {1, 2, 3, 4, 5, 7, 8, 17, 33};
    ForEachEffect(run, [&run, &kSides](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            for (const std::int32_t width : kSides) {
                for (const std::int32_t height : kSides) {
                    const FrameCase frame = CaseFor(face, width, height, format);
                    run.At(Place(face, frame));
                    const FrameResult once = RenderCase(run, *effect, frame);
                    const FrameResult twice = RenderCase(run, *effect, frame);
                    run.Expect(once.done == twice.done, "Render should say the same both times");
                    ExpectSame(run, frame.output, twice.pixels, once.pixels, "the second time differs");
                }
            }
        }
    });
}

/// The same picture in the same memory, told in two ways: rows upward from the last one, or downward with
/// row 0 at the bottom.
void NegativeStride(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            for (const std::uint8_t bottomUp : {std::uint8_t{0}, std::uint8_t{1}}) {
                FrameCase upward = CaseFor(face, 23, 17, format);
                run.At(Place(face, upward));
                for (FrameShape* const shape : {&upward.first, &upward.second, &upward.output}) {
                    shape->upward = true;
                    shape->bottomUp = bottomUp;
                }
                FrameCase downward = upward;
                for (FrameShape* const shape : {&downward.first, &downward.second, &downward.output}) {
                    shape->upward = false;
                    shape->bottomUp = bottomUp == 0 ? 1 : 0;
                }
                const std::vector<std::uint8_t> one = RenderedPixels(run, *effect, upward);
                const std::vector<std::uint8_t> other = RenderedPixels(run, *effect, downward);
                if (!IsScene(face.number))
                    ExpectSame(run, upward.output, one, other, "rows upward give another picture");
            }
        }
    });
}

/// Whether all pixels outside of the `width` by `height` in the corner of row 0 are `byte`.
bool IsOutsideUntouched(const std::vector<std::uint8_t>& pixels, const FrameShape& shape, std::int32_t width,
                        std::int32_t height, std::uint8_t byte)
{
    const auto pixelBytes = static_cast<std::size_t>(shape.pixelBytes);
    const std::size_t rowBytes = static_cast<std::size_t>(shape.width) * pixelBytes;
    const std::size_t insideBytes = static_cast<std::size_t>(width) * pixelBytes;
    for (std::size_t at = 0; at < pixels.size(); ++at) {
        const bool isInside = at / rowBytes < static_cast<std::size_t>(height) && at % rowBytes < insideBytes;
        if (!isInside && pixels[at] != byte)
            return false;
    }
    return true;
}

void OtherOutputSize(CheckRun& run)
{
    struct Sizes {
        std::int32_t firstWidth, firstHeight, secondWidth, secondHeight, outputWidth, outputHeight;
    };
    constexpr std::array kSizes = {
        Sizes{33, 21, 33, 21, 20, 11}, Sizes{33, 21, 33, 21, 40, 30}, Sizes{33, 21, 33, 21, 20, 30},
        Sizes{33, 21, 33, 21, 40, 11}, Sizes{20, 30, 33, 21, 40, 40}, Sizes{33, 21, 20, 30, 25, 25},
        Sizes{1, 1, 1, 1, 16, 16},     Sizes{16, 16, 16, 16, 1, 1},
    };
    constexpr std::uint8_t kOld = 0xA5;
    ForEachEffect(run, [&run, &kSizes](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            for (const Sizes& sizes : kSizes) {
                FrameCase frame = CaseFor(face, sizes.firstWidth, sizes.firstHeight, format);
                frame.second = ShapeOf(sizes.secondWidth, sizes.secondHeight, format);
                frame.output = ShapeOf(sizes.outputWidth, sizes.outputHeight, format);
                frame.outputFill = kOld;
                run.At(Place(face, frame));
                const std::vector<std::uint8_t> pixels = RenderCase(run, *effect, frame).pixels;
                std::int32_t width = std::min(sizes.firstWidth, sizes.outputWidth);
                std::int32_t height = std::min(sizes.firstHeight, sizes.outputHeight);
                if (face.pictures == 2 && IsCutToSecond(face.number)) {
                    width = std::min(width, sizes.secondWidth);
                    height = std::min(height, sizes.secondHeight);
                }
                run.Expect(IsScene(face.number)
                               || IsOutsideUntouched(pixels, frame.output, width, height, kOld),
                           "the output outside of the common size should stay");
            }
        }
    });
}

/// The same picture with other gaps between its rows and at other addresses.
void GuardBytes(CheckRun& run)
{
    ForEachEffect(run, [&run](IEffectLibrary& library, const EffectFace& face) {
        const Held<IVideoEffect> effect = MakeEffect(library, face.number);
        for (const PixelFormat format : kPictureFormats) {
            FrameCase frame = CaseFor(face, 31, 19, format);
            run.At(Place(face, frame));
            const std::vector<std::uint8_t> tight = RenderedPixels(run, *effect, frame);
            for (const std::int32_t gap : {1, 2, 5, 16}) {
                int turn = 1;
                for (FrameShape* const shape : {&frame.first, &frame.second, &frame.output}) {
                    shape->slack = gap * shape->pixelBytes * turn++;
                    shape->shift = shape->pixelBytes == 16 ? gap * 4 % 64 : gap;
                }
                const std::vector<std::uint8_t> loose = RenderedPixels(run, *effect, frame);
                ExpectSame(run, frame.output, loose, tight, "the picture depends on how it lies in memory");
            }
        }
    });
}

constexpr std::array kChecks = {
    Check{"render-odd-sizes", "Pictures from one pixel on render without harm.", OddSizes},
    Check{"render-negative-stride", "Rows that run upward in memory are the picture that they are downward.",
          NegativeStride},
    Check{"render-smaller-output", "Outputs of another size are written within the common size alone.",
          OtherOutputSize},
    Check{"guard-bytes", "No byte around or between the rows of a picture is read for it or written.",
          GuardBytes},
};

} // namespace

constinit const std::span<const Check> kLayoutChecks = kChecks;

} // namespace kelmora::host
