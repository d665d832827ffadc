#include "events/ScanViewFixture.h"
#include "events/TestMessage.h"
#include "support/PrivateNetwork.h"

#include <QApplication>
#include <QByteArray>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
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

bool networkIsPrivate = false;

}  // namespace

class TestMessageTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() { endPage(); }

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
        static_assert(kSyslogPort == 514);
        if (!networkIsPrivate) {
            QSKIP("This system does not let a test have a network of its own.");
        }
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
    quorbel::networkIsPrivate = quorbel::testing::moveToAPrivateNetwork();
    const QApplication application(argc, argv);
    quorbel::TestMessageTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestMessageTest.moc"
