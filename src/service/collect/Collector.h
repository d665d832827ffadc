#pragma once

#include "common/AddressNetwork.h"
#include "common/IpAddress.h"
#include "platform/Value.h"
#include "service/actions/Actions.h"
#include "service/base/Counters.h"
#include "service/base/Refusals.h"
#include "service/bus/NotificationQueue.h"
#include "service/hosts/HostNames.h"
#include "service/message/EventFilter.h"
#include "service/message/MessageParser.h"
#include "service/message/RecordWriter.h"
#include "service/store/LogStore.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// The way of a message through the service: parsed, written as a record, filtered, stored,
/// notified; what actions want is done on the way.
///
/// The inputs read in turns: beginTurn(), any number of receive(), endTurn(). Everything received
/// in one turn bears the same time and reaches the log file with one write, or a write for each
/// megabyte. Loop thread only.
class Collector {
public:
    /// All must outlive the object.
    Collector(LogStore &store, NotificationQueue &notifications, HostNames &names, Actions &actions,
              Counters &counters)
        : m_store(store),
          m_notifications(notifications),
          m_names(names),
          m_actions(actions),
          m_counters(counters) {}

    /// Takes the filters. Names and actions are configured by their owner.
    void configure(const Dictionary &settings);
    /// Takes the networks of relays: what a message from there names as its host is the event's, as
    /// long as it names one of at most kLongestHost bytes.
    void trust(std::vector<AddressNetwork> relays);

    void beginTurn();
    /// Takes one message. `cut` says that the input could not keep all of it.
    void receive(std::string_view message, const IpAddress &sender, bool cut = false);
    void endTurn();

    /// What was refused, for the inputs to add what they refuse.
    [[nodiscard]] Refusals &refusals() { return m_refusals; }
    [[nodiscard]] const Refusals &refusals() const { return m_refusals; }

private:
    struct Sender {
        IpAddress address;
        std::string shown;  ///< address or name; empty when it is to be looked up
        bool isRelay = false;
    };

    void storeAndTell();
    const Sender &senderOf(const IpAddress &address);
    std::string_view relayedHost(std::string_view hostName);
    [[nodiscard]] bool isFilteredOut(const IpAddress &sender);
    void setEventsOfActions(std::string_view host);

    LogStore &m_store;
    NotificationQueue &m_notifications;
    HostNames &m_names;
    Actions &m_actions;
    Counters &m_counters;
    MessageParser m_parser;
    RecordWriter m_writer;
    FilterSet m_filters;
    FilterSubject m_subject;
    Refusals m_refusals;
    std::vector<AddressNetwork> m_relays;

    std::int64_t m_seconds = 0;
    std::string m_lines;
    bool m_urgent = false;
    std::string m_relayed;  ///< what a relay called the host of the message at hand
    Sender m_sender;        ///< the last one: senders come in bursts
};

}  // namespace quorbel
