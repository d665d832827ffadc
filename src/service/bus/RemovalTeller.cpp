#include "service/bus/RemovalTeller.h"

#include <string>
#include <string_view>

namespace quorbel {

bool RemovalTeller::canTell(Bus bus) const {
    return m_feed.isOffered() &&
           (bus == Bus::kMissing || (bus == Bus::kThere && m_notifications.empty()));
}

void RemovalTeller::tell(Bus bus) {
    if (!canTell(bus)) {
        return;
    }
    const std::string lines = m_feed.take().value_or("");
    std::string_view rest = lines;
    while (!rest.empty()) {
        const std::size_t length = rest.find('\n') + 1;
        if (bus == Bus::kMissing) {
            ++m_untold;
        } else {
            m_notifications.push(NotificationType::kRemove, rest.substr(0, length));
        }
        rest.remove_prefix(length);
    }
}

}  // namespace quorbel
