#include "common/EmailTemplate.h"

#include <gtest/gtest.h>

namespace quorbel {
namespace {

struct TemplateCase {
    std::string_view text;
    std::string_view filled;
};

TEST(EmailTemplateTest, ReplacesEveryPlaceholder) {
    const EventFields event{"2026-01-02", "Local7.Debug", "10.0.0.5", "disk full", {}};
    const TemplateCase cases[] = {
        {"", ""},
        {"no placeholder, $5", "no placeholder, $5"},
        {"$message", "disk full"},
        {"$message on $host: $message", "disk full on 10.0.0.5: disk full"},
        {"$date|$priority|$host|$message", "2026-01-02|Local7.Debug|10.0.0.5|disk full"},
        {"$hosts$$host$", "10.0.0.5s$10.0.0.5$"},
        {"$Host $MESSAGE $ host $messag", "$Host $MESSAGE $ host $messag"},
        {kDefaultFormatBody,
         "Date:2026-01-02\r\nPriority:Local7.Debug\r\nHost:10.0.0.5\r\nMessage:disk full\r\n"},
    };
    for (const TemplateCase &c : cases) {
        EXPECT_EQ(fillTemplate(c.text, event), c.filled);
    }
}

TEST(EmailTemplateTest, LaterPlaceholdersAreReplacedInWhatWasPutInEarlier) {
    const EventFields event{"$host$date$priority",
                            "$date$priority$message",
                            "$host$date$priority$message",
                            "$host$date$priority$message",
                            {}};
    EXPECT_EQ(fillTemplate("$message", event), "$host$date$priority$message");
    EXPECT_EQ(fillTemplate("$priority", event), "$date$priority$host$date$priority$message");
    const EventFields chain{"$priority", "$message", "$date", "end", {}};
    EXPECT_EQ(fillTemplate("$host", chain), "end");
    // Put together by a replacement.
    EXPECT_EQ(fillTemplate("$$hostage", {{}, {}, "mess", "end", {}}), "end");
}

TEST(EmailTemplateTest, AbsentFieldsAreNothing) {
    EXPECT_EQ(fillTemplate("[$date$priority$host$message]", {}), "[]");
}

}  // namespace
}  // namespace quorbel
