// Forwarding to real programs: rsyslog, and a service of our own.

#include "common/LogReader.h"
#include "platform/Files.h"
#include "service/output/ForwardOutput.h"
#include "support/ExecArguments.h"
#include "support/LoopbackPorts.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"
#include "support/TestAuthority.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using testing::ServiceProcess;
using testing::TemporaryFolder;
using testing::TestAuthority;
using testing::waitUntil;
using Protocol = ForwardSettings::Protocol;

constexpr std::chrono::seconds kLong{90};

/// rsyslog, unpacked in a folder, writing what it receives to a file.
class Rsyslog {
public:
    Rsyslog(std::string tools, const TemporaryFolder &folder, std::uint16_t port, bool tls)
        : m_tools(std::move(tools)), m_folder(folder.path()) {
        const std::string driver = tls ? " StreamDriver.Name=\"ossl\" StreamDriver.Mode=\"1\" "
                                         "StreamDriver.AuthMode=\"anon\""
                                       : "";
        folder.write(
            "rsyslog.conf",
            "global(workDirectory=\"" + m_folder + "\" maxMessageSize=\"8k\"" +
                (tls ? " defaultNetstreamDriverCAFile=\"" + m_folder +
                           "/authority.pem\" defaultNetstreamDriverCertFile=\"" + m_folder +
                           "/cert.pem\" defaultNetstreamDriverKeyFile=\"" + m_folder + "/key.pem\""
                     : "") +
                ")\nmodule(load=\"imtcp\"" + driver +
                ")\ninput(type=\"imtcp\" address=\"127.0.0.1\" port=\"" + std::to_string(port) +
                "\")\ntemplate(name=\"plain\" type=\"string\" "
                "string=\"%pri% %timereported:::date-rfc3339% %hostname% %app-name% "
                "%procid% %msg%\\n\")\naction(type=\"omfile\" file=\"" +
                m_folder + "/received\" template=\"plain\")\n");
        start();
    }
    ~Rsyslog() { kill(); }
    Rsyslog(const Rsyslog &) = delete;
    Rsyslog &operator=(const Rsyslog &) = delete;

    void start() {
        const std::string libraries = m_tools + "/usr/lib/x86_64-linux-gnu";
        std::vector<std::string> arguments{m_tools + "/usr/sbin/rsyslogd",
                                           "-n",
                                           "-f",
                                           m_folder + "/rsyslog.conf",
                                           "-i",
                                           m_folder + "/pid",
                                           "-M",
                                           libraries + "/rsyslog"};
        std::vector<char *> pointers = testing::pointersTo(arguments);
        m_pid = ::fork();
        if (m_pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::setenv("LD_LIBRARY_PATH", libraries.c_str(), 1);
            ::unlink((m_folder + "/pid").c_str());
            ::execv(pointers[0], pointers.data());
            ::_exit(127);
        }
    }
    void kill() {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    /// The ends of its lines, each once, without what it says of itself. What it was writing when
    /// it was killed has no end: the next line follows at once.
    [[nodiscard]] std::set<std::string> received() const {
        constexpr std::string_view kBegin = "191 2023-11-14T22:13:20";
        std::set<std::string> lines;
        const std::string text = readFile(m_folder + "/received").value_or("");
        for (std::size_t at = 0, end = 0; (end = text.find('\n', at)) != std::string::npos;
             at = end + 1) {
            const std::string line = text.substr(at, end - at);
            const std::size_t begin = line.rfind(kBegin);
            if (begin != std::string::npos) {
                lines.insert(line.substr(begin + kBegin.size()));
            }
        }
        return lines;
    }

private:
    const std::string m_tools;
    const std::string m_folder;
    pid_t m_pid = -1;
};

struct ForwardReceiversTest : ::testing::TestWithParam<Protocol> {
    TemporaryFolder folder;
    TemporaryFolder other;
    TestAuthority authority;
    LogStore store{folder.path()};
    std::unique_ptr<ForwardOutput> output;

