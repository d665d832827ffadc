#include "core/ArrangedEvents.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <utility>

namespace quorbel {

namespace {

const EventQuery kNoFilter;

auto firstFrom(const std::vector<EventMatch> &matches, EventId id) {
    return std::ranges::lower_bound(matches, id, {}, &EventMatch::id);
}

}  // namespace

ArrangedEvents::ArrangedEvents(EventList &list) : m_list(list), m_reader(list) {
    m_list.addObserver(*this);
}

ArrangedEvents::~ArrangedEvents() {
    m_list.removeObserver(*this);
}

EventId ArrangedEvents::idAt(std::size_t row) const {
    return isFiltered() ? rows()[rows().size() - 1 - row].id() : m_list.idAt(row);
}

std::optional<std::size_t> ArrangedEvents::rowOf(EventId id) const {
    if (!isFiltered()) {
        return m_list.rowOf(id);
    }
    const auto found = firstFrom(rows(), id);
    if (found == rows().end() || found->id() != id) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(rows().end() - found - 1);
}

std::size_t ArrangedEvents::placeOf(EventId id) const {
    // Later events have larger ids and stand above.
    std::size_t first = 0;
    std::size_t last = size();
    while (first < last) {
        const std::size_t middle = first + (last - first) / 2;
        if (idAt(middle) > id) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

std::size_t ArrangedEvents::listRow(std::size_t row) const {
    return isFiltered() ? m_list.rowOf(idAt(row)).value_or(0) : row;
}

std::vector<RowRange> ArrangedEvents::listRows(const std::vector<RowRange> &rows) const {
    if (!isFiltered()) {
        return rows;
    }
    std::vector<std::size_t> inList;
    for (const RowRange &range : rows) {
        for (std::size_t row = range.first; row < range.first + range.count; ++row) {
            inList.push_back(listRow(row));
        }
    }
    return joinRows(std::move(inList));
}

const EventQuery &ArrangedEvents::filter() const {
    return m_search ? m_search->matcher.filter() : filterInForce();
}

const EventQuery &ArrangedEvents::filterInForce() const {
    return m_inForce ? m_inForce->filter() : kNoFilter;
}

bool ArrangedEvents::choosesRatings() const {
    return filterInForce().ratings.any();
}

std::string ArrangedEvents::setFilter(const EventQuery &filter) {
    EventMatcher matcher(m_list, filter);
    if (!matcher.error().empty()) {
        return matcher.error();
    }
    if (filter == this->filter()) {
        return {};
    }
    if (!filter.isInUse() && m_inForce) {
        tell(&EventListObserver::listWillChangeAtLarge);
        m_inForce.reset();
        m_matches = {};
        m_chosen = {};
        tell(&EventListObserver::listChangedAtLarge);
    }
    m_search.reset();
    if (filter == filterInForce()) {
        return {};
    }
    EventQuery sameRatings = filter;
    sameRatings.ratings = filterInForce().ratings;
    if (m_inForce && sameRatings == filterInForce()) {
        tell(&EventListObserver::listWillChangeAtLarge);
        m_inForce = std::make_unique<EventMatcher>(std::move(matcher));
        choose();
        tell(&EventListObserver::listChangedAtLarge);
        return {};
    }
    startSearch(std::move(matcher), m_inForce && isNarrowerThan(sameRatings, filterInForce()));
    return {};
}

void ArrangedEvents::startSearch(EventMatcher matcher, bool isNarrowing) {
    m_search = std::make_unique<Search>(Search{std::move(matcher), isNarrowing});
    // Memory that is not written to is none, and growing would copy all of it.
    m_search->matches.reserve(isNarrowing ? m_matches.size() : m_list.size());
}

std::size_t ArrangedEvents::foundSoFar() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        m_search->matches,
        [this](EventMatch match) { return filter().meansRating(match.rating()); }));
}

