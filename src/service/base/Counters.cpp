#include "service/base/Counters.h"

#include <cctype>

namespace quorbel {

std::vector<std::pair<std::string_view, std::uint64_t>> named(const Counters &counters) {
    return {
        {"received", counters.received},
        {"malformed", counters.malformed},
        {"stored", counters.stored},
        {"not stored", counters.notStored},
        {"dropped", counters.dropped},
        {"notifications dropped", counters.notificationsDropped},
        {"connections closed", counters.connectionsClosed},
        {"closed unread", counters.closedUnread},
        {"stray texts", counters.strayTexts},
        {"bytes skipped", counters.bytesSkipped},
        {"TLS refused", counters.tlsRefused},
        {"filtered", counters.filtered},
        {"relayed", counters.relayed},
        {"removed", counters.removed},
        {"names looked up", counters.namesLookedUp},
        {"names found", counters.namesFound},
        {"names not looked up", counters.namesNotLookedUp},
        {"events set", counters.eventsSet},
        {"actions held back", counters.heldBack},
        {"matches below threshold", counters.belowThreshold},
        {"threshold hosts forgotten", counters.hostsForgotten},
        {"commands run", counters.commandsRun},
        {"commands not run", counters.commandsNotRun},
        {"e-mails sent", counters.mailsSent},
        {"e-mails dropped", counters.mailsDropped},
        {"events sent on", counters.sentOn},
        {"events removed unsent", counters.removedUnsent},
        {"journal lines dropped", counters.journalDropped},
        {"perhaps not on disk", counters.unsynced},
    };
}

std::string describe(const Counters &counters) {
    std::string text;
    for (const auto &[what, count] : named(counters)) {
        text += text.empty() ? "" : ", ";
        text += what;
        text += ' ';
        text += std::to_string(count);
    }
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text;
}

}  // namespace quorbel
