#include "events/ScanViewFixture.h"
#include "events/TestMessage.h"

#include <QApplication>
#include <QByteArray>
#include <QTest>

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

namespace quorbel {

using namespace testing;

namespace {

/// A UDP socket that receives on 127.0.0.1.
class Receiver {
public:
    explicit Receiver(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address = loopback(port);
        m_isBound = ::bind(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        constexpr timeval kPatience{10, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    }
    ~Receiver() { ::close(m_socket); }
    Receiver(const Receiver &) = delete;
    Receiver &operator=(const Receiver &) = delete;

    static sockaddr_in loopback(std::uint16_t port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }
    [[nodiscard]] bool isBound() const { return m_isBound; }
    [[nodiscard]] std::uint16_t port() const {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        ::getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size);
        return ntohs(address.sin_port);
    }
    [[nodiscard]] QByteArray receive() const {
        QByteArray bytes(1024, '\0');
        const auto count =
            ::recv(m_socket, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
        return count < 0 ? QByteArray("nothing") : bytes.left(count);
    }
    [[nodiscard]] bool hasMore() const {
        char byte = 0;
        return ::recv(m_socket, &byte, 1, MSG_DONTWAIT | MSG_PEEK) >= 0;
    }

private:
    int m_socket;
    bool m_isBound = false;
};

std::ptrdiff_t openFiles() {
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries("/proc/self/fd"), Entries());
}

void write(const char *path, const std::string &text) {
    std::ofstream(path) << text;
}

/// Moves this process to a network of its own, in which every port is free and no message leaves.
/// False where the system does not let it. Before there is any other thread.
bool moveToAPrivateNetwork() {
    const std::string user = std::to_string(::getuid());
    const std::string group = std::to_string(::getgid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
        return false;
    }
    write("/proc/self/setgroups", "deny");
    write("/proc/self/uid_map", "0 " + user + " 1");
    write("/proc/self/gid_map", "0 " + group + " 1");
    ifreq loopback{.ifr_ifrn = {"lo"}, .ifr_ifru = {}};
    loopback.ifr_flags = IFF_UP;
    const int control = ::socket(AF_INET, SOCK_DGRAM, 0);
    const bool isUp = ::ioctl(control, SIOCSIFFLAGS, &loopback) == 0;
    ::close(control);
    return isUp;
}

bool networkIsPrivate = false;

}  // namespace

class TestMessageTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() {
        m_page.reset();
        m_delegate.reset();
    }

    void sendsOneDatagram() {
        const Receiver receiver(0);
        QVERIFY(receiver.isBound());
        sendTestMessage(receiver.port());
        QCOMPARE(receiver.receive(), QByteArray("<191>Quorbel - Test message"));
        QVERIFY(!receiver.hasMore());
    }

    void eachTimeASocketIsOpenedAndStaysOpen() {
        const Receiver receiver(0);
        const auto before = openFiles();
        sendTestMessage(receiver.port());
        sendTestMessage(receiver.port());
        QCOMPARE(openFiles() - before, 2);
    }

    void theButtonSendsToTheSyslogPort() {
        if (!networkIsPrivate) {
            QSKIP("This system does not let a test have a network of its own.");
        }
        QCOMPARE(kSyslogPort, std::uint16_t{514});
        show();
        {
            const Receiver receiver(kSyslogPort);
            QVERIFY(receiver.isBound());
            click("testSyslog");
            QCOMPARE(receiver.receive(), QByteArray("<191>Quorbel - Test message"));
            click("testSyslog");
            QCOMPARE(receiver.receive(), QByteArray("<191>Quorbel - Test message"));
            QVERIFY(!receiver.hasMore());
        }
        // With nothing listening: sent all the same, and nobody is told.
        const auto before = openFiles();
        click("testSyslog");
        click("testSyslog");
        QCOMPARE(openFiles() - before, 2);
        QVERIFY(alert() == nullptr);
    }
};

}  // namespace quorbel

int main(int argc, char **argv) {
    quorbel::networkIsPrivate = quorbel::moveToAPrivateNetwork();
    const QApplication application(argc, argv);
    quorbel::TestMessageTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestMessageTest.moc"
