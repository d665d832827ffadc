#include "platform/DateFormat.h"
#include "platform/Text.h"
#include "reports/ReportEngine.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::TemporaryFolder;

constexpr const char *kFormat = "yyyy-MM-dd HH:mm:ss";
constexpr std::array kKinds = {ReportKind::kHost, ReportKind::kMessage, ReportKind::kPriority,
                               ReportKind::kDate};

using Detail = std::array<std::string, 3>;
struct Group {
    std::string value;
    std::vector<Detail> details;
    bool operator==(const Group &) const = default;
};

[[maybe_unused]] void PrintTo(const Group &group, std::ostream *out) {
    *out << group.value << " (" << group.details.size() << ")";
}

std::vector<Group> groupsOf(const ReportEngine &report, ReportKind kind) {
    const auto &columns = reportColumns(kind);
    std::vector<Group> groups;
    for (std::size_t group = 0; group < report.groupCount(); ++group) {
        groups.push_back({std::string(report.groupText(group)), {}});
        for (std::size_t detail = 0; detail < report.detailCount(group); ++detail) {
            Detail texts;
            for (std::size_t i = 0; i < texts.size(); ++i) {
                texts[i] = report.detailText(group, detail, columns[i + 1]);
            }
            groups.back().details.push_back(texts);
        }
    }
    return groups;
}

std::vector<Group> readFiles(ReportKind kind, const std::vector<std::filesystem::path> &files,
                             const char *format = kFormat) {
    ReportEngine report(kind, format);
    EXPECT_TRUE(report.read(files));
    return groupsOf(report, kind);
}

std::vector<Group> readBytes(ReportKind kind, const std::string &bytes,
                             const char *format = kFormat) {
    const TemporaryFolder folder;
    return readFiles(kind, {folder.write("x.log", bytes)}, format);
}

TEST(ReportEngineTest, GroupsByEachField) {
    const std::string log =
        "1700000000,Local7.Error,h1,one\r\n"
        "1700000001,Kern.Alert,h2,two, and more\r\n"
        "1700000000,Local7.Error,h1,two, and more\r\n";
    const std::string first = "2023-11-14 22:13:20";
    const std::string second = "2023-11-14 22:13:21";
    EXPECT_THAT(
        readBytes(ReportKind::kHost, log),
        ElementsAre(
            Group{"h1", {{first, "Local7.Error", "one"}, {first, "Local7.Error", "two, and more"}}},
            Group{"h2", {{second, "Kern.Alert", "two, and more"}}}));
    EXPECT_THAT(readBytes(ReportKind::kMessage, log),
                ElementsAre(Group{"one", {{first, "Local7.Error", "h1"}}},
                            Group{"two, and more",
                                  {{second, "Kern.Alert", "h2"}, {first, "Local7.Error", "h1"}}}));
    EXPECT_THAT(
        readBytes(ReportKind::kPriority, log),
        ElementsAre(Group{"Local7.Error", {{first, "h1", "one"}, {first, "h1", "two, and more"}}},
                    Group{"Kern.Alert", {{second, "h2", "two, and more"}}}));
    EXPECT_THAT(
        readBytes(ReportKind::kDate, log),
        ElementsAre(
            Group{first, {{"Local7.Error", "h1", "one"}, {"Local7.Error", "h1", "two, and more"}}},
            Group{second, {{"Kern.Alert", "h2", "two, and more"}}}));
}

struct LineCase {
    const char *line;
    std::optional<std::array<std::string, 3>> fields;  // Priority, Host, Message
};

