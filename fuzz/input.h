#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "contract/video_frame.h"

namespace kelmora::fuzz {

/// Ends the run with a report where something that always holds does not.
inline void Require(bool condition)
{
    if (!condition)
        std::abort();
}

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

    /// 0 to `limit` - 1; `limit` is 1 to 256.
    int Below(int limit) { return Take<std::uint8_t>() % limit; }

    /// Whether a choice of one in `chances` falls so; at the end of the bytes it does not.
    bool OneIn(int chances) { return Below(chances) == chances - 1; }

    /// A double or float of any bits a quarter of the time, one that arithmetic breaks on another quarter, and else
    /// from -`reach` to `reach`.
    template <class Real>
    Real Number(Real reach)
    {
        using Limits = std::numeric_limits<Real>;
        constexpr Real whole = static_cast<Real>(2147483648.0); // one more than an int holds
        constexpr Real edges[] = {0,
                                  -Real{0},
                                  1,
                                  -1,
                                  Real{1} / 2,
                                  1 + Limits::epsilon(),
                                  Limits::denorm_min(),
                                  Limits::min(),
                                  Limits::max(),
                                  Limits::lowest(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::quiet_NaN(),
                                  whole,
                                  -whole * (1 + Limits::epsilon()),
                                  whole * whole * 4};
        switch (Below(4)) {
        case 2:
            return edges[Below(static_cast<int>(std::size(edges)))];
        case 3:
            return Take<Real>();
        default:
            return reach * static_cast<Real>(Take<std::int16_t>()) / Real{32767};
        }
    }

    bool IsEmpty() const { return m_left == 0; }

private:
    const std::uint8_t* m_next;
    std::size_t m_left;
};

/// Fills `count` bytes with noise: any bits, or floats from 0 to 1.
inline void FillWithNoise(std::uint8_t* bytes, std::size_t count, std::uint32_t noise, bool floats)
{
    for (std::size_t i = 0; i < count; i += sizeof noise) {
        noise = noise * 1664525u + 1013904223u;
        const float level = static_cast<float>(noise >> 24) / 255.0f;
        const std::uint32_t high = noise >> 16 | noise << 16; // the low bits repeat soon
        if (floats)
            std::memcpy(bytes + i, &level, std::min(count - i, sizeof level));
        else
            std::memcpy(bytes + i, &high, std::min(count - i, sizeof high));
    }
}

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
        // Small ones mostly: they have all the edges that large ones have, at a fraction of the time.
        const int most = input.OneIn(4) ? 41 : 13;
        m_record.width = input.Below(most) - (input.OneIn(32) ? 20 : 0);
        m_record.height = input.Below(most) - (input.OneIn(32) ? 20 : 0);
        if (input.OneIn(64)) // large enough for wide blurs, brushes and shadows
            (input.OneIn(4) ? m_record.width : m_record.height) += input.Below(200);
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
        const bool colours = floats && !input.OneIn(4);
        FillWithNoise(first, m_bytes, input.Take<std::uint32_t>(), colours);
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
