#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kelmora::host {

/// Whether a host watches over the rules of the contract.
enum class Strictness {
    Plain,  ///< answers and keeps quiet, as an editor does
    Strict, ///< writes down every broken rule
};

/// The broken rules, in the order in which they were broken.
class RuleBook {
public:
    explicit RuleBook(Strictness strictness) : m_strictness(strictness) {}

    /// Writes `rule` down, once. Throws nothing: it is called inside of the library's calls.
    void Broken(const std::string& rule) noexcept;

    const std::vector<std::string>& All() const { return m_rules; }

private:
    Strictness m_strictness;
    std::vector<std::string> m_rules;
};

} // namespace kelmora::host
