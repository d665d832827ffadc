#include "export/ToolsViewExport.h"
#include "support/SettingsPage.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

namespace {

/// The four keys, as far as they are there, in the order in which a new document gets them.
Dictionary document(const Value &textInterval, const Value &databaseInterval,
                    const Value &textLocation, const Value &databaseLocation) {
    Dictionary settings{{"textInterval", textInterval}, {"databaseInterval", databaseInterval}};
    for (const auto &[key, location] :
         {std::pair("textLocation", &textLocation), {"databaseLocation", &databaseLocation}}) {
        if (location->string() != nullptr) {
            settings.set(key, *location);
        }
    }
    return settings;
}

constexpr Null kNone;

}  // namespace

class ToolsViewExportTest : public QObject {
    Q_OBJECT

private:
    void show() { m_page->show("page"); }
    void show(const Dictionary &settings) {
        m_page->write(settings);
        show();
    }
    // What an export's controls show: the box, the interval, the stepper, the file, and whether
    // they are enabled.
    QString state(const QByteArray &kind) {
        const bool enabled = m_page->isEnabled(kind + "Interval");
        for (const char *control : {"IntervalStepper", "Location", "Browse"}) {
            if (m_page->isEnabled(kind + control) != enabled) {
                return u"partly enabled"_s;
            }
        }
        const QString interval = m_page->text(kind + "Interval");
        const int stepper = m_page->control<QSpinBox>(kind + "IntervalStepper").value();
        if (!interval.isEmpty() && interval.toInt() != stepper) {
            return u"another value in the stepper"_s;
        }
        return u"%1 %2 '%3' %4"_s.arg(
            m_page->isChecked(kind == "text" ? "exportText" : "exportDatabase") ? u"on"_s
                                                                                : u"off"_s,
            interval.isEmpty() ? u"-"_s : interval, m_page->text(kind + "Location"),
            enabled ? u"enabled"_s : u"disabled"_s);
    }
    QString save() {
        m_page->click("saveButton");
        return m_page->savedText();
    }
    // Saves, whether or not the button is enabled, as it is after a click that changes nothing.
    QString saveUntouched() {
        dynamic_cast<ToolsViewExport &>(m_page->page()).onSave();
        return m_page->savedText();
    }
    static QString text(const Value &value) { return toQString(textOf(value)); }
    QFileDialog *panel() { return m_page->page().findChild<QFileDialog *>(u"filePanel"_s); }
    void openPanel(const QByteArray &button) {
        m_page->click(button);
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
    }
    void press(QDialogButtonBox::StandardButton button) {
        const auto *buttons = panel()->findChild<QDialogButtonBox *>(u"buttonBox"_s);
        QTest::mouseClick(buttons->button(button), Qt::LeftButton);
        QTRY_VERIFY(panel() == nullptr);
    }

    std::unique_ptr<SettingsPage> m_page;

private Q_SLOTS:
    void init() {
        m_page = std::make_unique<SettingsPage>();
        m_page->storyboard.add(
            u"page"_s, [this] { return std::make_unique<ToolsViewExport>(m_page->delegate()); });
    }
    void cleanup() { m_page.reset(); }

