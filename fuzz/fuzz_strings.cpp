// Operations in any order on the strings that cross code pages, against the standard library's strings and plain
// conversions.

#include <array>
#include <string>

#include "fuzz/input.h"
#include "library/language/strings.h"

namespace kelmora::fuzz {
namespace {

constexpr std::uint32_t npos = LVString::npos;

/// One of the strings and what it should hold.
template <class String, class Char>
struct Pair {
    String string;
    std::basic_string<Char> model;

    void RequireEqual() const
    {
        Require(string.GetLength() == model.size());
        Require(string.HasText() == !model.empty());
        const Char* const text = string.GetBuffer();
        Require((text == nullptr) == model.empty());
        if (text)
            Require(std::equal(model.begin(), model.end(), text) && text[model.size()] == Char{});
    }

    /// Nothing that doubles for ever.
    void KeepShort()
    {
        constexpr std::size_t most = 1000;
        if (model.size() <= most)
            return;
        string.Clear();
        model.clear();
    }
};

using Narrow = Pair<LVString, char>;
using Wide = Pair<LVUnicodeString, char16_t>;

// --- plain conversions --------------------------------------------------------------------------------------

/// A code point, or what stands in for bytes that are none.
struct Point {
    std::uint32_t value;
    std::size_t bytes; ///< that it takes
    bool valid;
};

/// Table 3-7 of the Unicode standard, row by row.
Point FirstPoint(std::string_view text)
{
    struct Row {
        std::uint8_t firstLow, firstHigh, secondLow, secondHigh;
        std::size_t bytes;
    };
    constexpr Row rows[] = {
        {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
    };
    const auto at = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const auto row = std::find_if(std::begin(rows), std::end(rows), [first = at(0)](const Row& candidate) {
        return first >= candidate.firstLow && first <= candidate.firstHigh;
    });
    if (row == std::end(rows))
        return {0, 1, false};
    std::uint32_t value = row->bytes == 1 ? at(0) : at(0) & (0x7Fu >> row->bytes);
    for (std::size_t i = 1; i < row->bytes; ++i) {
        const int low = i == 1 ? row->secondLow : 0x80, high = i == 1 ? row->secondHigh : 0xBF;
        if (i >= text.size() || at(i) < low || at(i) > high)
            return {0, i, false};
        value = value << 6 | (at(i) & 0x3Fu);
    }
    return {value, row->bytes, true};
}

void Put(std::u16string& wide, std::uint32_t value)
{
    if (value >= 0x10000) {
        wide += static_cast<char16_t>(0xD7C0 + (value >> 10));
        value = 0xDC00 | (value & 0x3FF);
    }
    wide += static_cast<char16_t>(value);
}

/// `keeps`: bytes that are no UTF-8 become U+DC80 to U+DCFF, as file names need it; else U+FFFD for each start of a
/// character.
std::u16string WideOf(std::string_view text, bool keeps)
{
    std::u16string wide;
    while (!text.empty()) {
        const Point point = FirstPoint(text);
        if (point.valid)
            Put(wide, point.value);
        else if (!keeps)
            Put(wide, 0xFFFD);
        for (std::size_t i = 0; !point.valid && keeps && i < point.bytes; ++i)
            Put(wide, 0xDC00u + static_cast<std::uint8_t>(text[i]));
        text.remove_prefix(point.bytes);
    }
    return wide;
}

bool IsHigh(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLow(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

std::string Utf8Of(std::u16string_view text)
{
    std::string utf8;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t value = text[i];
        if (IsHigh(text[i]) && i + 1 < text.size() && IsLow(text[i + 1]))
            value = 0x10000 + ((value & 0x3FF) << 10) + (text[++i] & 0x3FFu);
        else if (IsHigh(text[i]) || IsLow(text[i]))
            value = 0xFFFD;
        const int more = value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
        constexpr std::uint32_t marks[] = {0x00, 0xC0, 0xE0, 0xF0};
        utf8 += static_cast<char>(marks[more] | value >> (6 * more));
        for (int left = more - 1; left >= 0; --left)
            utf8 += static_cast<char>(0x80 | (value >> (6 * left) & 0x3F));
    }
    return utf8;
}

/// The number at the start of a text, as "%ul" of the C library's scanf reads it into 32 bits.
std::uint32_t NumberOf(const std::string& text, std::uint32_t otherwise)
{
    const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
    if (begin == std::string::npos)
        return otherwise;
    const bool isSigned = text[begin] == '-' || text[begin] == '+';
    std::uint64_t number = 0;
    std::size_t digit = begin + (isSigned ? 1 : 0);
    if (digit >= text.size() || text[digit] < '0' || text[digit] > '9')
        return otherwise;
    for (; digit < text.size() && text[digit] >= '0' && text[digit] <= '9'; ++digit)
        number =
            std::min<std::uint64_t>(number * 10 + static_cast<std::uint64_t>(text[digit] - '0'), 1ull << 32);
    if (number >= 1ull << 32)
        return 0xFFFFFFFF;
    return static_cast<std::uint32_t>(text[begin] == '-' ? 0 - number : number);
}

// --- operations ---------------------------------------------------------------------------------------------

/// Text for an operation, in a block of just its size.
template <class Char>
struct Text {
    explicit Text(Input& input) : count(static_cast<std::size_t>(input.Below(24)))
    {
        units.reset(new Char[count + 1]);
        const bool ascii = input.OneIn(2); // texts that are found in one another
        for (std::size_t i = 0; i < count; ++i)
            units[i] = ascii ? static_cast<Char>('a' + input.Below(2)) : input.Take<Char>();
        units[count] = Char{};
    }

    std::basic_string<Char> All() const { return {units.get(), count}; }
    std::basic_string<Char> UpToZero() const { return units.get(); }

    std::size_t count;
    std::unique_ptr<Char[]> units;
};

template <class String, class Char>
void Make(Input& input, Pair<String, Char>& pair)
{
    const Text<Char> text(input);
    const auto length = static_cast<std::uint32_t>(text.count);
    switch (input.Below(6)) {
    case 0:
        pair.string.Assign(text.units.get(), length);
        pair.model = text.All();
        break;
    case 1:
        pair.string.Assign(text.units.get());
        pair.model = text.UpToZero();
        break;
    case 2:
        pair.string = String(text.units.get(), length);
        pair.model = text.All();
        break;
    case 3:
        pair.string = String(text.units.get());
        pair.model = text.UpToZero();
        break;
    case 4:
        pair.string = String(nullptr, input.OneIn(2) ? npos : length);
        pair.model.clear();
        break;
    default:
        pair.string.Assign(nullptr, length);
        pair.model.clear();
    }
}

std::uint32_t Position(Input& input)
{
    return input.OneIn(8) ? input.Take<std::uint32_t>() : static_cast<std::uint32_t>(input.Below(40));
}

/// What both kinds can do.
template <class String, class Char>
void Common(Input& input, Pair<String, Char>& pair, const Pair<String, Char>& other)
{
    const std::uint32_t start = Position(input), count = input.OneIn(4) ? npos : Position(input);
    switch (input.Below(8)) {
    case 0:
        pair.string.Clear();
        pair.model.clear();
        break;
    case 1:
        pair.string = other.string;
        pair.model = other.model;
        break;
    case 2:
        pair.string.Append(other.string);
        pair.model += std::basic_string<Char>(other.model);
        break;
    case 3: {
        const String copy(other.string);
        Require(copy == other.string && copy.GetLength() == other.model.size());
        Require((pair.string == copy) == (pair.model == other.model));
        break;
    }
    case 4:
        pair.string = other.string.Substring(start, count);
        pair.model =
            start < other.model.size() ? other.model.substr(start, count) : std::basic_string<Char>();
        break;
    case 5: // of its own text
        if (start < pair.model.size()) {
            const auto length = std::min<std::size_t>(count, pair.model.size() - start);
            pair.string.Assign(pair.string.GetBuffer() + start, static_cast<std::uint32_t>(length));
            pair.model = pair.model.substr(start, length);
        }
        break;
    default:
        Make(input, pair);
    }
}

/// Substring by substring.
std::uint32_t PlaceOf(const std::u16string& wanted, const std::u16string& text, std::size_t start, bool last)
{
    std::uint32_t found = npos;
    for (std::size_t i = start; i + wanted.size() <= text.size() && (last || found == npos); ++i)
        if (std::u16string_view(text).substr(i, wanted.size()) == wanted)
            found = static_cast<std::uint32_t>(i);
    return found;
}

void WideAlone(Input& input, Wide& wide, const Wide& other, Narrow& narrow)
{
    const std::uint32_t start = Position(input);
    switch (input.Below(6)) {
    case 0:
        Require(wide.string.IsValidIndex(start) == (start < wide.model.size()));
        break;
    case 1:
        Require(wide.string.Find(other.string, start) == PlaceOf(other.model, wide.model, start, false));
        break;
    case 2:
        Require(wide.string.FindLast(other.string) == PlaceOf(other.model, wide.model, 0, true));
        break;
    case 3:
        wide.string = wide.string + other.string;
        wide.model += std::u16string(other.model);
        break;
    case 4: {
        const Text<char> text(input);
        const bool measured = input.OneIn(2);
        wide.string.AssignUtf8(text.units.get(), measured ? npos : static_cast<std::uint32_t>(text.count));
        wide.model = WideOf(measured ? text.UpToZero() : text.All(), false);
        break;
    }
    default:
        narrow.string = wide.string.ToNarrow();
        narrow.model = Utf8Of(wide.model);
    }
}

void NarrowAlone(Input& input, const Narrow& narrow, Wide& wide)
{
    const std::uint32_t otherwise = Position(input);
    Require(narrow.string.IsEmpty() == narrow.model.empty());
    Require(narrow.string.ToUnsigned(otherwise) == NumberOf(narrow.model, otherwise));
    wide.string = narrow.string.ToUnicode();
    wide.model = WideOf(narrow.model, true);
}

void MakeNumber(Input& input, Narrow& narrow)
{
    constexpr std::string_view letters = "0123456789 -+\tul429";
    narrow.model.clear();
    for (int left = input.Below(14); left > 0; --left)
        narrow.model += letters[static_cast<std::size_t>(input.Below(static_cast<int>(letters.size())))];
    narrow.string.Assign(narrow.model.data(), static_cast<std::uint32_t>(narrow.model.size()));
}

struct Strings {
    std::array<Narrow, 3> narrow;
    std::array<Wide, 3> wide;
};

void Step(Input& input, Strings& all)
{
    Narrow& narrow = all.narrow[static_cast<std::size_t>(input.Below(3))];
    const Narrow& otherNarrow = all.narrow[static_cast<std::size_t>(input.Below(3))];
    Wide& wide = all.wide[static_cast<std::size_t>(input.Below(3))];
    const Wide& otherWide = all.wide[static_cast<std::size_t>(input.Below(3))];
    switch (input.Below(5)) {
    case 0:
        Common(input, narrow, otherNarrow);
        break;
    case 1:
        Common(input, wide, otherWide);
        break;
    case 2:
        WideAlone(input, wide, otherWide, narrow);
        break;
    case 3:
        MakeNumber(input, narrow);
        break;
    default:
        NarrowAlone(input, narrow, wide);
    }
    narrow.KeepShort();
    wide.KeepShort();
    narrow.RequireEqual();
    wide.RequireEqual();
}

} // namespace
} // namespace kelmora::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelmora::fuzz::Input input(data, size);
    kelmora::fuzz::Strings all;
    for (int left = 100; left > 0 && !input.IsEmpty(); --left)
        kelmora::fuzz::Step(input, all);
    return 0;
}
