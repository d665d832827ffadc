#pragma once

#include "platform/LineCommand.h"
#include "platform/Value.h"
#include "platform/bus/CommandSender.h"
#include "platform/bus/SdBus.h"

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>

namespace quorbel::bus {

/// A command with more bytes than this travels as a file.
inline constexpr std::size_t kMessageLimit = 1024UL * 1024UL;

/// One command on its way to the service, over a connection of its own. It never waits: its owner
/// polls input() until nextTime() and then calls process(). For use on one thread.
class CommandDelivery {
public:
    /// How long connecting and sending may take each, how long the next command waits for the bus
    /// to have routed this one, and how long the reply is awaited.
    static constexpr std::chrono::seconds kSendLimit{5};
    static constexpr std::chrono::seconds kOrderLimit{5};
    static constexpr std::chrono::minutes kReplyLimit{5};

    /// A dictionary, or lines that are too many for a message.
    using Command = std::variant<Value, LineCommand>;

    /// Begins to connect. `onReply` outlives the delivery and is called from within process();
    /// `onAnswer`, which may be empty, with the reply there or with nothing when the delivery ends.
    CommandDelivery(Command command, const CommandSender::ReplyHandler &onReply,
                    CommandSender::AnswerHandler onAnswer = {});
    CommandDelivery(const CommandDelivery &) = delete;
    CommandDelivery &operator=(const CommandDelivery &) = delete;
    ~CommandDelivery();

    void process();

    /// Answered, failed or given up.
    [[nodiscard]] bool isFinished() const { return m_state == State::kFinished; }
    /// Whether a command sent now could overtake this one: until the bus has handed it on to the
    /// service's queue, however long the service then takes.
    [[nodiscard]] bool holdsUpNext() const;
    /// Whether the bus keeps the command until the service has started; it then forgets those of
    /// connections that were closed.
    [[nodiscard]] bool awaitsStart() const { return m_awaitsStart && !isFinished(); }

    [[nodiscard]] pollfd input() const;
    [[nodiscard]] Clock::time_point nextTime() const;

private:
    enum class State { kConnecting, kSending, kRouting, kAwaitingReply, kFinished };

    static int onMessage(sd_bus_message *reply, void *self, sd_bus_error *error);
    static int onRouted(sd_bus_message *reply, void *self, sd_bus_error *error);
    void advance();
    bool call();
    bool askWhetherRouted();
    void enter(State state, std::chrono::seconds limit);
    void finish();

    Command m_command;
    const CommandSender::ReplyHandler &m_onReply;
    CommandSender::AnswerHandler m_onAnswer;  // empty once it was called
    State m_state = State::kConnecting;
    bool m_awaitsStart = false;
    Clock::time_point m_deadline;  // of every state up to kRouting
    BusPointer m_bus;
};

}  // namespace quorbel::bus
