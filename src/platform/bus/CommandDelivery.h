#pragma once

#include "platform/Value.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/SdBus.h"

#include <poll.h>

#include <chrono>
#include <optional>
#include <string>

namespace quorbel::bus {

/// One command on its way to the service, over a connection of its own. It never waits: its owner
/// polls input() until nextTime() and then calls process(). For use on one thread.
class CommandDelivery {
public:
    /// How long connecting and sending may take, how long the next command waits for this one's
    /// reply, and how long the reply is awaited at all.
    static constexpr std::chrono::seconds kSendLimit{5};
    static constexpr std::chrono::seconds kOrderLimit{1};
    static constexpr std::chrono::minutes kReplyLimit{5};

    /// Begins to connect. `onReply` outlives the delivery and is called from within process().
    CommandDelivery(Dictionary command, const CommandSender::ReplyHandler &onReply);
    CommandDelivery(const CommandDelivery &) = delete;
    CommandDelivery &operator=(const CommandDelivery &) = delete;
    ~CommandDelivery() = default;

    void process();

    /// Answered, failed or given up.
    [[nodiscard]] bool isFinished() const { return m_state == State::kFinished; }
    /// Whether a command sent now could overtake this one.
    [[nodiscard]] bool holdsUpNext() const;

    [[nodiscard]] pollfd input() const;
    [[nodiscard]] Clock::time_point nextTime() const;

private:
    enum class State { kConnecting, kSending, kAwaitingReply, kFinished };

    static int onMessage(sd_bus_message *reply, void *self, sd_bus_error *error);
    bool call();
    void finish();

    Value m_command;
    const CommandSender::ReplyHandler &m_onReply;
    State m_state = State::kConnecting;
    Clock::time_point m_deadline;  // of connecting and sending, then of holding up the next command
    BusPointer m_bus;
};

}  // namespace quorbel::bus