    void showsAndSaves_data() {
        QTest::addColumn<Dictionary>("stored");
        QTest::addColumn<QString>("textState");
        QTest::addColumn<QString>("databaseState");
        QTest::addColumn<Dictionary>("saved");
        const QString off = u"off - '' disabled"_s;
        QTest::newRow("both") << document(10, 60, "/t.txt", "/d.db") << u"on 10 '/t.txt' enabled"_s
                              << u"on 60 '/d.db' enabled"_s << document(10, 60, "/t.txt", "/d.db");
        QTest::newRow("neither") << document(0, 0, kNone, kNone) << off << off
                                 << document(0, 0, kNone, kNone);
        QTest::newRow("locations kept")
            << document(0, 0, "/t.txt", "/d.db") << off << off << document(0, 0, "/t.txt", "/d.db");
        QTest::newRow("text without a file")
            << document(10, 0, "", kNone) << off << off << document(0, 0, "", kNone);
        QTest::newRow("text without a location")
            << document(10, 0, kNone, kNone) << off << off << document(0, 0, kNone, kNone);
        QTest::newRow("text off, database on")
            << document(0, 60, "/t.txt", "/d.db") << off << u"on - '' disabled"_s
            << document(0, 0, "/t.txt", "/d.db");
        QTest::newRow("text without a file, database on")
            << document(10, 60, "", "/d.db") << off << u"on - '' disabled"_s
            << document(0, 0, "", "/d.db");
        QTest::newRow("text on, database off")
            << document(10, 0, "/t.txt", "/d.db") << u"on 10 '/t.txt' enabled"_s
            << u"off - '' enabled"_s << document(10, 0, "/t.txt", "/d.db");
        QTest::newRow("text on, database without a file")
            << document(10, 60, "/t.txt", "") << u"on 10 '/t.txt' enabled"_s
            << u"off - '' enabled"_s << document(10, 60, "/t.txt", "");
        QTest::newRow("numbers of other kinds")
            << document(10.9, true, "/t.txt", "/d.db") << u"on 10 '/t.txt' enabled"_s
            << u"on 1 '/d.db' enabled"_s << document(10, 1, "/t.txt", "/d.db");
        QTest::newRow("texts for numbers") << document("10", "60", "/t.txt", "/d.db") << off << off
                                           << document(0, 0, "/t.txt", "/d.db");
    }
    void showsAndSaves() {
        QFETCH(Dictionary, stored);
        QFETCH(QString, textState);
        QFETCH(QString, databaseState);
        QFETCH(Dictionary, saved);
        // What was shown before leaves no traces.
        show(document(30, 40, "/before.txt", "/before.db"));
        show(stored);
        QVERIFY(!m_page->isEnabled("saveButton"));
        QCOMPARE(state("text"), textState);
        QCOMPARE(state("database"), databaseState);
        QCOMPARE(saveUntouched(), text(saved));
        QCOMPARE(m_page->mainWindow.selected, std::vector{Tab::kTools});
    }

    void isWhite() {
        show();
        QCOMPARE(m_page->page().palette().color(QPalette::Window), QColor(Qt::white));
    }

    void showsIntervalsBeyondTheLimits() {
        show(document(5000, -3, "/t.txt", "/d.db"));
        QCOMPARE(m_page->text("textInterval"), u"5000"_s);
        QCOMPARE(m_page->text("databaseInterval"), u"-3"_s);
        QCOMPARE(saveUntouched(), text(document(5000, -3, "/t.txt", "/d.db")));
    }

    void locationsOfOtherTypesReadAsNone() {
        for (const Value &wrong : {Value(5), Value(Array{"/t"}), Value(Null{}), Value(true)}) {
            show({{"textInterval", 5}, {"textLocation", wrong}, {"databaseLocation", wrong}});
            QCOMPARE(state("text"), u"off - '' disabled"_s);
            QCOMPARE(saveUntouched(), text(document(0, 0, kNone, kNone)));
        }
    }

    void withoutADocumentTheFirstSaveHoldsTheFourKeys() {
        show();
        m_page->click("exportText");
        QCOMPARE(state("text"), u"on 5 '' enabled"_s);
        QCOMPARE(state("database"), u"off - '' disabled"_s);
        QVERIFY(m_page->isEnabled("saveButton"));
        m_page->type("textLocation", u"/t.txt"_s);
        m_page->click("exportDatabase");
        QCOMPARE(state("database"), u"on 5 '' enabled"_s);
        m_page->type("databaseLocation", u"/any name"_s);
        QCOMPARE(save(), text(document(5, 5, "/t.txt", "/any name")));
    }

    void aLocationThatWasNeverSetStaysAbsent() {
        show();
        m_page->click("exportText");
        QCOMPARE(save(), text(document(5, 0, kNone, kNone)));
    }

    void otherKeysPassUnchanged() {
        const Dictionary stored{{"databaseLocation", "/d.db"}, {"unknown", Data{"\1"}},
                                {"textInterval", 10},          {"real", 2.5},
                                {"textLocation", "/t.txt"},    {"list", Array{1, Null{}, true}},
                                {"databaseInterval", 60}};
        show(stored);
        const QString saved = saveUntouched();
        QCOMPARE(saved, text(stored));
    }

    void switchingTheTextExportOffKeepsItsLocation() {
        show(document(10, 60, "/t.txt", "/d.db"));
        m_page->click("exportText");
        QCOMPARE(state("text"), u"off - '' disabled"_s);
        // The database's controls follow with the next click on their own box.
        QCOMPARE(state("database"), u"on 60 '/d.db' enabled"_s);
        QVERIFY(m_page->isEnabled("saveButton"));
        QCOMPARE(save(), text(document(0, 60, "/t.txt", "/d.db")));
    }

