#include "library/presets/xml_limits.h"

#include <algorithm>

// This follows the parser's own steps, not the rules of XML: what hid an element from the one and not from the
// other would hide it from the limits. Where the parser gives up, it does not matter what is found here.

namespace kelmora {
namespace {

bool IsBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The parser takes every byte beyond ASCII for a letter.
bool BeginsName(char c)
{
    return IsLetter(c) || c == '_' || static_cast<unsigned char>(c) >= 127;
}

class Scan {
public:
    explicit Scan(std::string_view text) : m_left(text) {}

    bool IsWithinLimits()
    {
        while (SkipTo('<')) {
            if (++m_items > kMostXmlItems || !TakeMarkup())
                return false;
        }
        return true;
    }

private:
    /// Goes to the next `wanted`; false, and to the end, when there is none.
    bool SkipTo(char wanted)
    {
        m_left.remove_prefix(std::min(m_left.find(wanted), m_left.size()));
        return !m_left.empty();
    }

    /// Goes behind the next `end`.
    bool SkipBehind(std::string_view end)
    {
        const std::size_t found = m_left.find(end);
        m_left.remove_prefix(found == m_left.npos ? m_left.size() : found + end.size());
        return true;
    }

    bool Take(std::string_view wanted)
    {
        if (!m_left.starts_with(wanted))
            return false;
        m_left.remove_prefix(wanted.size());
        return true;
    }

    void SkipBlanks()
    {
        while (!m_left.empty() && IsBlank(m_left.front()))
            m_left.remove_prefix(1);
    }

    bool TakeMarkup()
    {
        if (Take("<!--"))
            return SkipBehind("-->");
        if (Take("<![CDATA["))
            return SkipBehind("]]>");
        if (IsDeclaration())
            return TakeDeclaration();
        if (Take("</")) {
            m_depth = std::max(m_depth - 1, 0);
            return SkipBehind(">");
        }
        if (m_left.size() > 1 && BeginsName(m_left[1]))
            return TakeElement();
        return SkipBehind(">"); // whatever it is, the parser ends it here
    }

    bool IsDeclaration() const
    {
        constexpr std::string_view head = "<?xml";
        return m_left.size() >= head.size()
            && std::equal(head.begin(), head.end(), m_left.begin(),
                          [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b); });
    }

    /// Three names are followed by a quoted value, which may hold anything; the parser reads over everything else
    /// without looking at quotes. A declaration in which that could make a difference is not worth following.
    bool TakeDeclaration()
    {
        m_left.remove_prefix(5);
        for (;;) {
            SkipBlanks();
            if (m_left.empty() || Take(">") || Take("?>"))
                return true;
            if (!Take("version") && !Take("encoding") && !Take("standalone"))
                return false;
            SkipBlanks();
            if (!Take("="))
                return false;
            SkipBlanks();
            if (!TakeQuoted())
                return false;
        }
    }

    bool TakeQuoted()
    {
        if (m_left.empty() || (m_left.front() != '"' && m_left.front() != '\''))
            return false;
        const char quote = m_left.front();
        m_left.remove_prefix(1);
        if (SkipTo(quote))
            m_left.remove_prefix(1);
        return true;
    }

    bool TakeElement()
    {
        int attributes = 0;
        char last = '<';
        m_left.remove_prefix(1);
        while (!m_left.empty() && m_left.front() != '>') {
            last = m_left.front();
            if (last == '=' && ++attributes > kMostXmlAttributes)
                return false;
            if (!TakeQuoted())
                m_left.remove_prefix(1);
        }
        m_items += attributes;
        if (m_depth == kMostXmlDepth)
            return false;
        m_depth += last != '/' ? 1 : 0;
        return SkipBehind(">");
    }

    std::string_view m_left;
    int m_depth = 0;
    int m_items = 0;
};

} // namespace

bool IsWithinXmlLimits(std::string_view text)
{
    return Scan(text.substr(0, text.find('\0'))).IsWithinLimits();
}

} // namespace kelmora
