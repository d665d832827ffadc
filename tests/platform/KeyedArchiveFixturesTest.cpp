#include "platform/AllocationMeter.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "platform/TypedJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::AllocationMeter;

std::filesystem::path folder() {
    return std::filesystem::path(QUORBEL_TEST_DATA) / "keyed";
}

std::string bytesOf(const std::filesystem::path &file) {
    std::optional<std::string> bytes = readFile(file);
    if (!bytes) {
        throw std::runtime_error("cannot read " + file.string());
    }
    return *bytes;
}

std::vector<std::string> archives(const std::filesystem::path &place) {
    std::vector<std::string> names = listFolder(place);
    std::erase_if(names, [](const std::string &name) { return !hasExtension(name, "bin"); });
    return names;
}

std::string reasonOf(const std::variant<Value, ArchiveError> &result) {
    const auto *error = std::get_if<ArchiveError>(&result);
    return error == nullptr ? "" : error->reason;
}

TEST(KeyedArchiveFixturesTest, ReadsWhatOtherProgramsWrote) {
    const std::vector<std::string> names = archives(folder());
    ASSERT_EQ(names.size(), 10U);
    for (const std::string &name : names) {
        const Value expected = testing::valueFromTypedJson(bytesOf(folder() / (name + ".json")));
        const auto result = readKeyedArchive(bytesOf(folder() / name));
        ASSERT_EQ(reasonOf(result), "") << name;
        EXPECT_EQ(std::get<Value>(result), expected) << name;
    }
}

TEST(KeyedArchiveFixturesTest, WritesThemAgain) {
    for (const std::string &name : archives(folder())) {
        const auto first = readKeyedArchive(bytesOf(folder() / name));
        const std::string written = writeKeyedArchive(std::get<Value>(first));
        EXPECT_EQ(std::get<Value>(readKeyedArchive(written)), std::get<Value>(first)) << name;
        EXPECT_LE(written.size(), bytesOf(folder() / name).size() + 16) << name;
    }
}

struct Expectation {
    std::string file;
    bool mustReject;
};

std::vector<Expectation> expectations() {
    std::vector<Expectation> all;
    std::istringstream lines(bytesOf(folder() / "malformed" / "expect.tsv"));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t nameEnd = line.find('\t');
        all.push_back({line.substr(0, nameEnd), line.substr(nameEnd + 1).starts_with("reject\t")});
    }
    return all;
}

// Bounds for damaged files of some hundred bytes, some with a claim of gigabytes.
constexpr double kLongestSeconds = 0.1;
constexpr std::size_t kMostBytes = std::size_t{1} << 20;

void expectBounded(const std::string &bytes, const std::string &name) {
    const std::clock_t start = std::clock();
    const AllocationMeter meter;
    (void)readKeyedArchive(bytes);
    EXPECT_LT(meter.peak(), kMostBytes) << name;
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, kLongestSeconds) << name;
}

TEST(KeyedArchiveFixturesTest, SurvivesDamage) {
    const std::vector<Expectation> all = expectations();
    EXPECT_EQ(all.size(), archives(folder() / "malformed").size());
    for (const Expectation &expectation : all) {
        const std::string bytes = bytesOf(folder() / "malformed" / expectation.file);
        const auto result = readKeyedArchive(bytes);
        if (expectation.mustReject) {
            EXPECT_TRUE(std::holds_alternative<ArchiveError>(result)) << expectation.file;
        }
        if (const auto *error = std::get_if<ArchiveError>(&result)) {
            EXPECT_FALSE(error->reason.empty()) << expectation.file;
            EXPECT_EQ(error->reason.find('\n'), std::string::npos) << expectation.file;
        }
        expectBounded(bytes, expectation.file);
    }
}

TEST(KeyedArchiveFixturesTest, SurvivesEveryCut) {
    for (const char *name : {"apple-layout-settings-small.bin", "gnustep-numbers.bin"}) {
        const std::string bytes = bytesOf(folder() / name);
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            const auto result = readKeyedArchive(std::string_view(bytes).substr(0, length));
            EXPECT_TRUE(std::holds_alternative<ArchiveError>(result)) << name << length;
        }
    }
}

}  // namespace
}  // namespace quorbel