void ArrangedEvents::search(const std::function<bool()> &isTimeUp) {
    while (m_search) {
        const auto start = std::chrono::steady_clock::now();
        if (!(m_search->isNarrowing ? narrowRun() : searchRun())) {
            finishSearch();
            return;
        }
        m_search->progress.adjust(std::chrono::steady_clock::now() - start);
        if (isTimeUp()) {
            return;
        }
    }
}

bool ArrangedEvents::searchRun() {
    return m_search->progress.matchRun(m_reader, m_search->matcher, m_positions, m_search->matches);
}

bool ArrangedEvents::narrowRun() {
    SearchProgress &progress = m_search->progress;
    auto candidate = firstFrom(m_matches, progress.next());
    if (candidate == m_matches.end()) {
        return false;
    }
    EventChunk &chunk = m_reader.chunk(m_reader.chunkFrom(candidate->id()));
    progress.goTo(chunk, progress.endOfRun(chunk, chunk.countBefore(candidate->id())));
    m_positions.clear();
    for (; candidate != m_matches.end() && candidate->id() < progress.next(); ++candidate) {
        m_positions.push_back(static_cast<std::uint32_t>(chunk.countBefore(candidate->id())));
    }
    m_search->matcher.match(chunk, m_positions, m_search->matches);
    return true;
}

void ArrangedEvents::finishSearch() {
    tell(&EventListObserver::listWillChangeAtLarge);
    const std::unique_ptr<Search> done = std::move(m_search);
    m_inForce = std::make_unique<EventMatcher>(std::move(done->matcher));
    m_matches = std::move(done->matches);
    count();
    choose();
    tell(&EventListObserver::listChangedAtLarge);
}

void ArrangedEvents::refresh() {
    if (filter().isInUse()) {
        startSearch(EventMatcher(m_list, filter()), false);
    }
}

void ArrangedEvents::choose() {
    m_chosen = {};
    if (choosesRatings()) {
        std::size_t chosen = 0;
        for (std::size_t rating = 0; rating < kRatingCount; ++rating) {
            chosen += filterInForce().ratings[rating] ? m_counts[rating] : 0;
        }
        m_chosen.reserve(chosen);
        std::ranges::copy_if(m_matches, std::back_inserter(m_chosen), [this](EventMatch match) {
            return filterInForce().ratings[match.rating()];
        });
    }
}

void ArrangedEvents::count() {
    m_counts.fill(0);
    // A loop for each rating, which compares several matches at a time; in blocks, so that only the
    // first of these loops waits for the memory.
    constexpr std::size_t kBlock = 2048;
    for (std::span rest(std::as_const(m_matches)); !rest.empty();
         rest = rest.subspan(std::min(kBlock, rest.size()))) {
        const auto block = rest.first(std::min(kBlock, rest.size()));
        for (std::size_t rating = 0; rating < kRatingCount; ++rating) {
            const auto hasRating = [rating](EventMatch match) { return match.rating() == rating; };
            m_counts[rating] += static_cast<std::size_t>(std::ranges::count_if(block, hasRating));
        }
    }
}

void ArrangedEvents::rowsWillBeInsertedAtTop(std::size_t count) {
    if (!isFiltered()) {
        tell(&EventListObserver::rowsWillBeInsertedAtTop, count);
    }
}

void ArrangedEvents::rowsWereInserted(std::size_t count) {
    if (!isFiltered()) {
        tell(&EventListObserver::rowsWereInserted, count);
        return;
    }
    judgeNewest(count);
    const auto isMeant = [this](EventMatch match) {
        return filterInForce().meansRating(match.rating());
    };
    for (const EventMatch match : m_newest) {
        ++m_counts[match.rating()];
    }
    const auto shown = static_cast<std::size_t>(std::ranges::count_if(m_newest, isMeant));
    if (shown > 0) {
        tell(&EventListObserver::rowsWillBeInsertedAtTop, shown);
    }
    m_matches.insert(m_matches.end(), m_newest.begin(), m_newest.end());
    if (choosesRatings()) {
        std::ranges::copy_if(m_newest, std::back_inserter(m_chosen), isMeant);
    }
    if (shown > 0) {
        tell(&EventListObserver::rowsWereInserted, shown);
    }
}

