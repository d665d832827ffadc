#include "platform/ProcessTable.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

namespace quorbel {
namespace {

using testing::TemporaryFolder;
using testing::waitUntil;

/// A process that waits to be ended, with a short name of its own or a program of its own.
class Child {
public:
    Child(const std::string &shortName, const std::string &program,
          const std::string &firstArgument)
        : m_pid(::fork()) {
        if (m_pid != 0) {
            return;
        }
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::prctl(PR_SET_NAME, shortName.c_str());
        if (!program.empty()) {
            ::execl(program.c_str(), firstArgument.c_str(), "600", nullptr);
            ::_exit(1);
        }
        while (true) {
            ::pause();
        }
    }
    explicit Child(const std::string &shortName) : Child(shortName, {}, {}) {}
    ~Child() {
        kill();
        ::waitpid(m_pid, nullptr, 0);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    void kill() const { ::kill(m_pid, SIGKILL); }

    /// Returns when it has ended, but leaves its entry in the process table.
    void awaitEnd() const {
        siginfo_t info{};
        ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT);
    }

private:
    pid_t m_pid;
};

bool appears(std::string_view name) {
    return waitUntil([name] { return isProcessRunning(name); });
}

/// A copy of a program that does nothing for a while, under another name.
class NamedProgram {
public:
    explicit NamedProgram(const std::string &name) : m_path(m_folder.path() / name) {
        std::filesystem::copy_file("/bin/sleep", m_path);
    }
    [[nodiscard]] std::string path() const { return m_path.string(); }

private:
    TemporaryFolder m_folder;
    std::filesystem::path m_path;
};

TEST(ProcessTableTest, FindsAProcessByItsExactName) {
    EXPECT_FALSE(isProcessRunning("qbl t) Z 1"));
    const Child child("qbl t) Z 1");
    EXPECT_TRUE(appears("qbl t) Z 1"));
    EXPECT_FALSE(isProcessRunning("qbl t) Z"));
    EXPECT_FALSE(isProcessRunning("qbl t) Z 12"));
    EXPECT_FALSE(isProcessRunning("QBL t) Z 1"));
    EXPECT_FALSE(isProcessRunning("bl t) Z 1"));
}

TEST(ProcessTableTest, FindsANameThatFillsWhatTheKernelKeeps) {
    const Child child("qbl-fifteen-chr");
    EXPECT_TRUE(appears("qbl-fifteen-chr"));
    EXPECT_FALSE(isProcessRunning("qbl-fifteen-ch"));
    EXPECT_FALSE(isProcessRunning("qbl-fifteen-chr1"));
}

TEST(ProcessTableTest, TakesTheSixteenthCharacterFromTheCommandLine) {
    const NamedProgram program("qbl-sixteen-char");
    const Child child("starting", program.path(), program.path());
    EXPECT_TRUE(appears("qbl-sixteen-char"));
    EXPECT_FALSE(isProcessRunning("qbl-sixteen-cha"));
    EXPECT_FALSE(isProcessRunning("qbl-sixteen-chaX"));
}

TEST(ProcessTableTest, CutsLongerNamesAfterSixteenCharacters) {
    const NamedProgram program("qbl-a-much-longer-name");
    const Child child("starting", program.path(), program.path());
    EXPECT_TRUE(appears("qbl-a-much-longe"));
    EXPECT_FALSE(isProcessRunning("qbl-a-much-long"));
    EXPECT_FALSE(isProcessRunning("qbl-a-much-longer"));
    EXPECT_FALSE(isProcessRunning("qbl-a-much-longer-name"));
}

TEST(ProcessTableTest, IgnoresACommandLineThatDoesNotContinueTheName) {
    const NamedProgram program("qbl-other-argument-0");
    const Child child("starting", program.path(), "/bin/qbl-other-program");
    EXPECT_TRUE(appears("qbl-other-argum"));
    EXPECT_FALSE(isProcessRunning("qbl-other-argume"));
    EXPECT_FALSE(isProcessRunning("qbl-other-progra"));
}

TEST(ProcessTableTest, AnEndedProcessDoesNotRun) {
    const Child child("qbl-ended");
    ASSERT_TRUE(appears("qbl-ended"));
    child.kill();
    child.awaitEnd();
    EXPECT_FALSE(isProcessRunning("qbl-ended"));
}

}  // namespace
}  // namespace quorbel
