// The event list against a plain one that does at once, row by row, what the list puts off.

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/EventList.h"
#include "core/MessagePacking.h"
#include "platform/DateFormat.h"
#include "platform/Text.h"

#include <gtest/gtest.h>
#include <unicode/timezone.h>

#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

/// "Format" is the one in which "Date" is written; absent while the date is as it came. "Number" is
/// a later event's larger one.
using PlainEvent = std::map<std::string, std::string>;

class PlainList {
public:
    void insertRaw(PlainEvent event) {
        event["Number"] = std::to_string(m_nextNumber++);
        rows.push_front(std::move(event));
    }

    void insertShown(PlainEvent event, const AppState &state) {
        setImage(event, state);
        setDate(event, floatingPointValue(event["Date"]), state);
        insertRaw(std::move(event));
    }

    void show(const AppState &state) {
        for (auto *events : {&rows, &aside}) {
            for (PlainEvent &event : *events) {
                if (const auto seconds = newMoment(event, state)) {
                    setDate(event, *seconds, state);
                }
                setImage(event, state);
            }
        }
    }

    void putBack() {
        if (aside.empty()) {
            return;
        }
        rows.insert(rows.end(), aside.begin(), aside.end());
        aside.clear();
        std::ranges::sort(rows, std::ranges::greater(),
                          [](const PlainEvent &event) { return std::stoul(event.at("Number")); });
    }

    std::optional<std::size_t> find(const PlainEvent &announced, const AppState &state) {
        const double seconds = floatingPointValue(announced.at("Date"));
        for (std::size_t row = 0; row < rows.size(); ++row) {
            const PlainEvent &event = rows[row];
            const bool isRaw = !event.contains("Format") && isAllDecimalDigits(event.at("Date"));
            if (!isRaw && event.at("Date") == formatOf(event, state).render(seconds) &&
                event.at("Priority") == announced.at("Priority") &&
                event.at("Host") == announced.at("Host") &&
                event.at("Message") == announced.at("Message")) {
                return row;
            }
        }
        return std::nullopt;
    }

    /// The format that reads the event's date.
    DateFormat &formatOf(const PlainEvent &event, const AppState &state) {
        const auto own = event.find("Format");
        return format(own == event.end() ? state.newDateFormat : own->second);
    }

    DateFormat &format(const std::string &setting) {
        auto &format = m_formats[setting];
        if (!format) {
            format = std::make_unique<DateFormat>(setting);
        }
        return *format;
    }

    std::deque<PlainEvent> rows;
    std::deque<PlainEvent> aside;

private:
    static void setImage(PlainEvent &event, const AppState &state) {
        const std::uint8_t shown = classifyPriority(event["Priority"]).shown;
        const auto name = severityLevelName(state.*kSeverityLevels[shown]);
        if (!name.empty()) {
            event["Image"] = name;
        }
    }

    std::optional<double> newMoment(const PlainEvent &event, const AppState &state) {
        const std::string &date = event.at("Date");
        const auto own = event.find("Format");
        if (own != event.end()) {
            return own->second == state.newDateFormat ? std::nullopt
                                                      : format(own->second).parse(date);
        }
        if (isAllDecimalDigits(date)) {
            return floatingPointValue(date);
        }
        return state.oldDateFormat == state.newDateFormat ? std::nullopt
                                                          : format(state.oldDateFormat).parse(date);
    }

    void setDate(PlainEvent &event, double seconds, const AppState &state) {
        event["Date"] = format(state.newDateFormat).render(seconds);
        event["Format"] = state.newDateFormat;
    }

    std::map<std::string, std::unique_ptr<DateFormat>> m_formats;
    std::size_t m_nextNumber = 1;
};

struct ModelCase {
    const char *name;
    const char *zone;
    std::vector<std::string> formats;
    bool hasOddDates;
    bool packs = false;  ///< messages, as the program does beside all this
};

