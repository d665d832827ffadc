#include "service/output/SyslogMessage.h"

#include "platform/Number.h"
#include "service/message/Priority.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace quorbel {

namespace {

constexpr std::size_t kLongestHost = 255;
constexpr std::size_t kLongestName = 48;
constexpr std::size_t kLongestId = 128;

/// What a field of the header may hold (PRINTUSASCII).
bool isFieldCharacter(char c) {
    return c > ' ' && c < '\x7F';
}

/// What a program's name may hold, so that a text before a colon is taken for one.
bool isNameCharacter(char c) {
    return isFieldCharacter(c) && c != ':' && c != '[' && c != ']';
}

bool isField(std::string_view text, std::size_t most, bool (*isFit)(char)) {
    return !text.empty() && text.size() <= most && std::ranges::all_of(text, isFit);
}

struct Parts {
    std::string_view name = "-";
    std::string_view id = "-";
    std::string_view text;
};

Parts splitMessage(std::string_view message) {
    const std::size_t colon = message.find(": ");
    const std::string_view tag = message.substr(0, colon == std::string_view::npos ? 0 : colon);
    const std::size_t bracket = tag.find('[');
    Parts parts{tag.substr(0, bracket), "-",
                message.substr(std::min(tag.size() + 2, message.size()))};
    // A name that is nil would be left out by whoever reads the message.
    bool isFit = isField(parts.name, kLongestName, isNameCharacter) && parts.name != "-" &&
                 !parts.text.empty();
    if (isFit && bracket != std::string_view::npos) {
        parts.id = tag.substr(bracket + 1, tag.size() - bracket - 2);
        isFit =
            tag.back() == ']' && isField(parts.id, kLongestId, isNameCharacter) && parts.id != "-";
    }
    return isFit ? parts : Parts{"-", "-", message};
}

}  // namespace

std::string_view SyslogMessage::headOf(std::string_view priority) {
    if (priority == m_priority && !m_head.empty()) {
        return m_head;
    }
    if (m_heads.empty()) {
        for (unsigned value = 0; const auto one = Priority::fromValue(value); ++value) {
            m_heads[std::string(one->text())] = "<" + std::to_string(value) + ">1 ";
        }
    }
    m_priority = priority;
    const auto head = m_heads.find(m_priority);
    // Somebody else's line.
    m_head = m_heads.at(std::string(kAssumedPriority.text()));
    if (head != m_heads.end()) {
        m_head = head->second;
    }
    return m_head;
}

std::string_view SyslogMessage::timeOf(std::string_view date) {
    if (date == m_date && !m_time.empty()) {
        return m_time;
    }
    constexpr std::int64_t kLatest = 253'402'300'799;  // the end of the year 9999
    m_date = date;
    const auto seconds = readNumber<std::int64_t>(date);
    m_time = "-";
    if (seconds && *seconds >= 0 && *seconds <= kLatest) {
        const auto time = static_cast<std::time_t>(*seconds);
        std::tm utc{};
        gmtime_r(&time, &utc);
        std::array<char, 32> text{};
        m_time.assign(text.data(),
                      std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc));
    }
    return m_time;
}

void SyslogMessage::append(const LogLine &line, std::string &text) {
    text += headOf(line.priority);
    text += timeOf(line.date);
    text += ' ';
    const std::string_view host = line.host.substr(0, kLongestHost);
    const std::size_t hostBegin = text.size();
    text += host;
    std::replace_if(
        text.begin() + static_cast<std::ptrdiff_t>(hostBegin), text.end(),
        [](char c) { return !isFieldCharacter(c); }, '_');
    const Parts parts = splitMessage(line.message);
    for (const std::string_view part :
         {parts.name, parts.id, std::string_view("- -"), parts.text}) {
        text += ' ';
        text += part;
    }
}

void SyslogMessage::appendCounted(const LogLine &line, std::string &text) {
    m_message.clear();
    append(line, m_message);
    text += std::to_string(m_message.size());
    text += ' ';
    text += m_message;
}

}  // namespace quorbel
