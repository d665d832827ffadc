#include "actions/ActionsFixture.h"

#include <QSlider>

#include <limits>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

namespace {

const Dictionary kServer{{"actionsEmailPort", 465},
                         {"actionsEmailTimeout", 4},
                         {"actionsEmailServer", "mail.example.com"},
                         {"actionsEmailSender", "quorbel@example.com"},
                         {"actionsEmailUsername", "user"},
                         {"actionsEmailPassword", "\uFEFF pass wörd "},
                         {"actionsEmailSecurity", "SSL/TLS"}};

const Dictionary kEmptyServer{{"actionsEmailPort", 25},        {"actionsEmailTimeout", 1},
                              {"actionsEmailServer", ""},      {"actionsEmailSender", ""},
                              {"actionsEmailUsername", ""},    {"actionsEmailPassword", ""},
                              {"actionsEmailSecurity", "None"}};

}  // namespace

class EmailServerTest : public QObject {
    Q_OBJECT

private:
    QSlider &slider() { return m_page->control<QSlider>("timeoutSlider"); }
    std::unique_ptr<ActionsPage> m_page;

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void serverWithoutADocument() {
        m_page->open("emailServer");
        QCOMPARE(m_page->text("serverPort"), u"25"_s);
        QCOMPARE(m_page->text("serverTimeout"), u"1"_s);
        QCOMPARE(slider().value(), 1);
        QCOMPARE(m_page->chosen("serverSecurity"), u"None"_s);
        QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), u"serverBlank"_s);
        m_page->click("onSave");
        QCOMPARE(m_page->openSheetName(), QString());
        QCOMPARE(m_page->savedText(), asText(kEmptyServer));
    }

    void serverShowsAndLeavesWhatIsStored() {
        Dictionary stored{{"first", Array{1, true}}};
        for (const auto &[key, value] : kServer) {
            stored.set(key, value);
        }
        stored.set("last", Null{});
        m_page->open("emailServer", stored);
        QCOMPARE(m_page->text("serverName"), u"mail.example.com"_s);
        QCOMPARE(m_page->text("serverPort"), u"465"_s);
        QCOMPARE(m_page->text("serverSender"), u"quorbel@example.com"_s);
        QCOMPARE(m_page->text("serverUsername"), u"user"_s);
        QCOMPARE(m_page->text("serverPassword"), u"\uFEFF pass wörd "_s);
        QCOMPARE(m_page->chosen("serverSecurity"), u"SSL/TLS"_s);
        QCOMPARE(m_page->text("serverTimeout"), u"4"_s);
        QCOMPARE(slider().value(), 4);
        m_page->click("onSave");
        QCOMPARE(m_page->savedText(), asText(stored));
    }

    void serverNumbers_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("saved");
        QTest::newRow("none") << ""
                              << "0";
        QTest::newRow("zero") << "0"
                              << "0";
        QTest::newRow("number") << "587"
                                << "587";
        QTest::newRow("no number") << "smtp"
                                   << "0";
        QTest::newRow("number in front") << "25x"
                                         << "25";
        QTest::newRow("negative") << "-3"
                                  << "-3";
        QTest::newRow("far too large") << "99999999999999999999"
                                       << "9223372036854775807";
    }
    void serverNumbers() {
        QFETCH(QString, typed);
        QFETCH(QString, saved);
        m_page->open("emailServer", kServer);
        m_page->type("serverPort", typed);
        m_page->type("serverTimeout", typed);
        QCOMPARE(slider().value(), 4);
        m_page->click("onSave");
        const Dictionary settings = m_page->saved();
        QCOMPARE(asText(*settings.find("actionsEmailPort")), saved);
        QCOMPARE(asText(*settings.find("actionsEmailTimeout")), saved);
    }

    void serverNumbersThatAreNotSet_data() {
        QTest::addColumn<qint64>("stored");
        QTest::addColumn<QString>("port");
        QTest::addColumn<QString>("timeout");
        QTest::addColumn<int>("slider");
        QTest::newRow("zero") << 0LL << "25"
                              << "1" << 1;
        QTest::newRow("small") << 7LL << "7"
                               << "7" << 7;
        QTest::newRow("beyond the slider") << 30LL << "30"
                                           << "30" << 10;
        QTest::newRow("negative") << -1LL << "-1"
                                  << "-1" << 1;
        QTest::newRow("huge") << std::numeric_limits<qint64>::max() << "9223372036854775807"
                              << "9223372036854775807" << 10;
    }
    void serverNumbersThatAreNotSet() {
        QFETCH(qint64, stored);
        QFETCH(QString, port);
        QFETCH(QString, timeout);
        QFETCH(int, slider);
        m_page->open("emailServer",
                     {{"actionsEmailPort", stored}, {"actionsEmailTimeout", stored}});
        QCOMPARE(m_page->text("serverPort"), port);
        QCOMPARE(m_page->text("serverTimeout"), timeout);
        QCOMPARE(this->slider().value(), slider);
    }

    void theSliderFillsTheTimeout() {
        m_page->open("emailServer", kServer);
        slider().setFocus();
        QTest::keyClick(&slider(), Qt::Key_Right);
        QCOMPARE(m_page->text("serverTimeout"), u"5"_s);
        QTest::keyClick(&slider(), Qt::Key_End);
        QCOMPARE(m_page->text("serverTimeout"), u"10"_s);
        QTest::keyClick(&slider(), Qt::Key_Home);
        QCOMPARE(m_page->text("serverTimeout"), u"1"_s);
        m_page->type("serverTimeout", u"7"_s);
        QCOMPARE(slider().value(), 1);
        m_page->click("onSave");
        QCOMPARE(settingInteger(m_page->saved(), "actionsEmailTimeout"), 7);
    }

    void serverSavesWhatIsTyped() {
        m_page->open("emailServer");
        m_page->type("serverName", u"mail"_s);
        m_page->type("serverSender", u"any text"_s);
        m_page->type("serverUsername", u"ü"_s);
        m_page->type("serverPassword", u" p\"w "_s);
        m_page->choose("serverSecurity", "STARTTLS");
        m_page->click("onSave");
        const Dictionary expected{{"actionsEmailPort", 25},
                                  {"actionsEmailTimeout", 1},
                                  {"actionsEmailServer", "mail"},
                                  {"actionsEmailSender", "any text"},
                                  {"actionsEmailUsername", "ü"},
                                  {"actionsEmailPassword", " p\"w "},
                                  {"actionsEmailSecurity", "STARTTLS"}};
        QCOMPARE(m_page->savedText(), asText(expected));
    }

    void serverSavesEmptyFields() {
        m_page->open("emailServer", kServer);
        for (const char *field :
             {"serverName", "serverSender", "serverUsername", "serverPassword", "serverPort"}) {
            m_page->type(field, {});
        }
        m_page->choose("serverSecurity", "None");
        m_page->click("onSave");
        const Dictionary expected{{"actionsEmailPort", 0},         {"actionsEmailTimeout", 4},
                                  {"actionsEmailServer", ""},      {"actionsEmailSender", ""},
                                  {"actionsEmailUsername", ""},    {"actionsEmailPassword", ""},
                                  {"actionsEmailSecurity", "None"}};
        QCOMPARE(m_page->savedText(), asText(expected));
    }

    void anUnknownSecurityIsShownAndStays_data() {
        QTest::addColumn<QString>("security");
        for (const char *text : {"Unheard of", "none", "TLS ", "", "a\nb"}) {
            QTest::newRow(text) << QString::fromUtf8(text);
        }
        QTest::newRow("long") << QString(5000, u'x');
    }
    void anUnknownSecurityIsShownAndStays() {
        QFETCH(QString, security);
        m_page->open("emailServer", kServer);
        const QSize usual = m_page->openSheet()->size();
        m_page->click("onCancel");
        Dictionary stored = kServer;
        stored.set("actionsEmailSecurity", security.toStdString());
        m_page->open("emailServer", stored);
        QCOMPARE(m_page->chosen("serverSecurity"), security);
        QCOMPARE(m_page->openSheet()->size(), usual);
        m_page->type("serverPort", u"466"_s);
        m_page->click("onSave");
        stored.set("actionsEmailPort", 466);
        QCOMPARE(m_page->savedText(), asText(stored));
    }

    void anUnknownSecurityCanBeChanged() {
        m_page->open("emailServer", {{"actionsEmailSecurity", "Unheard of"}});
        m_page->choose("serverSecurity", "STARTTLS");
        m_page->click("onSave");
        QCOMPARE(settingText(m_page->saved(), "actionsEmailSecurity"), "STARTTLS");
        // It is an item of this showing only.
        m_page->open("emailServer", kServer);
        QCOMPARE(m_page->control<QComboBox>("serverSecurity").count(), 3);
    }

    void thePasswordIsShownOnRequest() {
        m_page->open("emailServer", kServer);
        auto &password = m_page->control<QLineEdit>("serverPassword");
        QCOMPARE(password.echoMode(), QLineEdit::Password);
        m_page->click("showPassword");
        QCOMPARE(password.displayText(), u"\uFEFF pass wörd "_s);
        m_page->click("showPassword");
        QCOMPARE(password.echoMode(), QLineEdit::Password);
    }

    void serverReadsOtherTypesAsEmpty() {
        for (const Value &wrong : otherTypes()) {
            Dictionary stored;
            for (const auto &[key, value] : kServer) {
                stored.set(key, wrong);
            }
            m_page->open("emailServer", stored);
            m_page->click("onSave");
            QCOMPARE(m_page->savedText(), asText(kEmptyServer));
        }
    }

    void cancelSavesNothing() {
        m_page->open("emailServer", kServer);
        m_page->type("serverPort", u"26"_s);
        m_page->click("onCancel");
        QCOMPARE(m_page->openSheetName(), QString());
        QVERIFY(m_page->nothingWasSent());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EmailServerTest)
#include "EmailServerTest.moc"
#include "common/SettingsDocument.h"
