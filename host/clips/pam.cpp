#include "host/clips/pam.h"

#include <charconv>
#include <sstream>

#include "host/failure.h"

namespace kelmora::host {
namespace {

constexpr std::size_t kMostLine = 1024;
constexpr int kMostLines = 64; // comments count too

/// One pixel of `depth` bytes: grey, grey and alpha, red green blue, or those and alpha.
void PlacePixel(const std::uint8_t* from, std::int32_t depth, std::uint8_t* bgra)
{
    const bool isGrey = depth <= 2;
    bgra[0] = from[isGrey ? 0 : 2];
    bgra[1] = from[isGrey ? 0 : 1];
    bgra[2] = from[0];
    bgra[3] = depth % 2 == 0 ? from[depth - 1] : std::uint8_t{255};
}

} // namespace

PamReader::PamReader(std::string path, std::unique_ptr<ByteSource> source, const Ratio& rate)
    : m_path(std::move(path)), m_source(std::move(source))
{
    m_header = ReadHeader();
    CheckFrameSize(m_path, m_header.width, m_header.height);
    m_format.width = m_header.width;
    m_format.height = m_header.height;
    m_format.rate = rate;
    m_picture.resize(PictureBytes());
    const std::uint64_t each = m_header.bytes + PictureBytes();
    if (const auto size = m_source->Size(); size && *size % each == 0)
        m_frames = static_cast<std::int64_t>(*size / each);
}

void PamReader::Refuse(const std::string& reason) const
{
    throw Failure(ExitCode::Failed, "cannot read " + m_path + ": " + reason);
}

std::size_t PamReader::PictureBytes() const
{
    return static_cast<std::size_t>(m_header.width) * static_cast<std::size_t>(m_header.height)
        * static_cast<std::size_t>(m_header.depth);
}

PamReader::Header PamReader::ReadHeader() const
{
    const std::string where = "the header of frame " + std::to_string(m_next);
    Header header;
    std::int32_t most = 0;
    for (int lines = 0; lines < kMostLines; ++lines) {
        const auto line = m_source->Line(kMostLine);
        if (!line || (lines == 0 && *line != kPamMark))
            Refuse(where + " is no PAM header");
        header.bytes += line->size() + 1;
        std::istringstream words(*line);
        std::string name;
        words >> name;
        if (name == "ENDHDR") {
            if (header.depth < 1 || header.depth > 4 || most != 255)
                Refuse(where + " has another form than 1 to 4 channels of 8 bits");
            return header;
        }
        if (name == "WIDTH")
            words >> header.width;
        else if (name == "HEIGHT")
            words >> header.height;
        else if (name == "DEPTH")
            words >> header.depth;
        else if (name == "MAXVAL")
            words >> most;
        if (!words && !name.empty())
            Refuse(where + " has an odd line, \"" + *line + "\"");
    }
    Refuse(where + " does not end");
}

bool PamReader::ReadNextHeader()
{
    if (m_next == 0) // the constructor read it
        return true;
    if (m_source->Ahead(1).empty())
        return false;
    const Header header = ReadHeader();
    if (header.width != m_header.width || header.height != m_header.height || header.depth != m_header.depth)
        Refuse("frame " + std::to_string(m_next) + " has another size than the first one");
    return true;
}

void PamReader::Skip(std::int64_t frames)
{
    for (; frames > 0 && ReadNextHeader(); --frames, ++m_next) {
        if (!m_source->Skip(m_picture.size()))
            Refuse("it is cut off in frame " + std::to_string(m_next));
    }
}

bool PamReader::Read(FrameBytes& frame)
{
    if (!ReadNextHeader())
        return false;
    if (m_source->Read(m_picture.data(), m_picture.size()) < m_picture.size())
        Refuse("it is cut off in frame " + std::to_string(m_next));
    frame.resize(m_format.FrameBytes());
    const auto depth = static_cast<std::size_t>(m_header.depth);
    for (std::size_t pixel = 0; pixel < frame.size() / 4; ++pixel)
        PlacePixel(&m_picture[pixel * depth], m_header.depth, &frame[pixel * 4]);
    ++m_next;
    return true;
}

PamWriter::PamWriter(const ClipFormat& format, std::unique_ptr<ByteSink> sink)
    : m_header(std::string(kPamMark) + "\nWIDTH " + std::to_string(format.width) + "\nHEIGHT "
               + std::to_string(format.height) + "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"),
      m_sink(std::move(sink)), m_picture(format.FrameBytes())
{
}

void PamWriter::Write(const FrameBytes& frame)
{
    for (std::size_t at = 0; at < m_picture.size(); at += 4) {
        m_picture[at] = frame[at + 2];
        m_picture[at + 1] = frame[at + 1];
        m_picture[at + 2] = frame[at];
        m_picture[at + 3] = frame[at + 3];
    }
    m_sink->Write(m_header.data(), m_header.size());
    m_sink->Write(m_picture.data(), m_picture.size());
}

void PamWriter::Finish()
{
    m_sink->Finish();
}

} // namespace kelmora::host
