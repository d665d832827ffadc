#include "platform/gui/AlertBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <memory>
#include <vector>

namespace quorbel {

using namespace Qt::StringLiterals;

class AlertBoxTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_answers.clear();
        m_window = std::make_unique<QWidget>();
        m_window->show();
    }

    void cleanup() { m_window.reset(); }

    void showsItsTextsAndReturnsAtOnce() {
        QMessageBox *box = open({.message = "No events selected"_L1,
                                 .informativeText = "Please <b>select</b> specific events."_L1,
                                 .checkBox = {},
                                 .buttons = {}});
        QCOMPARE(box->windowTitle(), "Quorbel"_L1);
        QCOMPARE(box->text(), "No events selected"_L1);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QCOMPARE(box->informativeText(), "Please <b>select</b> specific events."_L1);
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QCOMPARE(box->parentWidget(), m_window.get());
        QCOMPARE(box->checkBox(), nullptr);
        QCOMPARE(box->buttons().size(), 1);
        QVERIFY(m_answers.empty());
    }

    void theSingleButtonIsTheDefault() {
        const QPointer<QMessageBox> box = open(plainRequest());
        QCOMPARE(box->defaultButton(), button(box, 0));
        QTest::keyClick(box, Qt::Key_Return);
        QCOMPARE(m_answers.size(), 1U);
        QCOMPARE(m_answers[0].button, 0);
        QVERIFY(!m_answers[0].checked);
        QTRY_VERIFY(box.isNull());
    }

    void eachButtonAnswersItsPlace() {
        for (const int pressed : {0, 1}) {
            m_answers.clear();
            QMessageBox *box = open(questionRequest());
            QCOMPARE(button(box, 0)->text(), "Yes"_L1);
            QCOMPARE(button(box, 1)->text(), "No"_L1);
            QCOMPARE(box->defaultButton(), button(box, 0));
            QTest::mouseClick(button(box, pressed), Qt::LeftButton);
            QCOMPARE(m_answers.size(), 1U);
            QCOMPARE(m_answers[0].button, pressed);
        }
    }

    void yesStandsLeftOfNo() {
        QMessageBox *box = open(questionRequest());
        QVERIFY(button(box, 0)->x() < button(box, 1)->x());
    }

    void theCheckBoxStartsUntickedAndItsStateIsAnswered() {
        for (const bool ticked : {false, true}) {
            m_answers.clear();
            AlertRequest request = plainRequest();
            request.checkBox = "Delete all events"_L1;
            QMessageBox *box = open(request);
            auto *checkBox = box->findChild<QCheckBox *>("alertCheckBox"_L1);
            QVERIFY(checkBox != nullptr);
            QCOMPARE(checkBox->text(), "Delete all events"_L1);
            QVERIFY(!checkBox->isChecked());
            if (ticked) {
                QTest::keyClick(checkBox, Qt::Key_Space);
            }
            QTest::mouseClick(button(box, 0), Qt::LeftButton);
            QCOMPARE(m_answers.size(), 1U);
            QCOMPARE(m_answers[0].checked, ticked);
        }
    }

    void dismissingPressesNoButton() {
        for (const AlertRequest &request : {plainRequest(), questionRequest()}) {
            m_answers.clear();
            QTest::keyClick(open(request), Qt::Key_Escape);
            QCOMPARE(m_answers.size(), 1U);
            QCOMPARE(m_answers[0].button, -1);

            m_answers.clear();
            open(request)->close();
            QCOMPARE(m_answers.size(), 1U);
            QCOMPARE(m_answers[0].button, -1);
        }
    }

    void answersAfterItHasClosed() {
        bool visible = true;
        QMessageBox *opened = nullptr;
        openAlert(m_window.get(), plainRequest(),
                  [&](const AlertAnswer &) { visible = opened->isVisible(); });
        opened = box();
        QTest::mouseClick(button(opened, 0), Qt::LeftButton);
        QVERIFY(!visible);
    }

    void oneAlertCanFollowAnother() {
        openAlert(m_window.get(), plainRequest(), [this](const AlertAnswer &) {
            openAlert(m_window.get(), questionRequest(),
                      [this](const AlertAnswer &answer) { m_answers.push_back(answer); });
        });
        QTest::mouseClick(button(box(), 0), Qt::LeftButton);
        QTRY_VERIFY(box() != nullptr && button(box(), 1) != nullptr);
        QTest::mouseClick(button(box(), 1), Qt::LeftButton);
        QCOMPARE(m_answers.size(), 1U);
        QCOMPARE(m_answers[0].button, 1);
    }

    void aDestroyedParentLeavesItUnanswered() {
        const QPointer<QMessageBox> box = open(plainRequest());
        m_window.reset();
        QVERIFY(box.isNull());
        QCoreApplication::processEvents();
        QVERIFY(m_answers.empty());
    }

    void anAnswerNeedsNoReceiver() {
        openAlert(m_window.get(), plainRequest(), {});
        QTest::mouseClick(button(box(), 0), Qt::LeftButton);
        QTRY_VERIFY(box() == nullptr);
    }

    void controlsHaveAccessibleNames() {
        AlertRequest request = questionRequest();
        request.checkBox = "Delete all events"_L1;
        QMessageBox *box = open(request);
        QCOMPARE(button(box, 1)->accessibleName(), "No"_L1);
        QCOMPARE(box->checkBox()->accessibleName(), "Delete all events"_L1);
    }

private:
    static AlertRequest plainRequest() {
        return {
            .message = "Message"_L1, .informativeText = "More."_L1, .checkBox = {}, .buttons = {}};
    }
    static AlertRequest questionRequest() {
        return {.message = "Are you sure?"_L1,
                .informativeText = "More."_L1,
                .checkBox = {},
                .buttons = {"Yes"_L1, "No"_L1}};
    }

    QMessageBox *open(const AlertRequest &request) {
        openAlert(m_window.get(), request,
                  [this](const AlertAnswer &answer) { m_answers.push_back(answer); });
        return box();
    }
    // The newest one: a closed box is deleted only by the event loop.
    [[nodiscard]] QMessageBox *box() const {
        const auto boxes = m_window->findChildren<QMessageBox *>("alertBox"_L1);
        return boxes.isEmpty() ? nullptr : boxes.last();
    }
    static QPushButton *button(const QMessageBox *box, int index) {
        return box->findChild<QPushButton *>(QStringLiteral("alertButton%1").arg(index));
    }

    std::unique_ptr<QWidget> m_window;
    std::vector<AlertAnswer> m_answers;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::AlertBoxTest)
#include "AlertBoxTest.moc"
