#pragma once

#include <string>
#include <string_view>

namespace kelmora::host {

/// The text as it stands in HTML, between tags and inside of quotes.
std::string HtmlText(std::string_view text);

} // namespace kelmora::host
