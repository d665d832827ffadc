#include "common/Severity.h"
#include "core/AppState.h"
#include "home/HomeView.h"
#include "home/HomeViewBar.h"
#include "home/RatingFrame.h"
#include "home/ShownHomeView.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"

#include <QApplication>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;
using testing::ShownHomeView;

namespace {

int distance(const QColor &one, const QColor &other) {
    return std::max({std::abs(one.red() - other.red()), std::abs(one.green() - other.green()),
                     std::abs(one.blue() - other.blue())});
}

QString counterName(const SeverityClass &severity) {
    return "events"_L1 + toQString(severity.keyPart);
}

}  // namespace

class HomeViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() { m_home = std::make_unique<ShownHomeView>(); }
    void cleanup() { m_home.reset(); }

    void ratingsAreShown_data() {
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("image");
        QTest::addColumn<QColor>("outer");
        QTest::addColumn<QColor>("inner");
        QTest::addColumn<QColor>("bar");
        QTest::newRow("normal") << 0 << "No unwanted or harmful events detected."
                                << "Normal" << QColor::fromRgbF(0.57F, 0.89F, 0.46F)
                                << QColor::fromRgbF(0.78F, 0.95F, 0.73F)
                                << QColor::fromRgbF(0.70F, 0.92F, 0.70F);
        QTest::newRow("moderate") << 1 << "Review potentialy unwanted events."
                                  << "Moderate" << QColor::fromRgbF(0.99F, 0.89F, 0.67F)
                                  << QColor::fromRgbF(0.99F, 0.94F, 0.83F)
                                  << QColor::fromRgbF(0.99F, 0.93F, 0.41F);
        QTest::newRow("severe") << 2 << "Review harmful or potentialy unwanted events."
                                << "Severe" << QColor::fromRgbF(0.98F, 0.73F, 0.76F)
                                << QColor::fromRgbF(0.98F, 0.84F, 0.83F)
                                << QColor::fromRgbF(0.96F, 0.62F, 0.60F);
    }
    void ratingsAreShown() {
        QFETCH(int, level);
        QFETCH(QString, title);
        QFETCH(QString, image);
        QFETCH(QColor, outer);
        QFETCH(QColor, inner);
        QFETCH(QColor, bar);
        m_home->state().iCritical = 1;
        m_home->state().iSeverityCritical = level;
        m_home->show();

        QCOMPARE(m_home->page().severityStatus(), level);
        QCOMPARE(m_home->text("eventsTitle"_L1), title);
        const auto &shown = m_home->control<QLabel>("eventsImage"_L1);
        QCOMPARE(shown.accessibleName(), image);
        QCOMPARE(shown.pixmap().toImage(),
                 severityIcon(image).pixmap(shown.pixmap().size()).toImage());
        compareBorder("eventsBox"_L1, outer);
        compareBorder("eventsInnerBox"_L1, inner);
        compareBar(bar);
    }

    void allCountersZeroAreNormalWhateverTheLevels() {
        for (const auto level : kSeverityLevels) {
            m_home->state().*level = kSevere;
        }
        m_home->show();
        QCOMPARE(m_home->page().severityStatus(), 0);
        QCOMPARE(m_home->text("eventsTitle"_L1), "No unwanted or harmful events detected."_L1);
    }

    void oneDebugAndOneErrorAreModerate() {
        m_home->state().iDebug = 1;
        m_home->state().iError = 1;
        m_home->show();
        QCOMPARE(m_home->page().severityStatus(), 1);
    }

    void aDamagedLevelKeepsThePreviousRating() {
        m_home->state().iError = 1;
        m_home->show();
        m_home->state().iAlert = 1;
        for (const std::int64_t level : {std::int64_t{3}, (std::int64_t{1} << 32) + 2}) {
            m_home->state().iSeverityAlerting = level;
            m_home->page().setEventsStatus();
            QCOMPARE(m_home->page().severityStatus(), 1);
            QCOMPARE(m_home->text("eventsTitle"_L1), "Review potentialy unwanted events."_L1);
            QCOMPARE(m_home->text("eventsAlerting"_L1), "1"_L1);
        }
    }

    void eachCounterHasItsField() {
        std::int64_t count = 100;
        for (const auto counter : kSeverityCounters) {
            m_home->state().*counter = count++;
        }
        m_home->show();
        count = 100;
        for (const SeverityClass &severity : kSeverityClasses) {
            QCOMPARE(m_home->text(counterName(severity)), QString::number(count++));
        }
    }

    void countersAreShownAsPlainIntegers_data() {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << qint64{0} << "0";
        QTest::newRow("negative") << qint64{-1} << "-1";
        QTest::newRow("thousands") << qint64{1234567} << "1234567";
        QTest::newRow("largest") << std::numeric_limits<qint64>::max() << "9223372036854775807";
        QTest::newRow("smallest") << std::numeric_limits<qint64>::min() << "-9223372036854775808";
    }
    void countersAreShownAsPlainIntegers() {
        QFETCH(qint64, count);
        QFETCH(QString, text);
        m_home->state().iNotice = count;
        m_home->show();
        QCOMPARE(m_home->text("eventsNotice"_L1), text);
    }

    void eventsAreKeptCurrentWhileShown() {
        m_home->show();
        m_home->state().iEmergency = 1;
        QCOMPARE(m_home->text("eventsEmergency"_L1), "0"_L1);
        m_home->page().setEventsStatus();
        QCOMPARE(m_home->text("eventsEmergency"_L1), "1"_L1);
        QCOMPARE(m_home->page().severityStatus(), 2);
        compareBar(QColor::fromRgbF(0.96F, 0.62F, 0.60F));
        compareBorder("eventsBox"_L1, QColor::fromRgbF(0.98F, 0.73F, 0.76F));

        m_home->state().iEmergency = 0;
        m_home->page().setEventsStatus();
        QCOMPARE(m_home->text("eventsEmergency"_L1), "0"_L1);
        QCOMPARE(m_home->page().severityStatus(), 0);
        compareBar(QColor::fromRgbF(0.70F, 0.92F, 0.70F));
    }

    void eachAppearanceComputesEverythingAnew() {
        m_home->show();
        m_home->state().iWarning = 7;
        m_home->showAgain();
        QCOMPARE(m_home->text("eventsWarning"_L1), "7"_L1);
        QCOMPARE(m_home->page().severityStatus(), 1);
    }

    void isOnScreenWhileItsWindowIs() {
        QVERIFY(!m_home->page().isOnScreen());
        m_home->show();
        QVERIFY(m_home->page().isOnScreen());
    }

    void theBackgroundIsWhite() {
        m_home->show();
        const QImage image = m_home->page().grab().toImage();
        QCOMPARE(image.pixelColor(2, 2), QColor(Qt::white));
        QCOMPARE(image.pixelColor(image.width() - 3, image.height() - 3), QColor(Qt::white));
    }

    void thePageIsNamedAfterItsClass() {
        QCOMPARE(m_home->page().objectName(), "HomeView"_L1);
        QVERIFY(m_home->page().findChild<HomeViewBar *>("eventsBar"_L1) != nullptr);
    }

    void assistiveToolsReadMeaningAndValue() {
        m_home->state().iAlert = 12;
        m_home->show();
        QCOMPARE(m_home->control("eventsAlerting"_L1).accessibleName(), "Alert: 12"_L1);
        QCOMPARE(m_home->control("statusActions"_L1).accessibleName(),
                 "Actions: Do not use actions"_L1);
        const auto controls = m_home->page().findChildren<QFrame *>();
        for (const QFrame *control : controls) {
            if (!control->objectName().startsWith("statusLine"_L1)) {
                QVERIFY2(!control->accessibleName().isEmpty(), qPrintable(control->objectName()));
            }
        }
    }

    void noTextIsCutInTheSmallestWindow() {
        m_home->state().iEmergency = 1;
        m_home->show();
        QCoreApplication::processEvents();  // lets the layout take in the texts
        const auto labels = m_home->page().findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            const int needed = label->wordWrap() ? label->heightForWidth(label->width())
                                                 : label->sizeHint().height();
            QVERIFY2(label->height() >= needed, qPrintable(label->objectName()));
            QVERIFY2(label->wordWrap() || label->width() >= label->sizeHint().width(),
                     qPrintable(label->objectName()));
        }
    }

    void hugeNumbersAreDrawnWithinTheirField() {
        m_home->show();
        auto &field = m_home->control<QLabel>("eventsUnknown"_L1);
        const QSize before = field.size();
        m_home->state().iUnknown = std::numeric_limits<qint64>::min();
        m_home->page().setEventsStatus();
        QCoreApplication::processEvents();
        QCOMPARE(field.size(), before);
        // The last digit ends before the field does, so its last column stays blank.
        const QImage image = field.grab().toImage();
        for (int y = 0; y < image.height(); ++y) {
            QCOMPARE(distance(image.pixelColor(image.width() - 1, y), Qt::white), 0);
        }
    }

    void countsAreDrawnAsElsewhereInTheWindow() {
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::English));
        m_home->state().iUnknown = 1'234;
        m_home->show();
        auto &field = m_home->control<QLabel>("eventsUnknown"_L1);
        QCOMPARE(field.text(), "1234"_L1);
        QImage expected(field.size(), QImage::Format_RGB32);
        expected.fill(Qt::white);
        QPainter painter(&expected);
        painter.setFont(field.font());
        painter.setPen(field.palette().color(field.foregroundRole()));
        painter.drawText(expected.rect(), static_cast<int>(field.alignment()), "1,234"_L1);
        painter.end();
        const QImage drawn = field.grab().toImage().convertToFormat(QImage::Format_RGB32);
        QLocale::setDefault(before);
        QCOMPARE(drawn, expected);
    }

    void theBarLeavesTheRoundCornersOfItsFrameAlone() {
        m_home->state().iEmergency = 1;
        m_home->show();
        auto &frame = m_home->control<RatingFrame>("eventsInnerBox"_L1);
        QWidget &bar = m_home->control("eventsBar"_L1);
        const QImage withBar = frame.grab().toImage();
        const QRect place(bar.mapTo(&frame, QPoint()), bar.size());
        bar.hide();
        const QImage frameAlone = frame.grab().toImage();
        for (const QPoint corner :
             {place.topLeft(), place.topRight(), place.bottomLeft(), place.bottomRight()}) {
            // Where the bar's corner is, and one pixel around it, the frame draws nothing.
            for (const QPoint around :
                 {QPoint(-1, -1), QPoint(1, -1), QPoint(-1, 1), QPoint(1, 1), QPoint(0, 0)}) {
                QCOMPARE(frameAlone.pixelColor(corner + around), QColor(Qt::white));
            }
        }
        QVERIFY(withBar != frameAlone);
    }