    ForwardReceiversTest() {
        // As the service does: TLS writes into connections that are gone.
        std::signal(SIGPIPE, SIG_IGN);
        store.prepare();
        const auto issued = authority.issue();
        other.write("authority.pem", authority.certificate());
        for (const std::string place : {"", "tls/"}) {
            other.write(place + "cert.pem", issued.certificate);
            other.write(place + "key.pem", issued.key);
        }
    }
    ~ForwardReceiversTest() override {
        if (output) {
            output->stop();
        }
    }
    void forwardTo(std::uint16_t port) {
        ForwardSettings settings;
        settings.name = "receiver";
        settings.server = "127.0.0.1";
        settings.serverName = "localhost";
        settings.port = port;
        settings.protocol = GetParam();
        settings.history = true;
        settings.authorityFile = other.path() / "authority.pem";
        output = std::make_unique<ForwardOutput>(store, folder.path() / "outputs", settings);
        output->start();
    }
    /// Numbered events, from `begin` on.
    void put(int begin, int end) {
        std::string lines;
        for (int i = begin; i < end; ++i) {
            lines += "1700000000,Local7.Debug,device,test[7]: number " + std::to_string(i) + "\r\n";
        }
        store.append(lines, 1700000000, false);
    }
    [[nodiscard]] bool isAllSent(std::uint64_t count) const {
        return waitUntil(
            [&] {
                const OutputState state = output->state();
                return state.lagEvents == 0 && state.sent >= count;
            },
            kLong);
    }
};

std::string nameOf(const ::testing::TestParamInfo<Protocol> &tested) {
    return tested.param == Protocol::kTcp ? "tcp" : "tls";
}
INSTANTIATE_TEST_SUITE_P(Each, ForwardReceiversTest,
                         ::testing::Values(Protocol::kTcp, Protocol::kTls), nameOf);

/// It is killed twice meanwhile, with all that it had not written.
TEST_P(ForwardReceiversTest, rsyslogHasAllInTheEnd) {
    const char *tools = std::getenv("QUORBEL_RSYSLOG");
    if (tools == nullptr) {
        GTEST_SKIP() << "no rsyslog";
    }
    constexpr int kCount = 5000;
    const std::uint16_t port = testing::freePort();
    Rsyslog rsyslog(tools, other, port, GetParam() == Protocol::kTls);
    forwardTo(port);
    for (int part = 0; part < 2; ++part) {
        put(part * kCount, (part + 1) * kCount);
        const auto most = static_cast<std::size_t>(part * kCount);
        EXPECT_TRUE(waitUntil([&] { return rsyslog.received().size() > most; }, kLong));
        rsyslog.kill();
        rsyslog.start();
    }
    put(2 * kCount, 3 * kCount);
    EXPECT_TRUE(isAllSent(3 * kCount)) << output->state().problem;
    std::set<std::string> received;
    const auto hasAll = [&] {
        received = rsyslog.received();
        return received.size() >= 3 * kCount;
    };
    EXPECT_TRUE(waitUntil(hasAll, kLong)) << received.size();
    for (int i = 0; i < 3 * kCount; ++i) {
        const std::string rest = " device test 7 number " + std::to_string(i);
        EXPECT_TRUE(received.contains("Z" + rest) || received.contains("+00:00" + rest)) << rest;
    }
}

TEST_P(ForwardReceiversTest, aServiceOfOursStoresTheSameTexts) {
    constexpr int kCount = 20000;
    ServiceProcess::Setup setup;
    setup.library = other.path();
    setup.arguments = {"--port", "0", "--tls-port", "0"};
    const ServiceProcess service(setup);
    ASSERT_TRUE(service.isListening());
    ASSERT_TRUE(waitUntil([&] { return service.tlsPort() != 0; })) << service.journal();
    forwardTo(GetParam() == Protocol::kTls ? service.tlsPort() : service.port());
    put(0, kCount);
    EXPECT_TRUE(isAllSent(kCount)) << output->state().problem;
    std::map<std::string, int> stored;
    const auto count = [&] {
        stored.clear();
        for (const std::string &name : listFolder(other.path())) {
            LogReader::readFile(
                hasExtension(name, "log") ? other.path() / name : "", [&](const LogLine &line) {
                    ++stored[std::string(line.priority) + " " + std::string(line.message)];
                    return true;
                });
        }
        return stored.size();
    };
    EXPECT_TRUE(waitUntil([&] { return count() == kCount; }));
    EXPECT_EQ(stored["Local7.Debug test[7]: number 0"], 1);
    EXPECT_EQ(stored["Local7.Debug test[7]: number 19999"], 1);
}

}  // namespace
}  // namespace quorbel
