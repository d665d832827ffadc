#include "Fuzz.h"
#include "platform/DateFormat.h"
#include "platform/DescriptorIo.h"
#include "platform/Text.h"
#include "reports/ReportEngine.h"
#include "support/SlowLogReader.h"

#include <sys/mman.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace quorbel {

namespace {

constexpr std::string_view kFormats[] = {"yyyy-MM-dd HH:mm:ss", "d/M/yy hh:mm AM/PM", "HH:mm",
                                         "dd.MM.yyyy"};

/// Bytes that are no UTF-8 as U+FFFD each.
std::string asText(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        std::size_t length = 1;
        while (length < std::min<std::size_t>(bytes.size(), 4) &&
               !isUtf8(bytes.substr(0, length))) {
            ++length;
        }
        const bool isCharacter = isUtf8(bytes.substr(0, length));
        text += isCharacter ? bytes.substr(0, length) : "\xEF\xBF\xBD";
        bytes.remove_prefix(isCharacter ? length : 1);
    }
    return text;
}

/// How many events each value has, counted by the rules of the log files' format.
std::map<std::string, std::size_t> slowGroups(ReportKind kind, std::string_view bytes) {
    constexpr std::size_t kFieldOf[] = {2, 3, 1, 0};
    std::map<std::string, std::size_t> groups;
    for (const auto &line : testing::readSlowly(std::string(bytes))) {
        ++groups[asText(line[kFieldOf[static_cast<std::size_t>(kind)]])];
    }
    return groups;
}

}  // namespace

/// Each event is in one group, that of its value; what is shown of it is text.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const auto kind = static_cast<ReportKind>(choices.byte() % 4);
    const std::string_view format = kFormats[choices.byte() % 4];
    const std::string_view bytes = choices.rest();
    const UniqueFd memory(::memfd_create("log", MFD_CLOEXEC));
    require(writeFully(memory.get(), bytes) == bytes.size(), "there is memory");
    ReportEngine report(kind, format);
    require(report.read({"/proc/self/fd/" + std::to_string(memory.get())}), "it is read");
    std::map<std::string, std::size_t> groups;
    std::size_t events = 0;
    for (std::size_t group = 0; group < report.groupCount(); ++group) {
        const std::string text(report.groupText(group));
        require(isUtf8(text), "a group is called by text");
        groups[text] += report.detailCount(group);
        events += report.detailCount(group);
        for (std::size_t detail = 0; detail < report.detailCount(group); ++detail) {
            for (const ReportField field : reportColumns(kind)) {
                require(isUtf8(report.detailText(group, detail, field)), "details are text");
            }
        }
    }
    require(events == report.eventCount(), "each event is in one group");
    const auto expected = slowGroups(kind, bytes);
    std::size_t expectedEvents = 0;
    for (const auto &[value, count] : expected) {
        expectedEvents += count;
    }
    require(events == expectedEvents, "as many events as the format's rules say");
    require(kind == ReportKind::kDate || groups == expected, "groups are those of the values");
}

}  // namespace quorbel
