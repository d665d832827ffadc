#pragma once

#include "core/EventList.h"
#include "core/EventMatcher.h"
#include "core/EventQuery.h"
#include "core/SearchProgress.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {

/// The events of a list that a filter means, in the list's order, as rows of their own; all of them
/// while there is no filter. The list's content is not touched.
///
/// Kept true while the list changes. A new filter is searched for in slices: until its result is
/// complete, the one before stands. Main thread only.
class ArrangedEvents : private EventListObserver {
public:
    /// Observes the list, which outlives this.
    explicit ArrangedEvents(EventList &list);
    ~ArrangedEvents() override;
    ArrangedEvents(const ArrangedEvents &) = delete;
    ArrangedEvents &operator=(const ArrangedEvents &) = delete;

    /// Observers hear of the rows that are arranged here, as those of a list do. A new result is a
    /// change at large.
    void addObserver(EventListObserver &observer) { m_observers.push_back(&observer); }
    void removeObserver(EventListObserver &observer) { std::erase(m_observers, &observer); }

    [[nodiscard]] EventList &list() const { return m_list; }
    [[nodiscard]] std::size_t size() const { return isFiltered() ? rows().size() : m_list.size(); }
    [[nodiscard]] EventId idAt(std::size_t row) const;
    /// Nothing when the event is not arranged.
    [[nodiscard]] std::optional<std::size_t> rowOf(EventId id) const;
    /// The row of the event, or where it would stand: that of the next older one, size() when there
    /// is none.
    [[nodiscard]] std::size_t placeOf(EventId id) const;
    /// The row's number in the list. `row` < size().
    [[nodiscard]] std::size_t listRow(std::size_t row) const;
    [[nodiscard]] std::vector<RowRange> listRows(const std::vector<RowRange> &rows) const;

    /// While isFiltered(): how the row's event is rated.
    [[nodiscard]] EventRating ratingAt(std::size_t row) const {
        return rows()[rows().size() - 1 - row].rating();
    }

    /// Asks for another filter. Returns what is wrong with one of its expressions, in English; then
    /// everything stays as it is. Otherwise search() has work to do, unless isSearching() is false.
    std::string setFilter(const EventQuery &filter);
    /// The one asked for last.
    [[nodiscard]] const EventQuery &filter() const;
    /// The one that the rows follow.
    [[nodiscard]] const EventQuery &filterInForce() const;
    [[nodiscard]] bool isFiltered() const { return m_inForce != nullptr; }
    /// Whether the rows follow an earlier filter still.
    [[nodiscard]] bool isSearching() const { return m_search != nullptr; }
    /// While isSearching(): how many events were found up to now.
    [[nodiscard]] std::size_t foundSoFar() const;
    /// Searches on until the result stands or `isTimeUp`, asked about every millisecond or less.
    void search(const std::function<bool()> &isTimeUp);
    /// To be called when dates or images may have changed in the list: searches anew.
    void refresh();

    /// While isFiltered(): how many events of each rating meet all the other conditions.
    [[nodiscard]] const std::array<std::size_t, kRatingCount> &ratingCounts() const {
        return m_counts;
    }

private:
    using Matches = std::vector<EventMatch>;
    struct Search {
        EventMatcher matcher;
        bool isNarrowing;
        Matches matches = {};
        SearchProgress progress = {};
    };

    void rowsWillBeInsertedAtTop(std::size_t count) override;
    void rowsWereInserted(std::size_t count) override;
    void rowsWillBeRemoved(std::size_t first, std::size_t count) override;
    void rowsWereRemoved() override;
    void listWillChangeAtLarge() override;
    void listChangedAtLarge() override;

    template <typename... Parameters, typename... Arguments>
    void tell(void (EventListObserver::*what)(Parameters...), Arguments... arguments) {
        for (EventListObserver *observer : m_observers) {
            (observer->*what)(arguments...);
        }
    }

    void judgeNewest(std::size_t count);
    [[nodiscard]] bool choosesRatings() const;
    /// Oldest first.
    [[nodiscard]] const Matches &rows() const { return choosesRatings() ? m_chosen : m_matches; }
    void startSearch(EventMatcher matcher, bool isNarrowing);
    [[nodiscard]] bool searchRun();
    [[nodiscard]] bool narrowRun();
    void finishSearch();
    void choose();
    void count();
    void eraseLeaving(Matches &matches) const;
    void eraseGone(Matches &matches) const;

    EventList &m_list;
    EventReader m_reader;
    std::vector<EventListObserver *> m_observers;
    std::unique_ptr<EventMatcher> m_inForce;
    std::unique_ptr<Search> m_search;
    Matches m_matches;                    // of all conditions but that on ratings
    Matches m_newest;                     // of those that just came; kept for their memory
    EventMatcher::Positions m_positions;  // of a run; kept for their memory
    Matches m_chosen;                     // those of the ratings chosen, if any are
    std::array<std::size_t, kRatingCount> m_counts{};
    EventId m_firstLeaving = 0;
    EventId m_lastLeaving = 0;
    bool m_rowsLeave = false;
    std::size_t m_sizeBeforeChange = 0;
};

}  // namespace quorbel
