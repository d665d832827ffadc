#include "settings/BlankField.h"
#include "settings/NumberStepper.h"

#include <QLineEdit>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

#include <limits>
#include <vector>

namespace quorbel {

namespace {

struct Form : QWidget {
    Form(int least, int most) : blank(this), number(&field, &stepper, least, most, this) {
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(&field);
        layout->addWidget(&stepper);
        connect(&number, &NumberStepper::edited, this,
                [this](std::int64_t value) { edits.push_back(value); });
        show();
    }
    void type(const QString &text) { QTest::keyClicks(&field, text); }
    void press(Qt::Key key) { QTest::keyClick(&field, key); }
    void step(Qt::Key key) { QTest::keyClick(&stepper, key); }
    QString shown() { return field.text() + u'(' + QString::number(stepper.value()) + u')'; }

    BlankField blank;
    QLineEdit field;
    QSpinBox stepper;
    NumberStepper number;
    std::vector<std::int64_t> edits;
};

using Edits = std::vector<std::int64_t>;

}  // namespace

class NumberStepperTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void showingAValueIsNoEdit() {
        Form form(0, 99);
        form.number.setValue(42);
        QCOMPARE(form.shown(), QStringLiteral("42(42)"));
        form.number.clear();
        QCOMPARE(form.shown(), QStringLiteral("(0)"));
        QVERIFY(form.edits.empty());
    }

    void whatIsTypedMovesTheStepper() {
        Form form(0, 99);
        form.number.setValue(4);
        form.type(QStringLiteral("2"));
        QCOMPARE(form.shown(), QStringLiteral("42(42)"));
        form.press(Qt::Key_Backspace);
        form.press(Qt::Key_Backspace);
        QCOMPARE(form.shown(), QStringLiteral("(0)"));
        form.type(QStringLiteral("07"));
        QCOMPARE(form.shown(), QStringLiteral("07(7)"));
        QVERIFY((form.edits == Edits{42, 4, 0, 0, 7}));
    }

    void stepsFillTheField() {
        Form form(0, 99);
        form.number.setValue(98);
        form.step(Qt::Key_Up);
        form.step(Qt::Key_Up);
        form.press(Qt::Key_Down);
        form.press(Qt::Key_Up);
        form.press(Qt::Key_Up);
        QCOMPARE(form.shown(), QStringLiteral("99(99)"));
        QVERIFY((form.edits == Edits{99, 98, 99}));
    }

    void theFirstStepFromAnEmptyFieldIsToOne_data() {
        QTest::addColumn<int>("least");
        QTest::newRow("from 0") << 0;
        QTest::newRow("from 1") << 1;
    }
    void theFirstStepFromAnEmptyFieldIsToOne() {
        QFETCH(const int, least);
        Form form(least, 99);
        form.press(Qt::Key_Down);  // it was never filled
        QCOMPARE(form.shown(), QStringLiteral("(0)"));
        form.press(Qt::Key_Up);
        QCOMPARE(form.shown(), QStringLiteral("1(1)"));
        form.number.setValue(42);
        form.press(Qt::Key_Backspace);
        form.press(Qt::Key_Backspace);
        form.step(Qt::Key_Up);
        QCOMPARE(form.shown(), QStringLiteral("1(1)"));
        form.number.clear();
        form.press(Qt::Key_Up);
        QCOMPARE(form.shown(), QStringLiteral("1(1)"));
        // From there it is down to the least.
        form.press(Qt::Key_Down);
        QCOMPARE(form.field.text(), QString::number(least));
        QVERIFY((form.edits == (least == 0 ? Edits{1, 4, 0, 1, 1, 0} : Edits{1, 4, 0, 1, 1})));
    }

    void onlyWholeNumbersWithinTheLimitsAreTaken_data() {
        QTest::addColumn<int>("least");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("letters") << 0 << "1a-+. e5"
                                 << "15(15)";
        QTest::newRow("too large") << 0 << "3601"
                                   << "360(360)";
        QTest::newRow("largest") << 0 << "3600"
                                 << "3600(3600)";
        QTest::newRow("zero") << 0 << "0"
                              << "0(0)";
        QTest::newRow("below the least") << 1 << "0"
                                         << "(0)";
        QTest::newRow("the least") << 1 << "01"
                                   << "1(1)";
        QTest::newRow("very long") << 0 << "00000000000000001"
                                   << "0000000000(0)";
    }
    void onlyWholeNumbersWithinTheLimitsAreTaken() {
        QFETCH(int, least);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        Form form(least, 3600);
        form.type(typed);
        QCOMPARE(form.shown(), shown);
    }

    void aValueBeyondTheLimitsStaysUntilItIsEdited_data() {
        QTest::addColumn<qint64>("value");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("erased");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("stepped");
        QTest::newRow("negative") << qint64{-5} << "-5(0)"
                                  << "(0)"
                                  << "53(53)"
                                  << "1(1)";
        QTest::newRow("above") << qint64{12345} << "12345(999)"
                               << "999(999)"
                               << "999(999)"
                               << "12345(999)";
        QTest::newRow("largest") << std::numeric_limits<qint64>::max() << "9223372036854775807(999)"
                                 << "999(999)"
                                 << "999(999)"
                                 << "9223372036854775807(999)";
        QTest::newRow("smallest") << std::numeric_limits<qint64>::min() << "-9223372036854775808(0)"
                                  << "999(999)"
                                  << "999(999)"
                                  << "1(1)";
    }
    void aValueBeyondTheLimitsStaysUntilItIsEdited() {
        QFETCH(qint64, value);
        Form form(0, 999);
        form.number.setValue(value);
        QTEST(form.shown(), "shown");
        form.press(Qt::Key_Left);
        QVERIFY(form.edits.empty());
        form.press(Qt::Key_End);
        form.press(Qt::Key_Backspace);
        QTEST(form.shown(), "erased");
        form.number.setValue(value);
        form.press(Qt::Key_End);
        form.type(QStringLiteral("3"));
        QTEST(form.shown(), "typed");
        QCOMPARE(form.edits.back(), std::int64_t{form.stepper.value()});
        form.number.setValue(value);
        form.step(Qt::Key_Up);
        QTEST(form.shown(), "stepped");
    }

    void bothAreEnabledTogether() {
        Form form(0, 9);
        form.number.setEnabled(false);
        QVERIFY(!form.field.isEnabled() && !form.stepper.isEnabled());
        form.number.setEnabled(true);
        QVERIFY(form.field.isEnabled() && form.stepper.isEnabled());
    }

    void theBlankFieldTakesTheFocusAndIsNoStopOfItsOwn() {
        Form form(0, 9);
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        form.blank.setFocus();
        QTRY_VERIFY(form.blank.hasFocus());
        QVERIFY(form.blank.size().isEmpty());
        QTest::keyClick(&form.blank, Qt::Key_5);
        QCOMPARE(form.field.text(), QString());
        QTest::keyClick(&form.blank, Qt::Key_Tab);
        QVERIFY(form.field.hasFocus());
        QTest::keyClick(&form.field, Qt::Key_Tab);
        QVERIFY(form.field.hasFocus());  // neither the stepper nor the blank field
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::NumberStepperTest)
#include "NumberStepperTest.moc"
