#include "platform/Files.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>

namespace {

bool foldersCanBeSynced = true;

}  // namespace

/// In place of the system's.
extern "C" int fsync(int fd) {
    struct stat status {};
    if (!foldersCanBeSynced && ::fstat(fd, &status) == 0 && S_ISDIR(status.st_mode)) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, fd));
}

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using testing::ScopedVariable;
using testing::TemporaryFolder;

TEST(FilesTest, LibraryFolderFollowsTheEnvironment) {
    const ScopedVariable none("QUORBEL_LIBRARY", std::nullopt);
    EXPECT_EQ(libraryFolder(), "/Library/Quorbel");
    {
        const ScopedVariable other("QUORBEL_LIBRARY", "/somewhere/else");
        EXPECT_EQ(libraryFolder(), "/somewhere/else");
    }
    const ScopedVariable empty("QUORBEL_LIBRARY", "");
    EXPECT_EQ(libraryFolder(), "/Library/Quorbel");
}

TEST(FilesTest, ListsInByteOrder) {
    const TemporaryFolder folder;
    for (const char *name : {"b", "a", "é", "B", "2024-01-02.log", "2024-01-01.log", ".hidden"}) {
        folder.write(name, "");
    }
    std::filesystem::create_directory(folder.path() / "c");
    EXPECT_THAT(listFolder(folder.path()), ElementsAre(".hidden", "2024-01-01.log",
                                                       "2024-01-02.log", "B", "a", "b", "c", "é"));
}

TEST(FilesTest, ListsNothingWhereThereIsNoFolder) {
    const TemporaryFolder folder;
    EXPECT_THAT(listFolder(folder.path() / "absent"), IsEmpty());
    EXPECT_THAT(listFolder(folder.write("file", "x")), IsEmpty());
}

TEST(FilesTest, KnowsWhatIsThere) {
    const TemporaryFolder folder;
    folder.write("file", "");
    std::filesystem::create_symlink("nowhere", folder.path() / "link");
    EXPECT_TRUE(isThere(folder.path()));
    EXPECT_TRUE(isThere(folder.path() / "file"));
    EXPECT_TRUE(isThere(folder.path() / "link"));
    EXPECT_FALSE(isThere(folder.path() / "nowhere"));
}

TEST(FilesTest, KnowsExtensions) {
    EXPECT_TRUE(hasExtension("x.log", "log"));
    EXPECT_TRUE(hasExtension("a.b.log", "log"));
    EXPECT_TRUE(hasExtension("..log", "log"));
    EXPECT_FALSE(hasExtension("system.LOG", "log"));
    EXPECT_FALSE(hasExtension("old.log.1", "log"));
    EXPECT_FALSE(hasExtension(".log", "log"));
    EXPECT_FALSE(hasExtension("log", "log"));
    EXPECT_FALSE(hasExtension("x.logs", "log"));
    EXPECT_FALSE(hasExtension("x.", "log"));
    EXPECT_FALSE(hasExtension("x.", ""));
    EXPECT_FALSE(hasExtension("x", ""));
    EXPECT_FALSE(hasExtension("", "log"));
}

TEST(FilesTest, ReadsAWholeFile) {
    const TemporaryFolder folder;
    EXPECT_THAT(readFile(folder.write("empty", "")), Optional(std::string()));
    for (const std::size_t size : {1U, 4095U, 4096U, 4097U, 1000000U}) {
        std::string bytes(size, '\0');
        bytes.back() = 'z';
        EXPECT_TRUE(readFile(folder.write("file", bytes)) == bytes) << size;
    }
}

TEST(FilesTest, ReadsAFileThatDoesNotTellItsSize) {
    const std::optional<std::string> status = readFile("/proc/self/status");
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->starts_with("Name:"));
}

TEST(FilesTest, ReadsNothingButRegularFiles) {
    const TemporaryFolder folder;
    const std::filesystem::path pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(readFile(pipe), std::nullopt);  // and does not wait for a writer
    EXPECT_EQ(readFile(folder.path()), std::nullopt);
    EXPECT_EQ(readFile("/dev/null"), std::nullopt);
    EXPECT_EQ(readFile(folder.path() / "absent"), std::nullopt);
    EXPECT_EQ(readFile(""), std::nullopt);
}

TEST(FilesTest, ReplacesAFile) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "Quorbel.ini";
    const ::mode_t mask = ::umask(0077);
    EXPECT_TRUE(replaceFile(file, "first", 0640));
    EXPECT_TRUE(replaceFile(file, std::string("se\0cond", 7), 0604));
    ::umask(mask);
    EXPECT_THAT(readFile(file), Optional(std::string("se\0cond", 7)));
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0604U);
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("Quorbel.ini"));
}

TEST(FilesTest, AReaderKeepsTheOldFileWhenItIsReplaced) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.write("file", "old text");
    std::ifstream reader(file);
    EXPECT_TRUE(replaceFile(file, "new", 0600));
    std::string line;
    std::getline(reader, line);
    EXPECT_EQ(line, "old text");
}

TEST(FilesTest, LeavesNothingBehindWhenItCannotReplace) {
    const TemporaryFolder folder;
    folder.write("target/kept", "x");  // a folder does not give way to a file
    EXPECT_FALSE(replaceFile(folder.path() / "target", "bytes", 0600));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("target"));
    EXPECT_THAT(readFile(folder.path() / "target" / "kept"), Optional(std::string("x")));
    EXPECT_FALSE(replaceFile(folder.path() / "absent" / "file", "bytes", 0600));
    EXPECT_EQ(errno, ENOENT);
}

// Whoever is told otherwise would go on with what is no longer in the file.
TEST(FilesTest, AFileIsReplacedAlthoughItsFolderCannotBeSynced) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.write("file", "old");
    foldersCanBeSynced = false;
    const bool replaced = replaceFile(file, "new", 0600);
    foldersCanBeSynced = true;
    EXPECT_TRUE(replaced);
    EXPECT_THAT(readFile(file), Optional(std::string("new")));
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("file"));
}

TEST(FilesTest, ReplacesAFileInTheWorkingFolder) {
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_TRUE(replaceFile("plain", "bytes", 0600));
    std::filesystem::current_path(before);
    EXPECT_THAT(readFile(folder.path() / "plain"), Optional(std::string("bytes")));
}

}  // namespace
}  // namespace quorbel
