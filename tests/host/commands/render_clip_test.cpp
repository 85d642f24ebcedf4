#include "host/commands/render_clip.h"

#include <gtest/gtest.h>

#include "host/clips/ffmpeg_probe.h"
#include "host/clips/pam.h"
#include "host/pictures/picture_file.h"
#include "tests/host/clips/film.h"
#include "tests/host/fake_library_file.h"
#include "tests/host/program_run.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

/// A folder with PAM clips of one grey pixel a frame.
class RunRenderClipTest : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return Utf8(m_folder.Path() / name); }

    void MakeClip(const std::string& name, const std::vector<int>& greys) const
    {
        ClipFormat format;
        format.width = 1;
        format.height = 1;
        PamWriter writer(format, OpenSink(Path(name), Overwrite::No));
        for (const int grey : greys) {
            const auto byte = static_cast<std::uint8_t>(grey);
            writer.Write({byte, byte, byte, 255});
        }
        writer.Finish();
    }

    ProgramRun Render(std::vector<std::string> words) const
    {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"--library", kFakeLibrary});
        return RunWith(words);
    }

    /// The greys of a clip.
    std::vector<int> Greys(const std::string& name) const
    {
        PamReader reader(name, OpenSource(Path(name)), kDefaultRate);
        std::vector<int> greys;
        for (FrameBytes frame; reader.Read(frame);)
            greys.push_back(frame[0]);
        return greys;
    }

    /// Renders to a clip and reads its greys.
    std::vector<int> Rendered(std::vector<std::string> words) const
    {
        words.insert(words.end(), {"-o", Path("out.pam"), "--force"});
        const ProgramRun run = Render(words);
        EXPECT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(run.out + run.errors, "");
        return run.code == 0 ? Greys("out.pam") : std::vector<int>();
    }

    std::size_t Files() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_folder.Path()),
                                                      std::filesystem::directory_iterator()));
    }

    const TestFolder m_folder;
};

using Levels = std::vector<int>;

TEST_F(RunRenderClipTest, Filter_RendersEveryFrame)
{
    MakeClip("in.pam", {0, 51, 255});
    // Half-way to 255.
    EXPECT_EQ(Rendered({"106", Path("in.pam"), "--set", "Level=0.5"}), (Levels{128, 153, 255}));
}

TEST_F(RunRenderClipTest, Keyframes_FollowTheClock)
{
    MakeClip("in.pam", {0, 0, 0, 0, 0});
    // At 4 frames a second: 0, 0.25, 0.5, 0.75, 1 second; the level 0, 0.25, 0.5, then 0.5 stays.
    const std::string way = "Level=0@0s,0.5@500ms";
    EXPECT_EQ(Rendered({"106", Path("in.pam"), "--rate", "4", "--set", way}), (Levels{0, 64, 128, 128, 128}));
    // The clock begins at 0.25.
    EXPECT_EQ(Rendered({"106", Path("in.pam"), "--rate", "4", "--set", way, "--time", "0.25"}),
              (Levels{64, 128, 128, 128, 128}));
}

TEST_F(RunRenderClipTest, Transition_JoinsTheClipsWithWhatLiesBetween)
{
    MakeClip("a.pam", {0, 0, 0, 0, 0});
    MakeClip("b.pam", {200, 200, 200, 200, 90});
    EXPECT_EQ(Rendered({"102", Path("a.pam"), "--to", Path("b.pam"), "--duration", "3s", "--rate", "1"}),
              (Levels{0, 0, 0, 100, 200, 200, 90}));
}

TEST_F(RunRenderClipTest, PictureAndClip_MeetInATransition)
{
    WritePicture(Path("p.png"), {1, 1, {100, 100, 100, 255}}, Overwrite::No);
    MakeClip("b.pam", {0, 0, 0, 60});
    const std::vector<std::string> way = {"--duration", "3s", "--rate", "1"};
    std::vector<std::string> words = {"102", Path("p.png"), "--to", Path("b.pam")};
    words.insert(words.end(), way.begin(), way.end());
    EXPECT_EQ(Rendered(words), (Levels{100, 50, 0, 60}));
    words = {"102", Path("p.png"), "--to", Path("p.png")};
    words.insert(words.end(), way.begin(), way.end());
    EXPECT_EQ(Rendered(words), (Levels{100, 100, 100}));
}