private:
    void compareBorder(const QString &name, const QColor &colour) {
        QWidget &box = m_home->control(name);
        const QImage image = box.grab().toImage();
        const QSize size = image.size();
        QVERIFY(distance(image.pixelColor(size.width() / 2, 0), colour) <= 1);
        QVERIFY(distance(image.pixelColor(size.width() / 2, size.height() - 1), colour) <= 1);
        QVERIFY(distance(image.pixelColor(0, size.height() / 2), colour) <= 1);
        QVERIFY(distance(image.pixelColor(size.width() - 1, size.height() / 2), colour) <= 1);
    }

    // Along the bar's top row, above what stands on it.
    void compareBar(const QColor &start) {
        const QImage image = m_home->control("eventsBar"_L1).grab().toImage();
        const int last = image.width() - 1;
        const QColor middle((start.red() + 255) / 2, (start.green() + 255) / 2,
                            (start.blue() + 255) / 2);
        QVERIFY(distance(image.pixelColor(0, 0), start) <= 2);
        QVERIFY(distance(image.pixelColor(0, image.height() - 1), start) <= 2);
        QVERIFY(distance(image.pixelColor(last / 2, 0), middle) <= 3);
        QVERIFY(distance(image.pixelColor(last, 0), Qt::white) <= 2);
        QVERIFY(distance(image.pixelColor(last, image.height() - 1), Qt::white) <= 2);
    }

    std::unique_ptr<ShownHomeView> m_home;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::HomeViewTest)
#include "HomeViewTest.moc"
