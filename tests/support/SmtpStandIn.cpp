#include "support/SmtpStandIn.h"

#include "support/OpenSslFree.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace quorbel::testing {

namespace {

using Free = OpenSslFree;
using Context = std::unique_ptr<SSL_CTX, Free>;

Context makeContext(const TestAuthority::Issued &identity) {
    Context context(SSL_CTX_new(TLS_server_method()));
    const std::unique_ptr<BIO, Free> certificateText(
        BIO_new_mem_buf(identity.certificate.data(), -1));
    const std::unique_ptr<BIO, Free> keyText(BIO_new_mem_buf(identity.key.data(), -1));
    const std::unique_ptr<X509, Free> certificate(
        PEM_read_bio_X509(certificateText.get(), nullptr, nullptr, nullptr));
    const std::unique_ptr<EVP_PKEY, Free> key(
        PEM_read_bio_PrivateKey(keyText.get(), nullptr, nullptr, nullptr));
    SSL_CTX_use_certificate(context.get(), certificate.get());
    SSL_CTX_use_PrivateKey(context.get(), key.get());
    return context;
}

std::string fromBase64(const std::string &text) {
    std::string bytes(text.size(), '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char *>(bytes.data()),
                                       reinterpret_cast<const unsigned char *>(text.data()),
                                       static_cast<int>(text.size()));
    bytes.resize(static_cast<std::size_t>(std::max(length, 0)));
    while (!bytes.empty() && bytes.back() == '\0') {
        bytes.pop_back();
    }
    return bytes;
}

/// "MAIL FROM:<a@b> SIZE=1" has "a@b" in its brackets.
std::string bracketed(const std::string &command) {
    const std::size_t open = command.find('<');
    const std::size_t close = command.find('>', open);
    return open == std::string::npos || close == std::string::npos
               ? ""
               : command.substr(open + 1, close - open - 1);
}

}  // namespace

/// One connection.
class SmtpStandIn::Session {
public:
    Session(SmtpStandIn &server, int socket) : m_server(server), m_socket(socket) {}
    ~Session() { close(m_socket); }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    void run() {
        if (m_server.m_silent) {
            readLine();
            return;
        }
        if (m_server.m_setup.security == Security::kTls && !startTls()) {
            return;
        }
        answer("220 stand-in ready");
        while (const auto command = readLine()) {
            if (command->starts_with("QUIT")) {
                answer("221 Bye");
                return;
            }
            obey(*command);
        }
    }

private:
    void obey(const std::string &command) {
        if (command.starts_with("EHLO")) {
            greet();
        } else if (command == "STARTTLS" && m_server.m_setup.security == Security::kStartTls) {
            answer("220 Go on");
            startTls();
        } else if (command == "AUTH PLAIN") {
            answer("334 ");
            logIn(fromBase64(readLine().value_or("")));
        } else if (!m_server.m_setup.user.empty() && !m_mail.wasLoggedIn) {
            answer("530 Log in first");
        } else if (command.starts_with("MAIL FROM:")) {
            m_mail.sender = bracketed(command);
            answer("250 Fine");
        } else if (command.starts_with("RCPT TO:")) {
            nameRecipient(bracketed(command));
        } else if (command == "DATA") {
            answer("354 Go on");
            takeText();
        } else {
            answer("500 What?");
        }
    }

    void greet() {
        const Setup &setup = m_server.m_setup;
        std::vector<std::string> offers{"stand-in"};
        if (setup.security == Security::kStartTls && !m_ssl) {
            offers.emplace_back("STARTTLS");
        }
        if (!setup.user.empty()) {
            offers.emplace_back("AUTH PLAIN");
        }
        for (std::size_t i = 0; i < offers.size(); ++i) {
            answer((i + 1 == offers.size() ? "250 " : "250-") + offers[i]);
        }
    }

    void logIn(const std::string &words) {
        const Setup &setup = m_server.m_setup;
        std::string expected("\0", 1);
        expected += setup.user + std::string("\0", 1) + setup.password;
        m_mail.wasLoggedIn = words == expected;
        answer(m_mail.wasLoggedIn ? "235 Welcome" : "535 5.7.8 Wrong user or password");
    }

    void nameRecipient(const std::string &address) {
        const std::lock_guard lock(m_server.m_mutex);
        const auto special = m_server.m_answers.find(address);
        if (special != m_server.m_answers.end()) {
            answer(special->second);
            return;
        }
        m_mail.recipients.push_back(address);
        answer("250 Fine");
    }

