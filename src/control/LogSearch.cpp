#include "control/LogSearch.h"

#include "core/LogFields.h"
#include "core/SavedFilterText.h"

#include <utility>

namespace quorbel {

namespace {

/// Chunks of the list are full then.
constexpr std::size_t kMostHeld = std::size_t{16} * 4096;

}  // namespace

LogSearch::LogSearch(AppState state, const EventQuery &filter, Handler onFound)
    : m_state(std::move(state)), m_matcher(m_list, filter), m_onFound(std::move(onFound)) {}

bool LogSearch::add(const LogLine &line) {
    const auto length = [](std::string_view field) {
        return static_cast<std::uint16_t>(field.size());
    };
    m_held.push_back({m_bytes.size(), length(line.date), length(line.priority), length(line.host),
                      length(line.message)});
    for (const std::string_view field : {line.date, line.priority, line.host, line.message}) {
        m_bytes += field;
    }
    return m_held.size() < kMostHeld ? !m_hasEnded : finish();
}

bool LogSearch::finish() {
    if (!m_hasEnded && !m_held.empty()) {
        list();
        match();
        m_hasEnded = !tell();
    }
    clear();
    return !m_hasEnded;
}

LogLine LogSearch::lineOf(const Held &held) const {
    std::string_view rest = std::string_view(m_bytes).substr(held.begin);
    const auto take = [&rest](std::size_t length) {
        const std::string_view field = rest.substr(0, length);
        rest.remove_prefix(length);
        return field;
    };
    LogLine line;
    line.date = take(held.date);
    line.priority = take(held.priority);
    line.host = take(held.host);
    line.message = take(held.message);
    return line;
}

/// As the window does when it starts.
void LogSearch::list() {
    m_list.beginBulkInsert();
    for (const Held &held : m_held) {
        const EventId id = m_list.insertRaw(fieldsOf(lineOf(held)));
        m_first = &held == m_held.data() ? id : m_first;
    }
    m_list.endBulkInsert();
    m_list.show(m_state);
}

void LogSearch::match() {
    m_matches.clear();
    for (std::size_t i = 0; i < m_reader.chunkCount(); ++i) {
        EventChunk &chunk = m_reader.chunk(i);
        if (m_matcher.mayBeIn(chunk)) {
            m_matcher.matchAll(chunk, 0, chunk.size(), m_positions, m_matches);
        }
    }
}

bool LogSearch::tell() {
    for (const EventMatch match : m_matches) {
        const bool isMeant = m_matcher.filter().meansRating(match.rating());
        if (isMeant && !m_onFound(lineOf(m_held[match.id() - m_first]), match.rating())) {
            return false;
        }
    }
    return true;
}

void LogSearch::clear() {
    m_held.clear();
    m_bytes.clear();
    if (m_list.size() > 0) {
        m_list.removeRows({{0, m_list.size()}});
        m_matcher.forgetTexts();
    }
}

bool mayHoldSpan(const std::filesystem::path &file, const EventQuery &filter) {
    constexpr std::int64_t kDay = 86400;
    const auto day = readMoment(file.stem().string() + "T00:00:00Z");
    return !day || ((!filter.from || *day + 3 * kDay >= *filter.from) &&
                    (!filter.until || *day - 2 * kDay < *filter.until));
}

}  // namespace quorbel
