#include "actions/MultiLineField.h"

#include <QTest>
#include <QTextBlock>

#include <array>
#include <memory>
#include <random>
#include <set>
#include <string>

namespace quorbel {

using namespace Qt::StringLiterals;

class MultiLineFieldTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MultiLineField> m_field;

    void putCursor(int line, QTextCursor::MoveOperation move = QTextCursor::EndOfBlock) {
        QTextCursor cursor(m_field->document()->findBlockByNumber(line));
        cursor.movePosition(move);
        m_field->setTextCursor(cursor);
    }
    void type(const QString &text) {
        for (const QChar character : text) {
            character == u'\n' ? press(Qt::Key_Return)
                               : QTest::keyClicks(m_field.get(), QString(character));
        }
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(m_field.get(), key, modifiers);
    }
    void typeAt(int line, const QString &text) {
        putCursor(line);
        type(text);
    }
    void select(int firstLine, int lastLine) {
        putCursor(firstLine, QTextCursor::StartOfBlock);
        for (int line = firstLine; line < lastLine; ++line) {
            press(Qt::Key_Down, Qt::ShiftModifier);
        }
    }

private Q_SLOTS:
    void init() {
        m_field = std::make_unique<MultiLineField>();
        m_field->resize(500, 400);
        m_field->show();
    }

