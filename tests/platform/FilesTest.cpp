// File handles, folders and paths, on a real file system.
#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "platform/Ownership.h"
#include "platform/UniquePath.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class FilesTest : public testing::Test
{
protected:
    TempFolder m_folder;
};

TEST_F(FilesTest, SourcesAreOpenedForReadingAlone)
{
    WriteFileBytes(m_folder / "source", Bytes("01 02 03 04"));
    FileHandle file;
    ASSERT_EQ(file.OpenForReading(m_folder / "source"), ResultSuccess);
    EXPECT_NE(file.WriteAt(0, "x", 1), ResultSuccess);
    ByteVector buffer(8);
    std::size_t got = 99;
    EXPECT_EQ(file.ReadAt(1, buffer.data(), 8, &got), ResultSuccess);
    EXPECT_EQ(got, 3u);
    EXPECT_EQ(file.ReadAt(100, buffer.data(), 8, &got), ResultSuccess);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(file.ReadAt(UINT64_MAX, buffer.data(), 8, &got), ResultInvalidParameter);
    std::uint64_t size = 0;
    EXPECT_EQ(file.Size(&size), ResultSuccess);
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(file.IsRegularFile());
    EXPECT_FALSE(file.IsBlockDevice());
    EXPECT_EQ(file.DeviceSectorSize(), 0u);
}

