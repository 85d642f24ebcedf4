#include "host/gallery/html_text.h"

namespace kelmora::host {

std::string HtmlText(std::string_view text)
{
    std::string html;
    for (const char letter : text) {
        switch (letter) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += letter;
        }
    }
    return html;
}

} // namespace kelmora::host
