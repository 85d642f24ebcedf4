// Each effect's steps put together from OpenCV's calls, the quickest that do the step: what a good engineer would have
// without our loops. The pictures are alike, not equal, so they are not compared. Bytes where the effect has bytes.

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "bench/opencv.h"
#include "effects/fixing/crop_borders_plan.h"
#include "effects/fixing/detail_enhancer_plan.h"
#include "effects/painterly/air_brush_plan.h"
#include "effects/painterly/color_melt_plan.h"
#include "effects/painterly/paper_collage_plan.h"
#include "effects/painterly/smear_plan.h"
#include "effects/painterly/water_color_plan.h"

namespace kelmora::bench {
namespace {

/// The frame's pictures and what is kept from frame to frame, so that no call has to ask for fresh memory.
struct Scene {
    cv::Mat first, second, output;
    cv::Mat a, b, c, d, plane, otherPlane, mask;

    explicit Scene(const Setting& setting)
        : first(MatOf(setting.first)), second(MatOf(setting.second)), output(MatOf(setting.output))
    {
    }

    cv::Size Size() const { return output.size(); }
    int Rows() const { return output.rows; }
    bool IsFloat() const { return output.depth() == CV_32F; }
    double White() const { return IsFloat() ? 1 : 255; }
};

void Box(const cv::Mat& src, cv::Mat& dst, int width, int height)
{
    cv::boxFilter(src, dst, -1, cv::Size(width, height), cv::Point(-1, -1), true, cv::BORDER_REPLICATE);
}

/// As two boxes, the quickest tent that OpenCV has.
void Tent(const cv::Mat& src, cv::Mat& dst, int taps, cv::Mat& between)
{
    const int one = std::max(taps / 2 + taps % 2, 1), other = std::max(taps / 2 + 1, 1);
    Box(src, between, one, one);
    Box(between, dst, other, other);
}

void CopyAlpha(const cv::Mat& src, cv::Mat& dst)
{
    constexpr int alpha[] = {3, 3};
    cv::mixChannels(&src, 1, &dst, 1, alpha, 1);
}

/// The darker of picture and blur, and the blur itself where the picture is much darker.
void EdgeStep(Scene& s, const cv::Mat& picture, const cv::Mat& blur, double share)
{
    cv::cvtColor(picture, s.plane, cv::COLOR_BGRA2GRAY);
    cv::cvtColor(blur, s.otherPlane, cv::COLOR_BGRA2GRAY);
    cv::addWeighted(s.plane, 1, s.otherPlane, -share, 0, s.plane);
    cv::compare(s.plane, 0, s.mask, cv::CMP_LE);
    cv::min(picture, blur, s.output);
    blur.copyTo(s.output, s.mask);
}

void AirBrush(Scene& s, float spray)
{
    Tent(s.first, s.b, air_brush::TapsFor(spray, s.Rows()), s.a);
    EdgeStep(s, s.first, s.b, 0.5);
    CopyAlpha(s.first, s.output);
}

void DetailEnhancer(Scene& s)
{
    const detail_enhancer::Plan plan = detail_enhancer::MakePlan({0.5f, 0.065f});
    Tent(s.first, s.b, std::min(detail_enhancer::BlurSize(plan.radius, s.Rows()), 100), s.a);
    const double amount = static_cast<double>(plan.amount);
    cv::addWeighted(s.first, 1 + amount, s.b, -amount, 0, s.output);
    CopyAlpha(s.first, s.output);
}

void WaterColor(Scene& s)
{
    static const cv::Matx<float, 3, 4> twist(1.25f, -0.15f, -0.1f, 0, -0.1f, 1.2f, -0.1f, 0, -0.1f, -0.15f,
                                             1.25f, 0);
    static const cv::Matx33f sharpen(-0.125f, -0.125f, -0.125f, -0.125f, 2, -0.125f, -0.125f, -0.125f,
                                     -0.125f);
    const water_color::Brush brush = water_color::BrushFor(1.0f, s.Rows(), false);
    cv::Mat bytes = s.first;
    if (s.IsFloat())
        s.first.convertTo(bytes = s.d, CV_8U, 255);
    cv::transform(bytes, s.a, twist);
    for (int pass = 0; pass < brush.passes; ++pass) {
        cv::medianBlur(s.a, s.b, 2 * brush.radiusX + 1);
        std::swap(s.a, s.b);
    }
    cv::filter2D(s.a, s.b, -1, sharpen, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    cv::cvtColor(s.b, s.c, cv::COLOR_BGR2BGRA);
    if (s.IsFloat())
        s.c.convertTo(s.a, CV_32F, 1 / 255.0);
    cv::addWeighted(s.first, 0.115, s.IsFloat() ? s.a : s.c, 0.885, 0, s.output);
    CopyAlpha(s.first, s.output);
}

void ActiveCamera(Scene& s)
{
    const double zoom = 1.12, toMiddle = (1 - zoom) / 2;
    for (int sample = 0; sample < 2; ++sample) {
        const cv::Matx23d move(zoom, 0, s.output.cols * toMiddle + 20.3 + 7 * sample, 0, zoom,
                               s.Rows() * toMiddle - 11.4 - 3 * sample);
        cv::warpAffine(s.first, sample ? s.b : s.a, move, s.Size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    }
    cv::addWeighted(s.a, 0.75, s.b, 0.25, 0, s.output);
}

cv::Mat Kept(const Scene& s, float crop)
{
    const crop_borders::Rect part =
        crop_borders::KeptRect({crop, crop, 0, crop_borders::Style::Scale}, s.output.cols, s.Rows());
    return s.first(cv::Rect(part.left, part.top, part.right - part.left, part.bottom - part.top));
}

void CropScale(Scene& s)
{
    cv::resize(Kept(s, 0.75f), s.output, s.Size(), 0, 0, cv::INTER_CUBIC);
}

void CropOverlay(Scene& s)
{
    const cv::Mat kept = Kept(s, 1.0f);
    const int blur = std::min(static_cast<int>(crop_borders::FeatherSize(0.835f, s.Rows())), 100);
    cv::resize(kept, s.a, s.Size(), 0, 0, cv::INTER_CUBIC);
    cv::Point corner;
    cv::Size whole;
    kept.locateROI(whole, corner);
    s.mask.create(s.Size(), CV_32F);
    s.mask.setTo(0);
    s.mask(cv::Rect(corner, kept.size())).setTo(1);
    Tent(s.mask, s.plane, blur, s.otherPlane);
    cv::subtract(1, s.plane, s.otherPlane);
    cv::blendLinear(s.first, s.a, s.plane, s.otherPlane, s.output);
}

void ColorMelt(Scene& s)
{
    static const cv::Matx44f colours(1.6f, -0.4f, -0.2f, 0, -0.2f, 1.4f, -0.2f, 0, -0.2f, -0.4f, 1.6f, 0, 0,
                                     0, 0, 1);
    cv::addWeighted(s.first, 0.5, s.second, 0.5, 0, s.a);
    cv::transform(s.a, s.b, colours);
    Tent(s.b, s.c, color_melt::TapsFor(0.565f, s.Rows(), 1.0f), s.a);
    EdgeStep(s, s.b, s.c, 0.9);
}

/// Draws the sheets from the lowest up, each on the shadow that it throws.
void DrawSheets(Scene& s, const cv::Mat& grey, cv::Mat& canvas)
{
    const int distance = std::max(paper_collage::ShadowDistance(0.76f, s.Rows()), 1);
    const cv::Rect lit(0, 0, s.output.cols - distance, s.Rows() - distance);
    const cv::Rect shaded(distance, distance, lit.width, lit.height);
    canvas.setTo(cv::Scalar(64, 0, 128, 255));
    for (int sheet = 1; sheet < 8; ++sheet) {
        cv::compare(grey, sheet * 32, s.mask, cv::CMP_GE);
        Tent(s.mask(lit), s.otherPlane, distance, s.c);
        cv::cvtColor(s.otherPlane, s.d, cv::COLOR_GRAY2BGRA);
        cv::Mat below = canvas(shaded);
        cv::scaleAdd(s.d, -0.5, below, below);
        canvas.setTo(cv::Scalar(64 + 20 * sheet, 30 * sheet, 128 + 10 * sheet, 255), s.mask);
    }
}

void PaperCollage(Scene& s)
{
    cv::Mat first = s.first, second = s.second, canvas = s.output;
    if (s.IsFloat()) {
        s.first.convertTo(s.a, CV_8U, 255);
        s.second.convertTo(s.b, CV_8U, 255);
        first = s.a;
        second = s.b;
        canvas.release();
        canvas.create(s.Size(), CV_8UC4);
    }
    cv::Mat mixed, grey, blurred, between;
    cv::addWeighted(first, 0.5, second, 0.5, 0, mixed);
    cv::cvtColor(mixed, grey, cv::COLOR_BGRA2GRAY);
    Tent(grey, blurred, std::max(paper_collage::RoundingSize(0.39f, s.Rows()), 1), between);
    DrawSheets(s, blurred, canvas);
    cv::addWeighted(mixed, 0.1, canvas, 0.9, 0, canvas);
    if (s.IsFloat())
        canvas.convertTo(s.output, CV_32F, 1 / 255.0);
}

/// The picture's mean with itself moved, over and over.
void Streak(cv::Mat& frame, cv::Mat& moved, const smear::Doublings& doublings, double sense)
{
    double step = doublings.step * sense;
    for (int i = 0; i < doublings.count; ++i, step *= 2) {
        const cv::Matx23d move(1, 0, step, 0, 1, 0);
        cv::warpAffine(frame, moved, move, frame.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
        cv::addWeighted(frame, 0.5, moved, 0.5, 0, frame);
    }
}

void Smear(Scene& s)
{
    constexpr float crossFade = 0.595f;
    for (const smear::Clip clip : {smear::Clip::First, smear::Clip::Second}) {
        const bool isFirst = clip == smear::Clip::First;
        const double share = smear::SmearShare(clip, 0.5, crossFade);
        const smear::Lengths lengths =
            smear::SplitLength(clip, smear::SmearLength(1.0f, s.output.cols, share), 0.5f);
        cv::Mat& frame = isFirst ? s.a : s.b;
        (isFirst ? s.first : s.second).copyTo(frame);
        Streak(frame, s.c, smear::DoublingsFor(lengths.forward), 1);
        Streak(frame, s.c, smear::DoublingsFor(lengths.backward), -1);
    }
    cv::addWeighted(s.a, 0.5, s.b, 0.5, 0, s.output);
}

/// Lays a part of the picture, seen askew, over the frame at (x, y).
void LayFace(const cv::Mat& part, cv::Mat& frame, int x, int y, const cv::Size& size)
{
    const cv::Rect place = cv::Rect(cv::Point(x, y), size) & cv::Rect({}, frame.size());
    if (place.empty())
        return;
    const auto right = static_cast<float>(part.cols - 1), bottom = static_cast<float>(part.rows - 1);
    const auto w = static_cast<float>(size.width - 1), h = static_cast<float>(size.height - 1);
    const cv::Point2f from[] = {{0, 0}, {right, 0}, {right, bottom}, {0, bottom}};
    const cv::Point2f to[] = {{0.05f * w, 0}, {w, 0.06f * h}, {0.96f * w, h}, {0, 0.93f * h}};
    cv::Mat target = frame(place);
    cv::warpPerspective(part, target, cv::getPerspectiveTransform(from, to), target.size(), cv::INTER_LINEAR,
                        cv::BORDER_TRANSPARENT);
}

void LayFaces(const cv::Mat& picture, cv::Mat& frame, int columns, int rows, double scale)
{
    const cv::Size part(std::max(picture.cols / columns, 4), std::max(picture.rows / rows, 4));
    const cv::Size size(cvRound(part.width * scale), cvRound(part.height * scale));
    for (int y = 0; y + part.height <= picture.rows; y += part.height)
        for (int x = 0; x + part.width <= picture.cols; x += part.width)
            LayFace(picture(cv::Rect(cv::Point(x, y), part)), frame, x, y, size);
}

/// Every piece in its own light, then laid over the second picture.
void Confetti(Scene& s, int columns, int rows)
{
    s.second.copyTo(s.output);
    s.first.convertTo(s.a, -1, 0.9);
    LayFaces(s.a, s.output, columns, rows, 1.0);
}

/// Haze, and a wave over the brightness.
void Glow(Scene& s, const cv::Mat& picture, cv::Mat& result)
{
    const int radius = std::max(static_cast<int>(s.Rows() * 0.09), 1);
    Tent(picture, s.c, 2 * radius + 1, s.d);
    cv::addWeighted(picture, 0.55, s.c, 0.45, 0, s.c);
    if (s.IsFloat()) {
        cv::multiply(s.c, s.c, result, 0.5);
        cv::add(result, s.c, result);
        return;
    }
    cv::Mat table(1, 256, CV_8U);
    for (int i = 0; i < 256; ++i)
        table.at<std::uint8_t>(i) = cv::saturate_cast<std::uint8_t>(i + 60 * std::sin(i / 40.0));
    cv::LUT(s.c, table, result);
}

void PizzaBoxes(Scene& s, bool glows)
{
    if (glows) {
        Glow(s, s.first, s.a);
        Glow(s, s.second, s.b);
    }
    s.output.setTo(0);
    LayFaces(glows ? s.a : s.first, s.output, 1, 5, 0.95);
    LayFaces(glows ? s.b : s.second, s.output, 1, 5, 0.6);
}

template <class Run>
void Theirs(const char* name, Run run, bool worksInBytes = false)
{
    Case work;
    work.kind = Kind::Effect;
    work.name = name;
    work.maker = "OpenCV pipeline";
    work.likeness = {-1, worksInBytes ? "in bytes, as the effect does" : ""};
    work.prepare = [run](const Setting& setting) {
        const auto scene = std::make_shared<Scene>(setting);
        return Work{[=] { run(*scene); }};
    };
    RegisterBoth(work);
}

const bool g_registered = [] {
    Theirs("Air Brush, half spray", [](Scene& s) { AirBrush(s, 0.5f); });
    Theirs("Air Brush, full spray", [](Scene& s) { AirBrush(s, 1.0f); });
    Theirs("Detail Enhancer", DetailEnhancer);
    Theirs("Water Color", WaterColor, true);
    Theirs("Active Camera", ActiveCamera);
    Theirs("Crop Borders, scale", CropScale);
    Theirs("Crop Borders, overlay", CropOverlay);
    Theirs("Color Melt", ColorMelt);
    Theirs("Paper Collage", PaperCollage, true);
    Theirs("Smear", Smear);
    Theirs("3D Confetti, 6 by 4", [](Scene& s) { Confetti(s, 6, 4); });
    Theirs("3D Confetti, 20 by 20", [](Scene& s) { Confetti(s, 20, 20); });
    Theirs("3D Pizza Boxes", [](Scene& s) { PizzaBoxes(s, false); });
    Theirs("3D Pizza Boxes, glowing", [](Scene& s) { PizzaBoxes(s, true); });
    return true;
}();

} // namespace
} // namespace kelmora::bench
