#include "reports/ReportEngine.h"

#include "platform/Text.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace quorbel {

namespace {

constexpr std::uint64_t kShortLine = 64;  // in bytes
constexpr std::uint64_t kMostReserved = 10'000'000;
constexpr char32_t kReplacement = 0xFFFD;

std::string withReplacements(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const Utf8Character character = firstUtf8Character(bytes);
        appendUtf8(text, character.length == 0 ? kReplacement : character.code);
        bytes.remove_prefix(std::max<std::size_t>(character.length, 1));
    }
    return text;
}

/// Calls `use` with the line as text.
template <typename Use>
void withDecodedFields(const LogLine &line, Use use) {
    // The separators are ASCII, so that what is UTF-8 as a whole is so field by field.
    if (isUtf8({line.date.data(), line.message.end()})) {
        use(line);
        return;
    }
    const std::string priority = withReplacements(line.priority);
    const std::string host = withReplacements(line.host);
    const std::string message = withReplacements(line.message);
    use(LogLine{line.date, priority, host, message});
}

/// The same as floatingPointValue(), which takes longer for what dates usually are.
double secondsOf(std::string_view date) {
    constexpr std::size_t kExactDigits = 15;
    std::int64_t value = 0;
    for (const char digit : date) {
        if (digit < '0' || digit > '9' || date.size() > kExactDigits) {
            return floatingPointValue(date);
        }
        value = value * 10 + (digit - '0');
    }
    return static_cast<double>(value);
}

}  // namespace

const std::array<ReportField, kReportColumns> &reportColumns(ReportKind kind) {
    using enum ReportField;
    static constexpr std::array<std::array<ReportField, kReportColumns>, 4> kColumns = {{
        {kHost, kDate, kPriority, kMessage},
        {kMessage, kDate, kPriority, kHost},
        {kPriority, kDate, kHost, kMessage},
        {kDate, kPriority, kHost, kMessage},
    }};
    return kColumns[static_cast<std::size_t>(kind)];
}

ReportEngine::ReportEngine(std::optional<ReportKind> kind, std::string_view dateFormat)
    : m_kind(kind), m_dateTexts(dateFormat) {}

bool ReportEngine::read(const std::vector<std::filesystem::path> &files,
                        const Progress &onProgress) {
    const std::uint64_t total = totalSize(files);
    std::uint64_t done = 0;
    // Memory that is not needed is never touched, while growing step by step touches it twice.
    const std::uint64_t expected = std::min(total / kShortLine, kMostReserved);
    m_details.reserve(expected);
    m_groupOf.reserve(expected);
    if (m_kind == ReportKind::kDate) {
        m_dates.reserve(expected);
    }
    for (const auto &file : files) {
        LogExtent extent;
        const bool isComplete = LogReader::readFile(
            file,
            [this](const LogLine &line) {
                ++m_accepted;
                withDecodedFields(line, [this](const LogLine &decoded) { add(decoded); });
                return true;
            },
            [&](std::size_t bytes) {
                done += bytes;
                return !onProgress || onProgress(done, total);
            },
            &extent);
        m_lines += extent.pieces;
        if (!isComplete) {
            return false;
        }
    }
    const auto put = [this](std::uint32_t group) { putInGroup(group); };
    m_messages.numberQueued(put);
    m_dates.numberQueued(put);
    sortByGroup();
    return true;
}

void ReportEngine::add(const LogLine &line) {
    if (!m_kind) {
        return;
    }
    Detail detail{.seconds = secondsOf(line.date),
                  .message = 0,
                  .priority = m_priorities.number(line.priority),
                  .host = m_hosts.number(line.host)};
    if (m_kind != ReportKind::kMessage) {
        detail.message = m_store.add(line.message);
    }
    m_details.push_back(detail);
    const auto putLater = [this](std::uint32_t group) { putInGroup(group); };
    switch (*m_kind) {
        case ReportKind::kHost:
            putInGroup(detail.host);
            break;
        case ReportKind::kPriority:
            putInGroup(detail.priority);
            break;
        case ReportKind::kMessage:
            m_messages.numberLater(line.message, putLater);
            break;
        case ReportKind::kDate:
            m_dates.numberLater(detail.seconds, putLater);
            break;
    }
}

void ReportEngine::putInGroup(std::uint32_t group) {
    if (m_kind == ReportKind::kMessage) {
        m_details[m_groupOf.size()].message = m_messages.ref(group);
    }
    m_groupOf.push_back(group);
}

void ReportEngine::sortByGroup() {
    m_priorities.close();
    m_hosts.close();
    m_messages.close();
    m_dates.close();
    const std::size_t groups =
        m_groupOf.empty() ? 0 : std::size_t{*std::ranges::max_element(m_groupOf)} + 1;
    // First each group's size stands behind its place, then where it ends, then where it begins.
    m_starts.assign(groups + 1, 0);
    for (const std::uint32_t group : m_groupOf) {
        ++m_starts[group];
    }
    m_largest = *std::ranges::max_element(m_starts);
    std::inclusive_scan(m_starts.begin(), m_starts.end(), m_starts.begin());
    m_order.resize(m_groupOf.size());
    for (std::size_t detail = m_groupOf.size(); detail-- > 0;) {
        m_order[--m_starts[m_groupOf[detail]]] = static_cast<std::uint32_t>(detail);
    }
    m_groupOf = {};
}

std::string_view ReportEngine::groupText(std::size_t group) const {
    return detailText(group, 0, reportColumns(*m_kind)[0]);
}

std::string_view ReportEngine::detailText(std::size_t group, std::size_t detail,
                                          ReportField field) const {
    const Detail &found = m_details[m_order[m_starts[group] + detail]];
    switch (field) {
        case ReportField::kDate:
            return m_dateTexts.text(found.seconds);
        case ReportField::kPriority:
            return m_priorities.text(found.priority);
        case ReportField::kHost:
            return m_hosts.text(found.host);
        default:
            return m_store.text(found.message);
    }
}

}  // namespace quorbel
