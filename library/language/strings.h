#pragma once

#include <cstdint>
#include <string_view>

namespace kelmora {

/// An owned string that ends with a zero character. Empty strings own nothing.
///
/// Lengths and positions count characters of 8 or of 16 bits. When memory is out, what was to be made is
/// empty: whoever cares asks HasText. Nothing throws.
template <class Char, class Self>
class OwnedString {
public:
    /// As a length: up to the zero character. As a position: nowhere.
    static constexpr std::uint32_t npos = 0xFFFFFFFF;

    virtual ~OwnedString();

    /// Leaves the string empty.
    void Clear();

    /// Copies `length` characters; `text` may lie in this very string. A null `text` or a length of 0 leaves
    /// the string empty.
    void Assign(const Char* text, std::uint32_t length = npos);

    /// The characters, zero-ended; null when there are none.
    const Char* GetBuffer() const { return m_text; }

    /// Characters without the end mark.
    std::uint32_t GetLength() const { return m_length; }

    bool HasText() const { return m_length > 0; }

    /// Puts `other`, which may be this very string, behind the text.
    void Append(const Self& other);

    friend bool operator==(const Self& a, const Self& b) { return a.View() == b.View(); }

    /// `count` characters from `start` on, or as many as there are. From the end on: empty.
    Self Substring(std::uint32_t start, std::uint32_t count = npos) const;

protected:
    OwnedString() = default;
    OwnedString(const OwnedString& other) { Assign(other.m_text, other.m_length); }
    OwnedString(const Char* text, std::uint32_t length) { Assign(text, length); }
    OwnedString& operator=(const OwnedString& other);

    std::basic_string_view<Char> View() const { return {m_text, m_length}; }

    /// Owns `length` characters to be filled in, and their end mark. Null, and an empty string, when the
    /// length is 0 or too large, or memory is out.
    Char* MakeRoom(std::uint64_t length);

private:
    std::uint32_t m_length = 0;
    Char* m_text = nullptr;
};

class LVUnicodeString;

/// An owned narrow string.
class LVString final : public OwnedString<char, LVString> {
public:
    LVString() = default;
    LVString(const char* text, std::uint32_t length = npos) : OwnedString(text, length) {}

    bool IsEmpty() const { return !HasText(); }

    /// The text in wide characters, read in the system's encoding of narrow text.
    LVUnicodeString ToUnicode() const;

    /// The number that the text begins with, blanks and a sign before it allowed; a minus counts downward from
    /// 2^32. Too large a number gives the largest, no number `defaultValue`.
    std::uint32_t ToUnsigned(std::uint32_t defaultValue) const;

private:
    friend class LVUnicodeString; // it makes room
};

/// An owned string of 16-bit characters.
class LVUnicodeString final : public OwnedString<char16_t, LVUnicodeString> {
public:
    LVUnicodeString() = default;
    LVUnicodeString(const char16_t* text, std::uint32_t length = npos) : OwnedString(text, length) {}

    /// Whether there is a character at `index`.
    bool IsValidIndex(std::uint32_t index) const { return index < GetLength(); }

    /// Where `wanted` stands for the last time; npos: nowhere. An empty one stands at the end.
    std::uint32_t FindLast(const LVUnicodeString& wanted) const;

    /// Where `wanted` stands first from `start` on; npos: nowhere. An empty one stands at `start`.
    std::uint32_t Find(const LVUnicodeString& wanted, std::uint32_t start = 0) const;

    LVUnicodeString operator+(const LVUnicodeString& other) const;

    /// Becomes the text of `length` bytes of UTF-8. What is no UTF-8 becomes U+FFFD. A null `text` or a length
    /// of 0 leaves the string empty.
    void AssignUtf8(const char* text, std::uint32_t length = npos);

    /// The text in UTF-8.
    // Kept: narrow text is read in the system's encoding and written in UTF-8, so it does not come back the same
    // where these differ.
    LVString ToNarrow() const;

private:
    friend class LVString; // it makes room
};

extern template class OwnedString<char, LVString>;
extern template class OwnedString<char16_t, LVUnicodeString>;

} // namespace kelmora