    void switchingTheTextExportOnAgainOffersFiveMinutes() {
        show(document(10, 0, "/t.txt", kNone));
        m_page->click("exportText");
        m_page->click("exportText");
        QCOMPARE(state("text"), u"on 5 '' enabled"_s);
        QCOMPARE(m_page->control<QLineEdit>("textLocation").placeholderText(), u"/t.txt"_s);
        QCOMPARE(save(), text(document(5, 0, "/t.txt", kNone)));
    }

    void theDatabaseControlsFollowTheTextBox() {
        show(document(10, 60, "/t.txt", "/d.db"));
        // Whatever its own box shows, they are on with 5 minutes while the text box is checked.
        m_page->click("exportDatabase");
        QCOMPARE(state("database"), u"off 5 '/d.db' enabled"_s);
        m_page->click("exportDatabase");
        QCOMPARE(state("database"), u"on 5 '/d.db' enabled"_s);
        m_page->click("exportText");
        QCOMPARE(state("database"), u"on 5 '/d.db' enabled"_s);
        m_page->click("exportDatabase");
        QCOMPARE(state("database"), u"off - '' disabled"_s);
        m_page->click("exportDatabase");
        QCOMPARE(state("database"), u"on - '' disabled"_s);
        QCOMPARE(save(), text(document(0, 0, "/t.txt", "/d.db")));
    }

    void aDatabaseExportThatIsOffCanBeEditedWhileTheTextExportIsOn() {
        show(document(10, 0, "/t.txt", kNone));
        m_page->type("databaseInterval", u"7"_s);
        m_page->type("databaseLocation", u"/d.db"_s);
        QVERIFY(!m_page->isChecked("exportDatabase"));
        QCOMPARE(save(), text(document(10, 7, "/t.txt", "/d.db")));
    }

    void editedIntervalsAreSaved() {
        show(document(10, 60, "/t.txt", "/d.db"));
        m_page->type("textInterval", u"15"_s);
        QVERIFY(m_page->isEnabled("saveButton"));
        QCOMPARE(state("text"), u"on 15 '/t.txt' enabled"_s);
        QCOMPARE(save(), text(document(15, 60, "/t.txt", "/d.db")));
        show();
        for (const char *stepper : {"textIntervalStepper", "databaseIntervalStepper"}) {
            QVERIFY(!m_page->isEnabled("saveButton"));
            auto &spinBox = m_page->control<QSpinBox>(stepper);
            QTest::keyClick(&spinBox, Qt::Key_Up);
            QVERIFY2(m_page->isEnabled("saveButton"), stepper);
            QCOMPARE(save(), text(stepper[0] == 't' ? document(11, 60, "/t.txt", "/d.db")
                                                    : document(10, 61, "/t.txt", "/d.db")));
            show();
        }
        m_page->type("databaseInterval", u"1440"_s);
        QTest::keyClick(&m_page->control("databaseIntervalStepper"), Qt::Key_Up);
        m_page->type("textInterval", {});
        QCOMPARE(save(), text(document(0, 1440, "/t.txt", "/d.db")));
    }

    void typedLocationsAreSaved() {
        show(document(10, 60, "/t.txt", "/d.db"));
        m_page->type("databaseLocation", u"/new folder/ü.sqlite"_s);
        QVERIFY(m_page->isEnabled("saveButton"));
        m_page->type("textLocation", {});
        QCOMPARE(save(), text(document(10, 60, "", "/new folder/ü.sqlite")));
        m_page->write(document(10, 60, "", "/new folder/ü.sqlite"));
        show();
        QCOMPARE(state("text"), u"off - '' disabled"_s);
    }

