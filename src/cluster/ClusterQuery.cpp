#include "cluster/ClusterQuery.h"

#include "common/LegibleText.h"
#include "platform/Number.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

namespace quorbel {

namespace {

/// Many times what the longest row has.
constexpr std::size_t kMostRowBytes = std::size_t{1} << 20U;
constexpr std::int64_t kPastAll = std::int64_t{std::numeric_limits<std::uint32_t>::max()} + 1;

std::string literally(std::string_view text) {
    std::string expression;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80U && std::isalnum(code) == 0) {
            expression += '\\';
        }
        expression += character;
    }
    return expression;
}

/// The text as an expression (RE2) that has a match where it is. Old servers look for what stands
/// outside of groups to the letter, whatever flags are in force there.
std::string expressionFor(const ClusterFilter::Text &text) {
    return (text.isCaseSensitive ? "(?:" : "(?i:") + literally(text.text) + ')';
}

/// What is no UTF-8 counts as a field that is not there, and so do those behind it: a server cannot
/// tell, but what is of ASCII is not meant.
std::string isAscii(std::string_view column) {
    return "match(" + std::string(column) + R"(, '(?:\\A[\\x00-\\x7F]*\\z)'))";
}

std::string conditionFor(const ClusterFilter::Text &text) {
    const std::string expression = sqlText(expressionFor(text));
    const std::string isThere = "(match(message, " + expression + ") OR match(host, " + expression +
                                ") OR match(priority, " + expression + "))";
    return text.isNegated ? "NOT (" + isThere + " AND " + isAscii("message") + " AND " +
                                isAscii("host") + " AND " + isAscii("priority") + ")"
                          : isThere;
}

std::string conditionFor(const std::bitset<kSeverityClassCount> &classes) {
    std::string names;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        if (classes[i]) {
            names += names.empty() ? "" : " OR ";
            names += i == kUnknownClass
                         ? "severity = " + std::to_string(kUnknownClass) + " OR NOT " +
                               isAscii("priority")
                         : "position(priority, " + sqlText(kSeverityClasses.at(i).name) + ") > 0";
        }
    }
    return '(' + names + ')';
}

/// The numbers of 8 bits of which the first `bits` are those of `first`, which ends in zeros.
std::string octetsFrom(unsigned first, unsigned bits) {
    constexpr unsigned kBits = 8;
    if (bits == 0) {
        return "(?:25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])";
    }
    std::string octets = "(?:" + std::to_string(first);
    for (unsigned other = 1; other < 1U << (kBits - bits); ++other) {
        octets += '|' + std::to_string(first + other);
    }
    return octets + ')';
}

/// An address of IPv4 is written in one way only. New servers have a function for its number that
/// ends the question at a name.
std::string isInNetwork(const ClusterFilter::Host &network) {
    constexpr unsigned kOctetBits = 8;
    std::string expression;
    std::string_view rest = network.text;
    for (unsigned bits = network.bits; !rest.empty(); bits -= std::min(bits, kOctetBits)) {
        const std::string_view octet = rest.substr(0, rest.find('.'));
        rest.remove_prefix(std::min(octet.size() + 1, rest.size()));
        expression += expression.empty() ? "" : "\\.";
        expression +=
            octetsFrom(readNumber<unsigned>(octet).value_or(0), std::min(bits, kOctetBits));
    }
    return "match(host, " + sqlText("(?:\\A" + expression + "\\z)") + ')';
}

/// Holds for each host that is meant, and for others perhaps.
std::string mayBe(const ClusterFilter::Host &host) {
    using Kind = ClusterFilter::Host::Kind;
    constexpr const char *kIsWithColon = "position(host, ':') > 0";
    switch (host.kind) {
        case Kind::kExact:
            return "host = " + sqlText(host.text);
        case Kind::kName:
            return "match(host, " + sqlText("(?i:\\A" + literally(host.text) + "\\z)") + ')';
        case Kind::kV4:
            return std::string(kIsWithColon) + " OR " + isInNetwork(host);
        case Kind::kAddress:
            return kIsWithColon;
    }
    return "1";
}

/// Holds for hosts that are meant only, and not for each of them.
std::string isCertainly(const ClusterFilter::Host &host) {
    using Kind = ClusterFilter::Host::Kind;
    switch (host.kind) {
        case Kind::kExact:
            return "host = " + sqlText(host.text);
        case Kind::kName:
            return "lower(host) = lower(" + sqlText(host.text) + ')';
        case Kind::kV4:
            return isInNetwork(host);
        case Kind::kAddress:
            break;
    }
    return "0";
}

std::string anyOf(const std::vector<ClusterFilter::Host> &hosts,
                  std::string (*condition)(const ClusterFilter::Host &)) {
    std::string any;
    for (const ClusterFilter::Host &host : hosts) {
        any += any.empty() ? "(" : " OR ";
        any += '(' + condition(host) + ')';
    }
    return any + ')';
}

std::string moment(std::int64_t seconds) {
    return std::to_string(std::clamp(seconds, std::int64_t{0}, kPastAll));
}

