#include "service/input/PassedSockets.h"

#include "platform/DescriptorIo.h"
#include "platform/Number.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <utility>

namespace quorbel {

namespace {

// What the descriptors are called in the manager's keeping.
constexpr const char *kStreamName = "stream";
constexpr const char *kTlsName = "tls";
constexpr const char *kStatesName = "states";

/// A number that the kernel gives a socket for good, whichever process has it.
std::uint64_t cookieOf(int socket) {
    std::uint64_t cookie = 0;
    socklen_t length = sizeof cookie;
    ::getsockopt(socket, SOL_SOCKET, SO_COOKIE, &cookie, &length);
    return cookie;
}

bool keep(int fd, const char *name) {
    // Data that waits in a connection whose other end is gone is still wanted.
    const std::string text = std::string("FDSTORE=1\nFDPOLL=0\nFDNAME=") + name;
    return ::sd_pid_notify_with_fds(0, 0, text.c_str(), &fd, 1) > 0;
}

/// The manager forgets what it has kept under that name.
void takeBack(const char *name) {
    const std::string text = std::string("FDSTOREREMOVE=1\nFDNAME=") + name;
    ::sd_notify(0, text.c_str());
}

/// From its beginning: whoever wrote it has left off at its end.
std::string contentOf(const UniqueFd &file) {
    return ::lseek(file.get(), 0, SEEK_SET) == 0 ? readToEnd(file.get()).value_or("") : "";
}

/// A number and the character behind it, off the front.
std::optional<std::uint64_t> takeNumber(std::string_view &text, char end) {
    const std::size_t at = text.find(end);
    const auto number =
        at == std::string_view::npos ? std::nullopt : readNumber<std::uint64_t>(text.substr(0, at));
    if (number) {
        text.remove_prefix(at + 1);
    }
    return number;
}

/// "DROPS\n", then for each stream "COOKIE LENGTH\n" and so many bytes.
void readStates(std::string_view text, PassedSockets &passed) {
    std::map<std::uint64_t, PassedSockets::Stream *> streams;
    for (PassedSockets::Stream &stream : passed.streams) {
        streams.emplace(cookieOf(stream.socket.get()), &stream);
    }
    const auto drops = takeNumber(text, '\n');
    if (drops) {
        passed.udpDrops = static_cast<std::uint32_t>(*drops);
    }
    while (!text.empty()) {
        const auto cookie = takeNumber(text, ' ');
        const auto length = cookie ? takeNumber(text, '\n') : std::nullopt;
        if (!length || *length > text.size()) {
            return;
        }
        if (const auto found = streams.find(*cookie); found != streams.end()) {
            found->second->state = text.substr(0, *length);
        }
        text.remove_prefix(*length);
    }
}

/// The descriptors as they were passed, by what they are.
struct Sorted {
    UniqueFd udp;
    UniqueFd tcp;
    UniqueFd states;
};

void sortIn(UniqueFd fd, const std::string &name, Sorted &sorted, PassedSockets &passed) {
    ::fcntl(fd.get(), F_SETFL, ::fcntl(fd.get(), F_GETFL) | O_NONBLOCK);
    if (name == kStatesName) {
        sorted.states = std::move(fd);
    } else if (name == kTlsName) {
        passed.tls = std::move(fd);
    } else if (name == kStreamName) {
        passed.streams.push_back({std::move(fd), {}});
    } else if (::sd_is_socket(fd.get(), AF_UNSPEC, SOCK_STREAM, 1) > 0) {
        sorted.tcp = std::move(fd);
    } else if (::sd_is_socket(fd.get(), AF_UNSPEC, SOCK_DGRAM, -1) > 0) {
        sorted.udp = std::move(fd);
    }
}

Sorted sortAll(PassedSockets &passed) {
    char **names = nullptr;
    const int count = ::sd_listen_fds_with_names(1, &names);
    Sorted sorted;
    for (int i = 0; i < count; ++i) {
        sortIn(UniqueFd(SD_LISTEN_FDS_START + i), names[i], sorted, passed);
        std::free(names[i]);  // NOLINT(cppcoreguidelines-no-malloc): as systemd made it
    }
    std::free(static_cast<void *>(names));  // NOLINT(cppcoreguidelines-no-malloc): the same
    return sorted;
}

}  // namespace

PassedSockets PassedSockets::take() {
    PassedSockets passed;
    Sorted sorted = sortAll(passed);
    if (sorted.tcp.isOpen() && sorted.udp.isOpen()) {
        const std::uint16_t port = boundPort(sorted.tcp);
        passed.plain = ListenSockets{std::move(sorted.udp), std::move(sorted.tcp), port};
    }
    if (sorted.states.isOpen()) {
        readStates(contentOf(sorted.states), passed);
    }
    // Nothing of it may be passed once more, or stay open when this process closes it.
    if (!passed.streams.empty()) {
        takeBack(kStreamName);
    }
    if (passed.tls.isOpen()) {
        takeBack(kTlsName);
    }
    if (sorted.states.isOpen()) {
        takeBack(kStatesName);
    }
    return passed;
}

bool SocketKeeper::keepStream(int socket, std::string_view state) {
    if (m_streams == kMostStreams || !keep(socket, kStreamName)) {
        return false;
    }
    ++m_streams;
    m_states += std::to_string(cookieOf(socket)) + ' ' + std::to_string(state.size()) + '\n';
    m_states += state;
    return true;
}

bool SocketKeeper::keepTls(int listener) {
    return keep(listener, kTlsName);
}

void SocketKeeper::finish(std::uint32_t udpDrops) {
    const std::string content = std::to_string(udpDrops) + '\n' + m_states;
    const UniqueFd file(::memfd_create("quorbel-states", MFD_CLOEXEC));
    writeFully(file.get(), content);
    keep(file.get(), kStatesName);
    constexpr std::uint64_t kLongestWait = 5'000'000;
    ::sd_notify_barrier(0, kLongestWait);
}

}  // namespace quorbel
