#include "settings/RecipientsList.h"

#include <QAbstractItemModel>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

class RecipientsListTest : public QObject {
    Q_OBJECT

private:
    using Texts = std::vector<std::string>;

    template <class Control = QWidget>
    Control &control(const char *name) {
        return *m_list->findChild<Control *>(QString::fromLatin1(name));
    }
    QLineEdit &field() { return control<QLineEdit>("recipientEmail"); }
    QPushButton &add() { return control<QPushButton>("addRecipient"); }
    QTableView &table() { return control<QTableView>("recipientsTable"); }
    void click(const char *button) {
        QTest::mouseClick(&control<QPushButton>(button), Qt::LeftButton);
    }
    void select(int row) {
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {},
                          table().visualRect(table().model()->index(row, 0)).center());
    }
    bool isAnySelected() { return table().selectionModel()->hasSelection(); }
    QString focus() { return m_dialog->focusWidget()->objectName(); }

    // In a dialog with a default button, as on its sheets.
    std::unique_ptr<QDialog> m_dialog;
    RecipientsList *m_list = nullptr;

private Q_SLOTS:
    void init() {
        m_dialog = std::make_unique<QDialog>();
        auto *layout = new QVBoxLayout(m_dialog.get());
        m_list = new RecipientsList;
        layout->addWidget(m_list);
        auto *save = new QPushButton(u"Save"_s);
        save->setDefault(true);
        layout->addWidget(save);
        connect(save, &QPushButton::clicked, m_dialog.get(), &QDialog::accept);
        m_dialog->resize(460, 400);
        m_dialog->show();
        m_list->start({});
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    }

    void startsWithWhatItIsGiven() {
        QTest::keyClicks(&field(), u"left over"_s);
        m_list->start({"z", "a", "z"});
        QCOMPARE(m_list->recipients(), (Texts{"z", "a", "z"}));
        QVERIFY(!add().isEnabled());
        QVERIFY(!isAnySelected());
        QCOMPARE(focus(), u"recipientBlank"_s);
        m_list->start({"b"});
        QCOMPARE(m_list->recipients(), Texts{"b"});
    }

    void addIsEnabledWhileThereIsText() {
        field().setFocus();
        QVERIFY(!add().isEnabled());
        QTest::keyClicks(&field(), u"x"_s);
        QVERIFY(add().isEnabled());
        QCOMPARE(focus(), u"recipientEmail"_s);
        QTest::keyClicks(&field(), u"y"_s);
        QTest::keyClick(&field(), Qt::Key_Backspace);
        QVERIFY(add().isEnabled());
        QTest::keyClick(&field(), Qt::Key_Backspace);
        QVERIFY(!add().isEnabled());
        QCOMPARE(focus(), u"recipientBlank"_s);
        QTest::keyClicks(&field(), u" "_s);
        QVERIFY(add().isEnabled());
    }

    void addAppendsAnyTextAndStartsOver() {
        m_list->start({"first"});
        for (const char *text : {"x", "x", " not, an address "}) {
            select(0);
            field().setFocus();
            QTest::keyClicks(&field(), QString::fromLatin1(text));
            click("addRecipient");
            QCOMPARE(field().text(), QString());
            QVERIFY(!add().isEnabled());
            QVERIFY(!isAnySelected());
            QCOMPARE(focus(), u"recipientBlank"_s);
        }
        QCOMPARE(m_list->recipients(), (Texts{"first", "x", "x", " not, an address "}));
    }

    void returnAddsInsteadOfSaving() {
        for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
            QTest::keyClicks(&field(), u"x"_s);
            QTest::keyClick(&field(), key);
        }
        QCOMPARE(m_list->recipients(), (Texts{"x", "x"}));
        QVERIFY(m_dialog->isVisible());
        QTest::keyClick(&field(), Qt::Key_Return);
        QVERIFY(!m_dialog->isVisible());
    }

    void removeTakesTheSelectedRow() {
        m_list->start({"a", "b", "a"});
        click("removeRecipient");
        QCOMPARE(m_list->recipients(), (Texts{"a", "b", "a"}));
        select(2);
        click("removeRecipient");
        QCOMPARE(m_list->recipients(), (Texts{"a", "b"}));
        QVERIFY(!isAnySelected());
        click("removeRecipient");
        select(0);
        click("removeRecipient");
        QCOMPARE(m_list->recipients(), Texts{"b"});
    }

    void theListCannotBeEdited() {
        m_list->start({"a"});
        select(0);
        QTest::mouseDClick(table().viewport(), Qt::LeftButton, {},
                           table().visualRect(table().model()->index(0, 0)).center());
        QTest::keyClicks(&table(), u"new"_s);
        QVERIFY(table().findChildren<QLineEdit *>().isEmpty());
        QCOMPARE(m_list->recipients(), Texts{"a"});
    }

    void saysThatThereAreNoRecipients() {
        m_list->alertNoRecipients();
        const auto *alert = m_list->findChild<QMessageBox *>(u"alertBox"_s);
        QVERIFY(alert != nullptr && alert->isVisible());
        QCOMPARE(alert->windowTitle(), u"Quorbel"_s);
        QCOMPARE(alert->text(), u"No recipients selected"_s);
        QCOMPARE(alert->informativeText(), u"Please add recipients and try again."_s);
    }

    void removeIsALinkInElevenPoints() {
        const auto &remove = control<QPushButton>("removeRecipient");
        QCOMPARE(remove.property("role").toString(), u"link"_s);
        QCOMPARE(remove.font().pointSize(), 11);
        QCOMPARE(remove.cursor().shape(), Qt::PointingHandCursor);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::RecipientsListTest)
#include "RecipientsListTest.moc"
