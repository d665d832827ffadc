#include "Fuzz.h"
#include "core/EventList.h"
#include "core/EventMatcher.h"
#include "core/EventReader.h"
#include "core/SavedFilter.h"

#include <string>
#include <vector>

namespace quorbel {

namespace {

void insert(EventList &list, std::string_view lines) {
    for (FuzzInput rest(lines); !rest.isEmpty();) {
        FuzzInput line(rest.line());
        const std::string_view date = line.bytes(line.rest().find(','));
        line.bytes(1);
        const std::string_view priority = line.bytes(line.rest().find(','));
        line.bytes(1);
        const std::string_view host = line.bytes(line.rest().find(','));
        line.bytes(1);
        list.insertRaw({date, priority, host, line.rest(), {}});
    }
}

/// Looked at together and one by one, the same events match.
void requireSameMatches(EventList &list, const EventQuery &query) {
    EventMatcher matcher(list, query);
    require(matcher.error().empty(), "what a file holds compiles");
    EventMatcher alone(list, query);
    const EventReader reader(list);
    EventMatcher::Positions positions;
    for (std::size_t number = 0; number < reader.chunkCount(); ++number) {
        EventChunk &chunk = reader.chunk(number);
        std::vector<EventMatch> matches;
        matcher.matchAll(chunk, 0, chunk.size(), positions, matches);
        EventMatcher::Positions expected;
        for (std::uint32_t at = 0; at < chunk.size(); ++at) {
            if (alone.matches(chunk, at)) {
                expected.push_back(at);
            }
        }
        require(positions == expected, "the same events match");
        require(matches.size() == expected.size(), "and as many");
        require(expected.empty() || matcher.mayBeIn(chunk),
                "where they may be, they are looked for");
    }
}

}  // namespace

/// Filters that are read are written and read as the same; an input's lines behind an empty one are
/// events that they are asked about.
void tryInput(std::string_view input) {
    const std::size_t gap = input.find("\n\n");
    const std::string_view text = input.substr(0, gap);
    const ReadFilters filters = readFilters(text);
    if (!filters.isGood()) {
        require(filters.filters.empty() && filters.line > 0, "what is wrong has its line");
        return;
    }
    const std::string written = writeFilters(filters.filters);
    const ReadFilters again = readFilters(written);
    require(again.isGood() && again.filters == filters.filters, "written and read as the same");
    EventList list;
    insert(list, gap == std::string_view::npos ? "" : input.substr(gap + 2));
    for (const SavedFilter &filter : filters.filters) {
        requireSameMatches(list, filter.query);
    }
}

}  // namespace quorbel
