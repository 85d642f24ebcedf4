#pragma once

#include <memory>
#include <string>

#include "host/clips/byte_stream.h"
#include "host/clips/clip.h"
#include "host/clips/yuv.h"

namespace kelmora::host {

/// How a Y4M stream begins.
inline constexpr const char* kY4mMark = "YUV4MPEG2";

/// Reads Y4M: 8 bits, 4:2:0, 4:2:2, 4:4:4 or luma alone. The form has no word for the matrix of its colours;
/// as elsewhere, frames that are wider than 1024 or higher than 576 pixels count as BT.709, others as BT.601.
class Y4mReader final : public ClipReader {
public:
    /// Reads the header. Throws Failure, naming `path`, when it is none or of a kind that is not read.
    Y4mReader(std::string path, std::unique_ptr<ByteSource> source);

    const ClipFormat& Format() const override { return m_format; }
    std::optional<std::int64_t> Frames() const override { return m_frames; }
    void Skip(std::int64_t frames) override;
    bool Read(FrameBytes& frame) override;

private:
    void ReadHeader();
    void ReadWord(const std::string& word);
    void MeasureFrames();
    bool ReadFrameMark();
    [[noreturn]] void Refuse(const std::string& reason) const;

    std::string m_path;
    std::unique_ptr<ByteSource> m_source;
    ClipFormat m_format;
    YuvLayout m_layout;
    std::optional<std::int64_t> m_frames;
    std::int64_t m_next = 0;
    FrameBytes m_planes;
};

/// Writes Y4M, in the layout that `format.chroma` names, 4:2:0 when it is empty. Alpha is lost.
class Y4mWriter final : public ClipWriter {
public:
    Y4mWriter(const ClipFormat& format, std::unique_ptr<ByteSink> sink);

    void Write(const FrameBytes& frame) override;
    void Finish() override;

private:
    ClipFormat m_format;
    YuvLayout m_layout;
    std::unique_ptr<ByteSink> m_sink;
    FrameBytes m_planes;
};

} // namespace kelmora::host
