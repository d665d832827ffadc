#include "common/LogReader.h"
#include "platform/Text.h"
#include "service/message/RecordWriter.h"
#include "service/message/WrittenText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using namespace std::string_view_literals;

constexpr Priority kLocal7Error{23, 3};

struct Record {
    std::string date;
    std::string priority;
    std::string host;
    std::string message;

    bool operator==(const Record &) const = default;
};

std::vector<Record> readBack(std::string_view lines) {
    std::vector<Record> records;
    LogReader::readBytes(lines, [&](const LogLine &line) {
        records.push_back({std::string(line.date), std::string(line.priority),
                           std::string(line.host), std::string(line.message)});
        return true;
    });
    return records;
}

std::string messageOf(std::string_view message) {
    std::string lines;
    RecordWriter().append({1700000000, kLocal7Error, "10.0.0.5", message}, lines);
    std::string whole;
    for (const Record &record : readBack(lines)) {
        whole += record.message;
    }
    return whole;
}

TEST(RecordWriterTest, WritesALine) {
    std::string lines = "before\r\n";
    const auto written =
        RecordWriter().append({1700000000, kLocal7Error, "10.0.0.5", "disk full, retrying"}, lines);
    EXPECT_EQ(written.lines, 1U);
    EXPECT_EQ(written.prefix, std::string_view("1700000000,Local7.Error,10.0.0.5,").size());
    EXPECT_EQ(lines, "before\r\n1700000000,Local7.Error,10.0.0.5,disk full, retrying\r\n");
}

struct Case {
    std::string_view sent;
    std::string_view written;
};

TEST(RecordWriterTest, WritesMessagesSoThatTheyReadBack) {
    constexpr Case kCases[] = {
        {"", "-"},
        {" ", " "},
        {",", ","},
        {",,a,,b,", ",,a,,b,"},
        {"a\nb", "a#012b"},
        {"\r\n", "#015#012"},
        {"a\r\n1700000000,Kern.Emergency,10.0.0.1,forged",
         "a#015#0121700000000,Kern.Emergency,10.0.0.1,forged"},
        {"\0"sv, "#000"},
        {"\x1B[31mred", "#033[31mred"},
        {"a\tb", "a#011b"},
        {"\x7F", "#177"},
        {"\xC2\x85|\xC2\x9B|\xC2\xA0", "#205|#233|\xC2\xA0"},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x94\xA5", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x94\xA5"},
        {"caf\xE9!", "caf\xEF\xBF\xBD!"},
        {"\xC3", "\xEF\xBF\xBD"},
        {"\xC3\n", "\xEF\xBF\xBD#012"},
        {"\xE2\x82", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xC0\x8A", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        // Noncharacters.
        {"\xEF\xBF\xBE|\xEF\xBF\xBF|\xEF\xB7\x90|\xEF\xB7\xAF|\xF0\x9F\xBF\xBE",
         "\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD"},
        {"\xEF\xB7\x8F|\xEF\xB7\xB0|\xEF\xBF\xBD", "\xEF\xB7\x8F|\xEF\xB7\xB0|\xEF\xBF\xBD"},
        {"#012", "#012"},
    };
    for (const Case &c : kCases) {
        EXPECT_EQ(messageOf(c.sent), c.written) << std::string(c.sent);
    }
}

TEST(RecordWriterTest, WritesHostsWithoutSeparators) {
    constexpr Case kCases[] = {
        {"", "-"},  {"fe80::1%eth0", "fe80::1%eth0"}, {"a,b", "a_b"},
        {",", "_"}, {"a\r\nb c\0d"sv, "a__b_c_d"},    {"h\xC3\xB6st", "h__st"},
    };
    for (const Case &c : kCases) {
        std::string lines;
        RecordWriter().append({1, kLocal7Error, c.sent, "m"}, lines);
        const std::vector<Record> expected{{"1", "Local7.Error", std::string(c.written), "m"}};
        EXPECT_EQ(readBack(lines), expected) << std::string(c.sent);
    }
}

// Plain text is looked at in blocks: no byte hides in one, wherever it stands.
TEST(RecordWriterTest, FindsEveryByteAtEveryPlace) {
    constexpr std::size_t kLength = 40;
    for (std::size_t place = 0; place < kLength; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string message(kLength, place % 2 == 0 ? ' ' : '~');
            message[place] = static_cast<char>(byte);
            ASSERT_EQ(messageOf(message), testing::writtenText(message)) << place << ' ' << byte;
        }
    }
}

