#include "control/SettingsProblems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SettingsProblemsTest, FindsNothingInWhatIsRight) {
    EXPECT_THAT(settingsProblems({}), IsEmpty());
    EXPECT_THAT(settingsProblems({{"hostsDisplay", true},
                                  {"dateFormat", "dd/MM/yyyy hh:mm:ss AM/PM"},
                                  {"severityEmergency", 2},
                                  {"removalUnknown", 3},
                                  {"removalUnknownUnits", 4},
                                  {"popupEvents", 5},
                                  {"popupDisplayArray", Array{"Alert", "Information", "Unknown"}},
                                  {"actionsEmailSecurity", "STARTTLS"},
                                  {"actionsEmailPort", 587},
                                  {"textInterval", 10},
                                  {"textLocation", "/Library/Quorbel/x.csv"},
                                  {"includeFiltersArray", Array{Dictionary{{"Name", "all"}}}},
                                  {"somebody's own", Array{1}}}),
                IsEmpty());
}

TEST(SettingsProblemsTest, NamesTheKeyAndWhatIsWrongWithIt) {
    struct Case {
        Dictionary settings;
        const char *problem;
    };
    const Case cases[] = {
        {{{"hostsDisplay", "yes"}}, "hostsDisplay is neither yes nor no"},
        {{{"hostsDisplay", 2}}, "hostsDisplay is neither yes nor no"},
        {{{"dateFormat", 1}}, "dateFormat is no text"},
        {{{"dateFormat", "bogus"}}, "dateFormat is no date format"},
        {{{"severityAlerting", 3}}, "severityAlerting is 3, which means nothing"},
        {{{"severityUnknown", -1}}, "severityUnknown is -1, which means nothing"},
        {{{"removalDebug", "x"}}, "removalDebug is no whole number"},
        {{{"removalDebugUnits", 5}}, "removalDebugUnits is 5, which means nothing"},
        {{{"popupDisplayArray", "Alert"}}, "popupDisplayArray is no list"},
        {{{"popupPlayArray", Array{"Alert", "Alerting"}}},
         "popupPlayArray has \"Alerting\", which is no severity"},
        {{{"actionsEmailPort", 70000}}, "actionsEmailPort is 70000, which means nothing"},
        {{{"actionsEmailSecurity", "TLS"}},
         "actionsEmailSecurity is \"TLS\": no e-mails are sent then"},
        {{{"textLocation", Null()}}, "textLocation is no text"},
        {{{"actionsArray", Array{Dictionary{}, "x"}}},
         "actionsArray has something that is no record"},
        {{{"excludeFiltersArray",
           Array{Dictionary{{"Name", "a"}, {"IP", "nowhere"}, {"Mask", "32"}}}}},
         "The exclude filter \"a\" can never match: \"nowhere\" is not an address"},
        {{{"actionsArray",
           Array{Dictionary{{"Name", "a"}, {"threshold", Dictionary{{"Matches", 5}}}}}}},
         "The threshold of the action \"a\" is ignored: \"Minutes\" is no whole number from 1 to "
         "1440"},
    };
    for (const Case &c : cases) {
        EXPECT_THAT(settingsProblems(c.settings), ElementsAre(c.problem));
    }
}

}  // namespace
}  // namespace quorbel
