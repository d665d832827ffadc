#include "common/SettingsDocument.h"
#include "events/find/LikePattern.h"
#include "events/find/LikeRecord.h"

#include <QTest>

#include <string>

namespace quorbel {

/// What is made of one event for filters and actions that shall mean its like.
class LikeRecordTest : public QObject {
    Q_OBJECT

    static QString field(const Dictionary &record, const char *key) {
        return QString::fromStdString(settingText(record, key).value_or("absent"));
    }

private Q_SLOTS:
    void numbersAndAddressesAreStars_data() {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("pattern");
        const auto row = [](const char *message, const char *pattern) {
            QTest::newRow(message) << QString::fromUtf8(message) << QString::fromUtf8(pattern);
        };
        row("", "*");
        row("link down", "link down");
        row("disk sdb1 failed", "disk sdb* failed");
        row("17 of 20", "* of *");
        row("10.1.2.3:514 up", "*:* up");
        row("to 10.1.2.3 from fe80::1:2 mac 00:11:22:aa:bb:cc", "to * from * mac *");
        row("id 0xdeadbeef", "id *");
        row("1 2", "* *");
        // There is no way to ask for these two themselves.
        row("what? 5*6", "what? **");
        row("größe 3 \xE2\x82\xAC", "größe * \xE2\x82\xAC");
    }
    void numbersAndAddressesAreStars() {
        QFETCH(QString, message);
        QFETCH(QString, pattern);
        QCOMPARE(likeWildcards(message), pattern);
    }
    void ofALongMessageTheBeginningCounts() {
        const QString pattern = likeWildcards(QString(5000, u'x'));
        QCOMPARE(pattern, QString(200, u'x') + u'*');
        // No half of a character.
        const QString smile = QString::fromUtf8("\xF0\x9F\x98\x80");
        QCOMPARE(likeWildcards(u'a' + smile.repeated(200)), u'a' + smile.repeated(99) + u'*');
        QCOMPARE(likeWildcards(QString(199, u'x') + QStringLiteral("12")),
                 QString(199, u'x') + u'*');
    }

    void fillsEveryField_data() {
        QTest::addColumn<QString>("priority");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("fields");
        const auto row = [](const char *priority, const char *host, const char *fields) {
            QTest::addRow("%s of %s", priority, host)
                << QString::fromUtf8(priority) << QString::fromUtf8(host)
                << QString::fromUtf8(fields);
        };
        row("Local7.Error", "10.0.0.5", "10.0.0.5|32|Local7|Error");
        row("Kern.Informational", "fe80::1", "fe80::1|128|Kern|Informational");
        row("Mail.Alert", "::ffff:10.0.0.5", "10.0.0.5|32|Mail|Alert");
        row("Kern.Debug", "fs01", "0.0.0.0|0|Kern|Debug");
        row("Local9.Notice", "", "0.0.0.0|0|Any|Notice");
        row("", "-", "0.0.0.0|0|Any|Any");
        row("Warning", "10.0.0.256", "0.0.0.0|0|Any|Warning");
    }
    void fillsEveryField() {
        QFETCH(QString, priority);
        QFETCH(QString, host);
        const Dictionary record = likeRecord(priority, host, QStringLiteral("a 1"));
        QTEST(field(record, "IP") + u'|' + field(record, "Mask") + u'|' +
                  field(record, "Facility") + u'|' + field(record, "Severity"),
              "fields");
        QCOMPARE(field(record, "Message"), QStringLiteral("a *"));
        QCOMPARE(field(record, "Name"), QStringLiteral("a 1"));
    }
    void saysWhichHostIsAName() {
        const auto host = [](const char *name) {
            return field(likeRecord({}, QString::fromUtf8(name), {}), "Host");
        };
        QCOMPARE(host("fs01"), QStringLiteral("fs01"));
        QCOMPARE(host("10.0.0.5"), QStringLiteral("absent"));
        QCOMPARE(host(""), QStringLiteral("absent"));
    }
    void namesAreShort_data() {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("name");
        const QString dots(QChar(0x2026));
        QTest::newRow("none") << QString() << QStringLiteral("Messages like one");
        QTest::newRow("blank") << QStringLiteral(" \t ") << QStringLiteral("Messages like one");
        QTest::newRow("as it is") << QString(40, u'x') << QString(40, u'x');
        QTest::newRow("one word") << QString(41, u'x') << QString(40, u'x') + dots;
        QTest::newRow("words") << QString(39, u'x') + QStringLiteral(" yy")
                               << QString(39, u'x') + dots;
        QTest::newRow("blanks") << QStringLiteral("a  b\tc") << QStringLiteral("a b c");
        const QString smile = QString::fromUtf8("\xF0\x9F\x98\x80");
        QTest::newRow("no half of a character")
            << u'a' + smile.repeated(30) << u'a' + smile.repeated(19) + dots;
    }
    void namesAreShort() {
        QFETCH(QString, message);
        QTEST(field(likeRecord({}, {}, message), "Name"), "name");
    }
};

}  // namespace quorbel

QTEST_GUILESS_MAIN(quorbel::LikeRecordTest)
#include "LikeRecordTest.moc"
