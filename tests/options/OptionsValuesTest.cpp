#include "options/OptionsValues.h"

#include <gtest/gtest.h>

namespace quorbel {

TEST(DateFormatItemsTest, TakeTheFirstTwoParts) {
    struct Case {
        const char *format;
        const char *date;
        std::optional<std::string> time;
    };
    const Case cases[] = {
        {"yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd", "HH:mm:ss"},
        {"dd.MM.yyyy hh:mm:ss AM/PM", "dd.MM.yyyy", "hh:mm:ss AM/PM"},
        {"d/M/yy h:mm", "d/M/yy", "h:mm AM/PM"},    // the ending belongs to every 12 hours
        {"d/M/yy HH:mm AM/PM", "d/M/yy", "HH:mm"},  // further parts are ignored
        {"d/M/yy KK:mm", "d/M/yy", std::nullopt},   // neither "H" nor "h"
        {"d/M/yy  HH:mm", "d/M/yy", std::nullopt},  // two spaces: an empty second part
        {" HH:mm", "", "HH:mm"},
        {"d/M/yy ", "d/M/yy", std::nullopt},
        {"d/M/yy", "d/M/yy", std::nullopt},
    };
    for (const Case &test : cases) {
        const DateFormatItems items = dateFormatItems(test.format);
        EXPECT_EQ(items.date, test.date) << test.format;
        EXPECT_EQ(items.time, test.time) << test.format;
    }
}

TEST(ComposeDateFormatTest, JoinsTheItemsAndKeepsWhatIsNotChosen) {
    using Item = std::optional<std::string>;
    struct Case {
        Item date;
        Item time;
        const char *read;
        const char *format;
    };
    const Case cases[] = {
        {"yyyy-MM-dd", "HH:mm", "", "yyyy-MM-dd HH:mm"},
        {"d/M/yy", "h:mm:ss AM/PM", "yyyy-MM-dd HH:mm", "d/M/yy h:mm:ss AM/PM"},
        {{}, {}, "yy.MM KK:mm a z", "yy.MM KK:mm a z"},
        {{}, {}, "yy.MM", "yy.MM"},
        {"d/M/yy", {}, "yy.MM KK:mm a", "d/M/yy KK:mm a"},
        {{}, "HH:mm", "yy.MM KK:mm a", "yy.MM HH:mm"},
    };
    for (const Case &test : cases) {
        EXPECT_EQ(composeDateFormat(test.date, test.time, test.read), test.format) << test.read;
    }
}

}  // namespace quorbel
