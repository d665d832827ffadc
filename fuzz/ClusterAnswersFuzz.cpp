#include "Fuzz.h"
#include "cluster/ClusterQuery.h"
#include "cluster/ClusterRows.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace quorbel {

namespace {

using Events = std::vector<std::array<std::string, 4>>;

struct Answer {
    Events events;
    std::string problem;

    bool operator==(const Answer &) const = default;
};

/// Takes an answer in pieces of that many bytes.
Answer taken(std::string_view bytes, std::size_t pieceSize) {
    Answer answer;
    ClusterAnswer reader([&answer](const LogLine &event) {
        answer.events.push_back({std::string(event.date), std::string(event.priority),
                                 std::string(event.host), std::string(event.message)});
        return true;
    });
    while (!bytes.empty() && reader.add(bytes.substr(0, pieceSize))) {
        bytes.remove_prefix(std::min(pieceSize, bytes.size()));
    }
    answer.problem = reader.problem();
    return answer;
}

}  // namespace

/// An answer means the same in whatever pieces it comes; what is wrong with it is one line. What
/// was read of it can be a row.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const std::size_t pieceSize = 1 + choices.byte();
    const std::string_view bytes = choices.rest();
    const Answer whole = taken(bytes, bytes.size() + 1);
    require(taken(bytes, pieceSize) == whole, "pieces make no difference");
    require(whole.problem.find('\n') == std::string::npos && isUtf8(whole.problem),
            "a problem is one line");
    ClusterRows rows("c");
    for (const auto &[date, priority, host, message] : whole.events) {
        const std::size_t before = rows.bytes().size();
        rows.add(1, {date, priority, host, message});
        require(rows.bytes().size() >= before + host.size() + message.size(), "texts go whole");
        require(sqlText(message).size() >= message.size() + 2, "texts are quoted");
    }
    require(rows.count() == whole.events.size(), "each event is a row");
}

}  // namespace quorbel
