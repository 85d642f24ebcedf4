#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
    explicit Picture(Input& input)
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
        m_record.width = input.Below(41) - (input.Below(32) == 0 ? 20 : 0);
        m_record.height = input.Below(41) - (input.Below(32) == 0 ? 20 : 0);
        const int rowBytes = std::max(m_record.width, 0) * std::max(m_record.pixelBytes, 0);
        m_record.stride = std::max(rowBytes + (input.Below(4) == 0 ? input.Below(72) - 8 : 0), 0);
        m_record.bottomUp = input.Take<std::uint8_t>();

        const int rows = std::max(m_record.height, 1);
        const int offset = input.Below(4) == 0 ? input.Below(16) : 0;
        const auto last =
            static_cast<std::size_t>(std::max(m_record.stride, 0)) * static_cast<std::size_t>(rows - 1);
        // A heap block of just this size: a step outside is a report.
        m_bytes = last + static_cast<std::size_t>(std::max(rowBytes, 1));
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

    VideoFrame& Record() { return m_record; }

private:
    VideoFrame m_record = {};
    std::unique_ptr<std::uint8_t[]> m_memory;
    std::size_t m_bytes = 0;
};

} // namespace kelmora::fuzz
