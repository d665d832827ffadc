#include "platform/Files.h"
#include "service/output/EventFeed.h"
#include "service/store/EventRemoval.h"
#include "service/store/EventRestoration.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::TemporaryFolder;
using testing::waitUntil;

constexpr std::int64_t kTime = 1700000000;  // 2023-11-14, 22:13:20 in UTC
constexpr std::int64_t kDay = 24 * 3600;
constexpr const char *kTuesday = "2023-11-14.log";

struct EventFeedTest : ::testing::TestWithParam<bool> {
    TemporaryFolder folder;
    LogStore store{folder.path()};
    EventFeed::Settings settings{"one", GetParam(), true};
    std::unique_ptr<EventFeed> feed;
    std::atomic<bool> never = false;

    EventFeedTest() {
        store.prepare();
        open();
    }
    void open() {
        feed.reset();
        feed = std::make_unique<EventFeed>(store, folder.path() / "outputs", settings);
    }
    static std::string event(std::int64_t later, const std::string &text) {
        return std::to_string(kTime + later) + ",User.Notice,h," + text;
    }
    void put(std::int64_t later, const std::string &text) {
        store.append(event(later, text) + "\r\n", kTime + later, false);
    }
    void remove(const std::vector<std::string> &events) {
        Dictionary wanted;
        for (const std::string &one : events) {
            wanted.set(one + "\n", "1");
        }
        EventRemoval removal({});
        ASSERT_TRUE(removal.want(wanted));
        ASSERT_EQ(removal.run(store, never), std::nullopt);
    }
    void restore(const std::vector<std::string> &events) {
        Array lines;
        for (const std::string &one : events) {
            lines.emplace_back(one + "\n");
        }
        ASSERT_EQ(EventRestoration(lines, {}).run(store, never), std::nullopt);
    }
    /// The texts of the next piece; false when there is none.
    bool takeInto(std::vector<std::string> &texts) {
        const auto piece = feed->take(1U << 16U);
        if (piece) {
            m_taken = piece->first + piece->count;
            forEachEvent(*piece, [&](std::uint64_t /*number*/, const LogLine &line) {
                texts.emplace_back(line.message);
            });
        }
        return piece.has_value();
    }
    std::vector<std::string> take() {
        std::vector<std::string> texts;
        takeInto(texts);
        return texts;
    }
    /// All that comes, acknowledged.
    std::vector<std::string> drain() {
        std::vector<std::string> texts;
        while (takeInto(texts)) {
            EXPECT_TRUE(feed->acknowledge(m_taken));
        }
        return texts;
    }
    [[nodiscard]] std::filesystem::path cursor() const {
        return folder.path() / "outputs" / "one.cursor";
    }
    std::uint64_t m_taken = 0;
};

INSTANTIATE_TEST_SUITE_P(Each, EventFeedTest, ::testing::Bool(),
                         [](const auto &tested) { return tested.param ? "kept" : "readAgain"; });

TEST_P(EventFeedTest, givesEachLineOnceInItsOrder) {
    put(0, "a");
    put(1, "b");
    EXPECT_THAT(drain(), ElementsAre("a", "b"));
    put(2, "c");
    put(kDay, "d");
    // The clock was set back.
    put(3, "e");
    EXPECT_THAT(drain(), ElementsAre("c", "e", "d"));
    EXPECT_EQ(feed->measure().events, 0);
    open();
    EXPECT_THAT(drain(), IsEmpty());
}

TEST_P(EventFeedTest, givesWhatWasNotAcknowledgedOnceMoreWithItsNumbers) {
    put(0, "a");
    const auto before = feed->take(1U << 16U);
    ASSERT_TRUE(before);
    put(1, "b");
    open();
    const auto after = feed->take(1U << 16U);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->first, before->first);
    EXPECT_EQ(after->lines.substr(0, before->lines.size()), before->lines);
    // What is kept is kept to the byte.
    EXPECT_EQ(after->lines == before->lines, settings.kept);
}

TEST_P(EventFeedTest, keepsWhatIsUnderWayThoughItIsRemoved) {
    put(0, "a");
    put(1, "b");
    EXPECT_THAT(take(), ElementsAre("a", "b"));
    remove({event(0, "a")});
    open();
    EXPECT_THAT(take().size(), settings.kept ? 2 : 1);
    EXPECT_EQ(feed->removedUnsent(), settings.kept ? 0 : 1);
}

