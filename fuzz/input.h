#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "contract/video_frame.h"

namespace kelmora::fuzz {

/// Reads the fuzzer's bytes in a fixed order, so that a mutated input stays a meaningful call. Behind the end
/// everything reads as 0.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_left(size) {}

    template <class T>
    T Take()
    {
        T value = {};
        const std::size_t count = std::min(sizeof value, m_left);
        if (count > 0)
            std::memcpy(&value, m_next, count);
        m_next += count;
        m_left -= count;
        return value;
    }

    int Below(int limit) { return Take<std::uint8_t>() % limit; }

private:
    const std::uint8_t* m_next;
    std::size_t m_left;
};

/// A host's record, which may say anything, and memory that holds what a truthful record would promise: a
/// record that promises more than that is cut back, for no library can tell.
class Picture {
public:
    /// usualBytes  bytes of a pixel in half of the pictures, for operations that go by them alone; 0: as the
    ///             format has it
    explicit Picture(Input& input, int usualBytes = 0)
    {
        constexpr std::uint32_t formats[] = {PF_BGRA8, PF_ARGB8,   PF_BGRA32F, PF_ARGB32F,
                                             PF_Mask8, PF_Mask32F, PF_Packed8, 5};
        constexpr int sizes[] = {1, 4, 16, 0, 2, 3, 8, -4};
        m_record.format = input.Below(16) == 0 ? input.Take<std::uint32_t>() : formats[input.Below(8)];
        const bool honest = input.Below(8) != 0;
        const bool floats = m_record.format == PF_BGRA32F || m_record.format == PF_ARGB32F;
        m_record.pixelBytes = honest ? (floats                            ? 16
                                            : m_record.format == PF_Mask8 ? 1
                                                                          : 4)
                                     : sizes[input.Below(8)];
        if (usualBytes != 0 && input.Below(2) != 0)
            m_record.pixelBytes = usualBytes;
        m_record.width = input.Below(41) - (input.Below(32) == 0 ? 20 : 0);
        m_record.height = input.Below(41) - (input.Below(32) == 0 ? 20 : 0);
        if (input.Below(16) == 0) // large enough for wide blurs, brushes and shadows
            m_record.height += input.Below(200);
        m_record.stride = std::max(RowBytes() + (input.Below(4) == 0 ? input.Below(72) - 8 : 0), 0);
        m_record.bottomUp = input.Take<std::uint8_t>();
        MakePixels(input);
    }

    /// Other pixels in the same format, size and order of rows.
    Picture(Input& input, const Picture& like) : m_record(like.m_record)
    {
        m_record.stride = std::abs(m_record.stride);
        MakePixels(input);
    }

    VideoFrame& Record() { return m_record; }

private:
    int RowBytes() const { return std::max(m_record.width, 0) * std::max(m_record.pixelBytes, 0); }

    void MakePixels(Input& input)
    {
        const bool floats = m_record.format == PF_BGRA32F || m_record.format == PF_ARGB32F;
        const int rows = std::max(m_record.height, 1);
        const int offset = input.Below(4) == 0 ? input.Below(16) : 0;
        const auto last =
            static_cast<std::size_t>(std::max(m_record.stride, 0)) * static_cast<std::size_t>(rows - 1);
        // A heap block of just this size: a step outside is a report.
        m_bytes = last + static_cast<std::size_t>(std::max(RowBytes(), 1));
        m_memory.reset(new std::uint8_t[m_bytes + static_cast<std::size_t>(offset)]);
        auto* first = m_memory.get() + offset;
        std::uint32_t noise = input.Take<std::uint32_t>();
        const bool colours = floats && input.Below(4) != 0;
        for (std::size_t i = 0; i < m_bytes; ++i)
            first[i] = static_cast<std::uint8_t>((noise = noise * 1664525u + 1013904223u) >> 24);
        for (std::size_t i = 0; colours && i + 4 <= m_bytes; i += 4) {
            const float value = static_cast<float>(first[i]) / 255.0f;
            std::memcpy(first + i, &value, 4);
        }
        m_record.data = first;
        if (input.Below(4) == 0) { // the rows run upward
            m_record.data = first + last;
            m_record.stride = -m_record.stride;
        }
    }

    VideoFrame m_record = {};
    std::unique_ptr<std::uint8_t[]> m_memory;
    std::size_t m_bytes = 0;
};

/// Values of a region for the primitives, whose callers are trusted with memory: exactly what its size and
/// step promise, in a heap block of its own.
template <class T>
class Region {
public:
    /// channels  values of a pixel
    /// missing   values of the very last pixel that are somebody else's
    /// margin    pixels on every side that may be read
    Region(Input& input, int width, int height, int channels, int missing = 0, int margin = 0)
    {
        const int rowValues = (width + 2 * margin) * channels;
        const int stepValues = rowValues + (input.Below(4) == 0 ? input.Below(16) : 0);
        const auto count =
            static_cast<std::size_t>(stepValues) * static_cast<std::size_t>(height + 2 * margin - 1)
            + static_cast<std::size_t>(rowValues - missing);
        m_values.reset(new T[count]);
        auto noise = input.Take<std::uint32_t>();
        const bool wild = input.Below(4) == 0; // floats of any bits
        for (std::size_t i = 0; i < count; ++i) {
            noise = noise * 1664525u + 1013904223u;
            if (sizeof(T) == 1)
                m_values[i] = static_cast<T>(noise >> 24);
            else if (wild)
                std::memcpy(&m_values[i], &noise, sizeof(T));
            else
                m_values[i] = static_cast<T>(noise >> 8) / static_cast<T>(1 << 23); // 0 to 2
        }
        m_first = m_values.get() + static_cast<std::ptrdiff_t>(stepValues) * margin + margin * channels;
        m_step = stepValues * static_cast<int>(sizeof(T));
    }

    T* First() const { return m_first; }
    int Step() const { return m_step; }

private:
    std::unique_ptr<T[]> m_values;
    T* m_first = nullptr;
    int m_step = 0;
};

} // namespace kelmora::fuzz
