#include "alerts/AlertFixture.h"
#include "alerts/PopupViewTitle.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"
#include "support/WaitUntil.h"

#include <QElapsedTimer>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTextBlock>
#include <QTimer>

#include <algorithm>
#include <array>
#include <future>
#include <limits>
#include <thread>

using namespace quorbel;
using namespace quorbel::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = kPatience.count();

/// Whether a thread that waits for it goes on.
bool isSignalled(PopupCondition &condition) {
    std::packaged_task<void()> wait([&condition] { condition.wait(); });
    auto result = wait.get_future();
    std::thread waiter(std::move(wait));
    const bool signalled = result.wait_for(kPatience) == std::future_status::ready;
    condition.signal();
    waiter.join();
    return signalled;
}

/// What the desktop leaves to windows: "x y width height".
QByteArray visibleArea() {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    return QByteArray::number(area.x()) + ' ' + QByteArray::number(area.y()) + ' ' +
           QByteArray::number(area.width()) + ' ' + QByteArray::number(area.height());
}

template <typename Widget>
Widget &child(QWidget &window, const char *name) {
    return *window.findChild<Widget *>(QString::fromLatin1(name));
}

QImage imageOf(PopupWindow &window) {
    return child<QLabel>(window, "popupImage").pixmap().toImage();
}

constexpr auto kStoredLevels =
    "severityEmergency=2\nseverityAlerting=1\nseverityCritical=0\nseverityError=2\n"
    "severityWarning=1\nseverityNotice=0\nseverityInformation=2\nseverityDebug=1\n"
    "severityUnknown=2\n";

}  // namespace

class PopupViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        applyAppearance(*qApp);
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void ratesTheEventByTheFirstSeverityNamed_data() {
        QTest::addColumn<QString>("preferences");
        QTest::addColumn<QString>("priority");
        QTest::addColumn<int>("level");
        const QString stored = QString::fromLatin1(kStoredLevels);
        const std::array severities{"Emergency", "Alert",         "Critical", "Error", "Warning",
                                    "Notice",    "Informational", "Debug",    "Other"};
        const std::array storedLevels{2, 1, 0, 2, 1, 0, 2, 1, 2};
        const std::array defaults{2, 2, 2, 1, 1, 1, 0, 0, 0};
        for (std::size_t i = 0; i < severities.size(); ++i) {
            const QString priority = "Local7."_L1 + QLatin1StringView(severities[i]);
            QTest::addRow("stored %s", severities[i]) << stored << priority << storedLevels[i];
            QTest::addRow("named %s", severities[i])
                << stored + "AppName=anything\n"_L1 << priority << defaults[i];
            QTest::addRow("nothing %s", severities[i]) << QString() << priority << 0;
        }
        QTest::newRow("two names") << stored << u"Emergency.Debug"_s << 2;
        QTest::newRow("two names, later first") << stored << u"Debug.Alert"_s << 1;
        QTest::newRow("empty name") << u"AppName=\n"_s << u"Kern.Alert"_s << 2;
    }
    void ratesTheEventByTheFirstSeverityNamed() {
        QFETCH(const QString, preferences);
        QFETCH(const QString, priority);
        QFETCH(const int, level);
        AlertFixture it;
        it.preferences.write("Quorbel.ini", preferences.toStdString());
        const auto window = it.popup(it.event(priority.toStdString()));
        QCOMPARE(window->contentView().level(), level);
    }

    void showsImageAndStripOfTheLevel_data() {
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("image");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("Normal") << 0 << u"Normal"_s << QColor(79, 191, 38);
        QTest::newRow("Moderate") << 1 << u"Moderate"_s << QColor(255, 204, 0);
        QTest::newRow("Severe") << 2 << u"Severe"_s << QColor(204, 0, 0);
        QTest::newRow("unknown level") << 3 << QString() << QColor(Qt::black);
    }
    void showsImageAndStripOfTheLevel() {
        QFETCH(const int, level);
        QFETCH(const QString, image);
        QFETCH(const QColor, colour);
        AlertFixture it;
        it.preferences.write("Quorbel.ini", "severityAlerting=" + std::to_string(level) + "\n");
        const auto window = it.popup(it.event("Kern.Alert"));
        window->contentView().setDetails();

        const QImage wanted = severityIcon(image).pixmap(QSize(40, 40)).toImage();
        QCOMPARE(imageOf(*window), wanted);
        const QImage drawn = window->contentView().grab().toImage();
        auto &title = child<PopupViewTitle>(*window, "popupTitle");
        QCOMPARE(title.mapTo(window.get(), QPoint()), QPoint());
        QCOMPARE(title.width(), window->width());
        for (const QPoint place : {QPoint(0, 0), QPoint(0, 21), QPoint(drawn.width() - 1, 0),
                                   QPoint(drawn.width() - 1, 21), QPoint(40, 10)}) {
            QCOMPARE(drawn.pixelColor(place), colour);
        }
        QVERIFY(drawn.pixelColor(40, 23) != colour);
    }

    void writesTheTitleEightPixelsRightOfTheCentre() {
        AlertFixture it;
        const auto window = it.popup(it.event("Kern.Alert"));
        const QImage strip = window->contentView().grab().toImage().copy(0, 0, window->width(), 22);
        const QColor background = strip.pixelColor(0, 0);
        QRect text;
        for (int y = 0; y < strip.height(); ++y) {
            for (int x = 0; x < strip.width(); ++x) {
                if (strip.pixelColor(x, y) != background) {
                    text |= QRect(x, y, 1, 1);
                }
            }
        }
        QVERIFY(std::abs(text.center().x() - (strip.width() / 2 + 8)) <= 2);
        QVERIFY(text.bottom() <= 16);
        QVERIFY(text.width() > 60 && text.width() < 120);
    }

    void showsHeader_data() {
        QTest::addColumn<QString>("priority");
        QTest::addColumn<QString>("header");
        QTest::newRow("usual") << u"Local7.Warning"_s << u"Warning"_s;
        QTest::newRow("point first") << u".Warning"_s << u".Warning"_s;
        QTest::newRow("short facility") << u"x.Warning"_s << u"Warning"_s;
        QTest::newRow("two points") << u"a.b.c"_s << u"b.c"_s;
        QTest::newRow("point last") << u"Local7."_s << QString();
        QTest::newRow("no point") << u"Warning"_s << u"Warning"_s;
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("markup") << u"a.<b>x</b>"_s << u"<b>x</b>"_s;
        QTest::newRow("unseen") << u"a.\u202Egninraw"_s << u"<U+202E>gninraw"_s;
    }
    void showsHeader() {
        QFETCH(const QString, priority);
        QFETCH(const QString, header);
        AlertFixture it;
        const auto window = it.popup(it.event(priority.toStdString()));
        window->contentView().setDetails();
        const auto &label = child<QLabel>(*window, "popupHeader");
        QCOMPARE(label.text(), header);
        QCOMPARE(label.textFormat(), Qt::PlainText);
    }

    void showsDetailsAsPlainText() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning", "<b>up</b>, and\nrunning"));
        window->show();
        QCOMPARE(child<QPlainTextEdit>(*window, "popupDetails").toPlainText(),
                 u"Date: 1700000000\nPriority: Local7.Warning\nHost: 10.0.0.1\n\n"
                 "Message:\n<b>up</b>, and\nrunning"_s);
        QVERIFY(child<QLabel>(*window, "popupAbout")
                    .text()
                    .contains("Learn more about this event..."_L1));
    }

    void marksWhatASenderHides() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning", "user \u202Etoor\u2028in"));
        window->show();
        QVERIFY(child<QPlainTextEdit>(*window, "popupDetails")
                    .toPlainText()
                    .endsWith(u"\n\nMessage:\nuser <U+202E>toor<U+2028>in"_s));
    }

    void showsAnEventWithoutFields() {
        AlertFixture it;
        const auto window = it.popup({it.list, it.list.insertRaw({})});
        window->show();
        QCOMPARE(child<QPlainTextEdit>(*window, "popupDetails").toPlainText(),
                 u"Date: \nPriority: \nHost: \n\nMessage:\n"_s);
        QCOMPARE(child<QLabel>(*window, "popupHeader").text(), QString());
    }

    void keepsItsSizeAndLaysOutLittleWhateverTheEvent() {
        AlertFixture it;
        const auto usual = it.popup(it.event("Local7.Warning"));
        const auto large = it.popup(it.event("Local7." + std::string(3000, 'W'),
                                             std::string(100000, 'x') + std::string(500, '\n')));
        large->contentView().setDetails();
        QCOMPARE(large->size(), usual->size());
        QCOMPARE(large->contentView().minimumSizeHint().expandedTo(usual->size()), usual->size());
        const QTextDocument &details = *child<QPlainTextEdit>(*large, "popupDetails").document();
        QVERIFY(details.characterCount() < 100'000 && details.begin().length() < 10'000);
    }

    /// One popup's whole life: where it stands, how it grows and shrinks, and how long it takes.
    void growsStaysShrinksAndCloses() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"), 1);
        const QSize size = window->size();
        // What a desktop was set up to; it takes a moment to be so.
        if (const QByteArray area = qgetenv("QUORBEL_TEST_AREA"); !area.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(visibleArea(), area, kPatienceMs);
        }
        const QRect visible = QGuiApplication::primaryScreen()->availableGeometry();
        const auto condition = window->contentView().condition();
        QElapsedTimer time;
        time.start();
        window->show();
        QVERIFY(window->height() <= 30);
        int previous = 0;
        bool grew = true;
        // A window manager moves a window and sizes it one after the other.
        const int slack = QGuiApplication::platformName() == "offscreen"_L1 ? 0 : 1;
        QRect misplaced;
        qint64 openSince = 0;
        qint64 shrinksSince = 0;
        while (window->isVisible() && time.elapsed() < kPatience.count()) {
            const QRect place = window->geometry();
            grew = grew && (openSince != 0 || place.height() >= previous);
            previous = place.height();
            if (place.width() != size.width() || place.left() != visible.width() - size.width() ||
                std::abs(place.bottom() - visible.bottom()) > slack) {
                misplaced = place;
            }
            QCOMPARE(window->contentView().geometry(), QRect(QPoint(), size));
            if (place.size() == size) {
                openSince = openSince == 0 ? time.elapsed() : openSince;
            } else if (openSince != 0 && shrinksSince == 0) {
                shrinksSince = time.elapsed();
            }
            QTest::qWait(5);
        }
        const qint64 total = time.elapsed();
        QVERIFY(grew);
        QCOMPARE(misplaced, QRect());
        QVERIFY(!window->isVisible());
        QVERIFY2(openSince >= 900, qPrintable(QString::number(openSince)));
        QVERIFY2(shrinksSince >= 1900, qPrintable(QString::number(shrinksSince)));
        QVERIFY2(total >= 2900, qPrintable(QString::number(total)));
        QCOMPARE(window->height(), 1);
        QVERIFY(isSignalled(*condition));
    }

    void staysForAsLongAsATimerCanWait_data() {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<int>("milliseconds");
        constexpr int kLongest = std::numeric_limits<int>::max() / 1000 * 1000;
        QTest::newRow("a minute") << qint64{60} << 60'000;
        QTest::newRow("24 days") << qint64{kLongest / 1000} << kLongest;
        // In 32 bits: less than nothing, and less than a second.
        QTest::newRow("35 days") << qint64{3'000'000} << kLongest;
        QTest::newRow("50 days") << qint64{4'294'968} << kLongest;
        QTest::newRow("for ever") << std::numeric_limits<qint64>::max() << kLongest;
    }
    void staysForAsLongAsATimerCanWait() {
        QFETCH(const qint64, seconds);
        QFETCH(const int, milliseconds);
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"), seconds);
        window->show();
        const auto *timer = window->contentView().findChild<QTimer *>();
        QTRY_VERIFY_WITH_TIMEOUT(timer->isActive(), kPatienceMs);
        QCOMPARE(timer->interval(), milliseconds);
    }

    void signalsItsConditionOnlyOnceItCloses() {
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        const auto other = it.popup(it.event("Local7.Warning"));
        window->show();
        other->show();
        const auto condition = window->contentView().condition();
        const auto othersCondition = other->contentView().condition();
        QVERIFY(condition != othersCondition);
        QVERIFY(!othersCondition->isSignalled());
        other->close();
        QVERIFY(othersCondition->isSignalled());
        QVERIFY(isSignalled(*othersCondition));
        QVERIFY(!condition->isSignalled());
    }

    void signalsItsConditionWhenItIsDestroyed() {
        AlertFixture it;
        auto window = it.popup(it.event("Local7.Warning"));
        const auto condition = window->contentView().condition();
        window.reset();
        QVERIFY(isSignalled(*condition));
    }

    void takesNoFocus() {
        QLineEdit field;
        field.show();
        field.activateWindow();
        field.setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&field));
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QVERIFY(window->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
        QVERIFY(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(window->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(window->testAttribute(Qt::WA_ShowWithoutActivating));
        if (QGuiApplication::platformName() == "offscreen"_L1) {
            QSKIP("This platform activates every window.");
        }
        // Time for the window manager to do what it should not.
        QTRY_COMPARE_WITH_TIMEOUT(window->height(), window->contentView().height(), kPatienceMs);
        QVERIFY(field.isActiveWindow());
        QTest::keyClicks(&field, u"typed"_s);
        QCOMPARE(field.text(), u"typed"_s);
        for (const QWidget *control : window->findChildren<QWidget *>()) {
            QVERIFY2(!control->hasFocus(), qPrintable(control->objectName()));
        }
    }

    void isANotificationToTheDesktop() {
        if (QGuiApplication::platformName() != "xcb"_L1) {
            QSKIP("This platform has no types of windows.");
        }
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QProcess xprop;
        xprop.start(u"xprop"_s,
                    {u"-id"_s, QString::number(window->winId()), u"_NET_WM_WINDOW_TYPE"_s});
        QVERIFY(xprop.waitForFinished(kPatienceMs));
        // The first is the one that counts.
        const QByteArray types = xprop.readAllStandardOutput().simplified();
        QVERIFY2(types.startsWith("_NET_WM_WINDOW_TYPE(ATOM) = _NET_WM_WINDOW_TYPE_NOTIFICATION"),
                 types.constData());
    }

    void opensTheEventAndStillCloses() {
        AlertFixture it;
        const Event event = it.event("Local7.Warning");
        const auto window = it.popup(event, 1);
        window->show();
        QTRY_COMPARE_WITH_TIMEOUT(window->height(), window->contentView().height(), kPatienceMs);
        QTest::mouseClick(&child<QLabel>(*window, "popupAbout"), Qt::LeftButton);
        QPointer<EventSheetStandIn> sheet = shown<EventSheetStandIn>();
        QVERIFY(sheet != nullptr);
        QVERIFY(sheet->hideButtons);
        QCOMPARE(sheet->dict->id(), event.id());

        // Asked for again, the same one comes up.
        window->contentView().popupAbout();
        int sheets = 0;
        for (const QWidget *widget : QApplication::topLevelWidgets()) {
            sheets += dynamic_cast<const EventSheetStandIn *>(widget) != nullptr ? 1 : 0;
        }
        QCOMPARE(sheets, 1);

        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kPatienceMs);
        QVERIFY(sheet != nullptr && sheet->isVisible());
        sheet->close();
        QTRY_VERIFY_WITH_TIMEOUT(sheet.isNull(), kPatienceMs);
    }

    void theEventsSheetStandsAboveThePopup() {
        if (QGuiApplication::platformName() == "offscreen"_L1) {
            QSKIP("This platform has no stack of windows.");
        }
        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"));
        window->show();
        QTRY_COMPARE_WITH_TIMEOUT(window->height(), window->contentView().height(), kPatienceMs);
        const QPoint place = window->geometry().center();
        QTRY_COMPARE_WITH_TIMEOUT(QApplication::topLevelAt(place), window.get(), kPatienceMs);
        window->contentView().popupAbout();
        const QPointer<EventSheetStandIn> sheet = shown<EventSheetStandIn>();
        sheet->setFixedSize(window->size());
        sheet->move(window->pos());
        QTRY_COMPARE_WITH_TIMEOUT(QApplication::topLevelAt(place), sheet.data(), kPatienceMs);
        delete sheet;
    }

    void theEventsSheetIsModalToAllWindows() {
        QPushButton other;
        int clicks = 0;
        connect(&other, &QAbstractButton::clicked, this, [&clicks] { ++clicks; });
        other.resize(200, 100);
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&other));
        // Through the window, as a hand does it: there, modality counts.
        const auto click = [&other] {
            QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, QPoint(20, 20));
        };
        click();
        QCOMPARE(clicks, 1);

        AlertFixture it;
        const auto window = it.popup(it.event("Local7.Warning"), 1);
        window->show();
        window->contentView().popupAbout();
        const QPointer<EventSheetStandIn> sheet = shown<EventSheetStandIn>();
        QVERIFY(sheet != nullptr);
        QCOMPARE(QApplication::activeModalWidget(), sheet.data());
        click();
        QCOMPARE(clicks, 1);
        QVERIFY(sheet->windowFlags().testFlag(Qt::WindowStaysOnTopHint));

        // The popup's time goes on all the same.
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kPatienceMs);
        QVERIFY(isSignalled(*window->contentView().condition()));
        QVERIFY(sheet != nullptr && sheet->isVisible());
        click();
        QCOMPARE(clicks, 1);
        sheet->close();
        click();
        QCOMPARE(clicks, 2);
        QTRY_VERIFY_WITH_TIMEOUT(sheet.isNull(), kPatienceMs);
    }
};

QTEST_MAIN(PopupViewTest)
#include "PopupViewTest.moc"
