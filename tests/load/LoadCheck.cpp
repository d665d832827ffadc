#include "load/LoadCheck.h"

#include "common/LogReader.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "service/message/Priority.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace quorbel::load {

namespace {

constexpr std::size_t kNumberDigits = 10;

/// Whether a text that starts with the plan's mark ends before its message does.
bool isCut(const Plan &plan, std::string_view message, std::string_view number) {
    const std::string_view digits = number.substr(0, kNumberDigits);
    if (!std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; })) {
        return false;
    }
    std::uint64_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const std::string whole = messageText(plan, value);
    return digits.size() < kNumberDigits ||
           (message.size() < whole.size() && whole.starts_with(message));
}

/// Takes one line into account.
void count(Tally &tally, const Plan &plan, std::string_view line, std::uint64_t &last) {
    if (!isWholeLine(line)) {
        ++tally.damaged;
        return;
    }
    const LogLine fields = *splitLogLine(line);
    const std::string mark = "quorbel-load[" + std::to_string(plan.run) + "]: ";
    if (!fields.message.starts_with(mark)) {
        ++(mark.starts_with(fields.message) ? tally.cut : tally.others);
        return;
    }
    if (isCut(plan, fields.message, fields.message.substr(mark.size()))) {
        ++tally.cut;
        return;
    }
    std::uint64_t number = 0;
    const char *digits = fields.message.data() + mark.size();
    std::from_chars(digits, fields.message.data() + fields.message.size(), number);
    const auto priority = Priority::fromValue(plan.priorities[number % plan.priorities.size()]);
    if (number < plan.first || number - plan.first >= plan.count ||
        fields.message != messageText(plan, number) || fields.host != "127.0.0.1" || !priority ||
        fields.priority != priority->text()) {
        ++tally.altered;
        return;
    }
    tally.disordered += number < last ? 1 : 0;
    last = number;
    if (tally.has[number - plan.first]) {
        ++tally.repeated;
        return;
    }
    tally.has[number - plan.first] = true;
    ++tally.stored;
}

}  // namespace

bool isWholeLine(std::string_view line) {
    if (line.size() > kLogPieceSize || !line.ends_with("\r\n")) {
        return false;
    }
    const auto fields = splitLogLine(line);
    if (!fields || fields->date.empty() ||
        !std::ranges::all_of(fields->date, [](char c) { return c >= '0' && c <= '9'; })) {
        return false;
    }
    // A reader skips empty fields; here there may be none.
    const std::string again = std::string(fields->date) + ',' + std::string(fields->priority) +
                              ',' + std::string(fields->host) + ',' + std::string(fields->message) +
                              "\r\n";
    return again == line && isUtf8(line);
}

Tally tally(const std::filesystem::path &folder, const Plan &plan) {
    Tally tally;
    tally.has.resize(plan.count);
    std::uint64_t last = 0;
    for (const std::string &name : listFolder(folder)) {
        if (!hasExtension(name, "log")) {
            continue;
        }
        const std::string bytes = readFile(folder / name).value_or("");
        std::string_view rest = bytes;
        while (!rest.empty()) {
            const std::size_t length = std::min(rest.find('\n'), rest.size() - 1) + 1;
            count(tally, plan, rest.substr(0, length), last);
            rest.remove_prefix(length);
        }
    }
    return tally;
}

std::string describe(const Tally &tally) {
    const std::pair<const char *, std::uint64_t> parts[] = {
        {"stored ", tally.stored},
        {", repeated ", tally.repeated},
        {", disordered ", tally.disordered},
        {", altered ", tally.altered},
        {", cut ", tally.cut},
        {", others ", tally.others},
        {", damaged ", tally.damaged},
    };
    std::string text;
    for (const auto &[what, number] : parts) {
        text += what + std::to_string(number);
    }
    return text;
}

std::uint64_t counter(std::string_view journal, std::string_view name) {
    const std::size_t begin = journal.rfind(">Received ");
    if (begin == std::string_view::npos) {
        return 0;
    }
    const std::string_view line = journal.substr(begin + 1, journal.find('\n', begin) - begin - 1);
    const std::string wanted = ", " + std::string(name) + ' ';
    const std::string text = ", " + std::string(line);
    const std::size_t at = text.find(wanted);
    return at == std::string::npos ? 0
                                   : std::strtoull(text.c_str() + at + wanted.size(), nullptr, 10);
}

std::uint64_t LineCounter::count() {
    if (!std::filesystem::is_directory(m_path)) {
        readNew(m_path);
        return m_count;
    }
    // At midnight, another file follows: what comes before it is complete by then.
    for (const std::string &name : listFolder(m_path)) {
        if (hasExtension(name, "log") && m_path / name >= m_file) {
            readNew(m_path / name);
        }
    }
    return m_count;
}

void LineCounter::readNew(const std::filesystem::path &file) {
    if (file != m_file) {
        m_file = file;
        m_offset = 0;
    }
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(m_offset));
    std::string block(std::size_t{1} << 20U, '\0');
    while (stream) {
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        const auto length = static_cast<std::size_t>(stream.gcount());
        m_count += static_cast<std::uint64_t>(
            std::ranges::count(std::string_view(block).substr(0, length), '\n'));
        m_offset += length;
    }
}

}  // namespace quorbel::load