TEST(ReportEngineTest, ReadsLinesAsTheRulesSay) {
    const LineCase cases[] = {
        {"1,P,h,a, b,,c\r\n", {{"P", "h", "a, b,,c"}}},
        {"1,P,h,\r\n", std::nullopt},
        {"1,P,h\r\n", std::nullopt},
        {"\r\n", std::nullopt},
        {",,,,,\n", std::nullopt},
        // An empty field moves the later ones forward.
        {"1,,h,message\r\n", std::nullopt},
        {"1,,h,text, rest, more\r\n", {{"h", "text", " rest, more"}}},
        {",,1,,P,,h,m\r\n", {{"P", "h", "m"}}},
        {"1,P,h,m\rignored,x\r\n", {{"P", "h", "m"}}},
        {"1,P,h,no line end", {{"P", "h", "no line end"}}},
        {"1,P\xff,h\xc3,m\xed\xa0\x80 \xc3\xa9\n",
         {{"P\uFFFD", "h\uFFFD", "m\uFFFD\uFFFD\uFFFD \u00e9"}}},
    };
    for (const LineCase &c : cases) {
        const auto groups = readBytes(ReportKind::kDate, c.line);
        ASSERT_EQ(groups.size(), c.fields ? 1U : 0U) << c.line;
        if (c.fields) {
            EXPECT_THAT(groups[0].details, ElementsAre(*c.fields)) << c.line;
        }
    }
}

TEST(ReportEngineTest, ReadsDatesAsNumbers) {
    const std::pair<const char *, const char *> cases[] = {
        {"1700000000", "2023-11-14 22:13:20"},
        {"1700000000.75", "2023-11-14 22:13:20"},
        {"soon", "1970-01-01 00:00:00"},
        {" 60", "1970-01-01 00:01:00"},
        {"60 seconds", "1970-01-01 00:01:00"},
        {"1e3", "1970-01-01 00:16:40"},
        {"-1", "1969-12-31 23:59:59"},
        {"0x10", "1970-01-01 00:00:00"},
        {"nan", "1970-01-01 00:00:00"},
        {"\xff", "1970-01-01 00:00:00"},
        {"000001700000000", "2023-11-14 22:13:20"}};
    for (const auto &[date, shown] : cases) {
        const auto groups = readBytes(ReportKind::kDate, std::string(date) + ",P,h,m\n");
        ASSERT_EQ(groups.size(), 1U) << date;
        EXPECT_EQ(groups[0].value, shown) << date;
    }
}

TEST(ReportEngineTest, GroupsByDateAsItIsShown) {
    const std::string log =
        "1700000000,P,h,a\n1700086400,P,h,b\n1700003600,P,h,c\n1700000000,P,h,d\n";
    const auto days = readBytes(ReportKind::kDate, log, "yyyy-MM-dd");
    ASSERT_EQ(days.size(), 2U);
    EXPECT_EQ(days[0].value, "2023-11-14");
    EXPECT_EQ(days[0].details.size(), 3U);
    EXPECT_EQ(readBytes(ReportKind::kDate, log, "").size(), 3U);
    EXPECT_EQ(readBytes(ReportKind::kDate, log, "")[0].value, "2023-11-14 22:13:20");
    EXPECT_EQ(readBytes(ReportKind::kDate, log, "hh:mm AM/PM")[0].value, "10:13 PM");
    // A format that shows nothing has one group without a text.
    EXPECT_EQ(readBytes(ReportKind::kDate, log, "o'clock"),
              (std::vector<Group>{
                  {"", {{"P", "h", "a"}, {"P", "h", "b"}, {"P", "h", "c"}, {"P", "h", "d"}}}}));
}

TEST(ReportEngineTest, CutsALongLineInPieces) {
    const std::string rest = "2,Q,i," + std::string(500, 'y');
    const std::string line = "1,P,h," + std::string(1023 - 6, 'x') + rest + "\r\n";
    const auto groups = readBytes(ReportKind::kHost, line);
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].details[0][2], std::string(1023 - 6, 'x'));
    EXPECT_EQ(groups[1].value, "i");
    // A rest without commas is no line.
    EXPECT_EQ(readBytes(ReportKind::kHost, "1,P,h," + std::string(3000, 'x') + "\n").size(), 1U);
}

TEST(ReportEngineTest, WithoutAKindItHasNoGroups) {
    const TemporaryFolder folder;
    ReportEngine report(std::nullopt, kFormat);
    std::uint64_t bytes = 0;
    EXPECT_TRUE(report.read({folder.write("x.log", "1,2,3,4\n")},
                            [&bytes](std::uint64_t done, std::uint64_t) {
                                bytes = done;
                                return true;
                            }));
    EXPECT_EQ(bytes, 8U);
    EXPECT_EQ(report.groupCount(), 0U);
}

