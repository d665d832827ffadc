#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QTest>

#include <string>

namespace quorbel {

class PaintedTextTest : public QObject {
    Q_OBJECT

private:
    static QString of(const char *utf8) { return toQString(utf8); }
    // All of a text, in portions.
    static QString lines(PaintedText &text, qsizetype portion) {
        QString result;
        while (!text.isComplete()) {
            result += text.paintLines(portion);
        }
        return result;
    }

private Q_SLOTS:
    void nothingIsLostOnTheWayIntoTheWindow_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("plain") << QByteArray("10.0.0.5");
        QTest::newRow("U+FEFF") << QByteArray(
            "\xEF\xBB\xBF"
            "10.0.0.5");
        QTest::newRow("several") << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBF\xEF\xBB\xBF");
        QTest::newRow("inside") << QByteArray(
            "a\xEF\xBB\xBF"
            "b\xEF\xBB\xBF");
        QTest::newRow("noncharacters") << QByteArray("\xEF\xBF\xBE\xEF\xB7\x90\xF4\x8F\xBF\xBF");
        QTest::newRow("NUL") << QByteArray("a\0b", 3);
        QTest::newRow("a million") << QByteArray("\xEF\xBB\xBF").repeated(1'000'000);
    }
    void nothingIsLostOnTheWayIntoTheWindow() {
        QFETCH(QByteArray, bytes);
        QVERIFY(toQString(bytes.toStdString()).toUtf8() == bytes);
    }

