#include "service/ManagerStandIn.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <variant>

namespace quorbel::testing {

namespace {

sockaddr_un addressOf(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
    return address;
}

}  // namespace

ManagerStandIn::ManagerStandIn(const std::filesystem::path &folder)
    : m_listeners(std::get<ListenSockets>(openListenSockets(0))),
      m_path(folder / "notify"),
      m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = addressOf(m_path);
    if (::bind(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        throw std::runtime_error("no socket for the manager");
    }
    m_thread = std::thread([this] { listen(); });
}

ManagerStandIn::~ManagerStandIn() {
    const UniqueFd end(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = addressOf(m_path);
    ::sendto(end.get(), "END", 3, 0, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    m_thread.join();
}

void ManagerStandIn::listen() {
    while (receive()) {
    }
}

bool ManagerStandIn::receive() {
    std::array<char, 4096> text{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    iovec part{text.data(), text.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t length = ::recvmsg(m_socket.get(), &message, MSG_CMSG_CLOEXEC);
    UniqueFd fd;
    if (const cmsghdr *header = CMSG_FIRSTHDR(&message); header != nullptr) {
        int number = -1;
        std::memcpy(&number, CMSG_DATA(header), sizeof number);
        fd = UniqueFd(number);
    }
    const std::string said(text.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    handle(said, std::move(fd));
    return said != "END";
}

/// A descriptor that is not kept is closed, which is also the answer to a barrier.
void ManagerStandIn::handle(const std::string &text, UniqueFd fd) {
    const std::string key = "FDNAME=";
    const std::size_t at = text.find(key);
    const std::string name = at == std::string::npos ? "" : text.substr(at + key.size());
    const std::lock_guard lock(m_mutex);
    if (text.find("FDSTOREREMOVE=1") != std::string::npos) {
        std::erase_if(m_kept, [&](const Kept &kept) { return kept.name == name; });
    } else if (text.find("FDSTORE=1") != std::string::npos) {
        m_kept.push_back({name, std::move(fd)});
    }
}

ServiceProcess::Setup ManagerStandIn::setup() const {
    ServiceProcess::Setup setup;
    setup.passed = {m_listeners.tcp.get(), m_listeners.udp.get()};
    std::string names = "quorbelsrv-tcp.socket:quorbelsrv-udp.socket";
    const std::lock_guard lock(m_mutex);
    for (const Kept &kept : m_kept) {
        setup.passed.push_back(kept.fd.get());
        names += ':' + kept.name;
    }
    setup.environment = {"NOTIFY_SOCKET=" + m_path,
                         "LISTEN_FDS=" + std::to_string(setup.passed.size()),
                         "LISTEN_FDNAMES=" + names};
    return setup;
}

std::vector<std::string> ManagerStandIn::kept() const {
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> names;
    for (const Kept &kept : m_kept) {
        names.push_back(kept.name);
    }
    return names;
}

}  // namespace quorbel::testing
