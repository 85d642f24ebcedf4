#include "host/rule_book.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(RuleBook, Strict_KeepsEachRuleOnceInOrder)
{
    RuleBook rules(Strictness::Strict);
    rules.Broken("second thoughts");
    rules.Broken("another");
    rules.Broken("second thoughts");
    EXPECT_EQ(rules.All(), (std::vector<std::string>{"second thoughts", "another"}));
}

TEST(RuleBook, Plain_KeepsNothing)
{
    RuleBook rules(Strictness::Plain);
    rules.Broken("any");
    EXPECT_TRUE(rules.All().empty());
}

} // namespace
} // namespace kelmora::host
