#include "host/clips/y4m.h"

#include <charconv>
#include <sstream>

#include "host/failure.h"

namespace kelmora::host {
namespace {

constexpr std::size_t kMostHeader = 4096;
constexpr std::size_t kMostFrameLine = 1024;
constexpr std::string_view kFrameMark = "FRAME";
constexpr const char* kUsualChroma = "420jpeg";

std::optional<std::int64_t> Whole(std::string_view text)
{
    std::int32_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < 0)
        return std::nullopt;
    return number;
}

/// "30000:1001"; nothing for what is none, and for 0:0, which stands for unknown.
std::optional<Ratio> RatioFrom(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const auto over = Whole(text.substr(0, colon));
    const auto under = Whole(text.substr(colon + 1));
    if (!over || !under || *over == 0 || *under == 0)
        return std::nullopt;
    return Ratio{*over, *under};
}

std::string RatioText(const Ratio& ratio)
{
    return std::to_string(ratio.over) + ":" + std::to_string(ratio.over == 0 ? 0 : ratio.under);
}

YuvLayout LayoutOf(const ClipFormat& format)
{
    constexpr std::int32_t kSmallWidth = 1024;
    constexpr std::int32_t kSmallHeight = 576;
    YuvLayout layout = LayoutNamed(format.chroma).value_or(YuvLayout());
    layout.isFullRange = format.isFullRange;
    layout.isHighDefinition = format.width > kSmallWidth || format.height > kSmallHeight;
    return layout;
}

} // namespace

Y4mReader::Y4mReader(std::string path, std::unique_ptr<ByteSource> source)
    : m_path(std::move(path)), m_source(std::move(source))
{
    ReadHeader();
    m_layout = LayoutOf(m_format);
    m_format.colours = m_layout.isHighDefinition ? "bt709" : "smpte170m";
    m_planes.resize(m_layout.FrameBytes(m_format.width, m_format.height));
    MeasureFrames();
}

void Y4mReader::Refuse(const std::string& reason) const
{
    throw Failure(ExitCode::Failed, "cannot read " + m_path + ": " + reason);
}

void Y4mReader::ReadHeader()
{
    const auto header = m_source->Line(kMostHeader);
    if (!header || !header->starts_with(kY4mMark))
        Refuse("it is no Y4M clip");
    m_format.chroma = kUsualChroma;
    std::istringstream words(header->substr(std::string_view(kY4mMark).size()));
    for (std::string word; words >> word;)
        ReadWord(word);
    CheckFrameSize(m_path, m_format.width, m_format.height);
    const std::uint64_t headerBytes = header->size() + 1;
    if (const auto size = m_source->Size())
        m_frames = static_cast<std::int64_t>(*size - headerBytes); // bytes, until MeasureFrames
}

void Y4mReader::ReadWord(const std::string& word)
{
    const std::string value = word.substr(1);
    if (word[0] == 'W' || word[0] == 'H') {
        const auto number = Whole(value);
        if (!number)
            Refuse("its header has an odd size, \"" + word + "\"");
        (word[0] == 'W' ? m_format.width : m_format.height) = static_cast<std::int32_t>(*number);
    } else if (word[0] == 'F') {
        m_format.rate = RatioFrom(value).value_or(kDefaultRate);
    } else if (word[0] == 'A') {
        m_format.pixelAspect = RatioFrom(value).value_or(Ratio{0, 1});
    } else if (word[0] == 'C') {
        if (!LayoutNamed(value))
            Refuse("its colours are \"" + value + "\"; 420, 422, 444 and mono of 8 bits are read");
        m_format.chroma = value;
    } else if (word == "XCOLORRANGE=FULL") {
        m_format.isFullRange = true;
    }
}

void Y4mReader::MeasureFrames()
{
    if (!m_frames)
        return;
    const auto bytes = static_cast<std::uint64_t>(*m_frames);
    m_frames.reset();
    const std::string mark = std::string(kFrameMark) + "\n";
    const std::uint64_t each = mark.size() + m_planes.size();
    if (bytes % each == 0 && (bytes == 0 || m_source->Ahead(mark.size()) == mark))
        m_frames = static_cast<std::int64_t>(bytes / each);
}

bool Y4mReader::ReadFrameMark()
{
    if (m_source->Ahead(1).empty())
        return false;
    const auto line = m_source->Line(kMostFrameLine);
    if (!line || !line->starts_with(kFrameMark))
        Refuse("frame " + std::to_string(m_next) + " does not begin as a frame does");
    return true;
}

void Y4mReader::Skip(std::int64_t frames)
{
    for (; frames > 0 && ReadFrameMark(); --frames, ++m_next) {
        if (!m_source->Skip(m_planes.size()))
            Refuse("it is cut off in frame " + std::to_string(m_next));
    }
}

bool Y4mReader::Read(FrameBytes& frame)
{
    if (!ReadFrameMark())
        return false;
    if (m_source->Read(m_planes.data(), m_planes.size()) < m_planes.size())
        Refuse("it is cut off in frame " + std::to_string(m_next));
    frame.resize(m_format.FrameBytes());
    FromYuv(m_layout, m_format.width, m_format.height, m_planes.data(), frame.data());
    ++m_next;
    return true;
}

Y4mWriter::Y4mWriter(const ClipFormat& format, std::unique_ptr<ByteSink> sink)
    : m_format(format), m_sink(std::move(sink))
{
    if (m_format.chroma.empty())
        m_format.chroma = kUsualChroma;
    m_layout = LayoutOf(m_format);
    m_planes.resize(m_layout.FrameBytes(m_format.width, m_format.height));
    const std::string header = std::string(kY4mMark) + " W" + std::to_string(m_format.width) + " H"
        + std::to_string(m_format.height) + " F" + RatioText(m_format.rate) + " Ip A"
        + RatioText(m_format.pixelAspect) + " C" + m_format.chroma
        + (m_format.isFullRange ? " XCOLORRANGE=FULL\n" : "\n");
    m_sink->Write(header.data(), header.size());
}

void Y4mWriter::Write(const FrameBytes& frame)
{
    ToYuv(m_layout, m_format.width, m_format.height, frame.data(), m_planes.data());
    const std::string mark = std::string(kFrameMark) + "\n";
    m_sink->Write(mark.data(), mark.size());
    m_sink->Write(m_planes.data(), m_planes.size());
}

void Y4mWriter::Finish()
{
    m_sink->Finish();
}

} // namespace kelmora::host
