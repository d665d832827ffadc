#include "common/ServiceConfiguration.h"

#include "common/ConfigurationText.h"
#include "common/ConfigurationValues.h"
#include "platform/UniqueFd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20U;
constexpr std::size_t kLongestOutputName = 32;

struct Key {
    std::string_view name;
    std::function<Complaint(std::string_view value)> take;
};

void addFilterKeys(std::vector<Key> &keys, OutputFilter &filter) {
    keys.push_back({"Hosts", [&](auto value) { return filter.setHosts(value); }});
    keys.push_back({"Facility", [&](auto value) { return filter.setFacility(value); }});
    keys.push_back({"Severity", [&](auto value) { return filter.setSeverity(value); }});
    keys.push_back({"Message", [&](auto value) { return filter.setMessage(value); }});
}

std::vector<Key> keysOf(ForwardSettings &forward) {
    std::vector<Key> keys{
        {"Server", [&](auto value) { return takeHost(forward.server, value); }},
        {"Port", [&](auto value) { return takePort(forward.port, value); }},
        {"Protocol", [&](auto value) { return takeProtocol(forward.protocol, value); }},
        {"ServerName", [&](auto value) { return takeHost(forward.serverName, value); }},
        {"AuthorityFile", [&](auto value) { return takeFile(forward.authorityFile, value); }},
        {"CertificateFile", [&](auto value) { return takeFile(forward.certificateFile, value); }},
        {"KeyFile", [&](auto value) { return takeFile(forward.keyFile, value); }},
        {"History", [&](auto value) { return takeFlag(forward.history, value); }},
    };
    addFilterKeys(keys, forward.filter);
    return keys;
}

std::vector<Key> keysOf(ClusterSettings &cluster) {
    std::vector<Key> keys{
        {"Servers", [&](auto value) { return takeServers(cluster.servers, value); }},
        {"Database", [&](auto value) { return takeIdentifier(cluster.database, value); }},
        {"Table", [&](auto value) { return takeIdentifier(cluster.table, value); }},
        {"User", [&](auto value) { return takeText(cluster.user, value); }},
        {"PasswordFile", [&](auto value) { return takeFile(cluster.passwordFile, value); }},
        {"AuthorityFile", [&](auto value) { return takeFile(cluster.authorityFile, value); }},
        {"History", [&](auto value) { return takeFlag(cluster.history, value); }},
    };
    addFilterKeys(keys, cluster.filter);
    return keys;
}

/// Gives the sections of a file their meaning.
class Meaning {
public:
    explicit Meaning(std::vector<ConfigurationMistake> &mistakes) : m_mistakes(mistakes) {
        configuration.collector = defaultCollectorName();
    }

    void read(const ConfigurationSection &section) {
        if (section.kind.empty()) {
            return;
        }
        if (section.kind == "Collector" || section.kind == "Relays") {
            readOnly(section);
        } else if (section.kind == "Forward" || section.kind == "Cluster") {
            readOutput(section);
        } else {
            complain(section.line, "there is no section [" +
                                       std::string(section.kind.substr(0, 80)) +
                                       "] (Collector, Relays, Forward, Cluster)");
        }
    }

    ServiceConfiguration configuration;

private:
    /// The lines of the keys that were given.
    using Lines = std::map<std::string_view, std::size_t>;

    void complain(std::size_t line, std::string text) {
        m_mistakes.push_back({line, std::move(text)});
    }

    void readOnly(const ConfigurationSection &section) {
        if (!section.name.empty()) {
            complain(section.line, "a section [" + std::string(section.kind) + "] has no name");
        }
        noteUnique(section, std::string(section.kind),
                   "there is a section [" + std::string(section.kind) + ']');
        readEntries(section, section.kind == "Collector" ? collectorKeys() : relayKeys());
    }

    std::vector<Key> collectorKeys() {
        return {
            {"Name", [this](auto value) { return takeCollector(configuration.collector, value); }}};
    }

    std::vector<Key> relayKeys() {
        return {
            {"Networks", [this](auto value) { return takeNetworks(configuration.relays, value); }}};
    }

    void readOutput(const ConfigurationSection &section) {
        if (!isWordOf(section.name, "-_", kLongestOutputName)) {
            complain(section.line,
                     "an output needs a name of 1 to 32 letters, digits, \"-\" or "
                     "\"_\": [" +
                         std::string(section.kind) + " \"name\"]");
        } else {
            std::string name;
            foldCase(section.name, name);
            noteUnique(section, '"' + name, "there is an output named " + shownValue(section.name));
        }
        if (++m_outputs == ServiceConfiguration::kMostOutputs + 1) {
            complain(section.line, "there are more than " +
                                       std::to_string(ServiceConfiguration::kMostOutputs) +
                                       " outputs");
        }
        section.kind == "Forward" ? readForward(section) : readCluster(section);
    }

    void noteUnique(const ConfigurationSection &section, std::string name,
                    const std::string &problem) {
        const auto [known, isNew] = m_known.emplace(std::move(name), section.line);
        if (!isNew) {
            complain(section.line, problem + " already, in line " + std::to_string(known->second));
        }
    }

    void readForward(const ConfigurationSection &section) {
        ForwardSettings forward;
        forward.name = section.name;
        const Lines lines = readEntries(section, keysOf(forward));
        require(section, lines, "Server");
        if (forward.protocol != ForwardSettings::Protocol::kTls) {
            for (const char *key : {"ServerName", "AuthorityFile", "CertificateFile", "KeyFile"}) {
                if (const auto found = lines.find(key); found != lines.end()) {
                    complain(found->second,
                             std::string(key) + " needs Protocol=tls: nothing would be encrypted");
                }
            }
        } else if (!lines.contains("Port")) {
            forward.port = kTlsPort;
        }
        requireTogether(lines, "CertificateFile", "KeyFile");
        requireTogether(lines, "KeyFile", "CertificateFile");
        if (forward.serverName.empty()) {
            forward.serverName = forward.server;
        }
        configuration.forwards.push_back(std::move(forward));
    }