    void takeText() {
        m_mail.text.clear();
        for (auto line = readLine(); line && *line != "."; line = readLine()) {
            m_mail.text += line->starts_with('.') ? line->substr(1) : *line;
            m_mail.text += "\r\n";
        }
        m_mail.wasEncrypted = m_ssl != nullptr;
        const std::lock_guard lock(m_server.m_mutex);
        if (m_server.m_mailAnswer.starts_with('2')) {
            m_server.m_mails.push_back(m_mail);
        }
        answer(m_server.m_mailAnswer);
    }

    bool startTls() {
        m_context = makeContext(m_server.m_setup.identity);
        m_ssl.reset(SSL_new(m_context.get()));
        SSL_set_fd(m_ssl.get(), m_socket);
        m_buffer.clear();
        return SSL_accept(m_ssl.get()) == 1;
    }

    void answer(const std::string &text) {
        const std::string line = text + "\r\n";
        if (m_ssl) {
            SSL_write(m_ssl.get(), line.data(), static_cast<int>(line.size()));
        } else {
            [[maybe_unused]] const ssize_t sent =
                send(m_socket, line.data(), line.size(), MSG_NOSIGNAL);
        }
    }

    /// Without its line end; nothing when the connection or the test ends.
    std::optional<std::string> readLine() {
        for (;;) {
            const std::size_t end = m_buffer.find("\r\n");
            if (end != std::string::npos) {
                std::string line = m_buffer.substr(0, end);
                m_buffer.erase(0, end + 2);
                return line;
            }
            const bool isHeld = m_ssl && SSL_pending(m_ssl.get()) > 0;
            if (!isHeld && !m_server.waitForInput(m_socket)) {
                return std::nullopt;
            }
            std::array<char, 4096> bytes{};
            const ssize_t count = m_ssl ? SSL_read(m_ssl.get(), bytes.data(), bytes.size())
                                        : read(m_socket, bytes.data(), bytes.size());
            if (count <= 0) {
                return std::nullopt;
            }
            m_buffer.append(bytes.data(), static_cast<std::size_t>(count));
        }
    }

    SmtpStandIn &m_server;
    int m_socket;
    Context m_context;
    std::unique_ptr<SSL, Free> m_ssl;
    std::string m_buffer;
    Mail m_mail;
};

SmtpStandIn::SmtpStandIn(Setup setup)
    : m_setup(std::move(setup)),
      m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      m_stopSignal(eventfd(0, EFD_CLOEXEC)) {
    // A client that is gone is no reason to end the test.
    std::signal(SIGPIPE, SIG_IGN);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (bind(m_listener, generic, length) != 0 || listen(m_listener, SOMAXCONN) != 0 ||
        getsockname(m_listener, generic, &length) != 0) {
        throw std::runtime_error("no port for the mail server");
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { serve(); });
}

SmtpStandIn::~SmtpStandIn() {
    eventfd_write(m_stopSignal, 1);
    m_thread.join();
    close(m_listener);
    close(m_stopSignal);
}

void SmtpStandIn::serve() {
    while (waitForInput(m_listener)) {
        const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) {
            ++m_connections;
            Session(*this, client).run();
        }
    }
}

/// False when the test ends.
bool SmtpStandIn::waitForInput(int fd) const {
    std::array<pollfd, 2> inputs{pollfd{fd, POLLIN, 0}, pollfd{m_stopSignal, POLLIN, 0}};
    return poll(inputs.data(), inputs.size(), -1) > 0 && inputs[1].revents == 0;
}

void SmtpStandIn::answerRecipient(const std::string &address, const std::string &answer) {
    const std::lock_guard lock(m_mutex);
    if (answer.empty()) {
        m_answers.erase(address);
    } else {
        m_answers[address] = answer;
    }
}

void SmtpStandIn::answerMails(const std::string &answer) {
    const std::lock_guard lock(m_mutex);
    m_mailAnswer = answer;
}

void SmtpStandIn::keepSilent() {
    m_silent = true;
}

std::vector<SmtpStandIn::Mail> SmtpStandIn::mails() const {
    const std::lock_guard lock(m_mutex);
    return m_mails;
}

std::vector<SmtpStandIn::Mail> SmtpStandIn::waitForMails(std::size_t count) const {
    waitUntil([&] { return mails().size() >= count; });
    return mails();
}

}  // namespace quorbel::testing
