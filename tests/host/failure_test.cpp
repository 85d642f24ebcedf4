#include "host/failure.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(Failure, AnyOne_HasItsCodeAndItsLine)
{
    const Failure failure(ExitCode::Unknown, "there is no such thing");
    EXPECT_EQ(failure.Code(), ExitCode::Unknown);
    EXPECT_STREQ(failure.what(), "there is no such thing");
}

TEST(ExitCode, Numbers_AreThoseThatScriptsDependOn)
{
    EXPECT_EQ(static_cast<int>(ExitCode::Done), 0);
    EXPECT_EQ(static_cast<int>(ExitCode::Failed), 1);
    EXPECT_EQ(static_cast<int>(ExitCode::Usage), 2);
    EXPECT_EQ(static_cast<int>(ExitCode::Unknown), 3);
}

} // namespace
} // namespace kelmora::host
