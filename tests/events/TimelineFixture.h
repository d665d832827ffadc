#pragma once

#include "events/FindBar.h"
#include "events/ScanViewFixture.h"
#include "events/timeline/Timeline.h"
#include "platform/gui/WindowMemory.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QTest>
#include <QWheelEvent>

namespace quorbel::testing {

/// The timeline on the real page, with real wheel, mouse and keys.
class TimelineFixture : protected ScanViewFixture {
protected:
    static constexpr std::int64_t kStart = 1'700'006'400;  // an hour begins
    static constexpr std::int64_t kHour = 3600;

    TimelineFixture() { qputenv("TZ", "UTC"); }

    Timeline &timeline() { return *m_page->findChild<Timeline *>(name("timeline")); }
    QAbstractButton &toggle() {
        return *m_page->findChild<QAbstractButton *>(name("timelineToggle"));
    }
    const TimeAxis &axis() { return timeline().axis(); }
    void wheel(int x, int turn, int sideways = 0) {
        const QPoint place(x, 10);
        QWheelEvent event(place, timeline().mapToGlobal(place), {}, {sideways, turn}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&timeline(), &event);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&timeline(), key, modifiers);
    }
    void moveTo(int x) { QTest::mouseMove(&timeline(), QPoint(x, 10)); }
    void press(int x, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mousePress(&timeline(), Qt::LeftButton, modifiers, QPoint(x, 10));
    }
    void dragTo(int x) {
        QMouseEvent event(QEvent::MouseMove, QPointF(x, 10), timeline().mapToGlobal(QPointF(x, 10)),
                          Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&timeline(), &event);
    }
    void release(int x) {
        QTest::mouseRelease(&timeline(), Qt::LeftButton, Qt::NoModifier, QPoint(x, 10));
    }
    void drag(int from, int to, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        press(from, modifiers);
        dragTo((from + to) / 2);
        dragTo(to);
        release(to);
    }
    /// Chooses from the menu by the letter that is underlined.
    void chooseFromMenu(Qt::Key letter) {
        const QPoint place(10, 10);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, timeline().mapToGlobal(place));
        QApplication::sendEvent(&timeline(), &event);
        auto *menu = m_page->findChild<QMenu *>(name("timelineMenu"));
        QVERIFY(menu->isVisible());
        QTest::keyClick(menu, letter);
        QVERIFY(!menu->isVisible());
        m_page->activateWindow();  // as a window manager does once the menu has closed
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    double secondsPerPixel() { return static_cast<double>(axis().step()) / axis().columnWidth(); }
    void startAfresh(int events, std::int64_t every) {
        for (int i = 0; i < events; ++i) {
            list().insertRaw(fields(std::to_string(kStart + i * every), "link up",
                                    i % 10 == 3 ? "Kern.Critical" : "Kern.Debug"));
        }
        show();
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    void open(int events = 2400, std::int64_t every = 36) {
        startAfresh(events, every);
        QTest::keyClick(table(), Qt::Key_T, Qt::ControlModifier);
        QTRY_VERIFY(timeline().isVisible());
        QTRY_VERIFY(events == 0 || axis().hasRange());
    }
    void openWithFocus() {
        open();
        timeline().setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(timeline().hasFocus());
    }
    QString count() { return m_page->findChild<QLabel *>(name("eventCount"))->text(); }
    EventQuery query() { return m_page->findChild<FindBar *>(name("findBar"))->filter(); }
    QString spanChosen() { return m_page->findChild<QAbstractButton *>(name("findSpan"))->text(); }
    QString readOut() { return timeline().readOut(); }
    QString remembered(const char *key = "Timeline/shown") {
        finishRemembering();
        return QSettings(name((m_configuration->path() / "QuorbelWindow.ini").c_str()),
                         QSettings::IniFormat)
            .value(name(key))
            .toString();
    }
};

}  // namespace quorbel::testing
