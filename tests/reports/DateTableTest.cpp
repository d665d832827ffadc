#include "platform/DateFormat.h"
#include "reports/DateTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

std::vector<std::uint32_t> numbersOf(const char *setting, const std::vector<double> &moments) {
    DateTexts texts(setting);
    DateTable table(texts);
    std::vector<std::uint32_t> numbers;
    const auto take = [&numbers](std::uint32_t number) { numbers.push_back(number); };
    for (const double moment : moments) {
        table.numberLater(moment, take);
    }
    table.numberQueued(take);
    return numbers;
}

std::vector<std::uint32_t> plainNumbersOf(const char *setting, const std::vector<double> &moments) {
    const DateFormat format(setting);
    std::map<std::string, std::uint32_t> known;
    std::vector<std::uint32_t> numbers;
    for (const double moment : moments) {
        const auto next = static_cast<std::uint32_t>(known.size());
        numbers.push_back(known.emplace(format.render(moment), next).first->second);
    }
    return numbers;
}

// Texts that sort as time goes by, texts that do not, few of them, one that is empty, and a format
// that is rendered moment by moment.
constexpr const char *kSettings[] = {
    "",           "yyyy-MM-dd HH:mm", "dd.MM.yyyy HH:mm:ss", "d/M/yy h:mm:ss AM/PM", "ss:mm",
    "yyyy-MM-dd", "o'clock",          "HH:mm:ss.SSS"};

TEST(DateTableTest, NumbersTextsAsTheyFirstAppear) {
    std::mt19937 random(5);
    for (const int span : {20, 4000, 40'000'000}) {
        std::vector<double> moments;
        for (int i = 0; i < 3000; ++i) {
            const auto away = static_cast<int>(random() % static_cast<unsigned>(span));
            moments.push_back(1700000000 + away + (i % 50 == 0 ? 0.5 : 0));
        }
        std::vector<double> rising = moments;
        std::ranges::sort(rising);
        std::vector<double> falling(rising.rbegin(), rising.rend());
        // In order but for a late one now and then, as from two devices.
        std::vector<double> nearlyRising = rising;
        for (std::size_t i = 10; i < nearlyRising.size(); i += 37) {
            std::swap(nearlyRising[i], nearlyRising[i - 10]);
        }
        for (const char *setting : kSettings) {
            for (const auto &sequence : {moments, rising, falling, nearlyRising}) {
                EXPECT_EQ(numbersOf(setting, sequence), plainNumbersOf(setting, sequence))
                    << setting << ", " << span;
            }
        }
    }
}

TEST(DateTableTest, KnowsATextThatComesBack) {
    // Without the day in the text, the next day shows the same again.
    EXPECT_EQ(numbersOf("HH:mm", {0, 60, 30, 86400, 120, 86460, 86400}),
              (std::vector<std::uint32_t>{0, 1, 0, 0, 2, 1, 0}));
    EXPECT_EQ(numbersOf("HH:mm", {}), std::vector<std::uint32_t>());
}

// So many that some share a hash.
TEST(DateTableTest, TellsApartDatesThatShareAHash) {
    constexpr std::uint32_t kDates = 500'000;
    std::vector<double> falling;
    std::vector<std::uint32_t> expected;
    for (std::uint32_t i = 0; i < kDates; ++i) {
        falling.push_back(1700000000.0 - i);
        expected.push_back(i);
    }
    EXPECT_EQ(numbersOf("", falling), expected);
}

}  // namespace
}  // namespace quorbel
