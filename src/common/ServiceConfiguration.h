#pragma once

#include "common/AddressNetwork.h"
#include "common/OutputFilter.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorbel {

/// A syslog server that gets the stored events: RFC 5424 over UDP (RFC 5426), TCP with octet
/// counting (RFC 6587, 3.4.1) or TLS (RFC 5425).
struct ForwardSettings {
    enum class Protocol : std::uint8_t { kUdp, kTcp, kTls };

    std::string name;    ///< unique over all outputs, case aside: 1 to 32 letters, digits, '-', '_'
    std::string server;  ///< a name or an address
    std::uint16_t port = 514;
    Protocol protocol = Protocol::kTcp;
    std::string serverName;       ///< what a TLS server's certificate must bear; never empty
    std::string authorityFile;    ///< PEM, of who vouches for the server; empty: the system's
    std::string certificateFile;  ///< PEM, our own; empty: none. With keyFile or neither.
    std::string keyFile;
    bool history = false;  ///< also what was stored before the output was made
    OutputFilter filter;

    bool operator==(const ForwardSettings &) const = default;
};

/// A column store that gets the stored events over HTTP or HTTPS.
struct ClusterSettings {
    std::string name;                  ///< as of ForwardSettings
    std::vector<std::string> servers;  ///< at least one: "https://host:port", no slash at the end
    std::string database = "quorbel";  ///< letters, digits and '_', no digit first: fit for SQL
    std::string table = "events";      ///< the same
    std::string user;                  ///< empty: the server's default, without a password
    std::string passwordFile;          ///< its first line; empty: no password
    std::string authorityFile;         ///< as of ForwardSettings
    bool history = false;              ///< the same
    OutputFilter filter;

    bool operator==(const ClusterSettings &) const = default;
};

/// What an administrator wants of the service, beside what the window's settings say. A plain
/// value; made by readServiceConfiguration(), so that what it holds can be relied on.
struct ServiceConfiguration {
    std::string collector;               ///< this service's name where several meet; never empty
    std::vector<AddressNetwork> relays;  ///< whose word for the host of a message is taken
    std::vector<ForwardSettings> forwards;
    std::vector<ClusterSettings> clusters;

    static constexpr std::size_t kMostOutputs = 16;  ///< of both kinds together

    bool operator==(const ServiceConfiguration &) const = default;
};

/// A mistake in the file.
struct ConfigurationProblem {
    std::string file;
    std::size_t line = 0;  ///< from 1 on; 0: the file as a whole
    std::string text;      ///< one line; texts of the file are shown as legible() shows them

    bool operator==(const ConfigurationProblem &) const = default;
};

/// "FILE:LINE: TEXT", or "FILE: TEXT".
std::string describe(const ConfigurationProblem &problem);

/// Where it stands unless somebody says otherwise.
inline constexpr const char *kServiceConfigurationFile = "/etc/quorbel/quorbelsrv.conf";

/// The host's name in letters, digits, '-', '.' and '_', at most 64 of them; "localhost" when it
/// has none. What the service is called when the configuration does not say.
std::string defaultCollectorName();

/// Reads the whole file, of INI form: man page quorbelsrv.conf(5). A file that is not there is the
/// default; one that is no file, larger than a megabyte or not readable is a mistake, as is
/// whatever is not known: nothing is passed over. The first mistakes, a hundred at most, in the
/// order of their lines. Waits for nothing but the disk; does not look at the files that are named
/// in it.
std::variant<ServiceConfiguration, std::vector<ConfigurationProblem>> readServiceConfiguration(
    const std::filesystem::path &file);

/// The same with the bytes of such a file; `file` is what problems call it.
std::variant<ServiceConfiguration, std::vector<ConfigurationProblem>> parseServiceConfiguration(
    std::string_view bytes, const std::string &file);

}  // namespace quorbel
