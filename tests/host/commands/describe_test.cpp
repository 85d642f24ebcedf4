#include "host/commands/describe.h"

#include <gtest/gtest.h>

#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"

namespace kelmora::host {
namespace {

TEST(RunDescribe, Text_HasKnobsPresetsAndAnExample)
{
    const ProgramRun run = RunWith({"describe", "106", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, R"(106  Fake Filter  (fake-filter), one picture, help topic 77

Knobs
   0  Level     float   default 0.25, shown as 25 on 0 to 100  [0, 10, 198 x 30]  hostFlag
   1  Mode      choice  default Right Side; one of Left, Right Side  [0, 10, 198 x 30]
   2  Tint      color   default #ff8000  [0, 10, 198 x 30]
   3  Negative  check   default off  [0, 10, 198 x 30]
   4  Middle    point   default 0.5,0  [0, 10, 198 x 30]

Presets
  Half Light  Level=0.39  Mode=Left  Tint=#ffffff  Negative=on  Middle=0.25,0
  Night       Level=1  Mode=Right Side  Tint=#000000  Negative=off  Middle=0.75,0

Example
  kelmora render fake-filter in.png -o out.png --preset "Half Light" --set "Level=0.25"
)");
}

TEST(RunDescribe, Transition_ShowsTheSecondPicture)
{
    const ProgramRun run = RunWith({"describe", "Fake Blend", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(run.out.find("two pictures"), std::string::npos);
    EXPECT_NE(run.out.find("kelmora render fake-blend in.png --to second.png -o out.png"), std::string::npos);
}

TEST(RunDescribe, Json_HasPresetValuesByKnob)
{
    const ProgramRun run = RunWith({"describe", "fakefilter", "--json", "--library", kFakeLibrary});
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(run.out.find("\"Level\": 0.39,\n        \"Mode\": \"Left\",\n        \"Tint\": \"#ffffff\",\n"
                           "        \"Negative\": true,"),
              std::string::npos)
        << run.out;
}

TEST(RunDescribe, UnknownEffect_IsCode3)
{
    EXPECT_EQ(RunWith({"describe", "107", "--library", kFakeLibrary}).code, 3);
}

} // namespace
} // namespace kelmora::host
