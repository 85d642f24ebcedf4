#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "contract/video_frame.h"

namespace kelmora::bench {

/// Bytes on whole memory pages, as editors keep their frames.
class PageMemory {
public:
    explicit PageMemory(std::size_t size);

    std::uint8_t* data() const { return m_data.get(); }
    std::size_t size() const { return m_size; }

    /// The same memory as values of T.
    template <class T>
    T* As() const
    {
        return reinterpret_cast<T*>(m_data.get());
    }

private:
    struct Free {
        void operator()(std::uint8_t* data) const;
    };

    std::unique_ptr<std::uint8_t[], Free> m_data;
    std::size_t m_size;
};

/// What a picture shows.
enum class Content {
    Noise, ///< every value on its own: the worst case of what looks at neighbours or values
    Scene, ///< shapes with soft and hard edges under a little grain, as photographs have
};

/// A picture of four channels, its rows without slack.
class Picture {
public:
    Picture(int width, int height, std::uint32_t format);
    Picture(int width, int height, std::uint32_t format, Content content, unsigned seed);

    /// The picture as a host shows it to the library.
    VideoFrame Record() const { return m_record; }
    int Width() const { return m_record.width; }
    int Height() const { return m_record.height; }
    int Step() const { return m_record.stride; } ///< bytes from row to row
    std::uint32_t Format() const { return m_record.format; }
    const PageMemory& Memory() const { return m_memory; }
    std::uint8_t* Bytes() const { return m_memory.data(); }
    float* Floats() const { return m_memory.As<float>(); }

private:
    PageMemory m_memory;
    VideoFrame m_record = {};
};

/// Whether pixels of `format` are floats.
bool HasFloats(std::uint32_t format);

} // namespace kelmora::bench