class EventListModelTest : public ::testing::TestWithParam<ModelCase> {
protected:
    void SetUp() override {
        icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(GetParam().zone));
    }
    void TearDown() override { icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("UTC")); }

    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }

    PlainEvent randomEvent() {
        static const std::vector<std::string> priorities = {
            "Local7.Error", "Kern.Emergency", "AlertFeed.Notice", "User.Informational", "odd", ""};
        static const std::vector<std::string> dates = {"", "12.5", "soon", "007",
                                                       "05/11/2023 10:11"};
        // Around a change of daylight saving time, where local times repeat, and on days that can
        // be read as months; later events mostly later.
        static const std::vector<std::int64_t> begins = {1698540000, 1699142400, 1701648000};
        const std::size_t begin = pick(20) == 0 ? pick(3) : std::min(m_step / 90, std::size_t{2});
        const auto seconds = begins[begin] + static_cast<std::int64_t>(pick(9000));
        const bool isOdd = GetParam().hasOddDates && pick(12) == 0;
        return {{"Date", isOdd ? dates[pick(dates.size())] : std::to_string(seconds)},
                {"Priority", priorities[pick(priorities.size())]},
                {"Host", "10.0.0." + std::to_string(pick(3))},
                {"Message", std::string(pick(4) == 0 ? 300 : 1, static_cast<char>('a' + pick(2)))}};
    }

    static EventFields fieldsOf(const PlainEvent &event) {
        return {event.at("Date"), event.at("Priority"), event.at("Host"), event.at("Message"), {}};
    }

    void changeState() {
        const std::vector<std::string> &formats = GetParam().formats;
        m_state.oldDateFormat =
            pick(3) == 0 ? formats[pick(formats.size())] : m_state.newDateFormat;
        m_state.newDateFormat = formats[pick(formats.size())];
        m_state.iSeverityEmergency = static_cast<std::int64_t>(pick(4));
        m_state.iSeverityError = static_cast<std::int64_t>(pick(5)) - 1;
    }

    std::vector<RowRange> randomRows() {
        std::vector<RowRange> ranges;
        std::size_t row = pick(20);
        while (row < m_list.size()) {
            const std::size_t count = std::min(1 + pick(30), m_list.size() - row);
            ranges.push_back({row, count});
            row += count + 1 + pick(200);
        }
        return ranges;
    }

    std::deque<PlainEvent> takeFromPlain(const std::vector<RowRange> &ranges) {
        std::deque<PlainEvent> taken;
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
            const auto first = m_plain.rows.begin() + static_cast<std::ptrdiff_t>(range->first);
            const auto last = first + static_cast<std::ptrdiff_t>(range->count);
            taken.insert(taken.end(), first, last);
            std::for_each(first, last, [this](const PlainEvent &event) { noteLeaving(event); });
            m_plain.rows.erase(first, last);
        }
        return taken;
    }

    /// Each as it is now, if somebody holds it.
    void noteLeaving(const PlainEvent &event) {
        if (const auto held = m_held.find(event.at("Number")); held != m_held.end()) {
            held->second.atLeaving = event;
            ++m_left;
        }
    }

    void holdNewest() {
        m_held.try_emplace(m_plain.rows.front()["Number"], Event(m_list, m_list.idAt(0)));
    }

    void letSomeGo() {
        for (std::size_t i = pick(20); i > 0 && !m_held.empty(); --i) {
            const auto from = m_held.lower_bound(std::to_string(pick(20'000)));
            m_held.erase(from == m_held.end() ? m_held.begin() : from);
        }
    }

    void compareHeld() {
        std::map<std::string, const PlainEvent *> listed;
        for (const PlainEvent &event : m_plain.rows) {
            listed[event.at("Number")] = &event;
        }
        for (const auto &[number, held] : m_held) {
            if (pick(8) != 0) {
                continue;  // reading all takes long
            }
            const auto row = listed.find(number);
            const PlainEvent &expected = row == listed.end() ? held.atLeaving : *row->second;
            for (const char *key : {"Date", "Priority", "Host", "Message", "Image"}) {
                const auto text = expected.find(key);
                ASSERT_EQ(held.event.value(key).value_or(""),
                          text == expected.end() ? "" : text->second)
                    << number << ' ' << key << (row == listed.end() ? " left" : " listed");
            }
        }
    }

    void removeRandomRows() {
        const std::vector<RowRange> ranges = randomRows();
        m_list.removeRows(ranges);
        takeFromPlain(ranges);
    }

    void setRandomRowsAside() {
        if (m_plain.aside.size() > m_plain.rows.size()) {
            putBack();  // else the list would not grow
        }
        const bool areAll = pick(8) == 0 && m_list.size() > 0;
        const auto ranges = areAll ? std::vector{RowRange{0, m_list.size()}} : randomRows();
        m_list.setAside(ranges);
        m_plain.aside = takeFromPlain(ranges);
        ASSERT_EQ(m_list.asideCount(), m_plain.aside.size());
    }

    void putBack() {
        const std::vector<EventId> ids = m_list.putBack();
        ASSERT_EQ(ids.size(), m_plain.aside.size());
        ASSERT_TRUE(std::ranges::is_sorted(ids));
        for (const EventId id : ids) {
            ASSERT_TRUE(m_list.rowOf(id));
        }
        m_putBack += ids.size();
        m_plain.putBack();
    }

    void removeAnnounced() {
        PlainEvent announced = randomEvent();
        if (m_list.size() > 0 && pick(4) != 0) {
            const PlainEvent &known = m_plain.rows[pick(m_plain.rows.size())];
            announced["Priority"] = known.at("Priority");
            announced["Host"] = known.at("Host");
            announced["Message"] = known.at("Message");
            const auto moment = m_plain.formatOf(known, m_state).parse(known.at("Date"));
            announced["Date"] = moment ? std::to_string(static_cast<std::int64_t>(*moment)) : "7";
        }
        const auto expected = m_plain.find(announced, m_state);
        ASSERT_EQ(m_list.find(fieldsOf(announced), m_state.newDateFormat), expected)
            << announced["Date"];
        if (expected) {
            noteLeaving(m_plain.rows[*expected]);
            m_list.removeRows({{*expected, 1}});
            m_plain.rows.erase(m_plain.rows.begin() + static_cast<std::ptrdiff_t>(*expected));
            ++m_found;
        }
    }

    std::size_t packedChunks() {
        const EventReader reader(m_list);
        std::size_t count = 0;
        for (std::size_t number = 0; number < reader.chunkCount(); ++number) {
            count += reader.chunk(number).isPacked() ? 1U : 0U;
        }
        return count;
    }

    void compareRow(std::size_t row) {
        PlainEvent &event = m_plain.rows[row];
        ASSERT_EQ(m_list.date(row), event["Date"]) << row;
        ASSERT_EQ(m_list.priority(row), event["Priority"]);
        ASSERT_EQ(m_list.host(row), event["Host"]);
        ASSERT_EQ(m_list.message(row), event["Message"]);
        ASSERT_EQ(m_list.image(row), event["Image"]);
        ASSERT_EQ(std::to_string(m_list.idAt(row)), event["Number"]);
        ASSERT_EQ(m_list.rowOf(m_list.idAt(row)), row);
        const auto moment = m_plain.formatOf(event, m_state).parse(event["Date"]);
        ASSERT_EQ(m_list.momentShown(row, m_state.newDateFormat),
                  moment ? std::optional(static_cast<std::int64_t>(std::llround(*moment)))
                         : std::nullopt);
    }

    struct Held {
        explicit Held(Event held) : event(std::move(held)) {}
        Event event;
        PlainEvent atLeaving{};
    };

    std::mt19937 m_random{7};
    EventList m_list;
    std::map<std::string, Held> m_held;  // by number
    MessagePacking m_packing{m_list};
    PlainList m_plain;
    AppState m_state;
    int m_found = 0;
    std::size_t m_putBack = 0;
    std::size_t m_left = 0;  // while held
    std::size_t m_mostPacked = 0;
    std::size_t m_step = 0;
};

TEST_P(EventListModelTest, ReadsTheSameAsAPlainList) {
    for (; m_step < 300; ++m_step) {
        for (std::size_t i = pick(150); i > 0; --i) {
            const PlainEvent event = randomEvent();
            if (pick(2) == 0) {
                m_list.insertRaw(fieldsOf(event));
                m_plain.insertRaw(event);
            } else {
                m_list.insertShown(fieldsOf(event), m_state);
                m_plain.insertShown(event, m_state);
            }
            if (pick(3) == 0) {
                holdNewest();
            }
        }
        letSomeGo();
        if (pick(8) == 0) {
            changeState();
        }
        if (pick(6) == 0) {
            m_list.show(m_state);
            m_plain.show(m_state);
        }
        if (pick(20) == 0) {
            removeRandomRows();
        }
        if (pick(15) == 0) {
            setRandomRowsAside();
        } else if (pick(8) == 0) {
            putBack();
        }
        if (GetParam().packs) {
            m_packing.step();
            m_mostPacked = std::max(m_mostPacked, packedChunks());
        }
        removeAnnounced();
        if (pick(20) == 0) {
            compareHeld();
        }
        if (HasFatalFailure()) {
            return;
        }
        ASSERT_EQ(m_list.size(), m_plain.rows.size());
        for (std::size_t i = 0; i < 20 && m_list.size() > 0; ++i) {
            compareRow(pick(m_list.size()));
        }
    }
    compareHeld();
    putBack();
    compareHeld();
    for (std::size_t row = 0; row < m_list.size(); ++row) {
        compareRow(row);
    }
    EXPECT_GT(m_list.size(), 4096U);
    EXPECT_GT(m_found, 20);
    EXPECT_GT(m_putBack, 4096U);
    EXPECT_GT(m_left, 1000U);
    EXPECT_EQ(m_mostPacked > 1, GetParam().packs);
}

const std::vector<std::string> kFormats = {"",
                                           "yyyy-MM-dd HH:mm:ss",
                                           "dd/MM/yyyy HH:mm:ss",
                                           "MM/dd/yyyy HH:mm:ss",
                                           "dd/MM/yyyy HH:mm",
                                           "MM/dd/yyyy HH:mm",
                                           "d/M/yy HH:mm",
                                           "dd.MM.yyyy hh:mm:ss AM/PM"};

/// Some of which do not tell the minute, or cannot be read.
std::vector<std::string> oddFormats() {
    std::vector<std::string> formats = kFormats;
    formats.insert(formats.end(), {"HH:mm", "dd/MM", "yyyy 'open", "mm:ss"});
    return formats;
}

INSTANTIATE_TEST_SUITE_P(
    Zones, EventListModelTest,
    ::testing::Values(ModelCase{"UTC", "UTC", kFormats, true},
                      ModelCase{"Berlin", "Europe/Berlin", kFormats, false},
                      ModelCase{"NewYork", "America/New_York", kFormats, true},
                      ModelCase{"OddFormats", "Europe/Berlin", oddFormats(), true},
                      ModelCase{"Packed", "Europe/Berlin", kFormats, true, true}),
    [](const auto &entry) { return entry.param.name; });

}  // namespace
}  // namespace quorbel
