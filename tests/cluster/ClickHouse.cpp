#include "cluster/ClickHouse.h"

#include "platform/Files.h"
#include "support/ExecArguments.h"
#include "support/LoopbackPorts.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <utility>

namespace quorbel::testing {

namespace {

std::string unpacked(const std::string &name) {
    return std::string(QUORBEL_CLICKHOUSE) + name;
}

/// Where the package's libraries are, on whatever processor.
std::string libraryPath() {
    std::string path;
    for (const char *folder : {"/usr/lib", "/lib"}) {
        for (const auto &entry : std::filesystem::directory_iterator(unpacked(folder))) {
            path += (path.empty() ? "" : ":") + entry.path().string();
        }
    }
    return path;
}

std::vector<std::string> environment() {
    return {"LD_LIBRARY_PATH=" + libraryPath(), "TZ=UTC", "HOME=/nonexistent"};
}

/// Runs a program of the package with its input and output in files; dies with this thread.
pid_t spawn(std::vector<std::string> words, const std::filesystem::path &input,
            const std::filesystem::path &output) {
    std::vector<std::string> variables = environment();
    const std::vector<char *> arguments = pointersTo(words);
    const std::vector<char *> surroundings = pointersTo(variables);
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int in = open(input.c_str(), O_RDONLY);
    const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(out, STDERR_FILENO);
    execve(arguments[0], arguments.data(), surroundings.data());
    _exit(127);
}

std::string element(const std::string &name, const std::string &content) {
    return '<' + name + '>' + content + "</" + name + ">\n";
}

}  // namespace

bool ClickHouse::isThere() {
    return std::filesystem::exists(unpacked("/.complete"));
}

ClickHouse::ClickHouse(std::filesystem::path folder)
    : m_folder(std::move(folder)),
      m_httpPort(freePort()),
      m_httpsPort(freePort()),
      m_tcpPort(freePort()) {}

ClickHouse::~ClickHouse() {
    kill();
}

std::string ClickHouse::address() const {
    return "http://127.0.0.1:" + std::to_string(m_httpPort);
}

ClusterConnection ClickHouse::connection() const {
    return {.servers = {address()},
            .user = "quorbel",
            .passwordFile = (m_folder / "password").string(),
            .authorityFile = ""};
}

void ClickHouse::writeConfiguration() const {
    std::string shards;
    for (const std::uint16_t port : m_shards) {
        shards += element("shard", element("replica", element("host", "127.0.0.1") +
                                                          element("port", std::to_string(port))));
    }
    std::ofstream(m_folder / "server.xml") << element(
        "yandex", element("logger", element("level", "warning") + element("console", "1")) +
                      element("listen_host", "127.0.0.1") +
                      element("http_port", std::to_string(m_httpPort)) +
                      element("tcp_port", std::to_string(m_tcpPort)) + tlsConfiguration() +
                      element("path", m_folder / "data/") + element("tmp_path", m_folder / "tmp/") +
                      element("mark_cache_size", "67108864") + element("timezone", "UTC") +
                      element("users_config", "users.xml") + element("default_profile", "default") +
                      element("default_database", "default") +
                      element("remote_servers", element("quorbel", shards)));
    const auto user = [](const std::string &name, const std::string &password) {
        return element(name, element("password", password) +
                                 element("networks", element("ip", "127.0.0.1")) +
                                 element("profile", "default") + element("quota", "default"));
    };
    std::ofstream(m_folder / "users.xml")
        << element("yandex", element("profiles", element("default", "")) +
                                 element("quotas", element("default", "")) +
                                 element("users", user("default", "") + user("quorbel", "secret")));
    std::ofstream(m_folder / "password") << "secret\n";
}

std::string ClickHouse::tlsConfiguration() const {
    if (!m_identity) {
        return "";
    }
    const auto certificate = m_folder / "server.pem";
    const auto key = m_folder / "key.pem";
    std::ofstream(certificate) << m_identity->certificate;
    std::ofstream(key) << m_identity->key;
    return element("https_port", std::to_string(m_httpsPort)) +
           element("openSSL", element("server", element("certificateFile", certificate) +
                                                    element("privateKeyFile", key) +
                                                    element("verificationMode", "none") +
                                                    element("loadDefaultCAFile", "false")));
}

bool ClickHouse::start() {
    std::filesystem::create_directories(m_folder);
    writeConfiguration();
    m_pid = spawn({unpacked("/usr/sbin/clickhouse-server"),
                   "--config-file=" + (m_folder / "server.xml").string()},
                  "/dev/null", m_folder / "log");
    return waitUntil([this] { return ask("SELECT 1") == "1"; });
}

void ClickHouse::kill() {
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
        m_pid = -1;
    }
}

void ClickHouse::signal(int number) const {
    ::kill(m_pid, number);
}

double ClickHouse::processorSeconds() const {
    std::ifstream stat("/proc/" + std::to_string(m_pid) + "/stat");
    std::string field;
    constexpr int kUserTime = 14;  // proc(5)
    for (int i = 1; i < kUserTime; ++i) {
        stat >> field;
    }
    double user = 0;
    double system = 0;
    stat >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

std::string askCluster(const ClusterConnection &connection, const std::string &sql) {
    static const std::atomic<bool> stop = false;
    std::string answer;
    const std::string problem = ClusterClient(connection)
                                    .query(
                                        sql,
                                        [&answer](std::string_view bytes) {
                                            answer += bytes;
                                            return true;
                                        },
                                        stop);
    return !problem.empty()         ? "! " + problem
           : answer.ends_with('\n') ? answer.substr(0, answer.size() - 1)
                                    : answer;
}

std::string ClickHouse::ask(const std::string &sql) const {
    return askCluster(connection(), sql);
}

std::string ClickHouse::runClient(const std::filesystem::path &input,
                                  std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {unpacked("/usr/bin/clickhouse-client"), "--host",
                                         "127.0.0.1", "--port", std::to_string(m_tcpPort)});
    const std::filesystem::path output = m_folder / "client";
    std::filesystem::remove(output);
    const pid_t child = spawn(arguments, input, output);
    int status = 0;
    waitpid(child, &status, 0);
    return readFile(output).value_or("?") + (status == 0 ? "" : "! " + std::to_string(status));
}

}  // namespace quorbel::testing
