// FFmpeg's filters, in this process, on one thread, at the work of ours. Most want a plane per channel: they get it, and
// splitting and joining are not timed.

#include <cmath>
#include <cstdio>
#include <stdexcept>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

#include "bench/operations.h"

namespace kelmora::bench {
namespace {

constexpr const char* kFfmpeg = "FFmpeg";

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

void Require(bool holds, const std::string& what)
{
    if (!holds)
        throw std::runtime_error("FFmpeg refuses " + what);
}

bool IsPlanar(AVPixelFormat format)
{
    return format == AV_PIX_FMT_GBRAP || format == AV_PIX_FMT_GBRAPF32LE;
}

/// Where channel `c` of B, G, R, A stands among FFmpeg's planes.
constexpr std::size_t kPlanes[] = {1, 0, 2, 3};

/// Calls `each` with every value of the frame and its counterpart in the interleaved pixels.
template <class T, class Each>
void ForValues(AVFrame& frame, T* pixels, Each each)
{
    for (int y = 0; y < frame.height; ++y)
        for (std::size_t c = 0; c < 4; ++c) {
            const std::size_t plane = kPlanes[c];
            T* const row =
                reinterpret_cast<T*>(frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane]);
            T* const to = pixels + (static_cast<std::ptrdiff_t>(y) * frame.width) * 4 + static_cast<int>(c);
            for (int x = 0; x < frame.width; ++x)
                each(row[x], to[4 * x]);
        }
}

template <class Each>
void ForPicture(AVFrame& frame, const Picture& picture, Each each)
{
    if (HasFloats(picture.Format()))
        ForValues(frame, picture.Floats(), each);
    else
        ForValues(frame, picture.Bytes(), each);
}

/// The bytes of a row of packed pixels.
int RowBytes(AVPixelFormat format, int width)
{
    return width * (format == AV_PIX_FMT_YUYV422 ? 2 : format == AV_PIX_FMT_RGB24 ? 3 : 4);
}

Frame FrameOf(const Picture& picture, AVPixelFormat format)
{
    Frame frame(av_frame_alloc());
    frame->format = format;
    frame->width = picture.Width();
    frame->height = picture.Height();
    Require(av_frame_get_buffer(frame.get(), 64) >= 0, "a picture");
    const auto take = [](auto& theirs, const auto& ours) { theirs = ours; };
    if (IsPlanar(format)) {
        ForPicture(*frame, picture, take);
        return frame;
    }
    const int bytes = RowBytes(format, picture.Width());
    for (int y = 0; y < picture.Height(); ++y)
        std::copy_n(picture.Bytes() + std::ptrdiff_t{y} * bytes, bytes,
                    frame->data[0] + std::ptrdiff_t{y} * frame->linesize[0]);
    return frame;
}

void ShowFrame(AVFrame& frame, const Picture& output)
{
    const auto format = static_cast<AVPixelFormat>(frame.format);
    if (IsPlanar(format)) {
        ForPicture(frame, output, [](const auto& theirs, auto& ours) { ours = theirs; });
        return;
    }
    const int bytes = RowBytes(format, frame.width);
    for (int y = 0; y < frame.height; ++y)
        std::copy_n(frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0], bytes,
                    output.Bytes() + std::ptrdiff_t{y} * bytes);
}

