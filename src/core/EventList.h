#pragma once

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/DepartedEvents.h"
#include "core/Event.h"
#include "core/EventChunk.h"
#include "core/EventDates.h"
#include "core/HandleCounts.h"
#include "core/SearchAhead.h"
#include "core/StringTable.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

class LoadedEvents;

/// Hears of changes to the list's rows, before and after each. Row 0 is the newest event.
class EventListObserver {
public:
    virtual ~EventListObserver() = default;
    virtual void rowsWillBeInsertedAtTop(std::size_t count) = 0;
    virtual void rowsWereInserted(std::size_t count) = 0;
    virtual void rowsWillBeRemoved(std::size_t first, std::size_t count) = 0;
    virtual void rowsWereRemoved() = 0;
    virtual void listWillChangeAtLarge() = 0;
    virtual void listChangedAtLarge() = 0;

protected:
    EventListObserver() = default;
    EventListObserver(const EventListObserver &) = default;
    EventListObserver &operator=(const EventListObserver &) = default;
};

/// A run of consecutive rows.
struct RowRange {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// Row numbers in any order, without repetition, as ascending runs that do not touch one another.
std::vector<RowRange> joinRows(std::vector<std::size_t> rows);

/// The events that the front-end holds, newest first, built for millions of them.
///
/// Hosts and priorities are held once each, messages packed by the thousand, dates as numbers that
/// are rendered when somebody looks (see EventDates). Adding at the top is O(1); removing any
/// number of rows is one pass; a removal notice finds its event by a hash look-up in those chunks
/// of 4,096 events that hold some of its time. Main thread only.
class EventList {
public:
    EventList() = default;
    /// No Event may be left of it.
    ~EventList();
    EventList(const EventList &) = delete;
    EventList &operator=(const EventList &) = delete;

    /// Observers hear of a change in the order in which they were added. Each outlives the list or
    /// is removed before it ends.
    void addObserver(EventListObserver &observer) { m_observers.push_back(&observer); }
    void removeObserver(EventListObserver &observer) { std::erase(m_observers, &observer); }

    [[nodiscard]] std::size_t size() const { return m_size; }

    /// Adds an event at row 0 as it came: its date unconverted, without an image.
    EventId insertRaw(const EventFields &fields);
    /// Adds an event at row 0 with its date rendered in the format now in force and its image set.
    EventId insertShown(const EventFields &fields, const AppState &state);
    /// Adds events, the first of them first, as insertRaw() would each, and tells observers once.
    void insertAllRaw(LoadedEvents events);
    /// The same, as insertShown() would each.
    void insertAllShown(LoadedEvents events, const AppState &state);
    /// Converts the dates and sets the images of all rows, as each time before the list is shown.
    void show(const AppState &state);

    // One row's texts, each absent when the event has no such field; valid until the list changes
    // or eight more rows were asked for. `row` < size().
    [[nodiscard]] std::optional<std::string> date(std::size_t row);
    [[nodiscard]] std::optional<std::string_view> priority(std::size_t row);
    [[nodiscard]] std::optional<std::string_view> host(std::size_t row);
    [[nodiscard]] std::optional<std::string_view> message(std::size_t row);
    /// What came with it beside these, and its date. Valid until the list changes.
    [[nodiscard]] std::vector<std::pair<std::string_view, std::string_view>> others(
        std::size_t row);
    /// The severity image's name; empty when the event has none.
    [[nodiscard]] std::string_view image(std::size_t row);
    /// How the row's priority is classified.
    [[nodiscard]] const PriorityClasses &classes(std::size_t row);
    /// The moment that the row's date reads as in the format in which it was rendered, or in the
    /// given format of the settings when it came as text; nothing when it does not read.
    [[nodiscard]] std::optional<std::int64_t> momentShown(std::size_t row,
                                                          std::string_view dateFormat);

    /// The moment that the row's date came as, however it is shown; showing it in another format
    /// than one without seconds has lost these. Nothing when it came as text, or did not come.
    [[nodiscard]] std::optional<std::int64_t> momentHeld(std::size_t row);

    [[nodiscard]] EventId idAt(std::size_t row);
    /// The id of the event that comes next.
    [[nodiscard]] EventId nextId() const { return m_nextId; }
    /// Nothing when the event has left the list.
    [[nodiscard]] std::optional<std::size_t> rowOf(EventId id);
    /// The row where an event of that id stands or, when it has left the list, would stand: that of
    /// the next older one, size() when there is none.
    [[nodiscard]] std::size_t rowFor(EventId id);
    /// The first row, not marked for removal, whose rendered date is the given moment rendered in
    /// the same format, or in `dateFormat` when the row's date came as text, and whose other fields
    /// equal the given ones. An absent field equals nothing.
    [[nodiscard]] std::optional<std::size_t> find(const EventFields &announced,
                                                  std::string_view dateFormat);

    /// Removes rows. The ranges ascend and do not touch one another.
    void removeRows(const std::vector<RowRange> &ranges);
    /// Removes rows like removeRows() and keeps them, in place of what was kept before. That takes
    /// the memory that they had in the list.
    void setAside(const std::vector<RowRange> &ranges);
    /// How many are kept.
    [[nodiscard]] std::size_t asideCount() const { return m_asideCount; }
    /// What is kept stands again where it stood, whatever has come and gone since, and is as if it
    /// had never left. Returns its ids, ascending.
    std::vector<EventId> putBack();

    /// Removes a row with the next removeMarked(); until then it stays where it is, but find()
    /// passes it over. A view of a million rows needs milliseconds for each change of their number,
    /// so removals that come one by one are better made together.
    void markForRemoval(std::size_t row);
    void removeMarked();

