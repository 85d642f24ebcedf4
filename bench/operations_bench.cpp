// Our operations on whole pictures.

#include <algorithm>
#include <cstring>
#include <memory>

#include "bench/operations.h"
#include "image/frame_processor.h"
#include "image/image_ops.h"
#include "image/primitives/arithmetic.h"
#include "image/primitives/channels.h"
#include "image/primitives/colour.h"
#include "image/primitives/filter.h"
#include "image/primitives/flood_fill.h"
#include "image/primitives/median.h"
#include "image/primitives/neighbourhood.h"
#include "image/primitives/pad.h"
#include "image/primitives/warp.h"
#include "image/primitives/ycbcr.h"
#include "image/tent_filter.h"
#include "image/tent_kernel.h"

namespace kelmora::bench {
namespace {

/// A setting's pictures as ImageOps takes them.
struct Views {
    FrameBuffer first, second, output;
    int width, height, step;

    explicit Views(const Setting& setting)
        : width(setting.Width()), height(setting.Height()), step(setting.output.Step())
    {
        const VideoFrame records[] = {setting.first.Record(), setting.second.Record(),
                                      setting.output.Record()};
        first.AttachFrame(&records[0]);
        second.AttachFrame(&records[1]);
        output.AttachFrame(&records[2]);
    }

