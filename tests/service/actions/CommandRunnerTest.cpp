#include "platform/Files.h"
#include "service/actions/CommandRunner.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace quorbel {
namespace {

using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::TemporaryFolder;
using testing::waitUntil;

struct CommandRunnerTest : ::testing::Test {
    CommandRunnerTest() { ::testing::internal::CaptureStderr(); }
    ~CommandRunnerTest() override {
        runner.reset();
        // Nothing is left, and nothing is left unreaped.
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
        if (!journalTaken) {
            ::testing::internal::GetCapturedStderr();
        }
    }

    void start(CommandRunner::Limits limits = {}) { runner.emplace(limits); }
    bool run(std::string program, std::vector<std::string> arguments,
             Environment environment = {"PATH=/usr/bin:/bin"}) {
        return runner->submit(
            {"name", std::move(program), std::move(arguments), std::move(environment), {}});
    }
    bool shell(const std::string &script) { return run("/bin/sh", {"-c", script}); }
    [[nodiscard]] std::string path(const std::string &name) const {
        return (folder.path() / name).string();
    }
    [[nodiscard]] std::string content(const std::string &name) const {
        return readFile(path(name)).value_or("");
    }
    [[nodiscard]] bool waitFor(const std::string &name, const std::string &text) const {
        return waitUntil([&] { return content(name) == text; });
    }
    /// What was said, once everything has ended.
    std::string journal() {
        runner.reset();
        journalTaken = true;
        return ::testing::internal::GetCapturedStderr();
    }

    TemporaryFolder folder;
    std::optional<CommandRunner> runner;
    bool journalTaken = false;
};

TEST_F(CommandRunnerTest, GivesAProgramItsArgumentsAndItsEnvironmentOnly) {
    ASSERT_EQ(setenv("QUORBEL_LEAKED", "x", 1), 0);
    folder.write("tool with blank",
                 "#!/bin/sh\nprintf '[%s]' \"$0\" \"$@\" > \"$OUT\"\nenv | sort >> \"$OUT\"\n");
    ASSERT_EQ(chmod(path("tool with blank").c_str(), 0755), 0);
    start();
    EXPECT_TRUE(run(path("tool with blank"), {"a b", "", "$HOME", "\xC3\xA4"},
                    {"OUT=" + path("out"), "PATH=/usr/bin:/bin", "QUORBEL_MESSAGE=x\ny"}));
    EXPECT_TRUE(waitFor("out", "[" + path("tool with blank") +
                                   "][a b][][$HOME][\xC3\xA4]OUT=" + path("out") +
                                   "\nPATH=/usr/bin:/bin\nPWD=/\nQUORBEL_MESSAGE=x\ny\n"))
        << content("out");
    unsetenv("QUORBEL_LEAKED");
    runner->stop();
    EXPECT_EQ(runner->started(), 1U);
    EXPECT_FALSE(run("true", {}));
    EXPECT_EQ(runner->notStarted(), 1U);
    EXPECT_EQ(journal(), "");
}

TEST_F(CommandRunnerTest, LeavesNothingOfTheServiceToAProgram) {
    const UniqueFd inherited(dup(STDOUT_FILENO));
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    start();
    // As the service does, for all of its threads.
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::signal(SIGPIPE, SIG_IGN);
    shell(
        "{ ls /proc/self/fd | wc -l; readlink /proc/self/fd/0; pwd; "
        "grep -E 'Sig(Blk|Ign):' /proc/self/status; cut -d' ' -f6 /proc/$$/stat; echo $$; } > '" +
        path("out") + "'; mv '" + path("out") + "' '" + path("done") + "'");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(waitUntil([this] { return !content("done").empty(); }));
    std::signal(SIGPIPE, SIG_DFL);
    const std::string text = content("done");
    // ls itself has the folder open.
    EXPECT_THAT(text, ::testing::StartsWith("4\n/dev/null\n/\n"));
    EXPECT_THAT(text, HasSubstr("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"));
    const std::string ends = text.substr(text.find("SigIgn"));
    const std::size_t session = ends.find('\n') + 1;
    const std::size_t id = ends.find('\n', session) + 1;
    EXPECT_EQ(ends.substr(session, id - session), ends.substr(id));
}

TEST_F(CommandRunnerTest, FindsProgramsInTheUsualFolders) {
    start();
    EXPECT_TRUE(run("touch", {path("touched")}));
    EXPECT_TRUE(waitUntil([this] { return readFile(path("touched")).has_value(); }));
}

TEST_F(CommandRunnerTest, SaysHowCommandsEnd) {
    struct Case {
        const char *program;
        const char *script;
        const char *said;
    };
    constexpr Case kCases[] = {
        {"/bin/sh", "exit 0", ""},
        {"/bin/sh", "exit 3", "<4>Action \"name\": the command ended with status 3\n"},
        {"/bin/sh", "kill -9 $$", "<4>Action \"name\": the command was killed by signal 9\n"},
        {"/bin/sh", "echo one; echo two >&2; printf 'th\\tree\\033[0m'",
         "<6>Action \"name\": one\n<6>Action \"name\": two\n<6>Action \"name\": th ree [0m\n"},
        {"/nonexistent/x", "",
         "<4>Action \"name\": /nonexistent/x cannot be run: No such file or directory\n"},
        {"no-such-program", "",
         "<4>Action \"name\": no-such-program cannot be run: No such file or directory\n"},
        {"/etc/passwd", "", "<4>Action \"name\": /etc/passwd cannot be run: Permission denied\n"},
        {"/bin", "", "<4>Action \"name\": /bin cannot be run: Permission denied\n"},
    };
    std::string expected;
    start();
    for (const Case &c : kCases) {
        const auto ended = [this] { return runner->started() + runner->notStarted(); };
        const std::uint64_t before = ended();
        ASSERT_TRUE(run(c.program, {"-c", c.script}));
        ASSERT_TRUE(waitUntil([&] { return ended() == before + 1; }));
        expected += c.said;
        // One after the other, so that the lines are in order.
        runner.reset();
        start();
    }
    EXPECT_EQ(journal(), expected);
}

TEST_F(CommandRunnerTest, BoundsWhatGoesToTheJournal) {
    start();
    shell("head -c 1000000 /dev/zero | tr '\\0' x");
    ASSERT_TRUE(waitUntil([this] { return runner->started() == 1; }));
    const std::string text = journal();
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(text, 'x')), CommandRunner::kMostOutput);
    EXPECT_THAT(text, HasSubstr("the rest of the command's output is left out"));
}