TEST_P(EventFeedTest, countsWhatIsRemovedBeforeItWasSent) {
    put(0, "a");
    EXPECT_THAT(drain(), ElementsAre("a"));
    put(1, "b");
    put(2, "c");
    remove({event(0, "a"), event(1, "b")});
    EXPECT_EQ(feed->removedUnsent(), 1);
    EXPECT_THAT(drain(), ElementsAre("c"));
    put(3, "d");
    remove({event(2, "c"), event(3, "d")});
    EXPECT_EQ(feed->removedUnsent(), 2);
    open();
    EXPECT_EQ(feed->removedUnsent(), 2);
    EXPECT_THAT(drain(), IsEmpty());
}

/// What was sent is not sent again, what was not is.
TEST_P(EventFeedTest, knowsWhatBelongsWhereWhenADeletionIsUndone) {
    put(0, "sent1");
    put(1, "sent2");
    EXPECT_THAT(drain(), ElementsAre("sent1", "sent2"));
    put(2, "new3");
    put(3, "new4");
    const std::vector<std::string> all{event(0, "sent1"), event(1, "sent2"), event(2, "new3"),
                                       event(3, "new4")};
    remove({all[1], all[2]});
    restore({all[1], all[2]});
    remove({all[3]});
    remove({all[2]});
    remove({all[1]});
    open();
    restore({all[1], all[2], all[3]});
    remove(all);
    EXPECT_FALSE(isThere(folder.path() / kTuesday));
    open();
    restore(all);
    EXPECT_THAT(drain(), ElementsAre("new3", "new4"));
    remove(all);
    restore(all);
    EXPECT_THAT(drain(), IsEmpty());
}

TEST_P(EventFeedTest, goesOnInAFileThatSomebodyCopied) {
    put(0, "a");
    EXPECT_THAT(drain(), ElementsAre("a"));
    const auto path = folder.path() / kTuesday;
    std::filesystem::copy_file(path, folder.path() / "copy");
    std::filesystem::rename(folder.path() / "copy", path);
    put(1, "b");
    EXPECT_THAT(drain(), ElementsAre("b"));
}

TEST_P(EventFeedTest, beginsAFileAnewThatSomebodyReplaced) {
    put(0, "a");
    EXPECT_THAT(drain(), ElementsAre("a"));
    folder.write("other", event(0, "x") + "\r\n" + event(1, "y") + "\r\n");
    std::filesystem::rename(folder.path() / "other", folder.path() / kTuesday);
    open();
    EXPECT_THAT(drain(), ElementsAre("x", "y"));
}

/// As when the machine stopped before the end was on disk.
TEST_P(EventFeedTest, goesOnAtTheEndOfAFileThatLostSome) {
    put(0, "a");
    put(1, "b");
    EXPECT_THAT(drain(), ElementsAre("a", "b"));
    std::filesystem::resize_file(folder.path() / kTuesday, event(0, "a").size() + 2);
    open();
    put(2, "c");
    put(3, "d");
    EXPECT_THAT(drain(), ElementsAre("c", "d"));
}

TEST_P(EventFeedTest, takesAFileUpAgainThatWasAway) {
    put(0, "a");
    EXPECT_THAT(drain(), ElementsAre("a"));
    std::filesystem::rename(folder.path() / kTuesday, folder.path() / "away");
    open();
    EXPECT_THAT(drain(), IsEmpty());
    std::filesystem::rename(folder.path() / "away", folder.path() / kTuesday);
    put(1, "b");
    EXPECT_THAT(drain(), ElementsAre("b"));
}

TEST_P(EventFeedTest, waitsForTheEndOfALine) {
    std::ofstream file(folder.path() / "other.log", std::ios::binary);
    file << event(0, "whole") << "\r\n" << event(1, "begun") << std::flush;
    EXPECT_THAT(drain(), ElementsAre("whole"));
    file << " and done\r\n" << std::flush;
    open();
    EXPECT_THAT(drain(), ElementsAre("begun and done"));
}

TEST_P(EventFeedTest, comesPastALineWithoutEnd) {
    folder.write("other.log", std::string(300000, 'x') + "\r\n" + event(0, "behind") + "\r\n");
    EXPECT_THAT(drain(), ElementsAre("behind"));
}

