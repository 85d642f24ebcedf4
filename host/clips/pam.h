#pragma once

#include <memory>
#include <string>

#include "host/clips/byte_stream.h"
#include "host/clips/clip.h"

namespace kelmora::host {

/// How a PAM picture begins.
inline constexpr const char* kPamMark = "P7";

/// Reads PAM pictures, one behind the other, as frames: 8 bits, grey or colour, with or without alpha, all of
/// one size. They tell no rate.
class PamReader final : public ClipReader {
public:
    /// Reads the first header. Throws Failure, naming `path`, when it is none or of a kind that is not read.
    PamReader(std::string path, std::unique_ptr<ByteSource> source, const Ratio& rate);

    const ClipFormat& Format() const override { return m_format; }
    std::optional<std::int64_t> Frames() const override { return m_frames; }
    void Skip(std::int64_t frames) override;
    bool Read(FrameBytes& frame) override;

private:
    struct Header {
        std::int32_t width = 0;
        std::int32_t height = 0;
        std::int32_t depth = 0; ///< bytes of a pixel
        std::size_t bytes = 0;  ///< of the header itself
    };

    Header ReadHeader() const;
    bool ReadNextHeader();
    std::size_t PictureBytes() const;
    [[noreturn]] void Refuse(const std::string& reason) const;

    std::string m_path;
    std::unique_ptr<ByteSource> m_source;
    ClipFormat m_format;
    Header m_header;
    std::optional<std::int64_t> m_frames;
    std::int64_t m_next = 0;
    FrameBytes m_picture;
};

/// Writes PAM pictures of red, green, blue, alpha, one behind the other.
class PamWriter final : public ClipWriter {
public:
    PamWriter(const ClipFormat& format, std::unique_ptr<ByteSink> sink);

    void Write(const FrameBytes& frame) override;
    void Finish() override;

private:
    std::string m_header;
    std::unique_ptr<ByteSink> m_sink;
    FrameBytes m_picture;
};

} // namespace kelmora::host
