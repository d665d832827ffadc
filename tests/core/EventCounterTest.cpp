#include "EventListSamples.h"
#include "core/EventCounter.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel {
namespace {

using testing::fields;
using testing::stateWith;

EventQuery containing(const std::string &text) {
    EventQuery query;
    query.texts.push_back({{text, false, false}, false});
    return query;
}

class EventCounterTest : public ::testing::Test {
protected:
    void insert(const std::string &message, int times = 1,
                std::string_view priority = "Local7.Error") {
        for (int i = 0; i < times; ++i) {
            m_list.insertRaw(fields("1", priority, "h", message));
        }
    }
    void countAll() {
        m_counter.run([] { return false; });
        EXPECT_FALSE(m_counter.isCounting());
    }

    EventList m_list;
    EventCounter m_counter{m_list};
};

TEST_F(EventCounterTest, CountsForEachFilterInSlices) {
    insert("disk", 3000);
    insert("fan", 5000);
    insert("disk fan", 2);
    m_counter.start({containing("disk"), containing("fan"), containing("none")});
    EXPECT_TRUE(m_counter.isCounting());
    int slices = 0;
    for (; m_counter.isCounting(); ++slices) {
        EXPECT_EQ(m_counter.count(2), std::nullopt);
        m_counter.run([] { return true; });
    }
    EXPECT_GT(slices, 10);
    EXPECT_EQ(m_counter.count(0), 3002U);
    EXPECT_EQ(m_counter.count(1), 5002U);
    EXPECT_EQ(m_counter.count(2), 0U);
}

TEST_F(EventCounterTest, CountsNothingInAnEmptyList) {
    m_counter.start({containing("disk")});
    EXPECT_TRUE(m_counter.isCounting());
    countAll();
    EXPECT_EQ(m_counter.count(0), 0U);
}

TEST_F(EventCounterTest, HeedsRatings) {
    const AppState state = stateWith();
    m_list.insertShown(fields("1", "Kern.Emergency"), state);
    m_list.insertShown(fields("1", "Kern.Debug"), state);
    EventQuery severe;
    severe.ratings.set(1 + kSevere);
    EventQuery all = containing("disk");
    m_counter.start({severe, all});
    countAll();
    EXPECT_EQ(m_counter.count(0), 1U);
    EXPECT_EQ(m_counter.count(1), 2U);
}

TEST_F(EventCounterTest, CountsOnWhatArrives) {
    insert("disk");
    m_counter.start({containing("disk"), containing("fan")});
    m_counter.run([] { return true; });
    insert("disk");
    countAll();
    EXPECT_EQ(m_counter.count(0), 2U);
    insert("disk");
    insert("fan");
    EXPECT_TRUE(m_counter.isCounting());
    EXPECT_FALSE(m_counter.isStale());
    EXPECT_EQ(m_counter.count(0), 2U);
    countAll();
    EXPECT_EQ(m_counter.count(0), 3U);
    EXPECT_EQ(m_counter.count(1), 1U);
}

TEST_F(EventCounterTest, CountsAnewWhenEventsHaveLeft) {
    insert("disk", 10);
    m_counter.start({containing("disk")});
    countAll();
    EXPECT_FALSE(m_counter.isStale());
    m_list.removeRows({{0, 4}});
    EXPECT_TRUE(m_counter.isStale());
    EXPECT_EQ(m_counter.count(0), 10U);
    m_counter.restart();
    EXPECT_EQ(m_counter.count(0), 10U);
    countAll();
    EXPECT_EQ(m_counter.count(0), 6U);
    EXPECT_FALSE(m_counter.isStale());
}

// The number of a host that has gone may come to mean another one.
TEST_F(EventCounterTest, ForgetsHostsThatHaveGone) {
    EventQuery onA;
    onA.host = "a";
    m_list.insertRaw(fields("1", "Kern.Error", "a"));
    m_counter.start({onA});
    countAll();
    m_list.removeRows({{0, 1}});
    m_list.insertRaw(fields("1", "Kern.Error", "b"));
    m_counter.restart();
    countAll();
    EXPECT_EQ(m_counter.count(0), 0U);
}

TEST_F(EventCounterTest, CountsAnotherFilterInPlaceOfOne) {
    insert("disk", 3);
    insert("fan");
    m_counter.start({containing("disk"), containing("fan")});
    countAll();
    m_counter.replace(0, containing("fan"));
    EXPECT_TRUE(m_counter.isCounting());
    EXPECT_EQ(m_counter.count(0), 3U);
    countAll();
    EXPECT_EQ(m_counter.count(0), 1U);
    EXPECT_EQ(m_counter.count(1), 1U);
}

TEST_F(EventCounterTest, StopsWithoutFilters) {
    insert("disk");
    m_counter.start({containing("disk")});
    m_counter.start({});
    EXPECT_FALSE(m_counter.isCounting());
    m_list.removeRows({{0, 1}});
}

}  // namespace
}  // namespace quorbel