TEST_P(EventFeedTest, beginsAsANewOneBehindACursorThatIsSpoilt) {
    const std::string title = "quorbel-feed 1\n";
    const auto sealed = [&title](const std::string &lines) {
        return title + lines + "end " + std::to_string(feedHash(title + lines)) + "\n";
    };
    put(0, "a");
    drain();
    const std::uint64_t numberBefore = m_taken;
    for (const std::string &text :
         {std::string(), std::string(100000, '\0'), std::string("next 5\n"),
          readFile(cursor()).value().substr(1), sealed("next 18446744073709551615\nremoved 0\n"),
          sealed("next 1\nremoved 0\nfile 1 1 1 1 1 0 0 ../../etc/passwd.log\n"),
          sealed("next 1\nremoved 0\nfile 1 1 1 1 1 0 0 passwd\n"),
          sealed("next 1\nremoved 0\nfile 1 1 1 1 1 0 x.log\n"),
          sealed("next 1\nremoved 0\nbehind 1 1 1 1 1 0 0 x.log\n"), sealed("next 1\nelse 2\n")}) {
        feed.reset();
        folder.write("outputs/one.cursor", text);
        ::testing::internal::CaptureStderr();
        open();
        EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                    HasSubstr("Output one: The cursor was broken and is one.cursor.broken now"));
        EXPECT_THAT(drain(), ElementsAre("a")) << text;
        EXPECT_GT(m_taken, numberBefore);
    }
}

TEST_P(EventFeedTest, takesPlacesThatCannotBeForNothing) {
    put(0, "a");
    feed.reset();
    const std::string lines =
        "quorbel-feed 1\nnext 7\nremoved 0\n"
        "file 1 1 9223372036854775807 1 1 0 0 2023-11-14.log\n"
        "file 1 1 18446744073709551615 1 1 1 18446744073709551615 gone.log\n"
        "batch 3 4611686018427387904 1 gone.log\n";
    folder.write("outputs/one.cursor", lines + "end " + std::to_string(feedHash(lines)) + "\n");
    open();
    EXPECT_THAT(drain(), ElementsAre("a"));
    EXPECT_EQ(m_taken, 8);
}

TEST_P(EventFeedTest, readsItsBatchFromTheLogWhenThatIsSpoilt) {
    put(0, "a");
    EXPECT_THAT(take(), ElementsAre("a"));
    feed.reset();
    folder.write("outputs/one.batch", "nonsense");
    open();
    EXPECT_THAT(drain(), ElementsAre("a"));
    EXPECT_THAT(drain(), IsEmpty());
}

TEST_P(EventFeedTest, beginsBehindWhatIsStoredWithoutHistory) {
    put(0, "old");
    settings.name = "later";
    settings.history = false;
    open();
    put(1, "new");
    open();
    EXPECT_THAT(drain(), ElementsAre("new"));
}

TEST_P(EventFeedTest, saysHowFarTheReceiverIsBehind) {
    put(std::time(nullptr) - kTime - 100, "a");
    put(std::time(nullptr) - kTime, "b");
    EXPECT_EQ(feed->measure().events, 2);
    EXPECT_GE(feed->measure().seconds, 100);
    EXPECT_LT(feed->measure().seconds, 200);
    take();
    EXPECT_EQ(feed->measure().events, 2);
    feed->acknowledge(m_taken);
    EXPECT_EQ(feed->measure().events, 0);
    EXPECT_EQ(feed->measure().seconds, 0);
}

/// Stored, read, deleted and restored at the same time.
TEST_P(EventFeedTest, losesNothingWhileAllGoOn) {
    constexpr int kTotal = 3000;
    std::atomic<int> stored = 0;
    std::thread writer([&] {
        for (; stored < kTotal; ++stored) {
            put(stored % 2000, "m" + std::to_string(stored));
        }
    });
    std::atomic<bool> done = false;
    std::set<int> edited;
    std::thread editor([&] {
        while (!done) {
            // One that is not stored yet would be put in, and then be there twice.
            const int end = stored;
            std::vector<std::string> some;
            for (const int i : {5, 6, 900, std::min(end, 1900) - 1}) {
                if (i >= 0 && i < end) {
                    some.push_back(event(i, "m" + std::to_string(i)));
                    edited.insert(i);
                }
            }
            remove(some);
            restore(some);
        }
    });
    std::multiset<std::string> received;
    const auto takeSome = [&] {
        const auto texts = drain();
        received.insert(texts.begin(), texts.end());
    };
    EXPECT_TRUE(waitUntil([&] {
        takeSome();
        return received.size() + feed->removedUnsent() >= kTotal;
    }));
    writer.join();
    done = true;
    editor.join();
    takeSome();
    for (int i = 0; i < kTotal; ++i) {
        const std::string text = "m" + std::to_string(i);
        const std::size_t count = received.count(text);
        EXPECT_EQ(count, edited.contains(i) ? std::min<std::size_t>(count, 1) : 1) << text;
    }
}

}  // namespace
}  // namespace quorbel