    void browseChoosesTheFile_data() {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QStringList>("extensions");
        QTest::newRow("text") << QByteArray("text")
                              << u"Please select text file location with 'txt' or 'csv' "
                                 u"extensions:"_s
                              << QStringList{u"txt"_s, u"csv"_s};
        QTest::newRow("database") << QByteArray("database")
                                  << u"Please select database file location with 'db' extension:"_s
                                  << QStringList{u"db"_s};
    }
    void browseChoosesTheFile() {
        QFETCH(QByteArray, kind);
        QFETCH(QString, message);
        QFETCH(QStringList, extensions);
        const std::string folder = m_page->library().string();
        show(document(10, 60, folder + "/old.csv", folder + "/old.db"));
        const QString old = m_page->text(kind + "Location");
        openPanel(kind + "Browse");
        QCOMPARE(panel()->findChild<QLabel *>(u"filePanelMessage"_s)->text(), message);
        QCOMPARE(panel()->acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(panel()->directory().path(), toQString(folder));
        QCOMPARE(panel()->nameFilters().size(), extensions.size());
        for (qsizetype i = 0; i < extensions.size(); ++i) {
            QVERIFY(panel()->nameFilters().at(i).contains(u"(*.%1)"_s.arg(extensions.at(i))));
        }
        QCOMPARE(panel()->findChild<QLineEdit *>(u"fileNameEdit"_s)->text(),
                 u"old."_s + extensions.last());
        QVERIFY(panel()->selectedNameFilter().contains(extensions.last()));
        press(QDialogButtonBox::Cancel);
        QCOMPARE(m_page->text(kind + "Location"), old);
        QVERIFY(!m_page->isEnabled("saveButton"));
        openPanel(kind + "Browse");
        panel()->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(u"new"_s);
        press(QDialogButtonBox::Save);
        const QString chosen = toQString(folder) + u"/new."_s + extensions.last();
        QCOMPARE(m_page->text(kind + "Location"), chosen);
        QVERIFY(m_page->isEnabled("saveButton"));
        m_page->click("saveButton");
        QCOMPARE(toQString(settingText(m_page->saved(), kind.toStdString() + "Location").value()),
                 chosen);
    }

    void browseOffersANameWhereThereIsNone_data() {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<QString>("name");
        QTest::newRow("text") << QByteArray("text") << u"Quorbel events.txt"_s;
        QTest::newRow("database") << QByteArray("database") << u"Quorbel events.db"_s;
    }
    void browseOffersANameWhereThereIsNone() {
        QFETCH(QByteArray, kind);
        QFETCH(QString, name);
        show(document(0, 0, kNone, kNone));
        m_page->click("exportText");
        m_page->click("exportDatabase");
        openPanel(kind + "Browse");
        QCOMPARE(panel()->findChild<QLineEdit *>(u"fileNameEdit"_s)->text(), name);
        press(QDialogButtonBox::Cancel);
        QCOMPARE(m_page->text(kind + "Location"), QString());
    }

    void cancelDropsTheChanges() {
        const Dictionary stored = document(10, 60, "/t.txt", "/d.db");
        show(stored);
        auto &link = dynamic_cast<SettingsPageLink &>(m_page->page());
        link.parentTab = Tab::kEvents;
        m_page->click("exportText");
        m_page->type("databaseLocation", u"/other"_s);
        m_page->click("onCancel");
        QCOMPARE(m_page->mainWindow.selected, std::vector{Tab::kEvents});
        show();
        QCOMPARE(state("text"), u"on 10 '/t.txt' enabled"_s);
        QCOMPARE(state("database"), u"on 60 '/d.db' enabled"_s);
        QVERIFY(!m_page->isEnabled("saveButton"));
        QVERIFY(m_page->nothingWasSent());
    }

    void theKeyboardSaves() {
        show(document(10, 60, "/t.txt", "/d.db"));
        m_page->page().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m_page->page()));
        QTest::keyClick(&m_page->page(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(m_page->nothingWasSent());  // nothing was changed
        m_page->type("textInterval", u"11"_s);
        QTest::keyClick(&m_page->page(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(m_page->mainWindow.selected, std::vector{Tab::kTools});
        QCOMPARE(m_page->savedText(), text(document(11, 60, "/t.txt", "/d.db")));
    }

    void tabVisitsTheControlsInOrder() {
        show(document(10, 60, "/t.txt", "/d.db"));
        m_page->click("exportText");
        m_page->click("exportText");
        QWidget &page = m_page->page();
        m_page->control("exportText").setFocus();
        QStringList order;
        for (int i = 0; i < 20 && !order.contains(u"saveButton"_s); ++i) {
            QTest::keyClick(page.focusWidget(), Qt::Key_Tab);
            order += page.focusWidget()->objectName();
        }
        QCOMPARE(order.join(u' '),
                 u"textInterval textLocation textBrowse exportDatabase databaseInterval "
                 u"databaseLocation databaseBrowse onCancel saveButton"_s);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ToolsViewExportTest)
#include "ToolsViewExportTest.moc"
#include "common/SettingsDocument.h"
