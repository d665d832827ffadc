#include "platform/gui/Appearance.h"
#include "platform/gui/Icons.h"
#include "platform/gui/Page.h"
#include "platform/gui/RowTableView.h"
#include "platform/gui/ViewBar.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

namespace quorbel {

using namespace Qt::StringLiterals;

namespace {

QImage drawn(const QIcon &icon, int size) {
    return icon.pixmap(QSize(size, size)).toImage().convertToFormat(QImage::Format_ARGB32);
}

/// The parts that an image covers, whatever their colours.
QImage shape(const QIcon &icon) {
    return drawn(icon, 48).convertToFormat(QImage::Format_Alpha8);
}

int differingPixels(const QImage &one, const QImage &other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const int difference = qAlpha(one.pixel(x, y)) - qAlpha(other.pixel(x, y));
            count += std::abs(difference) > 128 ? 1 : 0;
        }
    }
    return count;
}

bool isClose(const QColor &one, const QColor &other) {
    constexpr int kTolerance = 3;
    return std::abs(one.red() - other.red()) <= kTolerance &&
           std::abs(one.green() - other.green()) <= kTolerance &&
           std::abs(one.blue() - other.blue()) <= kTolerance;
}

class PlainPage : public Page {
public:
    void viewDidLoad() override { setWhiteBackground(); }
};

}  // namespace

class AppearanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QPalette dark(Qt::black);
        QApplication::setPalette(dark);
        applyAppearance(*qApp);
    }

    void aTableShowsWhereTheFocusIs() {
        QWidget window;
        RowTableView table(&window);
        QLineEdit field(&window);
        table.setGeometry(0, 0, 300, 200);
        field.setGeometry(0, 210, 300, 40);
        window.resize(300, 250);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const auto edge = [&table] { return table.grab().toImage().pixelColor(0, 100); };
        field.setFocus();
        const QColor without = edge();
        table.setFocus();
        QVERIFY(table.hasFocus());
        QVERIFY2(isClose(edge(), QColor(0x00, 0x66, 0xcc)), qPrintable(edge().name()));
        field.setFocus();
        QCOMPARE(edge(), without);
    }

    void theLookIsLightOnADarkDesktop() {
        QCOMPARE(QApplication::palette().color(QPalette::Base), QColor(Qt::white));
        QVERIFY(QApplication::palette().color(QPalette::Text).lightness() < 80);
        QVERIFY(qApp->styleSheet().contains("QPushButton"_L1));
        QVERIFY(!qApp->styleSheet().contains(QRegularExpression("@[a-z]"_L1)));
        QVERIFY(!QApplication::windowIcon().isNull());
    }

    void aPagesBackgroundIsWhite() {
        PlainPage page;
        page.viewDidLoad();
        page.resize(40, 40);
        QCOMPARE(page.grab().toImage().pixelColor(20, 20), QColor(Qt::white));
    }

    void titlesFollowTheFontSize() {
        QLabel title;
        title.setProperty("role", "title"_L1);
        title.ensurePolished();
        QVERIFY(title.font().pointSizeF() > 1.5 * QApplication::font().pointSizeF());
    }

    void everySeverityImageHasAShapeOfItsOwn() {
        const QStringList names{"Normal"_L1, "Moderate"_L1, "Severe"_L1};
        for (const QString &one : names) {
            QVERIFY(QFile::exists(":/images/%1.svg"_L1.arg(one)));
            for (const QString &other : names) {
                if (one != other) {
                    QVERIFY(differingPixels(shape(severityIcon(one)), shape(severityIcon(other))) >
                            100);
                }
            }
        }
        QVERIFY(severityIcon({}).isNull());
        QVERIFY(severityIcon("normal"_L1).isNull());
    }

    void everyLineDrawingIsDrawn() {
        const QStringList files = QDir(":/images"_L1).entryList({"icon-*.svg"_L1});
        QVERIFY(files.size() >= 11);
        for (const QString &file : files) {
            const QIcon icon = lineIcon(file.mid(5).chopped(4));
            QImage empty(48, 48, QImage::Format_ARGB32);
            empty.fill(Qt::transparent);
            QVERIFY2(differingPixels(drawn(icon, 48), empty) > 50, qPrintable(file));
        }
        QVERIFY(lineIcon("no such drawing"_L1).isNull());
    }

    void lineDrawingsTakeTheColourOfTheirState_data() {
        QTest::addColumn<QIcon::Mode>("mode");
        QTest::addColumn<QIcon::State>("state");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("normal") << QIcon::Normal << QIcon::Off << QColor(0x44, 0x50, 0x5f);
        QTest::newRow("on") << QIcon::Normal << QIcon::On << QColor(0x00, 0x66, 0xcc);
        QTest::newRow("disabled") << QIcon::Disabled << QIcon::Off << QColor(0xb3, 0xbb, 0xc5);
        QTest::newRow("selected") << QIcon::Selected << QIcon::Off << QColor(Qt::white);
    }
    void lineDrawingsTakeTheColourOfTheirState() {
        QFETCH(QIcon::Mode, mode);
        QFETCH(QIcon::State, state);
        QFETCH(QColor, colour);
        const QImage image = lineIcon("remove"_L1).pixmap(QSize(48, 48), mode, state).toImage();
        QVERIFY(isClose(image.pixelColor(24, 24), colour));
    }

    void aLineDrawingCanHaveAColourOfItsOwn() {
        QVERIFY(isClose(drawn(lineIcon("remove"_L1, Qt::red), 48).pixelColor(24, 24), Qt::red));
    }

    void iconsAreSharpOnFineScreens() {
        QPixmap fine(64, 64);
        fine.setDevicePixelRatio(2);
        fine.fill(Qt::transparent);
        QPainter painter(&fine);
        lineIcon("home"_L1).paint(&painter, QRect(0, 0, 32, 32));
        painter.end();
        QCOMPARE(fine.toImage().convertToFormat(QImage::Format_ARGB32), [&] {
            QImage expected = drawn(lineIcon("home"_L1), 64);
            expected.setDevicePixelRatio(2);
            return expected;
        }());
    }

    void theBlueBarRunsFromEdgeToEdge() {
        ViewBar bar;
        bar.resize(400, 20);
        const QImage image = bar.grab().toImage();
        QVERIFY(isClose(image.pixelColor(0, 10), QColor::fromRgbF(0.0F, 0.40F, 0.80F)));
        QVERIFY(isClose(image.pixelColor(200, 0), QColor::fromRgbF(0.20F, 0.60F, 0.90F)));
        QVERIFY(isClose(image.pixelColor(399, 19), QColor::fromRgbF(0.40F, 0.80F, 1.0F)));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::AppearanceTest)
#include "AppearanceTest.moc"