TEST_F(CommandRunnerTest, EndsWhatTakesTooLong) {
    start({milliseconds(3000), milliseconds(5000), milliseconds(5000)});
    // The one ends by itself when asked to; the other, and its child, must be killed.
    shell("trap 'echo ended > \"" + path("polite") +
          "\"; exit 0' TERM; while :; do sleep 0.01; done");
    shell("trap '' TERM; sleep 1000 & echo $! > '" + path("child") +
          "'; while :; do sleep 0.01; done");
    EXPECT_TRUE(waitFor("polite", "ended\n"));
    ASSERT_TRUE(waitUntil([this] { return content("child").ends_with('\n'); }));
    const pid_t child = std::atoi(content("child").c_str());
    // It is no child of this process, so it is reaped by whoever inherits it.
    EXPECT_TRUE(waitUntil([&] {
        const std::string state = readFile("/proc/" + std::to_string(child) + "/stat").value_or("");
        return state.empty() || state.find(") Z ") != std::string::npos;
    }));
    const std::string text = journal();
    constexpr std::string_view kSaid = "the command took too long and was stopped";
    EXPECT_NE(text.find(kSaid), text.rfind(kSaid));
}

TEST_F(CommandRunnerTest, DoesNotWaitForWhatACommandLeavesBehind) {
    start();
    shell("sleep 1000 & echo $! > '" + path("child") + "'");
    shell("echo done > '" + path("out") + "'");
    ASSERT_TRUE(waitFor("out", "done\n"));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(journal(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    kill(std::atoi(content("child").c_str()), SIGKILL);
}

TEST_F(CommandRunnerTest, AProcessIsReapedWhenItHasEnded) {
    const auto child = ChildProcess::start("sleep", {"1000"}, {});
    ASSERT_TRUE(child);
    EXPECT_FALSE(child->tryReap());
    child->signal(SIGKILL);
    EXPECT_TRUE(waitUntil([&] { return child->tryReap(); }));
}

TEST_F(CommandRunnerTest, RunsAFewAtATimeAndDropsWhatIsTooMuch) {
    start({milliseconds(60'000), milliseconds(5000), milliseconds(0)});
    for (std::size_t i = 0; i < CommandRunner::kMostAtOnce; ++i) {
        ASSERT_TRUE(shell("sleep 1000"));
    }
    ASSERT_TRUE(waitUntil([this] { return runner->started() == CommandRunner::kMostAtOnce; }));
    for (std::size_t i = 0; i < CommandRunner::kMostWaiting; ++i) {
        ASSERT_TRUE(shell("sleep 1000"));
    }
    const auto told = std::make_shared<LastResult>();
    EXPECT_FALSE(runner->submit({"name", "/bin/true", {}, {}, told}));
    EXPECT_EQ(told->summary().failed, 1U);
    EXPECT_EQ(told->summary().problem, "Too many commands are waiting");
    EXPECT_EQ(runner->started(), CommandRunner::kMostAtOnce);
    EXPECT_EQ(runner->notStarted(), 1U);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(
        journal(),
        AllOf(HasSubstr("<4>The service is stopping; commands of actions that were not run: 256\n"),
              HasSubstr("the command was stopped because the service is stopping"),
              Not(HasSubstr("could not be stopped"))));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST_F(CommandRunnerTest, LetsShortCommandsEndWithTheService) {
    start();
    shell("sleep 0.2; echo ended > '" + path("out") + "'");
    ASSERT_TRUE(waitUntil([this] { return runner->started() == 1; }));
    EXPECT_EQ(journal(), "");
    EXPECT_EQ(content("out"), "ended\n");
}

}  // namespace
}  // namespace quorbel
