#include "service/output/Collectors.h"

#include "service/output/ShiftedClock.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <sstream>
#include <stdexcept>

namespace quorbel::testing {

namespace {

/// A value a line; the first is the seed.
std::string written(const Collectors::Places &places, unsigned seed) {
    std::ostringstream text;
    text << seed << '\n'
         << places.library.native() << '\n'
         << places.ledger.native() << '\n'
         << places.clusterServer << '\n'
         << places.passwordFile.native() << '\n'
         << places.authorityFile.native() << '\n'
         << places.forwardPort << '\n';
    return text.str();
}

[[noreturn]] void live(const std::string &text, CollectorTalk &talk) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    clockShift = &talk.clockShift;
    std::istringstream in(text);
    std::array<std::string, 7> lines;
    for (std::string &line : lines) {
        std::getline(in, line);
    }
    const auto &[seed, library, ledger, server, password, authority, port] = lines;
    const Collectors::Places places{
        library, ledger, server, password, authority, static_cast<std::uint16_t>(std::stoul(port))};
    Life(Collectors::setupOf(places), static_cast<unsigned>(std::stoul(seed)), talk).run();
}

void end(pid_t &collector) {
    if (collector > 0) {
        ::kill(collector, SIGKILL);
        waitpid(collector, nullptr, 0);
        collector = -1;
    }
}

/// Nothing but "" is to kill; each is answered once it is done.
[[noreturn]] void serve(int line, CollectorTalk &talk) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::array<char, 8192> text{};
    pid_t collector = -1;
    ssize_t size = 0;
    // A byte ends each text, so that none is as empty as the end of the line.
    while ((size = read(line, text.data(), text.size())) > 0) {
        end(collector);
        if (size > 1) {
            collector = fork();
            if (collector == 0) {
                live(std::string(text.data(), static_cast<std::size_t>(size) - 1), talk);
            }
        }
        if (write(line, "", 1) != 1) {
            break;
        }
    }
    end(collector);
    _exit(0);
}

}  // namespace

Collectors::Collectors(CollectorTalk &talk) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throw std::runtime_error("no socket for collectors");
    }
    m_line = UniqueFd(ends[0]);
    const UniqueFd theirs(ends[1]);
    m_starter = fork();
    if (m_starter == 0) {
        m_line.reset();
        serve(theirs.get(), talk);
    }
}

Collectors::~Collectors() {
    m_line.reset();
    waitpid(m_starter, nullptr, 0);
}

Life::Setup Collectors::setupOf(const Places &places) {
    Life::Setup setup{places.library, places.ledger, {}, {}};
    setup.cluster.servers = {places.clusterServer};
    setup.cluster.user = "quorbel";
    setup.cluster.passwordFile = places.passwordFile;
    setup.cluster.authorityFile = places.authorityFile;
    setup.forward.name = "siem";
    setup.forward.server = "127.0.0.1";
    setup.forward.port = places.forwardPort;
    setup.forward.history = true;
    return setup;
}

void Collectors::start(const Places &places, unsigned seed) {
    ask(written(places, seed));
}

void Collectors::kill() {
    ask("");
}

void Collectors::ask(const std::string &text) {
    char answer = 0;
    const std::size_t size = text.size() + 1;
    if (send(m_line.get(), text.c_str(), size, MSG_NOSIGNAL) != static_cast<ssize_t>(size) ||
        recv(m_line.get(), &answer, 1, 0) != 1) {
        throw std::runtime_error("nobody starts collectors");
    }
}

}  // namespace quorbel::testing
