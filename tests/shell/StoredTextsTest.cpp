#include "SampleLibrary.h"
#include "common/SettingsDocument.h"
#include "platform/KeyedArchive.h"
#include "platform/gui/Language.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/TableExport.h"
#include "support/FrontEnd.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"
#include "support/ValueText.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

#include <memory>
#include <string>

namespace quorbel {

using namespace Qt::StringLiterals;

namespace {

/// The real window over the same settings, worked by the names of its controls alone.
class Window : public testing::FrontEnd {
public:
    QWidget &show(const char *page) const {
        control<QStackedWidget>("tabView").setCurrentWidget(&control<QWidget>(page));
        QCoreApplication::processEvents();
        return control<QWidget>(page);
    }
    void click(const char *name) const {
        auto &button = control<QAbstractButton>(name);
        QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(8, button.height() / 2));
    }
    void clickIn(const char *sheet, const char *name) const {
        QTest::mouseClick(control<QWidget>(sheet).findChild<QAbstractButton *>(QLatin1String(name)),
                          Qt::LeftButton);
    }
    void choose(const char *name, int item) const {
        auto &chooser = control<QComboBox>(name);
        QTest::keyClick(&chooser, Qt::Key_Home);
        for (int i = 0; i < item; ++i) {
            QTest::keyClick(&chooser, Qt::Key_Down);
        }
    }
    void type(const char *name, const char *text) const {
        auto &field = control<QLineEdit>(name);
        field.clear();
        QTest::keyClicks(&field, QLatin1String(text));
    }
    void clickRow(const char *table, int row) const {
        auto &view = control<QTableView>(table);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                          view.visualRect(view.model()->index(row, 0)).center());
    }

    /// What each control of a page or sheet is set to, without the words that it says it with.
    static QStringList stateOf(const QWidget &view) {
        QStringList states;
        for (const auto *button : view.findChildren<QAbstractButton *>()) {
            states += button->objectName() + (button->isChecked() ? u": on"_s : u": off"_s) +
                      (button->isEnabled() ? QString() : u", disabled"_s);
        }
        for (const auto *chooser : view.findChildren<QComboBox *>()) {
            states += chooser->objectName() + u": "_s + QString::number(chooser->currentIndex());
        }
        for (const auto *field : view.findChildren<QLineEdit *>()) {
            states += field->objectName() + u": "_s + field->text();
        }
        return states;
    }
};

/// What one language made of the same settings, and of the same work on them.
struct Outcome {
    QStringList states;
    std::vector<std::string> documents;  ///< that were saved, as they are stored
    QString severityOfAFilter;
};

void addFilter(const Window &window) {
    window.click("includeFiltersAdd");
    window.type("filterName", "Kernels");
    window.choose("filterFacility", 1);
    window.choose("filterSeverity", 4);
    window.clickIn("filterView", "onSave");
    window.click("excludeFiltersAdd");  // with "Any" for both
    window.clickIn("filterView", "onSave");
    window.clickRow("excludeFiltersTable", 0);
    window.click("excludeFiltersEdit");
    window.clickIn("filterView", "onSave");
}

void workOnOptions(const Window &window, Outcome &outcome) {
    const QWidget &page = window.show("ToolsViewOptions");
    outcome.states += Window::stateOf(page);
    const auto &filters = window.control<QTableView>("excludeFiltersTable");
    outcome.severityOfAFilter = filters.model()->index(0, 3).data().toString();
    window.click("popupErrorDisplay");
    window.click("popupErrorDisplay");
    window.click("popupDebugDisplay");
    window.click("popupEventsPlay");
    window.click("popupEventsPlay");
    window.click("popupNoticePlay");
    window.choose("severityWarning", 2);
    window.choose("removalErrorUnits", 3);
    window.click("definedDateFormat");
    window.choose("userTimeFormat", 2);
    addFilter(window);
    window.click("saveButton");
}

void workOnActions(const Window &window, Outcome &outcome) {
    QWidget &page = window.show("ToolsViewActions");
    window.clickRow("actionsTable", 1);
    window.click("actionsEdit");
    outcome.states += Window::stateOf(window.control<QWidget>("actionView"));
    window.click("actionEventText");
    outcome.states += Window::stateOf(window.control<QWidget>("commandEvent"));
    window.choose("eventType", 4);
    window.clickIn("commandEvent", "onSave");
    window.clickIn("actionView", "onSave");
    QTest::mouseClick(page.findChild<QAbstractButton *>(u"saveButton"_s), Qt::LeftButton);
}

void workOnMailServer(const Window &window, Outcome &outcome) {
    window.show("ToolsViewActions");
    for (const int security : {0, 2}) {
        window.click("emailServer");
        outcome.states += Window::stateOf(window.control<QWidget>("emailServer"));
        window.choose("serverSecurity", security);
        window.clickIn("emailServer", "onSave");
        QTRY_VERIFY(!window.control<QWidget>("emailServer").isVisible());
    }
}

}  // namespace

/// What is stored does not depend on the language in which it was chosen.
class StoredTextsTest : public QObject {
    Q_OBJECT

private:
    static Outcome work() {
        const testing::TemporaryFolder library;
        writeSample(Sample::kBad, library);
        qputenv("QUORBEL_LIBRARY", library.path().c_str());
        const testing::PrivateBus bus;
        const testing::ServiceStandIn service;
        Outcome outcome;
        {
            const Window window;
            workOnOptions(window, outcome);
            workOnActions(window, outcome);
            workOnMailServer(window, outcome);
        }
        for (const Dictionary &command : service.waitForCommands(4)) {
            outcome.documents.push_back(writeKeyedArchive(command));
        }
        return outcome;
    }

private Q_SLOTS:
    void isTheSameInEachLanguage() {
        const Outcome english = work();
        useLanguageOf(QLocale(QLocale::German));
        QCOMPARE(languageInUse(), u"de"_s);
        const Outcome german = work();
        QCOMPARE(english.severityOfAFilter, u"Notice"_s);
        QCOMPARE(german.severityOfAFilter, u"Hinweis"_s);
        QCOMPARE(german.states, english.states);
        QCOMPARE(english.documents.size(), 4U);
        QVERIFY(german.documents == english.documents);
    }

    void anExportHasTheSameHeadingsInEachLanguage() {
        QCOMPARE(languageInUse(), u"de"_s);
        const testing::TemporaryFolder folder;
        writeSample(Sample::kBad, folder);
        qputenv("QUORBEL_LIBRARY", folder.path().c_str());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
        const Window window;
        const auto &table = *window.show("ScanView").findChild<QTableView *>(u"tableView"_s);
        QCOMPARE(table.model()->headerData(0, Qt::Horizontal).toString(), u"Bewertung"_s);
        const QString path = QString::fromStdString((folder.path() / "events.csv").string());
        const auto row = [&table](std::size_t number) {
            return table.model()->index(static_cast<int>(number), 0);
        };
        QVERIFY(exportTable(path, *table.model(), {1, row}, nullptr));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readLine().trimmed(), QByteArray("Rating,Date,Priority,Host,Message"));
        QVERIFY(file.readLine().startsWith("Severe,"));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::StoredTextsTest)
#include "StoredTextsTest.moc"