    /// The first value of a picture's pixel (x, y), as a byte or as a float.
    template <class T>
    static T* At(const FrameBuffer& picture, int x = 0, int y = 0)
    {
        return reinterpret_cast<T*>(picture.PixelAddress(x, y, 0));
    }
};

/// A case that needs nothing but the three pictures.
template <class Run>
Prepare OnViews(Run run)
{
    return [run](const Setting& setting) {
        const auto views = std::make_shared<Views>(setting);
        return Work{[views, run] { run(*views); }};
    };
}

/// One that works in place: on a copy of the second picture in the output.
template <class Run>
Prepare InPlace(Run run)
{
    return [run](const Setting& setting) {
        std::memcpy(setting.output.Bytes(), setting.second.Bytes(), setting.second.Memory().size());
        return OnViews(run)(setting);
    };
}

Case Ours(const char* name, Prepare prepare, Layout layout = Layout::Pixels)
{
    Case work;
    work.name = name;
    work.maker = kOurs;
    work.prepare = std::move(prepare);
    work.layout = layout;
    return work;
}

void RegisterCopies()
{
    RegisterBoth(Ours("Copy", OnViews([](Views& v) { ImageOps().Copy(v.first, v.output); })));
    RegisterBoth(Ours("Fill", OnViews([](Views& v) { ImageOps().Fill(v.output, kFill); })));
    RegisterBoth(
        Ours("Copy alpha", OnViews([](Views& v) { ImageOps().CopyChannel(v.first, v.output, 3, 3); })));
    RegisterBoth(
        Ours("Reverse channels", OnViews([](Views& v) { ImageOps().ReverseChannels(v.first, v.output); })));
    RegisterBytes(Ours("Extract alpha", OnViews([](Views& v) {
                           pxExtractChannel_8u_C4C1(v.At<std::uint8_t>(v.first) + 3, v.step,
                                                    v.At<std::uint8_t>(v.output), v.width, v.width, v.height);
                       }),
                       Layout::Plane));
    RegisterFloats(Ours("Extract alpha", OnViews([](Views& v) {
                            pxExtractChannel_32f_C4C1(v.At<float>(v.first) + 3, v.step, v.At<float>(v.output),
                                                      v.width * 4, v.width, v.height);
                        }),
                        Layout::Plane));
    RegisterBytes(Ours("Flip", [](const Setting& setting) {
        const auto processor =
            std::shared_ptr<FrameProcessor>(new FrameProcessor, [](FrameProcessor* p) { p->Release(); });
        return Work{[=, from = setting.first.Record(), to = setting.output.Record()]() mutable {
            processor->FlipVerticalTo(&from, &to);
        }};
    }));
    RegisterBytes(Ours("Pad by 50", [](const Setting& setting) {
        const int width = setting.Width() + 2 * kPad, height = setting.Height() + 2 * kPad;
        const auto padded = std::make_shared<Picture>(width, height, setting.output.Format());
        const Picture& src = setting.first;
        return Work{[=, &src] {
                        pxPadReplicate_8u_C4(src.Bytes(), src.Step(), src.Width(), src.Height(),
                                             padded->Bytes(), padded->Step(), width, height, kPad, kPad);
                    },
                    [=, &output = setting.output] {
                        ShowCorner(padded->Bytes(), static_cast<std::size_t>(padded->Step()), output);
                    }};
    }));
}

void RegisterConversions()
{
    RegisterBytes(Ours("Convert to floats", [](const Setting& setting) {
        const auto views = std::make_shared<Views>(setting);
        const auto floats = std::make_shared<Picture>(setting.Width(), setting.Height(), PF_BGRA32F);
        const auto result = std::make_shared<FrameBuffer>();
        const VideoFrame record = floats->Record();
        result->AttachFrame(&record);
        return Work{[=] {
            ImageOps().Convert(views->first, *result);
            (void)floats;
        }};
    }));
    RegisterFloats(Ours("Convert to bytes", [](const Setting& setting) {
        const auto views = std::make_shared<Views>(setting);
        const auto bytes = std::make_shared<Picture>(setting.Width(), setting.Height(), PF_BGRA8);
        const auto result = std::make_shared<FrameBuffer>();
        const VideoFrame record = bytes->Record();
        result->AttachFrame(&record);
        return Work{[=] {
            ImageOps().Convert(views->first, *result);
            (void)bytes;
        }};
    }));
    RegisterBytes(Ours("YCbCr 4:2:2 to RGB", OnViews([](Views& v) {
                           pxYCbCr422ToRGB(v.At<std::uint8_t>(v.first), v.width * 2,
                                           v.At<std::uint8_t>(v.output), v.width * 3, v.width, v.height);
                       }),
                       Layout::Rgb));
    RegisterBytes(Ours("RGB to YCbCr 4:2:2", OnViews([](Views& v) {
                           pxRGBToYCbCr422(v.At<std::uint8_t>(v.first), v.width * 3,
                                           v.At<std::uint8_t>(v.output), v.width * 2, v.width, v.height);
                       })));
}

void RegisterBlends()
{
    RegisterBoth(Ours("Weighted sum", OnViews([](Views& v) {
                          ImageOps().AddWeighted(v.first, v.second, v.output, static_cast<float>(kFirstShare),
                                                 static_cast<float>(kSecondShare));
                      })));
    RegisterBoth(Ours("Mix in place", InPlace([](Views& v) { ImageOps().Mix(v.first, v.output, 76, 179); })));
    RegisterBytes(Ours("Average in place", InPlace([](Views& v) {
                           pxAddScaled_8u_C4_I(v.At<std::uint8_t>(v.first), v.step,
                                               v.At<std::uint8_t>(v.output), v.step, v.width, v.height, 1);
                       })));
    RegisterFloats(Ours("Add in place", InPlace([](Views& v) {
                            pxAdd_32f_C4_I(v.At<float>(v.first), v.step, v.At<float>(v.output), v.step,
                                           v.width, v.height);
                        })));
    RegisterBytes(Ours("Scale in place", InPlace([](Views& v) {
                           constexpr std::uint8_t scale[] = {230, 240, 250, 255};
                           pxMulConstScaled_8u_C4_I(scale, v.At<std::uint8_t>(v.output), v.step, v.width,
                                                    v.height);
                       })));
    RegisterBoth(Ours("Premultiply", OnViews([](Views& v) { ImageOps().Premultiply(v.first, v.output); })));
    RegisterBoth(Ours("Over, straight",
                      OnViews([](Views& v) { ImageOps().AlphaOver(v.first, v.second, v.output, false); })));
    RegisterBoth(Ours("Over, premultiplied",
                      OnViews([](Views& v) { ImageOps().AlphaOver(v.first, v.second, v.output, true); })));
}

void RegisterColours()
{
    RegisterBytes(Ours("Colour twist", OnViews([](Views& v) {
                           pxColorTwist_8u_A3(v.At<std::uint8_t>(v.first), v.step,
                                              v.At<std::uint8_t>(v.output), v.step, v.width, v.height,
                                              kTwist);
                       })));
    RegisterFloats(Ours("Colour twist", OnViews([](Views& v) {
                            pxColorTwist_32f_A3(v.At<float>(v.first), v.step, v.At<float>(v.output), v.step,
                                                v.width, v.height, kTwist);
                        })));
    RegisterBoth(Ours("Tint", OnViews([](Views& v) { ImageOps().Tint(v.first, v.output, 0x4080FF); })));
    RegisterBoth(Ours("RGB to HSV", OnViews([](Views& v) { ImageOps().RGBToHSV(v.first, v.output); })));
    RegisterBoth(Ours("HSV to RGB", OnViews([](Views& v) { ImageOps().HSVToRGB(v.first, v.output); })));
}

void RegisterNeighbourhoods()
{
    RegisterBytes(Ours("Sharpen 3x3", OnViews([](Views& v) {
                           pxSharpen3x3_8u_A3(v.At<std::uint8_t>(v.first, 1, 1), v.step,
                                              v.At<std::uint8_t>(v.output, 1, 1), v.step, v.width - 2,
                                              v.height - 2);
                       })));
    RegisterBytes(Ours("Box 5x5 of a plane", OnViews([](Views& v) {
                           pxBoxAverage_8u_C1(v.At<std::uint8_t>(v.first) + 2 * v.width + 2, v.width,
                                              v.At<std::uint8_t>(v.output) + 2 * v.width + 2, v.width,
                                              v.width - 4, v.height - 4, pxBox5x5);
                       }),
                       Layout::Plane));
    RegisterBytes(Ours(
        "Flood fill of a plane",
        [](const Setting& setting) {
            int bytes = 0;
            pxFloodFillSize(setting.Width(), setting.Height(), &bytes);
            const auto memory = std::make_shared<PageMemory>(static_cast<std::size_t>(bytes));
            const Setting pictures = setting;
            return Work{[=, value = std::uint8_t{0}]() mutable {
                PxFilledRegion region;
                value ^= 255; // there is always something to fill
                pxFloodFill_8u_C1(pictures.output.Bytes(), pictures.Width(), pictures.Width(),
                                  pictures.Height(), 5, 5, value, &region, memory->data());
            }};
        },
        Layout::Plane));
}

/// Filters with any kernel, here a tent. They read only what is there: the rim of the output stays.
void RegisterFilters()
{
    constexpr int margin = kRowTaps / 2;
    std::vector<int> taps(kRowTaps);
    const int sum = MakeTentKernelI(taps.data(), kRowTaps);
    std::vector<float> floatTaps(kRowTaps);
    MakeTentKernelF(floatTaps.data(), kRowTaps);
    RegisterBytes(Ours("Row filter, 21 taps", OnViews([=](Views& v) {
                           pxRowFilter_8u_C4(v.At<std::uint8_t>(v.first, margin, 0), v.step,
                                             v.At<std::uint8_t>(v.output, margin, 0), v.step,
                                             v.width - 2 * margin, v.height, taps.data(), kRowTaps, margin,
                                             sum);
                       })));
    RegisterFloats(Ours("Row filter, 21 taps", OnViews([=](Views& v) {
                            pxRowFilter_32f_C4(v.At<float>(v.first, margin, 0), v.step,
                                               v.At<float>(v.output, margin, 0), v.step, v.width - 2 * margin,
                                               v.height, floatTaps.data(), kRowTaps, margin);
                        })));
    RegisterBytes(Ours("Column filter, 21 taps", OnViews([=](Views& v) {
                           pxColumnFilter_8u_C4(v.At<std::uint8_t>(v.first, 0, margin), v.step,
                                                v.At<std::uint8_t>(v.output, 0, margin), v.step, v.width,
                                                v.height - 2 * margin, taps.data(), kRowTaps, margin, sum);
                       })));
    RegisterFloats(Ours("Column filter, 21 taps", OnViews([=](Views& v) {
                            pxColumnFilter_32f_C4(v.At<float>(v.first, 0, margin), v.step,
                                                  v.At<float>(v.output, 0, margin), v.step, v.width,
                                                  v.height - 2 * margin, floatTaps.data(), kRowTaps, margin);
                        })));
}

void RegisterTents()
{
    for (const int taps : kTentTaps)
        RegisterBoth(Ours(("Tent, " + std::to_string(taps) + " taps").c_str(), OnViews([taps](Views& v) {
                              MemoryAllocator allocator;
                              FilterTentRows(v.first, TentJob::Blur({v.width, v.height}, taps, taps),
                                             allocator, [&](int y, const std::uint8_t* row) {
                                                 std::memcpy(v.output.PixelAddress(0, y, 0), row,
                                                             static_cast<std::size_t>(v.step));
                                             });
                          })));
}

/// The padding is part of the work: a median needs it, and others see to their own.
Prepare Median(int side)
{
    return [side](const Setting& setting) {
        const int radius = side / 2;
        const auto padded = std::make_shared<Picture>(setting.Width() + 2 * radius,
                                                      setting.Height() + 2 * radius, setting.output.Format());
        const Setting pictures = setting;
        return Work{[=] {
            const Picture &src = pictures.first, &dst = pictures.output;
            pxPadReplicate_8u_C4(src.Bytes(), src.Step(), src.Width(), src.Height(), padded->Bytes(),
                                 padded->Step(), padded->Width(), padded->Height(), radius, radius);
            pxMedian_8u_A3(padded->Bytes() + radius * padded->Step() + radius * 4, padded->Step(),
                           dst.Bytes(), dst.Step(), dst.Width(), dst.Height(), side, side, radius, radius);
        }};
    };
}

void RegisterMedians()
{
    for (const int side : kMedianSides) {
        const std::string sides = std::to_string(side) + "x" + std::to_string(side);
        RegisterBytes(Ours(("Median " + sides).c_str(), Median(side)));
        Case noise = Ours(("Median " + sides + " of noise").c_str(), Median(side));
        noise.content = Content::Noise;
        noise.sizes = Sizes::FullHd;
        RegisterBytes(noise);
    }
}

Prepare Affine(const Move& move)
{
    return OnViews([&move](Views& v) {
        const AffineRows rows = RowsOf(move, v.height);
        const double map[2][3] = {{rows[0][0], rows[0][1], rows[0][2]}, {rows[1][0], rows[1][1], rows[1][2]}};
        const PxRect whole = {0, 0, v.width, v.height};
        if (HasFloats(v.first.GetFormat()))
            pxWarpAffine_32f_C4(v.At<float>(v.first), v.width, v.height, v.step, whole, v.At<float>(v.output),
                                v.step, whole, map, pxLinear);
        else
            pxWarpAffine_8u_C4(v.At<std::uint8_t>(v.first), v.width, v.height, v.step, whole,
                               v.At<std::uint8_t>(v.output), v.step, whole, map, pxLinear);
    });
}

void RegisterGeometry()
{
    for (const Move& move : kMoves)
        RegisterBoth(Ours(move.name, Affine(move)));
    RegisterBoth(Ours("Perspective", OnViews([](Views& v) {
                          const Corners corners = CornersOf(v.width, v.height);
                          double quad[4][2];
                          for (std::size_t i = 0; i < 4; ++i)
                              std::copy(corners[i].begin(), corners[i].end(), quad[i]);
                          ImageOps().WarpQuad(v.first, v.output, quad, pxLinear);
                      })));
    for (const Interpolation& way : kInterpolations)
        RegisterBoth(Ours(way.name, OnViews([&way](Views& v) {
                              const Part part = ResizedPart(v.width, v.height);
                              ImageOps().ResizeRect(v.first, v.output, part.left, part.top,
                                                    part.left + part.width, part.top + part.height, 0, 0,
                                                    v.width, v.height, way.quality, 0.0, 0.0);
                          })));
}

const bool g_registered = [] {
    RegisterCopies();
    RegisterConversions();
    RegisterBlends();
    RegisterColours();
    RegisterNeighbourhoods();
    RegisterFilters();
    RegisterTents();
    RegisterMedians();
    RegisterGeometry();
    return true;
}();

} // namespace
} // namespace kelmora::bench
