#include "platform/gui/QtText.h"
#include "settings/FilterForm.h"
#include "support/ValueText.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QTest>

#include <memory>

namespace quorbel {

using namespace testing;

class FilterFormTest : public QObject {
    Q_OBJECT

private:
    template <class Control = QLineEdit>
    Control &control(const char *name) {
        return *m_form->findChild<Control *>(QLatin1String(name));
    }
    void click(const char *button) {
        QTest::mouseClick(&control<QAbstractButton>(button), Qt::LeftButton);
    }
    QString record() const { return toQString(textOf(m_form->record().fields)); }

    std::unique_ptr<FilterForm> m_form;

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English)); }
    void init() {
        m_form = std::make_unique<FilterForm>();
        m_form->setPrefix(QStringLiteral("filter"));
        m_form->show();
    }

    void controlsAreNamedAfterThePrefix() {
        for (const char *prefix : {"filter", "action"}) {
            m_form->setPrefix(QLatin1String(prefix));
            for (const char *role : {"Name", "IP", "Mask", "Facility", "Severity", "Message"}) {
                auto *found =
                    m_form->findChild<QWidget *>(QLatin1String(prefix) + QLatin1String(role));
                QVERIFY2(found != nullptr, role);
                QVERIFY2(!found->accessibleName().isEmpty(), role);
            }
        }
        for (const char *button : {"anyHost", "anyFacility", "anySeverity", "anyMessage"}) {
            QVERIFY(!control<QAbstractButton>(button).accessibleName().isEmpty());
        }
    }

    void choosersOfferEveryFacilityAndSeverity() {
        const auto items = [this](const char *name) {
            const auto &chooser = control<QComboBox>(name);
            QStringList texts;
            for (int i = 0; i < chooser.count(); ++i) {
                texts += chooser.itemText(i);
            }
            return texts.join(u' ');
        };
        QCOMPARE(items("filterFacility"),
                 QStringLiteral("Any Kern User Mail Daemon Auth Syslog Lpr News Uucp Cron Authpriv "
                                "Ftp Ntp Audit Console Clock Local0 Local1 Local2 Local3 Local4 "
                                "Local5 Local6 Local7"));
        QCOMPARE(items("filterSeverity"),
                 QStringLiteral("Any Emergency Alert Critical Error Warning Notice Informational "
                                "Debug"));
    }

    void aNewRecordHoldsForEverything() {
        m_form->showNew(QStringLiteral("New Filter"));
        QVERIFY(control("filterName").isEnabled());
        QVERIFY(m_form->record().complete);
        QCOMPARE(record(),
                 QStringLiteral("{\"Name\": \"New Filter\", \"IP\": \"0.0.0.0\", \"Message\": "
                                "\"*\", \"Mask\": \"0\", \"Facility\": \"Any\", \"Severity\": "
                                "\"Any\"}"));
    }

    void aRecordIsShownAsItIsAndGivenBack() {
        const std::string longText(40000, 'x');
        const Dictionary shown{
            {"Severity", "Debug"}, {"Facility", "Local7"},          {"Mask", "24"},
            {"Message", "a\tb"},   {"IP", "10.0.0.0 ä" + longText}, {"Name", ""}};
        m_form->showRecord(shown);
        QVERIFY(!control("filterName").isEnabled());
        QVERIFY(m_form->record().complete);
        QVERIFY(m_form->record().fields == shown);
        QVERIFY(m_form->allFields() == shown);
    }

    void aMaskThatIsNoNumberShowsAsZero_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        for (const auto &[stored, shown] : {std::pair{"24", "24"},
                                            {"abc", "0"},
                                            {"", "0"},
                                            {" 8 ", "8"},
                                            {"24x", "24"},
                                            {"255.0.0.0", "255"},
                                            {"007", "7"},
                                            {"-1", "-1"},
                                            {"99999999999999999999", "9223372036854775807"}}) {
            QTest::newRow(stored) << QString::fromUtf8(stored) << QString::fromUtf8(shown);
        }
    }
    void aMaskThatIsNoNumberShowsAsZero() {
        QFETCH(QString, stored);
        m_form->showRecord({{"Mask", stored.toStdString()}});
        QTEST(control("filterMask").text(), "shown");
    }

    void wrongTypesShowAsEmpty() {
        m_form->showRecord({{"Name", 5},
                            {"IP", Array{}},
                            {"Mask", 16},
                            {"Message", Null{}},
                            {"Facility", Dictionary{}},
                            {"Severity", true}});
        QCOMPARE(toQString(textOf(m_form->allFields())),
                 QStringLiteral("{\"Name\": \"\", \"IP\": \"\", \"Message\": \"\", \"Mask\": "
                                "\"16\", \"Facility\": \"\", \"Severity\": \"\"}"));
    }

    void theRecordEndsBeforeAChooserWithoutAValue() {
        const QString four =
            QStringLiteral("{\"Name\": \"n\", \"IP\": \"\", \"Message\": \"\", \"Mask\": \"0\"");
        Dictionary shown{{"Name", "n"}, {"Facility", "Mail"}, {"Severity", "error"}};
        m_form->showRecord(shown);
        QVERIFY(!m_form->record().complete);
        QCOMPARE(record(), four + QStringLiteral(", \"Facility\": \"Mail\"}"));
        shown.set("Facility", "mail");
        shown.set("Severity", "Error");
        m_form->showRecord(shown);
        QVERIFY(!m_form->record().complete);
        QCOMPARE(record(), four + u'}');
        QCOMPARE(control<QComboBox>("filterFacility").currentIndex(), -1);
        QCOMPARE(toQString(textOf(m_form->allFields())),
                 four + QStringLiteral(", \"Facility\": \"\", \"Severity\": \"Error\"}"));
    }

    void theButtonsStandForAny() {
        m_form->showRecord({{"Name", "n"},
                            {"IP", "10.1.1.1"},
                            {"Mask", "32"},
                            {"Message", "x"},
                            {"Facility", "Kern"},
                            {"Severity", "none"}});
        const auto value = [this](const char *key) {
            return toQString(textOf(*m_form->allFields().find(key)));
        };
        click("anyHost");
        QCOMPARE(value("IP") + value("Mask"), QStringLiteral("\"0.0.0.0\"\"0\""));
        QCOMPARE(value("Facility"), QStringLiteral("\"Kern\""));
        click("anyFacility");
        QCOMPARE(value("Facility"), QStringLiteral("\"Any\""));
        QCOMPARE(value("Severity"), QStringLiteral("\"\""));
        click("anySeverity");
        QCOMPARE(value("Severity"), QStringLiteral("\"Any\""));
        QCOMPARE(value("Message"), QStringLiteral("\"x\""));
        click("anyMessage");
        QCOMPARE(value("Message"), QStringLiteral("\"*\""));
        QCOMPARE(value("Name"), QStringLiteral("\"n\""));
        QVERIFY(m_form->record().complete);
    }

    void theMaskTakesAnyText() {
        m_form->showNew(QStringLiteral("n"));
        QLineEdit &mask = control("filterMask");
        QTest::keyClick(&mask, Qt::Key_Backspace);
        QVERIFY(*m_form->record().fields.find("Mask") == Value(""));
        QTest::keyClicks(&mask, QStringLiteral("a2-4. "));
        QVERIFY(*m_form->record().fields.find("Mask") == Value("a2-4. "));
    }

    void saysWhichHostsAddressAndMaskStandFor_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("meaning");
        const auto row = [](const char *address, const char *mask, const char *meaning) {
            QTest::addRow("%s / %s", address, mask)
                << QString::fromLatin1(address) << QString::fromLatin1(mask)
                << QString::fromLatin1(meaning);
        };
        const char *ignored = "Any host: with a mask of 0, the address is ignored";
        const char *nobody = "Not a valid address: matches no host";
        row("0.0.0.0", "0", "Any host; 192.168.1.0 / 24 is a whole network");
        row("", "", "Any host; 192.168.1.0 / 24 is a whole network");
        row("10.0.0.5", "0", ignored);
        row("10.0.0.5", "", ignored);
        row("10.0.0.5", "all", ignored);
        row("router.example.org", "0", ignored);
        row("router.example.org", "32", nobody);
        row("10.0.0.", "32", nobody);
        row("", "8", nobody);
        row("10.0.0.5", "32", "1 address");
        row("10.0.0.5", "31", "2 addresses");
        row("10.0.0.5", "24", "256 addresses");
        row("10.0.0.5", "24x", "256 addresses");
        row("10.0.0.5", "1", "2,147,483,648 addresses");
        row("10.0.0.5", "33", "1 address; the longest mask for this address is 32");
        row("10.0.0.5", "255.255.255.0", "1 address; the longest mask for this address is 32");
        row("2001:db8::1", "128", "1 address");
        row("2001:db8::1", "64", "2^64 addresses");
        row("2001:db8::1", "200", "1 address; the longest mask for this address is 128");
    }
    void saysWhichHostsAddressAndMaskStandFor() {
        QFETCH(QString, address);
        QFETCH(QString, mask);
        QFETCH(QString, meaning);
        const auto &label = control<QLabel>("hostMeaning");
        const int room = label.sizeHint().width();
        m_form->showNew(QStringLiteral("n"));
        const auto type = [this](const char *name, const QString &text) {
            control(name).selectAll();
            QTest::keyClick(&control(name), Qt::Key_Delete);
            QTest::keyClicks(&control(name), text);
        };
        type("filterIP", address);
        type("filterMask", mask);
        QCOMPARE(label.text(), meaning);
        QVERIFY(label.sizeHint().width() <= room);
        // What hardly was meant is in another colour.
        const bool isOdd = !meaning.endsWith(u"address") && !meaning.endsWith(u"addresses") &&
                           !meaning.startsWith(u"Any host;");
        QCOMPARE(label.property("role").toString(),
                 isOdd ? QStringLiteral("warning") : QStringLiteral("caption"));
        for (const char *field : {"filterIP", "filterMask"}) {
            QCOMPARE(control(field).accessibleDescription(), meaning);
        }
        // The same when it is stored, and shown again.
        const Dictionary record = m_form->record().fields;
        init();
        m_form->showRecord(record);
        QCOMPARE(control<QLabel>("hostMeaning").text(), meaning);
        click("anyHost");
        QVERIFY(control<QLabel>("hostMeaning").text().startsWith(QStringLiteral("Any host;")));
    }

    void saysThatTheNameOfAHostIsNotAmongTheValues() {
        const auto &label = control<QLabel>("hostMeaning");
        const int room = label.sizeHint().width();
        Dictionary record{{"Name", "n"}, {"IP", "0.0.0.0"},   {"Message", "*"},
                          {"Mask", "0"}, {"Facility", "Any"}, {"Severity", "Any"}};
        record.append("Host", "fs01");
        m_form->showProposal(record);
        const auto meaning = QStringLiteral("Any host: only an address can be meant, not “fs01”");
        QCOMPARE(label.text(), meaning);
        QCOMPARE(label.property("role").toString(), QStringLiteral("warning"));
        QCOMPARE(control("filterIP").text(), QStringLiteral("0.0.0.0"));
        QCOMPARE(control("filterIP").accessibleDescription(), meaning);
        QVERIFY(!m_form->record().fields.find("Host"));
        QTest::keyClicks(&control("filterMask"), QStringLiteral("8"));
        QVERIFY(!label.text().contains(QStringLiteral("fs01")));
        QVERIFY(label.toolTip().isEmpty());
        // A long one is shortened, and whatever it is made of shown as it is.
        record.set("Host", "<b>a-name</b>.of-a-host.in-a-department.example.org");
        m_form->showProposal(record);
        QVERIFY(label.text().endsWith(QStringLiteral("…”")));
        QCOMPARE(label.textFormat(), Qt::PlainText);
        QVERIFY(label.sizeHint().width() <= room);
        QVERIFY(label.toolTip().contains(QStringLiteral("&lt;b&gt;a-name")));
        QVERIFY(label.toolTip().contains(QStringLiteral("department.example.org")));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::FilterFormTest)
#include "FilterFormTest.moc"
