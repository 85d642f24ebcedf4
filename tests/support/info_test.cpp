#include "tests/support/info.h"

#include <gtest/gtest.h>

#include "contract/param.h"

namespace kelmora {
namespace {

TEST(MakeInfo_AnyFields, LeavesTheUnreadBytesMarked)
{
    const RenderInfo info = MakeInfo({.progress = 0.25, .time = 7.0, .flags = 0x20, .fieldMode = 1}, 0xEE);
    EXPECT_EQ(info.progress, 0.25);
    EXPECT_EQ(info.time, 7.0);
    EXPECT_EQ(info.flags, 0x20u);
    EXPECT_EQ(info.fieldMode, 1);
    EXPECT_EQ(info.unused0, 0xEEEEEEEEu);
    EXPECT_EQ(info.unused24[15], 0xEE);
    EXPECT_EQ(info.unused48, 0xEEEEEEEEu);
}

TEST(FlushInfo_Record, HoldsTheFields)
{
    const FlushInfo info({.progress = 0.5, .fieldMode = 2});
    double progress = 0.0;
    std::memcpy(&progress, reinterpret_cast<const char*>(info.Get()) + 8, sizeof progress);
    EXPECT_EQ(progress, 0.5);
    std::int16_t fieldMode = 0;
    std::memcpy(&fieldMode, reinterpret_cast<const char*>(info.Get()) + 52, sizeof fieldMode);
    EXPECT_EQ(fieldMode, 2);
}

TEST(FlushInfoDeathTest, Byte54_Faults_AndSoDoesAWrite)
{
    const FlushInfo info({});
    auto* const bytes = reinterpret_cast<volatile std::uint8_t*>(info.Get());
    EXPECT_EQ(bytes[51], 0xEE); // unread, but there
    EXPECT_DEATH(static_cast<void>(bytes[54] + 1), "");
    EXPECT_DEATH(bytes[0] = 1, "");
}

TEST(FlushRecord_OfParamInfo, StartsAsFilled_AndKeepsWhatIsWritten)
{
    const FlushRecord<ParamInfo> record(0xCC);
    EXPECT_EQ(record.Get()->reserved[2], 0xCC);
    record.Get()->value = 5;
    EXPECT_EQ(record.Read().value, 5u);
    EXPECT_EQ(record.Read().valueY, 0xCCCCCCCCu);
    EXPECT_EQ(record.Bytes() + sizeof(ParamInfo), reinterpret_cast<std::uint8_t*>(record.Get() + 1));
}

TEST(FlushRecordDeathTest, OneByteBehind_Faults)
{
    const FlushRecord<ParamValue> record;
    const auto* const bytes = reinterpret_cast<const volatile std::uint8_t*>(record.Get());
    EXPECT_DEATH(static_cast<void>(bytes[12] + 1), "");
}

} // namespace
} // namespace kelmora
