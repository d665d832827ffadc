#include "common/SyslogTest.h"
#include "control/Commands.h"
#include "control/OptionReader.h"
#include "control/Output.h"
#include "control/TestSender.h"
#include "platform/Number.h"

namespace quorbel {

namespace {

struct Destination {
    std::string host = "127.0.0.1";  // as the window has it
    std::uint16_t port = kSyslogPort;
    TestProtocol protocol = TestProtocol::kUdp;
};

std::string takePort(Destination &destination, std::string_view value) {
    const auto port = readNumber<std::uint16_t>(value);
    destination.port = port.value_or(0);
    return destination.port != 0 ? "" : "\"" + std::string(value) + "\" is no port";
}

std::string takeProtocol(Destination &destination, std::string_view value) {
    const auto protocol = testProtocolNamed(value);
    destination.protocol = protocol.value_or(TestProtocol::kUdp);
    return protocol ? "" : "there is no protocol \"" + std::string(value) + "\" (udp, tcp)";
}

}  // namespace

ExitCode runTestMessage(int count, char **values) {
    Destination to;
    const auto others = readOptions(
        count, values,
        {{"host", 'H', true,
          [&to](std::string_view value) {
              to.host = value;
              return std::string(value.empty() ? "a host is needed" : "");
          }},
         {"port", 'p', true, [&to](std::string_view value) { return takePort(to, value); }},
         {"protocol", 'P', true,
          [&to](std::string_view value) { return takeProtocol(to, value); }}});
    if (!others || !expectNone(*others)) {
        return ExitCode::kUsage;
    }
    const std::string problem = sendTest(to.host, to.port, to.protocol);
    if (!problem.empty()) {
        complain("The test message cannot be sent to " + to.host + ", port " +
                 std::to_string(to.port) + ": " + problem);
        return ExitCode::kNothing;
    }
    return ExitCode::kDone;
}

}  // namespace quorbel
