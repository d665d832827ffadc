#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// What became of everything that was sent to the service. Loop thread only.
struct Counters {
    std::uint64_t received = 0;   ///< messages that were handed over by the network inputs
    std::uint64_t malformed = 0;  ///< of these: without a usable priority or header, empty, or cut
    std::uint64_t stored = 0;     ///< events in the log files; a long message is several
    std::uint64_t notStored = 0;  ///< events that the log files had no room for
    std::uint64_t dropped = 0;    ///< datagrams that the kernel dropped before they were read
    std::uint64_t notificationsDropped = 0;  ///< stored events that the front-end was not told of
    std::uint64_t connectionsClosed = 0;     ///< idle connections closed in favour of new ones
    std::uint64_t closedUnread = 0;  ///< connections closed before all that had arrived was read
    std::uint64_t strayTexts = 0;    ///< messages that stood between the frames of a stream
    std::uint64_t bytesSkipped = 0;  ///< of messages that were too long, the rest
    std::uint64_t tlsRefused = 0;    ///< TLS connections that were never established
    std::uint64_t filtered = 0;      ///< messages that the filters of the settings kept out
    std::uint64_t relayed = 0;       ///< messages whose host a relay has named
    std::uint64_t removed = 0;       ///< events that were kept for as long as the settings want
    std::uint64_t namesLookedUp = 0;
    std::uint64_t namesFound = 0;
    std::uint64_t namesNotLookedUp = 0;  ///< how often too many look-ups waited for one more
    std::uint64_t eventsSet = 0;         ///< events that actions set
    std::uint64_t heldBack = 0;          ///< what actions did not do because it came too often
    std::uint64_t belowThreshold = 0;  ///< matches at which an action did not act for its threshold
    std::uint64_t hostsForgotten = 0;  ///< hosts that a threshold had no room to go on counting
    std::uint64_t commandsRun = 0;     ///< commands of actions that were started
    std::uint64_t commandsNotRun = 0;  ///< those that were not
    std::uint64_t mailsSent = 0;       ///< e-mails that reached the server for somebody
    std::uint64_t mailsDropped = 0;    ///< e-mails that did not reach it for somebody
    std::uint64_t sentOn = 0;          ///< events that reached the receivers of outputs
    std::uint64_t removedUnsent = 0;   ///< events that went out of the log files before that
    std::uint64_t journalDropped = 0;  ///< lines of the journal that nobody read
    std::uint64_t unsynced = 0;        ///< stored events that may be lost when the machine stops

    bool operator==(const Counters &) const = default;
};

/// Each with what it is called where people read it, in the order of the journal's line.
std::vector<std::pair<std::string_view, std::uint64_t>> named(const Counters &counters);

/// One line for the journal.
std::string describe(const Counters &counters);

}  // namespace quorbel
