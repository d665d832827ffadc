// Each statement of docs/beyond.md gives what the reports page gives for the same events.

#include "cluster/ClusterFixture.h"
#include "platform/Files.h"
#include "reports/ReportEngine.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::ClusterFixture;
using testing::TemporaryFolder;

/// What stands between "```sql" and "```".
std::vector<std::string> statements() {
    const std::string text = readFile(QUORBEL_BEYOND).value_or("");
    constexpr std::string_view kBegin = "```sql\n";
    std::vector<std::string> found;
    for (std::size_t at = text.find(kBegin); at != std::string::npos; at = text.find(kBegin, at)) {
        at += kBegin.size();
        found.push_back(text.substr(at, text.find("```", at) - at));
    }
    return found;
}

struct BeyondTest : ClusterFixture {
    void SetUp() override {
        ClusterFixture::SetUp();
        constexpr const char *kPriorities[] = {"Local7.Error", "Auth.Notice", "Kern.Critical"};
        constexpr const char *kMessages[] = {"disk full, retrying", "Login", "New DISK in bay 2"};
        std::mt19937 random;
        std::int64_t seconds = 1700000000;
        for (int i = 0; i < 3000; ++i) {
            seconds += static_cast<std::int64_t>(random() % 20);
            lines += std::to_string(seconds) + ',' + kPriorities[random() % 3] + ",10.0.0." +
                     std::to_string(random() % 30) + ',' + kMessages[random() % 3] + "\r\n";
        }
        file = folder.write("2023-11-14.log", lines);
        ClusterRows rows("here");
        std::uint64_t number = 0;
        LogReader::readBytes(lines, [&](const LogLine &line) {
            rows.add(++number, line);
            return true;
        });
        for (int i = 0; i < 2; ++i) {
            ASSERT_EQ(testing::insertRows(server().connection(), rows), "");
        }
    }

    using Group = std::pair<std::string, std::size_t>;
    [[nodiscard]] std::vector<Group> report(ReportKind kind) const {
        ReportEngine engine(kind, "yyyy-MM-dd HH:mm:ss");
        engine.read({file});
        std::vector<Group> groups;
        for (std::size_t i = 0; i < engine.groupCount(); ++i) {
            groups.emplace_back(engine.groupText(i), engine.detailCount(i));
        }
        return groups;
    }
    /// The largest first.
    [[nodiscard]] std::vector<Group> bySize(ReportKind kind) const {
        std::vector<Group> groups = report(kind);
        std::ranges::sort(groups, [](const Group &one, const Group &other) {
            return one.second != other.second ? one.second > other.second : one.first < other.first;
        });
        return groups;
    }
    static std::string text(const std::vector<Group> &groups) {
        std::string text;
        for (const auto &[value, count] : groups) {
            text += (text.empty() ? "" : "\n") + value + '\t' + std::to_string(count);
        }
        return text;
    }
    [[nodiscard]] std::string detailsOf(std::string_view host) const {
        ReportEngine engine(ReportKind::kHost, "yyyy-MM-dd HH:mm:ss");
        engine.read({file});
        std::string text;
        for (std::size_t group = 0; group < engine.groupCount(); ++group) {
            for (std::size_t i = 0;
                 engine.groupText(group) == host && i < engine.detailCount(group); ++i) {
                text += text.empty() ? "" : "\n";
                for (const auto field :
                     {ReportField::kDate, ReportField::kPriority, ReportField::kMessage}) {
                    text += engine.detailText(group, i, field);
                    text += field == ReportField::kMessage ? "" : "\t";
                }
            }
        }
        return text;
    }
    [[nodiscard]] std::string severeWithDisk() const {
        std::string text;
        LogReader::readBytes(lines, [&text](const LogLine &line) {
            if (!line.priority.ends_with("Notice") && line.message != "Login") {
                text += text.empty() ? "" : "\n";
                text += std::string(line.date) + '\t' + std::string(line.priority) + '\t' +
                        std::string(line.host) + '\t' + std::string(line.message);
            }
            return true;
        });
        return text;
    }
    [[nodiscard]] std::map<std::string, std::size_t> countsOfHours() const {
        std::map<std::string, std::size_t> hours;
        for (const auto &[date, count] : report(ReportKind::kDate)) {
            hours[date.substr(0, 13) + ":00:00"] += count;
        }
        return hours;
    }

    TemporaryFolder folder;
    std::string lines;
    std::filesystem::path file;
};

TEST_F(BeyondTest, EachStatementGivesWhatTheReportsPageGives) {
    const auto sql = statements();
    ASSERT_EQ(sql.size(), 7U);
    auto hosts = bySize(ReportKind::kHost);
    ASSERT_GT(hosts.size(), 10U);
    hosts.resize(10);
    EXPECT_EQ(ask(sql[0]), text(hosts));
    EXPECT_EQ(ask(sql[1]), detailsOf("10.0.0.5"));
    EXPECT_EQ(ask(sql[2]), text(bySize(ReportKind::kMessage)));
    EXPECT_EQ(ask(sql[3]), text(bySize(ReportKind::kPriority)));
    EXPECT_EQ(ask(sql[4]), text(report(ReportKind::kDate)));
    EXPECT_EQ(ask(sql[5]), severeWithDisk());
    std::istringstream rates(ask(sql[6]));
    std::map<std::string, std::size_t> hours;
    for (std::string date, time, rate; rates >> date >> time >> rate;) {
        const double count = std::strtod(rate.c_str(), nullptr) * 3600;
        hours[date.append(" ").append(time)] = static_cast<std::size_t>(count + 0.5);
    }
    EXPECT_EQ(hours, countsOfHours());
}

/// What the text says may stand in place of the view.
TEST_F(BeyondTest, TheTableWithFinalGivesTheSame) {
    for (std::string sql : statements()) {
        const std::string view = "quorbel.events_once";
        const std::string once = ask(sql);
        EXPECT_FALSE(once.empty());
        EXPECT_EQ(ask(sql.replace(sql.find(view), view.size(), "quorbel.events FINAL")), once);
    }
}

}  // namespace
}  // namespace quorbel
