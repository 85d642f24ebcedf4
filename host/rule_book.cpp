#include "host/rule_book.h"

#include <algorithm>

namespace kelmora::host {

void RuleBook::Broken(const std::string& rule) noexcept
{
    if (m_strictness == Strictness::Plain)
        return;
    try {
        if (std::find(m_rules.begin(), m_rules.end(), rule) == m_rules.end())
            m_rules.push_back(rule);
    } catch (...) { // out of memory: nothing can be told any more
    }
}

} // namespace kelmora::host
