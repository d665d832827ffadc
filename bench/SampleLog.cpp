#include "SampleLog.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace quorbel::bench {

namespace {

constexpr std::int64_t kStart = 1767225600;

constexpr std::array kPriorities = {
    "Local7.Informational", "Daemon.Informational", "Authpriv.Notice", "Kern.Warning",
    "Local0.Debug",         "Local7.Error",         "User.Notice",     "Cron.Informational",
    "Daemon.Critical",      "Local4.Warning",       "Auth.Alert",      "Mail.Informational"};

constexpr std::array kMessages = {
    "kernel: [%u.%06u] eth0: link is up, 1000 Mbps full duplex, flow control rx/tx",
    "sshd[%u]: Accepted publickey for operator from 10.20.%u.7 port 52144 ssh2",
    "dhcpd: DHCPACK on 10.8.%u.%u to 00:1b:21:3c:9d:f8 via vlan120",
    "%%LINEPROTO-5-UPDOWN: Line protocol on Interface GigabitEthernet0/%u, changed state %u",
    "systemd[1]: session-%u.scope: Deactivated successfully after %u ms",
    "named[812]: client @0x7f%08x 10.4.2.9#%u: query (cache) denied"};

/// A number that looks random, the same for the same argument.
std::uint64_t scrambled(std::uint64_t number) {
    number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31U);
}

}  // namespace

std::string sampleLine(std::uint64_t number, double spacing) {
    const std::uint64_t random = scrambled(number);
    const auto a = static_cast<unsigned>(random % 250);
    const auto b = static_cast<unsigned>((random >> 16U) % 100'000);
    std::array<char, 200> message{};
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): the formats stand right above
    std::snprintf(message.data(), message.size(), kMessages[(random >> 40U) % kMessages.size()], a,
                  b);
    std::array<char, 300> line{};
    const auto host = static_cast<unsigned>((random >> 24U) % 3000);
    std::snprintf(line.data(), line.size(), "%lld,%s,10.%u.%u.%u,%s\r\n",
                  static_cast<long long>(
                      kStart + static_cast<std::int64_t>(static_cast<double>(number) * spacing)),
                  kPriorities[(random >> 50U) % kPriorities.size()], host / 1000, host % 250,
                  host % 17, message.data());
    return line.data();
}

std::size_t writeSampleLog(const std::filesystem::path &file, std::uint64_t lines, double spacing) {
    std::FILE *out = std::fopen(file.c_str(), "we");
    if (out == nullptr) {
        std::perror(file.c_str());
        std::exit(2);
    }
    std::size_t bytes = 0;
    for (std::uint64_t number = 0; number < lines; ++number) {
        const std::string line = sampleLine(number, spacing);
        bytes += std::fwrite(line.data(), 1, line.size(), out);
    }
    std::fclose(out);
    return bytes;
}

}  // namespace quorbel::bench