    void changedTexts_data() {
        using Edit = void (*)(MultiLineFieldTest &);
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<Edit>("edit");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const QByteArray &stored, Edit edit,
                            const QByteArray &expected) {
            QTest::newRow(name) << stored << edit << expected;
        };
        using Self = MultiLineFieldTest;
        row(
            "one line", "A\r\nB\nC\r\nD\n", [](Self &t) { t.typeAt(1, u"x"_s); },
            "A\r\nBx\nC\r\nD\n");
        row(
            "two lines", "A\r\nB\nC\r\nD\nE",
            [](Self &t) { t.typeAt(0, u"x"_s), t.typeAt(3, u"y"_s); }, "Ax\r\nB\nC\r\nDy\nE");
        row(
            "all ends",
            "A\rB\nC\r\nD\xE2\x80\xA9"
            "E",
            [](Self &t) { t.typeAt(4, u"x"_s); },
            "A\rB\nC\r\nD\xE2\x80\xA9"
            "Ex");
        row(
            "a line at the end", "A\r\nB\nC", [](Self &t) { t.typeAt(2, u"\nD"_s); },
            "A\r\nB\nC\nD");
        row(
            "a line in between", "A\r\nB\nC\r\nD", [](Self &t) { t.typeAt(1, u"\nx"_s); },
            "A\r\nB\nx\nC\r\nD");
        row(
            "a line at the beginning", "A\r\nB\nC",
            [](Self &t) { t.putCursor(0, QTextCursor::StartOfBlock), t.type(u"x\n"_s); },
            "x\r\nA\r\nB\nC");
        row(
            "a split line", "A\nBC\r\nD\n",
            [](Self &t) {
                t.putCursor(1, QTextCursor::StartOfBlock);
                t.press(Qt::Key_Right);
                t.press(Qt::Key_Return);
            },
            "A\nB\r\nC\r\nD\n");
        row(
            "joined lines", "A\nB\r\nC\nD\r\nE",
            [](Self &t) { t.putCursor(1), t.press(Qt::Key_Delete); }, "A\nBC\nD\r\nE");
        row(
            "removed lines", "A\nB\r\nC\nD\r\nE\nF",
            [](Self &t) { t.select(1, 3), t.press(Qt::Key_Delete); }, "A\nD\r\nE\nF");
        row(
            "an empty line removed", "A\n\r\nB\r\nC\n",
            [](Self &t) { t.putCursor(1), t.press(Qt::Key_Delete); }, "A\nB\r\nC\n");
        row(
            "removed and taken back", "A\r\nB\nC\r\nD\n",
            [](Self &t) {
                t.typeAt(0, u"x"_s);
                t.select(1, 3);
                t.press(Qt::Key_Delete);
                t.press(Qt::Key_Z, Qt::ControlModifier);
            },
            "Ax\r\nB\nC\r\nD\n");
        row(
            "all replaced", "A\r\nB\nC",
            [](Self &t) { t.press(Qt::Key_A, Qt::ControlModifier), t.type(u"x\ny"_s); }, "x\ny");
        row(
            "emptied", "A\r\nB\nC",
            [](Self &t) {
                t.press(Qt::Key_A, Qt::ControlModifier);
                t.press(Qt::Key_Delete);
            },
            "");
        row(
            "into nothing", "", [](Self &t) { t.type(u"x\ny"_s); }, "x\ny");
        row(
            "bytes that are no text",
            "A\xFF\r\nB\nC\xC2\xA0"
            "D\n",
            [](Self &t) { t.typeAt(1, u"x"_s); },
            "A\xFF\r\nBx\nC\xC2\xA0"
            "D\n");
    }
    void changedTexts() {
        using Edit = void (*)(MultiLineFieldTest &);
        QFETCH(QByteArray, stored);
        QFETCH(Edit, edit);
        QFETCH(QByteArray, expected);
        m_field->setStoredText(stored.toStdString());
        QCOMPARE(QByteArray::fromStdString(m_field->storedText()), stored);
        edit(*this);
        QCOMPARE(QByteArray::fromStdString(m_field->storedText()), expected);
    }

    void linesThatWereNotTouchedKeepTheirEnds() {
        constexpr std::array kEnds{"\n", "\r\n", "\r"};
        std::mt19937 random(20260);  // NOLINT(cert-msc51-cpp): the same cases each time
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        for (int round = 0; round < 200; ++round) {
            std::string stored;
            const int count = 1 + below(20);
            for (int i = 0; i < count; ++i) {
                const std::string line = "<" + std::to_string(i) + ">";
                stored += line;
                stored += kEnds.at(static_cast<std::size_t>(below(3)));
            }
            m_field->setStoredText(stored);
            std::set<std::string> gone;
            for (int edits = below(6); edits >= 0; --edits) {
                const int line = below(m_field->document()->blockCount());
                gone.insert(m_field->document()->findBlockByNumber(line).text().toStdString());
                typeAt(line, QString(1 + below(3), below(4) == 0 ? u'\n' : u'x'));
                if (below(3) == 0) {
                    select(line, line + 1);
                    press(Qt::Key_Delete);
                }
            }
            const std::string result = m_field->storedText();
            std::size_t at = 0;
            for (int i = 0; i < count; ++i) {
                const std::string line = "<" + std::to_string(i) + ">";
                const std::size_t begin = stored.find(line, at);
                at = begin + line.size();
                const std::string whole = stored.substr(
                    begin, (i + 1 < count ? stored.find('<', at) : stored.size()) - begin);
                if (!gone.contains(line)) {
                    QVERIFY2(result.find(whole) != std::string::npos,
                             (QByteArray::fromStdString(whole).toPercentEncoding() + " of " +
                              QByteArray::fromStdString(stored).toPercentEncoding() + " in " +
                              QByteArray::fromStdString(result).toPercentEncoding())
                                 .constData());
                }
            }
        }
    }

    void aVeryLongTextIsEditedWithoutAWait() {
        std::string stored;
        for (int i = 0; i < 5000; ++i) {
            stored += "line " + std::to_string(i) + (i % 3 == 0 ? "\n" : "\r\n");
        }
        m_field->setStoredText(stored);
        typeAt(0, u"x"_s);
        typeAt(4999, u"y"_s);
        stored.insert(stored.find('\n'), "x");
        stored.insert(stored.rfind("\r\n"), "y");
        QCOMPARE(m_field->storedText(), stored);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::MultiLineFieldTest)
#include "MultiLineFieldTest.moc"
