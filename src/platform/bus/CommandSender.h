#pragma once

#include "platform/LineCommand.h"
#include "platform/Value.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quorbel {

/// Hands command dictionaries to the service, each over a connection of its own to the system bus.
///
/// Small commands go through setCommand; those above 1 MiB, and those with a value that has no form
/// on the bus, through setCommandFile as a sealed memfd that holds a keyed archive.
class CommandSender {
public:
    /// Called on the connection's thread with each reply; failures are silent.
    using ReplyHandler = std::function<void(const std::string &reply)>;

    /// Called on that thread with the reply to one command, or with nothing once it is certain that
    /// none will come; at most once, and not later than the sender ends.
    using AnswerHandler = std::function<void(const std::optional<std::string> &reply)>;

    explicit CommandSender(ReplyHandler onReply);
    /// Waits until the service's queue on the bus holds what was handed over. It gives up when
    /// nothing gets there for some seconds; replies are waited for only while the service starts.
    ~CommandSender();
    CommandSender(const CommandSender &) = delete;
    CommandSender &operator=(const CommandSender &) = delete;

    /// Returns at once, whatever the state of the bus and the service. Commands reach the service
    /// in the order in which they were handed over. Call from one thread.
    void send(Dictionary command, AnswerHandler onAnswer = {});
    /// The same for the dictionary that these lines stand for: where it is large, none is made.
    void send(LineCommand command, AnswerHandler onAnswer = {});

    /// Waits until every command handed over was answered or given up; false when `limit` passed
    /// first.
    bool waitUntilIdle(std::chrono::milliseconds limit);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel
