#include "common/ServiceConfiguration.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::TemporaryFolder;
using Problems = std::vector<ConfigurationProblem>;

ServiceConfiguration good(std::string_view text) {
    auto read = parseServiceConfiguration(text, "file");
    if (const auto *problems = std::get_if<Problems>(&read)) {
        ADD_FAILURE() << describe(problems->front());
        return {};
    }
    return std::get<ServiceConfiguration>(read);
}

/// Each as it is said, a line each.
std::string problemsIn(std::string_view text) {
    const auto read = parseServiceConfiguration(text, "file");
    std::string lines;
    if (const auto *problems = std::get_if<Problems>(&read)) {
        for (const ConfigurationProblem &problem : *problems) {
            lines += describe(problem) + '\n';
        }
    }
    return lines;
}

TEST(ServiceConfigurationTest, NamesFileAndLineOfEveryMistake) {
    const std::string section = "there is no section [";
    const std::string form = "a section is [Section] or [Section \"name\"], not ";
    const std::string name =
        "the name of a section stands between two quotation marks, and is not "
        "empty";
    const std::string outputName =
        "an output needs a name of 1 to 32 letters, digits, \"-\" or "
        "\"_\": ";
    struct Case {
        std::string text;
        std::string problems;
    };
    const std::string to = "[Forward \"a\"]\nServer=s\n";
    const std::string tls = "[Forward \"a\"]\nServer=s\nProtocol=tls\n";
    const std::string cluster = "[Cluster \"c\"]\nServers=https://s\n";
    const Case cases[] = {
        {"Name=x", "1: \"Name=x\" stands before the first [Section]"},
        {"\n\nnonsense", "3: \"nonsense\" is neither [Section] nor Key=Value"},
        {"[Collector]\n=x", "2: \"=x\" is neither [Section] nor Key=Value"},
        {"[Collector", "1: " + form + "\"[Collector\""},
        {"[Collector] # c", "1: " + form + "\"[Collector] # c\""},
        {"[]", "1: the section has no kind"},
        {"[\"a\"]", "1: the section has no kind"},
        {"[Forward \"a]", "1: " + name},
        {"[Forward \"\"]", "1: " + name},
        {"[Forward \"a\"b\"]", "1: " + name},
        {"[Forward \"a\" b]", "1: " + name},
        {"[Outputs]", "1: " + section + "Outputs] (Collector, Relays, Forward, Cluster)"},
        {"[relays]", "1: " + section + "relays] (Collector, Relays, Forward, Cluster)"},
        {"[Relays \"a\"]", "1: a section [Relays] has no name"},
        {"[Relays]\n\n[Relays]", "3: there is a section [Relays] already, in line 1"},
        {"[Collector]\nName=a\nName=b", "3: Name stands already in line 2"},
        {"[Collector]\nName=\nName=b", "3: Name stands already in line 2"},
        {"[Collector]\nname=a", "2: there is no key \"name\" in [Collector]"},
        {"[Collector]\nName=a b",
         "2: Name: \"a b\" is not 1 to 64 letters, digits, \"-\", \".\" or \"_\""},
        {"[Collector]\nName=" + std::string(65, 'a'),
         "2: Name: \"" + std::string(65, 'a') +
             "\" is not 1 to 64 letters, digits, \"-\", \".\" or \"_\""},
        {"[Relays]\nNetworks=10.1.0.0/16, router",
         "2: Networks: \"router\" is neither a network, as 10.1.0.0/16, nor an address"},
        {"[Relays]\nNetworks=10.1.0.0/33",
         "2: Networks: \"10.1.0.0/33\" is neither a network, as 10.1.0.0/16, nor an address"},
        {"[Forward]\nServer=s", "1: " + outputName + "[Forward \"name\"]"},
        {"[Cluster \"a b\"]\nServers=http://s", "1: " + outputName + "[Cluster \"name\"]"},
        {"[Cluster \"../a\"]\nServers=http://s", "1: " + outputName + "[Cluster \"name\"]"},
        {"[Forward \"" + std::string(33, 'a') + "\"]\nServer=s",
         "1: " + outputName + "[Forward \"name\"]"},
        {to + "[Cluster \"A\"]\nServers=http://s",
         "3: there is an output named \"A\" already, in line 1"},
        {"[Forward \"a\"]", "1: the section has no Server"},
        {"[Forward \"a\"]\nServer=", "1: the section has no Server"},
        {"[Forward \"a\"]\nServer=s t",
         "2: Server: \"s t\" is neither a host's name nor an address"},
        {"[Forward \"a\"]\nServer=s:514",
         "2: Server: \"s:514\" is neither a host's name nor an address"},
        {to + "Port=0", "3: Port: \"0\" is not a number from 1 to 65535"},
        {to + "Port=65536", "3: Port: \"65536\" is not a number from 1 to 65535"},
        {to + "Port=514 ; plain", "3: Port: \"514 ; plain\" is not a number from 1 to 65535"},
        {to + "Protocol=TLS", "3: Protocol: \"TLS\" is none of udp, tcp and tls"},
        {to + "History=true", "3: History: \"true\" is neither yes nor no"},
        {to + "KeyFile=/k\nCertificateFile=/c",
         "3: KeyFile needs Protocol=tls: nothing would be encrypted\n"
         "4: CertificateFile needs Protocol=tls: nothing would be encrypted"},
        {to + "Protocol=udp\nAuthorityFile=/a",
         "4: AuthorityFile needs Protocol=tls: nothing would be encrypted"},
        {to + "ServerName=s", "3: ServerName needs Protocol=tls: nothing would be encrypted"},
        {tls + "AuthorityFile=ca.pem",
         "4: AuthorityFile: \"ca.pem\" is not the whole path of a file: it begins with no slash"},
        {tls + "CertificateFile=/c", "4: CertificateFile needs KeyFile"},
        {tls + "KeyFile=/k", "4: KeyFile needs CertificateFile"},
        {tls + "Servers=https://s", "4: there is no key \"Servers\" in [Forward]"},
        {to + "Hosts=10.0.0.0/40", "3: Hosts: \"10.0.0.0/40\" is no network"},
        {"[Cluster \"c\"]", "1: the section has no Servers"},
        {"[Cluster \"c\"]\nServers=,", "2: Servers: there are not 1 to 16 of them"},
        {"[Cluster \"c\"]\nServers=s:8123",
         "2: Servers: \"s:8123\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=ftp://s",
         "2: Servers: \"ftp://s\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=https://user:word@s",
         "2: Servers: \"https://user:word@s\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=https://s/path",
         "2: Servers: \"https://s/path\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=https://",
         "2: Servers: \"https://\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=https://[",
         "2: Servers: \"https://[\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=https://[10.1.2]:1",
         "2: Servers: \"https://[10.1.2]:1\" is not of the form https://host:port"},
        {"[Cluster \"c\"]\nServers=https://s:99999",
         "2: Servers: \"https://s:99999\" is not of the form https://host:port"},
        {cluster + "Table=a.b",
         "3: Table: \"a.b\" is not 1 to 64 letters, digits or \"_\", of which no digit first"},
        {cluster + "Database=1a",
         "3: Database: \"1a\" is not 1 to 64 letters, digits or \"_\", of which no digit first"},
        {cluster + "PasswordFile=/p", "3: PasswordFile needs User"},
        {cluster + "Port=1", "3: there is no key \"Port\" in [Cluster]"},
        {"[Collector]\nName=a\tb",
         "2: Name: \"a?b\" is not 1 to 64 letters, digits, \"-\", \".\" "
         "or \"_\""},
        {std::string("[Coll\0ector]", 12), "1: there is a control character in the line"},
        {"[Collector]\nName=\x1b[31m", "2: there is a control character in the line"},
        {"[Collector]\rName=a", "1: there is a control character in the line"},
        {"[Collector]\nName=\xff", "2: the line is not UTF-8"},
        {"#" + std::string(4096, 'x'), "1: the line is longer than 4096 bytes"},
        // What is wrong in one place does not hide another.
        {"[Collector]\nName=a b\n[Nothing]\nNo=thing\n[Relays]\nNetworks=x",
         "2: Name: \"a b\" is not 1 to 64 letters, digits, \"-\", \".\" or \"_\"\n"
         "3: " +
             section +
             "Nothing] (Collector, Relays, Forward, Cluster)\n"
             "6: Networks: \"x\" is neither a network, as 10.1.0.0/16, nor an address"},
        {"[Relays]\nNetworks=x\nnonsense",
         "2: Networks: \"x\" is neither a network, as 10.1.0.0/16, nor an address\n"
         "3: \"nonsense\" is neither [Section] nor Key=Value"},
    };
    for (const Case &c : cases) {
        std::string expected = "file:" + c.problems + '\n';
        for (std::size_t at = expected.find('\n'); at + 1 < expected.size();
             at = expected.find('\n', at + 1)) {
            expected.insert(at + 1, "file:");
        }
        EXPECT_EQ(problemsIn(c.text), expected);
    }
}

TEST(ServiceConfigurationTest, ReadsAllThatCanBeSaid) {
    const ServiceConfiguration configuration = good(
        "\xEF\xBB\xBF# A comment\r\n"
        "; another\r\n"
        "[Collector]\r\n"
        "Name = hamburg-1\r\n"
        "\r\n"
        "[ Relays ]\r\n"
        "Networks=10.1.0.0/16, 2001:db8::/32 ,192.0.2.7\r\n"
        "[Forward \"siem\"]\r\n"
        "Server=siem.example.org\r\nPort=7000\r\nProtocol=tls\r\n"
        "AuthorityFile=/etc/quorbel/ca.pem\r\nCertificateFile=/c.pem\r\nKeyFile=/k.pem\r\n"
        "ServerName=other.example.org\r\nHistory=yes\r\n"
        "Hosts=web-*\r\nFacility=Auth\r\nSeverity=Warning\r\nMessage=a=b*\r\n"
        "[Cluster  \"main\"]\r\n"
        "Servers=https://ch1.example.org:8443/, http://[2001:db8::7]:8123\r\n"
        "Database=logs\r\nTable=all_events\r\nUser=quorbel\r\n"
        "PasswordFile=/etc/quorbel/cluster.password\r\nAuthorityFile=/ca.pem\r\nHistory=yes\r\n"
        "Severity=Error");
    EXPECT_EQ(configuration.collector, "hamburg-1");
    ASSERT_THAT(configuration.relays, SizeIs(3));
    EXPECT_TRUE(configuration.relays[0].contains(*IpAddress::parse("10.1.200.1")));
    EXPECT_TRUE(configuration.relays[2].contains(*IpAddress::parse("192.0.2.7")));
    ASSERT_THAT(configuration.forwards, SizeIs(1));
    ForwardSettings forward;
    forward.name = "siem";
    forward.server = "siem.example.org";
    forward.port = 7000;
    forward.protocol = ForwardSettings::Protocol::kTls;
    forward.serverName = "other.example.org";
    forward.authorityFile = "/etc/quorbel/ca.pem";
    forward.certificateFile = "/c.pem";
    forward.keyFile = "/k.pem";
    forward.history = true;
    forward.filter.setHosts("web-*");
    forward.filter.setFacility("Auth");
    forward.filter.setSeverity("Warning");
    forward.filter.setMessage("a=b*");
    EXPECT_EQ(configuration.forwards[0], forward);
    ASSERT_THAT(configuration.clusters, SizeIs(1));
    ClusterSettings cluster;
    cluster.name = "main";
    cluster.servers = {"https://ch1.example.org:8443", "http://[2001:db8::7]:8123"};
    cluster.database = "logs";
    cluster.table = "all_events";
    cluster.user = "quorbel";
    cluster.passwordFile = "/etc/quorbel/cluster.password";
    cluster.authorityFile = "/ca.pem";
    cluster.history = true;
    cluster.filter.setSeverity("Error");
    EXPECT_EQ(configuration.clusters[0], cluster);
}

