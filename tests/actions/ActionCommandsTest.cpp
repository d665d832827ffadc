#include "actions/ActionsFixture.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

class ActionCommandsTest : public QObject {
    Q_OBJECT

private:
    // Opens the editor of an action that has this reaction, and then the reaction's sheet.
    void open(const QByteArray &link, std::string_view key, const Value &reaction) {
        Dictionary action = m_page->action("one");
        action.set(key, reaction);
        m_page->write({{"actionsArray", Array{action}}});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsEdit");
        m_editor = &dynamic_cast<ActionView &>(*m_page->openSheet());
        m_page->click(link);
        m_sheet = m_page->openSheet();
        QVERIFY(m_sheet != m_editor);
    }
    void openRun(const Value &reaction) { open("actionRunText", "runCommand", reaction); }
    void openEmail(const Value &reaction) { open("actionEmailText", "sendEmail", reaction); }
    void openEvent(const Value &reaction) { open("actionEventText", "setEvent", reaction); }
    // Presses a button, and says what the editor then holds; the sheet must have closed.
    QString after(const QByteArray &button, const Dictionary ActionView::*reaction) {
        m_page->click(button);
        return m_page->openSheet() == m_editor ? asText(m_editor->*reaction) : u"still open"_s;
    }
    QFileDialog *panel() { return m_sheet->findChild<QFileDialog *>(u"filePanel"_s); }

    std::unique_ptr<ActionsPage> m_page;
    ActionView *m_editor = nullptr;
    QDialog *m_sheet = nullptr;

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void runShowsWhatIsThere() {
        openRun(Dictionary{{"Environment", "A=b\nC=d"}, {"Command", "/bin/a b"}});
        QCOMPARE(m_page->text("taskCommand"), u"/bin/a b"_s);
        QCOMPARE(m_page->text("taskArguments"), QString());
        QCOMPARE(m_page->area("taskEnvironment"), u"A=b\nC=d"_s);
        QCOMPARE(m_sheet->focusWidget()->objectName(), u"taskBlank"_s);
        QVERIFY(m_page->isChecked("actionRun"));
    }

