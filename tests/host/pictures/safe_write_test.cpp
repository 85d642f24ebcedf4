#include "host/pictures/safe_write.h"

#include <fstream>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

#include "host/failure.h"
#include "tests/platform/test_folder.h"

namespace kelmora::host {
namespace {

std::string Content(const std::filesystem::path& path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

std::size_t FilesIn(const std::filesystem::path& folder)
{
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

std::string RefusalOf(const std::filesystem::path& path, Overwrite overwrite)
{
    try {
        WriteWhole(Utf8(path), {'n', 'e', 'w'}, overwrite);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Failed);
        return failure.what();
    }
    ADD_FAILURE() << path << " is written";
    return {};
}

TEST(WriteWhole, NewFile_HasTheBytesAndNothingBeside)
{
    const TestFolder folder;
    const auto path = folder.Path() / "new.bin";
    WriteWhole(Utf8(path), {'n', 'e', '\n', '\0'}, Overwrite::No);
    EXPECT_EQ(Content(path), std::string("ne\n\0", 4));
    EXPECT_EQ(FilesIn(folder.Path()), 1u);
}

TEST(WriteWhole, ExistingFile_StaysWithoutLeave)
{
    const TestFolder folder;
    const auto path = folder.Path() / "old.bin";
    TestFolder::Write(path, "old");
    EXPECT_EQ(RefusalOf(path, Overwrite::No), Utf8(path) + " is already there; --force replaces it");
    EXPECT_EQ(Content(path), "old");
    EXPECT_EQ(FilesIn(folder.Path()), 1u);
}

TEST(WriteWhole, ExistingFile_IsReplacedWithLeave)
{
    const TestFolder folder;
    const auto path = folder.Path() / "old.bin";
    TestFolder::Write(path, "old and longer");
    WriteWhole(Utf8(path), {'n', 'e', 'w'}, Overwrite::Yes);
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(FilesIn(folder.Path()), 1u);
}

TEST(WriteWhole, Folder_IsNoFile)
{
    const TestFolder folder;
    const auto path = folder.Folder("sub");
    EXPECT_EQ(RefusalOf(path, Overwrite::Yes), "cannot write " + Utf8(path) + ": it is a folder");
}

TEST(WriteWhole, MissingFolder_IsNamed)
{
    const TestFolder folder;
    const auto path = folder.Path() / "missing" / "new.bin";
    EXPECT_EQ(RefusalOf(path, Overwrite::No),
              "cannot write " + Utf8(path) + ": there is no folder " + Utf8(path.parent_path()));
}

TEST(WriteWhole, NameBeyondAscii_IsTheFilesName)
{
    const TestFolder folder;
    WriteWhole(Utf8(folder.Path()) + "/Bl\xC3\xBCte.bin", {'n'}, Overwrite::No);
    EXPECT_EQ(Content(folder.Path() / u8"Bl\u00FCte.bin"), "n");
}

TEST(WriteWhole, PartThatCannotBeWritten_LeavesNothing)
{
    const TestFolder folder;
    // A name that is just short enough for the system has no room for the ending of the part.
    const auto path = folder.Path() / std::string(250, 'n');
    EXPECT_THROW(WriteWhole(Utf8(path), {'n'}, Overwrite::No), Failure);
    EXPECT_EQ(FilesIn(folder.Path()), 0u);
}

TEST(PartFile, Name_LiesBesideWithTheSameEnding)
{
    const TestFolder folder;
    const PartFile part(Utf8(folder.Path() / "clip.mp4"), Overwrite::No);
    EXPECT_EQ(part.Path().parent_path(), folder.Path());
    EXPECT_EQ(part.Path().extension(), ".mp4");
    EXPECT_NE(part.Path().filename(), "clip.mp4");
}

TEST(PartFile, WithoutKeep_IsRemoved_AndWithIt_Stays)
{
    const TestFolder folder;
    const std::string target = Utf8(folder.Path() / "clip.mp4");
    {
        const PartFile part(target, Overwrite::No);
        TestFolder::Write(part.Path(), "half");
    }
    EXPECT_EQ(FilesIn(folder.Path()), 0u);
    {
        const PartFile part(target, Overwrite::No);
        TestFolder::Write(part.Path(), "whole");
        part.Keep();
    }
    EXPECT_EQ(Content(folder.Path() / "clip.mp4"), "whole");
    EXPECT_EQ(FilesIn(folder.Path()), 1u);
}

TEST(PartFile, TargetMadeMeanwhile_StaysWithoutForce)
{
    const TestFolder folder;
    const PartFile part(Utf8(folder.Path() / "clip.mp4"), Overwrite::No);
    TestFolder::Write(part.Path(), "new");
    TestFolder::Write(folder.Path() / "clip.mp4", "old");
    EXPECT_THROW(part.Keep(), Failure);
    EXPECT_EQ(Content(folder.Path() / "clip.mp4"), "old");
}

TEST(CheckTarget, FreeName_IsFine)
{
    const TestFolder folder;
    CheckTarget(Utf8(folder.Path() / "new.bin"), Overwrite::No);
    TestFolder::Write(folder.Path() / "old.bin", "old");
    CheckTarget(Utf8(folder.Path() / "old.bin"), Overwrite::Yes);
    EXPECT_THROW(CheckTarget(Utf8(folder.Path() / "old.bin"), Overwrite::No), Failure);
}

} // namespace
} // namespace kelmora::host
