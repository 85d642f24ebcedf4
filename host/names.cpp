#include "host/names.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace kelmora::host {
namespace {

// Not std::tolower: names are ASCII, and the user's locale has no say in them.
char Lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

std::string Slug(std::string_view name)
{
    std::string slug;
    for (const char letter : name)
        slug += letter == ' ' ? '-' : Lower(letter);
    return slug;
}

std::string Folded(std::string_view name)
{
    std::string folded;
    for (const char letter : name) {
        if (letter != ' ' && letter != '-' && letter != '_')
            folded += Lower(letter);
    }
    return folded;
}

std::size_t EditDistance(std::string_view a, std::string_view b)
{
    // Rows of the table of distances between the beginnings of both: before the last one, last one, new one.
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row[b.size()];
}

std::optional<std::size_t> FindName(const std::vector<std::string>& names, std::string_view asked)
{
    const auto same = std::find(names.begin(), names.end(), asked);
    if (same != names.end())
        return static_cast<std::size_t>(same - names.begin());
    const std::string folded = Folded(asked);
    const auto alike = std::find_if(names.begin(), names.end(),
                                    [&folded](const std::string& name) { return Folded(name) == folded; });
    if (alike == names.end())
        return std::nullopt;
    return static_cast<std::size_t>(alike - names.begin());
}

std::vector<std::string> NearestNames(const std::vector<std::string>& names, std::string_view asked)
{
    constexpr std::size_t kMost = 3;
    const std::string folded = Folded(asked);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const std::string& name : names) {
        const std::string other = Folded(name);
        const bool isBeginning = folded.size() >= 2 && other.starts_with(folded);
        const std::size_t distance = isBeginning ? 1 : EditDistance(folded, other);
        // A third of the letters wrong is still a slip of the hand; more is another word.
        if (distance <= std::max<std::size_t>(1, std::max(folded.size(), other.size()) / 3))
            near.emplace_back(distance, name);
    }
    std::stable_sort(near.begin(), near.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    std::vector<std::string> nearest;
    for (std::size_t i = 0; i < std::min(kMost, near.size()); ++i)
        nearest.push_back(near[i].second);
    return nearest;
}

std::string UnknownName(std::string_view kind, std::string_view asked, const std::vector<std::string>& names,
                        std::string_view hint)
{
    std::string text = "there is no ";
    text.append(kind).append(" \"").append(asked).append("\"");
    const std::vector<std::string> nearest = NearestNames(names, asked);
    for (std::size_t i = 0; i < nearest.size(); ++i) {
        text += i == 0 ? "; did you mean " : i + 1 == nearest.size() ? " or " : ", ";
        text.append("\"").append(nearest[i]).append("\"");
    }
    text.append(nearest.empty() ? "; " : "? ").append(hint);
    return text;
}

} // namespace kelmora::host
