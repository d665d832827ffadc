// quorbel-demo PORT: lively syslog traffic to 127.0.0.1 from several loopback addresses, until it
// is ended. A burst first, so that there is something to look at, then a few messages a second.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>

namespace {

constexpr int kBurst = 60;
constexpr std::chrono::milliseconds kLongestPause{500};

// Facility and severity codes of RFC 5424; only what the samples use.
enum Facility {
    kKern = 0,
    kMail = 2,
    kDaemon = 3,
    kAuth = 4,
    kCron = 9,
    kLocal0 = 16,
    kLocal7 = 23
};
enum Level { kEmergency, kAlert, kCritical, kError, kWarning, kNotice, kInformational, kDebug };

struct Host {
    std::string_view address;
    std::string_view name;
};

struct Sample {
    unsigned weight;  ///< how often it is sent, against the others
    std::size_t host;
    Facility facility;
    Level level;
    std::string_view tag;
    std::string_view text;  ///< "#" stands for a small number
};

constexpr std::array<Host, 8> kHosts{{
    {"127.0.0.2", "gateway"},
    {"127.0.0.3", "core-switch"},
    {"127.0.0.4", "web1"},
    {"127.0.0.5", "web2"},
    {"127.0.0.6", "db1"},
    {"127.0.0.7", "mail"},
    {"127.0.0.8", "backup"},
    {"127.0.0.9", "ups"},
}};

constexpr std::array<Sample, 27> kSamples{{
    {30, 0, kKern, kInformational, "kernel", "DROP IN=eth0 SRC=203.0.113.# PROTO=TCP DPT=23"},
    {12, 0, kDaemon, kInformational, "dhcpd", "DHCPACK on 192.0.2.# to 52:54:00:12:34:56"},
    {5, 0, kDaemon, kWarning, "openvpn", "client-#: TLS handshake took longer than expected"},
    {3, 0, kAuth, kError, "sshd[20#]", "Failed password for root from 198.51.100.# port 4021"},
    {14, 1, kLocal7, kNotice, "%LINK-5-CHANGED", "Interface Gi1/0/#, changed state to up"},
    {4, 1, kLocal7, kWarning, "%STORM-4-FILTERED", "A broadcast storm on Gi1/0/#, filtered"},
    {2, 1, kLocal7, kError, "%LINK-3-UPDOWN", "Interface Gi1/0/#, changed state to down"},
    {34, 2, kLocal0, kInformational, "nginx", "GET /index.html 200 12#8 bytes in 0.0#1 s"},
    {9, 2, kLocal0, kNotice, "nginx", "signal process started, # workers"},
    {4, 2, kLocal0, kError, "nginx", "upstream timed out, connecting to 192.0.2.6:543#"},
    {34, 3, kLocal0, kInformational, "nginx", "POST /orders 201 8#2 bytes in 0.0#4 s"},
    {12, 3, kLocal0, kDebug, "app", "cache: # keys expired, 10# kept"},
    {3, 3, kLocal0, kWarning, "app", "queue 'invoices' holds 5# jobs, more than 40"},
    {16, 4, kDaemon, kDebug, "postgres[3#1]", "checkpoint: wrote 2# buffers, 0 files added"},
    {8, 4, kDaemon, kInformational, "postgres[3#1]", "automatic vacuum of table 'orders': # pages"},
    {3, 4, kDaemon, kWarning, "postgres[3#1]", "duration: 21#4.3 ms, statement: SELECT sum(total)"},
    {1, 4, kKern, kCritical, "kernel", "EXT4-fs error (device sdb#): unable to read superblock"},
    {16, 5, kMail, kInformational, "postfix/smtpd", "connect from unknown[198.51.100.#]"},
    {6, 5, kMail, kNotice, "postfix/qmgr", "9F3#A1: from=<shop@example.org>, size=41#2"},
    {3, 5, kMail, kWarning, "postfix/smtp", "host mx.example.net refused to talk: 421 try later"},
    {2, 5, kMail, kError, "dovecot", "imap-login: out of memory, # clients turned away"},
    {8, 6, kCron, kInformational, "CROND[8#]", "(root) CMD (/usr/local/bin/snapshot --hourly)"},
    {5, 6, kCron, kNotice, "snapshot", "finished, # files changed"},
    {2, 6, kDaemon, kCritical, "smartd[41#]", "Device: /dev/sdc, # currently unreadable sectors"},
    {8, 7, kDaemon, kInformational, "upsd", "line voltage 23#.1 V, load 41 %"},
    {2, 7, kDaemon, kAlert, "upsmon", "UPS rack1 on battery, # minutes left"},
    {1, 7, kDaemon, kEmergency, "upsmon", "UPS rack1 battery is low, shutting down"},
}};

std::optional<std::uint16_t> portFrom(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port == 0) {
        return std::nullopt;
    }
    return port;
}

sockaddr_in loopback(std::string_view address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    inet_pton(AF_INET, std::string(address).c_str(), &result.sin_addr);
    return result;
}

/// A UDP socket with its own source address; -1 when that cannot be had.
int openHost(const Host &host, const sockaddr_in &service) {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in own = loopback(host.address, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr *>(&own), sizeof own) != 0 ||
        connect(fd, reinterpret_cast<const sockaddr *>(&service), sizeof service) != 0) {
        std::perror("quorbel-demo");
        return -1;
    }
    return fd;
}

/// One message in the form of RFC 3164.
std::string compose(const Sample &sample, std::mt19937 &random) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 32> stamp{};
    std::strftime(stamp.data(), stamp.size(), "%b %e %H:%M:%S", &local);

    std::string result = "<" + std::to_string(sample.facility * 8 + sample.level) + ">";
    result.append(stamp.data()).append(" ").append(kHosts.at(sample.host).name).append(" ");
    for (const char letter : std::string(sample.tag) + ": " + std::string(sample.text)) {
        if (letter == '#') {
            result += std::to_string(random() % 9 + 1);
        } else {
            result += letter;
        }
    }
    return result;
}

}  // namespace

int main(int argc, char **argv) {
    const auto port = argc == 2 ? portFrom(argv[1]) : std::nullopt;
    if (!port) {
        std::fputs("Usage: quorbel-demo PORT\n", stderr);
        return 2;
    }
    const sockaddr_in service = loopback("127.0.0.1", *port);
    std::array<int, kHosts.size()> sockets{};
    for (std::size_t i = 0; i < kHosts.size(); ++i) {
        sockets.at(i) = openHost(kHosts.at(i), service);
        if (sockets.at(i) < 0) {
            return 1;
        }
    }

    std::array<unsigned, kSamples.size()> weights{};
    std::transform(kSamples.begin(), kSamples.end(), weights.begin(),
                   [](const Sample &sample) { return sample.weight; });
    std::mt19937 random(std::random_device{}());
    std::discrete_distribution<std::size_t> pick(weights.begin(), weights.end());
    std::uniform_int_distribution<long> pause(20, kLongestPause.count());
    for (std::uint64_t sent = 0;; ++sent) {
        const Sample &sample = kSamples.at(pick(random));
        const std::string message = compose(sample, random);
        // A service that is away for a while is no reason to stop.
        static_cast<void>(send(sockets.at(sample.host), message.data(), message.size(), 0));
        if (sent >= kBurst) {
            std::this_thread::sleep_for(std::chrono::milliseconds(pause(random)));
        }
    }
}