/// Which of the newest events match.
void ArrangedEvents::judgeNewest(std::size_t count) {
    m_newest.clear();
    std::size_t number = m_reader.chunkFrom(m_list.idAt(count - 1));
    for (std::size_t left = count; left > 0; ++number) {
        EventChunk &chunk = m_reader.chunk(number);
        const std::size_t first =
            left == count ? chunk.countBefore(m_list.idAt(count - 1)) : std::size_t{0};
        left -= chunk.size() - first;
        if (count > 1) {
            m_inForce->matchAll(chunk, first, chunk.size(), m_positions, m_newest);
        } else if (m_inForce->matches(chunk, static_cast<std::uint32_t>(first))) {
            const EventRating rating = chunk.record(first).image;
            m_newest.emplace_back(chunk.idAt(first), rating);
        }
    }
}

void ArrangedEvents::rowsWillBeRemoved(std::size_t first, std::size_t count) {
    m_firstLeaving = m_list.idAt(first + count - 1);
    m_lastLeaving = m_list.idAt(first);
    if (!isFiltered()) {
        tell(&EventListObserver::rowsWillBeRemoved, first, count);
        return;
    }
    const auto begin = firstFrom(rows(), m_firstLeaving);
    const auto end = firstFrom(rows(), m_lastLeaving + 1);
    m_rowsLeave = begin != end;
    if (m_rowsLeave) {
        tell(&EventListObserver::rowsWillBeRemoved, static_cast<std::size_t>(rows().end() - end),
             static_cast<std::size_t>(end - begin));
    }
}

void ArrangedEvents::rowsWereRemoved() {
    if (m_search) {
        eraseLeaving(m_search->matches);
        m_search->matcher.forgetTexts();
    }
    if (!isFiltered()) {
        tell(&EventListObserver::rowsWereRemoved);
        return;
    }
    m_inForce->forgetTexts();
    for (auto match = firstFrom(m_matches, m_firstLeaving);
         match != m_matches.end() && match->id() <= m_lastLeaving; ++match) {
        --m_counts[match->rating()];
    }
    eraseLeaving(m_matches);
    eraseLeaving(m_chosen);
    if (std::exchange(m_rowsLeave, false)) {
        tell(&EventListObserver::rowsWereRemoved);
    }
}

void ArrangedEvents::eraseLeaving(Matches &matches) const {
    matches.erase(firstFrom(matches, m_firstLeaving), firstFrom(matches, m_lastLeaving + 1));
}

void ArrangedEvents::listWillChangeAtLarge() {
    m_sizeBeforeChange = m_list.size();
    tell(&EventListObserver::listWillChangeAtLarge);
}

void ArrangedEvents::listChangedAtLarge() {
    if (m_search) {
        eraseGone(m_search->matches);
        m_search->matcher.forgetTexts();
    }
    if (isFiltered()) {
        m_inForce->forgetTexts();
        eraseGone(m_matches);
        count();
        choose();
    }
    // Events may have come, thousands at once, or come back among those judged already.
    if (m_list.size() > m_sizeBeforeChange) {
        refresh();
    }
    tell(&EventListObserver::listChangedAtLarge);
}

void ArrangedEvents::eraseGone(Matches &matches) const {
    std::size_t number = 0;
    std::erase_if(matches, [&](EventMatch match) {
        const EventId id = match.id();
        while (number < m_reader.chunkCount() && m_reader.chunk(number).endOfIds() <= id) {
            ++number;
        }
        return number == m_reader.chunkCount() || id < m_reader.chunk(number).first() ||
               !m_reader.chunk(number).holds(id);
    });
}

}  // namespace quorbel
