#pragma once

#include "core/ArrangedEvents.h"
#include "core/EventTimes.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace quorbel {

/// When events happened: all of them, and those that a filter means. Counted between the window's
/// other events for as long as this exists.
class TimelineCounts : public QObject, private EventListObserver {
    Q_OBJECT

public:
    /// How long one step of the counting takes at most.
    static constexpr int kSliceMilliseconds = 3;

    /// The events outlive this.
    explicit TimelineCounts(ArrangedEvents &events);
    ~TimelineCounts() override;
    TimelineCounts(const TimelineCounts &) = delete;
    TimelineCounts &operator=(const TimelineCounts &) = delete;

    [[nodiscard]] const TimeCounts &all() const { return m_allTimes.counts(); }
    /// Null while there is no filter, and until its events are counted.
    [[nodiscard]] const TimeCounts *matching() const;

Q_SIGNALS:
    /// Ten times a second at most while events come one by one.
    void changed();

private:
    void rowWillBeInsertedAtTop() override {}
    void rowWasInserted() override { lookIn(kPause); }
    void rowsWillBeRemoved(std::size_t, std::size_t) override {}
    void rowsWereRemoved() override { lookIn(kPause); }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override;

    static constexpr int kPause = 100;  // milliseconds

    void lookIn(int milliseconds);
    void look();
    void followFilter();

    ArrangedEvents &m_events;
    ArrangedEvents m_all;
    EventTimes m_allTimes;
    std::unique_ptr<EventTimes> m_matchingTimes;
    bool m_isMatchingCounted = false;
    QTimer m_timer;
    QElapsedTimer m_sinceCounted;
};

}  // namespace quorbel
