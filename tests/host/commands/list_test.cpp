#include "host/commands/list.h"

#include <gtest/gtest.h>

#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"

namespace kelmora::host {
namespace {

TEST(RunList, Text_HasALinePerEffect)
{
    const ProgramRun run = RunWith({"list", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out,
              "102  fake-blend   Fake Blend   two pictures   5 knobs   2 presets\n"
              "106  fake-filter  Fake Filter  one picture    5 knobs   2 presets\n");
    EXPECT_EQ(run.errors, "");
}

TEST(RunList, Json_HasTheLibraryAndTheCounts)
{
    const ProgramRun run = RunWith({"list", "--json", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 0);
    EXPECT_TRUE(run.out.starts_with("{\n  \"schema\": 1,\n  \"library\": \"Fake Library\",\n")) << run.out;
    EXPECT_NE(run.out.find("\"id\": 102,\n      \"slug\": \"fake-blend\",\n      \"name\": \"Fake Blend\",\n"
                           "      \"pictures\": 2,\n      \"knobs\": 5,\n      \"presets\": 2\n"),
              std::string::npos)
        << run.out;
}

TEST(RunList, FileThatIsNoLibrary_IsRefused)
{
    const ProgramRun run = RunWith({"list", "--library", kEmptyLibrary});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "");
}

} // namespace
} // namespace kelmora::host