/// A chain of filters with one input or two, and a place where frames come out.
class Graph {
public:
    Graph(const std::string& filters, const Picture& first, const Picture* second, AVPixelFormat format)
        : m_graph(avfilter_graph_alloc()), m_result(av_frame_alloc())
    {
        m_graph->nb_threads = 1;
        avfilter_graph_set_auto_convert(m_graph, static_cast<unsigned>(AVFILTER_AUTO_CONVERT_NONE));
        char source[128];
        std::snprintf(source, sizeof source, "buffer=video_size=%dx%d:pix_fmt=%d:time_base=1/25",
                      first.Width(), first.Height(), static_cast<int>(format));
        const std::string text = second
            ? std::string(source) + "[a];" + source + "[b];[a][b]" + filters + ",buffersink"
            : std::string(source) + "," + filters + ",buffersink";
        AVFilterInOut *inputs = nullptr, *outputs = nullptr;
        Require(avfilter_graph_parse2(m_graph, text.c_str(), &inputs, &outputs) >= 0, text);
        Require(avfilter_graph_config(m_graph, nullptr) >= 0, text);
        m_inputs.push_back(FrameOf(first, format));
        if (second)
            m_inputs.push_back(FrameOf(*second, format));
        for (unsigned i = 0; i < m_graph->nb_filters; ++i) {
            AVFilterContext* const filter = m_graph->filters[i];
            if (std::string(filter->filter->name) == "buffer")
                m_sources.push_back(filter);
            else if (std::string(filter->filter->name) == "buffersink")
                m_sink = filter;
        }
    }
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;
    ~Graph() { avfilter_graph_free(&m_graph); }

    void Run()
    {
        av_frame_unref(m_result.get());
        ++m_time;
        for (std::size_t i = 0; i < m_sources.size(); ++i) {
            m_inputs[i]->pts = m_time;
            Require(av_buffersrc_add_frame_flags(m_sources[i], m_inputs[i].get(), AV_BUFFERSRC_FLAG_KEEP_REF)
                        >= 0,
                    "a frame");
        }
        Require(av_buffersink_get_frame(m_sink, m_result.get()) >= 0, "to give a frame");
    }

    AVFrame& Result() { return *m_result; }

private:
    AVFilterGraph* m_graph;
    AVFilterContext* m_sink = nullptr;
    std::vector<AVFilterContext*> m_sources;
    std::vector<Frame> m_inputs;
    Frame m_result;
    std::int64_t m_time = 0;
};

using Filters = std::function<std::string(int width, int height)>;

struct Chain {
    Filters filters;
    AVPixelFormat bytes = AV_PIX_FMT_GBRAP;
    bool takesTwo = false;
};

Case Theirs(const std::string& name, const Chain& chain, Likeness likeness)
{
    Case work;
    work.name = name;
    work.maker = kFfmpeg;
    work.likeness = likeness;
    work.prepare = [chain](const Setting& setting) {
        const AVPixelFormat format = HasFloats(setting.output.Format()) ? AV_PIX_FMT_GBRAPF32LE : chain.bytes;
        const auto graph =
            std::make_shared<Graph>(chain.filters(setting.Width(), setting.Height()), setting.first,
                                    chain.takesTwo ? &setting.second : nullptr, format);
        const Picture& output = setting.output;
        return Work{[=] { graph->Run(); }, [=, &output] { ShowFrame(graph->Result(), output); }};
    };
    return work;
}

Filters Always(const std::string& filters)
{
    return [=](int, int) { return filters; };
}

void RegisterBlurs()
{
    for (const int taps : kTentTaps) {
        const std::string name = "Tent, " + std::to_string(taps) + " taps";
        const double box = (taps + 1) / 2.0, sigma = std::sqrt((box * box - 1) / 6);
        Case gauss = Theirs(name, {Always("gblur=planes=15:sigma=" + std::to_string(sigma))},
                            {6.0, "a recursive Gaussian of about that width"});
        gauss.maker = "FFmpeg gblur";
        RegisterBoth(gauss);
        const std::string once = "avgblur=planes=15:sizeX=" + std::to_string(static_cast<int>(box) / 2);
        Case boxes = Theirs(name, {Always(once + "," + once)}, {1.5, "two boxes, rounded four times"});
        boxes.maker = "FFmpeg avgblur";
        RegisterBytes(boxes);
    }
}

void RegisterMedians()
{
    for (const int side : kMedianSides) {
        const Chain chain = {Always("median=planes=7:radius=" + std::to_string(side / 2))};
        Case work = Theirs("Median " + std::to_string(side) + "x" + std::to_string(side), chain,
                           {1.0, "three channels"});
        work.sizes = Sizes::FullHd;
        RegisterBytes(work);
    }
}

