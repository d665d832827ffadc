#include "core/SavedFilterStore.h"
#include "platform/Files.h"
#include "platform/UniqueFd.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <string>

namespace quorbel {
namespace {

SavedFilter withText(const std::string &name, const std::string &text) {
    SavedFilter filter;
    filter.name = name;
    filter.query.texts.push_back({{text, false, false}, false});
    return filter;
}

class SavedFilterStoreTest : public ::testing::Test {
protected:
    std::string names() {
        std::string all;
        EXPECT_EQ(m_store.load(), "");
        for (const SavedFilter &filter : m_store.filters()) {
            all += filter.name + ";";
        }
        return all;
    }

    testing::TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.path() / "config" / "QuorbelFilters.txt";
    SavedFilterStore m_store{m_file};
};

TEST_F(SavedFilterStoreTest, WritesNothingBeforeAFilterIsKept) {
    EXPECT_EQ(m_store.load(), "");
    EXPECT_TRUE(m_store.filters().empty());
    EXPECT_FALSE(isThere(m_file.parent_path()));
    EXPECT_EQ(m_store.remove("A"), "");
    EXPECT_FALSE(isThere(m_file));
}

TEST_F(SavedFilterStoreTest, KeepsFiltersForTheNextStart) {
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    EXPECT_EQ(m_store.keep(withText("B", "b")), "");
    EXPECT_EQ(m_store.keep(withText("A", "c")), "");
    EXPECT_EQ(m_store.mark("B", MarkColour::kTeal), "");
    SavedFilterStore next(m_file);
    EXPECT_EQ(next.load(), "");
    SavedFilter marked = withText("B", "b");
    marked.mark = MarkColour::kTeal;
    EXPECT_EQ(next.filters(), (std::vector{withText("A", "c"), marked}));
    struct stat status {};
    ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(SavedFilterStoreTest, RenamesAndRemoves) {
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    EXPECT_EQ(m_store.keep(withText("B", "b")), "");
    EXPECT_EQ(m_store.rename("A", "B"), "There is a filter \"B\" already");
    EXPECT_EQ(m_store.rename("A", "A"), "");
    EXPECT_EQ(m_store.rename("A", "C"), "");
    EXPECT_EQ(m_store.rename("A", "D"), "There is no filter \"A\" any more");
    EXPECT_EQ(m_store.mark("A", {}), "There is no filter \"A\" any more");
    EXPECT_EQ(names(), "C;B;");
    EXPECT_EQ(m_store.remove("C"), "");
    EXPECT_EQ(names(), "B;");
}

TEST_F(SavedFilterStoreTest, AddsWhatIsNotThereYet) {
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    SavedFilter other = withText("A", "b");
    other.group = "Group";
    EXPECT_EQ(m_store.add({withText("A", "a"), other, other, withText("B", "b")}), "");
    EXPECT_EQ(names(), "A;A (2);A (3);B;");
    EXPECT_EQ(m_store.filters()[1].group, "");
}

TEST_F(SavedFilterStoreTest, ChangesWhatOtherWindowsHaveWritten) {
    SavedFilterStore other(m_file);
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    EXPECT_EQ(other.keep(withText("B", "b")), "");
    EXPECT_EQ(m_store.keep(withText("C", "c")), "");
    EXPECT_EQ(other.remove("A"), "");
    EXPECT_EQ(names(), "B;C;");
}

TEST_F(SavedFilterStoreTest, WaitsForNobody) {
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    const UniqueFd folder(::open(m_file.parent_path().c_str(), O_RDONLY | O_DIRECTORY));
    ASSERT_EQ(::flock(folder.get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(m_store.keep(withText("B", "b")),
              "Another window is changing its filters. Try again");
    EXPECT_EQ(names(), "A;");
}

TEST_F(SavedFilterStoreTest, LeavesAFileAloneThatItCannotRead) {
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    const std::string text = "Quorbel filters 1\n\nfilter A\nsound loud\n";
    m_folder.write("config/QuorbelFilters.txt", text);
    const std::string problem = m_file.string() + ", line 4: \"sound\" is not known";
    EXPECT_EQ(m_store.load(), problem);
    EXPECT_EQ(m_store.keep(withText("B", "b")), problem);
    EXPECT_EQ(m_store.remove("A"), problem);
    EXPECT_EQ(readFile(m_file), text);
    ASSERT_EQ(m_store.filters().size(), 1U);  // as before
    m_folder.write("config/QuorbelFilters.txt", std::string(SavedFilterLimits::kBytes + 1, '#'));
    EXPECT_EQ(m_store.load(), m_file.string() + " is too large for a file of filters");
    std::filesystem::remove(m_file);
    std::filesystem::create_directory(m_file);
    EXPECT_EQ(m_store.load(), m_file.string() + " could not be read");
}

TEST_F(SavedFilterStoreTest, RefusesWhatItCouldNotReadAgain) {
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    EXPECT_EQ(m_store.keep(withText("", "a")),
              "The filters cannot be kept: the value of \"filter\" cannot be read");
    EXPECT_EQ(m_store.keep(withText(" B", "a")),
              "The filters cannot be kept: the name has characters that are not seen");
    SavedFilter empty;
    empty.name = "B";
    EXPECT_EQ(m_store.keep(empty), "The filters cannot be kept: the filter \"B\" has no condition");
    EXPECT_EQ(m_store.rename("A", std::string(300, 'x')),
              "The filters cannot be kept: the name is too long");
    EXPECT_EQ(names(), "A;");
}

TEST_F(SavedFilterStoreTest, KeepsALinkToTheFile) {
    const auto target = m_folder.write("elsewhere/filters", "Quorbel filters 1\n");
    std::filesystem::create_directory(m_file.parent_path());
    std::filesystem::create_symlink(target, m_file);
    EXPECT_EQ(m_store.keep(withText("A", "a")), "");
    EXPECT_TRUE(std::filesystem::is_symlink(m_file));
    EXPECT_EQ(readFilterFile(target).filters.size(), 1U);
}

TEST_F(SavedFilterStoreTest, SaysWhyItCannotWrite) {
    m_folder.write("config", "no folder");
    EXPECT_EQ(m_store.keep(withText("A", "a")),
              m_file.parent_path().string() + " cannot be used: Not a directory");
    EXPECT_EQ(writeFilterFile(m_folder.path() / "none" / "x.txt", {}),
              (m_folder.path() / "none" / "x.txt").string() +
                  " could not be written: No such file or directory");
}

}  // namespace
}  // namespace quorbel