TEST_F(FilesTest, OpeningTellsWhatIsMissing)
{
    WriteFileBytes(m_folder / "file", {});
    FileHandle file;
    EXPECT_EQ(file.OpenForReading(m_folder / "none"), ResultFileNotFound);
    EXPECT_EQ(file.OpenForReading(m_folder / "none/none"), ResultPathNotFound);
    EXPECT_EQ(file.OpenForReading(m_folder / "file/none"), ResultPathNotFound);
    EXPECT_FALSE(file.IsOpen());
    // A pipe nobody writes to must not be waited for.
    ASSERT_EQ(::mkfifo((m_folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(file.OpenForReading(m_folder / "pipe"), ResultSuccess);
}

TEST_F(FilesTest, WritingNeverGoesThroughALink)
{
    WriteFileBytes(m_folder / "precious", Bytes("'keep'"));
    std::filesystem::create_symlink(m_folder / "precious", m_folder / "link");
    FileHandle file;
    EXPECT_NE(file.OpenOrCreate(m_folder / "link"), ResultSuccess);
    ASSERT_EQ(file.OpenOrCreate(m_folder / "new"), ResultSuccess);
    std::size_t written = 0;
    EXPECT_EQ(file.WriteAt(3, "abc", 3, &written), ResultSuccess);
    EXPECT_EQ(written, 3u);
    EXPECT_EQ(ReadFileBytes(m_folder / "new"), Bytes("00*3 'abc'"));
    EXPECT_EQ(ReadFileBytes(m_folder / "precious"), Bytes("'keep'"));
    struct stat status = {};
    ASSERT_EQ(::stat((m_folder / "new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 077, 0u) << "until they are done";
}

TEST_F(FilesTest, AMovedHandleClosesOnce)
{
    WriteFileBytes(m_folder / "file", Bytes("01"));
    FileHandle first;
    ASSERT_EQ(first.OpenForReading(m_folder / "file"), ResultSuccess);
    const int descriptor = first.Descriptor();
    {
        const FileHandle second = std::move(first);
        EXPECT_EQ(second.Descriptor(), descriptor);
    }
    struct stat status = {};
    EXPECT_NE(::fstat(descriptor, &status), 0);
}

TEST_F(FilesTest, MakingFoldersTellsThereAlreadyFromInTheWay)
{
    WriteFileBytes(m_folder / "file", {});
    EXPECT_EQ(MakeFolderWithParents(m_folder / "a/b/c"), ResultSuccess);
    EXPECT_EQ(MakeFolderWithParents(m_folder / "a/b/c/"), ResultAlreadyExists);
    EXPECT_EQ(MakeFolderWithParents(m_folder / "file"), ResultFileExists);
    EXPECT_FALSE(FolderIsThere(MakeFolderWithParents(m_folder / "file/x")));
    EXPECT_EQ(MakeFolder(m_folder / "none/x"), ResultFileNotFound);
    EXPECT_EQ(MakePrivateFolderWithParents(m_folder / "p/q"), ResultSuccess);
    struct stat status = {};
    for (const char* name : {"p", "p/q"}) {
        ASSERT_EQ(::stat((m_folder / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0700u) << name;
    }
    std::filesystem::create_directory_symlink(m_folder / "a", m_folder / "link");
    EXPECT_TRUE(IsFolder(m_folder / "link"));
    EXPECT_FALSE(IsRealFolder(m_folder / "link"));
    EXPECT_FALSE(IsWritableFolder(m_folder / "file"));
}

TEST_F(FilesTest, RemovingATreeDoesNotFollowLinks)
{
    WriteFileBytes(m_folder / "precious", Bytes("'keep'"));
    std::filesystem::create_directories(m_folder / "tree/sub");
    std::filesystem::create_symlink(m_folder / "precious", m_folder / "tree/sub/link");
    std::filesystem::create_directory_symlink(m_folder.Path(), m_folder / "tree/up");
    EXPECT_EQ(RemoveTree(m_folder / "tree"), ResultSuccess);
    EXPECT_FALSE(PathExists(m_folder / "tree"));
    EXPECT_TRUE(PathExists(m_folder / "precious"));
    EXPECT_EQ(RemoveFile(m_folder / "tree"), ResultFileNotFound);
}

TEST_F(FilesTest, FoldersAreListedInByteOrderWithoutHiddenNames)
{
    for (const char* name : {"b", "B", "a", ".hidden", "\xC3\xA4"}) {
        WriteFileBytes(m_folder / name, {});
    }
    std::vector<std::string> names;
    EXPECT_EQ(ListFolder(m_folder.Path(), names), ResultSuccess);
    EXPECT_EQ(names, (std::vector<std::string>{"B", "a", "b", "\xC3\xA4"}));
    EXPECT_EQ(ListFolder(m_folder / "none", names), ResultFileNotFound);
}

TEST_F(FilesTest, DataFolderFollowsTheEnvironment)
{
    const char* const before = std::getenv("XDG_DATA_HOME");
    const std::string kept = before != nullptr ? before : "";
    ::setenv("XDG_DATA_HOME", "/chosen", 1);
    EXPECT_EQ(ApplicationDataFolder(), "/chosen");
    ::setenv("XDG_DATA_HOME", "relative", 1);
    EXPECT_TRUE(ApplicationDataFolder().string().ends_with("/.local/share"))
        << "a relative one is ignored";
    SetApplicationDataFolder("/set");
    EXPECT_EQ(ApplicationDataFolder(), "/set");
    SetApplicationDataFolder({});
    before != nullptr ? ::setenv("XDG_DATA_HOME", kept.c_str(), 1) : ::unsetenv("XDG_DATA_HOME");
}

TEST_F(FilesTest, UniquePathsCountUpBehindTheStem)
{
    UniquePaths unique;
    const auto take = [&](const std::string& name) {
        const std::filesystem::path path = unique.Next(m_folder / name);
        EXPECT_FALSE(PathExists(path)) << path;
        WriteFileBytes(path, {});
        return path.filename().string();
    };
    const std::pair<std::string, std::string> cases[] = {
        {"a.jpg", "a.jpg"},     {"a.jpg", "a(1).jpg"},     {"a.jpg", "a(2).jpg"},
        {"a.b.jpg", "a.b.jpg"}, {"a.b.jpg", "a.b(1).jpg"}, {"plain", "plain"},
        {"plain", "plain(1)"},  {".hidden", ".hidden"},    {".hidden", "(1).hidden"},
        {"end.", "end."},       {"end.", "end(1)."},       {"a(1).jpg", "a(1)(1).jpg"},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(take(name), expected);
    }
    // A number whose file did not come to be is given again; one that somebody took meanwhile is not.
    EXPECT_EQ(unique.Next(m_folder / "a.jpg").filename(), "a(3).jpg");
    EXPECT_EQ(unique.Next(m_folder / "a.jpg").filename(), "a(3).jpg");
    WriteFileBytes(m_folder / "a(3).jpg", {});
    EXPECT_EQ(unique.Next(m_folder / "a.jpg").filename(), "a(4).jpg");
    std::filesystem::create_symlink("nowhere", m_folder / "dangling");
    EXPECT_EQ(unique.Next(m_folder / "dangling").filename(), "dangling(1)");
    // The name that is as long as a file system takes stays within it.
    const std::string longest = std::string(250, 'x') + ".jpeg";
    EXPECT_EQ(take(longest), longest);
    EXPECT_EQ(take(longest), std::string(247, 'x') + "(1).jpeg");
    // An ending that leaves no room for the number is a part of the stem.
    std::string ending = "1.";
    for (int i = 0; i < 126; ++i) {
        ending += "\u0416";
    }
    EXPECT_EQ(take(ending), ending);
    EXPECT_EQ(take(ending), ending.substr(0, 252) + "(1)");
}

TEST_F(FilesTest, ARenameThatSparesReplacesNothing)
{
    WriteFileBytes(m_folder / "part", Bytes("'new'"));
    WriteFileBytes(m_folder / "taken", Bytes("'keep'"));
    std::filesystem::create_symlink("nowhere", m_folder / "dangling");
    for (const char* name : {"taken", "dangling"}) {
        EXPECT_EQ(RenameWithoutReplacing(m_folder / "part", m_folder / name), ResultAlreadyExists);
    }
    EXPECT_EQ(ReadFileBytes(m_folder / "taken"), Bytes("'keep'"));
    EXPECT_EQ(RenameWithoutReplacing(m_folder / "part", m_folder / "free"), ResultSuccess);
    EXPECT_FALSE(PathExists(m_folder / "part"));
    EXPECT_EQ(ReadFileBytes(m_folder / "free"), Bytes("'new'"));
}

TEST_F(FilesTest, WhatIsMadeUnderSudoBelongsToWhoCalledIt)
{
    const auto statusOf = [this](const char* name) {
        struct stat status = {};
        EXPECT_EQ(::stat((m_folder / name).c_str(), &status), 0);
        return status;
    };
    for (const char* name : {"file", "named", "target"}) {
        FileHandle made;
        ASSERT_EQ(made.OpenOrCreate(m_folder / name), ResultSuccess);
    }
    std::filesystem::create_hard_link(m_folder / "named", m_folder / "other name");
    std::filesystem::create_symlink("target", m_folder / "link");
    ::setenv("SUDO_UID", "4321", 1);
    ::setenv("SUDO_GID", "1234", 1);
    for (const char* name : {"file", "named", "link"}) {
        HandToUser(m_folder / name);
    }
    ::unsetenv("SUDO_UID");
    ::unsetenv("SUDO_GID");
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(statusOf("file").st_mode & 0777, 0666 & ~mask);
    EXPECT_EQ(statusOf("named").st_mode & 0777, 0600u) << "another name leads to it";
    EXPECT_EQ(statusOf("target").st_mode & 0777, 0600u);
    if (::geteuid() == 0) {
        EXPECT_EQ(statusOf("file").st_uid, 4321u);
        EXPECT_EQ(statusOf("file").st_gid, 1234u);
        EXPECT_EQ(statusOf("named").st_uid, 0u);
    }
}

}  // namespace