TEST(ServiceConfigurationTest, HasDefaults) {
    const ServiceConfiguration nothing = good("");
    EXPECT_EQ(nothing.collector, defaultCollectorName());
    EXPECT_FALSE(nothing.collector.empty());
    EXPECT_THAT(nothing.relays, IsEmpty());
    EXPECT_THAT(nothing.forwards, IsEmpty());
    EXPECT_THAT(nothing.clusters, IsEmpty());
    EXPECT_EQ(good("[Collector]\nName=\n[Relays]\nNetworks="), nothing);

    const auto forwards = good(
                              "[Forward \"a\"]\nServer=s\n"
                              "[Forward \"b\"]\nServer=2001:db8::1\nProtocol=tls\nHosts=\n"
                              "[Forward \"c\"]\nServer=s\nProtocol=tls\nPort=514")
                              .forwards;
    ASSERT_THAT(forwards, SizeIs(3));
    EXPECT_EQ(forwards[0].port, 514);
    EXPECT_EQ(forwards[0].protocol, ForwardSettings::Protocol::kTcp);
    EXPECT_FALSE(forwards[0].history);
    EXPECT_TRUE(forwards[0].filter.isEmpty());
    EXPECT_EQ(forwards[1].port, 6514);
    EXPECT_EQ(forwards[1].serverName, "2001:db8::1");
    EXPECT_EQ(forwards[2].port, 514);

    const auto clusters = good("[Cluster \"a\"]\nServers=http://s").clusters;
    ASSERT_THAT(clusters, SizeIs(1));
    EXPECT_EQ(clusters[0].database, "quorbel");
    EXPECT_EQ(clusters[0].table, "events");
    EXPECT_EQ(clusters[0].user, "");
}

