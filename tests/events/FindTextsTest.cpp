// Finding among texts that nobody would send, and expressions made of messages.

#include "events/find/LikePattern.h"
#include "events/find/MatchMarks.h"

#include <QTest>

#include <utility>
#include <vector>

namespace quorbel {

class FindTextsTest : public QObject {
    Q_OBJECT

private:
    static bool isLike(const char *message, const char *other) {
        const TextPattern pattern(
            {likePattern(QString::fromUtf8(message)), /*isCaseSensitive=*/true, true});
        return pattern.error().empty() && pattern.isIn(other);
    }
    static EventQuery queryFor(std::vector<TextCondition> texts) {
        EventQuery query;
        query.texts = std::move(texts);
        return query;
    }

private Q_SLOTS:
    void numbersAndAddressesMayDiffer_data() {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QByteArray>("other");
        QTest::addColumn<bool>("isAlike");
        const auto row = [](const char *title, const char *message, const char *other, bool alike) {
            QTest::newRow(title) << QByteArray(message) << QByteArray(other) << alike;
        };
        row("itself", "a (b) [c] {d} ^e$ f|g \\h *+?", "a (b) [c] {d} ^e$ f|g \\h *+?", true);
        row("number", "sshd[3310]: Failed password", "sshd[7]: Failed password", true);
        row("IPv4", "login from 203.0.113.77 port 22", "login from 10.0.0.1 port 65535", true);
        row("IPv6", "peer 2001:db8::1 is down", "peer fe80::42:1 is down", true);
        row("one for the other", "peer 10.0.0.1 is down", "peer fe80::42:1 is down", true);
        row("MAC", "lease for 00:1a:2b:3c:4d:5e", "lease for ff:ff:00:00:00:01", true);
        row("hexadecimal", "queue id 4F1C2A0 removed", "queue id 9BB21D3 removed", true);
        row("pointer", "at 0x7ffe12", "at 0x1", true);
        row("another text", "link up on port 1", "link down on port 1", false);
        row("longer", "link up", "link up again", false);
        row("shorter before", "link up", "a link up", false);
        row("capitals", "link up", "LINK UP", false);
        row("words of hexadecimal letters", "dead beef", "cafe babe", false);
        row("beyond ASCII", "Lüfter 3 läuft", "Lüfter 14 läuft", true);
    }
    void numbersAndAddressesMayDiffer() {
        QFETCH(QByteArray, message);
        QFETCH(QByteArray, other);
        QFETCH(bool, isAlike);
        QCOMPARE(isLike(message.constData(), other.constData()), isAlike);
        QVERIFY(isLike(message.constData(), message.constData()));
    }
    void ofALongMessageTheBeginningCounts() {
        const std::string begin(300, 'a');
        QVERIFY(isLike((begin + " end").c_str(), (begin + " another").c_str()));
        QVERIFY(!isLike((begin + " end").c_str(), ("b" + begin).c_str()));
        QVERIFY(isLike("disk \xff full", "disk \xff full"));
        // Of bytes that are no text, one does not see which they are; the service writes a sign for
        // them.
        QVERIFY(
            isLike("\xdc"
                   "ber 1",
                   "\xdc"
                   "ber 2"));
        QVERIFY(
            isLike("fan: L\xEF\xBF\xBD"
                   "fter 1",
                   "fan: L\xEF\xBF\xBD"
                   "fter 2"));
        QVERIFY(
            !isLike("fan: L\xEF\xBF\xBD"
                    "fter 1",
                    "fan: Lager 1"));
        QVERIFY(
            !isLike("\xdc"
                    "ber 1",
                    "disk full"));
        QVERIFY(isLike(std::string(300, '\xff').c_str(), std::string(250, '\xff').c_str()));
        QVERIFY(isLike("", ""));
    }

    void marksEveryPlaceInCharacters() {
        MatchMarks marks;
        marks.use(queryFor({{{"übel"}, false}, {{"x"}, true}}));
        const QString text = QString::fromUtf8("😀 Übel und ÜBEL x");
        const std::vector<TextRange> found = marks.in(text);
        QCOMPARE(found.size(), std::size_t{2});
        QCOMPARE(text.mid(found[0].begin, found[0].end - found[0].begin),
                 QString::fromUtf8("Übel"));
        QCOMPARE(text.mid(found[1].begin, found[1].end - found[1].begin),
                 QString::fromUtf8("ÜBEL"));
    }
    void endsWithExpressionsThatMatchNothing() {
        MatchMarks marks;
        for (const char *expression : {"x*", "^", "$", "\\b", "(?:)"}) {
            marks.use(queryFor({{{expression, false, true}, false}}));
            for (const TextRange &range : marks.in(QString::fromUtf8("axxb Ü"))) {
                QVERIFY(range.end > range.begin);
            }
        }
    }
    void marksNoMoreThanAnybodyLooksAt() {
        MatchMarks marks;
        marks.use(queryFor({{{"a"}, false}}));
        QCOMPARE(marks.in(QString(1'000'000, u'a')).size(), MatchMarks::kMost);
    }
};

}  // namespace quorbel

QTEST_GUILESS_MAIN(quorbel::FindTextsTest)
#include "FindTextsTest.moc"
