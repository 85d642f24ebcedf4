#include "library/language/strings.h"

#include "library/ascii.h"
#include "platform/text.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace kelmora {
namespace {

/// The characters that `length` stands for.
template <class Char>
std::basic_string_view<Char> ViewOf(const Char* text, std::uint32_t length)
{
    if (!text)
        return {};
    return {text, length == LVString::npos ? std::char_traits<Char>::length(text) : length};
}

/// A position in a text, or npos, in 32 bits.
std::uint32_t Position(std::size_t found)
{
    return static_cast<std::uint32_t>(found); // npos of either width is all ones
}

} // namespace

template <class Char, class Self>
OwnedString<Char, Self>::~OwnedString()
{
    delete[] m_text;
}

template <class Char, class Self>
void OwnedString<Char, Self>::Clear()
{
    delete[] std::exchange(m_text, nullptr);
    m_length = 0;
}

template <class Char, class Self>
Char* OwnedString<Char, Self>::MakeRoom(std::uint64_t length)
{
    Clear();
    // What a 32-bit process can address in one piece, so that the limit is the same everywhere.
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max() / sizeof(Char) - 1;
    if (length == 0 || length > most)
        return nullptr;
    m_text = new (std::nothrow) Char[static_cast<std::size_t>(length) + 1];
    if (!m_text)
        return nullptr;
    m_text[length] = Char();
    m_length = static_cast<std::uint32_t>(length);
    return m_text;
}

template <class Char, class Self>
void OwnedString<Char, Self>::Assign(const Char* text, std::uint32_t length)
{
    const auto view = ViewOf(text, length);
    Self made;
    if (Char* const room = made.MakeRoom(view.size()))
        std::copy(view.begin(), view.end(), room);
    std::swap(m_text, made.m_text);
    std::swap(m_length, made.m_length);
}

template <class Char, class Self>
OwnedString<Char, Self>& OwnedString<Char, Self>::operator=(const OwnedString& other)
{
    if (this != &other)
        Assign(other.m_text, other.m_length);
    return *this;
}

template <class Char, class Self>
void OwnedString<Char, Self>::Append(const Self& other)
{
    Self made;
    if (Char* const room = made.MakeRoom(std::uint64_t{m_length} + other.m_length)) {
        Char* const middle = std::copy_n(m_text, m_length, room);
        std::copy_n(other.m_text, other.m_length, middle);
    }
    std::swap(m_text, made.m_text);
    std::swap(m_length, made.m_length);
}

template <class Char, class Self>
Self OwnedString<Char, Self>::Substring(std::uint32_t start, std::uint32_t count) const
{
    if (start >= m_length)
        return {};
    return {m_text + start, std::min(count, m_length - start)};
}

template class OwnedString<char, LVString>;
template class OwnedString<char16_t, LVUnicodeString>;

LVUnicodeString LVString::ToUnicode() const
{
    LVUnicodeString wide;
    if (char16_t* const room = wide.MakeRoom(platform::NarrowToUtf16(View(), {}).length))
        platform::NarrowToUtf16(View(), {room, wide.GetLength()});
    return wide;
}

std::uint32_t LVString::ToUnsigned(std::uint32_t defaultValue) const
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    std::string_view left = View();
    while (!left.empty() && IsBlank(left.front()))
        left.remove_prefix(1);
    const bool minus = !left.empty() && left.front() == '-';
    if (minus || (!left.empty() && left.front() == '+'))
        left.remove_prefix(1);
    if (left.empty() || !IsDigit(left.front()))
        return defaultValue;
    std::uint64_t number = 0;
    for (; !left.empty() && IsDigit(left.front()) && number <= most; left.remove_prefix(1))
        number = number * 10 + static_cast<std::uint64_t>(left.front() - '0');
    if (number > most)
        return static_cast<std::uint32_t>(most);
    return static_cast<std::uint32_t>(minus ? 0 - number : number);
}

std::uint32_t LVUnicodeString::FindLast(const LVUnicodeString& wanted) const
{
    return Position(View().rfind(wanted.View()));
}

std::uint32_t LVUnicodeString::Find(const LVUnicodeString& wanted, std::uint32_t start) const
{
    return Position(View().find(wanted.View(), start));
}

LVUnicodeString LVUnicodeString::operator+(const LVUnicodeString& other) const
{
    LVUnicodeString sum(*this);
    // An empty sum of a text that is not empty: memory is out, and half of the sum would be no answer either.
    if (sum.GetLength() == GetLength())
        sum.Append(other);
    return sum;
}

void LVUnicodeString::AssignUtf8(const char* text, std::uint32_t length)
{
    const std::string_view utf8 = ViewOf(text, length);
    if (char16_t* const room = MakeRoom(platform::Utf8ToUtf16(utf8, {}).length))
        platform::Utf8ToUtf16(utf8, {room, GetLength()});
}

LVString LVUnicodeString::ToNarrow() const
{
    LVString narrow;
    if (char* const room = narrow.MakeRoom(platform::Utf16ToUtf8(View(), {}).length))
        platform::Utf16ToUtf8(View(), {room, narrow.GetLength()});
    return narrow;
}

} // namespace kelmora
