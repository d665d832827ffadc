#include "service/ServiceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::ServiceProcess;
using testing::waitUntil;

struct ServiceStartTest : testing::ServiceFixture {
    /// Runs a command line; the status of its end, as wait(2) gives it.
    static int run(const std::string &command) {
        return std::system(command.c_str());  // NOLINT(cert-env33-c): as somebody would type it
    }
    [[nodiscard]] std::string content(const char *name) const {
        return readFile(folder.path() / name).value_or("(no file)");
    }
    /// Starts a program with a folder of its own and no limit to its core dumps, waits until it has
    /// written something that is no warning, and ends it as a defect would. Whether it left a core
    /// dump.
    [[nodiscard]] bool dumpsCore(const std::string &program) const {
        const std::string script = "ulimit -c unlimited; cd " + folder.path().string() +
                                   "; export QUORBEL_LIBRARY=$PWD/library; exec " + program +
                                   " 2>said";
        const pid_t id = fork();
        if (id == 0) {
            execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
            _exit(127);
        }
        const bool runs =
            waitUntil([this] { return content("said").find("Listening") != std::string::npos; });
        EXPECT_TRUE(runs) << content("said");
        ::kill(id, SIGABRT);
        int status = 0;
        waitpid(id, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
        std::filesystem::remove(folder.path() / "said");
        return WCOREDUMP(status);
    }
};

TEST_F(ServiceStartTest, RefusesAFolderInWhichAnotherServiceWorks) {
    auto service = start();
    ServiceProcess other({folder.path(), "", {"--port", "0"}});
    EXPECT_FALSE(other.isListening());
    EXPECT_EQ(other.waitForEnd(), 1);
    EXPECT_EQ(other.journal(),
              "<3>Another service is already using " + folder.path().string() + "\n");
    // Nothing is left of one that was ended in the middle.
    service->kill();
    EXPECT_EQ(start()->terminate(), 0);
}

TEST_F(ServiceStartTest, MakesItsFolder) {
    ServiceProcess service({folder.path() / "new" / "library", "", {"--port", "0"}});
    EXPECT_TRUE(service.isListening());
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "new" / "library"));
    EXPECT_THAT(service.journal(), Not(HasSubstr("cannot be")));
}

TEST_F(ServiceStartTest, SaysHowItIsCalledAndWhichItIs) {
    const std::string out = (folder.path() / "out").string();
    const std::string err = (folder.path() / "err").string();
    const std::string end = " >" + out + " 2>" + err;
    EXPECT_EQ(run(QUORBEL_SRV_PATH " --help" + end), 0);
    EXPECT_THAT(content("out"), ::testing::StartsWith("Usage: QuorbelSrv [--port NUMBER]"));
    EXPECT_EQ(content("err"), "");
    EXPECT_EQ(run(QUORBEL_SRV_PATH " --version" + end), 0);
    EXPECT_EQ(content("out"), "QuorbelSrv " QUORBEL_VERSION "\n");
    EXPECT_EQ(content("err"), "");
    EXPECT_NE(run(QUORBEL_SRV_PATH " --help --version" + end), 0);
    EXPECT_EQ(content("out"), "");
}

// It would turn without a pause, and be deaf.
TEST_F(ServiceStartTest, EndsInOrderWhenItsLoopFails) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' libraries must be loaded before any other";
#endif
    const testing::TemporaryFolder other;
    ServiceProcess::Setup setup;
    setup.environment = {"LD_PRELOAD=" QUORBEL_LOOP_FAULT_PATH,
                         "QUORBEL_LOOP_FAULT=" + (other.path() / "fault").string()};
    const auto service = start(setup);
    const UniqueFd sender = testing::connectTo(service->port(), SOCK_DGRAM);
    testing::sendTo(sender, "<13>before");
    ASSERT_TRUE(waitForStored(1));
    other.write("fault", "");
    testing::sendTo(sender, "<13>last");
    EXPECT_EQ(service->waitForEnd(), 1);
    EXPECT_EQ(stored().size(), 2U);
    const std::string journal = service->journal();
    EXPECT_THAT(journal, HasSubstr("<3>The event loop has failed, and the service stops: Bad file "
                                   "descriptor\n"));
    EXPECT_THAT(journal, HasSubstr("<6>Received 2, malformed 0, stored 2, "));
}

// It would hold the mail server's password.
TEST_F(ServiceStartTest, LeavesNoCoreDump) {
    if (!dumpsCore("sh -c 'echo Listening >&2; exec sleep 60'")) {
        GTEST_SKIP() << "this system keeps no core dumps";
    }
    EXPECT_FALSE(dumpsCore(QUORBEL_SRV_PATH " --port 0"));
}

}  // namespace
}  // namespace quorbel
