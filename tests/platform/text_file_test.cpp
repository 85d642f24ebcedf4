#include "platform/text_file.h"

#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// The system's calls by which a file is finished, in the place of the library's: one of them can be made to fail.
namespace {
const char* g_failing = "";

long Finish(const char* name, long result)
{
    return std::strcmp(g_failing, name) == 0 ? (errno = EIO, -1L) : result;
}
} // namespace

extern "C" int fsync(int file)
{
    return static_cast<int>(Finish("fsync", ::syscall(SYS_fsync, file)));
}

extern "C" int fchmod(int file, mode_t rights) noexcept
{
    return static_cast<int>(Finish("fchmod", ::syscall(SYS_fchmod, file, rights)));
}

extern "C" int rename(const char* from, const char* to) noexcept
{
    const bool fails = std::strcmp(g_failing, "rename") == 0;
    return static_cast<int>(Finish("rename", fails ? 0 : ::syscall(SYS_rename, from, to)));
}
#endif

namespace kelmora {
namespace {

namespace fs = std::filesystem;

struct TextFile : testing::Test {
    std::u16string Path(const fs::path& name) const { return (folder.Path() / name).u16string(); }

    bool Read(const fs::path& name, std::size_t most, std::string& content) const
    {
        return platform::ReadFile(Path(name).c_str(), most, content);
    }

    bool Replace(const fs::path& name, std::string_view text) const
    {
        return platform::ReplaceTextFile(Path(name).c_str(), text);
    }

    std::string Content(const fs::path& name) const { return FileContent(folder.Path() / name); }

    std::size_t Entries() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.Path()), {}));
    }

    TestFolder folder;
};

TEST_F(TextFile, Read_GivesEveryByteAsItStands)
{
    std::string bytes;
    for (int i = 0; i < 300000; ++i)
        bytes += static_cast<char>(i * 7);
    bytes += "\r\n\x1A\n";
    TestFolder::Write(folder.Path() / "file", bytes);
    std::string content = "before";
    EXPECT_TRUE(Read("file", bytes.size(), content));
    EXPECT_TRUE(content == bytes);
}

TEST_F(TextFile, Read_EmptyFile_IsAnEmptyText)
{
    TestFolder::Write(folder.Path() / "file", "");
    std::string content = "before";
    EXPECT_TRUE(Read("file", 0, content));
    EXPECT_EQ(content, "");
}

TEST_F(TextFile, Read_MoreThanTheLimit_Fails)
{
    std::string content;
    TestFolder::Write(folder.Path() / "file", "12345");
    EXPECT_TRUE(Read("file", 5, content));
    EXPECT_FALSE(Read("file", 4, content));
    TestFolder::Write(folder.Path() / "file", std::string((1 << 16) + 1, 'x'));
    EXPECT_TRUE(Read("file", (1 << 16) + 1, content));
    EXPECT_FALSE(Read("file", 1 << 16, content));
}

TEST_F(TextFile, Read_WhatIsNoFile_Fails)
{
    std::string content;
    folder.Folder("folder");
    EXPECT_FALSE(Read("folder", 100, content));
    EXPECT_FALSE(Read("missing", 100, content));
    EXPECT_FALSE(Read("missing/file", 100, content));
    EXPECT_FALSE(platform::ReadFile(u"", 100, content));
}

TEST_F(TextFile, Replace_NewFile_HasTheTextAsItIs)
{
    EXPECT_TRUE(Replace("file", "one\ntwo\n"));
    EXPECT_EQ(Content("file"), "one\ntwo\n");
    EXPECT_EQ(Entries(), 1u);
}

TEST_F(TextFile, Replace_OldFile_IsGone)
{
    TestFolder::Write(folder.Path() / "file", std::string(1000, 'x'));
    EXPECT_TRUE(Replace("file", ""));
    EXPECT_EQ(Content("file"), "");
    const std::string large(3000000, 'y');
    EXPECT_TRUE(Replace("file", large));
    EXPECT_TRUE(Content("file") == large);
    EXPECT_EQ(Entries(), 1u);
}