    /// An event of this list was added to another one, where it is `newId`: those who hold it see
    /// that one from now on.
    void leadOn(EventId id, EventList &other, EventId newId);

    /// Puts packed messages in the place of those that they were made of, see EventChunk::pack().
    void pack(EventChunk &chunk, const std::shared_ptr<const MessageBytes> &from,
              std::optional<PackedBytes> packed) {
        chunk.pack(from, std::move(packed), m_unpacked);
    }

    /// Between these two, rows are added without a word to the observers.
    void beginBulkInsert();
    void endBulkInsert();

private:
    friend class Event;
    friend class EventReader;

    /// Where a record is. Good until the next change.
    struct Place {
        EventChunk *chunk;
        std::size_t position;
        [[nodiscard]] EventRecord &record() const { return chunk->record(position); }
        [[nodiscard]] EventId id() const { return chunk->idAt(position); }
    };
    using Extras = EventExtras;
    using Fields = std::map<std::string, std::string, std::less<>>;

    /// Tells each observer.
    template <typename... Parameters, typename... Arguments>
    void tell(void (EventListObserver::*what)(Parameters...), Arguments... arguments) {
        for (EventListObserver *observer : m_observers) {
            (observer->*what)(arguments...);
        }
    }

    Place add(const EventFields &fields);
    void show(const Place &place, const EventDates::Showing &showing, bool hasDate);
    void startChunk(EventChunk chunk);
    void insertAll(LoadedEvents events, const AppState *shownWith);
    void takeOver(LoadedEvents events, const EventDates::Showing *showing);
    std::vector<StringTable::Id> acquirePriorities(const LoadedEvents &events);
    StringTable::Id acquirePriority(const std::optional<std::string_view> &text);
    [[nodiscard]] Place placeOfRow(std::size_t row);
    [[nodiscard]] std::optional<Place> placeOf(EventId id);
    void countUp();
    void settle(const Place &place);
    void settle(EventChunk &chunk, std::size_t first, std::size_t last);
    [[nodiscard]] std::optional<std::string> dateText(const Place &place);
    [[nodiscard]] std::uint8_t shownClass(const EventRecord &record) const;

    struct Search;
    [[nodiscard]] Search searchFor(const EventFields &announced, StringTable::Id priority,
                                   StringTable::Id host, std::string_view dateFormat);
    [[nodiscard]] static bool mayHold(const EventChunk &chunk, const Search &search);
    [[nodiscard]] std::optional<std::size_t> newestMatch(EventChunk &chunk, Search &search);
    [[nodiscard]] bool matches(const Place &place, const Search &search);
    void buildIndex(EventChunk &chunk) const;
    [[nodiscard]] std::size_t indexKey(const Place &place) const;

    EventDates::FormatId formatId(std::string_view setting);
    /// Starts the date bookkeeping over when it is about to run out of numbers.
    void makeRoomForShowing();
    void turnDateToText(const Place &place);
    void startDepartedOver(EventDates::FormatsInUse &inUse);
    void turnDepartedDatesToText();
    template <typename Visit>
    void forEachPlace(Visit visit);

    [[nodiscard]] std::optional<std::string> dateText(const EventRecord &settled,
                                                      const Extras *extras) const;

    [[nodiscard]] Fields fieldsOf(const Place &place);
    [[nodiscard]] Fields fieldsOf(const DepartedEvents::Found &event);
    [[nodiscard]] Fields fieldsOf(const EventRecord &settled, const Extras *extras,
                                  std::optional<std::string_view> message) const;
    void settle(const DepartedEvents::Found &event) const;
    /// What becomes of records that leave.
    enum class Leaving { kGone, kAside };
    void removeRows(const std::vector<RowRange> &ranges, Leaving leaving);
    void removeTogether(const std::vector<RowRange> &ranges, Leaving leaving);
    void removeFrom(EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges,
                    Leaving leaving);
    void moveAside(EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges);
    void keepForHandles(const EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges);
    [[nodiscard]] std::vector<std::uint32_t> heldOnes(
        const EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges) const;
    void letGo(const Place &place);
    void dropAside();
    void mergeAside();

    void hold(EventId id);
    void release(EventId id);
    [[nodiscard]] std::optional<std::string> value(EventId id, std::string_view key);

    std::vector<EventListObserver *> m_observers;
    bool m_inBulk = false;
    std::size_t m_size = 0;
    EventId m_nextId = 1;
    UnpackedMessages m_unpacked;  // outlives the chunks
    SearchAhead m_searchAhead;
    std::deque<EventChunk> m_chunks;       // oldest first
    std::vector<std::size_t> m_countUpTo;  // records up to and with each chunk
    bool m_countsCurrent = true;

    StringTable m_priorities;
    StringTable m_hosts;
    std::vector<PriorityClasses> m_classes;  // by priority id
    PriorityClasses m_absentClasses = classifyPriority({});
    EventDates m_dates;
    bool m_indexHasMinutes = true;   // whether the keys of the chunks' look-up tables do
    std::vector<EventId> m_leaving;  // marked for removal
    // Set aside: with the ids, uses of texts and entries in m_extras that they had.
    std::deque<EventChunk> m_aside;
    std::size_t m_asideCount = 0;
    EventExtrasById m_extras;
    HandleCounts m_handles;
    std::map<EventId, Event> m_successors;  // of held ones that went to another list
    DepartedEvents m_departed{m_priorities, m_hosts};
};

}  // namespace quorbel
