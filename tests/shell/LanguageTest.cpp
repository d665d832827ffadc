#include "SampleLibrary.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/RowTableView.h"
#include "platform/gui/Sheet.h"
#include "support/FrontEnd.h"
#include "support/PseudoLanguage.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocumentFragment>

#include <memory>
#include <set>

namespace quorbel {

using namespace Qt::StringLiterals;

namespace {

/// What is shown as it is in every language.
const QStringList &untranslated() {
    static const QStringList all{
        // The program's name, and signs on buttons.
        u"Quorbel"_s, u"Aa"_s,
        // Facilities and the ways to secure a connection, as they are stored; patterns of dates.
        u"(Kern|User|Mail|Daemon|Auth|Syslog|Lpr|News|Uucp|Cron|Authpriv|Ftp|Ntp|Audit|Console|Clock)"_s,
        u"Local\\d"_s, u"STARTTLS"_s, u"SSL TLS"_s, u"[yMdHhms]+( [yMdHhms]+)+( AM PM)?"_s,
        // A host of the log, with its share.
        u"core sw1( \\d+)?"_s,
        // Examples for what is typed.
        u"NAME value"_s, u"name example com"_s,
        // Keys, which Qt translates; numbers, and log files, which are called after their days.
        u"((Ctrl|Alt|Shift|Home|Return|Up|Down|Del|PgUp|PgDown|F1|[A-Z]) )*(Ctrl|Alt|Shift|Home|Return|Up|Down|Del|F1|[A-Z])"_s,
        u"[\\d ]+"_s,
        // The settings' files, and the version.
        u"Library Quorbel export events (txt|db)"_s,
        QString::fromLatin1(QUORBEL_VERSION).replace(u'.', u' ')};
    return all;
}

bool isTranslated(const QString &text) {
    static const QRegularExpression allowed(
        QRegularExpression::anchoredPattern(u"("_s + untranslated().join(u'|') + u")?"_s));
    const QString plain =
        Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
    return allowed.match(testing::PseudoLanguage::outside(plain)).hasMatch();
}

/// What Qt puts into its own dialogs.
bool isQts(const QWidget &widget) {
    return widget.objectName().startsWith("qt_"_L1) ||
           (qobject_cast<const QFileDialog *>(widget.window()) != nullptr &&
            widget.objectName() != "filePanelMessage"_L1);
}

}  // namespace

/// The real window in a language in which each text that was not translated can be seen.
class LanguageTest : public QObject {
    Q_OBJECT

private:
    void check(const QObject &owner, const char *what, const QString &text) {
        if (!isTranslated(text)) {
            m_found.insert(owner.objectName() + u' ' +
                           QLatin1StringView(owner.metaObject()->className()) + u' ' +
                           QLatin1StringView(what) + u": "_s + text);
        }
    }
    void checkControl(const QWidget &widget) {
        if (const auto *label = qobject_cast<const QLabel *>(&widget)) {
            check(widget, "text", label->text());
        } else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget)) {
            check(widget, "text", button->text());
        } else if (const auto *box = qobject_cast<const QGroupBox *>(&widget)) {
            check(widget, "title", box->title());
        } else if (const auto *chooser = qobject_cast<const QComboBox *>(&widget)) {
            check(widget, "placeholder", chooser->placeholderText());
            for (int item = 0; item < chooser->count(); ++item) {
                check(widget, "item", chooser->itemText(item));
            }
        } else if (const auto *field = qobject_cast<const QLineEdit *>(&widget)) {
            check(widget, "placeholder", field->placeholderText());
        } else if (const auto *text = qobject_cast<const QPlainTextEdit *>(&widget)) {
            check(widget, "placeholder", text->placeholderText());
        }
    }
    void checkTable(const QAbstractItemView &view) {
        if (const auto *table = qobject_cast<const RowTableView *>(&view)) {
            check(view, "hint", table->hint());
        }
        const QAbstractItemModel *model = view.model();
        if (model == nullptr || qobject_cast<const QTableView *>(&view) == nullptr) {
            return;
        }
        for (int column = 0; column < model->columnCount(); ++column) {
            check(view, "column", model->headerData(column, Qt::Horizontal).toString());
        }
    }
    void checkWidget(const QWidget &widget) {
        if (isQts(widget)) {
            return;
        }
        check(widget, "window title", widget.isWindow() ? widget.windowTitle() : QString());
        check(widget, "tool tip", widget.toolTip());
        check(widget, "accessible name", widget.accessibleName());
        check(widget, "accessible description", widget.accessibleDescription());
        checkControl(widget);
        if (const auto *view = qobject_cast<const QAbstractItemView *>(&widget)) {
            checkTable(*view);
        }
    }
    void checkAction(const QAction &action) {
        check(action, "command", action.text());
        check(action, "tool tip", action.toolTip());
    }
    /// All windows, with what is folded away or hidden in them.
    void checkAll() {
        for (const QWidget *widget : QApplication::allWidgets()) {
            checkWidget(*widget);
            for (const QAction *action : widget->actions()) {
                if (!isQts(*widget)) {
                    checkAction(*action);
                }
            }
        }
    }
    /// Fails with all texts that were found.
    void report() {
        const QStringList texts(m_found.begin(), m_found.end());
        m_found.clear();
        QVERIFY2(texts.isEmpty(), qPrintable(u'\n' + texts.join(u'\n')));
    }
    QWidget &show(const char *page) const {
        auto &view = m_frontEnd->control<QWidget>(page);
        m_frontEnd->control<QStackedWidget>("tabView").setCurrentWidget(&view);
        QCoreApplication::processEvents();
        return view;
    }
    Sheet *openOver(QWidget &presenter, const char *identifier) const {
        auto *sheet = dynamic_cast<Sheet *>(
            m_frontEnd->storyboard.instantiate(QLatin1String(identifier)).release());
        sheet->presentOver(&presenter);
        QCoreApplication::processEvents();
        return sheet;
    }
    void click(const char *name) const {
        QTest::mouseClick(&m_frontEnd->control<QAbstractButton>(name), Qt::LeftButton);
        QCoreApplication::processEvents();
    }
    static void closePopup() {
        if (QWidget *popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    }

    testing::PseudoLanguage m_language;
    testing::TemporaryFolder m_library;
    std::unique_ptr<testing::FrontEnd> m_frontEnd;
    std::set<QString> m_found;

private Q_SLOTS:
    void initTestCase() {
        QCoreApplication::installTranslator(&m_language);
        applyAppearance(*qApp);
        writeSample(Sample::kBad, m_library);
        qputenv("QUORBEL_LIBRARY", m_library.path().c_str());
        qputenv("XDG_CONFIG_HOME", m_library.path().c_str());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
        m_frontEnd = std::make_unique<testing::FrontEnd>();
        QVERIFY(QTest::qWaitForWindowExposed(m_frontEnd->window.get()));
    }
    void cleanup() {
        closePopup();
        for (QDialog *dialog : m_frontEnd->window->findChildren<QDialog *>()) {
            dialog->close();
        }
        for (Sheet *sheet : m_frontEnd->window->findChildren<Sheet *>()) {
            sheet->close();
        }
        QTRY_VERIFY(m_frontEnd->window->findChildren<Sheet *>().isEmpty());
    }
    void cleanupTestCase() { m_frontEnd.reset(); }

    void aTextThatIsNotTranslatedIsSeen() {
        QVERIFY(!isTranslated(u"Delete"_s));
        QVERIFY(!isTranslated(u"[Dèlètè ~~]: Severe"_s));
        QVERIFY(!isTranslated(u"<p>[Dèlètè] all</p>"_s));
        QVERIFY(isTranslated(u"[Dèlètè ~~] (Ctrl+D)"_s));
        QVERIFY(isTranslated(u"<p>[Dèlètè]</p>"_s));
    }

    void thePages_data() {
        QTest::addColumn<QString>("page");
        for (const char *page :
             {"HomeView", "ScanView", "ReportsView", "ToolsView", "ToolsViewOptions",
              "ToolsViewActions", "ToolsViewExport", "HostsView"}) {
            QTest::newRow(page) << QString::fromLatin1(page);
        }
    }
    void thePages() {
        show(QTest::currentDataTag());
        checkAll();
        report();
    }

    void theSheets_data() {
        QTest::addColumn<QString>("presenter");
        QTest::newRow("aboutView") << u"HomeView"_s;
        QTest::newRow("eventView") << u"ScanView"_s;
        QTest::newRow("filterView") << u"ToolsViewOptions"_s;
        QTest::newRow("actionView") << u"ToolsViewActions"_s;
        QTest::newRow("emailServer") << u"ToolsViewActions"_s;
        QTest::newRow("emailFormat") << u"ToolsViewActions"_s;
        QTest::newRow("emailTest") << u"ToolsViewActions"_s;
    }
    void theSheets() {
        QFETCH(QString, presenter);
        openOver(show(qPrintable(presenter)), QTest::currentDataTag());
        checkAll();
        report();
    }

    void whatAFilterSaysOfItsHosts() {
        const Sheet *sheet = openOver(show("ToolsViewOptions"), "filterView");
        auto &address = *sheet->findChild<QLineEdit *>(u"filterIP"_s);
        auto &mask = *sheet->findChild<QLineEdit *>(u"filterMask"_s);
        for (const char *one :
             {"10.0.0.0/8", "10.0.0.1/32", "10.0.0.1/40", "10.0.0.1/0", "x/8", "fe80::/10"}) {
            const QStringList parts = QString::fromLatin1(one).split(u'/');
            address.setText(parts[0]);
            mask.setText(parts[1]);
            checkAll();
        }
        report();
    }

    void theSheetsOfTheActionEditor() {
        Sheet *editor = openOver(show("ToolsViewActions"), "actionView");
        for (const char *sheet : {"commandRun", "commandEmail", "commandEvent"}) {
            openOver(*editor, sheet);
            checkAll();
        }
        report();
    }

    void theAboutSheetsTexts() {
        const Sheet *about = openOver(show("HomeView"), "aboutView");
        for (const QTextEdit *text : about->findChildren<QTextEdit *>()) {
            check(*text, "content", text->toPlainText());
        }
        report();
    }

    void theFilterBarWithItsPopUps() {
        show("ScanView");
        QTest::keyClicks(&m_frontEnd->control<QLineEdit>("findText"), u"("_s);
        for (const char *name : {"findRegex", "timelineToggle", "holdEvents"}) {
            click(name);
            checkAll();
            click(name);
        }
        auto &field = m_frontEnd->control<QLineEdit>("findText");
        field.clear();
        QTest::keyClicks(&field, u"99.99"_s);
        QTest::keyClick(&field, Qt::Key_Return);
        QTest::keyClicks(&field, u"10"_s);
        QTRY_VERIFY(m_frontEnd->control<QAbstractButton>("findWithout").isVisible());
        checkAll();
        for (const char *name : {"findHost", "findSpan", "findSeverity", "findFacility"}) {
            click(name);
            checkAll();
            closePopup();
        }
        click("findClear");
        report();
    }

    void theQuestions() {
        show("ScanView");
        click("findSaved");
        const auto &list = m_frontEnd->control<QAbstractItemView>("findSavedList");
        QTRY_VERIFY(!list.model()
                         ->index(list.model()->rowCount() - 1, 0)
                         .data(Qt::AccessibleTextRole)
                         .toString()
                         .contains("counting"_L1));
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            check(list, "title", list.model()->index(row, 0).data().toString());
            check(list, "spoken",
                  list.model()->index(row, 0).data(Qt::AccessibleTextRole).toString());
        }
        for (const char *menu : {"findSavedMark", "findSavedMore"}) {
            click(menu);
            checkAll();
            QApplication::activePopupWidget()->close();
        }
        report();
    }

    void theQuestionsBeforeDeletion() {
        show("ScanView");
        click("deleteEvents");
        QTRY_VERIFY(m_frontEnd->window->findChild<QDialog *>(u"alertBox"_s) != nullptr);
        checkAll();
        report();
    }

    void theMenuOverARow() {
        show("ScanView");
        auto &table = *m_frontEnd->control<QWidget>("ScanView").findChild<QTableView *>();
        table.selectRow(1);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {5, 5},
                                table.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&table, &event);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
        checkAll();
        report();
    }

    void aReport() {
        show("ReportsView");
        auto &kinds = m_frontEnd->control<QComboBox>("reportName");
        QTest::keyClick(&kinds, Qt::Key_Down);
        click("reportDisplay");
        const auto &table = *m_frontEnd->control<QWidget>("ReportsView").findChild<QTableView *>();
        QTRY_VERIFY(table.model()->rowCount() > 0);
        checkAll();
        report();
    }

    void theFilePanel() {
        openFilePanel(m_frontEnd->window.get(),
                      {.message = {},
                       .extensions = {u"txt"_s},
                       .folder = {},
                       .name = u"x.txt"_s,
                       .save = true},
                      {});
        const auto *panel = m_frontEnd->window->findChild<QFileDialog *>(u"filePanel"_s);
        QVERIFY(panel != nullptr);
        for (const QString &filter : panel->nameFilters()) {
            check(*panel, "filter", filter.section(u'(', 0, 0));
        }
        report();
    }

    void thePopup() {
        const auto popup = m_frontEnd->storyboard.instantiate(u"popupWindow"_s);
        QVERIFY(popup != nullptr);
        checkAll();
        report();
    }

    void theHelpWindow() {
        m_frontEnd->window->Help();
        const auto *help = m_frontEnd->window->findChild<QWidget *>(u"helpWindow"_s);
        QVERIFY(help != nullptr || !QApplication::topLevelWidgets().isEmpty());
        checkAll();
        report();
    }
};

}  // namespace quorbel

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(QUORBEL_VERSION));
    quorbel::LanguageTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "LanguageTest.moc"
