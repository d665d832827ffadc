#include "service/input/TlsInput.h"

#include "service/base/Journal.h"
#include "service/input/ListenSockets.h"

#include <utility>
#include <variant>

namespace quorbel {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::minutes kRefusalPause{1};
constexpr std::chrono::seconds kLongestDrain{1};

}  // namespace

TlsInput::TlsInput(sd_event *loop, std::filesystem::path folder, std::uint16_t port,
                   Collector &collector, Counters &counters, ConnectionShares &shares)
    : m_loop(loop),
      m_folder(std::move(folder)),
      m_port(port),
      m_collector(collector),
      m_counters(counters),
      m_shares(shares),
      m_refusalSaid(Clock::now() - kRefusalPause) {}

TlsInput::~TlsInput() = default;

void TlsInput::configure() {
    if (!TlsContext::isIn(m_folder)) {
        if (m_input) {
            say(JournalLevel::kNotice,
                "The TLS certificate was removed; messages over TLS are no longer received");
            // What has arrived is not lost. Nothing else is received meanwhile.
            m_input->drain(Clock::now() + kLongestDrain);
        }
        m_input.reset();
        m_context.reset();
        m_lastProblem.clear();
        return;
    }
    std::string problem = reload();
    if (problem.empty() && !m_input) {
        problem = listen();
    }
    if (!problem.empty() && problem != m_lastProblem) {
        say(JournalLevel::kError, "TLS: " + problem);
    }
    m_lastProblem = std::move(problem);
}

/// Returns what is wrong; empty when the certificate is in use.
std::string TlsInput::reload() {
    auto loaded = TlsContext::load(m_folder);
    if (auto *problem = std::get_if<std::string>(&loaded)) {
        return std::move(*problem);
    }
    m_context = std::move(std::get<TlsContext>(loaded));
    return {};
}

/// The same.
std::string TlsInput::listen() {
    auto opened = useOrOpenListener(std::exchange(m_passed, {}), m_port);
    if (auto *problem = std::get_if<std::string>(&opened)) {
        return std::move(*problem);
    }
    auto &listener = std::get<StreamListener>(opened);
    m_input =
        std::make_unique<TcpInput>(m_loop, std::move(listener.socket), m_collector, m_counters,
                                   m_shares, [this](UniqueFd socket, const std::string &host) {
                                       return makeChannel(std::move(socket), host);
                                   });
    say(JournalLevel::kInformation, "Listening for TLS on port " + std::to_string(listener.port));
    return {};
}

std::unique_ptr<StreamChannel> TlsInput::makeChannel(UniqueFd socket, const std::string &host) {
    return m_context->makeChannel(
        std::move(socket), [this, host](const std::string &reason) { noteRefusal(host, reason); });
}

/// Whoever sets up a client wants to know why it fails, but nobody shall flood the journal.
void TlsInput::noteRefusal(const std::string &host, const std::string &reason) {
    ++m_counters.tlsRefused;
    if (const auto sender = IpAddress::parse(host)) {
        m_collector.refusals().noteTlsFailure(*sender, reason);
    }
    const Clock::time_point now = Clock::now();
    if (now - m_refusalSaid >= kRefusalPause) {
        m_refusalSaid = now;
        say(JournalLevel::kWarning, "A TLS connection from " + host + " failed: " + reason);
    }
}

void TlsInput::leave(std::chrono::steady_clock::time_point deadline, SocketKeeper &keeper) {
    if (m_input && keeper.keepTls(m_input->listener())) {
        m_input->leave(deadline, nullptr);
    } else {
        drain(deadline);
    }
}

void TlsInput::drain(std::chrono::steady_clock::time_point deadline) {
    if (m_input) {
        m_input->drain(deadline);
    }
}

}  // namespace quorbel