TEST_F(RunRenderClipTest, PictureBecomesAClip)
{
    WritePicture(Path("p.png"), {1, 1, {0, 0, 0, 255}}, Overwrite::No);
    EXPECT_EQ(Rendered({"106", Path("p.png"), "--duration", "2s", "--rate", "2", "--set", "Level=0@0s,1@2s"}),
              (Levels{0, 64, 128, 191}));
    const ProgramRun run = Render({"106", Path("p.png"), "-o", Path("x.pam")});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.errors, "kelmora: say how long it takes: --duration 1.5s\n");
}

TEST_F(RunRenderClipTest, Parts_JoinedAreTheWhole_WithAnyNumberOfJobs)
{
    Levels ramp;
    for (int grey = 0; grey < 40; ++grey)
        ramp.push_back(grey * 3);
    MakeClip("a.pam", ramp);
    MakeClip("b.pam", Levels(30, 250));
    const std::vector<std::string> way = {"102", Path("a.pam"), "--to", Path("b.pam"), "--duration", "800ms"};
    const auto with = [&](const std::vector<std::string>& more) {
        std::vector<std::string> words = way;
        words.insert(words.end(), more.begin(), more.end());
        return Rendered(words);
    };
    const Levels whole = with({"--jobs", "1"});
    EXPECT_EQ(whole.size(), 50u);
    EXPECT_EQ(with({"--jobs", "4"}), whole);
    Levels joined;
    for (const char* const range : {"0-9", "10-24", "25", "26-44", "45-"}) {
        const Levels part = with({"--frames", range, "--jobs", "3"});
        joined.insert(joined.end(), part.begin(), part.end());
    }
    EXPECT_EQ(joined, whole);
}

