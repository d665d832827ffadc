#include "service/output/SyslogReceiver.h"

#include <netinet/in.h>
#include <openssl/pem.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace quorbel::testing {

namespace {

using Context = std::unique_ptr<SSL_CTX, OpenSslFree>;
using Session = std::unique_ptr<SSL, OpenSslFree>;

template <typename Object, typename Read>
std::unique_ptr<Object, OpenSslFree> fromPem(const std::string &pem, Read read) {
    const std::unique_ptr<BIO, OpenSslFree> bio(
        BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return std::unique_ptr<Object, OpenSslFree>(read(bio.get(), nullptr, nullptr, nullptr));
}

Context makeContext(const SyslogReceiver::Setup &setup) {
    Context context(SSL_CTX_new(TLS_server_method()));
    const auto certificate = fromPem<X509>(setup.identity->certificate, PEM_read_bio_X509);
    const auto key = fromPem<EVP_PKEY>(setup.identity->key, PEM_read_bio_PrivateKey);
    if (SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1) {
        throw std::runtime_error("no certificate");
    }
    if (!setup.clientAuthority.empty()) {
        const auto authority = fromPem<X509>(setup.clientAuthority, PEM_read_bio_X509);
        X509_STORE_add_cert(SSL_CTX_get_cert_store(context.get()), authority.get());
        SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT,
                           nullptr);
    }
    return context;
}

void resetAtEnd(int fd) {
    const linger now{1, 0};
    ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

}  // namespace

SyslogReceiver::SyslogReceiver(const Setup &setup)
    : m_setup(setup),
      m_socket(::socket(AF_INET, (setup.datagrams ? SOCK_DGRAM : SOCK_STREAM) | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(setup.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (::bind(m_socket.get(), generic, size) != 0 ||
        (!setup.datagrams && ::listen(m_socket.get(), 8) != 0) ||
        ::getsockname(m_socket.get(), generic, &size) != 0) {
        throw std::runtime_error("no port");
    }
    m_port = ntohs(address.sin_port);
    if (setup.identity) {
        m_context = makeContext(setup);
    }
    m_thread = std::thread([this] { work(); });
}

SyslogReceiver::~SyslogReceiver() {
    m_stop = true;
    m_thread.join();
}

std::vector<std::string> SyslogReceiver::messages() const {
    const std::lock_guard lock(m_mutex);
    return m_messages;
}

std::size_t SyslogReceiver::count() const {
    const std::lock_guard lock(m_mutex);
    return m_messages.size();
}

void SyslogReceiver::note(std::string message) {
    const std::lock_guard lock(m_mutex);
    m_messages.push_back(std::move(message));
}

void SyslogReceiver::work() {
    while (!m_stop) {
        pollfd polled{m_socket.get(), POLLIN, 0};
        if (::poll(&polled, 1, 10) <= 0) {
            continue;
        }
        if (m_setup.datagrams) {
            takeDatagrams();
        } else {
            const UniqueFd connection(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
            serve(connection);
        }
    }
}

void SyslogReceiver::takeDatagrams() {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), 0);
    if (count >= 0) {
        note({bytes.data(), static_cast<std::size_t>(count)});
    }
}

void SyslogReceiver::serve(const UniqueFd &socket) {
    const timeval slice{0, 10'000};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &slice, sizeof slice);
    Session ssl(m_context ? SSL_new(m_context.get()) : nullptr);
    if (ssl) {
        const timeval patience{5, 0};
        ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        SSL_set_fd(ssl.get(), socket.get());
        if (SSL_accept(ssl.get()) != 1) {
            return;
        }
        ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &slice, sizeof slice);
    }
    std::string bytes;
    std::array<char, 16384> block{};
    while (!m_stop && m_untilReset != 0) {
        if (m_hold) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            continue;
        }
        errno = 0;
        const ssize_t count =
            ssl ? SSL_read(ssl.get(), block.data(), static_cast<int>(block.size()))
                : ::recv(socket.get(), block.data(), block.size(), 0);
        if (count > 0) {
            bytes.append(block.data(), static_cast<std::size_t>(count));
            takeFrames(bytes);
        } else if (errno != EAGAIN && errno != EINTR) {
            return;
        }
    }
    resetAtEnd(socket.get());
    m_untilReset = SIZE_MAX;
}

void SyslogReceiver::takeFrames(std::string &bytes) {
    std::size_t taken = 0;
    while (m_untilReset != 0) {
        const std::size_t space = bytes.find(' ', taken);
        if (space == std::string::npos) {
            break;
        }
        std::size_t length = 0;
        const char *end = bytes.data() + space;
        const auto [rest, error] = std::from_chars(bytes.data() + taken, end, length);
        m_isBroken = m_isBroken || error != std::errc() || rest != end;
        if (m_isBroken || bytes.size() - space - 1 < length) {
            break;
        }
        note(bytes.substr(space + 1, length));
        taken = space + 1 + length;
        if (m_untilReset != SIZE_MAX) {
            --m_untilReset;
        }
    }
    bytes.erase(0, taken);
}

}  // namespace quorbel::testing
