#include "host/gallery/base64.h"

#include <cstddef>

namespace kelmora::host {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string Base64(const std::vector<std::uint8_t>& bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t left = bytes.size() - i;
        const auto byte = [&](std::size_t k) { return k < left ? std::uint32_t{bytes[i + k]} : 0u; };
        const std::uint32_t group = byte(0) << 16 | byte(1) << 8 | byte(2);
        text += kAlphabet[group >> 18];
        text += kAlphabet[group >> 12 & 63u];
        text += left > 1 ? kAlphabet[group >> 6 & 63u] : '=';
        text += left > 2 ? kAlphabet[group & 63u] : '=';
    }
    return text;
}

} // namespace kelmora::host
