#pragma once

#include "core/AppState.h"
#include "core/ArrangedEvents.h"
#include "events/find/MatchMarks.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>
#include <optional>

namespace quorbel {

class EventTableView;
class FindBar;
class NothingFound;

/// Lets the table show what the bar asks for: searches between the window's own events, and keeps
/// the selected event in sight when the rows change.
class EventFinder : public QObject, private EventListObserver {
    Q_OBJECT

public:
    /// The table shows `events` already. All of them outlive this.
    EventFinder(ArrangedEvents &events, const AppState &state, FindBar &bar, EventTableView &table);
    ~EventFinder() override;
    EventFinder(const EventFinder &) = delete;
    EventFinder &operator=(const EventFinder &) = delete;

    /// How long a search goes on before the window's own events get their turn, and after what time
    /// countText() tells how far it has come.
    struct Pace {
        std::chrono::milliseconds slice{8};
        std::chrono::milliseconds patience{200};
    };
    void setPace(const Pace &pace) { m_pace = pace; }

    /// "312 of 1,207 events" while a filter is in use, else "1,207 events"; "312… of 1,207 events"
    /// while a search takes long.
    [[nodiscard]] QString countText() const;
    /// What a question before a deletion adds while a filter is in use, after a blank line; empty
    /// when there is none. `count` is how many events are to be deleted.
    [[nodiscard]] QString deletionNote(std::size_t count) const;
    /// What of a shown text the filter asks for.
    [[nodiscard]] const MatchMarks &marks() const { return m_marks; }
    /// To be called each time the list is shown.
    void refresh();
    /// Shows all events, the selected one in sight among its neighbours.
    void showSurroundings();

Q_SIGNALS:
    /// The text of countText() may be another one now.
    void countChanged();

private:
    void rowsWillBeInsertedAtTop(std::size_t) override {}
    void rowsWereInserted(std::size_t) override { noteChange(); }
    void rowsWillBeRemoved(std::size_t, std::size_t) override {}
    void rowsWereRemoved() override { noteChange(); }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override { noteChange(); }

    void applyFilter();
    void startSearching();
    void search();
    void noteProgress();
    void showResult();
    void showWhetherFound();
    void noteChange();
    void showCounts();
    [[nodiscard]] std::array<std::size_t, kRatingCount> countsOfAll() const;
    void rememberSelected();
    void restoreSelected();

    ArrangedEvents &m_events;
    const AppState &m_state;
    FindBar &m_bar;
    EventTableView &m_table;
    MatchMarks m_marks;
    NothingFound *m_nothingFound;
    Pace m_pace;
    QTimer m_slices;
    QElapsedTimer m_sinceStart;     // of the search
    QElapsedTimer m_sinceProgress;  // was told; invalid until it is
    QString m_hint;
    bool m_isChangeNoted = false;
    std::optional<EventId> m_selected;
    int m_selectedPlace = 0;  // rows from the top
    bool m_isMine = false;    // whether it is the filter that changes the rows
};

}  // namespace quorbel
