#include "host/interrupt.h"

#include <csignal>

#include <gtest/gtest.h>

#include "host/failure.h"

namespace kelmora::host {
namespace {

TEST(InterruptWatch, Signal_IsNotedWhileItLives)
{
    for (const int number : {SIGINT, SIGTERM}) {
        const InterruptWatch watch;
        EXPECT_FALSE(IsInterrupted());
        EXPECT_NO_THROW(CheckInterrupt());
        std::raise(number);
        EXPECT_TRUE(IsInterrupted());
        try {
            CheckInterrupt();
            ADD_FAILURE();
        } catch (const Failure& failure) {
            EXPECT_EQ(static_cast<int>(failure.Code()), 130);
        }
    }
    EXPECT_FALSE(IsInterrupted());
}

TEST(InterruptWatch, HandlerFromBefore_ComesBack)
{
    const auto own = std::signal(SIGTERM, SIG_IGN);
    {
        const InterruptWatch watch;
    }
    EXPECT_EQ(std::signal(SIGTERM, own), SIG_IGN);
}

} // namespace
} // namespace kelmora::host
