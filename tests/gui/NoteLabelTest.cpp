#include "platform/gui/ContentArea.h"
#include "platform/gui/NoteLabel.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QTest>
#include <QVBoxLayout>

namespace quorbel {

using namespace Qt::StringLiterals;

class NoteLabelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void saysPlainTextInTheLookOfACaptionOrAWarning() {
        NoteLabel label;
        label.say(u"<b>plain</b>"_s);
        QCOMPARE(label.textFormat(), Qt::PlainText);
        QCOMPARE(label.text(), u"<b>plain</b>"_s);
        QCOMPARE(label.property("role").toString(), u"caption"_s);
        label.say(u"wrong"_s, true);
        QCOMPARE(label.property("role").toString(), u"warning"_s);
        label.say({});
        QCOMPARE(label.property("role").toString(), u"caption"_s);
        QCOMPARE(label.text(), QString());
    }

    void aLongWordWrapsToo_data() {
        QTest::addColumn<QString>("word");
        QTest::newRow("letters") << QString(900, u'x');
        QTest::newRow("of two units") << QStringLiteral("\U0001F600").repeated(300);
        QTest::newRow("between others") << u"550 "_s + QString(900, u'x') + u" end"_s;
    }
    void aLongWordWrapsToo() {
        QFETCH(const QString, word);
        NoteLabel label;
        label.say(word);
        QVERIFY2(
            label.minimumSizeHint().width() < 100 * label.fontMetrics().horizontalAdvance(u'x') * 2,
            qPrintable(QString::number(label.minimumSizeHint().width())));
        QString shown = label.text();
        QVERIFY(shown.isValidUtf16());
        shown.remove(QChar(0x200B));
        QCOMPARE(shown, word);
        // Others are as they were, to be copied.
        const QString address = u"https://mail.example.org/help/?p=BadCredentials1234567890abc"_s;
        label.say(u"535 see "_s + address);
        QCOMPARE(label.text(), u"535 see "_s + address);
    }

    void getsRoomForMoreLinesAsItsTextGrows() {
        QWidget page;
        auto *rows = new QVBoxLayout(&page);
        auto *above = new QWidget;
        rows->addWidget(above, 1);
        auto *card = new QFrame;
        auto *inCard = new QVBoxLayout(card);
        auto *label = new NoteLabel;
        inCard->addWidget(label);
        rows->addWidget(card);
        auto *buttons = new QHBoxLayout;
        rows->addLayout(buttons);
        ContentArea::wrap(page);
        label->say(u"short"_s);
        page.resize(400, 400);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        const int before = card->height();
        for (int words = 20; words <= 100; words += 40) {
            label->say(u"word "_s.repeated(words));
            const int needed = label->heightForWidth(label->width());
            QTRY_VERIFY2(label->height() >= needed, qPrintable(QString::number(label->height())));
            QVERIFY(card->height() > before);
        }
        label->say(u"short"_s);
        QTRY_COMPARE(card->height(), before);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::NoteLabelTest)
#include "NoteLabelTest.moc"
