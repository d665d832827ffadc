#include "platform/DescriptorIo.h"
#include "platform/KeyedArchive.h"
#include "platform/LineCommand.h"
#include "platform/UniqueFd.h"
#include "support/Seed.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using Kind = LineCommand::Kind;

std::string archiveOf(LineCommand command) {
    const UniqueFd file(memfd_create("archive", MFD_CLOEXEC));
    EXPECT_TRUE(std::move(command).writeArchive(file.get()));
    EXPECT_EQ(lseek(file.get(), 0, SEEK_SET), 0);
    return readToEnd(file.get()).value_or("");
}

/// Builds the same command in both ways: as lines, and as a dictionary that is put together here.
class TwoWays {
public:
    explicit TwoWays(const std::string &name) : m_expected{{"command", name}} {
        m_lines.setName(name);
    }

    TwoWays &begin(const std::string &key, Kind kind) {
        m_lines.begin(key, kind);
        m_key = key;
        m_kind = kind;
        m_expected.append(key, kind == Kind::kCounted ? Value(Dictionary()) : Value(Array()));
        return *this;
    }

    TwoWays &add(const std::string &line) {
        const auto known = m_places.find(line);
        if (known != m_places.end()) {
            m_lines.again(known->second);
        } else {
            m_places.emplace(line, m_lines.add(line));
        }
        note(line);
        return *this;
    }

    /// The expected command, with what was noted since the last begin().
    Dictionary expected() const { return m_expected; }
    LineCommand &lines() { return m_lines; }
    void close() {
        if (m_kind == Kind::kCounted) {
            Dictionary counts;
            for (const auto &[line, count] : m_counts) {
                counts.append(line, std::to_string(count));
            }
            m_expected.set(m_key, std::move(counts));
        } else {
            m_expected.set(m_key, std::move(m_list));
        }
        m_counted.clear();
        m_counts.clear();
        m_list.clear();
    }

private:
    void note(const std::string &line) {
        if (m_kind == Kind::kListed) {
            m_list.emplace_back(line);
        } else if (const auto [place, isNew] = m_counted.try_emplace(line, m_counts.size());
                   isNew) {
            m_counts.emplace_back(line, 1);
        } else {
            ++m_counts[place->second].second;
        }
    }

    LineCommand m_lines;
    Dictionary m_expected;
    std::string m_key;
    Kind m_kind = Kind::kCounted;
    std::map<std::string, LineCommand::Place> m_places;
    std::map<std::string, std::size_t> m_counted;
    std::vector<std::pair<std::string, int>> m_counts;
    Array m_list;
};

void expectTheSame(TwoWays &command, const std::string &what) {
    const Dictionary expected = command.expected();
    EXPECT_TRUE(Value(command.lines().toDictionary()) == Value(expected)) << what;
    const std::string archive = archiveOf(std::move(command.lines()));
    EXPECT_TRUE(archive == writeKeyedArchive(expected)) << what;
}

TEST(LineCommandTest, CountsAreWrittenAsTheirDictionary) {
    TwoWays command("update");
    command.begin("Events", Kind::kCounted);
    for (const char *line :
         {"0,,,\n", "1,b,c,d\n", "0,,,\n", "1,Gr\xC3\xBC\xC3\x9F,\xF0\x9F\x98\x80\n",
          "broken \xFF\n", "1,b,c,d\n", "0,,,\n"}) {
        command.add(line);
    }
    command.close();
    expectTheSame(command, "counts");
}

TEST(LineCommandTest, ListsAreWrittenAsTheirArrays) {
    TwoWays command("restore");
    command.begin("Events", Kind::kListed);
    for (const char *line : {"1,a\n", "2,\xC3\xA4\n", "1,a\n", "3,c\n"}) {
        command.add(line);
    }
    command.close();
    command.begin("Listed", Kind::kListed);
    for (const char *line : {"3,c\n", "4,d\n", "4,d\n", "2,\xC3\xA4\n"}) {
        command.add(line);
    }
    command.close();
    expectTheSame(command, "lists");
}

TEST(LineCommandTest, EmptyPartsAreWritten) {
    TwoWays update("update");
    update.begin("Events", Kind::kCounted).close();
    expectTheSame(update, "no counts");
    TwoWays restore("restore");
    restore.begin("Events", Kind::kListed).close();
    restore.begin("Listed", Kind::kListed).close();
    expectTheSame(restore, "no lists");
    TwoWays bare("update");
    expectTheSame(bare, "no parts");
}

/// Beyond some megabytes of text that is named again, the archive holds it once more.
TEST(LineCommandTest, ManyEqualLinesAreWrittenAsInAnyArchive) {
    for (const Kind kind : {Kind::kListed, Kind::kCounted}) {
        TwoWays command("restore");
        command.begin("Events", kind);
        const std::string line = std::string(5000, 'x') + "\n";
        for (int i = 0; i < 4000; ++i) {
            command.add(line).add("short\n");
        }
        command.close();
        expectTheSame(command, "equal");
    }
}

/// Numbers of objects, and offsets, take more bytes where there are more.
TEST(LineCommandTest, AnySizeIsWrittenAsInAnyArchive) {
    for (const int count : {1, 14, 15, 110, 115, 120, 125, 130, 32'740, 32'770, 70'000}) {
        for (const Kind kind : {Kind::kListed, Kind::kCounted}) {
            TwoWays command("update");
            command.begin("Events", kind);
            for (int i = 0; i < count; ++i) {
                command.add(std::to_string(i) + ",a line\n");
            }
            command.close();
            command.begin("More", Kind::kListed).add("end\n").close();
            expectTheSame(command, std::to_string(count));
        }
    }
}

std::string randomLine(std::mt19937 &random) {
    static const std::vector<std::string> kPieces{"a",
                                                  ",",
                                                  "Local7.Error",
                                                  "\xC3\xA4",
                                                  "\xE2\x82\xAC",
                                                  "\xF0\x9F\x98\x80",
                                                  "\xFF",
                                                  "\xC3",
                                                  std::string(300, 'm'),
                                                  std::string(1, '\0'),
                                                  " "};
    std::string line = std::to_string(random() % 4);
    for (auto left = random() % 6; left > 0; --left) {
        line += kPieces[random() % kPieces.size()];
    }
    return line + "\n";
}

TEST(LineCommandTest, RandomCommandsAreWrittenAsAnyArchive) {
    std::mt19937 random(testing::seed());
    for (int round = 0; round < 300; ++round) {
        TwoWays command(round % 2 == 0 ? "update" : "restore");
        const Kind kind = random() % 2 == 0 ? Kind::kCounted : Kind::kListed;
        for (const char *key : {"Events", "Listed"}) {
            command.begin(key, kind);
            for (auto left = random() % 200; left > 0; --left) {
                // Counted lines are of one part only.
                command.add((kind == Kind::kCounted ? key : "") + randomLine(random));
            }
            command.close();
        }
        expectTheSame(command, "round " + std::to_string(round));
    }
}

TEST(LineCommandTest, WhatCannotBeWrittenIsSaid) {
    LineCommand command;
    command.setName("update");
    command.begin("Events", Kind::kCounted);
    command.add("1,a,b,c\n");
    const UniqueFd readOnly(openRegular("/proc/self/status", O_RDONLY));
    EXPECT_FALSE(std::move(command).writeArchive(readOnly.get()));
}

}  // namespace
}  // namespace quorbel
