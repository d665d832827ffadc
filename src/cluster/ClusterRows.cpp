#include "cluster/ClusterRows.h"

#include "common/Severity.h"
#include "platform/Number.h"

#include <algorithm>
#include <limits>

namespace quorbel {

namespace {

template <typename Number>
void appendNumber(std::string &out, Number number) {
    for (std::size_t i = 0; i < sizeof number; ++i) {
        out += static_cast<char>((std::uint64_t{number} >> (8 * i)) & 0xFFU);
    }
}

void appendText(std::string &out, std::string_view text) {
    std::size_t length = text.size();
    for (; length >= 0x80U; length >>= 7U) {
        out += static_cast<char>((length & 0x7FU) | 0x80U);
    }
    out += static_cast<char>(length);
    out += text;
}

std::uint32_t timeOf(std::string_view date) {
    constexpr std::int64_t kLast = std::numeric_limits<std::uint32_t>::max();
    const std::int64_t seconds = readNumber<std::int64_t>(date).value_or(0);
    return static_cast<std::uint32_t>(std::clamp(seconds, std::int64_t{0}, kLast));
}

}  // namespace

ClusterRows::ClusterRows(std::string_view collector) {
    appendText(m_collector, collector);
}

void ClusterRows::add(std::uint64_t number, const LogLine &event) {
    appendNumber(m_bytes, timeOf(event.date));
    appendNumber(m_bytes, classifyPriority(event.priority).shown);
    appendText(m_bytes, event.priority.substr(0, event.priority.find('.')));
    appendText(m_bytes, event.priority);
    appendText(m_bytes, event.host);
    appendText(m_bytes, event.message);
    m_bytes += m_collector;
    appendNumber(m_bytes, number);
    ++m_count;
}

void ClusterRows::clear() {
    m_bytes.clear();
    m_count = 0;
}

}  // namespace quorbel
