// Settings of any shape: whatever is stored under the keys that the service follows, it neither
// crashes nor hangs, and goes on receiving.

#include "common/LogReader.h"
#include "common/Severity.h"
#include "service/collect/Collector.h"
#include "service/export/Exporter.h"
#include "service/mail/MailSender.h"
#include "service/store/RemovalFeed.h"
#include "service/store/Retention.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <utility>

namespace quorbel {
namespace {

using testing::TemporaryFolder;
using testing::waitUntil;

const IpAddress kRouter = IpAddress::parse("10.1.2.3").value();
const IpAddress kThisHost = IpAddress::parse("::1").value();

/// Random dictionaries with the keys of the settings.
class RandomSettings {
public:
    RandomSettings(unsigned seed, std::filesystem::path folder)
        : m_engine(seed), m_folder(std::move(folder)) {}

    Dictionary next() {
        constexpr const char *kKeys[] = {
            "hostsDisplay",         "dateFormat",          "includeFiltersArray",
            "excludeFiltersArray",  "actionsArray",        "actionsFormatSubject",
            "actionsFormatBody",    "actionsEmailServer",  "actionsEmailPort",
            "actionsEmailSecurity", "actionsEmailTimeout", "actionsEmailSender",
            "textInterval",         "databaseInterval",    "unknown"};
        Dictionary settings = some(kKeys, 2);
        for (const SeverityClass &severity : kSeverityClasses) {
            const std::string key = "removal" + std::string(severity.keyPart);
            if (chance(2)) {
                settings.set(key, value(0));
                settings.set(key + "Units", chance(2) ? Value(integer(6)) : value(0));
            }
        }
        if (chance(2)) {
            settings.set("includeFiltersArray", records());
            settings.set("excludeFiltersArray", records());
            settings.set("actionsArray", records());
        }
        // Nowhere else, whatever it is called.
        settings.set("textLocation", location("text"));
        settings.set("databaseLocation", location("database"));
        return settings;
    }
    bool chance(unsigned in) { return m_engine() % in == 0; }

private:
    std::int64_t integer(std::int64_t below) {
        return static_cast<std::int64_t>(m_engine() % static_cast<std::uint64_t>(below));
    }
    std::int64_t anyInteger() {
        constexpr std::int64_t kOdd[] = {
            0,           1,          -1,
            60,          1'440,      std::numeric_limits<std::int64_t>::max(),
            INT32_MAX,   INT32_MIN,  std::numeric_limits<std::int64_t>::min(),
            UINT16_MAX,  1LL << 53U, 9'223'372'036'854'775LL,
            -62135596800};
        return chance(3) ? static_cast<std::int64_t>(m_engine())
                         : kOdd[static_cast<std::size_t>(integer(std::size(kOdd)))];
    }
    double anyReal() {
        constexpr double kOdd[] = {0.0, -0.5, 1e300, -1e300, 0.1};
        return chance(4)   ? std::nan("")
               : chance(4) ? INFINITY
                           : kOdd[static_cast<std::size_t>(integer(std::size(kOdd)))];
    }
    std::string text() {
        constexpr const char *kOdd[] = {"",          "Any",
                                        "*",         "*?*?*a",
                                        "10.1.2.3",  "::1",
                                        "32",        "-5",
                                        "Error",     "Kern",
                                        "'",         "a b 'c",
                                        "\xFF",      "\xED\xA0\x80",
                                        "yyyy'",     "$host",
                                        "a@b",       "GGGGGG",
                                        "STARTTLS",  "999999999999",
                                        "N=v\n=\nX", "$message$message"};
        if (chance(2)) {
            return kOdd[static_cast<std::size_t>(integer(std::size(kOdd)))];
        }
        std::string result(static_cast<std::size_t>(integer(chance(20) ? 5000 : 12)), '\0');
        for (char &c : result) {
            c = chance(3) ? "*?'\"\\\n,%$=<>@."[integer(15)] : static_cast<char>(m_engine());
        }
        return result;
    }
    Value value(int depth) {
        switch (integer(depth < 3 ? 10 : 7)) {
            case 0:
                return Null();
            case 1:
                return chance(2);
            case 2:
                return anyReal();
            case 3:
                return Data{text()};
            case 4:
                return Date{anyReal()};
            case 5:
                return anyInteger();
            case 6:
                return text();
            case 7:
                return std::uint64_t{m_engine()};
            case 8: {
                Array array;
                for (std::int64_t i = integer(4); i > 0; --i) {
                    array.push_back(value(depth + 1));
                }
                return array;
            }
            default:
                return Dictionary{{"Name", value(depth + 1)}, {text(), value(depth + 1)}};
        }
    }
    template <std::size_t count>
    Dictionary some(const char *const (&keys)[count], int depth) {
        Dictionary dictionary;
        for (const char *key : keys) {
            if (chance(2)) {
                dictionary.set(key, chance(2) ? Value(text()) : value(depth));
            }
        }
        return dictionary;
    }
    Array records() {
        Array array;
        for (std::int64_t i = integer(4); i > 0; --i) {
            constexpr const char *kFilter[] = {"Name",     "IP",       "Mask",
                                               "Facility", "Severity", "Message"};
            constexpr const char *kReaction[] = {"Command",    "Arguments", "Environment",
                                                 "Recipients", "Type",      "Format"};
            Dictionary record = some(kFilter, 1);
            for (const char *key : {"runCommand", "sendEmail", "setEvent"}) {
                record.set(key, chance(3) ? value(1) : Value(some(kReaction, 1)));
            }
            record.set("Name", chance(2) ? Value("n") : value(1));
            if (chance(2)) {
                // One that is for every event and reaches somebody, as most of them do.
                record = {{"Name", "n"},
                          {"runCommand", Dictionary{{"Command", "true"}, {"Arguments", text()}}},
                          {"sendEmail", Dictionary{{"Recipients", Array{value(1), "a@b"}}}},
                          {"setEvent", Dictionary{{"Type", text()}, {"Format", text()}}}};
            }
            if (chance(3)) {
                constexpr const char *kThreshold[] = {"Matches", "Minutes", "PerHost"};
                record.set("threshold", chance(3) ? value(1) : Value(some(kThreshold, 1)));
            }
            if (chance(3)) {
                record.set("threshold", Dictionary{{"Matches", integer(9)}, {"Minutes", 5}});
            }
            array.push_back(chance(5) ? value(1) : Value(std::move(record)));
        }
        return array;
    }
    Value location(const char *name) {
        switch (integer(5)) {
            case 0:
                return anyInteger();
            case 1:
                return "relative.txt";
            case 2:
                return (m_folder / name).string() + '\0' + ".txt";
            case 3:
                return (m_folder / "no such folder" / name).string();
            default:
                return (m_folder / name).string() + (chance(2) ? ".csv" : ".db");
        }
    }

