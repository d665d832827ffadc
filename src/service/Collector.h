#pragma once

#include "service/Counters.h"
#include "service/bus/NotificationQueue.h"
#include "service/message/MessageParser.h"
#include "service/message/RecordWriter.h"
#include "service/store/LogStore.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// The way of a message through the service: parsed, written as a record, stored, notified.
///
/// The inputs read in turns: beginTurn(), any number of receive(), endTurn(). Everything received
/// in one turn bears the same time and reaches the log file with one write. Loop thread only.
class Collector {
public:
    /// All must outlive the object.
    Collector(LogStore &store, NotificationQueue &notifications, Counters &counters)
        : m_store(store), m_notifications(notifications), m_counters(counters) {}

    void beginTurn();
    /// Takes one message and the text of its sender's address. `cut` says that the input could not
    /// keep all of it.
    void receive(std::string_view message, std::string_view host, bool cut = false);
    void endTurn();

private:
    LogStore &m_store;
    NotificationQueue &m_notifications;
    Counters &m_counters;
    MessageParser m_parser;
    RecordWriter m_writer;

    std::int64_t m_seconds = 0;
    std::string m_lines;
    bool m_urgent = false;
};

}  // namespace quorbel