    void rows_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("painted");
        const auto row = [](const char *what, const char *text, const char *painted) {
            QTest::newRow(what) << of(text) << of(painted);
        };
        const auto same = [&row](const char *what, const char *text) { row(what, text, text); };
        same("plain", "sshd[1]: Accepted <b>key</b> for root");
        same("empty", "");
        same("accents and symbols", "Zoë Müller – 5 µs … 漢字 ❤️ €");
        same("right to left", "שלום עולם, مرحبا");
        same("joined scripts", "می‌خواهم क्‍ष");
        same("joined emoji",
             "disk 💾 👩‍👩‍👧 👍🏽 1️⃣ 🏴󠁧󠁢󠁳󠁣󠁴󠁿");
        same("tab", "a\tb");
        same("Arabic number sign",
             "\xD8\x80"
             "12");
        row("override", "user \u202Etoor\u202C logged in", "user <U+202E>toor<U+202C> logged in");
        row("embeddings", "\u202A\u202B\u202D", "<U+202A><U+202B><U+202D>");
        row("isolates", "\u2066\u2067\u2068\u2069", "<U+2066><U+2067><U+2068><U+2069>");
        row("marks", "\u200E\u200F\u061C", "<U+200E><U+200F><U+061C>");
        row("no width", "ho\u200Bst\u2060\uFEFF\u00AD", "ho<U+200B>st<U+2060><U+FEFF><U+00AD>");
        row("in front", "\uFEFFhost", "<U+FEFF>host");
        row("joiners in Latin", "ho\u200Cst\u200D", "ho<U+200C>st<U+200D>");
        row("variation in Latin", "host\uFE0F", "host<U+FE0F>");
        row("tags in Latin", "host\U000E0061", "host<U+E0061>");
        row("separators", "one\u2028two\u2029three", "one<U+2028>two<U+2029>three");
        row("line ends", "one\ntwo\r\n", "one<U+000A>two<U+000D><U+000A>");
        row("controls", "\x1B[31m\x7F\u0085", "<U+001B>[31m<U+007F><U+0085>");
        row("noncharacters", "\uFFFE\uFDD0\U0010FFFF", "<U+FFFE><U+FDD0><U+10FFFF>");
        row("filler", "\u3164", "<U+3164>");
        QTest::newRow("half a pair") << QString(QChar(0xD83D)) << of("<U+D83D>");
    }
    void rows() {
        QFETCH(QString, text);
        QFETCH(QString, painted);
        QCOMPARE(paintedRow(text), painted);
        PaintedText whole(text);
        const QString row = whole.paintRow(10'000);
        QCOMPARE(row, painted);
        QCOMPARE(whole.original(0, row.size()), text);
    }

    void aRowHasALimit() {
        for (const auto &character : {QStringLiteral("x"), QStringLiteral("é"), of("\u200B")}) {
            const QString text = character.repeated(100'000);
            const QString row = paintedRow(text);
            QVERIFY(row.size() > 1000 && row.size() < 1100);
            QVERIFY(row.endsWith(u'…'));
            PaintedText whole(text);
            const qsizetype length = whole.paintRow(1000).size();
            QCOMPARE(whole.original(0, length), text);
            QVERIFY(whole.original(0, length - 1).size() < 1100);
            QCOMPARE(whole.original(length - 1, length),
                     text.sliced(whole.original(0, length - 1).size()));
        }
    }

    void linesStayLinesAndTheRestIsSpelledOut() {
        PaintedText text(of("one\ntwo\r\nthree\rfour\u2028five\n\n"));
        const QString painted = lines(text, 1'000);
        QCOMPARE(painted, of("one\ntwo\nthree<U+000D>four<U+2028>five\n\n"));
        QCOMPARE(text.original(0, painted.size()), text.text());
    }

    void aPartStandsForItsOwnPartOfTheText() {
        PaintedText text(of("ab\u202Ecd\r\nef\U0001F4BE"));
        const QString painted = lines(text, 1'000);
        QCOMPARE(painted, of("ab<U+202E>cd\nef\U0001F4BE"));
        QCOMPARE(text.original(0, 2), of("ab"));
        QCOMPARE(text.original(1, 3), of("b\u202E"));  // what is partly meant is meant
        QCOMPARE(text.original(5, 7), of("\u202E"));
        QCOMPARE(text.original(5, 11), of("\u202E"
                                          "c"));
        QCOMPARE(text.original(10, 12), of("cd"));
        QCOMPARE(text.original(12, 13), of("\r\n"));
        QCOMPARE(text.original(13, 15), of("ef"));
        QCOMPARE(text.original(4, 4), QString());
    }

    void longLinesAreBroken_data() {
        QTest::addColumn<QString>("piece");
        QTest::newRow("without spaces") << QStringLiteral("x");
        QTest::newRow("with spaces") << QStringLiteral("lorem ipsum ");
        QTest::newRow("marks") << of("\u202E");
        QTest::newRow("pairs") << of("\U0001F4BE");
        QTest::newRow("line ends") << QStringLiteral("\r\n");
    }
    void longLinesAreBroken() {
        QFETCH(QString, piece);
        const QString whole = piece.repeated(50'001);
        PaintedText text(whole);
        const QString painted = lines(text, 7'777);
        for (const QString &line : painted.split(u'\n')) {
            QVERIFY2(line.size() < 8'300, qPrintable(QString::number(line.size())));
            QVERIFY(line.isEmpty() || !line.front().isLowSurrogate());
            QVERIFY(piece != QStringLiteral("lorem ipsum ") || line.endsWith(u' '));
        }
        QCOMPARE(text.original(0, painted.size()), whole);
        // Piece by piece it is the same.
        QString pieces;
        for (qsizetype at = 0; at < painted.size(); at += 20'000) {
            pieces += text.original(at, std::min(at + 20'000, painted.size()));
        }
        QVERIFY(pieces == whole || piece == of("\u202E"));  // whose spelling is cut in two
    }

    void whatIsNotPaintedYetFollowsTheLast() {
        const QString whole(10'000, u'x');
        PaintedText text(whole);
        QCOMPARE(text.paintLines(100).size(), 100);
        QVERIFY(!text.isComplete());
        QCOMPARE(text.original(0, 99), QString(99, u'x'));
        QCOMPARE(text.original(0, 100), whole);
        QCOMPARE(text.original(50, 100), QString(9'950, u'x'));
    }

    void aLineThatEndsWhereItWouldBeBrokenIsNotBrokenTwice() {
        PaintedText text(QString(8'192, u'x') + QStringLiteral("\ny"));
        QCOMPARE(lines(text, 100'000), QString(8'192, u'x') + QStringLiteral("\ny"));
    }
};

}  // namespace quorbel

QTEST_APPLESS_MAIN(quorbel::PaintedTextTest)
#include "PaintedTextTest.moc"