TEST(ReportEngineTest, ReadsFilesInTheirOrderAndPassesOverWhatCannotBeRead) {
    const TemporaryFolder folder;
    const auto first = folder.write("first.log", "1,P,h,one\n");
    const auto second = folder.write("second.log", "2,P,g,two\n3,P,h,three\n");
    std::filesystem::create_directory(folder.path() / "folder.log");
    ASSERT_EQ(mkfifo((folder.path() / "pipe.log").c_str(), 0600), 0);
    const auto groups = readFiles(ReportKind::kHost,
                                  {second, folder.path() / "folder.log", folder.path() / "pipe.log",
                                   folder.path() / "gone.log", first});
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].value, "g");
    EXPECT_EQ(groups[1].details[0][2], "three");
    EXPECT_EQ(groups[1].details[1][2], "one");
}

TEST(ReportEngineTest, CopesWithFilesThatChangeWhileTheyAreRead) {
    const TemporaryFolder folder;
    std::string log;
    for (int i = 0; i < 20'000; ++i) {
        log += "1,P,h" + std::to_string(i) + ",message\n";
    }
    const auto file = folder.write("x.log", log);
    const auto countAfter = [&](auto change) {
        folder.write("x.log", log);
        ReportEngine report(ReportKind::kHost, kFormat);
        bool isChanged = false;
        EXPECT_TRUE(report.read({file, file}, [&](std::uint64_t, std::uint64_t) {
            if (!std::exchange(isChanged, true)) {
                change();
            }
            return true;
        }));
        return report.groupCount();
    };
    EXPECT_EQ(countAfter([&] { std::ofstream(file, std::ios::app) << "1,P,more,message\n"; }),
              20'001U);
    const std::size_t truncated = countAfter([&] { std::filesystem::resize_file(file, 0); });
    EXPECT_GT(truncated, 1000U);
    EXPECT_LT(truncated, 20'000U);
    EXPECT_EQ(countAfter([&] { std::filesystem::remove(file); }), 20'000U);
}

TEST(ReportEngineTest, CanBeCancelledAndTellsHowFarItIs) {
    const TemporaryFolder folder;
    std::string log;
    while (log.size() < 1'000'000) {
        log += "1,P,h,message\n";
    }
    const auto file = folder.write("x.log", log);
    std::uint64_t last = 0;
    EXPECT_TRUE(ReportEngine(ReportKind::kHost, kFormat)
                    .read({file, file}, [&](std::uint64_t done, std::uint64_t inAll) {
                        EXPECT_GE(done, last);
                        EXPECT_EQ(inAll, 2 * log.size());
                        last = done;
                        return true;
                    }));
    EXPECT_EQ(last, 2 * log.size());
    int calls = 0;
    EXPECT_FALSE(
        ReportEngine(ReportKind::kHost, kFormat)
            .read({file, file}, [&calls](std::uint64_t, std::uint64_t) { return ++calls < 3; }));
    EXPECT_EQ(calls, 3);
}

TEST(ReportEngineTest, ReadsOneLineOf64MiBInTimeAndWithoutHoldingIt) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "x.log";
    {
        std::ofstream out(file, std::ios::binary);
        out << "1,P,h,";
        const std::string part(1 << 20, 'x');
        for (int i = 0; i < 64; ++i) {
            out << part;
        }
        out << "\r\n2,P,h,after\r\n";
    }
    const auto before = std::chrono::steady_clock::now();
    const auto groups = readFiles(ReportKind::kHost, {file});
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    ASSERT_EQ(groups.size(), 1U);
    ASSERT_EQ(groups[0].details.size(), 2U);
    EXPECT_EQ(groups[0].details[0][2].size(), 1017U);
    EXPECT_EQ(groups[0].details[1][2], "after");
}

// The rules once more, slowly and to the letter: a buffer of 1,024 bytes, a tokenizer that works in
// place, and a linear walk over the groups. A zero byte is a byte as any other.
class SlowReport {
public:
    SlowReport(ReportKind kind, const char *format) : m_kind(kind), m_format(format) {}

    void read(const std::string &bytes) {
        std::size_t at = 0;
        while (at < bytes.size()) {
            std::string buffer;
            while (at < bytes.size() && buffer.size() < 1023 &&
                   (buffer.empty() || buffer.back() != '\n')) {
                buffer += bytes[at++];
            }
            take(buffer);
        }
    }

    std::vector<Group> groups;

private:
    static std::optional<std::string> token(std::string &rest, const char *separators) {
        const auto isSeparator = [separators](char c) {
            return c != 0 && std::strchr(separators, c) != nullptr;
        };
        while (!rest.empty() && isSeparator(rest.front())) {
            rest.erase(0, 1);
        }
        if (rest.empty()) {
            return std::nullopt;
        }
        std::size_t end = 0;
        while (end < rest.size() && !isSeparator(rest[end])) {
            ++end;
        }
        std::string result = rest.substr(0, end);
        rest.erase(0, std::min(end + 1, rest.size()));
        return result;
    }
    static std::string shown(const std::string &bytes) {
        std::string text;
        for (std::size_t at = 0; at < bytes.size();) {
            std::size_t length = std::min<std::size_t>(4, bytes.size() - at);
            while (length > 0 && !(isUtf8(bytes.substr(at, length)) &&
                                   !(length > 1 && isUtf8(bytes.substr(at, length - 1))))) {
                --length;
            }
            text += length == 0 ? "\uFFFD" : bytes.substr(at, length);
            at += std::max<std::size_t>(length, 1);
        }
        return text;
    }
    void take(std::string rest) {
        const auto date = token(rest, ",\r\n");
        const auto priority = token(rest, ",\r\n");
        const auto host = token(rest, ",\r\n");
        const auto message = token(rest, "\r\n");
        if (!date || !priority || !host || !message) {
            return;
        }
        const std::string d = m_format.render(floatingPointValue(*date));
        const std::string p = shown(*priority);
        const std::string h = shown(*host);
        const std::string m = shown(*message);
        switch (m_kind) {
            case ReportKind::kHost:
                return put(h, {d, p, m});
            case ReportKind::kMessage:
                return put(m, {d, p, h});
            case ReportKind::kPriority:
                return put(p, {d, h, m});
            case ReportKind::kDate:
                return put(d, {p, h, m});
        }
    }
    void put(const std::string &value, const Detail &detail) {
        for (Group &group : groups) {
            if (group.value == value) {
                group.details.push_back(detail);
                return;
            }
        }
        groups.push_back({value, {detail}});
    }

    ReportKind m_kind;
    DateFormat m_format;
};

std::string randomLog(std::mt19937 &random) {
    const std::string noise("ab1.9,,,\r\n\0\xc3\xa9\xff\xf0\x9f\x92\xbe ", 19);
    const auto pick = [&random](unsigned count) { return static_cast<unsigned>(random()) % count; };
    std::string bytes;
    for (int line = 0; line < 120'000; ++line) {
        if (pick(20) == 0) {
            for (unsigned i = pick(60); i > 0; --i) {
                bytes += noise[pick(19)];
            }
        }
        bytes += std::to_string(1700000000 + pick(300)) + (pick(50) == 0 ? ".5," : ",");
        bytes += pick(60) == 0 ? "," : "Local" + std::to_string(pick(8)) + ".Error,";
        bytes += "10.0.0." + std::to_string(pick(90)) + ",";
        bytes += pick(60) == 0 ? "" : "message " + std::to_string(pick(400));
        if (pick(300) == 0) {
            bytes.append(pick(2500), 'x');
        }
        bytes += pick(30) == 0 ? "\n" : "\r\n";
    }
    return bytes;
}

TEST(ReportEngineTest, AgreesWithThePlainRulesOnRandomLines) {
    std::mt19937 random(20261121);
    const std::string bytes = randomLog(random);
    const TemporaryFolder folder;
    const auto file = folder.write("x.log", bytes);
    for (const ReportKind kind : kKinds) {
        SlowReport slow(kind, kFormat);
        slow.read(bytes);
        EXPECT_GT(slow.groups.size(), 8U);
        EXPECT_EQ(readFiles(kind, {file}), slow.groups) << static_cast<int>(kind);
    }
}

}  // namespace
}  // namespace quorbel
