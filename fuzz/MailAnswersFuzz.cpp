#include "Fuzz.h"
#include "platform/DescriptorIo.h"
#include "platform/Text.h"
#include "platform/UniqueFd.h"
#include "service/mail/SmtpDelivery.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <string>
#include <thread>

namespace quorbel {

namespace {

/// Says one line of an input for each thing that it is told, whatever that is.
class Server {
public:
    Server() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *any = reinterpret_cast<sockaddr *>(&address);
        require(::bind(m_socket.get(), any, size) == 0 && ::listen(m_socket.get(), 1) == 0 &&
                    ::getsockname(m_socket.get(), any, &size) == 0,
                "a port");
        m_port = ntohs(address.sin_port);
    }
    [[nodiscard]] std::uint16_t port() const { return m_port; }
    void answer(std::string_view script) const {
        const UniqueFd client(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
        std::array<char, 4096> heard{};
        for (FuzzInput lines(script); !lines.isEmpty();) {
            const std::string line = std::string(lines.line()) + "\r\n";
            pollfd one{client.get(), POLLIN, 0};
            if (::send(client.get(), line.data(), line.size(), MSG_NOSIGNAL) < 0 ||
                ::poll(&one, 1, 20) < 0 ||
                (one.revents != 0 && ::read(client.get(), heard.data(), heard.size()) <= 0)) {
                return;
            }
        }
    }

private:
    UniqueFd m_socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::uint16_t m_port = 0;
};

}  // namespace

/// Whatever a mail server says, the outcome is one line, and there is an end.
void tryInput(std::string_view script) {
    static const Server server;
    std::thread thread([script] { server.answer(script); });
    MailServer settings;
    settings.host = "127.0.0.1";
    settings.port = server.port();
    settings.security = MailServer::Security::kNone;
    const std::vector<MailAddress> recipients{{"", "a@example.org"}, {"", "b@example.org"}};
    const std::atomic<bool> stop = false;
    const SmtpResult result =
        deliverMail(settings, "q@example.org", recipients, "Subject: s\r\n\r\nt\r\n",
                    std::chrono::milliseconds(1000), stop);
    thread.join();
    require(result.problem.find_first_of("\r\n") == std::string::npos, "a problem is one line");
    require(isUtf8(result.problem), "a problem is text");
    for (const SmtpResult::Refusal &refusal : result.refused) {
        require(refusal.recipient < recipients.size(), "refused is who was named");
        require(refusal.answer.find_first_of("\r\n") == std::string::npos, "an answer is one line");
    }
}

}  // namespace quorbel
