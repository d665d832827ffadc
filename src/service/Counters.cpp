#include "service/Counters.h"

namespace quorbel {

std::string describe(const Counters &counters) {
    return "Received " + std::to_string(counters.received) + ", malformed " +
           std::to_string(counters.malformed) + ", stored " + std::to_string(counters.stored) +
           ", not stored " + std::to_string(counters.notStored) + ", dropped " +
           std::to_string(counters.dropped) + ", notifications dropped " +
           std::to_string(counters.notificationsDropped) + ", connections closed " +
           std::to_string(counters.connectionsClosed);
}

}  // namespace quorbel
