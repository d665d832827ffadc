#include "platform/gui/PlaceMemory.h"
#include "platform/gui/WindowMemory.h"
#include "support/TemporaryFolder.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include <memory>
#include <optional>

using namespace quorbel;
using quorbel::testing::TemporaryFolder;

class PlaceMemoryTest : public QObject {
    Q_OBJECT

private:
    static constexpr QSize kFirst{300, 200};

    static std::unique_ptr<QWidget> open(const char *name) {
        auto window = std::make_unique<QWidget>();
        window->resize(kFirst);
        new PlaceMemory(*window, QString::fromLatin1(name));
        window->show();
        return QTest::qWaitForWindowExposed(window.get()) ? std::move(window) : nullptr;
    }
    static void remember(const QByteArray &place) {
        quorbel::remember(QStringLiteral("places/one"), place);
    }

    std::optional<TemporaryFolder> m_configuration;

private Q_SLOTS:
    void init() {
        m_configuration.emplace();
        qputenv("XDG_CONFIG_HOME", m_configuration->path().c_str());
    }
    void cleanup() {
        finishRemembering();
        m_configuration.reset();
    }

    void nothingIsRememberedAtFirst() {
        const auto window = open("one");
        QVERIFY(window);
        QCOMPARE(window->size(), kFirst);
    }

    void aWindowOpensWhereItWasClosed() {
        auto window = open("one");
        QVERIFY(window);
        const QRect place(120, 90, 420, 310);
        window->setGeometry(place);
        window->close();
        window = open("one");
        QVERIFY(window);
        QCOMPARE(window->geometry(), place);
        QCOMPARE(open("another")->size(), kFirst);
    }

    void theEndOfTheProgramClosesIt() {
        auto window = open("one");
        QVERIFY(window);
        window->resize(440, 330);
        window.reset();
        QCOMPARE(open("one")->size(), QSize(440, 330));
    }

    void whatIsOnNoScreenIsMovedOntoOne() {
        auto window = open("one");
        QVERIFY(window);
        window->move(100'000, 100'000);
        window->close();
        window = open("one");
        QVERIFY(window);
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QVERIFY(screen.intersects(window->geometry()));
    }

    void whatIsNoPlaceIsPassedOver_data() {
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("text") << QByteArray("left");
        QTest::newRow("zeros") << QByteArray(66, '\0');
        QTest::newRow("cut") << QWidget().saveGeometry().left(20);
    }
    void whatIsNoPlaceIsPassedOver() {
        QFETCH(const QByteArray, place);
        remember(place);
        const auto window = open("one");
        QVERIFY(window);
        QCOMPARE(window->size(), kFirst);
    }
};

QTEST_MAIN(PlaceMemoryTest)
#include "PlaceMemoryTest.moc"