TEST(ServiceConfigurationTest, TakesSixteenOutputs) {
    std::string text;
    for (int i = 0; i < 16; ++i) {
        text += i % 2 == 0 ? "[Forward \"n" + std::to_string(i) + "\"]\nServer=s\n"
                           : "[Cluster \"n" + std::to_string(i) + "\"]\nServers=http://s\n";
    }
    EXPECT_EQ(problemsIn(text), "");
    EXPECT_EQ(problemsIn(text + "[Forward \"x\"]\nServer=s"),
              "file:33: there are more than 16 outputs\n");
}

TEST(ServiceConfigurationTest, AnyFileIsReadAtOnceOrRefused) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "quorbelsrv.conf";
    const auto problem = [&path] {
        const auto read = readServiceConfiguration(path);
        const auto *problems = std::get_if<Problems>(&read);
        return problems == nullptr ? "" : describe(problems->front());
    };
    EXPECT_EQ(problem(), "");  // not there
    const std::string is = path.string() + ": it is ";

    std::filesystem::create_directory(path);
    EXPECT_EQ(problem(), is + "no file");
    std::filesystem::remove(path);

    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(problem(), is + "no file");
    std::filesystem::remove(path);

    std::filesystem::create_symlink(path, path);
    EXPECT_THAT(problem(), HasSubstr(path.string() + ": it cannot be read: Too many levels"));
    std::filesystem::remove(path);

    std::filesystem::create_symlink("/dev/zero", path);
    EXPECT_EQ(problem(), is + "no file");
    std::filesystem::remove(path);

    folder.write("quorbelsrv.conf", "[Collector]\nName=a b");
    EXPECT_THAT(problem(), HasSubstr(path.string() + ":2: Name: "));
    std::filesystem::resize_file(path, 100 << 20);
    EXPECT_EQ(problem(), is + "larger than a megabyte");
    std::filesystem::resize_file(path, 1 << 20);  // one line of NULs
    EXPECT_THAT(problem(), HasSubstr(":2: the line is longer than 4096 bytes"));

    folder.write("quorbelsrv.conf", std::string(1 << 20, '\n'));
    EXPECT_EQ(problem(), "");
    folder.write("quorbelsrv.conf", std::string((1 << 20) + 1, '\n'));
    EXPECT_EQ(problem(), is + "larger than a megabyte");
}

TEST(ServiceConfigurationTest, SaysAtMostAHundredProblems) {
    std::string lines;
    std::string sections;
    for (int i = 0; i < 50'000; ++i) {
        lines += "nonsense\n";
        sections += "[X]\n";
    }
    for (const std::string &text : {lines, sections, sections + lines}) {
        const auto read = parseServiceConfiguration(text, "file");
        EXPECT_THAT(std::get<Problems>(read), SizeIs(100));
    }
}

/// Lines of the right form with anything in them, and any bytes.
TEST(ServiceConfigurationTest, AnyBytesAreReadOrRefused) {
    const char *const kWords[] = {"[",        "]",       "\"",       "=",     "\n",        "\r\n",
                                  "Forward",  "Cluster", "Relays",   "a",     " ",         ",",
                                  "Server",   "Servers", "https://", "[::1]", "Port",      "65535",
                                  "Networks", "10/8",    "10.0.0.0", "/",     "Hosts",     "!",
                                  "Severity", "Error",   "\xff",     "#",     "[Relays]\n"};
    std::mt19937 random(testing::seed());
    for (int i = 0; i < 20'000; ++i) {
        std::string text;
        for (auto words = random() % 40; words > 0; --words) {
            text += kWords[random() % std::size(kWords)];
        }
        const auto read = parseServiceConfiguration(text, "file");
        if (const auto *problems = std::get_if<Problems>(&read)) {
            ASSERT_FALSE(problems->empty());
            ASSERT_GT(problems->front().line, 0U) << text;
        } else {
            for (const auto &cluster : std::get<ServiceConfiguration>(read).clusters) {
                ASSERT_FALSE(cluster.servers.empty()) << text;
            }
        }
    }
}

TEST(ServiceConfigurationTest, TheDefaultNameCanBeWritten) {
    EXPECT_EQ(good("[Collector]\nName=" + defaultCollectorName()).collector,
              defaultCollectorName());
}

}  // namespace
}  // namespace quorbel