std::vector<std::string> conditionsOf(const ClusterFilter &filter) {
    std::vector<std::string> conditions;
    if (filter.from) {
        conditions.push_back(*filter.from < kPastAll ? "time >= " + moment(*filter.from) : "0");
    }
    if (filter.until && *filter.until < kPastAll) {
        conditions.push_back("time < " + moment(*filter.until));
    }
    if (filter.leastSeverity) {
        conditions.push_back("severity <= " + std::to_string(*filter.leastSeverity));
    }
    if (filter.classes.any()) {
        conditions.push_back(conditionFor(filter.classes));
    }
    if (!filter.facility.empty()) {
        conditions.push_back("facility = " + sqlText(filter.facility));
    }
    if (!filter.hosts.empty()) {
        conditions.push_back(anyOf(filter.hosts, mayBe));
    }
    if (!filter.otherHosts.empty()) {
        conditions.push_back("NOT (" + anyOf(filter.otherHosts, isCertainly) + " AND " +
                             isAscii("priority") + ")");
    }
    for (const ClusterFilter::Text &text : filter.texts) {
        conditions.push_back(conditionFor(text));
    }
    return conditions;
}

/// Not of the view: old servers would put all rows together first and look at conditions then.
std::string sourceOf(const ClusterPlace &place, const ClusterFilter &filter) {
    std::string source = " FROM " + place.database + '.' + place.table + " FINAL";
    std::string_view joint = " WHERE ";
    for (const std::string &condition : conditionsOf(filter)) {
        source += joint;
        source += condition;
        joint = " AND ";
    }
    return source;
}

/// What the format TabSeparated puts behind a backslash.
char unescaped(char character) {
    constexpr std::string_view kEscaped = "btnfr0";
    constexpr std::string_view kMeant("\b\t\n\f\r\0", 6);
    const std::size_t at = kEscaped.find(character);
    return at == std::string_view::npos ? character : kMeant[at];
}

void appendUnescaped(std::string &out, std::string_view field) {
    for (std::size_t at = 0; at < field.size(); ++at) {
        const bool isEscape = field[at] == '\\' && at + 1 < field.size();
        out += isEscape ? unescaped(field[++at]) : field[at];
    }
}

/// Of a row: a date and three texts. Nothing when the line is none, as the text of an error.
std::optional<std::array<std::string_view, 4>> fieldsOf(std::string_view line) {
    std::array<std::string_view, 4> fields;
    for (std::string_view &field : fields) {
        const std::size_t tab = line.find('\t');
        if ((tab == std::string_view::npos) != (&field == &fields.back())) {
            return std::nullopt;
        }
        field = line.substr(0, tab);
        line.remove_prefix(std::min(field.size() + 1, line.size()));
    }
    return readNumber<std::int64_t>(fields[0]) ? std::optional(fields) : std::nullopt;
}

}  // namespace

std::string sqlText(std::string_view text) {
    std::string sql = "'";
    for (const char character : text) {
        if (character == '\'' || character == '\\') {
            sql += '\\';
        }
        sql += character == '\0' ? std::string("\\0") : std::string(1, character);
    }
    return sql + '\'';
}

std::string selectEvents(const ClusterPlace &place, const ClusterFilter &filter) {
    return "SELECT toUnixTimestamp(time), priority, host, message" + sourceOf(place, filter) +
           " ORDER BY time, collector, number"
           " SETTINGS max_bytes_before_external_sort = 500000000 FORMAT TabSeparated";
}

std::string selectCounts(const ClusterPlace &place, const ClusterFilter &filter) {
    return "SELECT intDiv(toUnixTimestamp(time), 900) * 900 AS quarter, priority, host, count()" +
           sourceOf(place, filter) + " GROUP BY quarter, priority, host FORMAT TabSeparated";
}

bool ClusterAnswer::add(std::string_view bytes) {
    for (std::size_t end = bytes.find('\n'); end != std::string_view::npos;
         end = bytes.find('\n')) {
        m_begun += bytes.substr(0, end);
        const bool goesOn = addLine(m_begun);
        m_begun.clear();
        bytes.remove_prefix(end + 1);
        if (!goesOn) {
            return false;
        }
    }
    m_begun += bytes;
    if (m_begun.size() > kMostRowBytes) {
        m_problem = "a row without an end";
        return false;
    }
    return true;
}

bool ClusterAnswer::addLine(std::string_view line) {
    const auto fields = fieldsOf(line);
    if (!fields) {
        m_problem = line.empty() ? "an empty row" : legible(line, kMostToldBytes);
        return false;
    }
    std::array<std::size_t, 4> ends{};
    m_row.clear();
    for (std::size_t i = 0; i < ends.size(); ++i) {
        appendUnescaped(m_row, fields->at(i));
        ends.at(i) = m_row.size();
    }
    const std::string_view row = m_row;
    LogLine event;
    event.date = row.substr(0, ends[0]);
    event.priority = row.substr(ends[0], ends[1] - ends[0]);
    event.host = row.substr(ends[1], ends[2] - ends[1]);
    event.message = row.substr(ends[2]);
    return m_onEvent(event);
}

std::string ClusterAnswer::problem() const {
    return !m_problem.empty() ? m_problem : m_begun.empty() ? "" : "the answer has no end";
}

}  // namespace quorbel