    void readCluster(const ConfigurationSection &section) {
        ClusterSettings cluster;
        cluster.name = section.name;
        const Lines lines = readEntries(section, keysOf(cluster));
        require(section, lines, "Servers");
        requireTogether(lines, "PasswordFile", "User");
        configuration.clusters.push_back(std::move(cluster));
    }

    void require(const ConfigurationSection &section, const Lines &lines, std::string_view key) {
        if (!lines.contains(key)) {
            complain(section.line, "the section has no " + std::string(key));
        }
    }

    void requireTogether(const Lines &lines, std::string_view key, std::string_view other) {
        if (lines.contains(key) && !lines.contains(other)) {
            complain(lines.at(key), std::string(key) + " needs " + std::string(other));
        }
    }

    /// Those with a value, with their lines.
    Lines readEntries(const ConfigurationSection &section, const std::vector<Key> &keys) {
        Lines given;
        Lines seen;
        for (const ConfigurationEntry &entry : section.entries) {
            const auto key = std::ranges::find(keys, entry.key, &Key::name);
            if (key == keys.end()) {
                complain(entry.line, "there is no key " + shownValue(entry.key) + " in [" +
                                         std::string(section.kind) + ']');
                continue;
            }
            const auto [known, isNew] = seen.emplace(key->name, entry.line);
            if (!isNew) {
                complain(entry.line, std::string(key->name) + " stands already in line " +
                                         std::to_string(known->second));
            } else if (!entry.value.empty()) {
                given.emplace(key->name, entry.line);
                take(*key, entry);
            }
        }
        return given;
    }

    void take(const Key &key, const ConfigurationEntry &entry) {
        if (const Complaint complaint = key.take(entry.value)) {
            complain(entry.line, std::string(key.name) + ": " + *complaint);
        }
    }

    static constexpr std::uint16_t kTlsPort = 6514;

    std::vector<ConfigurationMistake> &m_mistakes;
    std::map<std::string, std::size_t> m_known;  ///< sections that there is one of, and lines
    std::size_t m_outputs = 0;
};

using Problems = std::vector<ConfigurationProblem>;

Problems problemsOf(std::vector<ConfigurationMistake> &&mistakes, const std::string &file) {
    std::ranges::stable_sort(mistakes, {}, &ConfigurationMistake::line);
    mistakes.resize(std::min(mistakes.size(), ConfigurationText::kMostMistakes));
    Problems problems;
    for (ConfigurationMistake &mistake : mistakes) {
        problems.push_back({file, mistake.line, std::move(mistake.text)});
    }
    return problems;
}

/// Up to a byte more than is taken; errno says why there is nothing.
std::optional<std::string> readStart(int fd) {
    std::string bytes(kLargestFile + 1, '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t count = ::read(fd, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        size += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    bytes.resize(size);
    return bytes;
}

std::string reason() {
    return "it cannot be read: " + std::generic_category().message(errno);
}

/// The bytes of a file, or what is wrong with it.
std::variant<std::string, Problems> bytesOf(const std::filesystem::path &file) {
    const auto wrong = [&file](std::string text) {
        return Problems{{file.string(), 0, std::move(text)}};
    };
    // One that is no file is not to be waited for.
    const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (fd.get() < 0) {
        return errno == ENOENT ? std::variant<std::string, Problems>() : wrong(reason());
    }
    if (::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return wrong("it is no file");
    }
    auto bytes = readStart(fd.get());
    if (!bytes) {
        return wrong(reason());
    }
    if (bytes->size() > kLargestFile) {
        return wrong("it is larger than a megabyte");
    }
    return std::move(*bytes);
}

}  // namespace

std::string describe(const ConfigurationProblem &problem) {
    const std::string place = problem.line == 0 ? "" : ':' + std::to_string(problem.line);
    return problem.file + place + ": " + problem.text;
}

std::string defaultCollectorName() {
    std::array<char, kLongestCollectorName + 1> name{};
    // A longer one may come without its NUL.
    ::gethostname(name.data(), name.size() - 1);
    std::string collector = name.data();
    std::ranges::replace_if(
        collector,
        [](char c) {
            return !isWordOf({&c, 1}, "-._", 1);
        },
        '-');
    return collector.empty() ? "localhost" : collector;
}

std::variant<ServiceConfiguration, Problems> parseServiceConfiguration(std::string_view bytes,
                                                                       const std::string &file) {
    ConfigurationText text(bytes);
    Meaning meaning(text.mistakes);
    for (const ConfigurationSection &section : text.sections) {
        if (text.mistakes.size() >= 2 * ConfigurationText::kMostMistakes) {
            break;
        }
        meaning.read(section);
    }
    if (!text.mistakes.empty()) {
        return problemsOf(std::move(text.mistakes), file);
    }
    return std::move(meaning.configuration);
}

std::variant<ServiceConfiguration, Problems> readServiceConfiguration(
    const std::filesystem::path &file) {
    const auto bytes = bytesOf(file);
    if (const auto *problems = std::get_if<Problems>(&bytes)) {
        return *problems;
    }
    return parseServiceConfiguration(std::get<std::string>(bytes), file.string());
}

}  // namespace quorbel
