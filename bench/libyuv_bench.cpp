// libyuv at the work of ours: bytes alone, and often with fewer bits.

#include <libyuv.h>

#include "bench/operations.h"

namespace kelmora::bench {
namespace {

constexpr const char* kLibyuv = "libyuv";

template <class Run>
void Theirs(const char* name, Run run, Likeness likeness = kSame)
{
    Case work;
    work.name = name;
    work.maker = kLibyuv;
    work.prepare = [run](const Setting& setting) {
        const Setting pictures = setting;
        return Work{[=] { run(pictures, pictures.output.Step(), pictures.Width(), pictures.Height()); }};
    };
    work.likeness = likeness;
    RegisterBytes(work);
}

void RegisterCopies()
{
    Theirs("Copy", [](const Setting& s, int step, int width, int height) {
        libyuv::ARGBCopy(s.first.Bytes(), step, s.output.Bytes(), step, width, height);
    });
    Theirs("Fill", [](const Setting& s, int step, int width, int height) {
        libyuv::ARGBRect(s.output.Bytes(), step, 0, 0, width, height, kFill);
    });
    Theirs("Copy alpha", [](const Setting& s, int step, int width, int height) {
        libyuv::ARGBCopyAlpha(s.first.Bytes(), step, s.output.Bytes(), step, width, height);
    });
    Theirs("Extract alpha", [](const Setting& s, int step, int width, int height) {
        libyuv::ARGBExtractAlpha(s.first.Bytes(), step, s.output.Bytes(), width, width, height);
    });
    Theirs("Reverse channels", [](const Setting& s, int step, int width, int height) {
        libyuv::ARGBToBGRA(s.first.Bytes(), step, s.output.Bytes(), step, width, height);
    });
    Theirs("Flip", [](const Setting& s, int step, int width, int height) {
        libyuv::ARGBCopy(s.first.Bytes(), step, s.output.Bytes(), step, width, -height);
    });
}

void RegisterBlends()
{
    Theirs("Weighted sum",
           [](const Setting& s, int step, int width, int height) {
               libyuv::ARGBInterpolate(s.first.Bytes(), step, s.second.Bytes(), step, s.output.Bytes(), step,
                                       width, height, 179);
           },
           {1.0, "weights in 256ths that sum to 1"});
    Theirs("Premultiply",
           [](const Setting& s, int step, int width, int height) {
               libyuv::ARGBAttenuate(s.first.Bytes(), step, s.output.Bytes(), step, width, height);
           },
           {1.0, "within a level"});
    Theirs("Over, premultiplied",
           [](const Setting& s, int step, int width, int height) {
               libyuv::ARGBBlend(s.first.Bytes(), step, s.second.Bytes(), step, s.output.Bytes(), step, width,
                                 height);
           },
           {1.0, "within a level"});
    Theirs("Colour twist",
           [](const Setting& s, int step, int width, int height) {
               std::int8_t matrix[16] = {};
               for (std::size_t row = 0; row < 3; ++row)
                   for (std::size_t column = 0; column < 3; ++column)
                       matrix[4 * row + column] = static_cast<std::int8_t>(kTwist[row][column] * 64);
               matrix[15] = 64;
               libyuv::ARGBColorMatrix(s.first.Bytes(), step, s.output.Bytes(), step, matrix, width, height);
           },
           {4.0, "coefficients in 64ths, no constant"});
    Theirs(kInterpolations[0].name,
           [](const Setting& s, int step, int width, int height) {
               const Part part = ResizedPart(width, height);
               libyuv::ARGBScale(s.first.Bytes() + part.top * step + part.left * 4, step, part.width,
                                 part.height, s.output.Bytes(), step, width, height, libyuv::kFilterBilinear);
           },
           {2.0, "corner pixels meet, positions to 1/128"});
}

const bool g_registered = [] {
    RegisterMaker(kLibyuv, std::to_string(LIBYUV_VERSION));
    RegisterCopies();
    RegisterBlends();
    return true;
}();

} // namespace
} // namespace kelmora::bench