TEST(RecordWriterTest, WritesOfEachEventItsOwnTimePriorityAndHost) {
    const Record usual{"1", "Local7.Error", "a", "m"};
    RecordWriter writer;
    std::string lines;
    const auto write = [&](std::int64_t seconds, Priority priority, std::string_view host) {
        writer.append({seconds, priority, host, "m"}, lines);
    };
    write(1, kLocal7Error, "a");
    write(2, kLocal7Error, "a");
    write(1, kLocal7Error, "a");
    write(1, {23, 7}, "a");
    write(1, kLocal7Error, "a");
    write(1, kLocal7Error, "b");
    write(1, kLocal7Error, "a");
    const std::vector<Record> expected{
        usual, {"2", "Local7.Error", "a", "m"}, usual, {"1", "Local7.Debug", "a", "m"},
        usual, {"1", "Local7.Error", "b", "m"}, usual};
    EXPECT_EQ(readBack(lines), expected);
}

TEST(RecordWriterTest, FillsLinesToTheLastByte) {
    const std::size_t prefix = std::string_view("1700000000,Local7.Error,10.0.0.5,").size();
    const std::size_t room = 1023 - 2 - prefix;
    for (const std::size_t extra : {0U, 1U}) {
        std::string lines;
        const auto written = RecordWriter().append(
            {1700000000, kLocal7Error, "10.0.0.5", std::string(room + extra, 'x')}, lines);
        EXPECT_EQ(written.lines, 1 + extra);
        EXPECT_EQ(lines.find('\n') + 1, 1023U);
        EXPECT_EQ(readBack(lines).size(), 1 + extra);
    }
}

TEST(RecordWriterTest, SplitsBetweenCharactersAndNotWithinEscapes) {
    for (const std::string_view unit : {"\xC3\xA9"sv, "\xE2\x82\xAC"sv, "\xF0\x9F\x94\xA5"sv}) {
        for (std::size_t shift = 0; shift < 4; ++shift) {
            std::string message(shift, 'x');
            while (message.size() < 3000) {
                message += unit;
            }
            EXPECT_EQ(messageOf(message), message);
            std::string lines;
            RecordWriter().append({1, kLocal7Error, "h", message}, lines);
            for (const Record &record : readBack(lines)) {
                EXPECT_TRUE(isUtf8(record.message));
            }
        }
    }
    for (std::size_t shift = 0; shift < 4; ++shift) {
        std::string lines;
        RecordWriter().append(
            {1, kLocal7Error, "h", std::string(shift, 'x') + std::string(900, '\n')}, lines);
        for (const Record &record : readBack(lines)) {
            EXPECT_EQ(record.message.substr(record.message.size() - 4), "#012");
        }
    }
}

class Input {
public:
    std::string bytes(std::size_t most) {
        // Bytes that matter to the reader are more frequent than chance would have them.
        constexpr std::string_view kSpecial("\r\n,\0#-\x1B\x7F\xC2\x80\xC3\xA9\xEF\xBF\xBE\xF0\x9F",
                                            17);
        std::string text(number(most), '\0');
        for (char &c : text) {
            c = number(2) == 0 ? kSpecial[number(kSpecial.size() - 1)]
                               : static_cast<char>(number(255));
        }
        return text;
    }
    std::size_t number(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(m_engine);
    }

private:
    std::mt19937_64 m_engine{20261121};
};

TEST(RecordWriterTest, LetsNoInputForgeLoseOrMergeARecord) {
    Input input;
    RecordWriter writer;
    for (int round = 0; round < 300; ++round) {
        std::string lines;
        std::vector<Record> expected;
        std::vector<std::size_t> counts;
        for (std::size_t events = 1 + input.number(9); events > 0; --events) {
            const auto seconds = static_cast<std::int64_t>(input.number(4'000'000'000));
            const auto priority = *Priority::fromValue(static_cast<unsigned>(input.number(191)));
            const std::string host = input.bytes(input.number(5) == 0 ? 400 : 20);
            const std::string message = input.bytes(input.number(5) == 0 ? 5000 : 200);
            counts.push_back(writer.append({seconds, priority, host, message}, lines).lines);
            expected.push_back({std::to_string(seconds), std::string(priority.text()), host,
                                testing::writtenText(message)});
        }
        const std::vector<Record> records = readBack(lines);
        std::size_t next = 0;
        for (std::size_t event = 0; event < expected.size(); ++event) {
            std::string message;
            for (std::size_t i = 0; i < counts[event]; ++i) {
                ASSERT_LT(next, records.size());
                const Record &record = records[next++];
                EXPECT_EQ(record.date, expected[event].date);
                EXPECT_EQ(record.priority, expected[event].priority);
                EXPECT_EQ(record.host.size(),
                          std::clamp<std::size_t>(expected[event].host.size(), 1, 255));
                EXPECT_TRUE(isUtf8(record.message));
                message += record.message;
            }
            ASSERT_EQ(message, expected[event].message);
        }
        EXPECT_EQ(next, records.size());
    }
}

}  // namespace
}  // namespace quorbel
