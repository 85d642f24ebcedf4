// OpenCV, on one thread, at the work of ours.

#include <opencv2/imgproc.hpp>

#include "bench/opencv.h"
#include "bench/operations.h"
#include "image/tent_kernel.h"

namespace kelmora::bench {
namespace {

struct Mats {
    cv::Mat first, second, output;

    explicit Mats(const Setting& setting)
        : first(MatOf(setting.first)), second(MatOf(setting.second)), output(MatOf(setting.output))
    {
    }

    int Type(int channels) const { return CV_MAKETYPE(output.depth(), channels); }
    bool IsFloat() const { return output.depth() == CV_32F; }
};

/// A case that runs on pictures of four channels.
template <class Run>
Case Theirs(const std::string& name, Run run, Likeness likeness = kSame)
{
    Case work;
    work.name = name;
    work.maker = kOpenCv;
    work.prepare = [run](const Setting& setting) {
        return Work{[mats = Mats(setting), run]() mutable { run(mats); }};
    };
    work.likeness = likeness;
    return work;
}

/// One that runs from three channels to three.
template <class Run>
Case OnThreeChannels(const std::string& name, Run run, double most = kSame.most)
{
    Case work = Theirs(name, [](Mats&) {}, {most, "three channels"});
    work.prepare = [run](const Setting& setting) {
        const Mats mats(setting);
        cv::Mat src, dst(mats.output.size(), mats.Type(3));
        cv::cvtColor(mats.first, src, cv::COLOR_BGRA2BGR);
        return Work{[=]() mutable { run(src, dst); },
                    [=] { cv::cvtColor(dst, mats.output, cv::COLOR_BGR2BGRA); }};
    };
    return work;
}

void RegisterCopies()
{
    RegisterBoth(Theirs("Copy", [](Mats& m) { m.first.copyTo(m.output); }));
    RegisterBoth(Theirs("Fill", [](Mats& m) {
        const double unit = m.IsFloat() ? 1 / 255.0 : 1;
        m.output.setTo(cv::Scalar(kFill & 255, kFill >> 8 & 255, kFill >> 16 & 255, kFill >> 24) * unit);
    }));
    RegisterBoth(Theirs("Copy alpha", [](Mats& m) {
        constexpr int alpha[] = {3, 3};
        cv::mixChannels(&m.first, 1, &m.output, 1, alpha, 1);
    }));
    RegisterBoth(Theirs("Reverse channels", [](Mats& m) {
        constexpr int reversed[] = {0, 3, 1, 2, 2, 1, 3, 0};
        cv::mixChannels(&m.first, 1, &m.output, 1, reversed, 4);
    }));
    RegisterBoth(Theirs("Extract alpha", [](Mats& m) {
        cv::Mat plane(m.output.size(), m.Type(1), m.output.data);
        cv::extractChannel(m.first, plane, 3);
    }));
    RegisterBytes(Theirs("Flip", [](Mats& m) { cv::flip(m.first, m.output, 0); }));
    Case pad = Theirs("Pad by 50", [](Mats&) {});
    pad.prepare = [](const Setting& setting) {
        const auto mats = std::make_shared<Mats>(setting);
        const auto padded = std::make_shared<cv::Mat>();
        return Work{
            [=] { cv::copyMakeBorder(mats->first, *padded, kPad, kPad, kPad, kPad, cv::BORDER_REPLICATE); },
            [=, &output = setting.output] { ShowCorner(padded->data, padded->step, output); }};
    };
    RegisterBytes(pad);
    RegisterBytes(Theirs(
        "Convert to floats",
        [floats = cv::Mat()](Mats& m) mutable { m.first.convertTo(floats, CV_32F, 1 / 255.0); }, {-1, ""}));
    RegisterFloats(Theirs("Convert to bytes",
                          [bytes = cv::Mat()](Mats& m) mutable { m.first.convertTo(bytes, CV_8U, 255.0); },
                          {-1, ""}));
}

void RegisterColours()
{
    RegisterBoth(Theirs("Weighted sum", [](Mats& m) {
        cv::addWeighted(m.first, kFirstShare, m.second, kSecondShare, 0, m.output);
    }));
    RegisterFloats(Theirs("Add in place", [](Mats& m) { cv::add(m.first, m.output, m.output); }, {-1, ""}));
    RegisterBytes(
        Theirs("Premultiply", [](Mats& m) { cv::cvtColor(m.first, m.output, cv::COLOR_RGBA2mRGBA); }));
    cv::Matx<float, 3, 4> twist(&kTwist[0][0]);
    RegisterBoth(
        OnThreeChannels("Colour twist", [=](cv::Mat& src, cv::Mat& dst) { cv::transform(src, dst, twist); }));
    // Their hue begins at red: not the same picture, but the same work.
    const Likeness hue = {-1, "three channels"};
    Case toHsv = OnThreeChannels(
        "RGB to HSV", [](cv::Mat& src, cv::Mat& dst) { cv::cvtColor(src, dst, cv::COLOR_BGR2HSV_FULL); });
    toHsv.likeness = hue;
    RegisterBoth(toHsv);
    Case toRgb = OnThreeChannels(
        "HSV to RGB", [](cv::Mat& src, cv::Mat& dst) { cv::cvtColor(src, dst, cv::COLOR_HSV2BGR_FULL); });
    toRgb.likeness = hue;
    RegisterBoth(toRgb);
    RegisterBytes(Theirs("YCbCr 4:2:2 to RGB", [](Mats& m) {
        const cv::Mat packed(m.first.size(), CV_8UC2, m.first.data);
        cv::Mat rgb(m.first.size(), CV_8UC3, m.output.data);
        cv::cvtColor(packed, rgb, cv::COLOR_YUV2RGB_YUYV);
    }));
}

void RegisterNeighbourhoods()
{
    const cv::Matx33f sharpen(-0.125f, -0.125f, -0.125f, -0.125f, 2, -0.125f, -0.125f, -0.125f, -0.125f);
    RegisterBytes(OnThreeChannels("Sharpen 3x3", [=](cv::Mat& src, cv::Mat& dst) {
        cv::filter2D(src, dst, -1, sharpen, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    }));
    RegisterBytes(Theirs("Box 5x5 of a plane", [](Mats& m) {
        const cv::Mat src(m.first.size(), CV_8UC1, m.first.data);
        cv::Mat dst(m.first.size(), CV_8UC1, m.output.data);
        cv::boxFilter(src, dst, -1, cv::Size(5, 5), cv::Point(-1, -1), true, cv::BORDER_REPLICATE);
    }));
    RegisterBytes(Theirs("Flood fill of a plane", [value = 0](Mats& m) mutable {
        cv::Mat plane(m.first.size(), CV_8UC1, m.output.data);
        value ^= 255;
        cv::floodFill(plane, cv::Point(5, 5), cv::Scalar(value));
    }));
    std::vector<float> taps(kRowTaps);
    MakeTentKernelF(taps.data(), kRowTaps);
    const std::vector<float> one = {1};
    const auto filter = [](Mats& m, const std::vector<float>& across, const std::vector<float>& down) {
        cv::sepFilter2D(m.first, m.output, -1, across, down, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    };
    RegisterBoth(Theirs("Row filter, 21 taps", [=](Mats& m) { filter(m, taps, one); }));
    RegisterBoth(Theirs("Column filter, 21 taps", [=](Mats& m) { filter(m, one, taps); }));
}

/// A tent as two boxes, which for the bytes rounds between them, and as what it is.
void RegisterTents()
{
    for (const int taps : kTentTaps) {
        const std::string name = "Tent, " + std::to_string(taps) + " taps";
        std::vector<float> kernel(static_cast<std::size_t>(taps));
        MakeTentKernelF(kernel.data(), taps);
        // An odd tent is a box twice; an even one takes two boxes of different sizes.
        const cv::Size box(taps / 2 + taps % 2, taps / 2 + taps % 2), other(taps / 2 + 1, taps / 2 + 1);
        Case boxes = Theirs(
            name,
            [=, between = cv::Mat()](Mats& m) mutable {
                cv::boxFilter(m.first, between, -1, box, cv::Point(-1, -1), true, cv::BORDER_REPLICATE);
                cv::boxFilter(between, m.output, -1, other, cv::Point(-1, -1), true, cv::BORDER_REPLICATE);
            },
            {0.75, "two boxes, bytes rounded in between"});
        RegisterBoth(boxes);
        Case exact = Theirs(name,
                            [=](Mats& m) {
                                cv::sepFilter2D(m.first, m.output, -1, kernel, kernel, cv::Point(-1, -1), 0,
                                                cv::BORDER_REPLICATE);
                            },
                            {0.75, "the tent itself"});
        exact.maker = "OpenCV sepFilter2D";
        exact.sizes = Sizes::FullHd;
        if (taps <= 100) // beyond it takes most of a second
            RegisterBoth(exact);
    }
}

void RegisterMedians()
{
    for (const int side : kMedianSides) {
        const std::string name = "Median " + std::to_string(side) + "x" + std::to_string(side);
        Case work =
            OnThreeChannels(name, [side](cv::Mat& src, cv::Mat& dst) { cv::medianBlur(src, dst, side); });
        RegisterBytes(work);
        work.name += " of noise";
        work.content = Content::Noise;
        work.sizes = Sizes::FullHd;
        RegisterBytes(work);
    }
}

void RegisterGeometry()
{
    const Likeness coarse = {0.75, "bytes: positions to 1/32 of a pixel"};
    for (const Move& move : kMoves)
        RegisterBoth(Theirs(
            move.name,
            [&move](Mats& m) {
                const cv::Matx23d map(RowsOf(move, m.first.rows)[0].data());
                cv::warpAffine(m.first, m.output, map, m.output.size(), cv::INTER_LINEAR,
                               cv::BORDER_TRANSPARENT);
            },
            coarse));
    RegisterBoth(Theirs(
        "Perspective",
        [](Mats& m) {
            const auto right = static_cast<float>(m.first.cols - 1),
                       bottom = static_cast<float>(m.first.rows - 1);
            const cv::Point2f from[] = {{0, 0}, {right, 0}, {right, bottom}, {0, bottom}};
            const Corners corners = CornersOf(m.first.cols, m.first.rows);
            cv::Point2f to[4];
            for (std::size_t i = 0; i < 4; ++i)
                to[i] = {static_cast<float>(corners[i][0]), static_cast<float>(corners[i][1])};
            cv::warpPerspective(m.first, m.output, cv::getPerspectiveTransform(from, to), m.output.size(),
                                cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
        },
        coarse));
    const auto resize = [](Mats& m, int how) {
        const Part part = ResizedPart(m.first.cols, m.first.rows);
        cv::resize(m.first(cv::Rect(part.left, part.top, part.width, part.height)), m.output, m.output.size(),
                   0, 0, how);
    };
    RegisterBoth(Theirs(kInterpolations[0].name, [=](Mats& m) { resize(m, cv::INTER_LINEAR); }));
    RegisterBoth(Theirs(kInterpolations[1].name, [=](Mats& m) { resize(m, cv::INTER_CUBIC); },
                        {0.75, "a sharper cubic (a = -0.75)"}));
    RegisterBoth(Theirs(kInterpolations[2].name, [=](Mats& m) { resize(m, cv::INTER_LANCZOS4); },
                        {0.75, "four lobes"}));
}

const bool g_registered = [] {
    cv::setNumThreads(1);
    RegisterMaker(kOpenCv, cv::getVersionString());
    RegisterCopies();
    RegisterColours();
    RegisterNeighbourhoods();
    RegisterTents();
    RegisterMedians();
    RegisterGeometry();
    return true;
}();

} // namespace
} // namespace kelmora::bench
