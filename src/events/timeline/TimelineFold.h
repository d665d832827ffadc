#pragma once

#include <QObject>

class QAbstractButton;

namespace quorbel {

class ArrangedEvents;
class EventHold;
class Timeline;

/// Shows and hides the timeline with a button, and remembers that across starts (see
/// remember()). At first it is hidden. In a low window it stays so, unless it is opened there.
class TimelineFold : public QObject {
    Q_OBJECT

public:
    static constexpr int kLowWindow = 600;  ///< lower ones are

    /// The events and the hold outlive this, as do the page's own parts.
    TimelineFold(Timeline &timeline, QAbstractButton &button, ArrangedEvents &events,
                 EventHold &hold);
    ~TimelineFold() override;
    TimelineFold(const TimelineFold &) = delete;
    TimelineFold &operator=(const TimelineFold &) = delete;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool isWindowLow() const;
    void take(bool isOpen);
    void look();

    Timeline &m_timeline;
    QAbstractButton &m_button;
    bool m_isWanted;
    bool m_isOpenedInLowWindow = false;
};

}  // namespace quorbel