    std::mt19937_64 m_engine;
    const std::filesystem::path m_folder;
};

struct SettingsPropertyTest : ::testing::Test {
    /// Everything that goes to the journal would be too much to read.
    SettingsPropertyTest() { ::testing::internal::CaptureStderr(); }
    ~SettingsPropertyTest() override { ::testing::internal::GetCapturedStderr(); }

    TemporaryFolder folder;
    TemporaryFolder targets;
    RandomSettings settings{20'261'121, targets.path()};
    LogStore store{folder.path()};
};

TEST_F(SettingsPropertyTest, ReceivingGoesOn) {
    NotificationQueue notifications;
    HostNames names([](const IpAddress &) { return std::nullopt; });
    Counters counters;
    std::uint64_t commands = 0;
    std::uint64_t mails = 0;
    Actions actions(
        [&commands](CommandRunner::Command command) {
            EXPECT_NE(command.program, "");
            ++commands;
        },
        [&mails](MailMessage mail) {
            EXPECT_FALSE(mail.recipients.empty());
            ++mails;
        },
        counters);
    Collector collector(store, notifications, names, actions, counters);
    constexpr std::uint64_t kRounds = 3'000;
    for (std::uint64_t i = 0; i < kRounds; ++i) {
        const Dictionary random = settings.next();
        names.configure(random);
        actions.configure(random);
        collector.configure(random);
        collector.beginTurn();
        collector.receive("<11>an error of 10.1.2.3", kRouter);
        collector.receive("<191>" + std::string(1500, 'a'), kThisHost);
        collector.endTurn();
        actions.report(Actions::Clock::time_point::max());
        while (!notifications.empty()) {
            notifications.pop();
        }
    }
    EXPECT_EQ(counters.received, 2 * kRounds);
    EXPECT_EQ(counters.notStored, 0U);
    // The settings are random, not idle.
    EXPECT_GT(counters.filtered, kRounds / 10);
    EXPECT_GT(counters.stored, kRounds / 10);
    EXPECT_GT(commands, 100U);
    EXPECT_GT(mails, 10U);
    EXPECT_GT(counters.eventsSet, 100U);
}

TEST_F(SettingsPropertyTest, RulesOfRetentionAgreeWithThemselves) {
    std::mt19937_64 engine(1);
    std::uint64_t limited = 0;
    for (int i = 0; i < 20'000; ++i) {
        const RetentionRules rules(settings.next());
        // Years 1970 to 9999.
        const auto now = static_cast<std::int64_t>(engine() % 253'402'300'800U);
        const auto limits = rules.limitsAt(now);
        const auto first = rules.firstEnd(now);
        EXPECT_EQ(rules.keepsAll(), !first.has_value());
        for (std::size_t severity = 0; severity < limits.size(); ++severity) {
            const auto end = rules.endOf(severity, now);
            ASSERT_EQ(end.has_value(), limits[severity].has_value());
            if (!end) {
                continue;
            }
            ++limited;
            EXPECT_LT(*limits[severity], now);
            EXPECT_GT(*end, now);
            EXPECT_LE(*first, *end);
            const std::int64_t slack = rules.slack(severity);
            EXPECT_TRUE(slack >= 0 && slack <= 3600) << slack;
            // What is kept until then is kept for long enough then.
            EXPECT_GE(*rules.limitsAt(*end)[severity], now);
        }
    }
    EXPECT_GT(limited, 10'000U);
}

// The threads that follow settings take each in its turn and end at once.
TEST_F(SettingsPropertyTest, ThreadsFollowAndEnd) {
    constexpr int kRounds = 300;
    const std::int64_t today = std::time(nullptr);
    RemovalFeed feed(std::chrono::milliseconds(1));
    std::atomic<std::uint64_t> passes = 0;
    Retention retention(
        store, feed,
        [&] {
            ++passes;
            return ClockReading{today, 0, true};
        },
        std::chrono::milliseconds(1));
    MailSender mail;
    Exporter exporter(store, std::chrono::milliseconds(1));
    for (int i = 0; i < kRounds; ++i) {
        const Dictionary random = settings.next();
        const std::string fresh = std::to_string(today) + ",User.Debug,h,fresh\r\n";
        store.append(fresh + "1,User.Error,h,old\r\n" + fresh, today, false);
        retention.configure(random);
        mail.configure(random);
        exporter.configure(random);
        const std::uint64_t before = passes;
        ASSERT_TRUE(waitUntil([&] { return passes > before; })) << i;
    }
    EXPECT_GT(retention.removed(), 0U);
}

}  // namespace
}  // namespace quorbel