TEST_F(TextFile, Replace_BareName_LiesInTheCurrentFolder)
{
    fs::current_path(folder.Path());
    EXPECT_TRUE(platform::ReplaceTextFile(u"bare", "text"));
    EXPECT_EQ(Content("bare"), "text");
    EXPECT_EQ(Entries(), 1u);
}

TEST_F(TextFile, Replace_NameBeyondAsciiOrVeryLong_IsMade)
{
    const fs::path name = u"\u00FC\u65E5\U0001F600";
    EXPECT_TRUE(Replace(name, "text"));
    EXPECT_EQ(Content(name), "text");
    const std::string longest(100, 'n'); // on Windows a whole path has 259 characters
    EXPECT_TRUE(Replace(longest, "text"));
    EXPECT_EQ(Content(longest), "text");
}

TEST_F(TextFile, Replace_FolderInTheWayOrMissing_FailsAndLeavesNothing)
{
    folder.Folder("folder");
    EXPECT_FALSE(Replace("folder", "text"));
    EXPECT_TRUE(fs::is_directory(folder.Path() / "folder"));
    EXPECT_FALSE(Replace("missing/file", "text"));
    TestFolder::Write(folder.Path() / "file", "old");
    EXPECT_FALSE(Replace("file/file", "text"));
    EXPECT_EQ(Content("file"), "old");
    EXPECT_FALSE(platform::ReplaceTextFile(u"", "text"));
    EXPECT_EQ(Entries(), 2u);
}

#ifdef _WIN32

TEST_F(TextFile, Replace_FileThatMustNotBeWritten_StaysAsItIs)
{
    TestFolder::Write(folder.Path() / "file", "old");
    const fs::path path = folder.Path() / "file";
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(Replace("file", "new"));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(Content("file"), "old");
    EXPECT_EQ(Entries(), 1u);
}

