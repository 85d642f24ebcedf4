#include "library/presets/xml_limits.h"

#include "library/ascii.h"

#include <algorithm>

// This follows the parser's own steps, not the rules of XML: what hid an element from the one and not from the
// other would hide it from the limits. Where the parser gives up, it does not matter what is found here.

namespace kelmora {
namespace {

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsAscii(char c)
{
    return static_cast<unsigned char>(c) < 127;
}

/// The parser takes every byte beyond ASCII for a letter.
bool BeginsName(char c)
{
    return IsLetter(c) || c == '_' || !IsAscii(c);
}

bool IsInName(char c)
{
    return IsLetter(c) || IsDigit(c) || c == '_' || c == '-' || c == '.' || c == ':';
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

    /// Everything that begins so is one to the parser, a style sheet as well.
    bool IsDeclaration() const { return StartsWithAnyCase("<?xml"); }

    bool StartsWithAnyCase(std::string_view wanted) const
    {
        return m_left.size() >= wanted.size()
            && std::equal(wanted.begin(), wanted.end(), m_left.begin(),
                          [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b); });
    }

    /// Three names are followed by a value, which may hold anything where it is quoted; the parser reads over
    /// everything else up to a blank, without looking at quotes. Of capitals the host's locale tells it which small
    /// letters they are, and of other bytes which are blanks: with those a declaration is not worth following.
    bool TakeDeclaration()
    {
        m_left.remove_prefix(5);
        for (;;) {
            SkipBlanks();
            if (m_left.empty() || Take(">"))
                return true;
            bool isAttribute = false;
            for (const std::string_view name : {"version", "encoding", "standalone"}) {
                if (!StartsWithAnyCase(name))
                    continue;
                if (!m_left.starts_with(name))
                    return false;
                isAttribute = true;
            }
            if (!(isAttribute ? TakeAttribute() : TakeWord(">")))
                return false;
        }
    }

    bool TakeAttribute()
    {
        while (!m_left.empty() && IsInName(m_left.front()))
            m_left.remove_prefix(1);
        SkipBlanks();
        if (!Take("=")) {
            if (!m_left.empty() && !IsAscii(m_left.front()))
                return false;
            m_left = {}; // the parser stops here, with what it has
            return true;
        }
        SkipBlanks();
        return TakeQuoted() || TakeWord("/>");
    }

    /// Goes to the next blank or the next of `ends`; false where a byte beyond ASCII comes before it.
    bool TakeWord(std::string_view ends)
    {
        while (!m_left.empty() && !IsBlank(m_left.front()) && ends.find(m_left.front()) == ends.npos) {
            if (!IsAscii(m_left.front()))
                return false;
            m_left.remove_prefix(1);
        }
        return true;
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