void RegisterGeometry()
{
    RegisterBytes(Theirs(kMoves[0].name, {Always("rotate=a=12*PI/180"), AV_PIX_FMT_BGRA},
                         {-1, "turns about the middle only"}));
    RegisterBytes(Theirs("Perspective", {[](int width, int height) {
                             const Corners c = CornersOf(width, height);
                             char text[256];
                             std::snprintf(text, sizeof text,
                                           "perspective=x0=%f:y0=%f:x1=%f:y1=%f:x2=%f:y2=%f:x3=%f:y3=%f"
                                           ":sense=destination:interpolation=linear",
                                           c[0][0], c[0][1], c[1][0], c[1][1], c[3][0], c[3][1], c[2][0],
                                           c[2][1]);
                             return std::string(text);
                         }},
                         {3.0, "positions to 1/256, writes what lies outside too"}));
    constexpr const char* ways[] = {"bilinear", "bicubic:param0=0:param1=0.5", "lanczos"};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string way = ways[i];
        const std::size_t options = way.find(':');
        const std::string flags = way.substr(0, options) + "+full_chroma_int+full_chroma_inp+accurate_rnd"
            + (options == std::string::npos ? "" : way.substr(options));
        RegisterBytes(Theirs(kInterpolations[i].name,
                             {[flags](int width, int height) {
                                  const Part part = ResizedPart(width, height);
                                  char text[256];
                                  std::snprintf(text, sizeof text,
                                                "crop=%d:%d:%d:%d:exact=1,scale=%d:%d:flags=%s", part.width,
                                                part.height, part.left, part.top, width, height,
                                                flags.c_str());
                                  return std::string(text);
                              },
                              AV_PIX_FMT_BGRA},
                             {2.5, "by way of YCbCr"}));
    }
}

void RegisterColours()
{
    char twist[256];
    std::snprintf(twist, sizeof twist,
                  "colorchannelmixer=rr=%f:rg=%f:rb=%f:gr=%f:gg=%f:gb=%f:br=%f:bg=%f:bb=%f",
                  static_cast<double>(kTwist[2][2]), static_cast<double>(kTwist[2][1]),
                  static_cast<double>(kTwist[2][0]), static_cast<double>(kTwist[1][2]),
                  static_cast<double>(kTwist[1][1]), static_cast<double>(kTwist[1][0]),
                  static_cast<double>(kTwist[0][2]), static_cast<double>(kTwist[0][1]),
                  static_cast<double>(kTwist[0][0]));
    RegisterBytes(Theirs("Colour twist", {Always(twist), AV_PIX_FMT_BGRA}, {1.5, "each product rounded"}));
    RegisterFloats(Theirs("Colour twist", {Always(twist)}, kSame));
    RegisterBoth(Theirs(
        "Weighted sum",
        {Always("blend=all_mode=normal:all_opacity=" + std::to_string(kFirstShare)), AV_PIX_FMT_GBRAP, true},
        kSame));
    RegisterBytes(Theirs("Premultiply", {Always("premultiply=inplace=1")}, kSame));
    const std::string mask = "'-1 -1 -1 -1 16 -1 -1 -1 -1'";
    RegisterBytes(Theirs("Sharpen 3x3",
                         {Always("convolution=" + mask + ":" + mask + ":" + mask
                                 + ":'0 0 0 0 1 0 0 0 0':0.125:0.125:0.125:1")},
                         {0.75, "three channels and a copy"}));
    RegisterBytes(Theirs("YCbCr 4:2:2 to RGB",
                         {Always("scale=flags=accurate_rnd,format=rgb24"), AV_PIX_FMT_YUYV422}, {-1, ""}));
}

const bool g_registered = [] {
    av_log_set_level(AV_LOG_ERROR);
    RegisterMaker(kFfmpeg, av_version_info());
    RegisterBlurs();
    RegisterMedians();
    RegisterGeometry();
    RegisterColours();
    return true;
}();

} // namespace
} // namespace kelmora::bench