TEST_F(TextFile, Replace_FileThatAnotherHoldsOpen_StaysAsItIs)
{
    TestFolder::Write(folder.Path() / "file", "old");
    const HANDLE held = CreateFileW((folder.Path() / "file").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(Replace("file", "new"));
    CloseHandle(held);
    EXPECT_EQ(Content("file"), "old");
    EXPECT_EQ(Entries(), 1u);
}

#else

TEST_F(TextFile, NameOfBytesThatAreNoUtf8_IsFound)
{
    const std::u16string name = folder.Path().u16string() + u"/" + char16_t(0xDCFF) + char16_t(0xDCFE);
    EXPECT_TRUE(platform::ReplaceTextFile(name.c_str(), "text"));
    EXPECT_EQ(Content("\xFF\xFE"), "text");
    std::string content;
    EXPECT_TRUE(platform::ReadFile(name.c_str(), 100, content));
    EXPECT_EQ(content, "text");
}

TEST_F(TextFile, Replace_LongestName_IsMade)
{
    const std::string longest(255, 'n');
    EXPECT_TRUE(Replace(longest, "text"));
    EXPECT_EQ(Content(longest), "text");
    EXPECT_FALSE(Replace(longest + "n", "text"));
    EXPECT_EQ(Entries(), 1u);
}

TEST_F(TextFile, Replace_ThroughALink_KeepsTheLink)
{
    TestFolder::Write(folder.Path() / "file", "old");
    fs::create_symlink("file", folder.Path() / "link");
    EXPECT_TRUE(Replace("link", "new"));
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_EQ(Content("file"), "new");
    EXPECT_EQ(Entries(), 2u);
}

TEST_F(TextFile, Replace_OldFile_KeepsItsRights)
{
    TestFolder::Write(folder.Path() / "file", "old");
    fs::permissions(folder.Path() / "file", fs::perms(0640));
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(fs::status(folder.Path() / "file").permissions(), fs::perms(0640));
}

TEST_F(TextFile, Devices_AreNeitherReadNorReplaced)
{
    std::string content;
    EXPECT_FALSE(platform::ReadFile(u"/dev/zero", 1000, content));
    EXPECT_FALSE(platform::ReplaceTextFile(u"/dev/full", "text"));
    EXPECT_FALSE(platform::ReplaceTextFile(u"/dev/null", "text"));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(TextFile, PipeWithoutAWriter_IsRefusedAtOnce)
{
    ASSERT_EQ(::mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
    std::string content;
    EXPECT_FALSE(Read("pipe", 100, content));
    EXPECT_FALSE(Replace("pipe", "text"));
    EXPECT_TRUE(fs::is_fifo(folder.Path() / "pipe"));
}

/// No file grows beyond this many bytes; a write that would fails, as it does on a full disk.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before = {};
};

TEST_F(TextFile, Replace_FullDisk_FailsAndTheOldFileStays)
{
    TestFolder::Write(folder.Path() / "file", "old");
    for (const rlim_t room : {0u, 1u, 9u}) {
        bool replaced = true, made = true;
        {
            const SmallDisk disk(room);
            replaced = Replace("file", "0123456789");
            made = Replace("new", "0123456789");
        }
        EXPECT_FALSE(replaced) << room;
        EXPECT_FALSE(made) << room;
        EXPECT_EQ(Content("file"), "old");
        EXPECT_EQ(Entries(), 1u);
    }
    bool fits = false;
    {
        const SmallDisk disk(10);
        fits = Replace("file", "0123456789");
    }
    EXPECT_TRUE(fits);
    EXPECT_EQ(Content("file"), "0123456789");
}

TEST_F(TextFile, Replace_LastStepsThatFail_LeaveTheOldFileAndNothingElse)
{
    TestFolder::Write(folder.Path() / "file", "old");
    for (const char* const step : {"fsync", "fchmod", "rename"}) {
        g_failing = step;
        const bool replaced = Replace("file", "new");
        g_failing = "";
        EXPECT_FALSE(replaced) << step;
        EXPECT_EQ(Content("file"), "old") << step;
        EXPECT_EQ(Entries(), 1u) << step;
    }
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(Content("file"), "new");
}

/// Root may write everywhere, so for a while this is somebody else.
class AsNobody {
public:
    AsNobody() : m_before(::geteuid())
    {
        if (m_before == 0)
            m_good = ::seteuid(65534) == 0;
    }
    ~AsNobody() { m_good = ::seteuid(m_before) == 0 && m_good; }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

    bool IsGood() const { return m_good; }

private:
    uid_t m_before;
    bool m_good = true;
};

TEST_F(TextFile, Replace_WithoutRights_FailsAndTheOldFileStays)
{
    TestFolder::Write(folder.Path() / "file", "old");
    fs::permissions(folder.Path(), fs::perms(0777));
    fs::permissions(folder.Path() / "file", fs::perms(0444));
    bool readOnlyFile = true, readOnlyFolder = true;
    {
        const AsNobody nobody;
        ASSERT_TRUE(nobody.IsGood());
        readOnlyFile = Replace("file", "new");
    }
    fs::permissions(folder.Path() / "file", fs::perms(0666));
    fs::permissions(folder.Path(), fs::perms(0555));
    {
        const AsNobody nobody;
        ASSERT_TRUE(nobody.IsGood());
        readOnlyFolder = Replace("file", "new");
    }
    fs::permissions(folder.Path(), fs::perms(0755));
    EXPECT_FALSE(readOnlyFile);
    EXPECT_FALSE(readOnlyFolder);
    EXPECT_EQ(Content("file"), "old");
    EXPECT_EQ(Entries(), 1u);
}

#endif

} // namespace
} // namespace kelmora
