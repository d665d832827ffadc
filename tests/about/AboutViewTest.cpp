#include "about/AboutView.h"
#include "platform/gui/Appearance.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QPointer>
#include <QProcess>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>

#include <memory>

namespace quorbel {

class AboutViewTest : public QObject {
    Q_OBJECT

private:
    static QString name(const char *text) { return QLatin1String(text); }
    /// Shows a new sheet over the window; it deletes itself.
    void open(const std::string &machine) { open(new AboutView(machine)); }
    void open(AboutView *sheet) {
        m_sheet = sheet;
        m_sheet->viewDidLoad();
        m_sheet->presentOver(m_window.get());
        QVERIFY(QTest::qWaitForWindowExposed(m_sheet));
    }
    QTextEdit &text(const char *control) { return *m_sheet->findChild<QTextEdit *>(name(control)); }
    QAbstractButton &button(const char *control) {
        return *m_sheet->findChild<QAbstractButton *>(name(control));
    }
    /// The colour in a corner of a text area, inside its frame.
    QColor background(const char *control) {
        const QRect place = text(control).geometry();
        return m_sheet->grab().toImage().pixelColor(place.bottomRight() - QPoint(8, 8));
    }
    QColor sheetColour() { return m_sheet->grab().toImage().pixelColor(3, 3); }

private Q_SLOTS:
    void initTestCase() { applyAppearance(*qApp); }
    void init() {
        m_window = std::make_unique<QWidget>();
        m_window->resize(800, 600);
        m_window->show();
    }
    void cleanup() { m_window.reset(); }

    void saysTheVersionAndTheDisclaimer() {
        open("x86_64");
        QCOMPARE(m_sheet->objectName(), name("aboutView"));
        const QStringList lines = text("infoText").toPlainText().split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 5);
        QCOMPARE(lines[0], name("Quorbel Version: 1.1"));
        QCOMPARE(lines[1], QString());
        QCOMPARE(lines[2], name("LIMITED WARRANTY"));
        QCOMPARE(lines[3], QString(21, QLatin1Char('-')));
        QCOMPARE(lines[4], lines[4].toUpper());
        QVERIFY(lines[4].size() > 100);
        QVERIFY(text("infoText").isReadOnly());
    }

    void theWarningsFirstWordIsBold() {
        open("x86_64");
        QTextEdit &warning = text("warningText");
        QVERIFY(warning.toPlainText().startsWith(name("Warning:")));
        QVERIFY(warning.isReadOnly());
        for (int at = 0; at < warning.toPlainText().size(); ++at) {
            QTextCursor cursor(warning.document());
            cursor.setPosition(at + 1);  // the format is that of the character in front
            const QTextCharFormat format = cursor.charFormat();
            QCOMPARE(format.fontWeight(), at < 8 ? int{QFont::Bold} : int{QFont::Normal});
            QCOMPARE(format.fontPointSize(), 11.0);
            QCOMPARE(format.foreground().color(), QColor::fromRgbF(0.33F, 0.33F, 0.33F));
        }
    }

    void theTextsHaveTheWindowsColourOnOneMachineOnly() {
        open("x86_64");
        QCOMPARE(background("infoText"), sheetColour());
        QCOMPARE(background("warningText"), sheetColour());
        m_sheet->close();
        for (const char *other : {"arm64", "aarch64", "x86_64h", ""}) {
            open(other);
            QVERIFY2(background("infoText") != sheetColour(), other);
            QVERIFY2(background("warningText") != sheetColour(), other);
            m_sheet->close();
        }
    }

    void theMachineIsTheOneThatRuns() {
        QProcess uname;
        uname.start(name("uname"), {name("-m")});
        QVERIFY(uname.waitForFinished());
        const QString machine = QString::fromLocal8Bit(uname.readAllStandardOutput()).trimmed();
        QVERIFY(!machine.isEmpty());
        QCOMPARE(QString::fromStdString(AboutView::runningMachine()), machine);
        open(new AboutView);
        QCOMPARE(background("infoText") == sheetColour(), machine == name("x86_64"));
    }

    void theInformationReplacesAndTheWarningIsAppended() {
        m_sheet = new AboutView("x86_64");
        m_sheet->viewDidLoad();
        m_sheet->viewWillAppear();
        const QString information = text("infoText").toPlainText();
        const QString warning = text("warningText").toPlainText();
        text("infoText").setPlainText(name("an old text"));
        text("warningText").setPlainText(name("An old text. "));
        m_sheet->viewWillAppear();
        QCOMPARE(text("infoText").toPlainText(), information);
        QCOMPARE(text("warningText").toPlainText(), name("An old text. ") + warning);
        m_sheet->viewWillAppear();
        QCOMPARE(text("infoText").toPlainText(), information);
        QCOMPARE(text("warningText").toPlainText(), name("An old text. ") + warning + warning);
        delete m_sheet;
    }

    void theLinkIsUnderlinedAndOpensTheWebPage() {
        open("x86_64");
        QVERIFY(button("webLink").font().underline());
        QDesktopServices::setUrlHandler(name("https"), this, "openUrl");
        QTest::mouseClick(&button("webLink"), Qt::LeftButton);
        QDesktopServices::unsetUrlHandler(name("https"));
        QCOMPARE(m_opened, QUrl(name("https://www.halvern.example/quorbel")));
        QVERIFY(m_sheet->isVisible());
    }

    void closes() {
        open("x86_64");
        QTest::mouseClick(&button("onClose"), Qt::LeftButton);
        QTRY_VERIFY(m_sheet.isNull());
    }

public Q_SLOTS:
    void openUrl(const QUrl &url) { m_opened = url; }

private:
    std::unique_ptr<QWidget> m_window;
    QPointer<AboutView> m_sheet;
    QUrl m_opened;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::AboutViewTest)
#include "AboutViewTest.moc"