TEST_F(RunRenderClipTest, FramesBehindTheEnd_AreRefused)
{
    MakeClip("in.pam", {1, 2});
    const ProgramRun run = Render({"106", Path("in.pam"), "-o", Path("out.pam"), "--frames", "2-9"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kelmora: there is no frame 2 to render\n");
    EXPECT_EQ(Files(), 1u);
    EXPECT_EQ(Rendered({"106", Path("in.pam"), "--frames", "1-9", "--set", "Level=0"}), (Levels{2}));
}

TEST_F(RunRenderClipTest, ClipsThatDoNotFit_AreRefusedInOneLine)
{
    MakeClip("a.pam", {1, 2, 3});
    WritePicture(Path("wide.png"), {2, 1, std::vector<std::uint8_t>(8)}, Overwrite::No);
    TestFolder::Write(m_folder.Path() / "fast.y4m", "YUV4MPEG2 W1 H1 F50:1 Cmono\nFRAME\nx");
    const auto refusal = [this](std::vector<std::string> words) {
        words.insert(words.begin(), "102");
        words.insert(words.end(), {"--duration", "1s", "-o", Path("out.pam")});
        const ProgramRun run = Render(words);
        EXPECT_EQ(run.code, 1);
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
        return run.errors;
    };
    EXPECT_NE(refusal({Path("a.pam"), "--to", Path("wide.png")}).find("1 x 1 pixels and "),
              std::string::npos);
    EXPECT_NE(refusal({Path("a.pam"), "--to", Path("fast.y4m")}).find("bring both to one rate first"),
              std::string::npos);
    EXPECT_NE(refusal({Path("a.pam"), "--to", Path("a.pam")}).find("has 3 frames, fewer than"),
              std::string::npos);
    EXPECT_EQ(Files(), 3u);
}

TEST_F(RunRenderClipTest, SecondClipTooShort_LeavesNoOutput)
{
    MakeClip("a.pam", {1, 2, 3});
    MakeClip("b.pam", {1});
    const ProgramRun run = Render({"102", Path("a.pam"), "--to", Path("b.pam"), "--rate", "1", "--duration",
                                   "3s", "-o", Path("out.pam")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kelmora: " + Path("b.pam") + " ends before the transition does\n");
    EXPECT_EQ(Files(), 2u);
}

TEST_F(RunRenderClipTest, CutOffClip_LeavesNoOutput)
{
    MakeClip("in.pam", {1, 2, 3});
    const auto path = m_folder.Path() / "in.pam";
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
    const ProgramRun run = Render({"106", Path("in.pam"), "-o", Path("out.pam"), "--jobs", "2"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kelmora: cannot read " + Path("in.pam") + ": it is cut off in frame 2\n");
    EXPECT_EQ(Files(), 1u);
}

TEST_F(RunRenderClipTest, ExistingOutput_StaysWithoutForce)
{
    MakeClip("in.pam", {1});
    MakeClip("out.pam", {7, 7});
    EXPECT_EQ(Render({"106", Path("in.pam"), "-o", Path("out.pam")}).code, 1);
    EXPECT_EQ(Greys("out.pam"), (Levels{7, 7}));
}

TEST_F(RunRenderClipTest, MisfitArguments_AreUsage)
{
    MakeClip("in.pam", {1});
    const std::vector<std::vector<std::string>> bad = {
        {"106", Path("in.pam"), "-o", Path("out.pam"), "--format", "argb8"},
        {"106", Path("in.pam"), "-o", Path("out.pam"), "--duration", "1s"},
        {"106", Path("in.pam"), "-o", "-", "--json"},
        {"102", "-", "--to", "-", "-o", Path("out.pam"), "--duration", "1s"},
        {"102", Path("in.pam"), "--to", Path("in.pam"), "-o", Path("out.pam")},
        {"106", Path("in.pam"), "-o", Path("out.png")},
        {"106", Path("in.pam"), "-o", Path("out")},
    };
    for (const std::vector<std::string>& words : bad)
        EXPECT_EQ(Render(words).code, 2) << words[3];
    EXPECT_EQ(Files(), 1u);
}

TEST_F(RunRenderClipTest, Json_EndsInALineWithTheCounts)
{
    MakeClip("in.pam", {1, 2, 3});
    const ProgramRun run = Render({"106", Path("in.pam"), "-o", Path("out.pam"), "--json", "--jobs", "2"});
    EXPECT_EQ(run.code, 0);
    const std::size_t last = run.out.rfind('{');
    ASSERT_NE(last, std::string::npos);
    const std::string line = run.out.substr(last);
    EXPECT_TRUE(line.starts_with("{\"schema\":1,\"effect\":\"fake-filter\",\"output\":")) << line;
    EXPECT_NE(
        line.find("\"width\":1,\"height\":1,\"rate\":\"25/1\",\"firstFrame\":0,\"frames\":3,\"jobs\":2,"),
        std::string::npos)
        << line;
    EXPECT_TRUE(line.ends_with("}\n")) << line;
}

TEST_F(RunRenderClipTest, Film_KeepsSizeRateAspectAndSound)
{
    if (!HasFfmpeg())
        GTEST_SKIP() << "FFmpeg is not installed";
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=30000/1001:d=1,setsar=8/9", "-f", "lavfi", "-i",
            "sine=d=1", "-c:a", "aac", Path("in.mp4")});
    const ProgramRun run = Render({"106", Path("in.mp4"), "-o", Path("out.mp4")});
    ASSERT_EQ(run.code, 0) << run.errors;
    const ProbedClip before = ProbeClip(Path("in.mp4"));
    const ProbedClip after = ProbeClip(Path("out.mp4"));
    EXPECT_EQ(after.format.width, 64);
    EXPECT_EQ(after.format.height, 48);
    EXPECT_EQ(after.format.rate, (Ratio{30000, 1001}));
    EXPECT_EQ(after.format.pixelAspect, (Ratio{8, 9}));
    EXPECT_EQ(after.frames, before.frames);
    EXPECT_TRUE(after.hasSound);
    const auto sound = [this](const char* name) {
        return Ffmpeg({"-i", Path(name), "-map", "0:a", "-c", "copy", "-f", "md5", "-"});
    };
    EXPECT_EQ(sound("in.mp4"), sound("out.mp4"));
}

TEST_F(RunRenderClipTest, FilmInParts_JoinedIsTheWhole)
{
    if (!HasFfmpeg())
        GTEST_SKIP() << "FFmpeg is not installed";
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=2", "-bf", "2", "-g", "12", Path("in.mp4")});
    const auto frames = [this](const std::string& range) {
        std::vector<std::string> words = {"106", Path("in.mp4"), "-o", Path("part.pam"), "--force"};
        if (!range.empty())
            words.insert(words.end(), {"--frames", range});
        const ProgramRun run = Render(words);
        EXPECT_EQ(run.code, 0) << run.errors;
        const auto source = OpenSource(Path("part.pam"));
        return source->Ahead(static_cast<std::size_t>(*source->Size()));
    };
    const std::string whole = frames("");
    EXPECT_EQ(whole.size() % 50, 0u);
    EXPECT_EQ(frames("0-16") + frames("17-30") + frames("31-"), whole);
}

} // namespace
} // namespace kelmora::host
