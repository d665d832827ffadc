#include "service/base/Counters.h"

#include <string_view>
#include <utility>

namespace quorbel {

std::string describe(const Counters &counters) {
    const std::pair<std::string_view, std::uint64_t> parts[] = {
        {"Received", counters.received},
        {", malformed", counters.malformed},
        {", stored", counters.stored},
        {", not stored", counters.notStored},
        {", dropped", counters.dropped},
        {", notifications dropped", counters.notificationsDropped},
        {", connections closed", counters.connectionsClosed},
        {", closed unread", counters.closedUnread},
        {", stray texts", counters.strayTexts},
        {", bytes skipped", counters.bytesSkipped},
        {", TLS refused", counters.tlsRefused},
        {", filtered", counters.filtered},
        {", removed", counters.removed},
        {", names looked up", counters.namesLookedUp},
        {", names found", counters.namesFound},
        {", names not looked up", counters.namesNotLookedUp},
        {", events set", counters.eventsSet},
        {", actions held back", counters.heldBack},
        {", commands run", counters.commandsRun},
        {", commands not run", counters.commandsNotRun},
        {", e-mails sent", counters.mailsSent},
        {", e-mails dropped", counters.mailsDropped},
        {", journal lines dropped", counters.journalDropped},
        {", perhaps not on disk", counters.unsynced},
    };
    std::string text;
    for (const auto &[what, count] : parts) {
        text += what;
        text += ' ';
        text += std::to_string(count);
    }
    return text;
}

}  // namespace quorbel
