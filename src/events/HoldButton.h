#pragma once

#include "core/EventHold.h"

#include <QPushButton>
#include <QTimer>

#include <chrono>

namespace quorbel {

class EventListPageLink;

/// Holds the event list while it is down, says how much waits, and lets it into the list when it
/// is up again: in slices between the window's other events. What it says shortens to its icon
/// where it has not the room.
class HoldButton : public QPushButton, private EventHoldObserver {
    Q_OBJECT

public:
    /// A part of what waits is handed on at a time, which also costs the table a layout.
    static constexpr std::chrono::milliseconds kSlice{12};

    explicit HoldButton(QWidget *parent = nullptr);
    ~HoldButton() override;

    /// Once: what it works, and the page that takes what waited. Both outlive it. A hold that is on
    /// or still hands on stays so.
    void attach(EventHold &hold, EventListPageLink &page);

    /// As small as its icon; its largest width is what its text needs. So it is the first in a row
    /// to give way.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void turn(bool on);
    void handOnSome();
    void holdChanged() override;
    void showState();
    [[nodiscard]] QString stateText() const;
    [[nodiscard]] QString fittingText() const;
    [[nodiscard]] QString waitingText() const;

    EventHold *m_hold = nullptr;
    EventListPageLink *m_page = nullptr;
    QTimer m_timer;
    QIcon m_pause;
    QIcon m_play;
    bool m_showIsDue = false;
};

}  // namespace quorbel
