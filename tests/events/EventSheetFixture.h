#pragma once

#include "events/ScanViewFixture.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTest>

#include <functional>
#include <string>

namespace quorbel::testing {

/// An event list page, and the details that are opened over it.
class EventSheetFixture : protected ScanViewFixture {
protected:
    void showRows(int count) {
        for (int i = 0; i < count; ++i) {
            list().insertRaw(fields(std::to_string(1700000000 + i), std::to_string(i)));
        }
        show();
    }
    QList<ScanViewEvent *> sheets() { return m_page->findChildren<ScanViewEvent *>(); }
    ScanViewEvent *sheet() { return sheets().value(0); }
    // A press and a release more than a double click is made of, as a hand does.
    void doubleClickRow(int row) {
        clickRow(row);
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(row));
        QCOMPARE(sheets().size(), 1);
        QVERIFY(QTest::qWaitForWindowExposed(sheet()));
    }
    void mouse(QEvent::Type type, const QPoint &place) {
        const auto buttons =
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton);
        QWidget *target = table()->viewport();
        QMouseEvent event(type, place, target->mapToGlobal(place), Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(target, &event);
    }
    // A double click as it comes from the window system, with something happening between its two
    // presses.
    void doubleClickRow(int row, const std::function<void()> &meanwhile) {
        const QPoint place = placeOf(row);
        mouse(QEvent::MouseButtonPress, place);
        mouse(QEvent::MouseButtonRelease, place);
        meanwhile();
        mouse(QEvent::MouseButtonDblClick, place);
        mouse(QEvent::MouseButtonRelease, place);
    }
    void arrive(int count) {
        for (int i = 0; i < count; ++i) {
            m_page->insertEvent(fields(std::to_string(1700001000 + i), "new"));
        }
    }
    void remove(int number) {
        m_page->removeEvent(fields(std::to_string(1700000000 + number), std::to_string(number)));
    }
    QString line(const char *edit) { return sheet()->findChild<QLineEdit *>(name(edit))->text(); }
    QString message() {
        return sheet()->findChild<QPlainTextEdit *>(name("eventMessage"))->toPlainText();
    }
    // All of a field, as Select All and Copy give it.
    QString copied(const char *field) {
        auto *widget = sheet()->findChild<QWidget *>(name(field));
        QGuiApplication::clipboard()->clear();
        QTest::keySequence(widget, QKeySequence::SelectAll);
        QTest::keySequence(widget, QKeySequence::Copy);
        return QGuiApplication::clipboard()->text();
    }
    QAbstractButton *button(const char *which) {
        return sheet()->findChild<QAbstractButton *>(name(which));
    }
    void press(const char *which) { QTest::mouseClick(button(which), Qt::LeftButton); }
    QList<bool> enabled() {
        return {button("eventUp")->isEnabled(), button("eventDown")->isEnabled()};
    }
};

}  // namespace quorbel::testing
