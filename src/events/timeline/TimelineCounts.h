#pragma once

#include "core/ArrangedEvents.h"
#include "core/EventTimes.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace quorbel {

/// When events happened: all of them, and those that a filter means; by their rating, and by
/// whatever else they are told apart. Counted between the window's other events for as long as this
/// exists.
class TimelineCounts : public QObject, private EventListObserver {
    Q_OBJECT

public:
    /// How long one step of the counting takes at most.
    static constexpr int kSliceMilliseconds = 3;

    /// The events outlive this.
    TimelineCounts(ArrangedEvents &events, EventGrouping grouping);
    ~TimelineCounts() override;
    TimelineCounts(const TimelineCounts &) = delete;
    TimelineCounts &operator=(const TimelineCounts &) = delete;

    [[nodiscard]] const TimeCounts &all() const { return m_allTimes.counts(); }
    /// Null while there is no filter, and until its events are counted.
    [[nodiscard]] const TimeCounts *matching() const;

    /// What the events are told apart by, beside their rating.
    [[nodiscard]] const EventGroups &groups() const { return m_groups; }
    // Like all() and matching(); null until they are counted, too.
    [[nodiscard]] const TimeCounts *allInGroups() const;
    [[nodiscard]] const TimeCounts *matchingInGroups() const;

Q_SIGNALS:
    /// Ten times a second at most while events come one by one.
    void changed();

private:
    void rowsWillBeInsertedAtTop(std::size_t) override {}
    void rowsWereInserted(std::size_t) override { lookIn(kPause); }
    void rowsWillBeRemoved(std::size_t first, std::size_t count) override;
    void rowsWereRemoved() override { lookIn(kPause); }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override;

    static constexpr int kPause = 100;  // milliseconds

    /// Counts that may be there, and may be complete.
    struct Times {
        std::unique_ptr<EventTimes> times{};
        bool areCounted = false;
        void begin(ArrangedEvents &events, const EventGroups &groups);
        void end() { *this = {}; }
        /// False when there is more to count.
        bool count(const std::function<bool()> &isTimeUp);
        [[nodiscard]] const TimeCounts *counts() const {
            return areCounted ? &times->counts() : nullptr;
        }
    };

    void lookIn(int milliseconds);
    void look();
    void followGroups();
    void followFilter();

    ArrangedEvents &m_events;
    ArrangedEvents m_all;
    EventTimes m_allTimes;
    EventGroups m_groups;
    Times m_matching;
    Times m_allInGroups;
    Times m_matchingInGroups;
    bool m_mayHaveNewGroups = false;
    QTimer m_timer;
    QElapsedTimer m_sinceCounted;
};

}  // namespace quorbel