    void runSaves_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<QString>("stored");
        QTest::newRow("only a command")
            << "/bin/a"
            << ""
            << ""
            << R"({"Command": "/bin/a", "Arguments": "", "Environment": ""})";
        QTest::newRow("all") << "a"
                             << " b  'c' "
                             << "D=e\nF=\n\nG=ü"
                             << R"({"Command": "a", "Arguments": " b  'c' ", )"
                                "\"Environment\": \"D=e\\nF=\\n\\nG=ü\"}";
        QTest::newRow("a space is a command")
            << " "
            << ""
            << ""
            << R"({"Command": " ", "Arguments": "", "Environment": ""})";
        QTest::newRow("no command") << ""
                                    << "arguments"
                                    << "A=b"
                                    << "{}";
        QTest::newRow("nothing") << ""
                                 << ""
                                 << ""
                                 << "{}";
    }
    void runSaves() {
        QFETCH(QString, command);
        QFETCH(QString, arguments);
        QFETCH(QString, environment);
        QFETCH(QString, stored);
        for (const Dictionary &before :
             {Dictionary{},
              Dictionary{{"Command", "x"}, {"Arguments", "y"}, {"Environment", "z"}}}) {
            openRun(before);
            m_page->type("taskCommand", command);
            m_page->type("taskArguments", arguments);
            m_page->type("taskEnvironment", environment);
            QCOMPARE(after("onSave", &ActionView::runCommand), stored);
            QCOMPARE(m_page->isChecked("actionRun"), stored != u"{}"_s);
            m_page->click("onCancel");
        }
    }

    void runLeavesWhatWasNotTouched_data() {
        QTest::addColumn<QString>("environment");
        QTest::newRow("line feeds") << "A=b\nC=d\n";
        QTest::newRow("CR LF") << "A=b\r\nC=d\r\n";
        QTest::newRow("both, and a lone CR") << "A=b\r\nC=d\nE=f\rG=h";
        QTest::newRow("spaces that do not break") << u"A=b\u00A0c\u2028d"_s;
    }
    void runLeavesWhatWasNotTouched() {
        QFETCH(QString, environment);
        const Dictionary stored{{"more", 1},
                                {"Environment", environment.toStdString()},
                                {"Command", "a"},
                                {"Arguments", "b\nc"}};
        openRun(stored);
        QCOMPARE(after("onSave", &ActionView::runCommand), asText(stored));
        QVERIFY(m_editor->runCommand == stored);
    }

    void changedTextsKeepTheirLineEndsAndSpaces() {
        openRun(Dictionary{{"Command", "a"}, {"Environment", "A=b\u00A0c\r\nD=e"}});
        auto &area = m_page->control<QPlainTextEdit>("taskEnvironment");
        area.moveCursor(QTextCursor::End);
        QTest::keyClick(&area, Qt::Key_Return);
        QTest::keyClicks(&area, u"F=g"_s);
        QTest::keyClick(&area, Qt::Key_Return, Qt::ShiftModifier);
        QTest::keyClicks(&area, u"H=i"_s);
        m_page->click("onSave");
        QCOMPARE(settingText(m_editor->runCommand, "Environment"),
                 "A=b\u00A0c\r\nD=e\r\nF=g\r\nH=i");
    }

    void linesThatWereNotTouchedKeepTheirEnds() {
        openRun(Dictionary{{"Command", "a"}, {"Environment", "A=b\r\nC=d\nE=f\r\n"}});
        auto &area = m_page->control<QPlainTextEdit>("taskEnvironment");
        area.moveCursor(QTextCursor::EndOfLine);
        QTest::keyClicks(&area, u"x"_s);
        m_page->click("onSave");
        QCOMPARE(settingText(m_editor->runCommand, "Environment"), "A=bx\r\nC=d\nE=f\r\n");
        m_page->click("onCancel");
        openEvent(Dictionary{{"Type", "Alert"}, {"Format", "a\nb\r\nc"}});
        QTest::keyClicks(&m_page->control("eventFormat"), u"x"_s);
        m_page->click("onSave");
        QCOMPARE(settingText(m_editor->setEvent, "Format"), "xa\nb\r\nc");
    }

    void runScrollsToTheBeginning() {
        std::string lines;
        for (int i = 0; i < 200; ++i) {
            lines += "NAME=value\n";
        }
        openRun(Dictionary{{"Command", "a"}, {"Environment", lines}});
        auto &area = m_page->control<QPlainTextEdit>("taskEnvironment");
        area.moveCursor(QTextCursor::End);
        QTRY_COMPARE(area.textCursor().position(), 0);
        QCOMPARE(area.verticalScrollBar()->value(), 0);
    }

    void browseReplacesTheCommand() {
        const TemporaryFolder folder;
        const QString program = toQString(folder.write("program", "x").string());
        openRun(Dictionary{{"Command", "old"}});
        m_page->click("browseCommand");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        QCOMPARE(panel()->findChild<QLabel *>(u"filePanelMessage"_s)->text(),
                 u"Please select command file path:"_s);
        QCOMPARE(panel()->directory().path(), u"/usr/bin"_s);
        QCOMPARE(panel()->acceptMode(), QFileDialog::AcceptOpen);
        const auto press = [this](QDialogButtonBox::StandardButton button) {
            QTest::mouseClick(
                panel()->findChild<QDialogButtonBox *>(u"buttonBox"_s)->button(button),
                Qt::LeftButton);
            QTRY_VERIFY(panel() == nullptr);
        };
        press(QDialogButtonBox::Cancel);
        QCOMPARE(m_page->text("taskCommand"), u"old"_s);
        m_page->click("browseCommand");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        panel()->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(program);
        press(QDialogButtonBox::Open);
        QCOMPARE(m_page->text("taskCommand"), program);
    }

    void cancelWritesNothingBack_data() {
        QTest::addColumn<bool>("wasOn");
        QTest::newRow("off") << false;
        QTest::newRow("on") << true;
    }
    void cancelWritesNothingBack() {
        QFETCH(bool, wasOn);
        const Dictionary run = wasOn ? Dictionary{{"Command", "a"}} : Dictionary{};
        openRun(run);
        m_page->type("taskCommand", u"b"_s);
        QCOMPARE(after("onCancel", &ActionView::runCommand), asText(run));
        QCOMPARE(m_page->isChecked("actionRun"), wasOn);
        m_page->click("onCancel");
        const Dictionary email =
            wasOn ? Dictionary{{"Recipients", Array{"a@example.com"}}} : Dictionary{};
        openEmail(email);
        m_page->type("recipientEmail", u"b"_s);
        m_page->click("addRecipient");
        QCOMPARE(after("onCancel", &ActionView::sendEmail), asText(email));
        QCOMPARE(m_page->isChecked("actionEmail"), wasOn);
        m_page->click("onCancel");
        const Dictionary event =
            wasOn ? Dictionary{{"Type", "Alert"}, {"Format", "f"}} : Dictionary{};
        openEvent(event);
        m_page->type("eventFormat", u"g"_s);
        QCOMPARE(after("onCancel", &ActionView::setEvent), asText(event));
        QCOMPARE(m_page->isChecked("actionEvent"), wasOn);
    }

    void emailShowsAndStoresTheRecipientsInTheirOrder() {
        openEmail(
            Dictionary{{"more", 1}, {"Recipients", Array{"z@example.com", "a@example.com", 5}}});
        QCOMPARE(m_page->rows("recipientsTable"), u"z@example.com|a@example.com"_s);
        QCOMPARE(m_sheet->focusWidget()->objectName(), u"recipientBlank"_s);
        QVERIFY(!m_page->isEnabled("addRecipient"));
        for (const QString &recipient : {u"x"_s, u"x"_s}) {
            m_page->type("recipientEmail", recipient);
            m_page->click("addRecipient");
        }
        m_page->clickRow("recipientsTable", 0);
        m_page->click("removeRecipient");
        QCOMPARE(after("onSave", &ActionView::sendEmail),
                 R"({"more": 1, "Recipients": ["a@example.com", "x", "x"]})"_L1);
        QVERIFY(m_page->isChecked("actionEmail"));
    }

    void emailNeedsARecipient() {
        const Dictionary stored{{"Recipients", Array{"a@example.com"}}};
        openEmail(stored);
        m_page->clickRow("recipientsTable", 0);
        m_page->click("removeRecipient");
        m_page->click("onSave");
        auto *alert = dynamic_cast<QMessageBox *>(m_page->openSheet());
        QVERIFY(alert != nullptr);
        QCOMPARE(alert->windowTitle(), u"Quorbel"_s);
        QCOMPARE(alert->text(), u"No recipients selected"_s);
        QCOMPARE(alert->informativeText(), u"Please add recipients and try again."_s);
        m_page->click("alertButton0");
        QCOMPARE(m_page->openSheet(), m_sheet);
        QVERIFY(m_editor->sendEmail == stored);
        QCOMPARE(after("onCancel", &ActionView::sendEmail), asText(stored));
        QVERIFY(m_page->isChecked("actionEmail"));
    }

    void eventStartsWithTheFirstType() {
        openEvent(Dictionary{});
        QStringList types;
        const auto &chooser = m_page->control<QComboBox>("eventType");
        for (int i = 0; i < chooser.count(); ++i) {
            types += chooser.itemText(i);
        }
        QCOMPARE(types.join(u' '),
                 u"Emergency Alert Critical Error Warning Notice Informational Debug"_s);
        QCOMPARE(m_page->chosen("eventType"), u"Emergency"_s);
        QCOMPARE(m_page->area("eventFormat"), QString());
        QCOMPARE(m_sheet->focusWidget()->objectName(), u"eventBlank"_s);
    }

    void eventSaves_data() {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("stored");
        QTest::newRow("all") << QByteArray("Notice") << "$host\n$message"
                             << R"({"Type": "Notice", "Format": "$host\n$message"})";
        QTest::newRow("first type") << QByteArray("Emergency") << "x"
                                    << R"({"Type": "Emergency", "Format": "x"})";
        QTest::newRow("no format") << QByteArray("Debug") << ""
                                   << "{}";
    }
    void eventSaves() {
        QFETCH(QByteArray, type);
        QFETCH(QString, format);
        QFETCH(QString, stored);
        for (const Dictionary &before :
             {Dictionary{}, Dictionary{{"Type", "Alert"}, {"Format", "old"}}}) {
            openEvent(before);
            m_page->choose("eventType", type.constData());
            m_page->type("eventFormat", format);
            QCOMPARE(after("onSave", &ActionView::setEvent), stored);
            QCOMPARE(m_page->isChecked("actionEvent"), stored != u"{}"_s);
            m_page->click("onCancel");
        }
    }

    void eventLeavesWhatWasNotTouched() {
        const Dictionary stored{{"Format", "a\r\nb"}, {"more", true}, {"Type", "Debug"}};
        openEvent(stored);
        QCOMPARE(m_page->chosen("eventType"), u"Debug"_s);
        QCOMPARE(after("onSave", &ActionView::setEvent), asText(stored));
    }

    void anUnknownTypeIsShownAndStays() {
        for (const char *type : {"Unheard of", "warning", ""}) {
            openEvent(Dictionary{{"Type", type}, {"Format", "x"}});
            QCOMPARE(m_page->chosen("eventType"), QLatin1StringView(type));
            m_page->type("eventFormat", u"y"_s);
            const Dictionary expected{{"Type", type}, {"Format", "y"}};
            QCOMPARE(after("onSave", &ActionView::setEvent), asText(expected));
            m_page->click("onCancel");
        }
    }

    void otherTypesReadAsEmpty() {
        openRun(Dictionary{{"Command", 5}, {"Arguments", true}, {"Environment", Array{}}});
        QCOMPARE(m_page->text("taskCommand") + m_page->text("taskArguments") +
                     m_page->area("taskEnvironment"),
                 QString());
        QVERIFY(m_page->isChecked("actionRun"));
        QCOMPARE(after("onSave", &ActionView::runCommand), u"{}"_s);
        m_page->click("onCancel");
        openEmail(Dictionary{{"Recipients", "a@example.com"}});
        QCOMPARE(m_page->rows("recipientsTable"), QString());
        m_page->click("onCancel");
        m_page->click("onCancel");
        openEvent(Dictionary{{"Type", 5}, {"Format", 5}});
        QCOMPARE(m_page->chosen("eventType"), u"Emergency"_s);
        QCOMPARE(m_page->area("eventFormat"), QString());
    }

    void theReactionsReachTheDocument() {
        m_page->show();
        m_page->click("automaticActionsAdd");
        m_page->click("actionRun");
        m_page->type("taskCommand", u"/bin/true"_s);
        m_page->click("onSave");
        m_page->click("actionEmail");
        m_page->type("recipientEmail", u"a@example.com"_s);
        m_page->click("addRecipient");
        m_page->click("onSave");
        m_page->click("actionEvent");
        m_page->type("eventFormat", u"$message"_s);
        m_page->click("onSave");
        m_page->click("onSave");
        m_page->click("saveButton");
        const Dictionary action = m_page->action(
            "New Action", {{"Command", "/bin/true"}, {"Arguments", ""}, {"Environment", ""}},
            {{"Recipients", Array{"a@example.com"}}},
            {{"Type", "Emergency"}, {"Format", "$message"}});
        QCOMPARE(m_page->savedText(), asText(Dictionary{{"actionsArray", Array{action}}}));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ActionCommandsTest)
#include "ActionCommandsTest.moc"
#include "common/SettingsDocument.h"
