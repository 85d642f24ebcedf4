#pragma once

#include <string_view>

namespace kelmora {

/// Elements within elements that a preset file may have, attributes of one element, and elements, attributes,
/// comments and the like together. Ours have at most 2, 3 and 407.
inline constexpr int kMostXmlDepth = 64;
inline constexpr int kMostXmlAttributes = 64;
inline constexpr int kMostXmlItems = 500000;

/// Whether TinyXML may be given `text`. It calls itself for each element within an element, until the stack of the
/// host's thread ends; it compares each attribute with all before it; it takes up to sixty times the text in memory
/// and, should that run out on the way, never gives back what it has. A text that is no XML may pass; the parser finds
/// out.
///
/// text  up to its first zero character, as the parser takes it
bool IsWithinXmlLimits(std::string_view text);

} // namespace kelmora
