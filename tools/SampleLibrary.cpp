#include "SampleLibrary.h"

#include "SampleWeeks.h"
#include "common/SettingsDocument.h"
#include "common/Severity.h"
#include "platform/KeyedArchive.h"

#include <cmath>
#include <ctime>
#include <numbers>
#include <random>
#include <string>

namespace quorbel {

namespace {

/// Lines of a log file, oldest first.
class Log {
public:
    void add(int secondsAgo, const std::string &priority, const std::string &host,
             const std::string &message) {
        m_lines += std::to_string(m_now - secondsAgo) + ',' + priority + ',' + host + ',' +
                   message + "\r\n";
    }
    [[nodiscard]] const std::string &lines() const { return m_lines; }

private:
    std::int64_t m_now = std::time(nullptr);
    std::string m_lines;
};

void addQuietDay(Log &log) {
    log.add(900, "Cron.Informational", "10.0.0.12",
            "cron[811]: (root) CMD (run-parts /etc/cron.hourly)");
    log.add(610, "Daemon.Informational", "10.0.0.7",
            "dhcpd: DHCPACK on 10.0.3.81 to 00:1b:21:3c:9d:f8 via vlan120");
    log.add(300, "Local7.Debug", "10.0.0.1", "ospfd: neighbor 10.0.0.2 full, dead timer 38 s");
    log.add(42, "Authpriv.Informational", "fs01", "sshd[2817]: session opened for user backup");
}

void addBusyDay(Log &log) {
    addQuietDay(log);
    for (int i = 1; i <= 400; ++i) {
        log.add(1204 - i * 3, "Local7.Notice", "core-sw1",
                "%LINEPROTO-5-UPDOWN: Line protocol on Interface GigabitEthernet0/" +
                    std::to_string(i % 24) + ", changed state to up");
        log.add(
            1200 - i * 3, "Daemon.Warning", "10.0.0.31",
            "ntpd[612]: clock is off by " + std::to_string(i % 90 + 2) + " ms, stepping slowly");
        log.add(1202 - i * 3, "Mail.Informational", "mx2",
                "postfix/smtp[4410]: delivered, relay=10.0.0.25, delay=0." + std::to_string(i));
    }
    log.add(0, "Local0.Error", "fs01", "md/raid1:md0: disk sdb1 failed, array is degraded");
}

void addBadDay(Log &log) {
    addBusyDay(log);
    log.add(0, "Auth.Alert", "gw-west",
            "login: 25 failed logins for user admin from 203.0.113.77 within a minute");
    log.add(0, "Kern.Critical", "db01",
            "EXT4-fs error (device dm-3): ext4_lookup: deleted inode referenced: 1835031");
}

void addLongTexts(Log &log) {
    std::string message;
    for (int i = 0; i < 6; ++i) {
        message += "the quick router answered every question of the slow administrator at length, ";
    }
    log.add(9, "Local3.Warning", "a-host-with-a-very-long-name.building-7.campus.example.org",
            message);
    log.add(8, "Daemon.Notice", "2001:db8:85a3:1234:5678:8a2e:370:7334", message);
    log.add(7, "User.Informational", "10.0.0.5", "مرحبا بالعالم، الخادم يعمل 🚀");
    log.add(6, "User.Error", "10.0.0.5",
            "<b>not</b> markup & \"quoted\", naïve café, Ελληνικά, кириллица");
    log.add(5, "Local7.Debug", "10.0.0.1", "short");
}

/// A minute of 24 hours: busier by day, and with a disk that fails for two hours of the night.
void addMinute(Log &log, int minutesAgo, std::mt19937 &random) {
    const auto upTo = [&random](double most) {
        return static_cast<int>(random() % static_cast<unsigned>(most * 1024)) / 1024;
    };
    const int ago = minutesAgo * 60;
    const double daylight = 1 + std::cos((minutesAgo - 180) * std::numbers::pi / 720);
    for (int i = 0, count = upTo(3 + 2 * daylight); i < count; ++i) {
        log.add(ago - 3 * i, "Mail.Informational", "mx2",
                "postfix/smtp[4410]: delivered, relay=10.0.0.25, delay=0." + std::to_string(ago));
    }
    if (upTo(4) == 0) {
        log.add(ago - 30, "Local7.Notice", "core-sw1",
                "%LINEPROTO-5-UPDOWN: Line protocol on Interface GigabitEthernet0/" +
                    std::to_string(upTo(24)) + ", changed state to up");
    }
    const int intoFailure = 540 - minutesAgo;
    const bool isFailing = intoFailure >= 0 && intoFailure < 120;
    for (int i = 0, count = isFailing ? upTo(4 + intoFailure / 20.0) : 0; i < count; ++i) {
        log.add(ago - 31 - i, "Kern.Error", "fs01",
                "blk_update_request: I/O error, dev sdb1, sector " + std::to_string(random()));
    }
    if (intoFailure == 20 || intoFailure == 75 || intoFailure == 110) {
        log.add(ago - 50, "Kern.Critical", "fs01",
                "md/raid1:md0: disk sdb1 failed, array is degraded");
    }
}

void addFullDays(Log &log, int days) {
    std::mt19937 random{1};  // the same days each time
    for (int minutesAgo = days * 24 * 60; minutesAgo > 0; --minutesAgo) {
        addMinute(log, minutesAgo, random);
    }
    log.add(0, "Auth.Alert", "gw-west",
            "login: 25 failed logins for user admin from 203.0.113.77 within a minute");
}

Dictionary filter(const char *name, const char *address, const char *mask, const char *facility,
                  const char *severity, const char *message) {
    return {{"Name", name}, {"IP", address},        {"Message", message},
            {"Mask", mask}, {"Facility", facility}, {"Severity", severity}};
}

Array actions() {
    Dictionary page = filter("Page the operator", "0.0.0.0", "0", "Any", "Critical", "*");
    page.set("runCommand", Dictionary{{"Command", "/usr/local/bin/page-operator"},
                                      {"Arguments", "--urgent --text \"See the events page\""},
                                      {"Environment", "LANG=C.UTF-8\nPAGER_TEAM=network"}});
    page.set("sendEmail",
             Dictionary{{"Recipients", Array{"noc@example.org", "operator@example.org"}}});
    page.set("setEvent", Dictionary{});
    Dictionary logins = filter("Failed logins", "10.0.0.0", "8", "Auth", "Any", "*failed login*");
    logins.set("runCommand", Dictionary{});
    logins.set("sendEmail", Dictionary{});
    logins.set("setEvent",
               Dictionary{{"Type", "Alert"}, {"Format", "Failed login at $host: $message"}});
    logins.set("threshold", Dictionary{{"Matches", 20}, {"Minutes", 10}, {"PerHost", true}});
    return {page, logins};
}

Dictionary settings() {
    Dictionary document{{"hostsDisplay", false},
                        {"dateFormat", "yyyy-MM-dd HH:mm:ss"},
                        {"popupEvents", 10},
                        {"popupSound", "/usr/share/sounds/alert.aiff"},
                        {"popupDisplayArray", Array{}},
                        {"popupPlayArray", Array{"Emergency", "Alert", "Critical"}}};
    Array labels;
    std::int64_t amount = 90;
    for (const SeverityClass &severity : kSeverityClasses) {
        const std::string part(severity.keyPart);
        document.set("severity" + part, std::int64_t{severity.defaultLevel});
        document.set("removal" + part, amount);
        document.set("removal" + part + "Units", 2);
        amount -= 10;
        labels.emplace_back(std::string(severity.keyPart == "Alerting" ? "Alert" : part));
    }
    document.set("popupDisplayArray", labels);
    document.set("includeFiltersArray", Array{});
    document.set("excludeFiltersArray",
                 Array{filter("Link chatter", "0.0.0.0", "0", "Local7", "Notice", "*LINEPROTO*"),
                       filter("Lab network", "192.168.40.0", "24", "Any", "Debug", "*")});
    document.set("actionsArray", actions());
    document.set("actionsEmailServer", "mail.example.org");
    document.set("actionsEmailPort", 587);
    document.set("actionsEmailTimeout", 2);
    document.set("actionsEmailSender", "quorbel@example.org");
    document.set("actionsEmailUsername", "quorbel");
    document.set("actionsEmailPassword", "correct horse");
    document.set("actionsEmailSecurity", "STARTTLS");
    document.set("actionsFormatSubject", "[$priority] $host: $message");
    document.set("actionsFormatBody",
                 "Date:$date\r\nPriority:$priority\r\nHost:$host\r\nMessage:$message\r\n");
    document.set("textInterval", 15);
    document.set("textLocation", "/Library/Quorbel/export/events.txt");
    document.set("databaseInterval", 60);
    document.set("databaseLocation", "/Library/Quorbel/export/events.db");
    return document;
}

}  // namespace

void writeSample(Sample sample, const testing::TemporaryFolder &library) {
    if (sample == Sample::kEmpty) {
        return;
    }
    if (sample == Sample::kWeeks || sample == Sample::kSilentHosts || sample == Sample::kFirstDay) {
        library.write("2026-01-01.log", sample == Sample::kFirstDay
                                            ? sampleFirstDay()
                                            : sampleWeeks(sample == Sample::kWeeks ? 0 : 6));
        library.write(kSettingsFileName, writeKeyedArchive(settings()));
        return;
    }
    Log log;
    switch (sample) {
        case Sample::kQuiet:
            addQuietDay(log);
            break;
        case Sample::kBusy:
            addBusyDay(log);
            break;
        case Sample::kBad:
            addBadDay(log);
            break;
        case Sample::kDay:
            addFullDays(log, 1);
            break;
        case Sample::kTwoDays:
            addFullDays(log, 2);
            break;
        default:
            addLongTexts(log);
    }
    library.write("2026-01-01.log", log.lines());
    library.write(kSettingsFileName, writeKeyedArchive(settings()));
}

}  // namespace quorbel
