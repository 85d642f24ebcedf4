#pragma once

#include <cstdint>
#include <utility>

#include "tests/support/guarded_picture.h"

namespace kelmora {

/// What a test knows of an element type.
template <class T>
struct ElementOf;

template <>
struct ElementOf<std::uint8_t> {
    static constexpr std::uint32_t plane = PF_Mask8, colour = PF_BGRA8;
};

template <>
struct ElementOf<float> {
    static constexpr std::uint32_t plane = PF_Mask32F, colour = PF_BGRA32F;
};

/// The format of test pictures of `channels` channels, 1 or 4, with elements of type T.
template <class T>
constexpr std::uint32_t FormatOf(int channels)
{
    return channels == 1 ? ElementOf<T>::plane : ElementOf<T>::colour;
}

/// The address of an element, as the primitives take it. Float rows may start anywhere.
template <class T>
T* ElementAt(const GuardedPicture& picture, int x = 0, int y = 0, int channel = 0)
{
    return reinterpret_cast<T*>(picture.Row(y) + picture.PixelBytes() * x
                                + static_cast<int>(sizeof(T)) * channel);
}

/// Calls check(layout) for rows without and with slack, at even and odd addresses, and beside unreadable pages.
template <class Check>
void ForEachLayout(Check&& check)
{
    for (const int slack : {0, 1, 5})
        for (const int shift : {0, 3})
            check(PictureLayout{.slack = slack, .shift = shift});
    for (const Guard guard : {Guard::PictureStart, Guard::PictureEnd})
        check(PictureLayout{.guard = guard});
}

} // namespace kelmora
